// The error classification on synthetic texts: the shared text tests, the
// code each handler chooses, the map from parser errors to table slots, and
// the records the handlers build.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include <xercesc/framework/XMLErrorCodes.hpp>
#include <xercesc/util/XMLExceptMsgs.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "XmlDomHandlers/XmlDomHandlers.h"
#include "XmlParseErr/event_record.h"
#include "XmlParseErr/perr_codes.h"
#include "XmlParseErr/perr_handlers.h"
#include "XmlParseErr/perr_text.h"
#include "XmlParseErr/xml_char_table.h"
#include "XmlParseErr/xml_perr_op_table.h"
#include "xexml/parser_init.h"

using namespace cblxml;
using xercesc::XMLErrs;
using xercesc::XMLExcepts;
using xercesc::XMLUni;

namespace {

DocView view(const std::u16string &text)
{
    return DocView{text.data(), static_cast<uint32_t>(text.size())};
}

// ---------------------------------------------------------------------------
// The shared text tests
// ---------------------------------------------------------------------------

struct TextCase {
    const char *test;
    bool (*holds)(DocView, int64_t);
    std::u16string text;
    int64_t at;
    bool expected;
};

TEST(PerrText, SharedTests)
{
    const TextCase cases[] = {
        {"CR is not blank", rest_is_blank, u"<a> \r", 3, false},
        {"blank rest past the end", rest_is_blank, u"<a>x", 9, true},
        {"blank rest of empty text", rest_is_blank, u"", 0, true},
        {"PI start passed over", inside_tag, u"<?p x", 4, false},
        {"declaration passed over to a tag", inside_tag, u"<a <!x", 5, true},
        {"tag past the end", inside_tag, u"<a b", 40, true},
        {"tag before the beginning", inside_tag, u"<a b", -3, false},
        {"tag in empty text", inside_tag, u"", 0, false},
        {"comment closing after i", inside_comment, u"<!--x-->", 4, true},
        {"PI closing after i", inside_pi, u"<?p x?>", 5, true},
        {"apostrophes count", in_attribute_value, u"<a b='x", 6, true},
        {"no tag for a value", in_attribute_value, u"b=\"x", 3, false},
        {"no equals at the beginning", no_equals_in_tag, u"ab", 1, true},
        {"apostrophe does not end a reference", reference_unterminated, u"&l';", 0, false},
    };
    for (const TextCase &c : cases)
        EXPECT_EQ(c.holds(view(c.text), c.at), c.expected) << c.test;
}

// ---------------------------------------------------------------------------
// The code each handler chooses
// ---------------------------------------------------------------------------

struct CodeCase {
    const char *handler;
    perr_classifier classify;
    std::u16string text;
    int64_t position;
    const char *lastEvent;  // name of the record before the exception, or null
    int32_t expected;
};

TEST(PerrCodes, EveryBranchOfTheTextDependentHandlers)
{
    const char *version = "VERSION-INFORMATION";
    const char *standalone = "STANDALONE-DECLARATION";
    const CodeCase cases[] = {
        {"UnterminatedCharRef", UnterminatedCharRefCode, u"<a>&a x;", 5, nullptr, 201},
        {"UnterminatedCharRef", UnterminatedCharRefCode, u"<a>#65", 5, nullptr, 201},
        {"ExpectedNumericalCharRef", ExpectedNumericalCharRefCode, u"<a>&Z;", 4, nullptr, 201},
        {"ExpectedNumericalCharRef", ExpectedNumericalCharRefCode, u"<a>Z;", 4, nullptr, 201},
        {"BadXMLEncoding", BadXMLEncodingCode, u"<?xml encoding=\"", 15, nullptr, 201},
        {"BadXMLEncoding", BadXMLEncodingCode, u"<?xml x=\"1\"?>", 10, nullptr, 201},
        {"UnterminatedEntityRef", UnterminatedEntityRefCode, u"<a>lt x", 6, nullptr, 201},
        {"ExpectedDeclString", ExpectedDeclStringCode, u"<?xml version='1' ", 18, version, 101},
        {"ExpectedEqSign", ExpectedEqSignCode, u"<?xml version='1' standalone ?>", 29, standalone,
         201},
        {"ExpectedEqSign", ExpectedEqSignCode, u"<?xml x ?>", 7, nullptr, 201},
        {"UnterminatedStartTag", UnterminatedStartTagCode, u"<a b>", 3, nullptr, 201},
        {"UnterminatedStartTag", UnterminatedStartTagCode, u"/", 0, nullptr, 201},
        {"UnterminatedPI", UnterminatedPICode, u"p x <", 5, nullptr, 140},
        {"ExpectedElementName", ExpectedElementNameCode, u"<a></ >", 5, nullptr, 133},
        {"ExpectedWhitespace", ExpectedWhitespaceCode, u"<a b='1'c='2'/>", 8, nullptr, 201},
        {"EmptyMainEntity", code_if_rest_blank<102>, u" \n", 0, nullptr, 102},
        {"EmptyMainEntity", code_if_rest_blank<102>, u" x", 0, nullptr, 201},
        {"EndedWithTagsOnStack", code_if_rest_blank<115>, u"<a>x", 3, nullptr, 201},
    };
    for (const CodeCase &c : cases) {
        xd_parse_info *last = c.lastEvent != nullptr ? new_event(c.lastEvent) : nullptr;
        const ErrorSite site{view(c.text), c.position, last};
        EXPECT_EQ(c.classify(site), c.expected) << c.handler << " at " << c.position << " of "
                                                << std::string(c.text.begin(), c.text.end());
        if (last != nullptr)
            kvt_xe_xmlparse_delete_info(last);
    }
}

// ---------------------------------------------------------------------------
// From the parser's error to the table slot
// ---------------------------------------------------------------------------

TEST(PerrIndex, ACodeMeansNothingWithoutItsDomain)
{
    struct Case {
        unsigned code;
        const XMLCh *domain;
        int expected;
    };
    const XMLCh *xml = XMLUni::fgXMLErrDomain;
    const XMLCh *except = XMLUni::fgExceptDomain;
    const Case cases[] = {
        {XMLErrs::ExpectedEqSign, except, 0},
        {XMLExcepts::Gen_UnexpectedEOF, xml, 0},
        {XMLErrs::ContradictoryEncoding, XMLUni::fgValidityDomain, 0},
        {XMLErrs::ExpectedEqSign, nullptr, 0},
    };
    for (const Case &c : cases)
        EXPECT_EQ(xml_perr_index(c.code, c.domain), c.expected) << c.code;
}

TEST(PerrIndex, EverySlotHasAHandlerAndEveryMappedIndexHasASlot)
{
    EXPECT_EQ(xml_perr_op_table[0], nullptr);
    for (int index = 1; index < kPerrTableSize; ++index)
        EXPECT_NE(xml_perr_op_table[index], nullptr) << index;
    for (unsigned code = 0; code < XMLErrs::F_HighBounds + 10u; ++code) {
        const int index = xml_perr_index(code, XMLUni::fgXMLErrDomain);
        EXPECT_TRUE(index >= kPerrSuppressWarning && index < kPerrTableSize) << code;
    }
}

// ---------------------------------------------------------------------------
// The records the handlers build
// ---------------------------------------------------------------------------

// Runs table slot `index` over a national `text` after a record named
// `last` (none for null) and gives the code and text of the record it built
// (UTF-16 units, easy to count), its name and whether a record follows.
struct Built {
    int32_t code;
    std::u16string text;
    std::string name;
    bool followed;
};

Built run(int index, const std::u16string &text, int32_t position,
          const char *last = "START-OF-DOCUMENT")
{
    EXPECT_TRUE(ensure_parser_initialised());
    const std::u16string document = u"<a/>";
    xd_parse_info *head = nullptr;
    XmlDomHandlers handler(document.data(), static_cast<uint32_t>(document.size() * 2), &head,
                           nullptr, CBLXML_OPT_NATIONAL);
    xd_parse_info *record = new_event("EXCEPTION");
    record->prev = last != nullptr ? new_event(last) : nullptr;
    xml_perr_op_table[index](record, text.data(), static_cast<uint32_t>(text.size()), position, 1,
                             handler);
    Built built{record->code, u"", std::string(record->event_name, CBLXML_EVENT_NAME_LEN),
                record->next != nullptr};
    built.name.erase(built.name.find_last_not_of(' ') + 1);
    if (record->text != nullptr)
        built.text = reinterpret_cast<const char16_t *>(record->text);
    if (record->prev != nullptr)
        kvt_xe_xmlparse_delete_info(record->prev);
    while (record != nullptr) {
        xd_parse_info *next = record->next;
        kvt_xe_xmlparse_delete_info(record);
        record = next;
    }
    return built;
}

TEST(PerrHandlers, PositionsOutsideTheTextAreClamped)
{
    const struct {
        int32_t position;
        std::u16string expected;
    } rows[] = {{1000000, u"<a>x"}, {4, u"<a>x"}, {-7, u"<"}, {0, u"<"}};
    for (int index = 1; index < kPerrTableSize; ++index) {
        if (index == 3 || index == 4 || index == 37)
            continue;  // their texts end elsewhere, checked below
        for (const auto &r : rows)
            EXPECT_EQ(run(index, u"<a>x", r.position).text, r.expected)
                << index << " at " << r.position;
    }
    // A duplicate attribute with no tag before it.
    EXPECT_EQ(run(3, u"no tag", 500).text, u"");
    // An empty document: nothing to read on either side.
    for (int index = 1; index < kPerrTableSize; ++index) {
        const Built built = run(index, u"", 5);
        EXPECT_EQ(built.text, u"") << index;
        EXPECT_NE(built.code, 0) << index;
    }
}

// Cases only a synthetic text reaches: an undeclared entity outside content
// and values is a plain exception; a reference without "&" has an empty name;
// the declaration slot looks at the record before the exception.
TEST(PerrHandlers, SyntheticTexts)
{
    const Built plain = run(37, u"&foo;", 0);
    EXPECT_EQ(plain.name, "EXCEPTION");
    EXPECT_EQ(plain.code, 201);
    EXPECT_FALSE(plain.followed);
    EXPECT_EQ(run(37, u"", 3).text, u"");
    const Built unnamed = run(37, u"<a>foo;x", 7);
    EXPECT_EQ(unnamed.name, "UNKNOWN-REFERENCE-IN-CONTENT");
    EXPECT_EQ(unnamed.text, u"");
    EXPECT_EQ(run(16, u"<?xml version='1' ", 18, "VERSION-INFORMATION").code, 101);
    EXPECT_EQ(run(16, u"<?xml version='1' ", 18, nullptr).code, 103);
}

}  // namespace
