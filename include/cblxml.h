/*
 * cblxml: the XML run-time library that compiled COBOL programs call.
 *
 * This is the public header; the file I/O part is in cblxml_files.h, which
 * it includes. It declares the exported entries and the structures whose
 * byte layouts are a contract with generated code: every such offset is
 * pinned by a static assertion. Plain C (C99) and C++17.
 *
 * Ownership, in short:
 *  - the caller owns its COBOL items and the XML PARSE list head;
 *  - the library owns the event records it builds; each record is freed when
 *    it is delivered; a delivered text buffer is borrowed by the caller until
 *    the next delivering call (which frees it) or the caller frees it.
 */
#ifndef CBLXML_H
#define CBLXML_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define CBLXML_API __attribute__((visibility("default")))
#else
#define CBLXML_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------- */
/* Option word of a parse (unsigned 32-bit)                                */
/* ---------------------------------------------------------------------- */
enum {
    CBLXML_OPT_NATIONAL = 1,      /* document and texts are UTF-16 (XML-NTEXT) */
    CBLXML_OPT_EBCDIC_DATA = 2,   /* the program's alphanumeric data is EBCDIC */
    CBLXML_OPT_TREE = 4,          /* build a document tree (file I/O side) */
    CBLXML_OPT_VALIDATE = 8,      /* validating parse */
    CBLXML_OPT_VALIDATE_ONLY = 16 /* validating parse, errors only */
};

/* Length of the XML-EVENT item: space padded, not terminated. */
#define CBLXML_EVENT_NAME_LEN 30

/* ---------------------------------------------------------------------- */
/* One XML PARSE event                                                     */
/* ---------------------------------------------------------------------- */
typedef struct xd_parse_info {
    char *event_name;           /* 30 space-padded bytes, own allocation */
    char *text;                 /* terminated text (byte or UTF-16), or NULL */
    int32_t code;               /* XML-CODE; -1 marks the terminal record */
    struct xd_parse_info *prev; /* previous record (sentinel for the first) */
    struct xd_parse_info *next; /* next record; NULL for the last */
} xd_parse_info;

/* ---------------------------------------------------------------------- */
/* Error record of a tree-mode parse                                       */
/* ---------------------------------------------------------------------- */
typedef struct xd_dom_parse_err_t {
    uint32_t column;    /* column of the error */
    uint32_t line;      /* line of the error */
    uint32_t errorCode; /* the parser's error number */
    int32_t isXmlError; /* 1 when the error is from the XML-errors domain */
    void *message;      /* UTF-16 message, owned by the record (free()) */
} xd_dom_parse_err_t;

/* ---------------------------------------------------------------------- */
/* Document tree node (one record type for every kind)                     */
/* ---------------------------------------------------------------------- */
enum {
    XD_DOM_ELEMENT = 1,
    XD_DOM_ATTRIBUTE = 2,
    XD_DOM_TEXT = 3,
    XD_DOM_PI = 7,
    XD_DOM_DOCUMENT = 9
};

typedef struct xd_dom_node_t {
    uint32_t kind;                      /* XD_DOM_... */
    char *name;                         /* owned, NUL-terminated */
    char *namespace_uri;                /* owned, or NULL */
    char *value;                        /* owned, or NULL */
    struct xd_dom_node_t *parent;       /* for an attribute: its element */
    struct xd_dom_node_t *first_child;  /* elements, text, PIs in order */
    struct xd_dom_node_t *next_sibling; /* next child, or next attribute */
    struct xd_dom_node_t *prev_sibling; /* NULL for the first of a list */
    struct xd_dom_node_t *first_attribute;
    void *owner;                      /* the tree context; never followed */
    struct xd_dom_node_t *last_child; /* kept up to date by appenders */
    struct xd_dom_node_t *last_attribute;
} xd_dom_node_t;

