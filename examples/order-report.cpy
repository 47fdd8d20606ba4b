      *> order-report.cpy - the order report examples' paragraphs:
      *> an event into the order (TAKE-EVENT), a new order line
      *> (START-LINE), an attribute value and a collected content into
      *> their order fields (TAKE-ATTRIBUTE, COLLECT-CONTENT,
      *> TAKE-CONTENT), the outcome (SHOW-ORDER) and the report
      *> (PRINT-REPORT).
      *> COPY it in the PROCEDURE DIVISION, replacing ORDER-EVENT by
      *> the event's name item, ORDER-TEXT by its text item,
      *> ORDER-TEXT-LENGTH by the text's length, ORDER-CODE by the
      *> XML-CODE item and ORDER-PATH by the document's file name.
       TAKE-EVENT.
           EVALUATE ORDER-EVENT
               WHEN "START-OF-ELEMENT"
                   MOVE ORDER-TEXT(1:ORDER-TEXT-LENGTH)
                       TO CURRENT-ELEMENT
                   MOVE 0 TO CONTENT-LENGTH
                   IF CURRENT-ELEMENT = "line"
                       PERFORM START-LINE
                   END-IF
               WHEN "ATTRIBUTE-NAME"
                   MOVE ORDER-TEXT(1:ORDER-TEXT-LENGTH)
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
           END-EVALUATE.

       START-LINE.
           IF ORDER-LINE-COUNT = MAX-LINES
               SET TOO-MANY-LINES TO TRUE
           ELSE
               ADD 1 TO ORDER-LINE-COUNT
               SET LINE-IX TO ORDER-LINE-COUNT
           END-IF.

       TAKE-ATTRIBUTE.
           IF ORDER-TEXT-LENGTH = 0
               EXIT PARAGRAPH
           END-IF
           EVALUATE CURRENT-ELEMENT ALSO CURRENT-ATTRIBUTE
               WHEN "order" ALSO "id"
                   MOVE ORDER-TEXT(1:ORDER-TEXT-LENGTH) TO ORDER-ID
               WHEN "order" ALSO "date"
                   MOVE ORDER-TEXT(1:ORDER-TEXT-LENGTH)
                       TO ORDER-DATE
               WHEN "line" ALSO "sku"
                   MOVE ORDER-TEXT(1:ORDER-TEXT-LENGTH)
                       TO LINE-SKU(LINE-IX)
               WHEN "line" ALSO "qty"
                   COMPUTE LINE-QTY(LINE-IX) = FUNCTION NUMVAL(
                       ORDER-TEXT(1:ORDER-TEXT-LENGTH))
           END-EVALUATE.

      *> Content can arrive in pieces ("Smith ", "&", " Sons").
       COLLECT-CONTENT.
           COMPUTE COPY-LENGTH = FUNCTION MIN(ORDER-TEXT-LENGTH,
               LENGTH OF CONTENT-AREA - CONTENT-LENGTH)
           IF COPY-LENGTH > 0
               MOVE ORDER-TEXT(1:COPY-LENGTH)
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

      *> A broken document, too many lines, or the report.
       SHOW-ORDER.
           EVALUATE TRUE
               WHEN DOCUMENT-BROKEN
                   MOVE ORDER-CODE TO SHOWN-CODE
                   DISPLAY FUNCTION TRIM(ORDER-PATH)
                       " is not a well-formed order: XML-CODE "
                       FUNCTION TRIM(SHOWN-CODE)
               WHEN TOO-MANY-LINES
                   DISPLAY FUNCTION TRIM(ORDER-PATH)
                       " has more than " MAX-LINES " lines"
               WHEN OTHER
                   PERFORM PRINT-REPORT
           END-EVALUATE.

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
