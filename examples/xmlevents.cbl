      *> xmlevents - prints every event of an XML document, one line
      *> an event: the event name, XML-CODE and the text in braces,
      *> as an XML PARSE processing procedure that displays the
      *> event, the code and the text would.
      *>
      *>     xmlevents [document]    (default: examples/data/order.xml)
      *>
      *> Ends with RETURN-CODE 0 when the document was parsed to its
      *> end, 1 when the file cannot be read, 2 when the parse ended
      *> with an EXCEPTION event.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. xmlevents.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
           COPY cblxml.
       01  CBLXML-DOC-PATH           PIC X(1024)
               VALUE "examples/data/order.xml".
       LINKAGE SECTION.
           COPY cblxml-text.
       PROCEDURE DIVISION.
       MAIN.
           PERFORM CBLXML-PARSE-FILE
           STOP RUN.

      *> The processing procedure: every event, one line.
       CBLXML-ON-EVENT.
           PERFORM CBLXML-SHOW-EVENT.

           COPY cblxml-calls.
       END PROGRAM xmlevents.

           COPY cblxml-readdoc.
