#include "xexml/dm_description.h"

#include "xexml/idesc_access.h"

namespace cblxml::xexml {
namespace {

// Compiler byte -> data-map code; kNone: no code (the field stays 0).
constexpr uint32_t kNone = 0xFFFFFFFFu;
constexpr uint32_t kClassCodes[] = {kNone,
                                    DM_CLASS_NUMERIC,
                                    DM_CLASS_ALPHANUMERIC,
                                    DM_CLASS_ALPHANUMERIC,
                                    DM_CLASS_ALPHABETIC,
                                    DM_CLASS_NUMERIC_EDITED,
                                    DM_CLASS_NATIONAL,
                                    DM_CLASS_DBCS,
                                    DM_CLASS_ALNUM_EDITED};
constexpr uint32_t kUsageCodes[] = {DM_USAGE_DISPLAY,
                                    DM_USAGE_DISPLAY,
                                    DM_USAGE_COMP1,
                                    DM_USAGE_COMP2,
                                    DM_USAGE_PACKED,
                                    DM_USAGE_BINARY,
                                    DM_USAGE_COMP5,
                                    DM_USAGE_COMP6,
                                    DM_USAGE_COMPX,
                                    kNone,
                                    kNone,
                                    DM_USAGE_DISPLAY,
                                    DM_USAGE_NATIONAL};
constexpr uint32_t kSignCodes[] = {0, 2, 1, 4, 3, 1};

template <size_t N>
uint32_t code_of(const uint32_t (&table)[N], uint8_t byte)
{
    return byte < N && table[byte] != kNone ? table[byte] : 0;
}

}  // namespace

void item_dm_description(const IDESC *item, dm_item_desc &desc, std::string &format)
{
    desc = dm_item_desc{};
    desc.length = DESC_GET(item, length);
    desc.class_code = code_of(kClassCodes, DESC_GET(item, class_source));
    const uint8_t usage = DESC_GET(item, usage_source);
    desc.usage_code = code_of(kUsageCodes, usage);
    if (usage == kUsageComp1 || usage == kUsageComp2)
        desc.class_code = DM_CLASS_NUMERIC;
    desc.sign_flag = (DESC_GET(item, flags) & IDESC_SIGNED) != 0 ? 1 : 0;
    desc.sign_position = code_of(kSignCodes, DESC_GET(item, sign_position));
    desc.digits = DESC_GET(item, digits);
    desc.scale = DESC_GET(item, scale);
    const char *third = DESC_GET(item, third_ptr);
    const uint32_t third_len = DESC_GET(item, third_len);
    format.assign(third != nullptr ? third : "", third != nullptr ? third_len : 0);
    desc.format = format.c_str();
}

}  // namespace cblxml::xexml
