*> xmlnational - a national document parsed the mainframe way:
*> RETURNING NATIONAL puts every text into XML-NTEXT (UTF-16; shown
*> here through its ASCII characters, others as ?) and leaves
*> XML-TEXT empty. FUNCTION LENGTH(XML-NTEXT) counts national
*> characters. Free source format:
*>
*>     build/tools/cblxml-cobc -x -free examples/xmlnational.cbl
*>     ./xmlnational [document]  (default: examples/data/order-utf16.xml)
*>
*> A national document is UTF-16 in the machine's byte order.
IDENTIFICATION DIVISION.
PROGRAM-ID. xmlnational.
DATA DIVISION.
WORKING-STORAGE SECTION.
01  DOC-PATH          PIC X(1024) VALUE "examples/data/order-utf16.xml".
01  DOC-POINTER       USAGE POINTER.
01  DOC-SIZE          PIC 9(9) COMP-5.
01  SHOWN             PIC X(40).
01  SHOWN-LENGTH      PIC 99.
01  IX                PIC 9(4) COMP-5.
LINKAGE SECTION.
01  NATIONAL-DOC      PIC N(32768).
PROCEDURE DIVISION.
    CALL "cblxml-read-document" USING DOC-PATH DOC-POINTER DOC-SIZE
    IF RETURN-CODE NOT = 0
        STOP RUN
    END-IF
    SET ADDRESS OF NATIONAL-DOC TO DOC-POINTER
*> GnuCOBOL 3.1.2 reference-modifies a national item by bytes.
    XML PARSE NATIONAL-DOC(1:DOC-SIZE) WITH ENCODING 1200
        RETURNING NATIONAL
        PROCESSING PROCEDURE IS ON-EVENT
        ON EXCEPTION
            DISPLAY "not well-formed: XML-CODE " XML-CODE
        NOT ON EXCEPTION
            DISPLAY "parsed to the end"
    END-XML
    FREE DOC-POINTER
    MOVE 0 TO RETURN-CODE
    STOP RUN.

ON-EVENT.
    IF XML-EVENT = "START-OF-DOCUMENT"
        DISPLAY XML-EVENT " " FUNCTION LENGTH(XML-NTEXT) " characters"
        EXIT PARAGRAPH
    END-IF
    MOVE SPACES TO SHOWN
    MOVE 0 TO SHOWN-LENGTH
    PERFORM VARYING IX FROM 1 BY 2
            UNTIL IX > LENGTH OF XML-NTEXT OR SHOWN-LENGTH = 40
        ADD 1 TO SHOWN-LENGTH
        IF XML-NTEXT(IX + 1:1) = LOW-VALUE AND XML-NTEXT(IX:1) < X"80"
            MOVE XML-NTEXT(IX:1) TO SHOWN(SHOWN-LENGTH:1)
        ELSE
            MOVE "?" TO SHOWN(SHOWN-LENGTH:1)
        END-IF
    END-PERFORM
    DISPLAY XML-EVENT " " FUNCTION LENGTH(XML-NTEXT) " {"
        SHOWN(1:SHOWN-LENGTH) "}".
END PROGRAM xmlnational.

COPY cblxml-readdoc.
