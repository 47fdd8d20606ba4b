// COMP-1 and COMP-2 items: IEEE single and double precision in machine
// order. Their text is the shortest one that reads back to the same value
// ("1.5", "1E+20"), with the handle's decimal point; infinities and NaN are
// written as XML Schema writes them: INF, -INF, NaN.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <system_error>

#include "platform/datamap.h"

namespace cblxml::platform {
namespace {

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

template <typename Real>
void write_real(Real value, char decimal_point, std::string &text)
{
    if (std::isnan(value)) {
        text += "NaN";
        return;
    }
    if (std::isinf(value)) {
        text += value < 0 ? "-INF" : "INF";
        return;
    }
    char buffer[64];
    const std::to_chars_result written = std::to_chars(buffer, buffer + sizeof buffer, value);
    for (const char *c = buffer; c != written.ptr; ++c)
        text += *c == 'e' ? 'E' : *c == '.' ? decimal_point : *c;
}

// Reads a number in the program's notation: blanks around it, a sign,
// grouping characters, the handle's decimal point, an exponent. Read
// without the C locale's help so that the process locale cannot change it.
template <typename Real>
bool read_real(std::string_view text, char decimal_point, char grouping, Real &value)
{
    std::string plain;
    plain.reserve(text.size());
    for (char c : text) {
        if (is_blank(c) || c == grouping)
            continue;
        plain += c == decimal_point ? '.' : c;
    }
    bool negative = false;
    size_t start = 0;
    if (!plain.empty() && (plain[0] == '+' || plain[0] == '-')) {
        negative = plain[0] == '-';
        start = 1;
    }
    if (start < plain.size() && (plain[start] == '+' || plain[start] == '-'))
        return false;
    const char *first = plain.data() + start;
    const char *last = plain.data() + plain.size();
    if (first == last)
        return false;
    const std::from_chars_result read = std::from_chars(first, last, value);
    if (read.ec != std::errc() || read.ptr != last)
        return false;
    if (negative)
        value = -value;
    return true;
}

template <typename Real>
bool real_to_text(const ItemView &view, const unsigned char *item, std::string &text)
{
    if (view.length != sizeof(Real))
        return false;
    Real value;
    std::memcpy(&value, item, sizeof value);
    write_real(value, view.map.decimal_point, text);
    return true;
}

template <typename Real>
bool real_from_text(const ItemView &view, unsigned char *item, std::string_view text)
{
    Real value = 0;
    if (view.length != sizeof(Real) ||
        !read_real(text, view.map.decimal_point, view.map.grouping, value))
        return false;
    std::memcpy(item, &value, sizeof value);
    return true;
}

// Zero bytes are +0.0 in IEEE formats, whatever the length.
void real_clear(const ItemView &view, unsigned char *item)
{
    std::fill(item, item + view.length, 0);
}

}  // namespace

const ItemConverter kFloatConverter{real_to_text<float>, real_from_text<float>, real_clear,
                                    nullptr};
const ItemConverter kDoubleConverter{real_to_text<double>, real_from_text<double>, real_clear,
                                     nullptr};

}  // namespace cblxml::platform
