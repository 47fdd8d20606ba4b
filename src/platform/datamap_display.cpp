// Numeric DISPLAY items: one digit per byte in the program's code page, with
// an embedded or a separate sign.
//
// An embedded sign follows GnuCOBOL so that its programs read the values: in
// native data a positive digit is the plain digit and a negative one is
// 0x70 + digit ('p' to 'y'); in EBCDIC data the zone nibble says it, C for
// plus, D for minus, F for unsigned.
#include <algorithm>
#include <iterator>
#include <optional>

#include "platform/datamap.h"
#include "platform/datamap_decimal.h"

namespace cblxml::platform {
namespace {

enum class SignPlace {
    kNone,
    kTrailingEmbedded,
    kLeadingEmbedded,
    kTrailingSeparate,
    kLeadingSeparate
};

// Indexed by the sign position code of the description.
constexpr SignPlace kSignPlaces[] = {SignPlace::kTrailingEmbedded, SignPlace::kTrailingEmbedded,
                                     SignPlace::kLeadingEmbedded, SignPlace::kTrailingSeparate,
                                     SignPlace::kLeadingSeparate};

constexpr unsigned char kNativeNegativeZone = 0x70;
constexpr unsigned char kEbcdicPositiveZone = 0xC0;
constexpr unsigned char kEbcdicNegativeZone = 0xD0;
constexpr unsigned char kEbcdicAlternateNegativeZone = 0xB0;

// Where the digits and the sign of an item are.
struct Layout {
    size_t first_digit = 0;
    size_t digit_count = 0;
    SignPlace sign = SignPlace::kNone;
    size_t sign_at = 0;  // byte holding the sign, for every place but kNone
};

std::optional<Layout> layout_of(const ItemView &view)
{
    Layout layout;
    layout.digit_count = view.length;
    if (view.desc.sign_flag == 0)
        return layout;
    if (view.desc.sign_position >= std::size(kSignPlaces))
        return std::nullopt;
    layout.sign = kSignPlaces[view.desc.sign_position];
    const bool separate =
        layout.sign == SignPlace::kTrailingSeparate || layout.sign == SignPlace::kLeadingSeparate;
    if (view.length == 0 || (separate && view.length < 2))
        return std::nullopt;
    if (separate)
        layout.digit_count = view.length - 1;
    if (layout.sign == SignPlace::kLeadingSeparate)
        layout.first_digit = 1;
    const bool leading =
        layout.sign == SignPlace::kLeadingEmbedded || layout.sign == SignPlace::kLeadingSeparate;
    layout.sign_at = leading ? 0 : view.length - 1;
    return layout;
}

bool is_embedded(SignPlace sign)
{
    return sign == SignPlace::kTrailingEmbedded || sign == SignPlace::kLeadingEmbedded;
}

bool display_to_text(const ItemView &view, const unsigned char *item, std::string &text)
{
    const std::optional<Layout> layout = layout_of(view);
    if (!layout)
        return false;
    const CodePage &page = *view.map.code_page;
    Decimal value;
    value.digits.reserve(layout->digit_count);
    for (size_t i = 0; i < layout->digit_count; ++i) {
        // The low nibble is the digit in both code-page families, and spaces
        // read as zeros, as COBOL run-times read unfilled items.
        const unsigned digit = item[layout->first_digit + i] & 0x0F;
        if (digit > 9)
            return false;
        value.digits += static_cast<char>('0' + digit);
    }
    if (layout->sign != SignPlace::kNone) {
        const unsigned char sign_byte = item[layout->sign_at];
        if (!is_embedded(layout->sign))
            value.negative = sign_byte == page.byte_of('-');
        else if (page.is_ebcdic())
            value.negative = (sign_byte & 0xF0) == kEbcdicNegativeZone ||
                             (sign_byte & 0xF0) == kEbcdicAlternateNegativeZone;
        else
            value.negative = (sign_byte & 0xF0) == kNativeNegativeZone;
    }
    format_decimal(value, shape_of(view.desc, layout->digit_count).fraction_places,
                   view.map.decimal_point, text);
    return true;
}

void store_value(const ItemView &view, const Layout &layout, const Decimal &value,
                 unsigned char *item)
{
    const CodePage &page = *view.map.code_page;
    const size_t lead_zeros = layout.digit_count - value.digits.size();
    for (size_t i = 0; i < layout.digit_count; ++i) {
        const char digit = i < lead_zeros ? '0' : value.digits[i - lead_zeros];
        item[layout.first_digit + i] = page.byte_of(digit);
    }
    if (layout.sign == SignPlace::kNone)
        return;
    unsigned char &sign_byte = item[layout.sign_at];
    if (!is_embedded(layout.sign)) {
        sign_byte = page.byte_of(value.negative ? '-' : '+');
        return;
    }
    const unsigned char digit = sign_byte & 0x0F;
    if (page.is_ebcdic())
        sign_byte = (value.negative ? kEbcdicNegativeZone : kEbcdicPositiveZone) | digit;
    else if (value.negative)
        sign_byte = kNativeNegativeZone | digit;
}

bool display_from_text(const ItemView &view, unsigned char *item, std::string_view text)
{
    const std::optional<Layout> layout = layout_of(view);
    if (!layout)
        return false;
    Decimal value;
    if (!parse_decimal(text, view.map.decimal_point, view.map.grouping,
                       shape_of(view.desc, layout->digit_count), value))
        return false;
    if (layout->sign == SignPlace::kNone)
        value.negative = false;  // an unsigned item takes the absolute value
    store_value(view, *layout, value, item);
    return true;
}

void display_clear(const ItemView &view, unsigned char *item)
{
    const std::optional<Layout> layout = layout_of(view);
    if (layout)
        store_value(view, *layout, Decimal{}, item);
    else
        std::fill(item, item + view.length, view.map.code_page->byte_of('0'));
}

}  // namespace

const ItemConverter kNumericDisplayConverter{display_to_text, display_from_text, display_clear,
                                             nullptr};

}  // namespace cblxml::platform
