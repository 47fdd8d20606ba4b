      *> Forms of the statement: two in one program (one from a
      *> copybook), THRU, both EXCEPTION phrases, a nested program
      *> with its own registers and a statement ended by a period.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. xmlparse-forms.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01  FIRST-DOC      PIC X(16) VALUE "<a x='1'>t</a>".
       01  SECOND-DOC     PIC X(14) VALUE '<a b="&zz;"/>'.
       PROCEDURE DIVISION.
           XML PARSE FIRST-DOC
               PROCESSING PROCEDURE SHOW-EVENT THRU SHOW-EXIT
               ON EXCEPTION DISPLAY "first: exception " XML-CODE
               NOT ON EXCEPTION DISPLAY "first: parsed " XML-CODE
           END-XML
           COPY xmlparse-stmt.
           CALL "xmlparse-nested"
           DISPLAY "kept: " XML-EVENT XML-CODE " {" XML-TEXT "}"
           STOP RUN.
       SHOW-EVENT.
           DISPLAY XML-EVENT "{" XML-TEXT "}".
       SHOW-EXIT.
           EXIT.

       IDENTIFICATION DIVISION.
       PROGRAM-ID. xmlparse-nested.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01  NESTED-DOC     PIC X(13) VALUE "<n>nested</n>".
       PROCEDURE DIVISION.
           XML PARSE NESTED-DOC PROCESSING PROCEDURE NESTED-EVENT.
           DISPLAY "nested: " XML-EVENT XML-CODE
           GOBACK.
       NESTED-EVENT.
           IF XML-EVENT = "CONTENT-CHARACTERS"
               DISPLAY "nested: " XML-TEXT
           END-IF.
       END PROGRAM xmlparse-nested.
       END PROGRAM xmlparse-forms.
