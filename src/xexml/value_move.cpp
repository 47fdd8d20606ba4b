// Moving text into record items: the value move (a plain byte move when the
// run-time's string conversion is unavailable, the data map otherwise) and
// the name and namespace moves.
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/platform.h"
#include "xexml/dm_description.h"
#include "xexml/idesc_access.h"
#include "xexml/record_map.h"

namespace cblxml::xexml {
namespace {

// The target of a value move: by count for receivers and named non-holders,
// otherwise by subscript inside a table of more than one occurrence.
void *value_target(MapContext &ctx, IDESC *item)
{
    const uint32_t flags = DESC_GET(item, flags);
    const bool named = DESC_GET(item, name_len) > 0;
    bool by_count = (flags & (IDESC_GETS_NAME | IDESC_GETS_NAMESPACE)) != 0 ||
                    (named && (flags & IDESC_ATTRIBUTES) == 0);
    if (!by_count) {
        const IDESC *parent = DESC_GET(item, parent);
        by_count = parent == nullptr || DESC_GET(parent, occurs_max) <= 1;
    }
    return kvt_xe_xml_itm_addr_get(ctx.entry, item, by_count ? 0 : 1);
}

bool conversion_available(MapContext &ctx)
{
    if (ctx.probe < 0) {
        uint32_t length = 0;
        ctx.probe =
            platform::string_convert("UTF-8", platform::kFormUtf8, " ", 1, nullptr, &length) == 0
                ? 1
                : 0;
    }
    return ctx.probe == 1;
}

// Without the run-time's conversion: the bytes as they stand, cut to the
// item. An unsigned integer DISPLAY item of fewer than 19 digits takes the
// non-space characters right-justified and zero-filled (they are not checked
// to be digits); any other item takes them left-justified, space-filled.
void plain_move(IDESC *item, unsigned char *target, const char *text, uint32_t length)
{
    const uint32_t width = DESC_GET(item, length);
    if (length > width)
        length = width;
    const bool unsigned_integer = DESC_GET(item, class_source) == 1 &&
                                  DESC_GET(item, usage_source) == 1 &&
                                  DESC_GET(item, sign_position) == 0 &&
                                  DESC_GET(item, scale) == 0 && DESC_GET(item, digits) < 19;
    if (!unsigned_integer) {
        std::memset(target, ' ', width);
        std::memcpy(target, text, length);
        return;
    }
    std::memset(target, '0', width);
    uint32_t at = width;
    for (uint32_t i = length; i-- > 0;) {
        if (text[i] != ' ')
            target[--at] = static_cast<unsigned char>(text[i]);
    }
}

}  // namespace

void move_value(MapContext &ctx, IDESC *item, const char *text, uint32_t length)
{
    auto *target = static_cast<unsigned char *>(value_target(ctx, item));
    if (target == nullptr)
        return;  // the occurrence lies outside its table: dropped
    if (text == nullptr)
        length = 0;
    if (!conversion_available(ctx)) {
        plain_move(item, target, text, length);
        return;
    }
    // The tree keeps its strings in the document's encoding; the data map
    // takes UTF-8. A conversion that fails leaves no text.
    std::string converted;
    const char *encoding = ctx.encoding;
    // A tree that knows no encoding holds UTF-8 (the parser's default).
    if (encoding != nullptr && std::strncmp(encoding, "UTF-8", 5) != 0 && length > 0) {
        uint32_t size = 0;
        if (platform::string_convert(encoding, platform::kFormUtf8, text, length, nullptr, &size) ==
            0) {
            converted.assign(size + 1, '\0');
            if (platform::string_convert(encoding, platform::kFormUtf8, text, length,
                                         converted.data(), &size) == 0)
                converted.resize(size);
            else
                converted.clear();
        }
        text = converted.data();
        length = static_cast<uint32_t>(converted.size());
    }
    dm_item_desc desc;
    std::string format;
    item_dm_description(item, desc, format);
    DMSetCblData(ctx.dm_handle, &desc, target, DM_FORM_UTF8, length > 0 ? text : "", length);
}

void move_name(MapContext &ctx, IDESC *item, const char *text, bool namespace_width)
{
    // The receiving item's own name or namespace length is the field width,
    // whatever its storage length says.
    const uint32_t width =
        namespace_width ? DESC_GET(item, namespace_len) : DESC_GET(item, name_len);
    const bool by_subscript = DESC_GET(item, occurs_max) >= 2;
    auto *target =
        static_cast<unsigned char *>(kvt_xe_xml_itm_addr_get(ctx.entry, item, by_subscript));
    if (target == nullptr || text == nullptr)
        return;
    // Never past the item in the record area: the width is the item's name
    // length, which a layout may set larger than the item.
    const uint32_t room = width < DESC_GET(item, length) ? width : DESC_GET(item, length);
    std::memset(target, ' ', room);
    const size_t size = std::strlen(text);
    std::memcpy(target, text, size < room ? size : room);
}

}  // namespace cblxml::xexml
