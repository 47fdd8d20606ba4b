      *> xmlorder - orderreport written the mainframe way: an XML
      *> PARSE statement with a processing procedure and the special
      *> registers XML-EVENT, XML-TEXT and XML-CODE. Build it with
      *> cblxml-cobc:
      *>
      *>     build/tools/cblxml-cobc -x examples/xmlorder.cbl
      *>     ./xmlorder [document]  (default: examples/data/order.xml)
      *>
      *> The procedure gives the parse up by setting XML-CODE to -1
      *> when the order has too many lines; that, like an EXCEPTION
      *> event, leads to the ON EXCEPTION phrase.
      *>
      *> The document looks like examples/data/order.xml: an <order>
      *> with id and date attributes, a <customer>, <line> elements
      *> (sku and qty attributes, a <price>) and an optional <note>.
      *> RETURN-CODE: 0 done, 1 the file cannot be read, 2 the
      *> document is not well-formed, 3 it holds too many lines.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. xmlorder.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01  DOC-PATH                  PIC X(1024)
               VALUE "examples/data/order.xml".
       01  DOC-POINTER               USAGE POINTER.
       01  DOC-SIZE                  PIC 9(9) COMP-5.
       01  SHOWN-CODE                PIC -(9)9.

       01  ORDER-RECORD.
           05  ORDER-ID              PIC X(20).
           05  ORDER-DATE            PIC X(10).
           05  ORDER-CUSTOMER        PIC X(40).
           05  ORDER-NOTE            PIC X(60).
           05  ORDER-LINE-COUNT      PIC 9(3) VALUE 0.
           05  ORDER-LINE OCCURS 50 TIMES INDEXED BY LINE-IX.
               10  LINE-SKU          PIC X(10).
               10  LINE-QTY          PIC 9(5).
               10  LINE-PRICE        PIC 9(7)V99.
       01  MAX-LINES                 PIC 9(3) VALUE 50.

      *> Where the parse is: the element whose content is collected,
      *> the attribute whose value comes next, the text so far.
       01  CURRENT-ELEMENT           PIC X(30) VALUE SPACES.
       01  CURRENT-ATTRIBUTE         PIC X(30) VALUE SPACES.
       01  CONTENT-AREA              PIC X(200).
       01  CONTENT-LENGTH            PIC 9(4) COMP-5.
       01  COPY-LENGTH               PIC 9(9) COMP-5.
       01  STOP-REASON               PIC 9 VALUE 0.
           88  READING-ON            VALUE 0.
           88  DOCUMENT-BROKEN       VALUE 2.
           88  TOO-MANY-LINES        VALUE 3.

       01  LINE-AMOUNT               PIC 9(9)V99.
       01  ORDER-TOTAL               PIC 9(9)V99 VALUE 0.
       01  REPORT-LINE.
           05  RL-SKU                PIC X(10).
           05  RL-QTY                PIC ZZ,ZZ9.
           05  FILLER                PIC X(3) VALUE SPACES.
           05  RL-PRICE              PIC Z,ZZZ,ZZ9.99.
           05  FILLER                PIC X(3) VALUE SPACES.
           05  RL-AMOUNT             PIC ZZZ,ZZZ,ZZ9.99.
       01  TOTAL-LINE.
           05  FILLER                PIC X(34) VALUE "Total".
           05  TL-AMOUNT             PIC ZZZ,ZZZ,ZZ9.99.
       01  RULE-LINE                 PIC X(48) VALUE ALL "-".
       LINKAGE SECTION.
       01  DOC                       PIC X(268435456).
       PROCEDURE DIVISION.
       MAIN.
           INITIALIZE ORDER-RECORD
           CALL "cblxml-read-document" USING
               DOC-PATH DOC-POINTER DOC-SIZE
           IF RETURN-CODE NOT = 0
               STOP RUN
           END-IF
           SET ADDRESS OF DOC TO DOC-POINTER
           XML PARSE DOC(1:DOC-SIZE)
               PROCESSING PROCEDURE ON-EVENT
               ON EXCEPTION
                   IF XML-CODE NOT = -1
                       SET DOCUMENT-BROKEN TO TRUE
                   END-IF
           END-XML
           FREE DOC-POINTER

           EVALUATE TRUE
               WHEN DOCUMENT-BROKEN
                   MOVE XML-CODE TO SHOWN-CODE
                   DISPLAY FUNCTION TRIM(DOC-PATH)
                       " is not a well-formed order: XML-CODE "
                       FUNCTION TRIM(SHOWN-CODE)
               WHEN TOO-MANY-LINES
                   DISPLAY FUNCTION TRIM(DOC-PATH)
                       " has more than " MAX-LINES " lines"
               WHEN OTHER
                   PERFORM PRINT-REPORT
           END-EVALUATE
           MOVE STOP-REASON TO RETURN-CODE
           STOP RUN.

      *> The processing procedure: the order's fields from the events.
       ON-EVENT.
           EVALUATE XML-EVENT
               WHEN "START-OF-ELEMENT"
                   MOVE XML-TEXT
                       TO CURRENT-ELEMENT
                   MOVE 0 TO CONTENT-LENGTH
                   IF CURRENT-ELEMENT = "line"
                       PERFORM START-LINE
                   END-IF
               WHEN "ATTRIBUTE-NAME"
                   MOVE XML-TEXT
                       TO CURRENT-ATTRIBUTE
               WHEN "ATTRIBUTE-CHARACTERS"
                   PERFORM TAKE-ATTRIBUTE
               WHEN "CONTENT-CHARACTERS"
               WHEN "CONTENT-CHARACTER"
                   PERFORM COLLECT-CONTENT
               WHEN "END-OF-ELEMENT"
                   PERFORM TAKE-CONTENT
                   MOVE SPACES TO CURRENT-ELEMENT
           END-EVALUATE
           IF TOO-MANY-LINES
               MOVE -1 TO XML-CODE
           END-IF.

       START-LINE.
           IF ORDER-LINE-COUNT = MAX-LINES
               SET TOO-MANY-LINES TO TRUE
           ELSE
               ADD 1 TO ORDER-LINE-COUNT
               SET LINE-IX TO ORDER-LINE-COUNT
           END-IF.

       TAKE-ATTRIBUTE.
           IF FUNCTION LENGTH(XML-TEXT) = 0
               EXIT PARAGRAPH
           END-IF
           EVALUATE CURRENT-ELEMENT ALSO CURRENT-ATTRIBUTE
               WHEN "order" ALSO "id"
                   MOVE XML-TEXT TO ORDER-ID
               WHEN "order" ALSO "date"
                   MOVE XML-TEXT
                       TO ORDER-DATE
               WHEN "line" ALSO "sku"
                   MOVE XML-TEXT
                       TO LINE-SKU(LINE-IX)
               WHEN "line" ALSO "qty"
                   COMPUTE LINE-QTY(LINE-IX) = FUNCTION NUMVAL(
                       XML-TEXT)
           END-EVALUATE.

      *> Content can arrive in pieces ("Smith ", "&", " Sons").
       COLLECT-CONTENT.
           COMPUTE COPY-LENGTH = FUNCTION MIN(FUNCTION LENGTH(XML-TEXT),
               LENGTH OF CONTENT-AREA - CONTENT-LENGTH)
           IF COPY-LENGTH > 0
               MOVE XML-TEXT(1:COPY-LENGTH)
                   TO CONTENT-AREA(CONTENT-LENGTH + 1:COPY-LENGTH)
               ADD COPY-LENGTH TO CONTENT-LENGTH
           END-IF.

       TAKE-CONTENT.
           IF CONTENT-LENGTH = 0
               EXIT PARAGRAPH
           END-IF
           EVALUATE CURRENT-ELEMENT
               WHEN "customer"
                   MOVE CONTENT-AREA(1:CONTENT-LENGTH)
                       TO ORDER-CUSTOMER
               WHEN "note"
                   MOVE CONTENT-AREA(1:CONTENT-LENGTH) TO ORDER-NOTE
               WHEN "price"
                   COMPUTE LINE-PRICE(LINE-IX) = FUNCTION NUMVAL(
                       CONTENT-AREA(1:CONTENT-LENGTH))
           END-EVALUATE
           MOVE 0 TO CONTENT-LENGTH.

       PRINT-REPORT.
           DISPLAY "Order " FUNCTION TRIM(ORDER-ID)
               " of " ORDER-DATE
           DISPLAY "Customer: " FUNCTION TRIM(ORDER-CUSTOMER)
           DISPLAY RULE-LINE
           DISPLAY "SKU          Qty          Price           Amount"
           PERFORM VARYING LINE-IX FROM 1 BY 1
                   UNTIL LINE-IX > ORDER-LINE-COUNT
               COMPUTE LINE-AMOUNT =
                   LINE-QTY(LINE-IX) * LINE-PRICE(LINE-IX)
               ADD LINE-AMOUNT TO ORDER-TOTAL
               MOVE LINE-SKU(LINE-IX) TO RL-SKU
               MOVE LINE-QTY(LINE-IX) TO RL-QTY
               MOVE LINE-PRICE(LINE-IX) TO RL-PRICE
               MOVE LINE-AMOUNT TO RL-AMOUNT
               DISPLAY REPORT-LINE
           END-PERFORM
           DISPLAY RULE-LINE
           MOVE ORDER-TOTAL TO TL-AMOUNT
           DISPLAY TOTAL-LINE
           IF ORDER-NOTE NOT = SPACES
               DISPLAY "Note: " FUNCTION TRIM(ORDER-NOTE)
           END-IF.

       END PROGRAM xmlorder.

           COPY cblxml-readdoc.
