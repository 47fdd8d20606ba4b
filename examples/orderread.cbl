      *> orderread - reads an order file back, a READ and then READ
      *> NEXT until the end, and prints every field of every order.
      *>
      *>     orderread [file]  (default: examples/data/orders.xml)
      *>
      *> The key item is the order (ORD-ENTRY): READ fills the whole
      *> record and stands on the first order, each READ NEXT moves
      *> to the next one and fills ORD-ENTRY(1) with it.
      *> RETURN-CODE: 0 read to the end, 1 a statement failed.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. orderread.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
           COPY orders.
           COPY orders-file.
       01  ORDERS-FILE-NAME     PIC X(1024)
               VALUE "examples/data/orders.xml".
       01  ORDER-COUNT              PIC 9(4) VALUE 0.
       01  L                        PIC 9(4) COMP-5.
       01  SHOWN.
           05 SHOWN-PRIORITY        PIC 9.
           05 SHOWN-DISCOUNT        PIC -9.999.
           05 SHOWN-QTY             PIC -(5)9.
           05 SHOWN-PRICE           PIC -(6)9.99.
           05 SHOWN-TOTAL           PIC -(8)9.99.

       PROCEDURE DIVISION.
       MAIN.
           PERFORM ORDERS-NAME-FROM-ARGUMENT
           SET ORDERS-FCB-KEY-ITEM TO ADDRESS OF ORDERS-ORD-ENTRY
           PERFORM ORDERS-OPEN-INPUT
           IF ORDERS-OK
               INITIALIZE ORDERS-REC
               PERFORM ORDERS-READ
           END-IF
           PERFORM UNTIL ORDERS-FAILED
               PERFORM SHOW-ORDER
               INITIALIZE ORD-ENTRY(1)
               PERFORM ORDERS-READ-NEXT
           END-PERFORM
           IF ORDERS-AT-END
               DISPLAY ORDER-COUNT " orders"
           ELSE
               PERFORM ORDERS-SHOW-FAILURE
           END-IF
           PERFORM ORDERS-CLOSE
           STOP RUN.

       SHOW-ORDER.
           ADD 1 TO ORDER-COUNT
           MOVE ORD-PRIORITY(1) TO SHOWN-PRIORITY
           MOVE ORD-DISCOUNT(1) TO SHOWN-DISCOUNT
           DISPLAY "order " ORD-ID(1) " of " ORD-DATE(1)
               " priority " SHOWN-PRIORITY
               " discount " SHOWN-DISCOUNT
           DISPLAY "  customer " FUNCTION TRIM(ORD-CUSTOMER(1))
           PERFORM VARYING L FROM 1 BY 1
                   UNTIL L > 5 OR LINE-SKU(1, L) = SPACES
               MOVE LINE-QTY(1, L) TO SHOWN-QTY
               MOVE LINE-PRICE(1, L) TO SHOWN-PRICE
               DISPLAY "  line " LINE-NO(1, L) " " LINE-SKU(1, L)
                   SHOWN-QTY " x" SHOWN-PRICE
           END-PERFORM
           MOVE ORD-TOTAL(1) TO SHOWN-TOTAL
           DISPLAY "  total" SHOWN-TOTAL.

           COPY orders-file-setup.
           COPY cblxml-io REPLACING LEADING ==CBLXML-== BY ==ORDERS-==.
