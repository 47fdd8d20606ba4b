      *> cblxml-calls.cpy - the paragraphs of a program that parses
      *> with libcblxml. COPY it last in the PROCEDURE DIVISION, after
      *> the program's own paragraphs; the program also copies
      *> cblxml.cpy (WORKING-STORAGE) and cblxml-text.cpy (LINKAGE).
      *> For two parses in one program copy both with the same
      *> REPLACING LEADING ==CBLXML-== BY ==...-==.
      *> Written to compile in fixed and in free source format.
      *>
      *> CBLXML-PARSE-FILE reads a whole file with the program
      *> cblxml-read-document (cblxml-readdoc.cpy): the one the next
      *> command-line argument names, else the one the program's item
      *> CBLXML-DOC-PATH (PIC X(1024)) names. It then parses it with
      *> CBLXML-PARSE-DOCUMENT and frees it. RETURN-CODE is 1 when the
      *> file cannot be read, else as CBLXML-PARSE-DOCUMENT leaves it.
      *> CBLXML-READ-FILE only reads the file into CBLXML-DOCUMENT and
      *> CBLXML-DOC-LENGTH (RETURN-CODE 0 or 1).
      *>
      *> CBLXML-PARSE-DOCUMENT parses the CBLXML-DOC-LENGTH bytes at
      *> CBLXML-DOCUMENT. For every event it PERFORMs the program's
      *> paragraph CBLXML-ON-EVENT, its processing procedure, which
      *> finds the event in CBLXML-EVENT, CBLXML-CODE and, when
      *> CBLXML-TEXT-LENGTH is above zero, CBLXML-TEXT(1:
      *> CBLXML-TEXT-LENGTH); it may SET CBLXML-STOP TO TRUE to give
      *> the parse up. At the end CBLXML-EVENT holds the last event,
      *> and RETURN-CODE is 2 when the parse ended in an EXCEPTION,
      *> else 0.
      *>
      *> The other paragraphs serve a program that drives the calls
      *> itself:
      *>     PERFORM WITH TEST AFTER UNTIL CBLXML-STATE = NULL
      *>         PERFORM CBLXML-NEXT-EVENT
      *>         ... the program's work on the event
      *>     END-PERFORM
      *>     PERFORM CBLXML-END-PARSE

       CBLXML-PARSE-FILE.
           PERFORM CBLXML-READ-FILE
           IF RETURN-CODE = 0
               PERFORM CBLXML-PARSE-DOCUMENT
               FREE CBLXML-DOCUMENT
           END-IF.

       CBLXML-READ-FILE.
           CALL "cblxml-read-document" USING
               CBLXML-DOC-PATH CBLXML-DOCUMENT CBLXML-DOC-LENGTH.

       CBLXML-PARSE-DOCUMENT.
           SET CBLXML-GO-ON TO TRUE
           PERFORM WITH TEST AFTER
                   UNTIL CBLXML-STATE = NULL OR CBLXML-STOP
               PERFORM CBLXML-NEXT-EVENT
               PERFORM CBLXML-ON-EVENT
           END-PERFORM
           PERFORM CBLXML-END-PARSE
           IF CBLXML-EXCEPTION
               MOVE 2 TO RETURN-CODE
           ELSE
               MOVE 0 TO RETURN-CODE
           END-IF.

      *> One event: the first call parses the document, every call
      *> hands over one event and points CBLXML-TEXT at its text.
       CBLXML-NEXT-EVENT.
           CALL "CBL_XMLPARSE_INTERFACE" USING
               CBLXML-STATE CBLXML-DOCUMENT CBLXML-TEXT-PTR
               CBLXML-DOC-LENGTH CBLXML-TEXT-LENGTH
               CBLXML-CODE CBLXML-EVENT CBLXML-OPTIONS
               RETURNING OMITTED
           SET ADDRESS OF CBLXML-TEXT TO CBLXML-TEXT-PTR.

      *> Ends the parse: gives up one still in progress, then frees
      *> the last text.
       CBLXML-END-PARSE.
           PERFORM CBLXML-STOP-PARSE
           PERFORM CBLXML-FREE-TEXT.

      *> The clean-up call: frees the events not yet delivered and
      *> leaves the last text where it is (still the program's). No
      *> parse in progress: nothing to do.
       CBLXML-STOP-PARSE.
           IF CBLXML-STATE NOT = NULL
               CALL "CBL_XMLPARSE_INTERFACE" USING
                   CBLXML-STATE CBLXML-DOCUMENT CBLXML-TEXT-PTR
                   CBLXML-DOC-LENGTH CBLXML-TEXT-LENGTH
                   OMITTED OMITTED CBLXML-OPTIONS
                   RETURNING OMITTED
           END-IF.

      *> The text of the last event is the program's; the library
      *> allocated it with the C allocator.
       CBLXML-FREE-TEXT.
           IF CBLXML-TEXT-PTR NOT = NULL
               CALL "free" USING BY VALUE CBLXML-TEXT-PTR
                   RETURNING OMITTED
               SET CBLXML-TEXT-PTR TO NULL
           END-IF.

      *> One line for the event, as a processing procedure that
      *> displays XML-EVENT, XML-CODE and XML-TEXT would show it: the
      *> name, the code and the text in braces.
       CBLXML-SHOW-EVENT.
           MOVE CBLXML-CODE TO CBLXML-SHOWN-CODE
           IF CBLXML-TEXT-LENGTH > 0
               DISPLAY CBLXML-EVENT CBLXML-SHOWN-CODE " {"
                   CBLXML-TEXT(1:CBLXML-TEXT-LENGTH) "}"
           ELSE
               DISPLAY CBLXML-EVENT CBLXML-SHOWN-CODE " {}"
           END-IF.
