// MOVE rules between UTF-8 text and fixed-point digit strings.
#include "platform/datamap_decimal.h"

#include <algorithm>

namespace cblxml::platform {
namespace {

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }

size_t skip_blanks(std::string_view text, size_t at)
{
    while (at < text.size() && is_blank(text[at]))
        ++at;
    return at;
}

bool equals_ignoring_case(std::string_view text, size_t at, std::string_view word)
{
    if (text.size() - at < word.size())
        return false;
    for (size_t i = 0; i < word.size(); ++i) {
        const char c = text[at + i];
        const char upper = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        if (upper != word[i])
            return false;
    }
    return true;
}

// A trailing sign: + or -, or CR or DB (which mean negative). Returns the
// characters it takes, 0 when there is none.
size_t trailing_sign(std::string_view text, size_t at, bool &negative)
{
    if (at >= text.size())
        return 0;
    if (text[at] == '+' || text[at] == '-') {
        negative = text[at] == '-';
        return 1;
    }
    if (equals_ignoring_case(text, at, "CR") || equals_ignoring_case(text, at, "DB")) {
        negative = true;
        return 2;
    }
    return 0;
}

}  // namespace

NumberShape shape_of(const dm_item_desc &desc, size_t capacity)
{
    const size_t places = desc.digits == 0 || desc.digits > capacity ? capacity : desc.digits;
    NumberShape shape;
    shape.fraction_places = std::min<size_t>(desc.scale, places);
    shape.integer_places = places - shape.fraction_places;
    return shape;
}

bool is_zero(const Decimal &value)
{
    return std::all_of(value.digits.begin(), value.digits.end(), [](char c) { return c == '0'; });
}

Decimal zero_decimal(size_t places) { return Decimal{false, std::string(places, '0')}; }

std::string digits_of(unsigned long long value)
{
    char digits[24];  // 20 digits at most
    char *first = digits + sizeof digits;
    do {
        *--first = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    return std::string(first, digits + sizeof digits);
}

bool parse_decimal(std::string_view text, char decimal_point, char grouping, NumberShape shape,
                   Decimal &out)
{
    out = zero_decimal(shape.places());
    size_t at = skip_blanks(text, 0);
    bool negative = false;
    bool signed_before = false;
    if (at < text.size() && (text[at] == '+' || text[at] == '-')) {
        negative = text[at] == '-';
        signed_before = true;
        at = skip_blanks(text, at + 1);
    }
    std::string integer_digits;
    std::string fraction_digits;
    bool seen_point = false;
    bool seen_digit = false;
    for (; at < text.size(); ++at) {
        const char c = text[at];
        if (is_digit(c)) {
            (seen_point ? fraction_digits : integer_digits) += c;
            seen_digit = true;
        } else if (c == decimal_point && !seen_point) {
            seen_point = true;
        } else if (c != grouping || seen_point) {
            break;
        }
    }
    if (!seen_digit)
        return false;
    at = skip_blanks(text, at);
    if (!signed_before)
        at += trailing_sign(text, at, negative);
    at = skip_blanks(text, at);
    if (at != text.size())
        return false;

    // Align on the decimal point: keep the rightmost integer digits and the
    // leftmost decimals, as MOVE truncates.
    std::string &digits = out.digits;
    const size_t integer_kept = std::min(integer_digits.size(), shape.integer_places);
    digits.replace(shape.integer_places - integer_kept, integer_kept, integer_digits,
                   integer_digits.size() - integer_kept, integer_kept);
    const size_t fraction_kept = std::min(fraction_digits.size(), shape.fraction_places);
    digits.replace(shape.integer_places, fraction_kept, fraction_digits, 0, fraction_kept);
    out.negative = negative && !is_zero(out);
    return true;
}

void format_decimal(const Decimal &value, size_t fraction_places, char decimal_point,
                    std::string &out)
{
    std::string digits = value.digits;
    if (digits.size() <= fraction_places)
        digits.insert(0, fraction_places + 1 - digits.size(), '0');
    const size_t integer_length = digits.size() - fraction_places;
    size_t first = 0;
    while (first + 1 < integer_length && digits[first] == '0')
        ++first;
    if (value.negative && !is_zero(value))
        out += '-';
    out.append(digits, first, integer_length - first);
    if (fraction_places > 0) {
        out += decimal_point;
        out.append(digits, integer_length, fraction_places);
    }
}

}  // namespace cblxml::platform
