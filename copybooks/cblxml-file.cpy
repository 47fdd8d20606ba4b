      *> cblxml-file.cpy - the control block of one XML file, the
      *> block that every CALL "CBL_XMLIO_INTERFACE" hands over.
      *> cblxml-layout writes a COPY of it, with the file's prefix,
      *> into the copybook it makes from a record description:
      *>     COPY cblxml-file REPLACING LEADING ==CBLXML-== BY ==ORD-==.
      *> Integers are in the machine's own byte order (BINARY-LONG,
      *> BINARY-CHAR), addresses are USAGE POINTER; the offsets are
      *> fixed (docs/layout.md). Written to compile in fixed and in
      *> free source format.
      *>
      *> One statement: set the operation, call, test the status.
      *>     SET CBLXML-OP-READ TO TRUE
      *>     CALL "CBL_XMLIO_INTERFACE" USING CBLXML-FCB OMITTED
      *>         RETURNING OMITTED
      *>     IF CBLXML-AT-END ...
      *> (the text of an insert, opcodes 9 and 10, in place of
      *> OMITTED). A READ leaves the number of the record description it
      *> matched in CBLXML-FCB-STATUS (above zero), a write-document
      *> the characters it wrote.
       01 CBLXML-FCB.
      *> 0: the document the library holds (library's own)
          05 CBLXML-FCB-DOC            USAGE POINTER.
      *> 8: the record entries (the set-up paragraph sets it)
          05 CBLXML-FCB-RECORDS        USAGE POINTER.
      *> 16: the descriptor of the item that START, DELETE and
      *> REWRITE look for
          05 CBLXML-FCB-KEY-ITEM       USAGE POINTER.
          05 FILLER                    USAGE POINTER.
      *> 32: the file name, or the data item holding the document
          05 CBLXML-FCB-NAME           USAGE POINTER.
      *> 40: DOCTYPE text, or the schema location
          05 CBLXML-FCB-DOCTYPE        USAGE POINTER.
      *> 48 to 80: the library's own
          05 CBLXML-FCB-READ-BUF       USAGE POINTER.
          05 CBLXML-FCB-BUILDER-AUX    USAGE POINTER.
          05 CBLXML-FCB-DM-HANDLE      USAGE POINTER.
          05 CBLXML-FCB-ARG2           USAGE POINTER.
          05 CBLXML-FCB-STREAM         USAGE POINTER.
      *> 88: lengths and numbers
          05 CBLXML-FCB-ARG2-LEN       BINARY-LONG UNSIGNED VALUE 0.
          05 CBLXML-FCB-KEY-OCCURRENCE BINARY-LONG UNSIGNED VALUE 0.
          05 CBLXML-FCB-REC-NO         BINARY-LONG UNSIGNED VALUE 0.
          05 CBLXML-FCB-REC-READ       BINARY-LONG UNSIGNED VALUE 0.
          05 CBLXML-FCB-NAME-LEN       BINARY-LONG UNSIGNED VALUE 0.
          05 CBLXML-FCB-DOCTYPE-LEN    BINARY-LONG UNSIGNED VALUE 0.
          05 CBLXML-FCB-READ-BUF-LEN   BINARY-LONG UNSIGNED VALUE 0.
          05 CBLXML-FCB-REC-COUNT      BINARY-LONG UNSIGNED VALUE 0.
          05 FILLER                    BINARY-LONG UNSIGNED VALUE 0.
      *> 124: the result of the last call
          05 CBLXML-FCB-STATUS         BINARY-LONG SIGNED VALUE 0.
             88 CBLXML-OK                       VALUE 0.
             88 CBLXML-FAILED                   VALUE -15 THRU -1.
             88 CBLXML-NOT-OPEN                 VALUE -1.
             88 CBLXML-BAD-OPERATION            VALUE -2.
             88 CBLXML-BAD-MODE                 VALUE -3.
             88 CBLXML-OPEN-FAILED              VALUE -4.
             88 CBLXML-NO-DOCUMENT              VALUE -5.
             88 CBLXML-NOT-FOUND                VALUE -6.
             88 CBLXML-AT-END                   VALUE -7.
             88 CBLXML-NO-POSITION              VALUE -8.
             88 CBLXML-PARSE-FAILED             VALUE -9.
             88 CBLXML-UNWRITTEN-CHANGES        VALUE -10.
             88 CBLXML-URL-NOT-READ             VALUE -11.
             88 CBLXML-URL-NOT-WRITTEN          VALUE -12.
             88 CBLXML-READ-ERROR               VALUE -13.
             88 CBLXML-WRITE-ERROR              VALUE -14.
             88 CBLXML-CLOSE-ERROR              VALUE -15.
      *> 128: option and state bits, the sum of those wanted:
      *>     1 linked (state)          8 XML Schema
      *>    32 document in a data item (CBLXML-FCB-NAME, -NAME-LEN)
      *>    64 unwritten changes (state)   128 URL (state)
      *>   256 CGI name (state)      512 decimal point is comma
      *>  1024 no xsi attributes  2048 compact output
      *>  8192 parse the written document again
          05 CBLXML-FCB-FLAGS          BINARY-LONG UNSIGNED VALUE 0.
          05 FILLER                    BINARY-CHAR UNSIGNED VALUE 0.
      *> 133: the open mode
          05 CBLXML-FCB-OPEN-MODE      BINARY-CHAR UNSIGNED VALUE 0.
             88 CBLXML-MODE-INPUT               VALUE 1.
             88 CBLXML-MODE-OUTPUT              VALUE 2.
             88 CBLXML-MODE-I-O                 VALUE 3.
             88 CBLXML-MODE-EXTEND              VALUE 4.
      *> 134: the operation of the next call
          05 CBLXML-FCB-OPCODE         BINARY-CHAR UNSIGNED VALUE 0.
             88 CBLXML-OP-OPEN                  VALUE 1.
             88 CBLXML-OP-CLOSE                 VALUE 2.
             88 CBLXML-OP-WRITE-DOCUMENT        VALUE 3.
             88 CBLXML-OP-READ                  VALUE 4.
             88 CBLXML-OP-START                 VALUE 5.
             88 CBLXML-OP-READ-NEXT             VALUE 6.
             88 CBLXML-OP-WRITE                 VALUE 7.
             88 CBLXML-OP-WRITE-KEEP            VALUE 8.
             88 CBLXML-OP-INSERT-PI             VALUE 9.
             88 CBLXML-OP-INSERT-TEXT           VALUE 10.
             88 CBLXML-OP-DELETE                VALUE 11.
             88 CBLXML-OP-REWRITE               VALUE 12.
          05 FILLER                    BINARY-CHAR UNSIGNED VALUE 0.
