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

           COPY order-data.
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

           PERFORM SHOW-ORDER
           MOVE STOP-REASON TO RETURN-CODE
           STOP RUN.

      *> The processing procedure: the order's fields from the events.
       CBLXML-ON-EVENT.
           PERFORM TAKE-EVENT
           IF NOT READING-ON
               SET CBLXML-STOP TO TRUE
           END-IF.

           COPY order-report REPLACING
               ==ORDER-EVENT== BY ==CBLXML-EVENT==
               ==ORDER-CODE== BY ==CBLXML-CODE==
               ==ORDER-PATH== BY ==CBLXML-DOC-PATH==
               ==ORDER-TEXT-LENGTH== BY ==CBLXML-TEXT-LENGTH==
               ==ORDER-TEXT== BY ==CBLXML-TEXT==.

           COPY cblxml-calls.
       END PROGRAM orderreport.

           COPY cblxml-readdoc.
