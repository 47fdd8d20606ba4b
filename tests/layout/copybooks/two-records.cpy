       01 HEADER-REC.
          05 REC-KIND  PIC X VALUE "H".
          05 CREATED   PIC 9(8).
          05 FILLER    PIC X(11).
       01 DETAIL-REC.
          05 REC-KIND  PIC X VALUE "D".
          05 ITEM-NO   PIC 9(4) BINARY.
          05 ITEM-TEXT PIC X(14).
