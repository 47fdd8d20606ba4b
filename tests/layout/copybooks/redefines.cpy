       01 MESSAGE-REC.
          05 MSG-TYPE       PIC X.
          05 MSG-BODY       PIC X(40).
          05 MSG-ORDER REDEFINES MSG-BODY.   *> xml: keep name=order
             10 MO-ID       PIC 9(8).
             10 MO-AMOUNT   PIC S9(9)V99 COMP-3.
          05 MSG-TEXT REDEFINES MSG-BODY PIC X(20).
          05 MSG-END        PIC X(2).
