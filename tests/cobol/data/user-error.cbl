      *> A cobc error after an XML PARSE statement and after a COPY:
      *> reported at the user's own file and line.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. user-error.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
           COPY cblxml.
       01  DOC       PIC X(20) VALUE "<a/>".
       PROCEDURE DIVISION.
           XML PARSE DOC
               PROCESSING PROCEDURE P1
               ON EXCEPTION
                   DISPLAY XML-CODE
           END-XML
           MOVE XML-TEXT TO NO-SUCH-ITEM
           STOP RUN.
       P1.
           DISPLAY XML-EVENT.
