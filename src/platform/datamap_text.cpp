// Alphanumeric and national items: text in the program's code page, or
// UTF-16 in machine order. Both move as COBOL's MOVE does: left-justified,
// padded with spaces, cut on the right.
#include <algorithm>
#include <cstring>

#include "platform/datamap.h"
#include "platform/platform.h"
#include "platform/unicode.h"

namespace cblxml::platform {
namespace {

constexpr char16_t kNationalSpace = 0x0020;

bool is_high_surrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }

// --- alphanumeric, alphabetic ---------------------------------------------

bool alphanumeric_to_text(const ItemView &view, const unsigned char *item, std::string &text)
{
    // Every byte, trailing spaces too: a whole document travels this way.
    view.map.code_page->decode(item, view.length, text);
    return true;
}

void alphanumeric_clear(const ItemView &view, unsigned char *item)
{
    std::memset(item, view.map.code_page->space(), view.length);
}

bool is_ascii(std::string_view text)
{
    unsigned char any = 0;
    for (const char c : text)
        any |= static_cast<unsigned char>(c);
    return any < 0x80;
}

bool alphanumeric_from_text(const ItemView &view, unsigned char *item, std::string_view text)
{
    const CodePage &page = *view.map.code_page;
    if (page.keeps_ascii() && is_ascii(text)) {
        // ASCII text in the native page: stored as it is, cut on the right.
        const size_t kept = std::min(text.size(), static_cast<size_t>(view.length));
        std::memcpy(item, text.data(), kept);
        std::memset(item + kept, page.space(), view.length - kept);
        return true;
    }
    std::string encoded;
    view.map.code_page->encode(text.data(), text.size(), encoded);
    // Cut on a character boundary, so that a multibyte character is never
    // split; the bytes it would have used are padded like the rest.
    const size_t kept = view.map.code_page->fit(encoded, view.length);
    std::memcpy(item, encoded.data(), kept);
    std::memset(item + kept, view.map.code_page->space(), view.length - kept);
    return true;
}

size_t alphanumeric_stored_size(const ItemView &view, std::string_view text)
{
    if (view.map.code_page->keeps_ascii() && is_ascii(text))
        return text.size();
    std::string encoded;
    view.map.code_page->encode(text.data(), text.size(), encoded);
    return encoded.size();
}

// --- national, DBCS -------------------------------------------------------

bool national_to_text(const ItemView &view, const unsigned char *item, std::string &text)
{
    // The item need not be aligned for char16_t: it is copied out a piece
    // at a time (a whole document may travel this way). A piece never ends
    // between the two units of a surrogate pair. An odd last byte is not a
    // unit and is left out.
    const size_t total = view.length / 2;
    text.reserve(text.size() + total);  // the size of ASCII text: no regrowth for the common case
    char16_t piece[4096];
    for (size_t done = 0; done < total;) {
        size_t take = std::min(total - done, sizeof piece / sizeof piece[0]);
        std::memcpy(piece, item + done * 2, take * 2);
        if (take > 1 && done + take < total && piece[take - 1] >= 0xD800 &&
            piece[take - 1] <= 0xDBFF)
            --take;
        text += utf16_to_utf8(piece, take);
        done += take;
    }
    return true;
}

void fill_national_spaces(unsigned char *at, size_t bytes)
{
    for (size_t i = 0; i + 1 < bytes; i += 2)
        std::memcpy(at + i, &kNationalSpace, 2);
    if (bytes % 2 != 0)
        at[bytes - 1] = ' ';
}

void national_clear(const ItemView &view, unsigned char *item)
{
    fill_national_spaces(item, view.length);
}

bool national_from_text(const ItemView &view, unsigned char *item, std::string_view text)
{
    const std::u16string units = utf8_to_utf16(text.data(), text.size());
    size_t kept = std::min(units.size(), view.length / 2);
    // Never keep half of a surrogate pair.
    if (kept < units.size() && kept > 0 && is_high_surrogate(units[kept - 1]))
        --kept;
    std::memcpy(item, units.data(), kept * 2);
    fill_national_spaces(item + kept * 2, view.length - kept * 2);
    return true;
}

size_t national_stored_size(const ItemView &, std::string_view text)
{
    return 2 * utf16_units_of_utf8(text.data(), text.size());
}

}  // namespace

const ItemConverter kAlphanumericConverter{alphanumeric_to_text, alphanumeric_from_text,
                                           alphanumeric_clear, alphanumeric_stored_size};
const ItemConverter kNationalConverter{national_to_text, national_from_text, national_clear,
                                       national_stored_size};

}  // namespace cblxml::platform
