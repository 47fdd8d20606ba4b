      *> wrapevents - xmlevents through the wrapper entry: the texts
      *> are copied into a text area of the program's own, so the
      *> program never holds a buffer of the library's. Prints what
      *> xmlevents prints.
      *>
      *>     wrapevents document [count]
      *>
      *> With a count, gives the parse up after that many events with
      *> the clean-up call and says so.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. wrapevents.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
           COPY cblxml.
       01  CBLXML-DOC-PATH           PIC X(1024).
       01  AREA-POINTER              USAGE POINTER.
       01  AREA-SIZE                 PIC 9(9) COMP-5.
       01  WANTED-TEXT               PIC X(9).
       01  WANTED-EVENTS             PIC 9(9) COMP-5 VALUE 0.
       01  EVENTS-TAKEN              PIC 9(9) COMP-5 VALUE 0.
       LINKAGE SECTION.
           COPY cblxml-text.
       PROCEDURE DIVISION.
       MAIN.
           PERFORM CBLXML-READ-FILE
           IF RETURN-CODE NOT = 0
               STOP RUN
           END-IF
           ACCEPT WANTED-TEXT FROM ARGUMENT-VALUE
           IF WANTED-TEXT NOT = SPACES
               COMPUTE WANTED-EVENTS = FUNCTION NUMVAL(WANTED-TEXT)
           END-IF
      *> The program's own text area, seen through CBLXML-TEXT: it
      *> must hold the longest text, and START-OF-DOCUMENT hands over
      *> the whole document.
           COMPUTE AREA-SIZE = CBLXML-DOC-LENGTH + 1
           ALLOCATE AREA-SIZE CHARACTERS RETURNING AREA-POINTER
           SET ADDRESS OF CBLXML-TEXT TO AREA-POINTER

           PERFORM WITH TEST AFTER UNTIL CBLXML-STATE = NULL
                   OR EVENTS-TAKEN = WANTED-EVENTS
               CALL "CBL_XMLPARSE_INTERFACE_WRAP" USING
                   CBLXML-STATE
                   BY VALUE CBLXML-DOCUMENT CBLXML-OFFSET
                       CBLXML-DOC-LENGTH
                   BY REFERENCE CBLXML-TEXT CBLXML-TEXT-LENGTH
                       CBLXML-CODE CBLXML-EVENT
                   BY VALUE CBLXML-OFFSET CBLXML-OPTIONS
                   RETURNING OMITTED
               ADD 1 TO EVENTS-TAKEN
               PERFORM CBLXML-ON-EVENT
           END-PERFORM
           IF CBLXML-STATE NOT = NULL
               PERFORM CBLXML-STOP-PARSE
               IF CBLXML-STATE = NULL
                   DISPLAY "clean-up: no parse in progress"
               END-IF
           ELSE
               IF CBLXML-EXCEPTION
                   MOVE 2 TO RETURN-CODE
               END-IF
           END-IF
           FREE AREA-POINTER
           FREE CBLXML-DOCUMENT
           STOP RUN.

       CBLXML-ON-EVENT.
           PERFORM CBLXML-SHOW-EVENT.

           COPY cblxml-calls.
       END PROGRAM wrapevents.

           COPY cblxml-readdoc.
