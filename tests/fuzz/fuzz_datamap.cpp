// Fuzz target: the data map, both ways, for every class and usage. Item
// descriptions, item bytes and texts all come from the input; buffers are
// sized exactly so that the address sanitizer sees any write past them.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "cblxml.h"
#include "fuzz_input.h"

namespace {

const uint32_t kClasses[] = {DM_CLASS_NUMERIC,      DM_CLASS_ALPHABETIC,     DM_CLASS_ALNUM_EDITED,
                             DM_CLASS_ALPHANUMERIC, DM_CLASS_NUMERIC_EDITED, DM_CLASS_NATIONAL,
                             DM_CLASS_DBCS};
const uint32_t kUsages[] = {DM_USAGE_BINARY, DM_USAGE_COMP1,   DM_USAGE_COMP2,
                            DM_USAGE_PACKED, DM_USAGE_COMP5,   DM_USAGE_COMP6,
                            DM_USAGE_COMPX,  DM_USAGE_DISPLAY, DM_USAGE_NATIONAL};
const int32_t kForms[] = {DM_FORM_UTF8, DM_FORM_FLOAT, DM_FORM_DOUBLE};
const int32_t kSeparators[] = {0, '.', ',', ' ', 0x4B, 0x6B};

struct Handle {
    void *map;
    ~Handle() { DMTerm(map); }
};

template <typename T, size_t N>
T pick(const T (&table)[N], uint8_t b)
{
    return table[b % N];
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    cblxml_fuzz::Input input(data, size);
    const uint8_t setup = input.byte();
    Handle handle{
        DMInit(setup & 3, 0, 0, pick(kSeparators, input.byte()), pick(kSeparators, input.byte()))};
    if (handle.map == nullptr)
        return 0;

    dm_item_desc desc{};
    const uint8_t shape = input.byte();
    // Mostly the usages that belong to the class; now and then any pairing.
    desc.class_code = pick(kClasses, input.byte());
    desc.usage_code = pick(kUsages, input.byte());
    desc.sign_flag = shape & 1;
    desc.sign_position = (shape >> 1) % 6;
    desc.digits = input.byte() % 40;
    desc.scale = input.byte() % 40;
    desc.length = input.byte();
    if (shape & 0x80)
        desc.length = input.byte() % 9;
    const std::string picture = input.block(64);
    desc.format = (shape & 0x40) ? nullptr : picture.c_str();
    const int32_t form = (setup & 0x80) ? pick(kForms, input.byte()) : DM_FORM_UTF8;

    std::unique_ptr<unsigned char[]> item(new unsigned char[desc.length + 1]);
    const std::string itemBytes = input.block(255);
    for (uint32_t i = 0; i < desc.length; ++i)
        item[i] = i < itemBytes.size() ? static_cast<unsigned char>(itemBytes[i]) : 0x20;

    // Item to text, into a room that is sometimes too small.
    const uint32_t room = (setup & 0x40) ? input.byte() % 16 : 1024;
    std::unique_ptr<char[]> text(new char[room + 1]);
    uint32_t textLength = room;
    DMGetCblData(handle.map, &desc, item.get(), form, text.get(), &textLength);
    if (textLength > room)
        std::abort();

    // Text to item: first the text the item gave, then the input's own.
    if (textLength > 0)
        DMSetCblData(handle.map, &desc, item.get(), form, text.get(), textLength);
    const std::string source = input.rest();
    std::unique_ptr<char[]> exact(new char[source.size() + 1]);
    std::memcpy(exact.get(), source.data(), source.size());
    DMSetCblData(handle.map, &desc, item.get(), form, exact.get(),
                 static_cast<uint32_t>(source.size()));
    textLength = room;
    DMGetCblData(handle.map, &desc, item.get(), form, text.get(), &textLength);
    if (textLength > room)
        std::abort();
    return 0;
}
