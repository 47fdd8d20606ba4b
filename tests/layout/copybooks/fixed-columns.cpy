000100* Sequence numbers, a comment line, a debug line, text past
000200* column 72 and a literal continued on the next line.
000300 01  CUSTOMER-REC.                                                CUST0001
000400     05  CUST-NO         PIC 9(6).                                CUST0002
000500D    05  DEBUG-ONLY      PIC X(99).
000600     05  CUST-NAME       PIC X(40) VALUE "A LONG VALUE THAT IS CON
000700-        "TINUED".
000800     05  CUST-BAL        PIC S9(9)V99 COMP-3.
000900     05  CUST-FLAGS      PIC X OCCURS 8.
