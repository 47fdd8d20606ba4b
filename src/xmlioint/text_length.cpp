#include "xmlioint/text_length.h"

#include <cstring>

#include "XmlParseErr/event_record.h"

namespace cblxml {

int32_t wide_length(const char *text)
{
    // Read as bytes: the text need not be aligned for 16-bit access.
    size_t units = 0;
    while (text[2 * units] != 0 || text[2 * units + 1] != 0)
        ++units;
    return static_cast<int32_t>(units);
}

uint32_t event_text_length(const xd_parse_info *record, uint32_t flags)
{
    if (record->text == nullptr)
        return 0;
    const bool nationalText = (flags & CBLXML_OPT_NATIONAL) != 0 ||
                              event_is(record, "CONTENT-NATIONAL-CHARACTER") ||
                              event_is(record, "ATTRIBUTE-NATIONAL-CHARACTER");
    if (nationalText)
        return 2u * static_cast<uint32_t>(wide_length(record->text));
    return static_cast<uint32_t>(std::strlen(record->text));
}

}  // namespace cblxml
