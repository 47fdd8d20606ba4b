/*
 * cblxml: XML-enabled file I/O. The layouts that generated code shares with
 * the library (item descriptors, record entries, count arrays, the file
 * control block) and the entries that work on them. Included by cblxml.h;
 * plain C (C99) and C++17. Every offset that the contract fixes is pinned by
 * a static assertion at the end.
 *
 * Ownership: the caller (the compiled program) owns the descriptors, the
 * record entries, count arrays, record areas and the file control block. The
 * library owns what it hangs on the block: the tree anchor and its tree
 * (`doc`), `read_buf`, `dm_handle` and `stream`; CLOSE releases them all.
 */
#ifndef CBLXML_FILES_H
#define CBLXML_FILES_H

/* cblxml.h includes this header at its end; the guard above ends the cycle. */
#include "cblxml.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------- */
/* Item descriptor (IDESC)                                                 */
/* ---------------------------------------------------------------------- */
/*
 * A record layout is a contiguous sequence of variable-length descriptors,
 * one per data item, in the order of the record description. Each is a head
 * of IDESC_HEAD_SIZE bytes (IDESC_WIDE_HEAD_SIZE when any flag of
 * IDESC_WIDE_FLAGS is set), then up to three inline strings, each padded to
 * a multiple of 16 bytes: the name, the namespace URI and the third string
 * (the item's format text). The strings are not terminated.
 *
 * How the 132-byte head is expressed: a natural C struct with 8-byte
 * pointers would be padded to 136 bytes, so the struct is declared packed
 * (alignment 1). Descriptors follow each other without padding, so every
 * second one starts 4 bytes off an 8-byte boundary: never take the address
 * of a member, and read and write the fields through the packed type or
 * with memcpy at offsetof(IDESC, field).
 */
#define IDESC_HEAD_SIZE 132u
#define IDESC_WIDE_HEAD_SIZE 136u
#define IDESC_WIDE_FLAGS 0xFF00u /* any of bits 8 to 15: 136-byte head */
#define IDESC_STRING_UNIT 16u    /* inline strings are padded to this */

#pragma pack(push, 1)
typedef struct IDESC {
    struct IDESC *parent;       /* enclosing group; NULL for the record (linkage) */
    struct IDESC *prev_sibling; /* previous item of the same group (linkage) */
    struct IDESC *next_sibling; /* next item of the same group (linkage) */
    struct IDESC *first_child;  /* first subordinate item (linkage) */
    struct IDESC *last_child;   /* last subordinate item (linkage) */
    struct IDESC *prev_desc;    /* previous descriptor of the sequence (linkage) */
    struct IDESC *next_desc;    /* next descriptor of the sequence (linkage cache) */
    const char *name_ptr;       /* inline name (linkage) */
    const char *namespace_ptr;  /* inline namespace URI (linkage) */
    const char *third_ptr;      /* inline third string (linkage) */
    uint8_t compiler_data[4];   /* not read by the library */
    uint32_t offset;            /* byte offset of the item in the record area */
    uint32_t length;            /* bytes of one occurrence (a table's stride) */
    uint32_t occurs_max;        /* OCCURS maximum; 0 = not a table */
    uint32_t count_slot;        /* the item's slot in the count array (linkage) */
    uint32_t slot_span;         /* count slots under one occurrence (linkage) */
    uint32_t flags;             /* IDESC_... bits below */
    uint32_t subscript;         /* current occurrence, 1-based */
    uint32_t namespace_len;     /* 0 = any namespace */
    uint32_t name_len;          /* 0 = unnamed item (receives content) */
    uint32_t third_len;         /* length of the third string */
    uint8_t level;              /* level number, 01 to 49 */
    uint8_t digits;             /* digit positions */
    uint8_t scale;              /* decimal places */
    uint8_t sign_position;      /* sign position code source */
    uint8_t class_source;       /* class code source (1 = numeric display) */
    uint8_t usage_source;       /* usage code source */
    uint8_t compiler_data2[2];  /* not read by the library */
} IDESC;
#pragma pack(pop)

