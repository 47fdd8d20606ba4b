// Which converter serves which item: the class decides for text items, the
// usage for numeric ones.
#include <limits>

#include "platform/datamap.h"

namespace cblxml::platform {
namespace {

constexpr uint32_t kAnyUsage = std::numeric_limits<uint32_t>::max();

struct ConverterRow {
    uint32_t class_code;
    uint32_t usage_code;
    const ItemConverter *converter;
};

const ConverterRow kConverterRows[] = {
    {DM_CLASS_ALPHABETIC, kAnyUsage, &kAlphanumericConverter},
    {DM_CLASS_ALNUM_EDITED, kAnyUsage, &kAlphanumericEditedConverter},
    {DM_CLASS_ALPHANUMERIC, kAnyUsage, &kAlphanumericConverter},
    {DM_CLASS_NATIONAL, kAnyUsage, &kNationalConverter},
    {DM_CLASS_DBCS, kAnyUsage, &kNationalConverter},
    {DM_CLASS_NUMERIC, DM_USAGE_DISPLAY, &kNumericDisplayConverter},
    {DM_CLASS_NUMERIC, DM_USAGE_BINARY, &kBinaryConverter},
    {DM_CLASS_NUMERIC, DM_USAGE_COMP5, &kNativeBinaryConverter},
    {DM_CLASS_NUMERIC, DM_USAGE_COMPX, &kUnsignedBinaryConverter},
    {DM_CLASS_NUMERIC, DM_USAGE_PACKED, &kPackedConverter},
    {DM_CLASS_NUMERIC, DM_USAGE_COMP6, &kUnsignedPackedConverter},
    {DM_CLASS_NUMERIC, DM_USAGE_COMP1, &kFloatConverter},
    {DM_CLASS_NUMERIC, DM_USAGE_COMP2, &kDoubleConverter},
    {DM_CLASS_NUMERIC_EDITED, DM_USAGE_DISPLAY, &kNumericEditedConverter},
    {DM_CLASS_NUMERIC_EDITED, DM_USAGE_NATIONAL, &kNumericEditedConverter},
};

}  // namespace

const ItemConverter *find_item_converter(const dm_item_desc &desc)
{
    for (const ConverterRow &row : kConverterRows)
        if (row.class_code == desc.class_code &&
            (row.usage_code == kAnyUsage || row.usage_code == desc.usage_code))
            return row.converter;
    return nullptr;
}

}  // namespace cblxml::platform
