#include "XmlParseErr/perr_codes.h"

#include <cstddef>

#include "XmlParseErr/event_record.h"

namespace cblxml {

namespace {

constexpr char kVersionEvent[] = "VERSION-INFORMATION";
constexpr char kEncodingEvent[] = "ENCODING-DECLARATION";
constexpr char kStandaloneEvent[] = "STANDALONE-DECLARATION";

// One row of a "first test that holds" rule.
struct TestCode {
    bool (*holds)(DocView doc, int64_t i);
    int32_t code;
};

template <size_t N>
int32_t first_that_holds(const TestCode (&rules)[N], DocView doc, int64_t i)
{
    for (const TestCode &rule : rules) {
        if (rule.holds(doc, i))
            return rule.code;
    }
    return kGenericExceptionCode;
}

// One row of a "the first occurrence of this word lies before the error" rule.
struct WordCode {
    const char16_t *word;
    int32_t code;
};

template <size_t N>
int32_t first_word_before(const WordCode (&rules)[N], const ErrorSite &site)
{
    for (const WordCode &rule : rules) {
        int64_t at = first_occurrence(site.doc, rule.word);
        if (at != kNotFound && at < site.position)
            return rule.code;
    }
    return kGenericExceptionCode;
}

bool holds_word(DocView doc, const char16_t *word)
{
    return first_occurrence(doc, word) != kNotFound;
}

// The code of a reference that ends with ";" by its kind.
int32_t terminated_reference_code(DocView doc, int64_t ampersand)
{
    if (begins_with_at(doc, ampersand, u"&#x"))
        return 13;
    if (begins_with_at(doc, ampersand, u"&#"))
        return 14;
    return kGenericExceptionCode;
}

// The code of a reference that runs into a quote, a tag or the end, by
// where the reference stands.
int32_t unterminated_reference_code(DocView doc, int64_t ampersand)
{
    static constexpr TestCode kRules[] = {
        {in_attribute_value, 111},
        {in_content, 120},
    };
    return first_that_holds(kRules, doc, ampersand);
}

bool bad_char_between(DocView doc, int64_t from, int64_t to)
{
    for (int64_t j = from + 1; j < to; ++j) {
        if (!xml_char_at(doc, j))
            return true;
    }
    return false;
}

int64_t first_after(DocView doc, int64_t from, char16_t unit)
{
    for (int64_t j = from < 0 ? 0 : from; j < static_cast<int64_t>(doc.length); ++j) {
        if (doc.text[j] == unit)
            return j;
    }
    return kNotFound;
}

bool is_ascii_letter(char16_t unit)
{
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
}

// Offset of the nearest "<?" that begins at or before i, or kNotFound.
int64_t pi_start_at_or_before(DocView doc, int64_t i)
{
    for (int64_t j = last_at_or_before(doc, i, u'<'); j != kNotFound;
         j = last_at_or_before(doc, j - 1, u'<')) {
        if (begins_with_at(doc, j, u"<?"))
            return j;
    }
    return kNotFound;
}

}  // namespace

int32_t InvalidDocumentStructureCode(const ErrorSite &site)
{
    // At the end of the text this is a document without a root element;
    // the end counts as an XML character, which gives the empty-document code.
    return xml_char_at(site.doc, site.position) ? 102 : 1;
}

int32_t ExpectedCommentOrPICode(const ErrorSite &site)
{
    const DocView doc = site.doc;
    const int64_t at = site.position;
    if (!xml_char_at(doc, at))
        return 1;
    if (begins_with_at(doc, at, u"<") && rest_is_blank(doc, at + 1))
        return 2;
    if (begins_with_at(doc, at, u"<!DOCTYPE"))
        return 159;
    return inside_tag(doc, at + 1) ? 160 : 2;
}

int32_t InvalidCharacterCode(const ErrorSite &site)
{
    static constexpr TestCode kRules[] = {
        {inside_comment, 9},
        {inside_pi, 11},
        {in_content, 6},
        {inside_tag, 126},
    };
    return first_that_holds(kRules, site.doc, site.position);
}

int32_t UnterminatedCharRefCode(const ErrorSite &site)
{
    int64_t ampersand = last_at_or_before(site.doc, site.position, u'&');
    if (ampersand == kNotFound)
        return kGenericExceptionCode;
    if (reference_unterminated(site.doc, ampersand))
        return unterminated_reference_code(site.doc, ampersand);
    return terminated_reference_code(site.doc, ampersand);
}

int32_t ExpectedNumericalCharRefCode(const ErrorSite &site)
{
    int64_t ampersand = last_at_or_before(site.doc, site.position, u'&');
    if (ampersand == kNotFound)
        return kGenericExceptionCode;
    return terminated_reference_code(site.doc, ampersand);
}

int32_t BadXMLEncodingCode(const ErrorSite &site)
{
    const DocView doc = site.doc;
    int64_t word = first_occurrence(doc, u"encoding");
    if (word == kNotFound)
        return kGenericExceptionCode;
    int64_t doubleQuote = first_after(doc, word, u'"');
    int64_t singleQuote = first_after(doc, word, u'\'');
    int64_t quote = doubleQuote;
    if (quote == kNotFound || (singleQuote != kNotFound && singleQuote < quote))
        quote = singleQuote;
    if (quote == kNotFound || quote + 1 >= static_cast<int64_t>(doc.length))
        return kGenericExceptionCode;
    return is_ascii_letter(doc.text[quote + 1]) ? kGenericExceptionCode : 15;
}

int32_t UnterminatedEntityRefCode(const ErrorSite &site)
{
    const DocView doc = site.doc;
    int64_t ampersand = last_at_or_before(doc, site.position, u'&');
    if (ampersand == kNotFound)
        return kGenericExceptionCode;
    if (reference_unterminated(doc, ampersand)) {
        if (rest_is_blank(doc, site.position))
            return unterminated_reference_code(doc, ampersand);
        return xml_char_at(doc, site.position) ? kGenericExceptionCode : 17;
    }
    int64_t semicolon = first_after(doc, ampersand, u';');
    return bad_char_between(doc, ampersand, semicolon) ? 17 : kGenericExceptionCode;
}

int32_t ExpectedDeclStringCode(const ErrorSite &site)
{
    const bool afterVersion = event_is(site.lastEvent, kVersionEvent);
    if (rest_is_blank(site.doc, site.position))
        return afterVersion ? 101 : 103;
    if (afterVersion)
        return 147;
    return event_is(site.lastEvent, kEncodingEvent) ? 152 : 158;
}

int32_t ExpectedQuotedStringCode(const ErrorSite &site)
{
    const DocView doc = site.doc;
    if (!rest_is_blank(doc, site.position)) {
        static constexpr WordCode kRules[] = {
            {u"standalone", 154},
            {u"encoding", 149},
            {u"version", 144},
        };
        return first_word_before(kRules, site);
    }
    const bool version = holds_word(doc, u"version");
    const bool encoding = holds_word(doc, u"encoding");
    const bool standalone = holds_word(doc, u"standalone");
    if (version && !encoding && !standalone)
        return 104;
    if (encoding && !standalone)
        return 106;
    return standalone ? 108 : kGenericExceptionCode;
}

int32_t ExpectedEqSignCode(const ErrorSite &site)
{
    const DocView doc = site.doc;
    const bool blank = rest_is_blank(doc, site.position);
    const int64_t tagStart = last_at_or_before(doc, site.position, u'<');
    if (!begins_with_at(doc, tagStart, u"<?xml")) {
        if (!xml_char_at(doc, site.position))
            return 131;
        return blank ? 109 : 127;
    }
    // In the XML declaration: the pseudo-attribute that lacks its "=" is the
    // first one the document holds whose event has not been appended last.
    const xd_parse_info *last = site.lastEvent;
    const bool version = holds_word(doc, u"version");
    const bool encoding = holds_word(doc, u"encoding");
    const bool standalone = holds_word(doc, u"standalone");
    if (!event_is(last, kVersionEvent) && version && !encoding && !standalone)
        return blank ? 104 : 143;
    if (!event_is(last, kEncodingEvent) && encoding)
        return blank ? 106 : 148;
    if (!event_is(last, kStandaloneEvent) && standalone)
        return blank ? 108 : 153;
    return kGenericExceptionCode;
}

int32_t UnterminatedStartTagCode(const ErrorSite &site)
{
    const DocView doc = site.doc;
    const int64_t before = site.position - 1;
    if (before < 0 || before >= static_cast<int64_t>(doc.length) || doc.text[before] != u'/')
        return kGenericExceptionCode;
    return rest_is_blank(doc, site.position) ? 112 : 132;
}

int32_t UnterminatedPICode(const ErrorSite &site)
{
    const DocView doc = site.doc;
    if (!rest_is_blank(doc, site.position))
        return xml_char_at(doc, site.position) ? 140 : 139;
    // The input ended inside the instruction: a "<" outside quotes after its
    // start means markup followed that the instruction swallowed.
    const int64_t start = pi_start_at_or_before(doc, site.position);
    char16_t openQuote = 0;
    for (int64_t j = start == kNotFound ? 0 : start + 1; j < static_cast<int64_t>(doc.length);
         ++j) {
        const char16_t unit = doc.text[j];
        if (openQuote != 0) {
            if (unit == openQuote)
                openQuote = 0;
        } else if (unit == u'"' || unit == u'\'') {
            openQuote = unit;
        } else if (unit == u'<') {
            return 140;
        }
    }
    return 116;
}

int32_t ExpectedElementNameCode(const ErrorSite &site)
{
    static constexpr TestCode kRules[] = {
        {first_tag, 124},
        {slash_in_tag, 133},
    };
    int32_t code = first_that_holds(kRules, site.doc, site.position);
    return code == kGenericExceptionCode ? 135 : code;
}

int32_t ExpectedAttrNameCode(const ErrorSite &site)
{
    return no_equals_in_tag(site.doc, site.position) ? 125 : 130;
}

int32_t ExpectedEntityRefNameCode(const ErrorSite &site)
{
    return xml_char_at(site.doc, site.position) ? kGenericExceptionCode : 141;
}

int32_t ExpectedWhitespaceCode(const ErrorSite &site)
{
    static constexpr WordCode kRules[] = {
        {u"standalone", 157},
        {u"encoding", 151},
        {u"version", 146},
    };
    return first_word_before(kRules, site);
}

int32_t UnexpectedEOFExceptionCode(const ErrorSite &site)
{
    static constexpr TestCode kRules[] = {
        {in_attribute_value, 110},
        {first_tag, 113},
        {inside_tag, 114},
    };
    return first_that_holds(kRules, site.doc, site.position);
}

}  // namespace cblxml
