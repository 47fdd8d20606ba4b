// Edited items: numeric-edited and alphanumeric-edited items receive their
// value edited by their PICTURE (the description's format text); what they
// give back is their stored text as it stands.
#include <algorithm>
#include <cstring>
#include <vector>

#include "platform/datamap.h"
#include "platform/datamap_decimal.h"
#include "platform/platform.h"
#include "platform/unicode.h"

namespace cblxml::platform {
namespace {

// A PICTURE longer than this is not a PICTURE but unterminated memory.
constexpr size_t kMaxFormatLength = 1024;
// CR and DB take two positions; they are carried as one symbol each.
constexpr char kCreditSymbol = 'c';
constexpr char kDebitSymbol = 'd';

bool is_national(const dm_item_desc &desc) { return desc.usage_code == DM_USAGE_NATIONAL; }

// Expands repetition counts and upper-cases: "z(3)9.99cr" gives "ZZZ9.99c".
// False when the text is malformed or the result would not fit `limit`.
bool expand_picture(const char *format, size_t limit, std::string &symbols)
{
    if (format == nullptr)
        return false;
    const size_t length = strnlen(format, kMaxFormatLength + 1);
    if (length == 0 || length > kMaxFormatLength)
        return false;
    for (size_t i = 0; i < length; ++i) {
        char c = format[i];
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
        if (c == '(') {
            if (symbols.empty())
                return false;
            size_t count = 0;
            size_t j = i + 1;
            for (; j < length && format[j] >= '0' && format[j] <= '9'; ++j) {
                count = count * 10 + static_cast<size_t>(format[j] - '0');
                if (count > limit)
                    return false;
            }
            if (j >= length || format[j] != ')' || count == 0 || symbols.size() + count - 1 > limit)
                return false;
            symbols.append(count - 1, symbols.back());
            i = j;
            continue;
        }
        const bool two_letter = i + 1 < length && (c == 'C' || c == 'D');
        if (two_letter) {
            const char next = static_cast<char>(format[i + 1] & ~0x20);
            if ((c == 'C' && next == 'R') || (c == 'D' && next == 'B')) {
                symbols += c == 'C' ? kCreditSymbol : kDebitSymbol;
                ++i;
                continue;
            }
        }
        symbols += c;
        if (symbols.size() > limit)
            return false;
    }
    return true;
}

// Stores edited UTF-8 text into the item as a plain MOVE would.
void store_text(const ItemView &view, unsigned char *item, std::string_view text)
{
    const ItemConverter &plain =
        is_national(view.desc) ? kNationalConverter : kAlphanumericConverter;
    plain.from_text(view, item, text);
}

bool stored_text(const ItemView &view, const unsigned char *item, std::string &text)
{
    const ItemConverter &plain =
        is_national(view.desc) ? kNationalConverter : kAlphanumericConverter;
    return plain.to_text(view, item, text);
}

void clear_text(const ItemView &view, unsigned char *item)
{
    const ItemConverter &plain =
        is_national(view.desc) ? kNationalConverter : kAlphanumericConverter;
    plain.clear(view, item);
}

// --- numeric-edited ---------------------------------------------------------

struct NumericPicture {
    std::string symbols;
    char point = '.';        // the decimal point symbol of the program
    char comma = ',';        // the other of the two: an insertion character
    char floating = '\0';    // '$', '+' or '-' when one of them floats
    char suppression = ' ';  // '*' when the picture suppresses with asterisks
    NumberShape shape;
    bool has_nine = false;
};

bool is_insertion(const NumericPicture &picture, char symbol)
{
    return symbol == 'B' || symbol == '0' || symbol == '/' || symbol == picture.comma;
}

// Classifies the symbols and counts the digit positions on each side of
// the decimal point. False for symbols that a numeric-edited item cannot have.
bool analyse(const ItemView &view, NumericPicture &picture)
{
    const char point = view.map.decimal_point == ',' ? ',' : '.';
    picture.point = point;
    picture.comma = point == ',' ? '.' : ',';
    if (!expand_picture(view.desc.format, view.length + kMaxFormatLength, picture.symbols))
        return false;
    for (char candidate : {'$', '+', '-'})
        if (std::count(picture.symbols.begin(), picture.symbols.end(), candidate) >= 2)
            picture.floating = candidate;
    bool after_point = false;
    bool floating_seen = false;
    for (char symbol : picture.symbols) {
        bool digit = false;
        switch (symbol) {
        case '9':
            picture.has_nine = true;
            digit = true;
            break;
        case '*':
            picture.suppression = '*';
            digit = true;
            break;
        case 'Z':
            digit = true;
            break;
        case 'V':
            after_point = true;
            break;
        case 'P':
        case 'S':
        case kCreditSymbol:
        case kDebitSymbol:
            break;
        default:
            if (symbol == picture.floating) {
                digit = floating_seen;  // the first one holds only the symbol
                floating_seen = true;
            } else if (symbol == point) {
                after_point = true;
            } else if (!is_insertion(picture, symbol) && symbol != '$' && symbol != '+' &&
                       symbol != '-') {
                return false;
            }
        }
        if (digit)
            ++(after_point ? picture.shape.fraction_places : picture.shape.integer_places);
    }
    return true;
}

char sign_symbol(char symbol, bool negative)
{
    if (symbol == '$')
        return '$';
    if (symbol == '+')
        return negative ? '-' : '+';
    return negative ? '-' : ' ';
}

// Edits a value by the picture into ASCII text, one character per position.
std::string edit(const NumericPicture &picture, const Decimal &value)
{
    const bool zero = is_zero(value);
    std::string out;
    size_t next_digit = 0;
    bool started = false;
    bool floating_seen = false;
    size_t symbol_slot = std::string::npos;  // where a floating symbol would go
    auto begin_significance = [&] {
        if (!started && picture.floating != '\0' && symbol_slot != std::string::npos)
            out[symbol_slot] = sign_symbol(picture.floating, value.negative);
        started = true;
    };
    for (size_t i = 0; i < picture.symbols.size(); ++i) {
        const char symbol = picture.symbols[i];
        const bool floating_digit = symbol == picture.floating && floating_seen;
        if (symbol == '9' || symbol == 'Z' || symbol == '*' || floating_digit) {
            const char digit = value.digits[next_digit++];
            if (symbol == '9' || started || digit != '0') {
                begin_significance();
                out += digit;
            } else {
                if (floating_digit)
                    symbol_slot = out.size();
                out += symbol == '*' ? '*' : ' ';
            }
        } else if (symbol == picture.floating) {
            floating_seen = true;
            symbol_slot = out.size();
            out += ' ';
        } else if (symbol == picture.point) {
            const bool digits_follow = picture.symbols.find('9', i) != std::string::npos || !zero;
            if (!started && digits_follow)
                begin_significance();
            out += started || picture.suppression == '*' ? picture.point : ' ';
        } else if (is_insertion(picture, symbol)) {
            if (started) {
                out += symbol == 'B' ? ' ' : symbol;
            } else {
                if (picture.floating != '\0' && floating_seen)
                    symbol_slot = out.size();
                out += picture.suppression;
            }
        } else if (symbol == '$' || symbol == '+' || symbol == '-') {
            out += sign_symbol(symbol, value.negative);
        } else if (symbol == kCreditSymbol || symbol == kDebitSymbol) {
            out += value.negative ? (symbol == kCreditSymbol ? "CR" : "DB") : "  ";
        }
    }
    // A zero value with no 9 in the picture leaves nothing to show.
    if (zero && !picture.has_nine) {
        for (char &c : out)
            if (picture.suppression != '*' || c != picture.point)
                c = picture.suppression;
    }
    return out;
}

bool numeric_edited_from_text(const ItemView &view, unsigned char *item, std::string_view text)
{
    NumericPicture picture;
    if (!analyse(view, picture))
        return false;
    Decimal value;
    if (!parse_decimal(text, view.map.decimal_point, view.map.grouping, picture.shape, value))
        return false;
    store_text(view, item, edit(picture, value));
    return true;
}

// --- alphanumeric-edited ----------------------------------------------------

bool alphanumeric_edited_from_text(const ItemView &view, unsigned char *item, std::string_view text)
{
    if (view.desc.format == nullptr || view.desc.format[0] == '\0') {
        store_text(view, item, text);
        return true;
    }
    std::string symbols;
    if (!expand_picture(view.desc.format, view.length + kMaxFormatLength, symbols))
        return false;
    const auto *bytes = reinterpret_cast<const unsigned char *>(text.data());
    size_t position = 0;
    std::string out;
    for (char symbol : symbols) {
        switch (symbol) {
        case 'A':
        case 'X':
        case '9':
            if (position < text.size()) {
                const size_t start = position;
                decode_utf8(bytes, text.size(), position);
                out.append(text.data() + start, position - start);
            } else {
                out += ' ';
            }
            break;
        case 'B':
            out += ' ';
            break;
        case '0':
        case '/':
            out += symbol;
            break;
        default:
            return false;
        }
    }
    store_text(view, item, out);
    return true;
}

}  // namespace

const ItemConverter kNumericEditedConverter{stored_text, numeric_edited_from_text, clear_text,
                                            nullptr};
const ItemConverter kAlphanumericEditedConverter{stored_text, alphanumeric_edited_from_text,
                                                 clear_text, nullptr};

}  // namespace cblxml::platform
