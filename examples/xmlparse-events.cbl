      *> xmlparse-events - every event of a document, the mainframe
      *> way: an XML PARSE statement whose processing procedure sorts
      *> the events with EVALUATE XML-EVENT and shows XML-TEXT moved,
      *> reference-modified, measured and displayed (national texts
      *> through XML-NTEXT). Build it with cblxml-cobc:
      *>
      *>     build/tools/cblxml-cobc -x examples/xmlparse-events.cbl
      *>     ./xmlparse-events [document]
      *>         (default: examples/data/order.xml)
      *>
      *> RETURN-CODE 0, 1 when the file cannot be read, 2 when the
      *> parse ended in an exception.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. xmlparse-events.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
           COPY cblxml-docarea.
       01  FIRST-TEN                 PIC X(10).
       01  KIND                      PIC X(12).
       01  TEXT-SIZE                 PIC ZZZ9.
       LINKAGE SECTION.
       01  DOC                       PIC X(65536).
       PROCEDURE DIVISION.
       MAIN.
           MOVE "examples/data/order.xml" TO DOC-PATH
           PERFORM CBLXML-LOAD-DOCUMENT
           XML PARSE DOC(1:DOC-SIZE)
               PROCESSING PROCEDURE SHOW-EVENT
               ON EXCEPTION
                   DISPLAY "exception " XML-CODE
                   MOVE 2 TO RETURN-CODE
               NOT ON EXCEPTION
                   DISPLAY "parsed, XML-CODE " XML-CODE
                   MOVE 0 TO RETURN-CODE
           END-XML
           FREE DOC-POINTER
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
               EXIT PARAGRAPH
           END-IF
           MOVE XML-TEXT TO FIRST-TEN
           MOVE FUNCTION LENGTH(XML-TEXT) TO TEXT-SIZE
           IF FUNCTION LENGTH(XML-TEXT) > 0
               DISPLAY KIND XML-EVENT TEXT-SIZE " [" FIRST-TEN "] "
                   XML-TEXT(1:1) " {" XML-TEXT "}"
           ELSE
               DISPLAY KIND XML-EVENT TEXT-SIZE " (empty)"
           END-IF.
           COPY cblxml-loaddoc.
       END PROGRAM xmlparse-events.

           COPY cblxml-readdoc.
