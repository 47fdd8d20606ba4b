      *> xml: name=order ns=urn:example:order
       01 ORDER-REC.
          05 ORDER-ATTRS.                 *> xml: attributes
             10 ORDER-ID      PIC 9(6).
             10 ORDER-DATE    PIC X(10).
          05 CUSTOMER         PIC X(30).
          05 TOTAL            PIC S9(7)V99 SIGN LEADING SEPARATE.
          05 TOTAL-X REDEFINES TOTAL PIC X(10).
          05 FILLER           PIC X(3) VALUE SPACES.
          05 N-LINES          PIC 9(2) COMP-5.
      *> xml: name=line
          05 ORDER-LINE OCCURS 1 TO 5 DEPENDING ON N-LINES.
             10 SKU           PIC X(8).
             10 QTY           PIC S9(4) COMP.
                88 QTY-ZERO   VALUE 0.
             10 PRICE         PIC S9(5)V99 COMP-3.
             10 AMOUNT        PIC -ZZ,ZZ9.99.
