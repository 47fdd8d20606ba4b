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
// The character table
// ---------------------------------------------------------------------------

TEST(XmlCharTable, BoundariesOfTheCharacterSet)
{
    struct Case {
        char16_t unit;
        bool xml;
    };
    const Case cases[] = {
        {0x0000, false}, {0x0008, false}, {0x0009, true},  {0x000A, true},  {0x000B, false},
        {0x000C, false}, {0x000D, true},  {0x001F, false}, {0x0020, true},  {0xD7FF, true},
        {0xD800, false}, {0xDFFF, false}, {0xE000, true},  {0xFFFD, true},  {0xFFFE, false},
        {0xFFFF, false},
    };
    for (const Case &c : cases)
        EXPECT_EQ(is_xml_char(c.unit), c.xml) << std::hex << static_cast<unsigned>(c.unit);
}

TEST(XmlCharTable, HoldsExactlyTheCharacterSet)
{
    size_t flagged = 0;
    for (uint8_t flags : kXmlCharFlags)
        flagged += (flags & kXmlCharFlag) != 0;
    EXPECT_EQ(flagged, 3u + (0xD7FFu - 0x20u + 1u) + (0xFFFDu - 0xE000u + 1u));
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
        {"blank rest", rest_is_blank, u"<a> \n\t", 3, true},
        {"CR is not blank", rest_is_blank, u"<a> \r", 3, false},
        {"blank rest past the end", rest_is_blank, u"<a>x", 9, true},
        {"blank rest of empty text", rest_is_blank, u"", 0, true},
        {"inside tag", inside_tag, u"<a b", 3, true},
        {"inside end tag", inside_tag, u"<a></a", 5, true},
        {"after tag", inside_tag, u"<a>x", 3, false},
        {"PI start passed over", inside_tag, u"<?p x", 4, false},
        {"declaration passed over to a tag", inside_tag, u"<a <!x", 5, true},
        {"tag past the end", inside_tag, u"<a b", 40, true},
        {"tag before the beginning", inside_tag, u"<a b", -3, false},
        {"tag in empty text", inside_tag, u"", 0, false},
        {"inside comment", inside_comment, u"<!-- x", 5, true},
        {"comment closed", inside_comment, u"<!-- x -->y", 10, false},
        {"comment closing after i", inside_comment, u"<!--x-->", 4, true},
        {"no comment", inside_comment, u"<a>", 2, false},
        {"inside PI", inside_pi, u"<?p x", 4, true},
        {"PI closing after i", inside_pi, u"<?p x?>", 5, true},
        {"PI closed", inside_pi, u"<?p?>x", 5, false},
        {"in content", in_content, u"<a>xy", 4, true},
        {"content in comment", in_content, u"<a><!-- >x", 9, false},
        {"not content in tag", in_content, u"<a>x<b", 5, false},
        {"no content before anything", in_content, u"xy", 1, false},
        {"attribute value open", in_attribute_value, u"<a b=\"x", 6, true},
        {"attribute value closed", in_attribute_value, u"<a b=\"x\"", 7, false},
        {"apostrophes count", in_attribute_value, u"<a b='x", 6, true},
        {"second value open", in_attribute_value, u"<a b='x' c=\"y", 12, true},
        {"no tag for a value", in_attribute_value, u"b=\"x", 3, false},
        {"first tag", first_tag, u"<?xml?><!--c--><a", 16, true},
        {"second tag", first_tag, u"<a><b", 4, false},
        {"no tag", first_tag, u"<!DOCTYPE", 4, false},
        {"slash in tag", slash_in_tag, u"<a></ b", 6, true},
        {"slash in earlier tag", slash_in_tag, u"<a/><b", 5, false},
        {"no slash", slash_in_tag, u"abc", 2, false},
        {"no equals", no_equals_in_tag, u"<a b=\"1\" <c", 10, true},
        {"equals", no_equals_in_tag, u"<a b=", 4, false},
        {"no equals at the beginning", no_equals_in_tag, u"ab", 1, true},
        {"reference to a tag", reference_unterminated, u"&lt</a>", 0, true},
        {"reference to a quote", reference_unterminated, u"&lt\";", 0, true},
        {"reference to the end", reference_unterminated, u"&lt", 0, true},
        {"reference terminated", reference_unterminated, u"&l t;<", 0, false},
        {"apostrophe does not end a reference", reference_unterminated, u"&l';", 0, false},
    };
    for (const TextCase &c : cases)
        EXPECT_EQ(c.holds(view(c.text), c.at), c.expected) << c.test;
}

