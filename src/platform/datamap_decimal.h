// Fixed-point numbers as text and as digit strings: the common ground of all
// numeric item converters. A converter turns its bytes into a Decimal and
// back; these helpers do the MOVE rules between a Decimal and UTF-8 text.
#ifndef CBLXML_PLATFORM_DATAMAP_DECIMAL_H
#define CBLXML_PLATFORM_DATAMAP_DECIMAL_H

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/datamap.h"

namespace cblxml::platform {

// A value as the digits of an item: `digits` holds ASCII digits, the last
// `fraction_places` of them after the implied decimal point.
struct Decimal {
    bool negative = false;
    std::string digits;
};

// How many digits an item holds before and after its decimal point.
struct NumberShape {
    size_t integer_places = 0;
    size_t fraction_places = 0;
    size_t places() const { return integer_places + fraction_places; }
};

// The shape of an item from its description, its digit count capped at what
// the usage can hold (`capacity`); a zero digit count means the capacity.
// A scale beyond the digit count is treated as all digits being decimals.
NumberShape shape_of(const dm_item_desc &desc, size_t capacity);

// Reads text as a MOVE source: optional spaces, a sign (+ or - leading or
// trailing, or a trailing CR or DB), digits with at most one decimal point;
// grouping characters are ignored. The value is aligned on the decimal
// point and cut to the shape on both sides. False when the text is not a
// number; `out` is then zero.
bool parse_decimal(std::string_view text, char decimal_point, char grouping, NumberShape shape,
                   Decimal &out);

// Writes a value: a minus sign only when negative and not zero, the integer
// digits without leading zeros (at least one), then the decimal point and
// exactly `fraction_places` decimals. `value.digits` may be of any length.
void format_decimal(const Decimal &value, size_t fraction_places, char decimal_point,
                    std::string &out);

// True when every digit is zero.
bool is_zero(const Decimal &value);

// A Decimal of `places` zeros.
Decimal zero_decimal(size_t places);

// The decimal digits of an unsigned 64-bit value.
std::string digits_of(unsigned long long value);

}  // namespace cblxml::platform

#endif
