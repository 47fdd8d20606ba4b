      *> orders.cpy - the record of an order file: the document
      *> element <orders> in the namespace urn:example:orders, each
      *> <order> with id and date attributes, a customer, a
      *> priority, a discount, a table of up to 5 lines and a total.
      *> cblxml-layout makes the file's control block and item
      *> descriptors from it (orders-xml.cpy, orders-xml-setup.cpy);
      *> the comments that start with "xml:" give the XML names
      *> (docs/layout.md). A READ fills the whole record, each
      *> READ NEXT the first order, ORD-ENTRY(1).
      *> xml: name=orders ns=urn:example:orders
       01 ORDERS-REC.
      *> xml: name=order
          05 ORD-ENTRY OCCURS 10.
             10 ORD-ID            PIC 9(6).  *> xml: attributes name=id
      *> xml: attributes name=date
             10 ORD-DATE          PIC X(10).
             10 ORD-CUSTOMER      PIC X(30).   *> xml: name=customer
             10 ORD-PRIORITY      PIC 9 COMP-5. *> xml: name=priority
      *> xml: name=discount
             10 ORD-DISCOUNT      PIC S9V999 SIGN LEADING SEPARATE.
      *> xml: name=line
             10 ORD-LINE OCCURS 5.
      *> xml: attributes name=no
                15 LINE-NO        PIC 99 COMP.
                15 LINE-SKU       PIC X(8).    *> xml: name=sku
                15 LINE-QTY       PIC S9(4) COMP-5. *> xml: name=qty
      *> xml: name=price
                15 LINE-PRICE     PIC S9(5)V99 COMP-3.
             10 ORD-TOTAL         PIC S9(7)V99. *> xml: name=total
