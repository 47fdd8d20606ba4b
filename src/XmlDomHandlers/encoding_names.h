// Normalisation of a declared encoding name to the name the transcoders know.
#ifndef CBLXML_XMLDOMHANDLERS_ENCODING_NAMES_H
#define CBLXML_XMLDOMHANDLERS_ENCODING_NAMES_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace cblxml {

// `upperName` is the declared name already upper-cased. A name of the table
// gives its canonical form; any other name is kept.
std::u16string normalise_encoding_name(const std::u16string &upperName);

// True when `name` may be handed to the transcoding service: printable ASCII
// and shorter than kMaxEncodingName. The service copies a name it does not
// know itself into a fixed 60-byte buffer after converting it to the
// platform's multibyte form, so a declared name of non-ASCII characters
// overflows that buffer; such a name is treated as an unknown encoding.
bool is_transcoder_name(const std::u16string &name);
constexpr size_t kMaxEncodingName = 60;

}  // namespace cblxml

#endif
