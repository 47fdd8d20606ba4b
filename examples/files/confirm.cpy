      *> confirm.cpy - the record of the answer of examples/ordercgi:
      *> <confirmation order="..."> in the namespace of the orders,
      *> with a status, the number of lines, the total the lines add
      *> up to and a note.
      *> xml: name=confirmation ns=urn:example:orders
       01 CONFIRM-REC.
      *> xml: attributes name=order
          05 CONF-ORDER           PIC 9(6).
          05 CONF-STATUS          PIC X(10).   *> xml: name=status
          05 CONF-LINES           PIC 9(2) COMP-5. *> xml: name=lines
      *> xml: name=total
          05 CONF-TOTAL           PIC S9(7)V99 COMP-3.
      *> xml: name=note
          05 CONF-NOTE            PIC X(40).
