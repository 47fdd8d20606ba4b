      *> earlystop - takes the first events of a document, gives the
      *> parse up with the clean-up call, then parses the document
      *> again from the start with the same items.
      *>
      *>     earlystop document count
      *>
      *> Prints the events taken, what the clean-up call left behind
      *> (the state pointer and the last text, which stays the
      *> program's), and how the second parse ended.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. earlystop.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
           COPY cblxml.
       01  DOC-PATH                  PIC X(1024).
       01  DOC-POINTER               USAGE POINTER.
       01  DOC-SIZE                  PIC 9(9) COMP-5.
       01  WANTED-TEXT               PIC X(9).
       01  WANTED-EVENTS             PIC 9(9) COMP-5.
       01  EVENTS-TAKEN              PIC 9(9) COMP-5.
       01  SHOWN-COUNT               PIC Z(8)9.
       01  SHOWN-CODE                PIC -(9)9.
       01  TEXT-BEFORE-CLEAN-UP      USAGE POINTER.
       LINKAGE SECTION.
           COPY cblxml-text.
       PROCEDURE DIVISION.
       MAIN.
           ACCEPT DOC-PATH FROM ARGUMENT-VALUE
           ACCEPT WANTED-TEXT FROM ARGUMENT-VALUE
           COMPUTE WANTED-EVENTS = FUNCTION NUMVAL(WANTED-TEXT)
           CALL "cblxml-read-document" USING
               DOC-PATH DOC-POINTER DOC-SIZE
           IF RETURN-CODE NOT = 0
               STOP RUN
           END-IF
           SET CBLXML-DOCUMENT TO DOC-POINTER
           MOVE DOC-SIZE TO CBLXML-DOC-LENGTH

           MOVE 0 TO EVENTS-TAKEN
           PERFORM WITH TEST AFTER UNTIL CBLXML-STATE = NULL
                   OR EVENTS-TAKEN = WANTED-EVENTS
               PERFORM NEXT-EVENT
               PERFORM SHOW-EVENT
           END-PERFORM

           IF CBLXML-STATE = NULL
               DISPLAY "the parse ended by itself"
           ELSE
               SET TEXT-BEFORE-CLEAN-UP TO CBLXML-TEXT-PTR
               CALL "CBL_XMLPARSE_INTERFACE" USING
                   CBLXML-STATE CBLXML-DOCUMENT CBLXML-TEXT-PTR
                   CBLXML-DOC-LENGTH CBLXML-TEXT-LENGTH
                   OMITTED OMITTED CBLXML-OPTIONS
                   RETURNING OMITTED
               PERFORM SHOW-CLEAN-UP
           END-IF
           PERFORM CBLXML-FREE-TEXT

           MOVE 0 TO EVENTS-TAKEN
           PERFORM WITH TEST AFTER UNTIL CBLXML-STATE = NULL
               PERFORM NEXT-EVENT
           END-PERFORM
           MOVE EVENTS-TAKEN TO SHOWN-COUNT
           DISPLAY "second parse: " FUNCTION TRIM(SHOWN-COUNT)
               " events, the last " FUNCTION TRIM(CBLXML-EVENT)
           PERFORM CBLXML-FREE-TEXT
           FREE DOC-POINTER
           MOVE 0 TO RETURN-CODE
           STOP RUN.

       NEXT-EVENT.
           CALL "CBL_XMLPARSE_INTERFACE" USING
               CBLXML-STATE CBLXML-DOCUMENT CBLXML-TEXT-PTR
               CBLXML-DOC-LENGTH CBLXML-TEXT-LENGTH
               CBLXML-CODE CBLXML-EVENT CBLXML-OPTIONS
               RETURNING OMITTED
           SET ADDRESS OF CBLXML-TEXT TO CBLXML-TEXT-PTR
           ADD 1 TO EVENTS-TAKEN.

       SHOW-EVENT.
           MOVE CBLXML-CODE TO SHOWN-CODE
           IF CBLXML-TEXT-LENGTH > 0
               DISPLAY CBLXML-EVENT SHOWN-CODE " {"
                   CBLXML-TEXT(1:CBLXML-TEXT-LENGTH) "}"
           ELSE
               DISPLAY CBLXML-EVENT SHOWN-CODE " {}"
           END-IF.

      *> The clean-up call frees the undelivered events and leaves
      *> the last text where it was: still readable, still ours.
       SHOW-CLEAN-UP.
           IF CBLXML-STATE = NULL
               DISPLAY "clean-up: no parse in progress"
           ELSE
               DISPLAY "clean-up: the parse is still in progress"
           END-IF
           IF CBLXML-TEXT-PTR = TEXT-BEFORE-CLEAN-UP
               DISPLAY "clean-up: the last text is kept"
           ELSE
               DISPLAY "clean-up: the last text moved"
           END-IF
           IF CBLXML-TEXT-LENGTH > 0
               DISPLAY "clean-up: last text {"
                   CBLXML-TEXT(1:CBLXML-TEXT-LENGTH) "}"
           END-IF.

       CBLXML-FREE-TEXT.
           IF CBLXML-TEXT-PTR NOT = NULL
               CALL "free" USING BY VALUE CBLXML-TEXT-PTR
                   RETURNING OMITTED
               SET CBLXML-TEXT-PTR TO NULL
           END-IF.
       END PROGRAM earlystop.

           COPY cblxml-readdoc.
