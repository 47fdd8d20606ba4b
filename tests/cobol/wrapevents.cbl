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
       01  DOC-PATH                  PIC X(1024).
       01  DOC-POINTER               USAGE POINTER.
       01  DOC-SIZE                  PIC 9(9) COMP-5.
       01  AREA-POINTER              USAGE POINTER.
       01  AREA-SIZE                 PIC 9(9) COMP-5.
       01  WANTED-TEXT               PIC X(9).
       01  WANTED-EVENTS             PIC 9(9) COMP-5 VALUE 0.
       01  EVENTS-TAKEN              PIC 9(9) COMP-5 VALUE 0.
       01  SHOWN-CODE                PIC -(9)9.
       01  PARSE-RESULT              PIC 9 VALUE 0.
       LINKAGE SECTION.
      *> The program's own text area: it must hold the longest text,
      *> and START-OF-DOCUMENT hands over the whole document.
       01  TEXT-AREA                 PIC X(268435456).
       PROCEDURE DIVISION.
       MAIN.
           ACCEPT DOC-PATH FROM ARGUMENT-VALUE
           ACCEPT WANTED-TEXT FROM ARGUMENT-VALUE
           IF WANTED-TEXT NOT = SPACES
               COMPUTE WANTED-EVENTS = FUNCTION NUMVAL(WANTED-TEXT)
           END-IF
           CALL "cblxml-read-document" USING
               DOC-PATH DOC-POINTER DOC-SIZE
           IF RETURN-CODE NOT = 0
               STOP RUN
           END-IF
           COMPUTE AREA-SIZE = DOC-SIZE + 1
           ALLOCATE AREA-SIZE CHARACTERS RETURNING AREA-POINTER
           SET ADDRESS OF TEXT-AREA TO AREA-POINTER

           SET CBLXML-DOCUMENT TO DOC-POINTER
           MOVE DOC-SIZE TO CBLXML-DOC-LENGTH
           PERFORM WITH TEST AFTER UNTIL CBLXML-STATE = NULL
                   OR EVENTS-TAKEN = WANTED-EVENTS
               CALL "CBL_XMLPARSE_INTERFACE_WRAP" USING
                   CBLXML-STATE
                   BY VALUE CBLXML-DOCUMENT CBLXML-OFFSET
                       CBLXML-DOC-LENGTH
                   BY REFERENCE TEXT-AREA CBLXML-TEXT-LENGTH
                       CBLXML-CODE CBLXML-EVENT
                   BY VALUE CBLXML-OFFSET CBLXML-OPTIONS
                   RETURNING OMITTED
               ADD 1 TO EVENTS-TAKEN
               PERFORM SHOW-EVENT
           END-PERFORM
           IF CBLXML-STATE NOT = NULL
               CALL "CBL_XMLPARSE_INTERFACE" USING
                   CBLXML-STATE CBLXML-DOCUMENT CBLXML-TEXT-PTR
                   CBLXML-DOC-LENGTH CBLXML-TEXT-LENGTH
                   OMITTED OMITTED CBLXML-OPTIONS
                   RETURNING OMITTED
               IF CBLXML-STATE = NULL
                   DISPLAY "clean-up: no parse in progress"
               END-IF
           ELSE
               IF CBLXML-EXCEPTION
                   MOVE 2 TO PARSE-RESULT
               END-IF
           END-IF
           FREE AREA-POINTER
           FREE DOC-POINTER
           MOVE PARSE-RESULT TO RETURN-CODE
           STOP RUN.

       SHOW-EVENT.
           MOVE CBLXML-CODE TO SHOWN-CODE
           IF CBLXML-TEXT-LENGTH > 0
               DISPLAY CBLXML-EVENT SHOWN-CODE " {"
                   TEXT-AREA(1:CBLXML-TEXT-LENGTH) "}"
           ELSE
               DISPLAY CBLXML-EVENT SHOWN-CODE " {}"
           END-IF.
       END PROGRAM wrapevents.

           COPY cblxml-readdoc.
