      *> cblxml-text.cpy - a view of the current event's text.
      *> COPY it into the LINKAGE SECTION and, after every call,
      *>     SET ADDRESS OF CBLXML-TEXT TO CBLXML-TEXT-PTR
      *> then use only CBLXML-TEXT(1:CBLXML-TEXT-LENGTH), and only
      *> when CBLXML-TEXT-LENGTH is above zero. National (UTF-16)
      *> texts are viewed the same way: 2 bytes a code unit.
       01  CBLXML-TEXT               PIC X(268435456).
