       01 GROUPS-REC.
          05 G-BIN COMP-5.
             10 GB-1 PIC S9(3).
             10 GB-2 PIC 9(8).
          05 G-SEP SIGN LEADING SEPARATE.
             10 GS-1 PIC S9(4).
             10 GS-2 PIC S9(2)V9.
          05 G-NAT USAGE NATIONAL.
             10 GN-1 PIC N(4).
          05 G-JUST PIC X(7) JUSTIFIED RIGHT.
          05 G-BLANK PIC 9(4) BLANK WHEN ZERO.
