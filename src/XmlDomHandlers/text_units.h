// Small measures of the parser's UTF-16 text.
#ifndef CBLXML_XMLDOMHANDLERS_TEXT_UNITS_H
#define CBLXML_XMLDOMHANDLERS_TEXT_UNITS_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace cblxml {

// Units before the terminating zero; 0 for a null text.
inline size_t unit_length(const char16_t *text)
{
    return text != nullptr ? std::char_traits<char16_t>::length(text) : 0;
}

inline bool is_high_surrogate(char16_t c) { return c >= 0xD800 && c <= 0xDBFF; }

// find_either and find_last_either over a range long enough to take in
// blocks.
int64_t find_last_either_long(const char16_t *text, int64_t from, int64_t to, char16_t a,
                              char16_t b);
size_t find_either_long(const char16_t *text, size_t from, size_t to, char16_t a, char16_t b);

// The first offset in [from, to) that holds `a` or `b`, or `to` when none
// does (pass the same unit twice to look for one). Eight units a step where
// the processor has SSE2; a short range is read unit by unit here.
inline size_t find_either(const char16_t *text, size_t from, size_t to, char16_t a, char16_t b)
{
    if (to > from && to - from >= 32)
        return find_either_long(text, from, to, a, b);
    for (size_t i = from; i < to; ++i) {
        if (text[i] == a || text[i] == b)
            return i;
    }
    return to;
}

// The last offset in [from, to) that holds `a` or `b`, or from - 1 when none
// does; the backward scans of the call-backs, which stop at the start of
// the text (from 0).
inline int64_t find_last_either(const char16_t *text, int64_t from, int64_t to, char16_t a,
                                char16_t b)
{
    if (to - from >= 32)
        return find_last_either_long(text, from, to, a, b);
    for (int64_t i = to - 1; i >= from; --i) {
        if (text[i] == a || text[i] == b)
            return i;
    }
    return from - 1;
}

}  // namespace cblxml

#endif