/* IDESC flags. */
enum {
    IDESC_ATTRIBUTES = 0x1,      /* holds the element's attributes */
    IDESC_SIGNED = 0x2,          /* signed item */
    IDESC_NO_NAME = 0x8,         /* matches any element name; no name string */
    IDESC_NO_NAMESPACE = 0x10,   /* matches any namespace; no namespace string */
    IDESC_GETS_NAME = 0x20,      /* receives the element's name */
    IDESC_GETS_NAMESPACE = 0x40, /* receives the element's namespace URI */
    IDESC_GETS_PI = 0x80,        /* receives a processing instruction */
    IDESC_NO_COUNT = 0x10000     /* no count kept: always its maximum */
};

/* ---------------------------------------------------------------------- */
/* Record entry and count array                                            */
/* ---------------------------------------------------------------------- */
/*
 * One 64-byte entry per record layout of the file. The count array has
 * (root's slot_span + 1) u32 slots: each item has one slot for its own
 * count, followed by the slots of its subordinate items, repeated
 * occurs_max times for a table.
 */
#define XML_COUNT_NONE 0xFFFFFFFFu /* count slot: no count kept, read as the maximum */
#define XML_REC_LINKED 0x1u        /* link_flags: the entry is linked */

typedef struct xml_rec_entry_t {
    IDESC *root;          /* the record's first descriptor (level 01) */
    IDESC *last_desc;     /* the last descriptor consumed by linkage */
    uint32_t *counts;     /* the count array */
    void *data;           /* the record area */
    uint32_t reserved32;  /* not used */
    uint32_t desc_count;  /* descriptors of the record: bounds every walk */
    uint32_t link_flags;  /* XML_REC_LINKED */
    uint8_t reserved[20]; /* not used */
} xml_rec_entry_t;

/* Links the first `n` entries that are not linked yet: fills the tree
   pointers, string pointers, count slots and spans of their descriptors.
   A linked entry is left as it is. */
CBLXML_API void kvt_xe_xml_rec_link(xml_rec_entry_t *entries, uint32_t n);
/* Address of the item's count slot for the occurrence being filled (the
   counts of enclosing tables select it); NULL when it lies outside the
   count array. */
CBLXML_API uint32_t *kvt_xe_xml_itm_countadd_get(xml_rec_entry_t *entry, IDESC *item);
/* Value of the item's count slot for the current subscripts; 0 when the
   subscripts select no slot. */
CBLXML_API uint32_t kvt_xe_xml_itm_count_get(xml_rec_entry_t *entry, IDESC *item);
/* Adds `n` to the slot of countadd_get; a slot holding XML_COUNT_NONE
   becomes `n`. */
CBLXML_API void kvt_xe_xml_itm_count_add(xml_rec_entry_t *entry, IDESC *item, uint32_t n);
/* The number of occurrences to treat as present. */
CBLXML_API uint32_t kvt_xe_xml_itm_count_max(xml_rec_entry_t *entry, IDESC *item);
/* Address of the item in the record area for the current occurrence (by
   subscripts when `by_subscript` is non-zero, else by counts); NULL when an
   index is out of range or the item would end past the record. */
CBLXML_API void *kvt_xe_xml_itm_addr_get(xml_rec_entry_t *entry, IDESC *item,
                                         uint32_t by_subscript);
/* Fill the entry's count array with 0, or with XML_COUNT_NONE. */
CBLXML_API void kvt_xe_xml_rec_count_reset_zeroes(xml_rec_entry_t *entry);
CBLXML_API void kvt_xe_xml_rec_count_reset_maximum(xml_rec_entry_t *entry);
/* The same for `n` consecutive entries. */
CBLXML_API void kvt_xe_xml_rec_reset_zeroes(xml_rec_entry_t *entries, uint32_t n);
CBLXML_API void kvt_xe_xml_rec_reset_maximum(xml_rec_entry_t *entries, uint32_t n);

/* ---------------------------------------------------------------------- */
/* Streams                                                                 */
/* ---------------------------------------------------------------------- */
/*
 * A stream object of the run-time: its operation table, then its error-code
 * field. The defaults are POSIX files; ":CI:" and ":CO:" are standard input
 * and output. A host installs its own through cblxml_register_services.
 */
