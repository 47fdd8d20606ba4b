// The default string conversion of the run-time services (cobstringconvert).
#ifndef CBLXML_PLATFORM_STRING_CONVERT_H
#define CBLXML_PLATFORM_STRING_CONVERT_H

#include <cstdint>

namespace cblxml::platform {

// Converts `length` bytes of `text` from the encoding `from` (an iconv name;
// null or empty reads as UTF-8) into UTF-8, the only target form (3) that
// the library asks for. See cblxml_services.string_convert for the contract.
int32_t default_string_convert(const char *from, int32_t form, const void *text, uint32_t length,
                               void *out, uint32_t *out_length);

}  // namespace cblxml::platform

#endif
