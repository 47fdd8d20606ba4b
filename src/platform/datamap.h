// The data map's handle and the table of item converters behind DMGetCblData
// and DMSetCblData. One converter per kind of item (a class, or a class and
// usage); the entries pick one from the item description.
#ifndef CBLXML_PLATFORM_DATAMAP_H
#define CBLXML_PLATFORM_DATAMAP_H

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "cblxml.h"
#include "platform/codepage.h"

namespace cblxml::platform {

// What DMInit returns. The code page's iconv state is not thread-safe, so the
// entries hold `mutex` while they use the handle.
struct DataMap {
    bool national_document = false;  // DMInit kind 0
    char decimal_point = '.';
    char grouping = ',';
    std::unique_ptr<CodePage> code_page;  // of the program's alphanumeric data
    std::mutex mutex;
};

// An item as a converter sees it: the description, the handle, and the
// item's bytes (`length` of them, the description's length).
struct ItemView {
    const DataMap &map;
    const dm_item_desc &desc;
    size_t length;
};

struct ItemConverter {
    // Item bytes -> UTF-8 text, appended to `text` (no terminator). False
    // when the item does not hold a value of its kind.
    bool (*to_text)(const ItemView &view, const unsigned char *item, std::string &text);
    // UTF-8 text -> item bytes, as a MOVE. False when the text is not a value
    // that the item can take; the entry then clears the item.
    bool (*from_text)(const ItemView &view, unsigned char *item, std::string_view text);
    // Stores the item's neutral value: spaces for text, zero for numbers.
    void (*clear)(const ItemView &view, unsigned char *item);
    // Bytes that `from_text` stores for the text before padding or cutting;
    // null for items of a fixed size.
    size_t (*stored_size)(const ItemView &view, std::string_view text);
};

// The converter for an item description, or null when its class and usage
// are not supported.
const ItemConverter *find_item_converter(const dm_item_desc &desc);

// Converters, by family (one source file each).
extern const ItemConverter kAlphanumericConverter;
extern const ItemConverter kNationalConverter;
extern const ItemConverter kAlphanumericEditedConverter;
extern const ItemConverter kNumericDisplayConverter;
extern const ItemConverter kNumericEditedConverter;
extern const ItemConverter kBinaryConverter;
extern const ItemConverter kNativeBinaryConverter;
extern const ItemConverter kUnsignedBinaryConverter;
extern const ItemConverter kPackedConverter;
extern const ItemConverter kUnsignedPackedConverter;
extern const ItemConverter kFloatConverter;
extern const ItemConverter kDoubleConverter;

}  // namespace cblxml::platform

#endif
