// Code-point level helpers shared by the UTF-8 / UTF-16 conversions and the
// code-page conversions of the data map.
#ifndef CBLXML_PLATFORM_UNICODE_H
#define CBLXML_PLATFORM_UNICODE_H

#include <cstddef>
#include <string>

namespace cblxml::platform {

constexpr char32_t kReplacementCharacter = 0xFFFD;
// Returned by decode_utf8 for a malformed sequence.
constexpr char32_t kInvalidCodePoint = 0xFFFFFFFF;

// Decodes the UTF-8 sequence that starts at text[position] and advances
// `position` past it. A malformed sequence gives kInvalidCodePoint and
// advances over its longest valid prefix (at least one byte), so that every
// malformed stretch is replaced once per maximal subpart. Overlong forms,
// surrogates and values beyond U+10FFFF are malformed.
char32_t decode_utf8(const unsigned char *text, size_t length, size_t &position);

// Appends the UTF-8 form of a valid code point.
void append_utf8(std::string &out, char32_t code_point);

// Narrows the leading run of units U+0001 to U+007F of `text` (at most
// `count`) into `out`, one byte each, and returns the run's length. Bytes of
// `out` past the run, up to `count`, may be written over.
size_t narrow_ascii(const char16_t *text, size_t count, char *out);

// UTF-16 units that utf8_to_utf16 would produce for the text.
size_t utf16_units_of_utf8(const char *text, size_t length);

}  // namespace cblxml::platform

#endif
