#include "XmlParseErr/perr_text.h"

#include "XmlParseErr/xml_char_table.h"

namespace cblxml {

namespace {

bool is_blank(char16_t unit) { return unit == u' ' || unit == u'\n' || unit == u'\t'; }

int64_t literal_length(const char16_t *literal)
{
    int64_t n = 0;
    while (literal[n] != 0)
        ++n;
    return n;
}

// The last offset a backward walk from i may look at: a start past the end
// begins at the last unit. -1 when there is nothing to walk.
int64_t backward_start(DocView doc, int64_t i)
{
    return i < static_cast<int64_t>(doc.length) ? i : static_cast<int64_t>(doc.length) - 1;
}

// `literal` ends exactly at offset j (and so lies at or before it).
bool ends_at(DocView doc, int64_t j, const char16_t *literal)
{
    int64_t start = j + 1 - literal_length(literal);
    return start >= 0 && begins_with_at(doc, start, literal);
}

// A "<" at j that opens a start or end tag, not "<?" or "<!".
bool opens_tag(DocView doc, int64_t j)
{
    return doc.text[j] == u'<' && !begins_with_at(doc, j, u"<?") && !begins_with_at(doc, j, u"<!");
}

// Walking backward from i: true when `opening` ends first, false when
// `closing` ends first or the beginning is reached.
bool opened_before(DocView doc, int64_t i, const char16_t *opening, const char16_t *closing)
{
    for (int64_t j = backward_start(doc, i); j >= 0; --j) {
        if (ends_at(doc, j, closing))
            return false;
        if (ends_at(doc, j, opening))
            return true;
    }
    return false;
}

}  // namespace

bool xml_char_at(DocView doc, int64_t i)
{
    if (i < 0)
        return false;
    if (i >= static_cast<int64_t>(doc.length))
        return true;
    return is_xml_char(doc.text[i]);
}

bool begins_with_at(DocView doc, int64_t i, const char16_t *literal)
{
    if (i < 0)
        return false;
    for (int64_t k = 0; literal[k] != 0; ++k) {
        if (i + k >= static_cast<int64_t>(doc.length) || doc.text[i + k] != literal[k])
            return false;
    }
    return true;
}

int64_t last_at_or_before(DocView doc, int64_t i, char16_t unit)
{
    for (int64_t j = backward_start(doc, i); j >= 0; --j) {
        if (doc.text[j] == unit)
            return j;
    }
    return kNotFound;
}

int64_t first_occurrence(DocView doc, const char16_t *literal)
{
    // The literals are a few units long, so this stays linear in the text.
    for (int64_t i = 0; i < static_cast<int64_t>(doc.length); ++i) {
        if (begins_with_at(doc, i, literal))
            return i;
    }
    return kNotFound;
}

bool rest_is_blank(DocView doc, int64_t i)
{
    for (int64_t j = i < 0 ? 0 : i; j < static_cast<int64_t>(doc.length); ++j) {
        if (!is_blank(doc.text[j]))
            return false;
    }
    return true;
}

bool inside_tag(DocView doc, int64_t i)
{
    for (int64_t j = backward_start(doc, i); j >= 0; --j) {
        if (doc.text[j] == u'>')
            return false;
        if (opens_tag(doc, j))
            return true;
    }
    return false;
}

bool inside_comment(DocView doc, int64_t i) { return opened_before(doc, i, u"<!--", u"-->"); }

bool inside_pi(DocView doc, int64_t i) { return opened_before(doc, i, u"<?", u"?>"); }

bool in_content(DocView doc, int64_t i)
{
    if (inside_comment(doc, i))
        return false;
    for (int64_t j = backward_start(doc, i); j >= 0; --j) {
        if (doc.text[j] == u'>')
            return true;
        if (doc.text[j] == u'<')
            return false;
    }
    return false;
}

bool in_attribute_value(DocView doc, int64_t i)
{
    int64_t quotes = 0;
    int64_t equals = 0;
    for (int64_t j = backward_start(doc, i); j >= 0; --j) {
        char16_t unit = doc.text[j];
        if (unit == u'<')
            return 2 * equals - quotes == 1;
        if (unit == u'"' || unit == u'\'')
            ++quotes;
        else if (unit == u'=')
            ++equals;
    }
    return false;
}

bool first_tag(DocView doc, int64_t i)
{
    int64_t tags = 0;
    for (int64_t j = backward_start(doc, i); j >= 0; --j) {
        if (opens_tag(doc, j))
            ++tags;
    }
    return tags == 1;
}

bool slash_in_tag(DocView doc, int64_t i)
{
    for (int64_t j = backward_start(doc, i); j >= 0; --j) {
        if (doc.text[j] == u'/')
            return true;
        if (doc.text[j] == u'<')
            return false;
    }
    return false;
}

bool no_equals_in_tag(DocView doc, int64_t i)
{
    for (int64_t j = backward_start(doc, i); j >= 0; --j) {
        if (doc.text[j] == u'=')
            return false;
        if (doc.text[j] == u'<')
            return true;
    }
    return true;
}

bool reference_unterminated(DocView doc, int64_t i)
{
    for (int64_t j = i < 0 ? 0 : i; j < static_cast<int64_t>(doc.length); ++j) {
        char16_t unit = doc.text[j];
        if (unit == u';')
            return false;
        if (unit == u'"' || unit == u'<')
            return true;
    }
    return true;
}

}  // namespace cblxml
