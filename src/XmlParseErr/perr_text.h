// Tests on the UTF-16 document text around an error position, shared by the
// error handlers. Every scan is bounded: a backward walk stops at offset 0,
// a forward walk at the end of the text. An offset past the end stands for
// the end of the text: a backward walk starts at the last unit, and there is
// no character at it. A negative offset lies before the beginning: backward
// walks find nothing there, forward walks start at offset 0.
#ifndef CBLXML_XMLPARSEERR_PERR_TEXT_H
#define CBLXML_XMLPARSEERR_PERR_TEXT_H

#include <cstdint>

namespace cblxml {

// The document text a handler classifies: UTF-16 units, not terminated.
struct DocView {
    const char16_t *text;
    uint32_t length;
};

constexpr int64_t kNotFound = -1;

// The unit at i is an XML character. The end of the text counts as one:
// the parser stopped because the input ended, not on a bad character.
bool xml_char_at(DocView doc, int64_t i);

// The text at i begins with `literal` (an ASCII u"" string).
bool begins_with_at(DocView doc, int64_t i, const char16_t *literal);

// Offset of the last `unit` at or before i, or kNotFound.
int64_t last_at_or_before(DocView doc, int64_t i, char16_t unit);

// Offset of the first occurrence of `literal` in the text, or kNotFound.
int64_t first_occurrence(DocView doc, const char16_t *literal);

// Every unit from i to the end is a space, line feed or tab (carriage return
// deliberately not). True for an i at or past the end.
bool rest_is_blank(DocView doc, int64_t i);

// Walking backward from i: a start-tag or end-tag "<" comes before any ">";
// "<?" and "<!" are passed over.
bool inside_tag(DocView doc, int64_t i);

// Walking backward from i, a "<!--" lies before any "-->" (each delimiter
// counted only when it ends at or before i).
bool inside_comment(DocView doc, int64_t i);

// As inside_comment for "<?" and "?>".
bool inside_pi(DocView doc, int64_t i);

// Not inside a comment, and walking backward from i a ">" comes before any "<".
bool in_content(DocView doc, int64_t i);

// From the nearest "<" at or before i up to i, twice the equals signs minus
// the quotes (double and single) is 1: an attribute value is open.
bool in_attribute_value(DocView doc, int64_t i);

// Exactly one start-tag or end-tag "<" lies between offset 0 and i.
bool first_tag(DocView doc, int64_t i);

// Walking backward from i, a "/" comes before any "<".
bool slash_in_tag(DocView doc, int64_t i);

// Walking backward from i, a "<" or the beginning comes before any "=".
bool no_equals_in_tag(DocView doc, int64_t i);

// Walking forward from i, a double quote, a "<" or the end comes before
// any ";".
bool reference_unterminated(DocView doc, int64_t i);

}  // namespace cblxml

#endif
