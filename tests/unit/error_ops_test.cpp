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
#include "XmlDomHandlers/event_record.h"
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
        {"ExpectedEqSign", ExpectedEqSignCode, u"<?xml version='1' standalone ?>", 29, standalone, 201},
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
        EXPECT_EQ(c.classify(site), c.expected)
            << c.handler << " at " << c.position << " of " << std::string(c.text.begin(), c.text.end());
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

// A handler over a small national document: texts come back as the UTF-16
// units they were made from, so their lengths are easy to check.
class PerrHandlerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(ensure_parser_initialised());
        sentinel = static_cast<xd_parse_info *>(std::calloc(1, sizeof(xd_parse_info)));
        head = sentinel;
        handler = new XmlDomHandlers(document.data(), static_cast<uint32_t>(document.size() * 2),
                                     &head, nullptr, CBLXML_OPT_NATIONAL);
        last = new_event("START-OF-DOCUMENT");
    }
    void TearDown() override
    {
        delete handler;
        for (xd_parse_info *r = sentinel->next; r != nullptr;) {
            xd_parse_info *next = r->next;
            kvt_xe_xmlparse_delete_info(r);
            r = next;
        }
        std::free(sentinel);
        kvt_xe_xmlparse_delete_info(last);
    }

    // Runs slot `index` over `text` and returns the chain it built.
    xd_parse_info *run(int index, const std::u16string &text, int32_t position)
    {
        xd_parse_info *record = new_event("EXCEPTION");
        record->prev = last;
        xml_perr_op_table[index](record, text.data(), static_cast<uint32_t>(text.size()), position,
                                 1, handler);
        return record;
    }

    static std::u16string text_of(const xd_parse_info *record)
    {
        return record->text != nullptr ? std::u16string(reinterpret_cast<const char16_t *>(record->text))
                                       : std::u16string();
    }

    static void free_chain(xd_parse_info *record)
    {
        while (record != nullptr) {
            xd_parse_info *next = record->next;
            kvt_xe_xmlparse_delete_info(record);
            record = next;
        }
    }

    std::u16string document = u"<a/>";
    xd_parse_info *sentinel = nullptr;
    xd_parse_info *head = nullptr;
    xd_parse_info *last = nullptr;
    XmlDomHandlers *handler = nullptr;
};

TEST_F(PerrHandlerTest, PositionsOutsideTheTextAreClamped)
{
    const std::u16string text = u"<a>x";
    struct Case {
        int32_t position;
        std::u16string expected;
    };
    const Case cases[] = {{1000000, u"<a>x"}, {4, u"<a>x"}, {-7, u"<"}, {0, u"<"}};
    for (int index = 1; index < kPerrTableSize; ++index) {
        if (index == 3 || index == 4 || index == 37)
            continue;  // their texts end elsewhere, checked below
        for (const Case &c : cases) {
            xd_parse_info *record = run(index, text, c.position);
            EXPECT_EQ(text_of(record), c.expected) << index << " at " << c.position;
            free_chain(record);
        }
    }
    // A duplicate attribute with no tag before it.
    xd_parse_info *untagged = run(3, u"no tag", 500);
    EXPECT_EQ(text_of(untagged), u"");
    free_chain(untagged);
    // An empty document: nothing to read on either side.
    for (int index = 1; index < kPerrTableSize; ++index) {
        xd_parse_info *record = run(index, u"", 5);
        EXPECT_EQ(text_of(record), u"") << index;
        EXPECT_NE(record->code, 0) << index;
        free_chain(record);
    }
}

TEST_F(PerrHandlerTest, UndeclaredEntityElsewhereIsAPlainException)
{
    struct Case {
        std::u16string text;
        int32_t position;
        std::u16string expected;
    };
    const Case cases[] = {
        {u"&foo;", 0, u""},
        {u"", 3, u""},
    };
    for (const Case &c : cases) {
        xd_parse_info *record = run(37, c.text, c.position);
        EXPECT_TRUE(event_is(record, "EXCEPTION"));
        EXPECT_EQ(record->code, 201);
        EXPECT_EQ(record->next, nullptr);
        EXPECT_EQ(text_of(record), c.expected);
        free_chain(record);
    }
}

TEST_F(PerrHandlerTest, ReferenceWithoutAmpersandHasAnEmptyName)
{
    // Only a synthetic text can lack the "&": the name is then empty.
    xd_parse_info *record = run(37, u"<a>foo;x", 7);
    EXPECT_TRUE(event_is(record, "UNKNOWN-REFERENCE-IN-CONTENT"));
    EXPECT_EQ(text_of(record), u"");
    free_chain(record);
}

TEST_F(PerrHandlerTest, HandlersThatLookAtTheLastEvent)
{
    kvt_xe_xmlparse_delete_info(last);
    last = new_event("VERSION-INFORMATION");
    xd_parse_info *record = run(16, u"<?xml version='1' ", 18);
    EXPECT_EQ(record->code, 101);
    free_chain(record);
    // No record before the exception at all.
    record = new_event("EXCEPTION");
    const std::u16string text = u"<?xml version='1' ";
    xml_perr_op_table[16](record, text.data(), static_cast<uint32_t>(text.size()), 18, 1, handler);
    EXPECT_EQ(record->code, 103);
    free_chain(record);
}

} // namespace
