#ifndef CBLXML_XMLIOINT_TEXT_LENGTH_H
#define CBLXML_XMLIOINT_TEXT_LENGTH_H

#include <cstdint>

#include "cblxml.h"

namespace cblxml {

// Byte length of a record's text as delivered: 2 x the UTF-16 units before
// the zero unit for the two national-character events and for national
// parses; otherwise the bytes before the first zero byte. A record without
// text has length 0.
uint32_t event_text_length(const xd_parse_info *record, uint32_t flags);

// The number of 16-bit units before the terminating zero unit.
int32_t wide_length(const char *text);

}  // namespace cblxml

#endif
