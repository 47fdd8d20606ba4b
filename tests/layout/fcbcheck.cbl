      *> cblxml-file.cpy against the header: fields set here are
      *> printed by C, values set by C are tested here, and the
      *> library answers through the block.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. FCBCHECK.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       COPY cblxml-file REPLACING LEADING ==CBLXML-== BY ==F-==.
       PROCEDURE DIVISION.
           SET F-FCB-KEY-ITEM F-FCB-NAME TO ADDRESS OF F-FCB
           MOVE 1 TO F-FCB-ARG2-LEN
           MOVE 2 TO F-FCB-KEY-OCCURRENCE
           MOVE 3 TO F-FCB-REC-NO
           MOVE 4 TO F-FCB-REC-READ
           MOVE 5 TO F-FCB-NAME-LEN
           MOVE 6 TO F-FCB-DOCTYPE-LEN
           MOVE 7 TO F-FCB-READ-BUF-LEN
           MOVE 8 TO F-FCB-REC-COUNT
           MOVE -300 TO F-FCB-STATUS
           MOVE 4000000000 TO F-FCB-FLAGS
           SET F-MODE-I-O TO TRUE
           SET F-OP-INSERT-TEXT TO TRUE
           CALL "fcb_report" USING F-FCB RETURNING OMITTED
           IF F-UNWRITTEN-CHANGES AND F-FAILED AND F-MODE-EXTEND
                   AND F-OP-REWRITE
               DISPLAY "88 levels see the C values"
           END-IF
           INITIALIZE F-FCB
           SET F-FCB-KEY-ITEM F-FCB-NAME TO NULL
           SET F-OP-READ TO TRUE
           CALL "CBL_XMLIO_INTERFACE" USING F-FCB OMITTED
               RETURNING OMITTED
           IF F-NOT-OPEN
               DISPLAY "READ before OPEN: not open"
           END-IF
           SET F-OP-OPEN TO TRUE
           MOVE 9 TO F-FCB-OPEN-MODE
           CALL "CBL_XMLIO_INTERFACE" USING F-FCB OMITTED
               RETURNING OMITTED
           IF F-BAD-MODE AND F-FCB-FLAGS = 1
               DISPLAY "OPEN with mode 9: bad mode, block linked"
           END-IF
           STOP RUN.