/* ---------------------------------------------------------------------- */
/* Data-map item description (40 bytes)                                    */
/* ---------------------------------------------------------------------- */
typedef struct dm_item_desc {
    uint32_t length;        /* byte length of the item */
    uint32_t class_code;    /* 16 numeric ... 21 national, 22 DBCS */
    uint32_t usage_code;    /* 8 DISPLAY, 9 NATIONAL, 0..7 numeric usages */
    uint32_t sign_flag;     /* 1 when the item is signed */
    uint32_t sign_position; /* 0 .. 4 */
    uint32_t digits;        /* number of digit positions */
    uint32_t scale;         /* decimal places */
    uint32_t reserved;      /* alignment; zero */
    const char *format;     /* the item's PICTURE text, NUL-terminated, or NULL */
} dm_item_desc;

/* Data-map class and usage codes. */
enum {
    DM_CLASS_NUMERIC = 16,
    DM_CLASS_ALPHABETIC = 17,
    DM_CLASS_ALNUM_EDITED = 18,
    DM_CLASS_ALPHANUMERIC = 19,
    DM_CLASS_NUMERIC_EDITED = 20,
    DM_CLASS_NATIONAL = 21,
    DM_CLASS_DBCS = 22
};
enum {
    DM_USAGE_BINARY = 0,
    DM_USAGE_COMP1 = 1,
    DM_USAGE_COMP2 = 2,
    DM_USAGE_PACKED = 3,
    DM_USAGE_COMP5 = 5,
    DM_USAGE_COMP6 = 6,
    DM_USAGE_COMPX = 7,
    DM_USAGE_DISPLAY = 8,
    DM_USAGE_NATIONAL = 9
};
/* Text forms of DMGetCblData / DMSetCblData. */
enum {
    DM_FORM_UTF8 = 64,
    DM_FORM_FLOAT = 129,
    DM_FORM_DOUBLE = 130
};

/* ---------------------------------------------------------------------- */
/* Run-time services a host may install                                    */
/* ---------------------------------------------------------------------- */
typedef struct cblxml_services {
    uint32_t size; /* sizeof(cblxml_services) of the caller; newer fields
                      beyond it keep their defaults */
    void (*thread_lock)(void);
    void (*thread_unlock)(void);
    /* Exception continuation: begin(service, 0, 0) gives a handle;
       resume(handle) is called when the continue flag is set. */
    void *(*exception_begin)(void *service, intptr_t a, intptr_t b);
    void (*exception_resume)(void *handle);
    const char *(*get_env)(const char *name);
    /* File services (cblxml_files.h). resolve_name(name, length, 1024-byte
       result area, 1) gives a name handle or NULL; open_stream(0, handle,
       run-time mode 1/10/3, result area) gives a stream or NULL;
       release_name(handle) frees the handle. */
    void *(*resolve_name)(const char *name, uint32_t length, char *result, int32_t flag);
    void (*release_name)(void *handle);
    struct cblxml_stream *(*open_stream)(int32_t zero, void *handle, int32_t mode, char *result);
    /* Code-page conversion of item text (the run-time's cobstringconvert):
       `length` bytes of `text` in the encoding `from` become target form
       `form` (3 = UTF-8). With `out` NULL only the length is computed into
       *out_length; otherwise *out_length is the room on entry and the bytes
       written on return. Returns 0, or non-zero when the conversion cannot be
       made. The default converts through iconv. */
    int32_t (*string_convert)(const char *from, int32_t form, const void *text, uint32_t length,
                              void *out, uint32_t *out_length);
} cblxml_services;

/* Installs the host's services; NULL members keep the defaults. A NULL table
   restores every default. Returns 0, or 1 when the table is too small. */
CBLXML_API int cblxml_register_services(const cblxml_services *services);

/* ---------------------------------------------------------------------- */
/* XML PARSE entries                                                       */
/* ---------------------------------------------------------------------- */

/* Delivers one event per call; the first call (null head) parses the
   document. A call with both `code` and `event_name` NULL frees what is left.
   Texts handed out through `text` are borrowed until the next call. */
CBLXML_API void CBL_XMLPARSE_INTERFACE(xd_parse_info **state, void **document, void **text,
                                       uint32_t *document_length, uint32_t *text_length, void *code,
                                       char *event_name, uint32_t *flags);

/* The same delivery for callers that pass plain values and own the text
   area; the area must hold the longest text (the whole document). */
