       01 ALL-USAGES.
          05 BIN-1      PIC 9 COMP.
          05 BIN-2      PIC S99 BINARY.
          05 BIN-3      PIC 9(3) COMP-4.
          05 BIN-5      PIC S9(5) COMPUTATIONAL.
          05 BIN-9      PIC 9(9) USAGE IS BINARY.
          05 BIN-10     PIC S9(10) COMP.
          05 BIN-18     PIC 9(18) COMP.
          05 NAT-1      PIC S9 COMP-5.
          05 NAT-4      PIC 9(4) COMP-5.
          05 NAT-7      PIC S9(7) COMPUTATIONAL-5.
          05 NAT-12     PIC 9(12) COMP-5.
          05 PACK-1     PIC 9 COMP-3.
          05 PACK-4     PIC S9(4) PACKED-DECIMAL.
          05 PACK-9     PIC S9(7)V99 COMPUTATIONAL-3.
          05 C6-3       PIC 9(3) COMP-6.
          05 C6-8       PIC 9(6)V99 COMP-6.
          05 CX-2       PIC 9(2) COMP-X.
          05 CX-7       PIC 9(7) COMP-X.
          05 CX-12      PIC 9(12) COMP-X.
          05 CX-ALNUM   PIC X(3) COMP-X.
          05 FLT-1      COMP-1.
          05 FLT-2      USAGE COMP-2.
          05 FLT-S      FLOAT-SHORT.
          05 FLT-L      FLOAT-LONG.
          05 BCHAR      BINARY-CHAR.
          05 BCHAR-U    BINARY-CHAR UNSIGNED.
          05 BSHORT     BINARY-SHORT SIGNED.
          05 BLONG      BINARY-LONG.
          05 BDOUBLE    BINARY-DOUBLE UNSIGNED.
          05 NAT-TEXT   PIC N(5).
          05 NAT-USAGE  PIC N(3) USAGE NATIONAL.
          05 DISP-ZONED PIC S9(5)V9(2).
          05 DISP-LEAD  PIC S9(3) SIGN IS LEADING.
          05 DISP-TRAIL PIC S9(3) TRAILING.
          05 DISP-LSEP  PIC S9(3) LEADING SEPARATE CHARACTER.
          05 DISP-TSEP  PIC S9(3) SIGN TRAILING SEPARATE.
          05 EDITED-1   PIC ZZ,ZZ9.99CR.
          05 EDITED-2   PIC $$$,$$9.99DB.
          05 EDITED-3   PIC +++9.
          05 EDITED-4   PIC 99/99/9999.
          05 EDITED-5   PIC ***,**9.
          05 ALNUM-ED   PIC XXBXX0X/X.
          05 ALPHA      PIC A(4).
          05 GROUP-COMP USAGE COMP-3.
             10 IN-1    PIC 9(3).
             10 IN-2    PIC S9(6).
          05 OUTER OCCURS 3 TIMES INDEXED BY OX.
             10 O-KEY   PIC X(2).
             10 MIDDLE  OCCURS 2.
                15 M-BIN PIC S9(4) COMP-5.
                15 INNER OCCURS 4 ASCENDING KEY IS I-VAL INDEXED BY IX.
                   20 I-VAL PIC 9(3) COMP-3.
                   20 I-FLAG PIC X.
             10 O-TAIL  PIC X(3).
          05 LAST-ONE   PIC X.
