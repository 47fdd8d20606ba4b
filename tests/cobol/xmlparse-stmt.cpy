      *> A statement inside a copybook (xmlparse-forms).
           XML PARSE SECOND-DOC
               PROCESSING PROCEDURE IS SHOW-EVENT THROUGH SHOW-EXIT
               ON EXCEPTION DISPLAY "second: exception " XML-CODE
           END-XML
