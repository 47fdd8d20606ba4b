      *> orderwrite - writes an order file: three orders, each with
      *> id and date attributes, a customer, a priority, a discount,
      *> its lines and a total, into the XML document the record
      *> description files/orders.cpy lays out.
      *>
      *>     orderwrite [file]  (default: orders.xml)
      *>
      *> One WRITE a piece, as a sequential file is written: the
      *> order element with its attributes, then each element under
      *> it (a line with everything below it: WRITE-KEEP); then one
      *> write-document puts the whole document into the file.
      *> RETURN-CODE: 0 written, 1 a statement failed (reported on
      *> standard error).
       IDENTIFICATION DIVISION.
       PROGRAM-ID. orderwrite.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
           COPY orders.
           COPY orders-file.
       01  ORDERS-FILE-NAME     PIC X(1024) VALUE "orders.xml".

      *> The orders: id, date, customer, priority, discount.
       01  SAMPLE-ORDERS.
           05 FILLER PIC X(50) VALUE
              "0010422024-03-01Acme Tools Ltd                2050".
           05 FILLER PIC X(50) VALUE
              "0010432024-03-02Brown & Sons <Hardware>       1000".
           05 FILLER PIC X(50) VALUE
              "0010442024-03-05Carla Dias                    3125".
       01  FILLER REDEFINES SAMPLE-ORDERS.
           05 SAMPLE-ORDER OCCURS 3 INDEXED BY SO.
              10 S-ID               PIC 9(6).
              10 S-DATE             PIC X(10).
              10 S-CUSTOMER         PIC X(30).
              10 S-PRIORITY         PIC 9.
              10 S-DISCOUNT         PIC V999.
      *> The lines: order (1 to 3), sku, quantity, price.
       01  SAMPLE-LINES.
           05 FILLER PIC X(21) VALUE "1BOLT-M8 +02500000012".
           05 FILLER PIC X(21) VALUE "1NUT-M8  +02500000005".
           05 FILLER PIC X(21) VALUE "1WASHER  +10000000001".
           05 FILLER PIC X(21) VALUE "2HAMMER  +00010001999".
           05 FILLER PIC X(21) VALUE "3SAW     +00020002450".
           05 FILLER PIC X(21) VALUE "3HAMMER  -00010001999".
       01  FILLER REDEFINES SAMPLE-LINES.
           05 SAMPLE-LINE OCCURS 6 INDEXED BY SL.
              10 S-ORDER            PIC 9.
              10 S-SKU              PIC X(8).
              10 S-QTY              PIC S9(4) SIGN LEADING SEPARATE.
              10 S-PRICE            PIC 9(5)V99.
       01  LINE-COUNT               PIC 99.
       01  GROSS                    PIC S9(7)V99.

       PROCEDURE DIVISION.
       MAIN.
           PERFORM ORDERS-NAME-FROM-ARGUMENT
      *> Options before the first OPEN: 8 + 1024, an XML Schema
      *> document without the xsi attributes: no DOCTYPE is written.
           MOVE 1032 TO ORDERS-FCB-FLAGS
           PERFORM ORDERS-OPEN-OUTPUT
           PERFORM WRITE-ORDER VARYING SO FROM 1 BY 1
               UNTIL SO > 3 OR ORDERS-FAILED
           IF NOT ORDERS-FAILED
               PERFORM ORDERS-WRITE-DOCUMENT
           END-IF
           IF ORDERS-FAILED
               PERFORM ORDERS-SHOW-FAILURE
               PERFORM ORDERS-CLOSE
               STOP RUN
           END-IF
           DISPLAY "wrote " ORDERS-FCB-STATUS " characters"
           PERFORM ORDERS-CLOSE
           STOP RUN.

      *> One order into ORD-ENTRY(1), then written piece by piece.
       WRITE-ORDER.
           INITIALIZE ORD-ENTRY(1)
           MOVE S-ID(SO) TO ORD-ID(1)
           MOVE S-DATE(SO) TO ORD-DATE(1)
           MOVE S-CUSTOMER(SO) TO ORD-CUSTOMER(1)
           MOVE S-PRIORITY(SO) TO ORD-PRIORITY(1)
           MOVE S-DISCOUNT(SO) TO ORD-DISCOUNT(1)
           SET ORDERS-FCB-KEY-ITEM TO ADDRESS OF ORDERS-ORD-ENTRY
           PERFORM ORDERS-WRITE
           SET ORDERS-FCB-KEY-ITEM TO
               ADDRESS OF ORDERS-ORD-CUSTOMER
           PERFORM ORDERS-WRITE
           SET ORDERS-FCB-KEY-ITEM TO
               ADDRESS OF ORDERS-ORD-PRIORITY
           PERFORM ORDERS-WRITE
           SET ORDERS-FCB-KEY-ITEM TO
               ADDRESS OF ORDERS-ORD-DISCOUNT
           PERFORM ORDERS-WRITE
           MOVE 0 TO LINE-COUNT GROSS
           SET ORDERS-FCB-KEY-ITEM TO ADDRESS OF ORDERS-ORD-LINE
           PERFORM WRITE-LINE VARYING SL FROM 1 BY 1
               UNTIL SL > 6 OR ORDERS-FAILED
           COMPUTE ORD-TOTAL(1) ROUNDED =
               GROSS * (1 - ORD-DISCOUNT(1))
           SET ORDERS-FCB-KEY-ITEM TO
               ADDRESS OF ORDERS-ORD-TOTAL
           PERFORM ORDERS-WRITE.

      *> A line of this order: filled into ORD-LINE(1, 1) and
      *> written with its attribute and elements.
       WRITE-LINE.
           IF S-ORDER(SL) = SO
               ADD 1 TO LINE-COUNT
               MOVE LINE-COUNT TO LINE-NO(1, 1)
               MOVE S-SKU(SL) TO LINE-SKU(1, 1)
               MOVE S-QTY(SL) TO LINE-QTY(1, 1)
               MOVE S-PRICE(SL) TO LINE-PRICE(1, 1)
               COMPUTE GROSS = GROSS + S-QTY(SL) * S-PRICE(SL)
               PERFORM ORDERS-WRITE-KEEP
           END-IF.

           COPY orders-file-setup.
           COPY cblxml-io REPLACING LEADING ==CBLXML-== BY ==ORDERS-==.
