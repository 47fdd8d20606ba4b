// Small scanners over the UTF-16 text of an XML declaration.
#ifndef CBLXML_XMLDOMHANDLERS_DECL_SCAN_H
#define CBLXML_XMLDOMHANDLERS_DECL_SCAN_H

#include <cstddef>
#include <string>

namespace cblxml {

// Space, line feed, carriage return or tab.
inline bool is_decl_space(char16_t c)
{
    return c == u' ' || c == u'\n' || c == u'\r' || c == u'\t';
}

// Reads a quoted value starting at `pos` (which stops at `end` or at a zero
// unit): white space is skipped up to a double or single quote; then units
// are copied up to the same quote. Returns true when the closing quote was
// found (pos is then just behind it). On failure `value` keeps what was
// copied and pos is where the scan stopped.
bool quote_copy(const char16_t *text, size_t end, size_t &pos, std::u16string &value);

// Index of the first "?>" at or after `from` and before `end`, or `end`.
size_t find_decl_end(const char16_t *text, size_t end, size_t from = 0);

// Index of `word` in text[0, end) (stopping at a zero unit), or npos.
size_t find_word(const char16_t *text, size_t end, const char16_t *word);

// The encoding named by a declaration text decl[0, end) (stopping at a zero
// unit). `found` when the word "encoding" occurs; `adjacent` when its "="
// follows the word at once. The value is read from behind the first "="
// after the word by quote_copy; a value that cannot be read whole keeps what
// was copied of it (possibly nothing).
struct DeclaredEncoding {
    bool found = false;
    bool adjacent = false;
    std::u16string value;
};
DeclaredEncoding declared_encoding(const char16_t *decl, size_t end);

// True when text[0, end) begins with `prefix`.
bool starts_with(const char16_t *text, size_t end, const char16_t *prefix);

}  // namespace cblxml

#endif