CBLXML_API void CBL_XMLPARSE_INTERFACE_WRAP(xd_parse_info **state, void *document_base,
                                            uint32_t document_offset, uint32_t document_length,
                                            void *text_area, uint32_t *text_length, void *code,
                                            void *event_base, uint32_t event_offset,
                                            uint32_t flags);

/* Exception continuation: hands the continue flag to the run-time. */
CBLXML_API void CBL_XMLPARSE_EXCEPTION(int32_t continue_flag);
CBLXML_API void CBL_XMLPARSE_EXCEPTION2(int32_t continue_flag);

/* Present so that a run-time can resolve the library by this name. */
CBLXML_API void CBL_XMLIO(void);

/* ---------------------------------------------------------------------- */
/* Engine entries                                                          */
/* ---------------------------------------------------------------------- */

/* Parses `document` into the event list behind `sentinel`. */
CBLXML_API int32_t kvt_xe_xmlparse(xd_parse_info *sentinel, const void *document, uint32_t length,
                                   uint32_t flags);

/* Parses in event mode (out = xd_parse_info ** of the sentinel) or tree mode
   (flags & 4; out = xd_dom_node_t ** receiving the document node).
   Returns 0 ok, 1 init failure or stopped early (tree), 2 empty main entity
   (tree), 3 other failure. */
CBLXML_API int32_t kvt_xe_xml_dom_parse(const void *document, uint32_t length, void *out,
                                        xd_dom_parse_err_t **error_record, uint32_t flags);

/* Frees one event record with its name and text; links are not touched. */
CBLXML_API void kvt_xe_xmlparse_delete_info(xd_parse_info *record);

/* Stores `value` most significant byte first into a 4-byte COBOL item. */
CBLXML_API void kvt_put4ws(void *destination, uint32_t value);

/* Document tree: constructors return 0, or 1 with *out NULL. */
CBLXML_API int kvt_xe_xml_dom_doc_node(xd_dom_node_t **out);
CBLXML_API int kvt_xe_xml_dom_element_node(void *owner, xd_dom_node_t **out, const char *name,
                                           const char *namespace_uri);
CBLXML_API int kvt_xe_xml_dom_attr_node(void *owner, xd_dom_node_t **out, const char *name,
                                        const char *namespace_uri, const char *value);
CBLXML_API int kvt_xe_xml_dom_text_node(void *owner, xd_dom_node_t **out, const char *chars,
                                        uint32_t length, int keep_blank);
/* Takes ownership of `target` and `data` on success only. */
CBLXML_API int kvt_xe_xml_dom_pi_node(void *owner, xd_dom_node_t **out, char *target, char *data);
CBLXML_API void kvt_xe_xml_dom_free_node(xd_dom_node_t *node, int unlink);

/* ---------------------------------------------------------------------- */
/* Data map: COBOL items <-> text                                          */
/* ---------------------------------------------------------------------- */

/* kind: 0 national document, 1 alphanumeric; add 2 for EBCDIC program data.
   Returns NULL only when the code page cannot be opened. */
CBLXML_API void *DMInit(int32_t kind, int32_t reserved1, int32_t reserved2, int32_t decimal_point,
                        int32_t grouping);
CBLXML_API void DMTerm(void *handle);
/* Item -> text. *text_length: room in `text` on entry, bytes written on
   return (form 64 counts its one terminating NUL). Returns 0 or 1. */
CBLXML_API int32_t DMGetCblData(void *handle, const dm_item_desc *desc, const void *item,
                                int32_t form, void *text, uint32_t *text_length);
/* Text -> item, as a COBOL MOVE. Returns 0, or 1 (the item still receives a
   defined value: zero or spaces). */
CBLXML_API int32_t DMSetCblData(void *handle, const dm_item_desc *desc, void *item, int32_t form,
                                const void *text, uint32_t text_length);

#ifdef __cplusplus
} /* extern "C" */
#endif

/* ---------------------------------------------------------------------- */
/* Layout checks                                                           */
/* ---------------------------------------------------------------------- */
#ifdef __cplusplus
#define CBLXML_STATIC_ASSERT static_assert
#else
#define CBLXML_STATIC_ASSERT _Static_assert
#endif

