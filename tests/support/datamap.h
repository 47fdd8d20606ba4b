// Test support for the data map: a handle that closes itself, item
// descriptions, and moves both ways through DMSetCblData / DMGetCblData.
#ifndef CBLXML_SUPPORT_DATAMAP_H
#define CBLXML_SUPPORT_DATAMAP_H

#include <cstdint>
#include <memory>
#include <string>

#include "cblxml.h"

namespace cblxml_test {

using MapHandle = std::unique_ptr<void, void (*)(void *)>;

// Kind 0 national document, 1 native data, 3 EBCDIC data.
inline MapHandle open_map(int32_t kind, int32_t decimalPoint = 0)
{
    return MapHandle(DMInit(kind, 0, 0, decimalPoint, 0), DMTerm);
}

inline dm_item_desc describe(uint32_t classCode, uint32_t usage, uint32_t length,
                             uint32_t digits = 0, uint32_t scale = 0, bool isSigned = false,
                             uint32_t signPosition = 0, const char *picture = nullptr)
{
    dm_item_desc desc{};
    desc.length = length;
    desc.class_code = classCode;
    desc.usage_code = usage;
    desc.digits = digits;
    desc.scale = scale;
    desc.sign_flag = isSigned ? 1 : 0;
    desc.sign_position = signPosition;
    desc.format = picture;
    return desc;
}

// Stores UTF-8 `text` into an item that held `fill` bytes; the item's bytes.
inline std::string store(void *map, const dm_item_desc &desc, const std::string &text,
                         int32_t *status, char fill = '\x55')
{
    std::string item(desc.length, fill);
    *status = DMSetCblData(map, &desc, item.data(), DM_FORM_UTF8, text.data(),
                           static_cast<uint32_t>(text.size()));
    return item;
}

// The text of an item in `form`, without the terminator of the UTF-8 form.
inline std::string fetch(void *map, const dm_item_desc &desc, const std::string &item, int32_t form,
                         int32_t *status)
{
    std::string text(desc.length * 4 + 64, '\x01');
    auto length = static_cast<uint32_t>(text.size());
    *status = DMGetCblData(map, &desc, item.data(), form, text.data(), &length);
    if (form == DM_FORM_UTF8 && length > 0)
        --length;
    return text.substr(0, length);
}

}  // namespace cblxml_test

#endif