enum {
    CBLXML_STREAM_READ = 1,       /* run-time open mode: read */
    CBLXML_STREAM_CREATE = 10,    /* create or truncate, write */
    CBLXML_STREAM_READ_WRITE = 3, /* read and write, created when missing */
    CBLXML_SEEK_START = 0,
    CBLXML_SEEK_END = 2,
    CBLXML_STREAM_IO_ERROR = 18, /* error_code: a failed read, write, seek, flush or close */
    CBLXML_STREAM_NO_ROOM = 31   /* error_code: no room (ENOSPC, EFBIG, EDQUOT) */
};

typedef struct cblxml_stream cblxml_stream;

typedef struct cblxml_stream_ops {
    /* Closes and frees the stream. Returns 0, or -1 after an error. */
    int32_t (*close)(cblxml_stream *stream);
    /* Writes all `length` bytes. Returns 0, or -1 (error_code set). */
    int32_t (*write)(cblxml_stream *stream, const void *data, uint32_t length);
    /* Moves to `offset` from the start (whence 0) or the end (2). Returns
       the new position, or -1 (error_code set). */
    int64_t (*seek)(cblxml_stream *stream, int64_t offset, int32_t whence);
    /* Cuts the file to `size` bytes. Returns 0, or -1 (error_code set). */
    int32_t (*truncate)(cblxml_stream *stream, int64_t size);
    /* Hands written data to the system. Returns 0, or -1 (error_code set). */
    int32_t (*flush)(cblxml_stream *stream);
    /* Reads up to `length` bytes. Returns the bytes read (0 at the end), or
       -1 (error_code set). */
    int64_t (*read)(cblxml_stream *stream, void *buffer, uint32_t length);
} cblxml_stream_ops;

struct cblxml_stream {
    const cblxml_stream_ops *ops;
    int32_t error_code; /* 0, CBLXML_STREAM_IO_ERROR or CBLXML_STREAM_NO_ROOM */
};

/* ---------------------------------------------------------------------- */
/* File control block and tree anchor                                      */
/* ---------------------------------------------------------------------- */

/* The document held by an open file; allocated zeroed by the library. */
typedef struct xml_doc_anchor_t {
    xd_dom_node_t *document; /* the document node */
    xd_dom_node_t *current;  /* the read position, or NULL */
    uint32_t position_mode;  /* 0 idle, 2 walking, 0xFFFFFFFF after a delete,
                                else the START occurrence */
} xml_doc_anchor_t;

typedef struct xmlio_fcb {
    xml_doc_anchor_t *doc;    /* the held document, or NULL */
    xml_rec_entry_t *records; /* rec_count record entries */
    IDESC *key_item;          /* the item that positions the file */
    void *reserved24;         /* not used */
    const char *name;         /* file name, or the data item (XMLIO_IN_MEMORY) */
    const char *doctype_name; /* DOCTYPE text or schema location, or NULL */
    char *read_buf;           /* input buffer owned by the library */
    void *builder_aux;        /* passed on to the record-to-tree builder */
    void *dm_handle;          /* DMInit handle, released at CLOSE */
    const char *arg2;         /* second argument, stored for opcodes 9 and 10 */
    cblxml_stream *stream;    /* the open stream, or NULL */
    uint32_t arg2_len;
    uint32_t key_occurrence; /* START occurrence (0 = first match) */
    uint32_t rec_no;         /* record description named by the statement, 1-based */
    uint32_t rec_read;       /* record description the last read matched */
    uint32_t name_len;       /* length of name, or size of the data item */
    uint32_t doctype_len;
    uint32_t read_buf_len;
    uint32_t rec_count; /* entries in records */
    uint32_t reserved120;
    int32_t status; /* result of the last call (XMLIO_ST_...) */
    uint32_t flags; /* XMLIO_... option and state bits */
    uint8_t reserved132;
    uint8_t open_mode; /* 1 input, 2 output, 3 input-output, 4 extend */
    uint8_t opcode;    /* XMLIO_OP_... */
} xmlio_fcb;

