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
       01  CBLXML-DOC-PATH           PIC X(1024).
       01  WANTED-TEXT               PIC X(9).
       01  WANTED-EVENTS             PIC 9(9) COMP-5.
       01  EVENTS-TAKEN              PIC 9(9) COMP-5.
       01  SHOWN-COUNT               PIC Z(8)9.
       01  TEXT-BEFORE-CLEAN-UP      USAGE POINTER.
       LINKAGE SECTION.
           COPY cblxml-text.
       PROCEDURE DIVISION.
       MAIN.
           MOVE 0 TO EVENTS-TAKEN
           PERFORM CBLXML-READ-FILE
           IF RETURN-CODE NOT = 0
               STOP RUN
           END-IF
           ACCEPT WANTED-TEXT FROM ARGUMENT-VALUE
           COMPUTE WANTED-EVENTS = FUNCTION NUMVAL(WANTED-TEXT)
           PERFORM WITH TEST AFTER UNTIL CBLXML-STATE = NULL
                   OR EVENTS-TAKEN = WANTED-EVENTS
               PERFORM CBLXML-NEXT-EVENT
               ADD 1 TO EVENTS-TAKEN
               PERFORM CBLXML-SHOW-EVENT
           END-PERFORM
           IF CBLXML-STATE = NULL
               DISPLAY "the parse ended by itself"
           ELSE
               SET TEXT-BEFORE-CLEAN-UP TO CBLXML-TEXT-PTR
               PERFORM CBLXML-STOP-PARSE
               PERFORM SHOW-CLEAN-UP
           END-IF
           PERFORM CBLXML-FREE-TEXT

      *> The same items parse the document again from the start.
           MOVE 0 TO EVENTS-TAKEN
           PERFORM CBLXML-PARSE-DOCUMENT
           MOVE EVENTS-TAKEN TO SHOWN-COUNT
           DISPLAY "second parse: " FUNCTION TRIM(SHOWN-COUNT)
               " events, the last " FUNCTION TRIM(CBLXML-EVENT)
           FREE CBLXML-DOCUMENT
           MOVE 0 TO RETURN-CODE
           STOP RUN.

      *> The second parse's processing procedure counts the events.
       CBLXML-ON-EVENT.
           ADD 1 TO EVENTS-TAKEN.

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

           COPY cblxml-calls.
       END PROGRAM earlystop.

           COPY cblxml-readdoc.