#if UINTPTR_MAX == 0xFFFFFFFFFFFFFFFFu
CBLXML_STATIC_ASSERT(sizeof(xd_parse_info) == 40, "xd_parse_info size");
CBLXML_STATIC_ASSERT(offsetof(xd_parse_info, event_name) == 0, "event_name");
CBLXML_STATIC_ASSERT(offsetof(xd_parse_info, text) == 8, "text");
CBLXML_STATIC_ASSERT(offsetof(xd_parse_info, code) == 16, "code");
CBLXML_STATIC_ASSERT(offsetof(xd_parse_info, prev) == 24, "prev");
CBLXML_STATIC_ASSERT(offsetof(xd_parse_info, next) == 32, "next");

CBLXML_STATIC_ASSERT(sizeof(xd_dom_parse_err_t) == 24, "xd_dom_parse_err_t size");
CBLXML_STATIC_ASSERT(offsetof(xd_dom_parse_err_t, column) == 0, "column");
CBLXML_STATIC_ASSERT(offsetof(xd_dom_parse_err_t, line) == 4, "line");
CBLXML_STATIC_ASSERT(offsetof(xd_dom_parse_err_t, errorCode) == 8, "errorCode");
CBLXML_STATIC_ASSERT(offsetof(xd_dom_parse_err_t, isXmlError) == 12, "isXmlError");
CBLXML_STATIC_ASSERT(offsetof(xd_dom_parse_err_t, message) == 16, "message");

CBLXML_STATIC_ASSERT(sizeof(xd_dom_node_t) == 96, "xd_dom_node_t size");
CBLXML_STATIC_ASSERT(offsetof(xd_dom_node_t, kind) == 0, "kind");
CBLXML_STATIC_ASSERT(offsetof(xd_dom_node_t, name) == 8, "name");
CBLXML_STATIC_ASSERT(offsetof(xd_dom_node_t, namespace_uri) == 16, "namespace_uri");
CBLXML_STATIC_ASSERT(offsetof(xd_dom_node_t, value) == 24, "value");
CBLXML_STATIC_ASSERT(offsetof(xd_dom_node_t, parent) == 32, "parent");
CBLXML_STATIC_ASSERT(offsetof(xd_dom_node_t, first_child) == 40, "first_child");
CBLXML_STATIC_ASSERT(offsetof(xd_dom_node_t, next_sibling) == 48, "next_sibling");
CBLXML_STATIC_ASSERT(offsetof(xd_dom_node_t, prev_sibling) == 56, "prev_sibling");
CBLXML_STATIC_ASSERT(offsetof(xd_dom_node_t, first_attribute) == 64, "first_attribute");
CBLXML_STATIC_ASSERT(offsetof(xd_dom_node_t, owner) == 72, "owner");
CBLXML_STATIC_ASSERT(offsetof(xd_dom_node_t, last_child) == 80, "last_child");
CBLXML_STATIC_ASSERT(offsetof(xd_dom_node_t, last_attribute) == 88, "last_attribute");

CBLXML_STATIC_ASSERT(sizeof(dm_item_desc) == 40, "dm_item_desc size");
CBLXML_STATIC_ASSERT(offsetof(dm_item_desc, length) == 0, "length");
CBLXML_STATIC_ASSERT(offsetof(dm_item_desc, class_code) == 4, "class_code");
CBLXML_STATIC_ASSERT(offsetof(dm_item_desc, usage_code) == 8, "usage_code");
CBLXML_STATIC_ASSERT(offsetof(dm_item_desc, sign_flag) == 12, "sign_flag");
CBLXML_STATIC_ASSERT(offsetof(dm_item_desc, sign_position) == 16, "sign_position");
CBLXML_STATIC_ASSERT(offsetof(dm_item_desc, digits) == 20, "digits");
CBLXML_STATIC_ASSERT(offsetof(dm_item_desc, scale) == 24, "scale");
CBLXML_STATIC_ASSERT(offsetof(dm_item_desc, format) == 32, "format");
#endif

/* XML-enabled file I/O: descriptors, record entries, file control block. */
#include "cblxml_files.h"

#endif /* CBLXML_H */
