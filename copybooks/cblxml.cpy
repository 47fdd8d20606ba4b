      *> cblxml.cpy - the items one XML parse through libcblxml needs.
      *> COPY it into WORKING-STORAGE or LOCAL-STORAGE; for two parses
      *> in one program copy it twice with a different prefix:
      *>     COPY cblxml REPLACING LEADING ==CBLXML-== BY ==ORDER-==.
      *> Written to compile in fixed and in free source format.
      *>
      *> The paragraphs of cblxml-calls.cpy make these calls; a
      *> program that COPYs them writes only its processing procedure
      *> (docs/cobol.md). What they do, one event per call:
      *>     SET CBLXML-DOCUMENT TO ADDRESS OF your-document
      *>     MOVE length-in-bytes TO CBLXML-DOC-LENGTH
      *>     PERFORM WITH TEST AFTER UNTIL CBLXML-STATE = NULL
      *>         CALL "CBL_XMLPARSE_INTERFACE" USING
      *>             CBLXML-STATE CBLXML-DOCUMENT CBLXML-TEXT-PTR
      *>             CBLXML-DOC-LENGTH CBLXML-TEXT-LENGTH
      *>             CBLXML-CODE CBLXML-EVENT CBLXML-OPTIONS
      *>             RETURNING OMITTED
      *>         SET ADDRESS OF CBLXML-TEXT TO CBLXML-TEXT-PTR
      *>         ... EVALUATE CBLXML-EVENT, look at
      *>         ... CBLXML-TEXT(1:CBLXML-TEXT-LENGTH) when the length
      *>         ... is above zero, and at CBLXML-CODE
      *>     END-PERFORM
      *>     PERFORM CBLXML-FREE-TEXT
      *>
      *> The first call parses the whole document; every call hands
      *> over one event. CBLXML-STATE is NULL again once the last
      *> event (END-OF-DOCUMENT, or an EXCEPTION that ends the parse)
      *> has been delivered. The text stays valid until the next
      *> call; the text of the last event belongs to the program.
      *> The library allocates it with the C allocator, so the C
      *> library's free releases it:
      *>     CBLXML-FREE-TEXT.
      *>         IF CBLXML-TEXT-PTR NOT = NULL
      *>             CALL "free" USING BY VALUE CBLXML-TEXT-PTR
      *>                 RETURNING OMITTED
      *>             SET CBLXML-TEXT-PTR TO NULL
      *>         END-IF.
      *> RETURNING OMITTED keeps RETURN-CODE clean: neither entry
      *> returns a value.
      *>
      *> Stopping early: make the clean-up call, with OMITTED in the
      *> places of CBLXML-CODE and CBLXML-EVENT, then free the text:
      *>     CALL "CBL_XMLPARSE_INTERFACE" USING
      *>         CBLXML-STATE CBLXML-DOCUMENT CBLXML-TEXT-PTR
      *>         CBLXML-DOC-LENGTH CBLXML-TEXT-LENGTH
      *>         OMITTED OMITTED CBLXML-OPTIONS
      *>         RETURNING OMITTED
      *>     PERFORM CBLXML-FREE-TEXT
      *>
      *> With a text area of the program's own (it must hold the
      *> longest text: START-OF-DOCUMENT hands over the whole
      *> document), nothing is left to free unless the program stops
      *> early (then the clean-up call above; there is no text to
      *> free):
      *>     CALL "CBL_XMLPARSE_INTERFACE_WRAP" USING
      *>         CBLXML-STATE
      *>         BY VALUE CBLXML-DOCUMENT CBLXML-OFFSET
      *>             CBLXML-DOC-LENGTH
      *>         BY REFERENCE your-text-area CBLXML-TEXT-LENGTH
      *>             CBLXML-CODE CBLXML-EVENT
      *>         BY VALUE CBLXML-OFFSET CBLXML-OPTIONS
      *>         RETURNING OMITTED
      *>
      *> Pass pointers as items (BY REFERENCE, or BY VALUE a POINTER
      *> item), never BY VALUE ADDRESS OF: a dynamic CALL passes only
      *> 32 bits of that address.
       01  CBLXML-PARSE.
      *> Pointers first, then the 4-byte items, then XML-EVENT: every
      *> item the library reads or writes stays on its natural
      *> boundary.
      *>
      *> The parse in progress; NULL when none is.
           05  CBLXML-STATE          USAGE POINTER VALUE NULL.
      *> Address of the document.
           05  CBLXML-DOCUMENT       USAGE POINTER VALUE NULL.
      *> Address of the current event's text. The text is not
      *> terminated; END-OF-DOCUMENT has none (NULL, length 0).
           05  CBLXML-TEXT-PTR       USAGE POINTER VALUE NULL.
      *> Byte lengths of the document and of the current text.
           05  CBLXML-DOC-LENGTH     PIC 9(9) COMP-5 VALUE 0.
           05  CBLXML-TEXT-LENGTH    PIC 9(9) COMP-5 VALUE 0.
      *> XML-CODE: 0, or the exception code of an EXCEPTION event.
      *> Big-endian binary, as COMP is in every shipped dialect.
           05  CBLXML-CODE           PIC S9(9) COMP VALUE 0.
      *> Option word: add the values of the options wanted.
      *>   1  the document and every text are UTF-16 (national);
      *>      hold them in alphanumeric items (PIC X): this compiler
      *>      keeps PIC N data as UTF-8
      *>   2  the program's data is EBCDIC (texts arrive in EBCDIC)
      *>   8  validating parse
           05  CBLXML-OPTIONS        PIC 9(9) COMP-5 VALUE 0.
               88  CBLXML-ALPHANUMERIC   VALUE 0.
               88  CBLXML-NATIONAL       VALUE 1.
               88  CBLXML-EBCDIC         VALUE 2.
      *> The wrapper entry takes the document and the event item as
      *> an address plus an offset; the addresses here need none.
           05  CBLXML-OFFSET         PIC 9(9) COMP-5 VALUE 0.
      *> XML-EVENT: the event name, padded with spaces.
           05  CBLXML-EVENT          PIC X(30) VALUE SPACES.
               88  CBLXML-END-OF-DOCUMENT VALUE "END-OF-DOCUMENT".
               88  CBLXML-EXCEPTION      VALUE "EXCEPTION".
      *> For the paragraphs of cblxml-calls.cpy: XML-CODE edited for
      *> display, and the processing procedure's wish to stop.
       01  CBLXML-CONTROL.
           05  CBLXML-SHOWN-CODE     PIC -(9)9.
           05  CBLXML-STOP-FLAG      PIC 9 VALUE 0.
               88  CBLXML-GO-ON          VALUE 0.
               88  CBLXML-STOP           VALUE 1.
