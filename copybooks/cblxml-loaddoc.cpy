      *> cblxml-loaddoc.cpy - the paragraph that reads a whole file
      *> into memory for an XML PARSE statement, with the program
      *> cblxml-read-document (cblxml-readdoc.cpy). COPY it in the
      *> PROCEDURE DIVISION after the program's own paragraphs. The
      *> program copies cblxml-docarea.cpy (DOC-PATH, DOC-POINTER,
      *> DOC-SIZE) and declares DOC in LINKAGE: after
      *> CBLXML-LOAD-DOCUMENT, DOC(1:DOC-SIZE) is the document. A
      *> file that cannot be read ends the run (RETURN-CODE 1); FREE
      *> DOC-POINTER when the parse is over.
       CBLXML-LOAD-DOCUMENT.
           CALL "cblxml-read-document" USING
               DOC-PATH DOC-POINTER DOC-SIZE
           IF RETURN-CODE NOT = 0
               STOP RUN
           END-IF
           SET ADDRESS OF DOC TO DOC-POINTER.
