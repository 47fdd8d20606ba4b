      *> A statement inside a copybook: the second parse of
      *> xmlparse-all, a document with an undeclared entity.
           XML PARSE SMALL-DOC
               PROCESSING PROCEDURE IS SHOW-EVENT THROUGH SHOW-EXIT
               ON EXCEPTION
                   DISPLAY "second: exception " XML-CODE
           END-XML
