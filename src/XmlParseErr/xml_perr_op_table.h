// Classification of the parser's fatal errors into XML-CODE values: one
// handler per classified error, chosen through a table index.
#ifndef CBLXML_XMLPARSEERR_XML_PERR_OP_TABLE_H
#define CBLXML_XMLPARSEERR_XML_PERR_OP_TABLE_H

#include <cstddef>
#include <cstdint>

#include <xercesc/util/XercesDefs.hpp>

#include "cblxml.h"

namespace cblxml {

// What a handler needs of the parse: document text in the program's form.
// The handler object of the parse provides it.
class TextConverter {
public:
    // A new zero-terminated buffer (malloc, owned by the caller) holding
    // `count` units of `source` converted for the program (national: kept as
    // UTF-16). Throws std::bad_alloc when memory runs out.
    virtual char *cobolText(const XMLCh *source, size_t count, int32_t national) = 0;

protected:
    ~TextConverter() = default;
};

// A handler gives the pending "EXCEPTION" record (whose prev already names
// the last record of the list) its code and text and sets its next to null
// (or, for an unknown reference, to the second record it makes).
// position: character offset of the error in the UTF-16 document text.
using xml_perr_op = void (*)(xd_parse_info *record, const XMLCh *docText, uint32_t docLen,
                             int32_t position, int32_t national, TextConverter &convert);

constexpr int kPerrTableSize = 40;
constexpr int kPerrSuppressWarning = -1;

// Slot 0 is empty (no handler: the generic exception).
extern const xml_perr_op xml_perr_op_table[kPerrTableSize];

// Maps the parser's error (code and domain) to a table index: -1 for the
// suppressed warning, 0 when no handler classifies it, else 1 to 39.
int xml_perr_index(unsigned code, const XMLCh *domain);

}  // namespace cblxml

#endif