/* Flags of xmlio_fcb. */
enum {
    XMLIO_INITIALISED = 0x1,      /* state: record linkage done */
    XMLIO_SCHEMA = 0x8,           /* option: the document uses an XML Schema */
    XMLIO_IN_MEMORY = 0x20,       /* option: the document is held in a data item */
    XMLIO_MODIFIED = 0x40,        /* state: the tree holds unwritten changes */
    XMLIO_URL = 0x80,             /* state: the name is an HTTP URL */
    XMLIO_CGI = 0x100,            /* state: the name is a CGI name */
    XMLIO_DECIMAL_COMMA = 0x200,  /* option: decimal point is comma */
    XMLIO_NO_XSI = 0x400,         /* option: with XMLIO_SCHEMA, no xsi attributes */
    XMLIO_COMPACT = 0x800,        /* option: no line ends, no indentation */
    XMLIO_VALIDATE_READ = 0x1000, /* option: READ parses with validation */
    XMLIO_VERIFY = 0x2000         /* option: parse the written document again */
};

/* Open modes and operation codes. */
enum {
    XMLIO_INPUT = 1,
    XMLIO_OUTPUT = 2,
    XMLIO_IO = 3,
    XMLIO_EXTEND = 4
};
enum {
    XMLIO_OP_OPEN = 1,
    XMLIO_OP_CLOSE = 2,
    XMLIO_OP_WRITE_DOC = 3,
    XMLIO_OP_READ = 4,
    XMLIO_OP_START = 5,
    XMLIO_OP_READ_NEXT = 6,
    XMLIO_OP_WRITE = 7,
    XMLIO_OP_WRITE_KEEP = 8,
    XMLIO_OP_INSERT_PI = 9,
    XMLIO_OP_INSERT_TEXT = 10,
    XMLIO_OP_DELETE = 11,
    XMLIO_OP_REWRITE = 12
};

/* Status values left in xmlio_fcb.status. */
enum {
    XMLIO_ST_OK = 0,
    XMLIO_ST_NOT_OPEN = -1,     /* not initialised, or the file is not open */
    XMLIO_ST_BAD_OPCODE = -2,   /* no such operation here */
    XMLIO_ST_BAD_MODE = -3,     /* open mode refused */
    XMLIO_ST_OPEN_FAILED = -4,  /* the name or stream could not be opened */
    XMLIO_ST_NO_DOCUMENT = -5,  /* START, READ NEXT, DELETE, REWRITE without a tree */
    XMLIO_ST_NO_MATCH = -6,     /* record or key mismatch */
    XMLIO_ST_NO_CURRENT = -7,   /* no current node, or end of file */
    XMLIO_ST_NO_POSITION = -8,  /* WRITE into a tree without a current node */
    XMLIO_ST_PARSE_FAILED = -9, /* a document did not parse */
    XMLIO_ST_UNWRITTEN = -10,   /* the tree holds unwritten changes */
    XMLIO_ST_URL_READ = -11,    /* READ of an HTTP URL */
    XMLIO_ST_URL_WRITE = -12,   /* write-document to an HTTP URL */
    XMLIO_ST_READ_ERROR = -13,  /* the stream failed while reading */
    XMLIO_ST_WRITE_ERROR = -14, /* the stream failed after writing */
    XMLIO_ST_CLOSE_ERROR = -15  /* the stream had failed by CLOSE */
};

/* The read side of a file: obtains the text of one document (the kept rest
   of the previous one, the data item, or the stream), parses it into the
   held tree and maps its root element onto the first record layout that
   matches. Leaves 0 or a negative status in fcb->status and returns it. */
CBLXML_API int32_t kvt_xe_xmlio_parse_stream(xmlio_fcb *fcb);
/* The node under `node` that `item` describes (its name, namespace and the
   chain of its ancestors); with `occurrence` n >= 1 the n-th of the run of
   like siblings in which the first found node stands. NULL when none. */
CBLXML_API xd_dom_node_t *kvt_xe_xml_dom_search(xd_dom_node_t *node, IDESC *item,
                                                xml_rec_entry_t *entry, uint32_t occurrence);
/* Maps `node` (with `start` 0: its child element whose rank among those
   matching `item` is item's subscript) onto `item` and its subordinate
   items in the record area of `entry`. */
