      *> nationalevents - parses a national (UTF-16) document and
      *> prints every event as xmlevents does, the texts turned into
      *> UTF-8 for the terminal.
      *>
      *>     nationalevents [document]
      *>         (default: examples/data/order-utf16.xml)
      *>
      *> A national document is UTF-16 in the machine's byte order,
      *> as a national item holds it, without a byte order mark. With
      *> option 1 every text arrives as UTF-16 too, two bytes a code
      *> unit. It is held in alphanumeric items: this compiler keeps
      *> PIC N data as UTF-8, not UTF-16.
      *> RETURN-CODE as in xmlevents.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. nationalevents.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
           COPY cblxml.
       01  CBLXML-DOC-PATH           PIC X(1024)
               VALUE "examples/data/order-utf16.xml".

      *> UTF-16 to UTF-8: a code unit read in machine order, the code
      *> point it makes (with the next unit for a surrogate pair),
      *> and the UTF-8 bytes written so far.
       01  UNIT-BYTES                PIC XX.
       01  UNIT-VALUE REDEFINES UNIT-BYTES
                                     USAGE BINARY-SHORT UNSIGNED.
       01  CODE-POINT                PIC 9(7) COMP-5.
       01  IN-POS                    PIC 9(9) COMP-5.
       01  UTF8-POINTER              USAGE POINTER VALUE NULL.
       01  UTF8-SIZE                 PIC 9(9) COMP-5.
       01  UTF8-LENGTH               PIC 9(9) COMP-5.
       01  UTF8-BYTE                 PIC 9(3) COMP-5.
       01  LEAD-PART                 PIC 9(7) COMP-5.
       LINKAGE SECTION.
           COPY cblxml-text.
       01  UTF8-TEXT                 PIC X(268435456).
       PROCEDURE DIVISION.
       MAIN.
           SET CBLXML-NATIONAL TO TRUE
           PERFORM CBLXML-PARSE-FILE
           IF UTF8-POINTER NOT = NULL
               FREE UTF8-POINTER
           END-IF
           STOP RUN.

      *> The processing procedure: the text turned into UTF-8, then
      *> shown through the text view, which is pointed at the UTF-8
      *> copy (the library's text stays where CBLXML-TEXT-PTR says).
       CBLXML-ON-EVENT.
      *> No text is longer than the document, and a 2-byte code unit
      *> never needs more than 3 bytes of UTF-8.
           IF UTF8-POINTER = NULL
               COMPUTE UTF8-SIZE = CBLXML-DOC-LENGTH * 3 / 2 + 4
               ALLOCATE UTF8-SIZE CHARACTERS RETURNING UTF8-POINTER
               SET ADDRESS OF UTF8-TEXT TO UTF8-POINTER
           END-IF
           PERFORM TEXT-TO-UTF8
           SET ADDRESS OF CBLXML-TEXT TO UTF8-POINTER
           MOVE UTF8-LENGTH TO CBLXML-TEXT-LENGTH
           PERFORM CBLXML-SHOW-EVENT.

       TEXT-TO-UTF8.
           MOVE 0 TO UTF8-LENGTH
           PERFORM VARYING IN-POS FROM 1 BY 2
                   UNTIL IN-POS + 1 > CBLXML-TEXT-LENGTH
               MOVE CBLXML-TEXT(IN-POS:2) TO UNIT-BYTES
               MOVE UNIT-VALUE TO CODE-POINT
               IF CODE-POINT >= 55296 AND CODE-POINT <= 56319
                       AND IN-POS + 3 <= CBLXML-TEXT-LENGTH
                   PERFORM JOIN-SURROGATES
               END-IF
               PERFORM PUT-CODE-POINT
           END-PERFORM.

      *> A high surrogate followed by a low one is one code point
      *> above U+FFFF; a lone surrogate is written as it is.
       JOIN-SURROGATES.
           MOVE CBLXML-TEXT(IN-POS + 2:2) TO UNIT-BYTES
           IF UNIT-VALUE >= 56320 AND UNIT-VALUE <= 57343
               COMPUTE CODE-POINT = 65536
                   + (CODE-POINT - 55296) * 1024
                   + (UNIT-VALUE - 56320)
               ADD 2 TO IN-POS
           END-IF.

       PUT-CODE-POINT.
           EVALUATE TRUE
               WHEN CODE-POINT < 128
                   MOVE CODE-POINT TO UTF8-BYTE
                   PERFORM PUT-BYTE
               WHEN CODE-POINT < 2048
                   DIVIDE CODE-POINT BY 64 GIVING LEAD-PART
                   COMPUTE UTF8-BYTE = 192 + LEAD-PART
                   PERFORM PUT-BYTE
                   PERFORM PUT-TRAIL-BYTE
               WHEN CODE-POINT < 65536
                   DIVIDE CODE-POINT BY 4096 GIVING LEAD-PART
                   COMPUTE UTF8-BYTE = 224 + LEAD-PART
                   PERFORM PUT-BYTE
                   PERFORM PUT-MIDDLE-BYTE
                   PERFORM PUT-TRAIL-BYTE
               WHEN OTHER
                   DIVIDE CODE-POINT BY 262144 GIVING LEAD-PART
                   COMPUTE UTF8-BYTE = 240 + LEAD-PART
                   PERFORM PUT-BYTE
                   COMPUTE UTF8-BYTE = 128 + FUNCTION MOD(
                       FUNCTION INTEGER-PART(CODE-POINT / 4096), 64)
                   PERFORM PUT-BYTE
                   PERFORM PUT-MIDDLE-BYTE
                   PERFORM PUT-TRAIL-BYTE
           END-EVALUATE.

       PUT-MIDDLE-BYTE.
           COMPUTE UTF8-BYTE = 128 + FUNCTION MOD(
               FUNCTION INTEGER-PART(CODE-POINT / 64), 64)
           PERFORM PUT-BYTE.

       PUT-TRAIL-BYTE.
           COMPUTE UTF8-BYTE = 128 + FUNCTION MOD(CODE-POINT, 64)
           PERFORM PUT-BYTE.

       PUT-BYTE.
           ADD 1 TO UTF8-LENGTH
           MOVE FUNCTION CHAR(UTF8-BYTE + 1)
               TO UTF8-TEXT(UTF8-LENGTH:1).

           COPY cblxml-calls.
       END PROGRAM nationalevents.

           COPY cblxml-readdoc.
