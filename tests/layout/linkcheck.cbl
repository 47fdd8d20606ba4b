      *> Prints the record entries that the copybooks cblxml-layout
      *> wrote for record.cpy hold once the set-up paragraph has run.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. LINKCHECK.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       COPY "record.cpy".
       COPY "record-xml.cpy".
       PROCEDURE DIVISION.
           PERFORM LT-SETUP
           CALL "layout_dump" USING LT-RECORDS LT-FCB-REC-COUNT
               RETURNING OMITTED
           STOP RUN.
       COPY "record-xml-setup.cpy".
