      *> ordercgi - a CGI program: reads an order sent as the body of
      *> a POST request (one <order> in an <orders> document, as
      *> examples/data/orders.xml holds them), checks its total and
      *> answers with a <confirmation> document.
      *>
      *>     CONTENT_LENGTH=n ordercgi < request
      *>
      *> Both files are named ":CGI:": opened for input it is the
      *> request body, CONTENT_LENGTH bytes of standard input; opened
      *> for output, standard output. The answer is "accepted" when
      *> the order's total is what its lines add up to, less its
      *> discount, else "rejected". RETURN-CODE: 0 answered, 1 the
      *> request could not be read (a 400 answer, no document).
       IDENTIFICATION DIVISION.
       PROGRAM-ID. ordercgi.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
           COPY orders.
           COPY orders-file.
           COPY confirm.
           COPY confirm-file.
       01  ORDERS-FILE-NAME         PIC X(5) VALUE ":CGI:".
       01  CONFIRM-FILE-NAME        PIC X(5) VALUE ":CGI:".
       01  L                        PIC 9(4) COMP-5.
       01  GROSS                    PIC S9(7)V99.
       01  SHOWN-TOTAL              PIC -(7)9.99.

       PROCEDURE DIVISION.
       MAIN.
           PERFORM ORDERS-OPEN-INPUT
           IF ORDERS-OK
               INITIALIZE ORDERS-REC
               PERFORM ORDERS-READ
           END-IF
           IF ORDERS-FAILED
               DISPLAY "Status: 400 Bad Request"
               DISPLAY "Content-Type: text/plain" X"0A"
               DISPLAY "no order in the request"
               PERFORM ORDERS-CLOSE
               MOVE 1 TO RETURN-CODE
               STOP RUN
           END-IF
           PERFORM ORDERS-CLOSE
           PERFORM CHECK-ORDER
      *> The header lines go out before the library writes to the
      *> same standard output.
           DISPLAY "Content-Type: text/xml" X"0A"
           CALL "fflush" USING NULL RETURNING OMITTED
           MOVE 1032 TO CONFIRM-FCB-FLAGS
           PERFORM CONFIRM-OPEN-OUTPUT
           IF CONFIRM-OK
               PERFORM CONFIRM-WRITE
           END-IF
           IF CONFIRM-OK
               PERFORM CONFIRM-WRITE-DOCUMENT
           END-IF
           IF CONFIRM-FAILED
               PERFORM CONFIRM-SHOW-FAILURE
           END-IF
           PERFORM CONFIRM-CLOSE
           STOP RUN.

       CHECK-ORDER.
           MOVE ORD-ID(1) TO CONF-ORDER
           MOVE 0 TO GROSS CONF-LINES
           PERFORM VARYING L FROM 1 BY 1
                   UNTIL L > 5 OR LINE-SKU(1, L) = SPACES
               ADD 1 TO CONF-LINES
               COMPUTE GROSS = GROSS + LINE-QTY(1, L) * LINE-PRICE(1, L)
           END-PERFORM
           COMPUTE CONF-TOTAL ROUNDED = GROSS * (1 - ORD-DISCOUNT(1))
           IF CONF-LINES > 0 AND CONF-TOTAL = ORD-TOTAL(1)
               MOVE "accepted" TO CONF-STATUS
               MOVE "thank you" TO CONF-NOTE
           ELSE
               MOVE "rejected" TO CONF-STATUS
               MOVE CONF-TOTAL TO SHOWN-TOTAL
               STRING "the total should be " FUNCTION TRIM(SHOWN-TOTAL)
                   DELIMITED BY SIZE INTO CONF-NOTE
           END-IF.

           COPY orders-file-setup.
           COPY confirm-file-setup.
           COPY cblxml-io REPLACING LEADING ==CBLXML-== BY ==ORDERS-==.
           COPY cblxml-io REPLACING LEADING ==CBLXML-== BY ==CONFIRM-==.
