      *> orderreport - reads a purchase order document into a record
      *> and prints it as a small report with line amounts and the
      *> order total.
      *>
      *>     orderreport [document]  (default: examples/data/order.xml)
      *>
      *> The document looks like examples/data/order.xml: an <order>
      *> with id and date attributes, a <customer>, <line> elements
      *> (sku and qty attributes, a <price>) and an optional <note>.
      *> RETURN-CODE: 0 done, 1 the file cannot be read, 2 the
      *> document is not well-formed, 3 it holds too many lines.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. orderreport.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
           COPY cblxml.
       01  CBLXML-DOC-PATH           PIC X(1024)
               VALUE "examples/data/order.xml".

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
           COPY cblxml-text.
       PROCEDURE DIVISION.
       MAIN.
           INITIALIZE ORDER-RECORD
      *> A parse given up half way (too many lines) is cleaned up by
      *> the parse paragraph.
           PERFORM CBLXML-PARSE-FILE
           IF RETURN-CODE = 1
               STOP RUN
           END-IF

           EVALUATE TRUE
               WHEN DOCUMENT-BROKEN
                   MOVE CBLXML-CODE TO CBLXML-SHOWN-CODE
                   DISPLAY FUNCTION TRIM(CBLXML-DOC-PATH)
                       " is not a well-formed order: XML-CODE "
                       FUNCTION TRIM(CBLXML-SHOWN-CODE)
               WHEN TOO-MANY-LINES
                   DISPLAY FUNCTION TRIM(CBLXML-DOC-PATH)
                       " has more than " MAX-LINES " lines"
               WHEN OTHER
                   PERFORM PRINT-REPORT
           END-EVALUATE
           MOVE STOP-REASON TO RETURN-CODE
           STOP RUN.

      *> The processing procedure: the order's fields from the events.
       CBLXML-ON-EVENT.
           EVALUATE CBLXML-EVENT
               WHEN "START-OF-ELEMENT"
                   MOVE CBLXML-TEXT(1:CBLXML-TEXT-LENGTH)
                       TO CURRENT-ELEMENT
                   MOVE 0 TO CONTENT-LENGTH
                   IF CURRENT-ELEMENT = "line"
                       PERFORM START-LINE
                   END-IF
               WHEN "ATTRIBUTE-NAME"
                   MOVE CBLXML-TEXT(1:CBLXML-TEXT-LENGTH)
                       TO CURRENT-ATTRIBUTE
               WHEN "ATTRIBUTE-CHARACTERS"
                   PERFORM TAKE-ATTRIBUTE
               WHEN "CONTENT-CHARACTERS"
               WHEN "CONTENT-CHARACTER"
                   PERFORM COLLECT-CONTENT
               WHEN "END-OF-ELEMENT"
                   PERFORM TAKE-CONTENT
                   MOVE SPACES TO CURRENT-ELEMENT
               WHEN "EXCEPTION"
                   SET DOCUMENT-BROKEN TO TRUE
           END-EVALUATE
           IF NOT READING-ON
               SET CBLXML-STOP TO TRUE
           END-IF.

       START-LINE.
           IF ORDER-LINE-COUNT = MAX-LINES
               SET TOO-MANY-LINES TO TRUE
           ELSE
               ADD 1 TO ORDER-LINE-COUNT
               SET LINE-IX TO ORDER-LINE-COUNT
           END-IF.

       TAKE-ATTRIBUTE.
           IF CBLXML-TEXT-LENGTH = 0
               EXIT PARAGRAPH
           END-IF
           EVALUATE CURRENT-ELEMENT ALSO CURRENT-ATTRIBUTE
               WHEN "order" ALSO "id"
                   MOVE CBLXML-TEXT(1:CBLXML-TEXT-LENGTH) TO ORDER-ID
               WHEN "order" ALSO "date"
                   MOVE CBLXML-TEXT(1:CBLXML-TEXT-LENGTH)
                       TO ORDER-DATE
               WHEN "line" ALSO "sku"
                   MOVE CBLXML-TEXT(1:CBLXML-TEXT-LENGTH)
                       TO LINE-SKU(LINE-IX)
               WHEN "line" ALSO "qty"
                   COMPUTE LINE-QTY(LINE-IX) = FUNCTION NUMVAL(
                       CBLXML-TEXT(1:CBLXML-TEXT-LENGTH))
           END-EVALUATE.

      *> Content can arrive in pieces ("Smith ", "&", " Sons").
       COLLECT-CONTENT.
           COMPUTE COPY-LENGTH = FUNCTION MIN(CBLXML-TEXT-LENGTH,
               LENGTH OF CONTENT-AREA - CONTENT-LENGTH)
           IF COPY-LENGTH > 0
               MOVE CBLXML-TEXT(1:COPY-LENGTH)
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

           COPY cblxml-calls.
       END PROGRAM orderreport.

           COPY cblxml-readdoc.
