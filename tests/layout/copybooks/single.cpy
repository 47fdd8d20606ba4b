       01 ONE-ITEM PIC X(25).
