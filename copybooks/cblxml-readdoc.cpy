      *> cblxml-readdoc.cpy - a small program that reads a whole file
      *> into storage it allocates: COPY it after the END PROGRAM of
      *> the program that calls it.
      *>     CALL "cblxml-read-document" USING path pointer size
      *> path is PIC X(1024), pointer USAGE POINTER, size
      *> PIC 9(9) COMP-5: for a parse, CBLXML-DOCUMENT and
      *> CBLXML-DOC-LENGTH. The file read is the one the program's
      *> next command-line argument names; without one, the file path
      *> already names (path then holds the file read). RETURN-CODE is 0 when the file was read (the
      *> caller then owns the storage: FREE pointer), else 1 and a
      *> message on standard error. The bytes are read as they are,
      *> so UTF-16 and EBCDIC files arrive intact.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. cblxml-read-document.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01  RD-DETAILS.
           05  RD-FILE-SIZE          PIC X(8) COMP-X.
           05  FILLER                PIC X(8).
       01  RD-HANDLE                 PIC X(4).
       01  RD-ACCESS-READ            PIC X COMP-X VALUE 1.
       01  RD-DENY-NONE              PIC X COMP-X VALUE 0.
       01  RD-DEVICE                 PIC X COMP-X VALUE 0.
       01  RD-OFFSET                 PIC X(8) COMP-X VALUE 0.
       01  RD-COUNT                  PIC X(4) COMP-X.
       01  RD-FLAGS                  PIC X COMP-X VALUE 0.
       01  RD-ALLOCATED              PIC 9(9) COMP-5.
       01  RD-ARGUMENT               PIC X(1024).
       LINKAGE SECTION.
       01  RD-PATH                   PIC X(1024).
       01  RD-POINTER                USAGE POINTER.
       01  RD-SIZE                   PIC 9(9) COMP-5.
       01  RD-BUFFER                 PIC X(268435456).
       PROCEDURE DIVISION USING RD-PATH RD-POINTER RD-SIZE.
           SET RD-POINTER TO NULL
           MOVE 0 TO RD-SIZE
           MOVE SPACES TO RD-ARGUMENT
           ACCEPT RD-ARGUMENT FROM ARGUMENT-VALUE
           IF RD-ARGUMENT NOT = SPACES
               MOVE RD-ARGUMENT TO RD-PATH
           END-IF
           CALL "CBL_CHECK_FILE_EXIST" USING RD-PATH RD-DETAILS
           IF RETURN-CODE NOT = 0
               DISPLAY "cannot find " FUNCTION TRIM(RD-PATH)
                   UPON SYSERR
               MOVE 1 TO RETURN-CODE
               GOBACK
           END-IF
           IF RD-FILE-SIZE > 268435456
               DISPLAY FUNCTION TRIM(RD-PATH) " is too large"
                   UPON SYSERR
               MOVE 1 TO RETURN-CODE
               GOBACK
           END-IF
           MOVE RD-FILE-SIZE TO RD-SIZE RD-COUNT
      *> An empty file still gets one byte, so the pointer is set.
           MOVE RD-SIZE TO RD-ALLOCATED
           IF RD-ALLOCATED = 0
               MOVE 1 TO RD-ALLOCATED
           END-IF
           ALLOCATE RD-ALLOCATED CHARACTERS RETURNING RD-POINTER
           SET ADDRESS OF RD-BUFFER TO RD-POINTER
           CALL "CBL_OPEN_FILE" USING RD-PATH RD-ACCESS-READ
               RD-DENY-NONE RD-DEVICE RD-HANDLE
           IF RETURN-CODE = 0 AND RD-SIZE > 0
               CALL "CBL_READ_FILE" USING RD-HANDLE RD-OFFSET
                   RD-COUNT RD-FLAGS RD-BUFFER
           END-IF
           IF RETURN-CODE NOT = 0
               DISPLAY "cannot read " FUNCTION TRIM(RD-PATH)
                   UPON SYSERR
               FREE RD-POINTER
               MOVE 0 TO RD-SIZE
               MOVE 1 TO RETURN-CODE
               GOBACK
           END-IF
           CALL "CBL_CLOSE_FILE" USING RD-HANDLE
           MOVE 0 TO RETURN-CODE
           GOBACK.
       END PROGRAM cblxml-read-document.
