#include "xexml/item_text.h"

#include <cstring>

#include "platform/platform.h"
#include "xexml/dm_description.h"
#include "xexml/idesc_access.h"

namespace cblxml::xexml {

std::string item_bytes(xml_rec_entry_t *entry, IDESC *item, uint32_t width)
{
    const auto *data = static_cast<const char *>(kvt_xe_xml_itm_addr_get(entry, item, 1));
    if (data == nullptr)
        return {};
    // A width wider than the item (a name field sized by its parent) is cut
    // at the end of the record area rather than read past it.
    const IDESC *root = entry->root;
    const uint64_t end = uint64_t{DESC_GET(root, offset)} + DESC_GET(root, length);
    const uint64_t at = static_cast<uint64_t>(data - static_cast<const char *>(entry->data));
    const uint64_t room = end > at ? end - at : 0;
    return std::string(data, width < room ? width : room);
}

size_t trimmed_length(const char *text, size_t length, const char *cut, size_t cut_count)
{
    while (length > 0 && std::memchr(cut, text[length - 1], cut_count) != nullptr)
        --length;
    return length;
}

void append_item_text(std::string &text, xml_rec_entry_t *entry, IDESC *item, void *dm_handle)
{
    const uint8_t usage = DESC_GET(item, usage_source);
    const bool floating = usage == kUsageComp1 || usage == kUsageComp2;
    const size_t base = text.size();
    if (const void *data = kvt_xe_xml_itm_addr_get(entry, item, 1)) {
        dm_item_desc desc;
        std::string format;
        item_dm_description(item, desc, format);
        const size_t room = uint64_t{desc.length} * 16 + 1;
        if (floating) {
            const int32_t form = usage == kUsageComp1 ? DM_FORM_FLOAT : DM_FORM_DOUBLE;
            text.resize(base + room);
            auto length = static_cast<uint32_t>(room);
            if (platform::get_cbl_data(dm_handle, &desc, data, form, text.data() + base, &length) !=
                0)
                length = 0;
            text.resize(base + length);
        } else if (platform::append_cbl_text(dm_handle, &desc, data, text) &&
                   text.size() - base >= room) {
            // The data map gives UTF-8, which is also the form the run-time's
            // string conversion would be asked for: that conversion is the
            // identity here, and so is left out. A failure gives an empty
            // text, and so does a text that would not fit the room of 16
            // bytes per byte of the item (and a terminator) the data map is
            // given.
            text.resize(base);
        }
    }
    // An item without an address (an occurrence out of range) is padded as
    // an empty value, so that pieces joined after it keep their offsets.
    const uint32_t width = DESC_GET(item, length);
    if (!floating && text.size() - base < width)
        text.append(width - (text.size() - base), ' ');
}

std::string item_text(xml_rec_entry_t *entry, IDESC *item, void *dm_handle)
{
    std::string text;
    append_item_text(text, entry, item, dm_handle);
    return text;
}

}  // namespace cblxml::xexml
