      *> xmlevents - prints every event of an XML document, one line
      *> an event: the event name, XML-CODE and the text in braces,
      *> as an XML PARSE processing procedure that displays the
      *> event, the code and the text would.
      *>
      *>     xmlevents [document]    (default: examples/data/order.xml)
      *>
      *> Ends with RETURN-CODE 0 when the document was parsed to its
      *> end, 1 when the file cannot be read, 2 when the parse ended
      *> with an EXCEPTION event.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. xmlevents.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
           COPY cblxml.
       01  DOC-PATH                  PIC X(1024).
       01  DOC-POINTER               USAGE POINTER.
       01  DOC-SIZE                  PIC 9(9) COMP-5.
       01  SHOWN-CODE                PIC -(9)9.
       01  PARSE-RESULT              PIC 9 VALUE 0.
       LINKAGE SECTION.
           COPY cblxml-text.
       PROCEDURE DIVISION.
       MAIN.
           ACCEPT DOC-PATH FROM ARGUMENT-VALUE
           IF DOC-PATH = SPACES
               MOVE "examples/data/order.xml" TO DOC-PATH
           END-IF
           CALL "cblxml-read-document" USING
               DOC-PATH DOC-POINTER DOC-SIZE
           IF RETURN-CODE NOT = 0
               STOP RUN
           END-IF

           SET CBLXML-DOCUMENT TO DOC-POINTER
           MOVE DOC-SIZE TO CBLXML-DOC-LENGTH
           PERFORM WITH TEST AFTER UNTIL CBLXML-STATE = NULL
               CALL "CBL_XMLPARSE_INTERFACE" USING
                   CBLXML-STATE CBLXML-DOCUMENT CBLXML-TEXT-PTR
                   CBLXML-DOC-LENGTH CBLXML-TEXT-LENGTH
                   CBLXML-CODE CBLXML-EVENT CBLXML-OPTIONS
                   RETURNING OMITTED
               SET ADDRESS OF CBLXML-TEXT TO CBLXML-TEXT-PTR
               PERFORM SHOW-EVENT
           END-PERFORM
           IF CBLXML-EXCEPTION
               MOVE 2 TO PARSE-RESULT
           END-IF
           PERFORM CBLXML-FREE-TEXT
           FREE DOC-POINTER
           MOVE PARSE-RESULT TO RETURN-CODE
           STOP RUN.

       SHOW-EVENT.
           MOVE CBLXML-CODE TO SHOWN-CODE
           IF CBLXML-TEXT-LENGTH > 0
               DISPLAY CBLXML-EVENT SHOWN-CODE " {"
                   CBLXML-TEXT(1:CBLXML-TEXT-LENGTH) "}"
           ELSE
               DISPLAY CBLXML-EVENT SHOWN-CODE " {}"
           END-IF.

      *> The text of the last event is the program's to free.
       CBLXML-FREE-TEXT.
           IF CBLXML-TEXT-PTR NOT = NULL
               CALL "free" USING BY VALUE CBLXML-TEXT-PTR
                   RETURNING OMITTED
               SET CBLXML-TEXT-PTR TO NULL
           END-IF.
       END PROGRAM xmlevents.

           COPY cblxml-readdoc.
