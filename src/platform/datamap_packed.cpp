// Packed decimal items: two digits per byte. PACKED-DECIMAL ends with a sign
// nibble (C plus, D minus, F unsigned); COMP-6 has no sign nibble.
#include <algorithm>

#include "platform/datamap.h"
#include "platform/datamap_decimal.h"

namespace cblxml::platform {
namespace {

constexpr unsigned char kPlusNibble = 0xC;
constexpr unsigned char kMinusNibble = 0xD;
constexpr unsigned char kUnsignedNibble = 0xF;

// Sign nibbles that are read, indexed by nibble: 1 plus, -1 minus, 0 invalid.
// A and E read as plus and B as minus, as on the machines packed data comes from.
constexpr int kSignOfNibble[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, -1, 1, -1, 1, 1};

unsigned nibble(const unsigned char *item, size_t index)
{
    const unsigned char byte = item[index / 2];
    return index % 2 == 0 ? byte >> 4 : byte & 0x0F;
}

void set_nibble(unsigned char *item, size_t index, unsigned value)
{
    unsigned char &byte = item[index / 2];
    byte = index % 2 == 0 ? static_cast<unsigned char>((byte & 0x0F) | (value << 4))
                          : static_cast<unsigned char>((byte & 0xF0) | value);
}

size_t digit_nibbles(size_t length, bool has_sign) { return 2 * length - (has_sign ? 1 : 0); }

bool packed_to_text(const ItemView &view, const unsigned char *item, std::string &text,
                    bool has_sign)
{
    if (view.length == 0)
        return false;
    const size_t count = digit_nibbles(view.length, has_sign);
    Decimal value;
    value.digits.reserve(count);
    for (size_t i = 0; i < count; ++i) {
        const unsigned digit = nibble(item, i);
        if (digit > 9)
            return false;
        value.digits += static_cast<char>('0' + digit);
    }
    if (has_sign) {
        const int sign = kSignOfNibble[nibble(item, count)];
        if (sign == 0)
            return false;
        value.negative = sign < 0;
    }
    format_decimal(value, shape_of(view.desc, count).fraction_places, view.map.decimal_point, text);
    return true;
}

void store_value(const ItemView &view, const Decimal &value, unsigned char *item, bool has_sign)
{
    const size_t count = digit_nibbles(view.length, has_sign);
    const size_t lead_zeros = count - value.digits.size();
    for (size_t i = 0; i < count; ++i)
        set_nibble(item, i,
                   i < lead_zeros ? 0 : static_cast<unsigned>(value.digits[i - lead_zeros] - '0'));
    if (!has_sign)
        return;
    const unsigned char sign = view.desc.sign_flag == 0 ? kUnsignedNibble
                               : value.negative         ? kMinusNibble
                                                        : kPlusNibble;
    set_nibble(item, count, sign);
}

bool packed_from_text(const ItemView &view, unsigned char *item, std::string_view text,
                      bool has_sign)
{
    if (view.length == 0)
        return false;
    Decimal value;
    if (!parse_decimal(text, view.map.decimal_point, view.map.grouping,
                       shape_of(view.desc, digit_nibbles(view.length, has_sign)), value))
        return false;
    store_value(view, value, item, has_sign);
    return true;
}

template <bool has_sign>
bool to_text(const ItemView &view, const unsigned char *item, std::string &text)
{
    return packed_to_text(view, item, text, has_sign);
}

template <bool has_sign>
bool from_text(const ItemView &view, unsigned char *item, std::string_view text)
{
    return packed_from_text(view, item, text, has_sign);
}

template <bool has_sign>
void clear(const ItemView &view, unsigned char *item)
{
    if (view.length > 0)
        store_value(view, Decimal{}, item, has_sign);
}

}  // namespace

const ItemConverter kPackedConverter{to_text<true>, from_text<true>, clear<true>, nullptr};
const ItemConverter kUnsignedPackedConverter{to_text<false>, from_text<false>, clear<false>,
                                             nullptr};

}  // namespace cblxml::platform
