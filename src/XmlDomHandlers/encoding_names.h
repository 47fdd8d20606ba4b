// Normalisation of a declared encoding name to the name the transcoders know.
#ifndef CBLXML_XMLDOMHANDLERS_ENCODING_NAMES_H
#define CBLXML_XMLDOMHANDLERS_ENCODING_NAMES_H

#include <cstdint>
#include <string>

namespace cblxml {

struct EncodingName {
    std::u16string canonical;  // the name to use from now on
    int32_t kind;              // 0, 2 or 3 (the encoding kind of the handler)
};

// `upperName` is the declared name already upper-cased. A name of the table
// gives its canonical form and kind; any other name is kept with kind 0.
EncodingName normalise_encoding_name(const std::u16string &upperName);

} // namespace cblxml

#endif
