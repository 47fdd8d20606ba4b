// Binary items: BINARY (big-endian), COMP-5 (machine order) and COMP-X
// (unsigned big-endian), as many bytes as the item is long, 1 to 8.
//
// A value received is cut to the item's digit count, then to the item's
// size if it still does not fit (the binary field's own truncation).
#include <algorithm>

#include "platform/datamap.h"
#include "platform/datamap_decimal.h"

namespace cblxml::platform {
namespace {

constexpr size_t kMaxBinaryBytes = 8;
constexpr bool kMachineIsBigEndian = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__;

struct BinaryForm {
    bool big_endian;
    bool may_be_signed;  // COMP-X is unsigned whatever the description says
};

constexpr BinaryForm kBinaryForm{true, true};
constexpr BinaryForm kNativeForm{kMachineIsBigEndian, true};
constexpr BinaryForm kUnsignedForm{true, false};

bool usable_length(size_t length) { return length >= 1 && length <= kMaxBinaryBytes; }

bool is_signed(const ItemView &view, BinaryForm form)
{
    return form.may_be_signed && view.desc.sign_flag != 0;
}

unsigned long long size_mask(size_t bytes)
{
    return bytes >= kMaxBinaryBytes ? ~0ULL : (1ULL << (8 * bytes)) - 1;
}

// Decimal digits of the largest value the item can hold.
size_t capacity(size_t bytes, bool is_signed_item)
{
    const unsigned long long largest = is_signed_item ? size_mask(bytes) >> 1 : size_mask(bytes);
    return digits_of(largest).size();
}

unsigned long long load(const unsigned char *item, size_t bytes, bool big_endian)
{
    unsigned long long raw = 0;
    for (size_t i = 0; i < bytes; ++i)
        raw = (raw << 8) | item[big_endian ? i : bytes - 1 - i];
    return raw;
}

void save(unsigned char *item, size_t bytes, bool big_endian, unsigned long long raw)
{
    for (size_t i = 0; i < bytes; ++i) {
        item[big_endian ? bytes - 1 - i : i] = static_cast<unsigned char>(raw & 0xFF);
        raw >>= 8;
    }
}

bool binary_to_text(const ItemView &view, const unsigned char *item, std::string &text,
                    BinaryForm form)
{
    if (!usable_length(view.length))
        return false;
    const bool signed_item = is_signed(view, form);
    const unsigned long long raw = load(item, view.length, form.big_endian);
    const unsigned long long sign_bit = 1ULL << (8 * view.length - 1);
    Decimal value;
    value.negative = signed_item && (raw & sign_bit) != 0;
    const unsigned long long magnitude = value.negative ? (~raw + 1) & size_mask(view.length) : raw;
    value.digits = digits_of(magnitude);
    format_decimal(value, shape_of(view.desc, capacity(view.length, signed_item)).fraction_places,
                   view.map.decimal_point, text);
    return true;
}

bool binary_from_text(const ItemView &view, unsigned char *item, std::string_view text,
                      BinaryForm form)
{
    if (!usable_length(view.length))
        return false;
    const bool signed_item = is_signed(view, form);
    Decimal value;
    if (!parse_decimal(text, view.map.decimal_point, view.map.grouping,
                       shape_of(view.desc, capacity(view.length, signed_item)), value))
        return false;
    // Wrapping arithmetic: what does not fit 64 bits is cut like what does
    // not fit the item.
    unsigned long long magnitude = 0;
    for (char digit : value.digits)
        magnitude = magnitude * 10 + static_cast<unsigned>(digit - '0');
    const unsigned long long raw = signed_item && value.negative ? ~magnitude + 1 : magnitude;
    save(item, view.length, form.big_endian, raw & size_mask(view.length));
    return true;
}

void binary_clear(const ItemView &view, unsigned char *item)
{
    std::fill(item, item + view.length, 0);
}

template <const BinaryForm &form>
bool to_text(const ItemView &view, const unsigned char *item, std::string &text)
{
    return binary_to_text(view, item, text, form);
}

template <const BinaryForm &form>
bool from_text(const ItemView &view, unsigned char *item, std::string_view text)
{
    return binary_from_text(view, item, text, form);
}

}  // namespace

const ItemConverter kBinaryConverter{to_text<kBinaryForm>, from_text<kBinaryForm>, binary_clear,
                                     nullptr};
const ItemConverter kNativeBinaryConverter{to_text<kNativeForm>, from_text<kNativeForm>,
                                           binary_clear, nullptr};
const ItemConverter kUnsignedBinaryConverter{to_text<kUnsignedForm>, from_text<kUnsignedForm>,
                                             binary_clear, nullptr};

}  // namespace cblxml::platform
