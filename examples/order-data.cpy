      *> order-data.cpy - the order record of the order report examples
      *> (orderreport, xmlorder), where the parse is, and the report's
      *> print lines. COPY it in WORKING-STORAGE.
       01  ORDER-RECORD.
           05  ORDER-ID              PIC X(20).
           05  ORDER-DATE            PIC X(10).
           05  ORDER-CUSTOMER        PIC X(40).
           05  ORDER-NOTE            PIC X(60).
           05  ORDER-LINE-COUNT      PIC 9(3) VALUE 0.
           05  ORDER-LINE OCCURS 50 TIMES INDEXED BY LINE-IX.
               10  LINE-SKU          PIC X(10).
               10  LINE-QTY          PIC 9(5).
               10  LINE-PRICE        PIC 9(7)V99.
       01  MAX-LINES                 PIC 9(3) VALUE 50.

      *> Where the parse is: the element whose content is collected,
      *> the attribute whose value comes next, the text so far.
       01  CURRENT-ELEMENT           PIC X(30) VALUE SPACES.
       01  CURRENT-ATTRIBUTE         PIC X(30) VALUE SPACES.
       01  CONTENT-AREA              PIC X(200).
       01  CONTENT-LENGTH            PIC 9(4) COMP-5.
       01  COPY-LENGTH               PIC 9(9) COMP-5.
       01  STOP-REASON               PIC 9 VALUE 0.
           88  READING-ON            VALUE 0.
           88  DOCUMENT-BROKEN       VALUE 2.
           88  TOO-MANY-LINES        VALUE 3.

       01  LINE-AMOUNT               PIC 9(9)V99.
       01  ORDER-TOTAL               PIC 9(9)V99 VALUE 0.
       01  REPORT-LINE.
           05  RL-SKU                PIC X(10).
           05  RL-QTY                PIC ZZ,ZZ9.
           05  FILLER                PIC X(3) VALUE SPACES.
           05  RL-PRICE              PIC Z,ZZZ,ZZ9.99.
           05  FILLER                PIC X(3) VALUE SPACES.
           05  RL-AMOUNT             PIC ZZZ,ZZZ,ZZ9.99.
       01  TOTAL-LINE.
           05  FILLER                PIC X(34) VALUE "Total".
           05  TL-AMOUNT             PIC ZZZ,ZZZ,ZZ9.99.
       01  SHOWN-CODE                PIC -(9)9.
       01  RULE-LINE                 PIC X(48) VALUE ALL "-".
