// Reading a COBOL record description (a copybook) into the items of the
// record-layout builder, with the offsets and lengths GnuCOBOL gives the same
// copybook under its default options: binary items of 1, 2, 4 or 8 bytes by
// their digits, COMP big-endian, COMP-5 and BINARY-LONG native, no slack
// bytes. XML names come from the data names or from directives in comments
// (docs/layout.md):
//
//     05 ORDER-LINE OCCURS 5.        *> xml: name=line ns=urn:example:order
//     *> xml: attributes
//     05 ORDER-ATTRS. ...
#ifndef CBLXML_TOOLS_COPYBOOK_H
#define CBLXML_TOOLS_COPYBOOK_H

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "record_layout.h"

namespace cblxml::copybook {

// Bad input: where it is (1-based line and column) and what is wrong.
struct Error : std::runtime_error {
    Error(unsigned line_no, unsigned column_no, const std::string &message)
        : std::runtime_error(message), line(line_no), column(column_no)
    {}
    unsigned line;
    unsigned column;
};

// One data description entry as the copybook gives it, with its layout.
struct Field {
    unsigned line = 0, column = 0;  // of the level number
    unsigned level = 0;
    std::string name;  // the data name as written; empty for FILLER
    std::string picture;
    unsigned picture_line = 0, picture_column = 0;
    int usage = 0;           // index into the usage table of copybook.cpp
    uint8_t sign_place = 0;  // 0 none, 1 trailing, 2 leading, 3/4 the same, separate
    uint32_t occurs_min = 0, occurs_max = 0;
    std::string depending_on;
    std::string redefines;
    // XML directives.
    std::string xml_name;
    std::string ns;
    uint32_t xml_flags = 0;
    bool content = false, omit = false, keep = false, directed = false;
    // Layout, filled by read_copybook.
    size_t parent = SIZE_MAX;  // index of the enclosing group
    std::vector<size_t> children;
    uint32_t offset = 0;  // from the start of the record
    uint32_t length = 0;  // one occurrence
};

struct Copybook {
    std::vector<Field> fields;    // 88 entries left out
    std::vector<size_t> records;  // the 01 entries
};

// Reads the text of a copybook (fixed format unless `free_format` or a
// >>SOURCE FREE directive). Throws Error.
Copybook read_copybook(const std::string &text, bool free_format);

// The builder's items for record `r` (an index into records): every field
// that the XML mapping keeps, with its offset and length set. Throws Error
// for a name that is not a valid XML name. `fields`, when given, receives
// the index of each item's field.
std::vector<layout::Item> record_items(const Copybook &book, size_t r,
                                       std::vector<size_t> *fields = nullptr);

// Fully qualified COBOL reference to a named field ("A OF B OF R") and the
// number of subscripts it needs.
std::string qualified_name(const Copybook &book, size_t f, unsigned &subscripts);

}  // namespace cblxml::copybook

#endif
