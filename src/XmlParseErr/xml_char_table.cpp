#include "XmlParseErr/xml_char_table.h"

namespace cblxml {

namespace {

struct UnitRange {
    char16_t first;
    char16_t last;
};

constexpr UnitRange kXmlCharRanges[] = {
    {0x0009, 0x000A},
    {0x000D, 0x000D},
    {0x0020, 0xD7FF},
    {0xE000, 0xFFFD},
};

// Built by the compiler, so the table is read-only data with no start-up cost.
constexpr std::array<uint8_t, 65536> buildXmlCharFlags()
{
    std::array<uint8_t, 65536> flags{};
    for (const UnitRange &range : kXmlCharRanges)
        for (uint32_t unit = range.first; unit <= range.last; ++unit)
            flags[unit] |= kXmlCharFlag;
    return flags;
}

}  // namespace

// The header's extern declaration gives this constant external linkage.
constexpr std::array<uint8_t, 65536> kXmlCharFlags = buildXmlCharFlags();

}  // namespace cblxml
