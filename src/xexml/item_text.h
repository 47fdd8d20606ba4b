// The text of a record item, as the writer puts it into the tree: the data
// map's displayable value of the item's current occurrence.
#ifndef CBLXML_XEXML_ITEM_TEXT_H
#define CBLXML_XEXML_ITEM_TEXT_H

#include <string>

#include "cblxml.h"

namespace cblxml::xexml {

// The text of the item's current occurrence (addressed by subscripts),
// padded with spaces to the item's length except for COMP-1 and COMP-2
// items. Empty when the item has no address or the data map cannot convert
// it. Running out of memory throws std::bad_alloc.
std::string item_text(xml_rec_entry_t *entry, IDESC *item, void *dm_handle);
// The same text appended to `text`, whose memory is reused.
void append_item_text(std::string &text, xml_rec_entry_t *entry, IDESC *item, void *dm_handle);

// Up to `width` bytes of the item's data (the current occurrence), never
// past the end of the record area; empty when the item has no address.
std::string item_bytes(xml_rec_entry_t *entry, IDESC *item, uint32_t width);

// Length of `text` without its trailing bytes from `cut` (e.g. " \t").
size_t trimmed_length(const char *text, size_t length, const char *cut, size_t cut_count);

}  // namespace cblxml::xexml

#endif
