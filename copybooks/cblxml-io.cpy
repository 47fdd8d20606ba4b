      *> cblxml-io.cpy - the paragraphs of a program that reads or
      *> writes an XML file through CALL "CBL_XMLIO_INTERFACE". COPY
      *> it in the PROCEDURE DIVISION where no paragraph runs into it,
      *> with the prefix of the file's layout copybook:
      *>     COPY cblxml-io REPLACING LEADING ==CBLXML-== BY ==ORD-==.
      *> The program also copies the two copybooks cblxml-layout
      *> wrote for its record description (the control block
      *> ORD-FCB, and the paragraph ORD-SETUP) and holds the file
      *> name in an item of its own, ORD-FILE-NAME (PIC X(n); ":CGI:"
      *> names the CGI streams). Written to compile in fixed and in
      *> free source format.
      *>
      *> Each paragraph is one statement on the file; the result is
      *> in ORD-FCB-STATUS and its 88 levels (ORD-OK, ORD-AT-END,
      *> ORD-NOT-FOUND, ...; docs/cobol.md). START, READ NEXT,
      *> DELETE and REWRITE work on the element of the item the
      *> program points ORD-FCB-KEY-ITEM at (SET ORD-FCB-KEY-ITEM TO
      *> ADDRESS OF ORD-item, the item's descriptor), WRITE on that
      *> element too when it is set (the whole record when it is
      *> NULL). A READ leaves the number of the record description
      *> it matched in the status, a write-document the characters
      *> it wrote: test for ORD-FAILED, not for ORD-OK, after those.

      *> OPEN: the set-up paragraph (harmless twice), the file name
      *> (its length without trailing spaces), then the call.
       CBLXML-OPEN-INPUT.
           SET CBLXML-MODE-INPUT TO TRUE
           PERFORM CBLXML-OPEN.

       CBLXML-OPEN-OUTPUT.
           SET CBLXML-MODE-OUTPUT TO TRUE
           PERFORM CBLXML-OPEN.

       CBLXML-OPEN-I-O.
           SET CBLXML-MODE-I-O TO TRUE
           PERFORM CBLXML-OPEN.

       CBLXML-OPEN.
           PERFORM CBLXML-SETUP
           SET CBLXML-FCB-NAME TO ADDRESS OF CBLXML-FILE-NAME
           MOVE FUNCTION LENGTH(FUNCTION TRIM(CBLXML-FILE-NAME
               TRAILING)) TO CBLXML-FCB-NAME-LEN
           SET CBLXML-OP-OPEN TO TRUE
           PERFORM CBLXML-CALL.

       CBLXML-CLOSE.
           SET CBLXML-OP-CLOSE TO TRUE
           PERFORM CBLXML-CALL.

       CBLXML-READ.
           SET CBLXML-OP-READ TO TRUE
           PERFORM CBLXML-CALL.

      *> START positions on occurrence CBLXML-FCB-KEY-OCCURRENCE (1
      *> is the first) of the key item's element; the next READ NEXT
      *> reads that element.
       CBLXML-START.
           SET CBLXML-OP-START TO TRUE
           PERFORM CBLXML-CALL.

       CBLXML-READ-NEXT.
           SET CBLXML-OP-READ-NEXT TO TRUE
           PERFORM CBLXML-CALL.

      *> WRITE adds the key item's element with its attributes and
      *> text; WRITE-KEEP adds it with everything below it.
       CBLXML-WRITE.
           SET CBLXML-OP-WRITE TO TRUE
           PERFORM CBLXML-CALL.

       CBLXML-WRITE-KEEP.
           SET CBLXML-OP-WRITE-KEEP TO TRUE
           PERFORM CBLXML-CALL.

       CBLXML-REWRITE.
           SET CBLXML-OP-REWRITE TO TRUE
           PERFORM CBLXML-CALL.

       CBLXML-DELETE.
           SET CBLXML-OP-DELETE TO TRUE
           PERFORM CBLXML-CALL.

      *> Writes the document the file holds: to the file (an I-O
      *> file's old document is replaced), or to the CGI output.
       CBLXML-WRITE-DOCUMENT.
           SET CBLXML-OP-WRITE-DOCUMENT TO TRUE
           PERFORM CBLXML-CALL.

      *> The file name from the command line's first argument; with
      *> none, CBLXML-FILE-NAME keeps its value.
       CBLXML-NAME-FROM-ARGUMENT.
           ACCEPT CBLXML-FILE-NAME FROM ARGUMENT-VALUE.

       CBLXML-CALL.
           CALL "CBL_XMLIO_INTERFACE" USING CBLXML-FCB OMITTED
               RETURNING OMITTED.

      *> For a program that gives up on a failed statement: names
      *> the file and the status, sets RETURN-CODE to 1.
       CBLXML-SHOW-FAILURE.
           DISPLAY "XML file " FUNCTION TRIM(CBLXML-FILE-NAME)
               ": status " CBLXML-FCB-STATUS UPON SYSERR
           MOVE 1 TO RETURN-CODE.
