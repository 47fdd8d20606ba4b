// Construction of XML PARSE event records. A record and its two buffers are
// owned by the event list until delivery frees them.
#ifndef CBLXML_XMLPARSEERR_EVENT_RECORD_H
#define CBLXML_XMLPARSEERR_EVENT_RECORD_H

#include <cstddef>
#include <cstring>

#include "cblxml.h"

namespace cblxml {

// A new record named `name` (space padded to 30 bytes, no terminator),
// code 0, no text, no links.
xd_parse_info *new_event(const char *name);

// Overwrites the record's 30-byte name.
void rename_event(xd_parse_info *record, const char *name);

// True when the 30-byte name begins with `name` (prefix comparison over the
// length of `name`, as the delivery compares names). The length of a literal
// name is known when compiling: the hot paths compare names on every event.
template <size_t N>
inline bool event_is(const xd_parse_info *record, const char (&name)[N])
{
    static_assert(N - 1 <= CBLXML_EVENT_NAME_LEN, "event names have at most 30 bytes");
    return record != nullptr && record->event_name != nullptr &&
           std::memcmp(record->event_name, name, N - 1) == 0;
}

// Copies `bytes` bytes and a zero terminator of `width` bytes (1 or 2) into a
// new zero-filled buffer; null on allocation failure.
char *copy_text(const void *bytes, size_t size, size_t width);

}  // namespace cblxml

#endif