TEST(PerrText, CharacterAtThePosition)
{
    const std::u16string text = u"a\x01";
    EXPECT_TRUE(xml_char_at(view(text), 0));
    EXPECT_FALSE(xml_char_at(view(text), 1));
    // The end of the text is no bad character.
    EXPECT_TRUE(xml_char_at(view(text), 2));
    EXPECT_TRUE(xml_char_at(view(text), 100));
    EXPECT_FALSE(xml_char_at(view(text), -1));
}

TEST(PerrText, SearchesStayInsideTheText)
{
    const std::u16string text = u"<a>&b;";
    EXPECT_EQ(last_at_or_before(view(text), 100, u'&'), 3);
    EXPECT_EQ(last_at_or_before(view(text), 2, u'&'), kNotFound);
    EXPECT_EQ(last_at_or_before(view(text), -5, u'<'), kNotFound);
    EXPECT_EQ(first_occurrence(view(text), u"b;"), 4);
    EXPECT_EQ(first_occurrence(view(text), u";x"), kNotFound);
    EXPECT_FALSE(begins_with_at(view(text), 5, u";;"));
    EXPECT_FALSE(begins_with_at(view(text), -1, u"<"));
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
    const char *encoding = "ENCODING-DECLARATION";
    const char *standalone = "STANDALONE-DECLARATION";
    const CodeCase cases[] = {
        {"InvalidDocumentStructure", InvalidDocumentStructureCode, u"x<a/>", 0, nullptr, 102},
        {"InvalidDocumentStructure", InvalidDocumentStructureCode, u"\x01<a/>", 0, nullptr, 1},
        {"InvalidDocumentStructure", InvalidDocumentStructureCode, u"  ", 2, nullptr, 102},
        {"ExpectedCommentOrPI", ExpectedCommentOrPICode, u"<a/>\x02", 4, nullptr, 1},
        {"ExpectedCommentOrPI", ExpectedCommentOrPICode, u"<a/>< \n", 4, nullptr, 2},
        {"ExpectedCommentOrPI", ExpectedCommentOrPICode, u"<a/><!DOCTYPE a>", 4, nullptr, 159},
        {"ExpectedCommentOrPI", ExpectedCommentOrPICode, u"<a/><b/>", 4, nullptr, 160},
        {"ExpectedCommentOrPI", ExpectedCommentOrPICode, u"<a/>x", 4, nullptr, 2},
        {"InvalidCharacter", InvalidCharacterCode, u"<!-- \x01 x", 6, nullptr, 9},
        {"InvalidCharacter", InvalidCharacterCode, u"<?p \x01 x", 5, nullptr, 11},
        {"InvalidCharacter", InvalidCharacterCode, u"<a>\x01 x", 4, nullptr, 6},
        {"InvalidCharacter", InvalidCharacterCode, u"<a>\x01</a>", 4, nullptr, 126},
        {"InvalidCharacter", InvalidCharacterCode, u"<![CDATA[\x01 x", 10, nullptr, 201},
        {"UnterminatedCharRef", UnterminatedCharRefCode, u"<a b=\"&#65\"", 10, nullptr, 111},
        {"UnterminatedCharRef", UnterminatedCharRefCode, u"<a>&#65</a>", 7, nullptr, 120},
        {"UnterminatedCharRef", UnterminatedCharRefCode, u"<!E \"&#65\"", 9, nullptr, 201},
        {"UnterminatedCharRef", UnterminatedCharRefCode, u"<a>&#x41 x;", 8, nullptr, 13},
        {"UnterminatedCharRef", UnterminatedCharRefCode, u"<a>&#65 x;", 7, nullptr, 14},
        {"UnterminatedCharRef", UnterminatedCharRefCode, u"<a>&a x;", 5, nullptr, 201},
        {"UnterminatedCharRef", UnterminatedCharRefCode, u"<a>#65", 5, nullptr, 201},
        {"ExpectedNumericalCharRef", ExpectedNumericalCharRefCode, u"<a>&#xZ;", 6, nullptr, 13},
        {"ExpectedNumericalCharRef", ExpectedNumericalCharRefCode, u"<a>&#Z;", 5, nullptr, 14},
        {"ExpectedNumericalCharRef", ExpectedNumericalCharRefCode, u"<a>&Z;", 4, nullptr, 201},
        {"ExpectedNumericalCharRef", ExpectedNumericalCharRefCode, u"<a>Z;", 4, nullptr, 201},
        {"BadXMLEncoding", BadXMLEncodingCode, u"<?xml encoding='1x'?>", 18, nullptr, 15},
        {"BadXMLEncoding", BadXMLEncodingCode, u"<?xml encoding=\"a b\"?>", 18, nullptr, 201},
        {"BadXMLEncoding", BadXMLEncodingCode, u"<?xml encoding=\"", 15, nullptr, 201},
        {"BadXMLEncoding", BadXMLEncodingCode, u"<?xml x=\"1\"?>", 10, nullptr, 201},
        {"UnterminatedEntityRef", UnterminatedEntityRefCode, u"<a>&lt</a>", 6, nullptr, 201},
        {"UnterminatedEntityRef", UnterminatedEntityRefCode, u"<a>&l\x01t</a>", 5, nullptr, 17},
        {"UnterminatedEntityRef", UnterminatedEntityRefCode, u"<a b=\"&lt", 9, nullptr, 111},
        {"UnterminatedEntityRef", UnterminatedEntityRefCode, u"<a>&lt \n", 6, nullptr, 120},
        {"UnterminatedEntityRef", UnterminatedEntityRefCode, u"<!E \"&lt", 8, nullptr, 201},
        {"UnterminatedEntityRef", UnterminatedEntityRefCode, u"<a>&lt\x01;</a>", 6, nullptr, 17},
        {"UnterminatedEntityRef", UnterminatedEntityRefCode, u"<a>&lt x;</a>", 6, nullptr, 201},
        {"UnterminatedEntityRef", UnterminatedEntityRefCode, u"<a>lt x", 6, nullptr, 201},
        {"ExpectedDeclString", ExpectedDeclStringCode, u"<?xml x ", 8, nullptr, 103},
        {"ExpectedDeclString", ExpectedDeclStringCode, u"<?xml version='1' ", 18, version, 101},
        {"ExpectedDeclString", ExpectedDeclStringCode, u"<?xml version='1' x?>", 18, version, 147},
        {"ExpectedDeclString", ExpectedDeclStringCode, u"<?xml version='1' encoding='a' x?>", 31, encoding, 152},
        {"ExpectedDeclString", ExpectedDeclStringCode, u"<?xml x?>", 6, nullptr, 158},
        {"ExpectedQuotedString", ExpectedQuotedStringCode, u"<?xml version=", 14, nullptr, 104},
        {"ExpectedQuotedString", ExpectedQuotedStringCode, u"<?xml version='1' encoding=", 27, nullptr, 106},
        {"ExpectedQuotedString", ExpectedQuotedStringCode, u"<?xml version='1' standalone=", 29, nullptr, 108},
        {"ExpectedQuotedString", ExpectedQuotedStringCode, u"<!DOCTYPE a SYSTEM ", 19, nullptr, 201},
        {"ExpectedQuotedString", ExpectedQuotedStringCode, u"<?xml version='1' standalone=x?>", 29, nullptr, 154},
        {"ExpectedQuotedString", ExpectedQuotedStringCode, u"<?xml version='1' encoding=x?>", 27, nullptr, 149},
        {"ExpectedQuotedString", ExpectedQuotedStringCode, u"<?xml version=x?>", 14, nullptr, 144},
        {"ExpectedQuotedString", ExpectedQuotedStringCode, u"<!DOCTYPE a SYSTEM x>", 19, nullptr, 201},
        {"ExpectedEqSign", ExpectedEqSignCode, u"<a b\x01", 4, nullptr, 131},
        {"ExpectedEqSign", ExpectedEqSignCode, u"<a b", 4, nullptr, 109},
        {"ExpectedEqSign", ExpectedEqSignCode, u"<a b/>", 4, nullptr, 127},
        {"ExpectedEqSign", ExpectedEqSignCode, u"<?xml version", 13, nullptr, 104},
        {"ExpectedEqSign", ExpectedEqSignCode, u"<?xml version ?>", 14, nullptr, 143},
        {"ExpectedEqSign", ExpectedEqSignCode, u"<?xml version='1' encoding", 26, version, 106},
        {"ExpectedEqSign", ExpectedEqSignCode, u"<?xml version='1' encoding ?>", 27, version, 148},
        {"ExpectedEqSign", ExpectedEqSignCode, u"<?xml version='1' standalone", 28, version, 108},
        {"ExpectedEqSign", ExpectedEqSignCode, u"<?xml version='1' standalone ?>", 29, version, 153},
        {"ExpectedEqSign", ExpectedEqSignCode, u"<?xml version='1' standalone ?>", 29, standalone, 201},
        {"ExpectedEqSign", ExpectedEqSignCode, u"<?xml x ?>", 7, nullptr, 201},
        {"ExpectedAttrValue", code_if_rest_blank<110, 128>, u"<a b= ", 6, nullptr, 110},
        {"ExpectedAttrValue", code_if_rest_blank<110, 128>, u"<a b=1/>", 5, nullptr, 128},
        {"UnterminatedStartTag", UnterminatedStartTagCode, u"<a/ ", 3, nullptr, 112},
        {"UnterminatedStartTag", UnterminatedStartTagCode, u"<a/b>", 3, nullptr, 132},
        {"UnterminatedStartTag", UnterminatedStartTagCode, u"<a b>", 3, nullptr, 201},
        {"UnterminatedStartTag", UnterminatedStartTagCode, u"/", 0, nullptr, 201},
        {"UnterminatedPI", UnterminatedPICode, u"<?p x y", 6, nullptr, 140},
        {"UnterminatedPI", UnterminatedPICode, u"<?p x\x01", 5, nullptr, 139},
        {"UnterminatedPI", UnterminatedPICode, u"<?p x <a/>", 10, nullptr, 140},
        {"UnterminatedPI", UnterminatedPICode, u"<?p x='<' \"'<\"", 14, nullptr, 116},
        {"UnterminatedPI", UnterminatedPICode, u"<?p x", 5, nullptr, 116},
        {"UnterminatedPI", UnterminatedPICode, u"p x <", 5, nullptr, 140},
        {"ExpectedElementName", ExpectedElementNameCode, u"<>", 1, nullptr, 124},
        {"ExpectedElementName", ExpectedElementNameCode, u"<a></ >", 5, nullptr, 133},
        {"ExpectedElementName", ExpectedElementNameCode, u"<a>< b/>", 4, nullptr, 135},
        {"ExpectedAttrName", ExpectedAttrNameCode, u"<a \x01/>", 3, nullptr, 125},
        {"ExpectedAttrName", ExpectedAttrNameCode, u"<a b='1' ='2'/>", 9, nullptr, 130},
        {"ExpectedEntityRefName", ExpectedEntityRefNameCode, u"<a>& x;", 4, nullptr, 201},
        {"ExpectedEntityRefName", ExpectedEntityRefNameCode, u"<a>&\x01;", 4, nullptr, 141},
        {"ExpectedWhitespace", ExpectedWhitespaceCode, u"<?xml version='1' encoding='a' standalone='no'", 46, nullptr, 157},
        {"ExpectedWhitespace", ExpectedWhitespaceCode, u"<?xml version='1' encoding='a'standalone='no'", 30, nullptr, 151},
        {"ExpectedWhitespace", ExpectedWhitespaceCode, u"<?xml version='1'encoding='a'", 17, nullptr, 146},
        {"ExpectedWhitespace", ExpectedWhitespaceCode, u"<a b='1'c='2'/>", 8, nullptr, 201},
        {"UnexpectedEOFException", UnexpectedEOFExceptionCode, u"<a b='1", 7, nullptr, 110},
        {"UnexpectedEOFException", UnexpectedEOFExceptionCode, u"<a", 2, nullptr, 113},
        {"UnexpectedEOFException", UnexpectedEOFExceptionCode, u"<a><b", 5, nullptr, 114},
        {"UnexpectedEOFException", UnexpectedEOFExceptionCode, u"<!DOCTYPE a SYSTEM \"x", 21, nullptr, 201},
        {"EmptyMainEntity", code_if_rest_blank<102>, u" \n", 0, nullptr, 102},
        {"EmptyMainEntity", code_if_rest_blank<102>, u" x", 0, nullptr, 201},
        {"EndedWithTagsOnStack", code_if_rest_blank<115>, u"<a>", 3, nullptr, 115},
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

TEST(PerrIndex, ByErrorNameAndDomain)
{
    struct Case {
        unsigned code;
        const XMLCh *domain;
        int expected;
    };
    const XMLCh *xml = XMLUni::fgXMLErrDomain;
    const XMLCh *except = XMLUni::fgExceptDomain;
    const Case cases[] = {
        {XMLErrs::ContradictoryEncoding, xml, kPerrSuppressWarning},
        {XMLErrs::InvalidDocumentStructure, xml, 1},
        {XMLErrs::ExpectedCommentOrPI, xml, 2},
        {XMLErrs::ExpectedEndOfTagX, xml, 5},
        {XMLErrs::EmptyMainEntity, xml, 17},
        {XMLErrs::ExpectedEqSign, xml, 19},
        {XMLErrs::ExpectedAttrName, xml, 28},
        {XMLErrs::InvalidAttrName, xml, 28},
        {XMLErrs::ExpectedElementName, xml, 27},
        {XMLErrs::InvalidElementName, xml, 27},
        {XMLErrs::ExpectedEntityRefName, xml, 31},
        {XMLErrs::InvalidEntityRefName, xml, 31},
        {XMLErrs::EntityNotFound, xml, 37},
        {XMLExcepts::Gen_UnexpectedEOF, except, 38},
        {XMLExcepts::Trans_CantCreateCvtrFor, except, 39},
        // Errors no handler classifies.
        {XMLErrs::XMLDeclMustBeFirst, xml, 0},
        {XMLErrs::NotValidAfterContent, xml, 0},
        {XMLErrs::ExpectedCommentOrCDATA, xml, 0},
        {XMLErrs::UnknownPrefix, xml, 0},
        {XMLErrs::EntityExpansionLimitExceeded, xml, 0},
        {XMLExcepts::UTF8_FormatError, except, 0},
        // The number spaces overlap: a code means nothing without its domain.
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
                                 1, *handler);
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

TEST_F(PerrHandlerTest, PlainHandlersGiveTheirCodeAndTheTextThroughThePosition)
{
    struct Case {
        int index;
        int32_t code;
    };
    const Case plain[] = {
        {5, 5},    {7, 8},    {8, 10},   {9, 12},   {13, 16},  {15, 18},  {29, 134},
        {30, 138}, {32, 142}, {33, 145}, {35, 155}, {36, 158}, {39, 150},
    };
    const std::u16string text = u"<a>some text</a>";
    for (const Case &c : plain) {
        xd_parse_info *record = run(c.index, text, 6);
        EXPECT_EQ(record->code, c.code) << c.index;
        EXPECT_EQ(text_of(record), u"<a>some") << c.index;
        EXPECT_EQ(record->next, nullptr);
        EXPECT_TRUE(event_is(record, "EXCEPTION"));
        free_chain(record);
    }
}

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
    // An empty document: nothing to read on either side.
    for (int index = 1; index < kPerrTableSize; ++index) {
        xd_parse_info *record = run(index, u"", 5);
        EXPECT_EQ(text_of(record), u"") << index;
        EXPECT_NE(record->code, 0) << index;
        free_chain(record);
    }
}

TEST_F(PerrHandlerTest, DuplicateAttributeTextEndsAtThePreviousTag)
{
    struct Case {
        int index;
        std::u16string text;
        int32_t position;
        std::u16string expected;
    };
    const Case cases[] = {
        {3, u"<a b='1' b='2'/>", 16, u""},
        {3, u"<r>\n<a b='1' b='2'/>", 20, u"<r>"},
        {3, u"<r><a b='1' b='2'/><x/>", 19, u"<r>"},
        {4, u"<a b='<'/>", 10, u""},
        {4, u"<r><a b='<'/>", 13, u"<r>"},
        {3, u"no tag", 500, u""},
    };
    for (const Case &c : cases) {
        xd_parse_info *record = run(c.index, c.text, c.position);
        EXPECT_EQ(record->code, c.index == 3 ? 3 : 4);
        EXPECT_EQ(text_of(record), c.expected) << std::string(c.text.begin(), c.text.end());
        free_chain(record);
    }
}

TEST_F(PerrHandlerTest, UndeclaredEntityInContentGivesAReferenceEventThenAnException)
{
    const std::u16string text = u"<a>x&foo;</a>";
    xd_parse_info *record = run(37, text, 9);
    EXPECT_TRUE(event_is(record, "UNKNOWN-REFERENCE-IN-CONTENT"));
    EXPECT_EQ(record->code, 0);
    EXPECT_EQ(text_of(record), u"foo");
    xd_parse_info *exception = record->next;
    ASSERT_NE(exception, nullptr);
    EXPECT_EQ(exception->prev, record);
    EXPECT_EQ(exception->next, nullptr);
    EXPECT_TRUE(event_is(exception, "EXCEPTION"));
    EXPECT_EQ(exception->code, 161);
    ASSERT_NE(exception->text, nullptr);
    EXPECT_EQ(text_of(exception), u"");
    free_chain(record);
}

TEST_F(PerrHandlerTest, UndeclaredEntityInAnAttributeValue)
{
    xd_parse_info *record = run(37, u"<a b='&e;'/>", 9);
    EXPECT_TRUE(event_is(record, "UNKNOWN-REFERENCE-IN-ATTRIBUTE"));
    EXPECT_EQ(text_of(record), u"e");
    ASSERT_NE(record->next, nullptr);
    EXPECT_EQ(record->next->code, 162);
    free_chain(record);
}

TEST_F(PerrHandlerTest, UndeclaredEntityElsewhereIsAPlainException)
{
    struct Case {
        std::u16string text;
        int32_t position;
        std::u16string expected;
    };
    const Case cases[] = {
        {u"<!A a b CDATA \"&foo;\">", 20, u"<!A a b CDATA \"&foo;"},
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
    xml_perr_op_table[16](record, text.data(), static_cast<uint32_t>(text.size()), 18, 1, *handler);
    EXPECT_EQ(record->code, 103);
    free_chain(record);
}

} // namespace
