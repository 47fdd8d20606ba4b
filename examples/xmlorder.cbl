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
           COPY cblxml-docarea.

           COPY order-data.
       LINKAGE SECTION.
       01  DOC                       PIC X(268435456).
       PROCEDURE DIVISION.
       MAIN.
           INITIALIZE ORDER-RECORD
           MOVE "examples/data/order.xml" TO DOC-PATH
           PERFORM CBLXML-LOAD-DOCUMENT
           XML PARSE DOC(1:DOC-SIZE)
               PROCESSING PROCEDURE ON-EVENT
               ON EXCEPTION
                   IF XML-CODE NOT = -1
                       SET DOCUMENT-BROKEN TO TRUE
                   END-IF
           END-XML
           FREE DOC-POINTER

           PERFORM SHOW-ORDER
           MOVE STOP-REASON TO RETURN-CODE
           STOP RUN.

      *> The processing procedure: the order's fields from the events.
       ON-EVENT.
           PERFORM TAKE-EVENT
           IF TOO-MANY-LINES
               MOVE -1 TO XML-CODE
           END-IF.

           COPY order-report REPLACING
               ==ORDER-EVENT== BY ==XML-EVENT==
               ==ORDER-CODE== BY ==XML-CODE==
               ==ORDER-PATH== BY ==DOC-PATH==
               ==ORDER-TEXT-LENGTH== BY ==FUNCTION LENGTH(XML-TEXT)==
               ==ORDER-TEXT== BY ==XML-TEXT==.

           COPY cblxml-loaddoc.
       END PROGRAM xmlorder.

           COPY cblxml-readdoc.
