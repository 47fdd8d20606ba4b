      *> cblxml-docarea.cpy - the WORKING-STORAGE items of
      *> CBLXML-LOAD-DOCUMENT (cblxml-loaddoc.cpy): the file to read
      *> when no command-line argument names one (MOVE it to DOC-PATH
      *> first), and where the document lies once read.
       01  DOC-PATH                  PIC X(1024) VALUE SPACES.
       01  DOC-POINTER               USAGE POINTER.
       01  DOC-SIZE                  PIC 9(9) COMP-5.
