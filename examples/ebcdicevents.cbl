      *> ebcdicevents - parses an EBCDIC document for a program whose
      *> data is EBCDIC (option 2) and prints every event as
      *> xmlevents does, the texts turned into ASCII for the terminal.
      *>
      *>     ebcdicevents [document]
      *>         (default: examples/data/order-ebcdic.xml)
      *>
      *> With option 2 the texts arrive in EBCDIC (code page 1140),
      *> ready to be compared with or moved into EBCDIC records; the
      *> event names stay in the program's native character set.
      *> RETURN-CODE as in xmlevents.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. ebcdicevents.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
           COPY cblxml.
       01  CBLXML-DOC-PATH           PIC X(1024)
               VALUE "examples/data/order-ebcdic.xml".

      *> The printable ASCII characters and the line feed, and the
      *> same characters in code page 1140, in the same order.
       01  ASCII-CHARACTERS.
           05  FILLER PIC X(16)
               VALUE X"202122232425262728292A2B2C2D2E2F".
           05  FILLER PIC X(16)
               VALUE X"303132333435363738393A3B3C3D3E3F".
           05  FILLER PIC X(16)
               VALUE X"404142434445464748494A4B4C4D4E4F".
           05  FILLER PIC X(16)
               VALUE X"505152535455565758595A5B5C5D5E5F".
           05  FILLER PIC X(16)
               VALUE X"606162636465666768696A6B6C6D6E6F".
           05  FILLER PIC X(16)
               VALUE X"707172737475767778797A7B7C7D7E0A".
       01  EBCDIC-CHARACTERS.
           05  FILLER PIC X(16)
               VALUE X"405A7F7B5B6C507D4D5D5C4E6B604B61".
           05  FILLER PIC X(16)
               VALUE X"F0F1F2F3F4F5F6F7F8F97A5E4C7E6E6F".
           05  FILLER PIC X(16)
               VALUE X"7CC1C2C3C4C5C6C7C8C9D1D2D3D4D5D6".
           05  FILLER PIC X(16)
               VALUE X"D7D8D9E2E3E4E5E6E7E8E9BAE0BBB06D".
           05  FILLER PIC X(16)
               VALUE X"79818283848586878889919293949596".
           05  FILLER PIC X(16)
               VALUE X"979899A2A3A4A5A6A7A8A9C04FD0A125".
       LINKAGE SECTION.
           COPY cblxml-text.
       PROCEDURE DIVISION.
       MAIN.
           SET CBLXML-EBCDIC TO TRUE
           PERFORM CBLXML-PARSE-FILE
           STOP RUN.

      *> The processing procedure. The text is the program's until
      *> the next call: it is turned into ASCII where it lies.
       CBLXML-ON-EVENT.
           IF CBLXML-TEXT-LENGTH > 0
               INSPECT CBLXML-TEXT(1:CBLXML-TEXT-LENGTH)
                   CONVERTING EBCDIC-CHARACTERS TO ASCII-CHARACTERS
           END-IF
           PERFORM CBLXML-SHOW-EVENT.

           COPY cblxml-calls.
       END PROGRAM ebcdicevents.

           COPY cblxml-readdoc.
