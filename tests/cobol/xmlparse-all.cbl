      *> xmlparse-all - XML PARSE statements built with cblxml-cobc:
      *> every event kind through EVALUATE XML-EVENT, XML-TEXT moved,
      *> displayed, reference-modified and measured, ON EXCEPTION and
      *> NOT ON EXCEPTION, THRU, two statements (one in a copybook)
      *> and one more in a nested program. Fixed source format.
      *>
      *>     xmlparse-all document
       IDENTIFICATION DIVISION.
       PROGRAM-ID. xmlparse-all.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01  DOC-PATH                  PIC X(1024).
       01  DOC-POINTER               USAGE POINTER.
       01  DOC-SIZE                  PIC 9(9) COMP-5.
       01  SMALL-DOC                 PIC X(14) VALUE '<a b="&zz;"/>'.
       01  FIRST-TEN                 PIC X(10).
       01  KIND                      PIC X(12).
       01  TEXT-SIZE                 PIC ZZZ9.
       LINKAGE SECTION.
       01  DOC                       PIC X(65536).
       PROCEDURE DIVISION.
       MAIN.
           CALL "cblxml-read-document" USING
               DOC-PATH DOC-POINTER DOC-SIZE
           IF RETURN-CODE NOT = 0
               STOP RUN
           END-IF
           SET ADDRESS OF DOC TO DOC-POINTER
           XML PARSE DOC(1:DOC-SIZE)
               PROCESSING PROCEDURE SHOW-EVENT THRU SHOW-EXIT
               ON EXCEPTION
                   DISPLAY "first: exception " XML-CODE
               NOT ON EXCEPTION
                   DISPLAY "first: parsed, XML-CODE " XML-CODE
           END-XML
           DISPLAY "after the first: " XML-EVENT
           COPY xmlparse-stmt.
           DISPLAY "after the second: " XML-EVENT "{" XML-TEXT "}"
           CALL "xmlparse-nested"
           DISPLAY "registers kept: " XML-EVENT XML-CODE
           FREE DOC-POINTER
           MOVE 0 TO RETURN-CODE
           STOP RUN.

       SHOW-EVENT.
           EVALUATE XML-EVENT
               WHEN "START-OF-DOCUMENT"
                   MOVE "document" TO KIND
               WHEN "VERSION-INFORMATION"
               WHEN "ENCODING-DECLARATION"
               WHEN "STANDALONE-DECLARATION"
                   MOVE "declaration" TO KIND
               WHEN "DOCUMENT-TYPE-DECLARATION"
                   MOVE "doctype" TO KIND
               WHEN "COMMENT"
                   MOVE "comment" TO KIND
               WHEN "PROCESSING-INSTRUCTION-TARGET"
               WHEN "PROCESSING-INSTRUCTION-DATA"
                   MOVE "pi" TO KIND
               WHEN "START-OF-ELEMENT"
               WHEN "END-OF-ELEMENT"
                   MOVE "element" TO KIND
               WHEN "ATTRIBUTE-NAME"
               WHEN "ATTRIBUTE-CHARACTERS"
               WHEN "ATTRIBUTE-CHARACTER"
                   MOVE "attribute" TO KIND
               WHEN "ATTRIBUTE-NATIONAL-CHARACTER"
               WHEN "CONTENT-NATIONAL-CHARACTER"
                   MOVE "national" TO KIND
               WHEN "CONTENT-CHARACTERS"
               WHEN "CONTENT-CHARACTER"
                   MOVE "content" TO KIND
               WHEN "START-OF-CDATA-SECTION"
               WHEN "END-OF-CDATA-SECTION"
                   MOVE "cdata" TO KIND
               WHEN "UNKNOWN-REFERENCE-IN-CONTENT"
               WHEN "UNKNOWN-REFERENCE-IN-ATTRIBUTE"
                   MOVE "unknown-ref" TO KIND
               WHEN "EXCEPTION"
                   MOVE "exception" TO KIND
               WHEN "END-OF-DOCUMENT"
                   MOVE "end" TO KIND
               WHEN OTHER
                   MOVE "?" TO KIND
           END-EVALUATE
           IF KIND = "national"
               MOVE FUNCTION LENGTH(XML-NTEXT) TO TEXT-SIZE
               DISPLAY KIND XML-EVENT " national " TEXT-SIZE
                   " first byte " XML-NTEXT(1:1)
               GO TO SHOW-EXIT
           END-IF
           MOVE XML-TEXT TO FIRST-TEN
           MOVE FUNCTION LENGTH(XML-TEXT) TO TEXT-SIZE
           IF FUNCTION LENGTH(XML-TEXT) > 0
               DISPLAY KIND XML-EVENT TEXT-SIZE " [" FIRST-TEN "] "
                   XML-TEXT(1:1) " {" XML-TEXT "}"
           ELSE
               DISPLAY KIND XML-EVENT TEXT-SIZE " (empty)"
           END-IF.
       SHOW-EXIT.
           EXIT.

      *> Its own registers and its own statement, ended by a period.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. xmlparse-nested.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01  NESTED-DOC                PIC X(20) VALUE "<n>nested</n>".
       PROCEDURE DIVISION.
           XML PARSE NESTED-DOC PROCESSING PROCEDURE NESTED-EVENT.
           DISPLAY "nested: last " XML-EVENT XML-CODE
           GOBACK.
       NESTED-EVENT.
           IF XML-EVENT = "CONTENT-CHARACTERS"
               DISPLAY "nested: " XML-TEXT
           END-IF.
       END PROGRAM xmlparse-nested.
       END PROGRAM xmlparse-all.

           COPY cblxml-readdoc.
