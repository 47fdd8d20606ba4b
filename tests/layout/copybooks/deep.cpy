       01 DEEP-REC.
        02 L2.
         03 L3 OCCURS 2.
          04 L4.
           05 L5 OCCURS 2.
            06 L6   PIC X.
            06 L6-N PIC 9(3) COMP-3.
           05 L5-AFTER PIC X(3).
         03 L3-AFTER PIC X.
        02 L2-AFTER PIC 99V99 USAGE DISPLAY.
