*> Free format: code from column 1, long lines.
01 PRODUCT-REC.
   05 PRODUCT-ID PIC X(12).  *> xml: name=id
   05 PRODUCT-PRICE PIC 9(5)V99 COMP-3.   05 PRODUCT-QTY PIC 9(4) COMP-5.
   05 PRODUCT-NOTE PIC X(200).
