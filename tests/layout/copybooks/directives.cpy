      *> xml: name=doc ns=urn:example:doc
       01 DOC-REC.
          05 DOC-ATTRS.                     *> xml: attributes
             10 DOC-VERSION  PIC 9V9.       *> xml: name=version
             10 DOC-LANG     PIC X(5).      *> xml: name=xml:lang
      *> xml: any-name any-ns
          05 ANY-CHILD.
             10 CHILD-NAME   PIC X(30).     *> xml: receives=name
             10 CHILD-NS     PIC X(60).     *> xml: receives=ns
             10 CHILD-TEXT   PIC X(80).     *> xml: content
          05 DOC-PI          PIC X(100).    *> xml: receives=pi
          05 ENTRY-ROW OCCURS 10.           *> xml: name=row no-count
             10 ROW-VALUE    PIC X(10).
             10 FILLER       PIC X(10).     *> xml: name=pad
          05 SECRET          PIC X(8).      *> xml: omit
          05 DOC-NOTE        PIC X(20).
      *> A directive may stand before 88 levels it steps over.
             88 NOTE-EMPTY   VALUE SPACES.