CBLXML_API void kvt_xe_xml_dom_readnext(xml_rec_entry_t *entry, IDESC *item, xd_dom_node_t *node,
                                        void *dm_handle, uint32_t start);

/* One call per file statement: the operation named by fcb->opcode. Every
   result is left in fcb->status; the block stays usable after any failure.
   `arg2` is stored in the block for opcodes 9 and 10 only. */
CBLXML_API void CBL_XMLIO_INTERFACE(xmlio_fcb *fcb, const char *arg2);

/* Writing. kvt_xe_xmlio_write_stream turns the current record (entry
   rec_read) into tree nodes when the held tree has no matching document
   element, and, for opcode 3 only, writes the whole tree as XML text to the
   stream or the data item and drops it; for the WRITE opcodes it positions
   the tree on the key item's node instead. `top` is 1 for write-document and
   the second WRITE form. The result is left in fcb->status (for opcode 3 the
   number of characters produced). */
CBLXML_API void kvt_xe_xmlio_write_stream(xmlio_fcb *fcb, int32_t top);
/* Inserts the key item of record entry rec_no next to the anchor's current
   node, or under the nearest node that can hold it, and makes it current.
   Without `replacing` the new element keeps only its text and attributes.
   Returns the status it leaves in fcb->status: 0, or -8 when no place fits. */
CBLXML_API int32_t kvt_xe_xml_dom_insert(xmlio_fcb *fcb, int32_t replacing);
/* Takes `node` out of its list (a document node: the whole tree) and frees
   it with everything below it. When the anchor's current node lies inside
   it, the position moves to the node's next sibling (position mode -1).
   Returns 0, or 1 for a null node. */
CBLXML_API int32_t kvt_xe_xml_dom_delete(xmlio_fcb *fcb, xd_dom_node_t *node);
/* Replaces `node` by a fresh copy of the key item built from the record:
   the copy is linked beside it on the side the position mode gives, then
   `node` is deleted. The position stays where it was unless it lay inside
   `node` (then it is the copy). Returns the status it leaves: 0, or the
   insert's failure (-8: no place), with the tree unchanged. */
CBLXML_API int32_t kvt_xe_xml_dom_modify(xmlio_fcb *fcb, xd_dom_node_t *node);
/* Inserts the arg2_len bytes at arg2 next to the current node and makes
   them current (position mode 0): a processing instruction for opcode 9
   (target up to the first space, data the rest unless blank), else a text
   node ending in CR LF unless XMLIO_COMPACT. Without a tree a document node
   is made first. Returns 0, -8 (nodes but no current node) or -2 (nothing
   could be made: no text, a blank instruction, no memory). */
CBLXML_API int32_t kvt_xe_xml_dom_insertPIPT(xmlio_fcb *fcb);

#ifdef __cplusplus
} /* extern "C" */
#endif

