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
       01  DOC-PATH                  PIC X(1024).
       01  DOC-POINTER               USAGE POINTER.
       01  DOC-SIZE                  PIC 9(9) COMP-5.
       01  SHOWN-CODE                PIC -(9)9.
       01  PARSE-RESULT              PIC 9 VALUE 0.
       01  SHOWN-POINTER             USAGE POINTER.

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
       01  SHOWN-TEXT                PIC X(268435456).
       PROCEDURE DIVISION.
       MAIN.
           ACCEPT DOC-PATH FROM ARGUMENT-VALUE
           IF DOC-PATH = SPACES
               MOVE "examples/data/order-ebcdic.xml" TO DOC-PATH
           END-IF
           CALL "cblxml-read-document" USING
               DOC-PATH DOC-POINTER DOC-SIZE
           IF RETURN-CODE NOT = 0
               STOP RUN
           END-IF
      *> The texts are converted in a copy: the library's own stay
      *> as they were delivered.
           ALLOCATE DOC-SIZE CHARACTERS RETURNING SHOWN-POINTER
           SET ADDRESS OF SHOWN-TEXT TO SHOWN-POINTER

           SET CBLXML-EBCDIC TO TRUE
           SET CBLXML-DOCUMENT TO DOC-POINTER
           MOVE DOC-SIZE TO CBLXML-DOC-LENGTH
           PERFORM WITH TEST AFTER UNTIL CBLXML-STATE = NULL
               CALL "CBL_XMLPARSE_INTERFACE" USING
                   CBLXML-STATE CBLXML-DOCUMENT CBLXML-TEXT-PTR
                   CBLXML-DOC-LENGTH CBLXML-TEXT-LENGTH
                   CBLXML-CODE CBLXML-EVENT CBLXML-OPTIONS
                   RETURNING OMITTED
               SET ADDRESS OF CBLXML-TEXT TO CBLXML-TEXT-PTR
               PERFORM SHOW-EVENT
           END-PERFORM
           IF CBLXML-EXCEPTION
               MOVE 2 TO PARSE-RESULT
           END-IF
           PERFORM CBLXML-FREE-TEXT
           FREE SHOWN-POINTER
           FREE DOC-POINTER
           MOVE PARSE-RESULT TO RETURN-CODE
           STOP RUN.

       SHOW-EVENT.
           MOVE CBLXML-CODE TO SHOWN-CODE
           IF CBLXML-TEXT-LENGTH > 0
               MOVE CBLXML-TEXT(1:CBLXML-TEXT-LENGTH)
                   TO SHOWN-TEXT(1:CBLXML-TEXT-LENGTH)
               INSPECT SHOWN-TEXT(1:CBLXML-TEXT-LENGTH)
                   CONVERTING EBCDIC-CHARACTERS TO ASCII-CHARACTERS
               DISPLAY CBLXML-EVENT SHOWN-CODE " {"
                   SHOWN-TEXT(1:CBLXML-TEXT-LENGTH) "}"
           ELSE
               DISPLAY CBLXML-EVENT SHOWN-CODE " {}"
           END-IF.

      *> The text of the last event is the program's to free.
       CBLXML-FREE-TEXT.
           IF CBLXML-TEXT-PTR NOT = NULL
               CALL "free" USING BY VALUE CBLXML-TEXT-PTR
                   RETURNING OMITTED
               SET CBLXML-TEXT-PTR TO NULL
           END-IF.
       END PROGRAM ebcdicevents.

           COPY cblxml-readdoc.
