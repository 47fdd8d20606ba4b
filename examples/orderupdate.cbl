      *> orderupdate - updates an order file in place: cancels the
      *> first order (DELETE), raises a quantity of the next one
      *> (REWRITE), adds a repeat of it as a new order (WRITE-KEEP)
      *> and makes the third order urgent (START on it, REWRITE);
      *> then one write-document replaces the file's document.
      *>
      *>     orderupdate [file]  (default: orders.xml)
      *>
      *> Prints a line for each statement. RETURN-CODE: 0 updated,
      *> 1 a statement failed (reported on standard error).
       IDENTIFICATION DIVISION.
       PROGRAM-ID. orderupdate.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
           COPY orders.
           COPY orders-file.
       01  ORDERS-FILE-NAME     PIC X(1024) VALUE "orders.xml".
       01  DOING                     PIC X(40).

       PROCEDURE DIVISION.
       MAIN.
           PERFORM ORDERS-NAME-FROM-ARGUMENT
           MOVE 1032 TO ORDERS-FCB-FLAGS
           SET ORDERS-FCB-KEY-ITEM TO ADDRESS OF ORDERS-ORD-ENTRY
           MOVE "open i-o" TO DOING
           PERFORM ORDERS-OPEN-I-O
           IF ORDERS-OK
               MOVE "read" TO DOING
               PERFORM ORDERS-READ
           END-IF
           IF NOT ORDERS-FAILED
               PERFORM UPDATE-ORDERS
           END-IF
           IF NOT ORDERS-FAILED
               MOVE "write-document" TO DOING
               PERFORM ORDERS-WRITE-DOCUMENT
           END-IF
           IF ORDERS-FAILED
               DISPLAY "failed: " DOING
               PERFORM ORDERS-SHOW-FAILURE
           ELSE
               DISPLAY "document written"
           END-IF
           PERFORM ORDERS-CLOSE
           STOP RUN.

       UPDATE-ORDERS.
      *> The first order: START on it, READ NEXT, DELETE. The next
      *> order becomes the position, and READ NEXT reads it.
           MOVE 1 TO ORDERS-FCB-KEY-OCCURRENCE
           MOVE "start on the first order" TO DOING
           PERFORM ORDERS-START
           IF ORDERS-OK
               PERFORM NEXT-ORDER
           END-IF
           IF ORDERS-OK
               MOVE "delete" TO DOING
               PERFORM ORDERS-DELETE
               DISPLAY "cancelled order " ORD-ID(1)
               PERFORM NEXT-ORDER
           END-IF
      *> Three of its first line, the total anew.
           IF ORDERS-OK
               MOVE 3 TO LINE-QTY(1, 1)
               COMPUTE ORD-TOTAL(1) ROUNDED = LINE-QTY(1, 1) *
                   LINE-PRICE(1, 1) * (1 - ORD-DISCOUNT(1))
               MOVE "rewrite" TO DOING
               PERFORM ORDERS-REWRITE
               DISPLAY "order " ORD-ID(1) ": quantity 3"
           END-IF
      *> A repeat of it, under a new id and date, written after it
      *> with all it holds (the lines it was read with).
           IF ORDERS-OK
               MOVE 1045 TO ORD-ID(1)
               MOVE "2024-03-08" TO ORD-DATE(1)
               MOVE "write the repeat order" TO DOING
               PERFORM ORDERS-WRITE-KEEP
               DISPLAY "added order " ORD-ID(1)
           END-IF
      *> The third order from the top: urgent.
           IF ORDERS-OK
               MOVE 3 TO ORDERS-FCB-KEY-OCCURRENCE
               MOVE "start on the third order" TO DOING
               PERFORM ORDERS-START
           END-IF
           IF ORDERS-OK
               PERFORM NEXT-ORDER
           END-IF
           IF ORDERS-OK
               MOVE 1 TO ORD-PRIORITY(1)
               MOVE "rewrite the third order" TO DOING
               PERFORM ORDERS-REWRITE
               DISPLAY "order " ORD-ID(1) ": priority 1"
           END-IF.

       NEXT-ORDER.
           MOVE "read next" TO DOING
           INITIALIZE ORD-ENTRY(1)
           PERFORM ORDERS-READ-NEXT
           IF ORDERS-OK
               DISPLAY "at order " ORD-ID(1) " "
                   FUNCTION TRIM(ORD-CUSTOMER(1))
           END-IF.

           COPY orders-file-setup.
           COPY cblxml-io REPLACING LEADING ==CBLXML-== BY ==ORDERS-==.