/* ---------------------------------------------------------------------- */
/* Layout checks                                                           */
/* ---------------------------------------------------------------------- */
#if UINTPTR_MAX == 0xFFFFFFFFFFFFFFFFu
CBLXML_STATIC_ASSERT(sizeof(IDESC) == IDESC_HEAD_SIZE, "IDESC head size");
CBLXML_STATIC_ASSERT(offsetof(IDESC, parent) == 0, "parent");
CBLXML_STATIC_ASSERT(offsetof(IDESC, prev_sibling) == 8, "prev_sibling");
CBLXML_STATIC_ASSERT(offsetof(IDESC, next_sibling) == 16, "next_sibling");
CBLXML_STATIC_ASSERT(offsetof(IDESC, first_child) == 24, "first_child");
CBLXML_STATIC_ASSERT(offsetof(IDESC, last_child) == 32, "last_child");
CBLXML_STATIC_ASSERT(offsetof(IDESC, prev_desc) == 40, "prev_desc");
CBLXML_STATIC_ASSERT(offsetof(IDESC, next_desc) == 48, "next_desc");
CBLXML_STATIC_ASSERT(offsetof(IDESC, name_ptr) == 56, "name_ptr");
CBLXML_STATIC_ASSERT(offsetof(IDESC, namespace_ptr) == 64, "namespace_ptr");
CBLXML_STATIC_ASSERT(offsetof(IDESC, third_ptr) == 72, "third_ptr");
CBLXML_STATIC_ASSERT(offsetof(IDESC, compiler_data) == 80, "compiler_data");
CBLXML_STATIC_ASSERT(offsetof(IDESC, offset) == 84, "offset");
CBLXML_STATIC_ASSERT(offsetof(IDESC, length) == 88, "length");
CBLXML_STATIC_ASSERT(offsetof(IDESC, occurs_max) == 92, "occurs_max");
CBLXML_STATIC_ASSERT(offsetof(IDESC, count_slot) == 96, "count_slot");
CBLXML_STATIC_ASSERT(offsetof(IDESC, slot_span) == 100, "slot_span");
CBLXML_STATIC_ASSERT(offsetof(IDESC, flags) == 104, "flags");
CBLXML_STATIC_ASSERT(offsetof(IDESC, subscript) == 108, "subscript");
CBLXML_STATIC_ASSERT(offsetof(IDESC, namespace_len) == 112, "namespace_len");
CBLXML_STATIC_ASSERT(offsetof(IDESC, name_len) == 116, "name_len");
CBLXML_STATIC_ASSERT(offsetof(IDESC, third_len) == 120, "third_len");
CBLXML_STATIC_ASSERT(offsetof(IDESC, level) == 124, "level");
CBLXML_STATIC_ASSERT(offsetof(IDESC, digits) == 125, "digits");
CBLXML_STATIC_ASSERT(offsetof(IDESC, scale) == 126, "scale");
CBLXML_STATIC_ASSERT(offsetof(IDESC, sign_position) == 127, "sign_position");
CBLXML_STATIC_ASSERT(offsetof(IDESC, class_source) == 128, "class_source");
CBLXML_STATIC_ASSERT(offsetof(IDESC, usage_source) == 129, "usage_source");
CBLXML_STATIC_ASSERT(offsetof(IDESC, compiler_data2) == 130, "compiler_data2");

CBLXML_STATIC_ASSERT(sizeof(xml_rec_entry_t) == 64, "record entry size");
CBLXML_STATIC_ASSERT(offsetof(xml_rec_entry_t, root) == 0, "root");
CBLXML_STATIC_ASSERT(offsetof(xml_rec_entry_t, last_desc) == 8, "last_desc");
CBLXML_STATIC_ASSERT(offsetof(xml_rec_entry_t, counts) == 16, "counts");
CBLXML_STATIC_ASSERT(offsetof(xml_rec_entry_t, data) == 24, "data");
CBLXML_STATIC_ASSERT(offsetof(xml_rec_entry_t, desc_count) == 36, "desc_count");
CBLXML_STATIC_ASSERT(offsetof(xml_rec_entry_t, link_flags) == 40, "link_flags");

CBLXML_STATIC_ASSERT(sizeof(xmlio_fcb) == 136, "xmlio_fcb size");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, doc) == 0, "doc");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, records) == 8, "records");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, key_item) == 16, "key_item");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, reserved24) == 24, "reserved24");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, name) == 32, "name");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, doctype_name) == 40, "doctype_name");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, read_buf) == 48, "read_buf");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, builder_aux) == 56, "builder_aux");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, dm_handle) == 64, "dm_handle");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, arg2) == 72, "arg2");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, stream) == 80, "stream");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, arg2_len) == 88, "arg2_len");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, key_occurrence) == 92, "key_occurrence");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, rec_no) == 96, "rec_no");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, rec_read) == 100, "rec_read");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, name_len) == 104, "name_len");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, doctype_len) == 108, "doctype_len");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, read_buf_len) == 112, "read_buf_len");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, rec_count) == 116, "rec_count");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, reserved120) == 120, "reserved120");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, status) == 124, "status");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, flags) == 128, "flags");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, reserved132) == 132, "reserved132");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, open_mode) == 133, "open_mode");
CBLXML_STATIC_ASSERT(offsetof(xmlio_fcb, opcode) == 134, "opcode");

CBLXML_STATIC_ASSERT(offsetof(cblxml_stream, ops) == 0, "stream operation table first");
#endif

#endif /* CBLXML_FILES_H */
