// Malformed documents end to end: through the XML PARSE entry (event mode)
// and through the tree-mode parse start, for every classified parser error.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include <xercesc/framework/XMLErrorCodes.hpp>

#include "cblxml.h"
#include "parse_events.h"

using namespace std::string_literals;
using cblxml_test::Event;
using cblxml_test::parse_events;

namespace {

struct MalformedCase {
    int index;           // the error-op table slot the parser's error maps to
    std::string document;
    int32_t code;        // XML-CODE of the final "EXCEPTION"
    std::string text;    // its text: the document through the error
};

// One or more documents for every slot and for every branch of a text-
// dependent rule that the parser can reach. Slot 17 (an empty main entity)
// has none: the parser reports a document without a root element under
// slot 1's error, whose code at the end of the text is the same (102).
// Texts are C strings: a NUL in the document ends the delivered text.
const std::vector<MalformedCase> &malformed_cases()
{
    static const std::vector<MalformedCase> cases = {
        {1, "  "s, 102, "  "s},
        {1, "<!-- c -->"s, 102, "<!-- c -->"s},
        {1, "x<a/>"s, 102, "x"s},
        {1, "\x01" "<a/>"s, 1, "\x01" ""s},
        {2, "<a/><b/>"s, 160, "<a/><"s},
        {2, "<a/>x"s, 2, "<a/>x"s},
        {2, "<a/><"s, 2, "<a/><"s},
        {2, "<a/><!DOCTYPE a>"s, 159, "<a/><"s},
        {2, "<a/>\x01" ""s, 1, "<a/>\x01" ""s},
        {3, "<a b=\"1\" b=\"2\"/>"s, 3, ""s},
        {3, "<?xml version=\"1.0\"?>\n<a b=\"1\" b=\"2\"/>"s, 3, "<?xml version=\"1.0\"?>"s},
        {4, "<a b=\"1\" c=\"<\"/>"s, 4, ""s},
        {4, "<r><a b=\"1\" c=\"<\"/></r>"s, 4, "<r>"s},
        {5, "<a></b>"s, 5, "<a></b"s},
        {6, "<a>\x01" " x</a>"s, 6, "<a>\x01" " "s},
        {6, "<!-- \x01" " x --><a/>"s, 9, "<!-- \x01" " "s},
        {6, "<?pi \x01" " x?><a/>"s, 11, "<?pi \x01" " "s},
        {6, "<a>\x01" "</a>"s, 126, "<a>\x01" "<"s},
        {6, "<a><![CDATA[ x \x01" " y"s, 201, "<a><![CDATA[ x \x01" " "s},
        {7, "<a>]]></a>"s, 8, "<a>]]><"s},
        {8, "<!-- a -- b --><a/>"s, 10, "<!-- a -- b"s},
        {9, "<a><?xml x?></a>"s, 12, "<a><?xml "s},
        {10, "<a>&#65</a>"s, 120, "<a>&#65<"s},
        {10, "<a b=\"&#65\"/>"s, 111, "<a b=\"&#65\""s},
        {10, "<!DOCTYPE a [<!ENTITY e \"&#65\">]><a/>"s, 201, "<!DOCTYPE a [<!ENTITY e \"&#65\""s},
        {10, "<a>&#65 x;</a>"s, 14, "<a>&#65 "s},
        {10, "<a>&#x41 x;</a>"s, 13, "<a>&#x41 "s},
        {11, "<a>&#xZZ;</a>"s, 13, "<a>&#xZ"s},
        {11, "<a>&#Z;</a>"s, 14, "<a>&#Z"s},
        {12, "<?xml version=\"1.0\" encoding=\"1abc\"?><a/>"s, 15, "<?xml version=\"1.0\" encoding=\"1abc\"?"s},
        {12, "<?xml version=\"1.0\" encoding=\"a b\"?><a/>"s, 201, "<?xml version=\"1.0\" encoding=\"a b\"?"s},
        {13, "<a>&#1;</a>"s, 16, "<a>&#1;<"s},
        {14, "<a>&lt</a>"s, 201, "<a>&lt<"s},
        {14, "<a>&l\x01" "t;</a>"s, 17, "<a>&l\x01" ""s},
        {14, "<a>&lt"s, 120, "<a>&lt"s},
        {14, "<a b=\"&lt"s, 111, "<a b=\"&lt"s},
        {14, "<!DOCTYPE a [<!ENTITY e \"&lt"s, 201, "<!DOCTYPE a [<!ENTITY e \"&lt"s},
        {14, "<a>&lt\x01" ";</a>"s, 17, "<a>&lt\x01" ""s},
        {14, "<a>&lt x;</a>"s, 201, "<a>&lt "s},
        {15, "<a b=\"\x01" "\"/>"s, 18, "<a b=\"\x01" "\""s},
        {16, "<?xml version=\"1.0\"  "s, 103, "<?xml version=\"1.0\"  "s},
        {16, "<?xml version=\"1.0\" x=\"y\"?><a/>"s, 147, "<?xml version=\"1.0\" x="s},
        {16, "<?xml version=\"1.0\" encoding=\"UTF-8\" x ?><a/>"s, 152, "<?xml version=\"1.0\" encoding=\"UTF-8\" x "s},
        {16, "<?xml foo ?><a/>"s, 158, "<?xml foo "s},
        {18, "<?xml version="s, 104, "<?xml version="s},
        {18, "<?xml version=\"1.0\" encoding="s, 106, "<?xml version=\"1.0\" encoding="s},
        {18, "<?xml version=\"1.0\" standalone="s, 108, "<?xml version=\"1.0\" standalone="s},
        {18, "<!DOCTYPE a SYSTEM "s, 201, "<!DOCTYPE a SYSTEM "s},
        {18, "<?xml version=\"1.0\" standalone=?><a/>"s, 154, "<?xml version=\"1.0\" standalone=?"s},
        {18, "<?xml version=\"1.0\" encoding=?><a/>"s, 149, "<?xml version=\"1.0\" encoding=?"s},
        {18, "<?xml version=?><a/>"s, 144, "<?xml version=?"s},
        {18, "<!DOCTYPE a SYSTEM x>"s, 201, "<!DOCTYPE a SYSTEM x"s},
        {19, "<a b\x01" "=\"1\"/>"s, 131, "<a b\x01" ""s},
        {19, "<a b"s, 109, "<a b"s},
        {19, "<a b/>"s, 127, "<a b/"s},
        {19, "<?xml version"s, 104, "<?xml version"s},
        {19, "<?xml version  ?><a/>"s, 143, "<?xml version  ?"s},
        {19, "<?xml version=\"1.0\" encoding"s, 106, "<?xml version=\"1.0\" encoding"s},
        {19, "<?xml version=\"1.0\" encoding  ?><a/>"s, 148, "<?xml version=\"1.0\" encoding  ?"s},
        {19, "<?xml version=\"1.0\" standalone"s, 108, "<?xml version=\"1.0\" standalone"s},
        {19, "<?xml version=\"1.0\" standalone  ?><a/>"s, 153, "<?xml version=\"1.0\" standalone  ?"s},
        {20, "<a b= "s, 110, "<a b= "s},
        {20, "<a b=1/>"s, 128, "<a b=1"s},
        {21, "<a/"s, 112, "<a/"s},
        {21, "<a/b>"s, 132, "<a/b"s},
        {22, "<a>"s, 115, "<a>"s},
        {22, "<a><b></b>"s, 115, "<a><b></b>"s},
        {23, "<?pi x <a/>"s, 140, "<?pi x <a/>"s},
        {23, "<?pi x"s, 116, "<?pi x"s},
        {23, "<?pi x y=\"<\" "s, 116, "<?pi x y=\"<\" "s},
        {23, "<?pi x\x00" " y"s, 140, "<?pi x"s},
        {23, "<?pi x\x00" "\x01" ""s, 139, "<?pi x"s},
        {24, "<!-- x  "s, 118, "<!-- x  "s},
        {24, "<!-- x \x00" " y"s, 201, "<!-- x "s},
        {25, "<a><![CDATA[ x  "s, 119, "<a><![CDATA[ x  "s},
        {25, "<a><![CDATA[ x \x00" " y"s, 201, "<a><![CDATA[ x "s},
        {26, "<a><![CDATA"s, 119, "<a><![CDATA"s},
        {26, "<a><![CDATA x]]></a>"s, 201, "<a><![CDATA "s},
        {27, "<>"s, 124, "<>"s},
        {27, "<a:/>"s, 124, "<a:/"s},
        {27, "<a>< b/></a>"s, 135, "<a>< "s},
        {28, "<a\x01" "/>"s, 125, "<a\x01" ""s},
        {28, "<a b=\"1\" =\"2\"/>"s, 130, "<a b=\"1\" ="s},
        {28, "<a b:=\"1\"/>"s, 130, "<a b:="s},
        {29, "<a></a x>"s, 134, "<a></a x"s},
        {30, "<? x?><a/>"s, 138, "<? "s},
        {31, "<a>& x;</a>"s, 201, "<a>& "s},
        {31, "<a>&a:;</a>"s, 201, "<a>&a:;"s},
        {31, "<a>&\x01" ";</a>"s, 141, "<a>&\x01" ""s},
        {32, "<?xml encoding=\"UTF-8\"?><a/>"s, 142, "<?xml encoding=\"UTF-8\"?"s},
        {33, "<?xml version=\"2.0\"?><a/>"s, 145, "<?xml version=\"2.0\"?"s},
        {34, "<?xml version=\"1.0\"encoding=\"UTF-8\"?><a/>"s, 146, "<?xml version=\"1.0\"e"s},
        {34, "<?xml version=\"1.0\" encoding=\"UTF-8\"standalone=\"yes\"?><a/>"s, 151, "<?xml version=\"1.0\" encoding=\"UTF-8\"s"s},
        {34, "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\""s, 157, "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\""s},
        {34, "<a b=\"1\""s, 201, "<a b=\"1\""s},
        {35, "<?xml version=\"1.0\" standalone=\"maybe\"?><a/>"s, 155, "<?xml version=\"1.0\" standalone=\"maybe\"?"s},
        {36, "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?"s, 158, "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?"s},
        {38, "<a b=\"1"s, 110, "<a b=\"1"s},
        {38, "<a"s, 113, "<a"s},
        {38, "<a><b"s, 114, "<a><b"s},
        {38, "<!DOCTYPE a SYSTEM \"x"s, 201, "<!DOCTYPE a SYSTEM \"x"s},
        {39, "<?xml version=\"1.0\" encoding=\"FOOBAR\"?><a/>"s, 150, "<?xml version=\"1.0\" encoding=\"FOOBAR\"?><"s},
    };
    return cases;
}

bool has_end_of_document(const std::vector<Event> &events)
{
    for (const Event &e : events) {
        if (e.name == "END-OF-DOCUMENT")
            return true;
    }
    return false;
}

TEST(MalformedTest, EverySlotGivesItsCodeAndText)
{
    std::set<int> slots;
    for (const MalformedCase &c : malformed_cases()) {
        const std::vector<Event> events = parse_events(c.document);
        ASSERT_FALSE(events.empty());
        const Event &last = events.back();
        EXPECT_EQ(last.name, "EXCEPTION") << c.document;
        EXPECT_EQ(last.code, c.code) << "slot " << c.index << ": " << c.document;
        EXPECT_EQ(last.text.size(), c.text.size()) << "slot " << c.index << ": " << c.document;
        EXPECT_EQ(last.text, c.text) << "slot " << c.index << ": " << c.document;
        EXPECT_FALSE(has_end_of_document(events)) << c.document;
        slots.insert(c.index);
    }
    for (int index = 1; index <= 39; ++index) {
        if (index != 17 && index != 37) {
            EXPECT_EQ(slots.count(index), 1u) << "no document for slot " << index;
        }
    }
}

TEST(MalformedTest, NationalTextsAreTheSameCharacters)
{
    // The same positions in a national parse: every unit two bytes.
    const char *documents[] = {"<a b=\"1\" b=\"2\"/>", "<a><b", "<!-- x  ", "<a>&lt</a>",
                               "<?xml version=\"1.0\" encoding=\"1abc\"?><a/>"};
    for (const char *document : documents) {
        const std::vector<Event> alpha = parse_events(document);
        const std::vector<Event> wide = parse_events(cblxml_test::national(document),
                                                     CBLXML_OPT_NATIONAL);
        ASSERT_FALSE(wide.empty());
        EXPECT_EQ(wide.back().code, alpha.back().code) << document;
        EXPECT_EQ(wide.back().text, cblxml_test::national(alpha.back().text)) << document;
    }
}

TEST(MalformedTest, LinesEndingInCrLfKeepThePosition)
{
    const std::vector<Event> events = parse_events("<r>\r\n<a b='1' b='2'/>\r\n</r>");
    ASSERT_FALSE(events.empty());
    EXPECT_EQ(events.back().code, 3);
    EXPECT_EQ(events.back().text, "<r>");

    const std::vector<Event> eof = parse_events("<r>\r\n<a\r\n b='1");
    EXPECT_EQ(eof.back().code, 110);
    EXPECT_EQ(eof.back().text, "<r>\r\n<a\r\n b='1");
}

TEST(MalformedTest, UndeclaredEntityInContent)
{
    const std::vector<Event> events = parse_events("<a>x&foo;</a>");
    ASSERT_GE(events.size(), 3u);
    const Event &reference = events[events.size() - 2];
    EXPECT_EQ(reference.name, "UNKNOWN-REFERENCE-IN-CONTENT");
    EXPECT_EQ(reference.code, 0);
    EXPECT_EQ(reference.text, "foo");
    EXPECT_EQ(events.back().name, "EXCEPTION");
    EXPECT_EQ(events.back().code, 161);
    EXPECT_EQ(events.back().text, "");
    EXPECT_FALSE(has_end_of_document(events));
}

TEST(MalformedTest, UndeclaredEntityInAnAttributeValue)
{
    const std::vector<Event> events = parse_events("<a b=\"x&name;\"/>");
    ASSERT_GE(events.size(), 3u);
    EXPECT_EQ(events[events.size() - 2].name, "UNKNOWN-REFERENCE-IN-ATTRIBUTE");
    EXPECT_EQ(events[events.size() - 2].text, "name");
    EXPECT_EQ(events.back().code, 162);
    EXPECT_EQ(events.back().text, "");
}

TEST(MalformedTest, UndeclaredEntityOutsideContentAndValues)
{
    // An attribute default in the internal subset: a plain exception whose
    // text stops before the position.
    const std::vector<Event> events =
        parse_events("<!DOCTYPE a [<!ATTLIST a b CDATA \"&foo;\">]><a/>");
    EXPECT_EQ(events.back().name, "EXCEPTION");
    EXPECT_EQ(events.back().code, 201);
    EXPECT_EQ(events.back().text, "<!DOCTYPE a [<!ATTLIST a b CDATA \"&foo;");
}

TEST(MalformedTest, UndeclaredEntityInsideAnotherEntityNamesTheOuterReference)
{
    const std::vector<Event> events =
        parse_events("<!DOCTYPE a [<!ENTITY e \"&foo;\">]><a>&e;</a>");
    ASSERT_GE(events.size(), 2u);
    EXPECT_EQ(events[events.size() - 2].name, "UNKNOWN-REFERENCE-IN-CONTENT");
    EXPECT_EQ(events[events.size() - 2].text, "e");
    EXPECT_EQ(events.back().code, 161);
}

struct GenericCase {
    const char *label;
    std::string document;
    std::string text;
};

TEST(MalformedTest, UnclassifiedFatalErrorsGiveTheGenericException)
{
    const GenericCase cases[] = {
        {"unknown prefix", "<a xmlns:p=\"u\"><q:b/></a>", "<a xmlns:p=\"u\"><q:b/><"},
        {"declaration after the root", "<a/><?xml version=\"1.0\"?><a/>", "<a/><?xml v"},
        {"declaration not first", " <?xml version=\"1.0\"?><a/>", " <?xml v"},
        {"markup declaration in content", "<a><!x</a>", "<a><!"},
        {"bad UTF-8", "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a>\xC3</a>",
         "<?xml version=\"1.0\" encoding=\"UTF-8\"?><"},
    };
    for (const GenericCase &c : cases) {
        const std::vector<Event> events = parse_events(c.document);
        ASSERT_FALSE(events.empty());
        EXPECT_EQ(events.back().name, "EXCEPTION") << c.label;
        EXPECT_EQ(events.back().code, 201) << c.label;
        EXPECT_EQ(events.back().text, c.text) << c.label;
        EXPECT_FALSE(has_end_of_document(events)) << c.label;
    }
}

TEST(MalformedTest, RecoverableErrorsGive201AndTheParseGoesOn)
{
    const std::vector<Event> events =
        parse_events("<!DOCTYPE a [<!ELEMENT a EMPTY>]><a>x</a>", CBLXML_OPT_VALIDATE);
    std::vector<Event> exceptions;
    for (const Event &e : events) {
        if (e.name == "EXCEPTION")
            exceptions.push_back(e);
    }
    ASSERT_EQ(exceptions.size(), 1u);
    EXPECT_EQ(exceptions[0].code, 201);
    EXPECT_EQ(exceptions[0].text, "<!DOCTYPE a [<!ELEMENT a EMPTY>]><a>x<");
    EXPECT_EQ(events.back().name, "END-OF-DOCUMENT");
}

TEST(MalformedTest, WarningsGive201ExceptContradictoryEncoding)
{
    const std::vector<Event> warned = parse_events(
        "<!DOCTYPE a [<!ELEMENT a EMPTY><!ATTLIST a x CDATA #IMPLIED>"
        "<!ATTLIST a x CDATA #IMPLIED>]><a/>",
        CBLXML_OPT_VALIDATE);
    int exceptions = 0;
    for (const Event &e : warned) {
        if (e.name == "EXCEPTION") {
            ++exceptions;
            EXPECT_EQ(e.code, 201);
        }
    }
    EXPECT_EQ(exceptions, 1);
    EXPECT_EQ(warned.back().name, "END-OF-DOCUMENT");

    // The parser notes that the declared encoding contradicts the bytes;
    // the program sees nothing of it.
    const std::vector<Event> contradicted =
        parse_events("<?xml version=\"1.0\" encoding=\"UTF-16\"?><a/>");
    for (const Event &e : contradicted)
        EXPECT_NE(e.name, "EXCEPTION");
    EXPECT_EQ(contradicted.back().name, "END-OF-DOCUMENT");
}

// ---------------------------------------------------------------------------
// Tree mode: the error record and the parse result
// ---------------------------------------------------------------------------

using cblxml_test::TreeParse;

struct TreeCase {
    const char *label;
    std::string document;
    int32_t result;
    unsigned errorCode;
    int32_t isXmlError;
    uint32_t line;
    uint32_t column;
    const char *message;  // the start of the parser's message
};

TEST(MalformedTreeTest, ErrorRecordAndResult)
{
    using xercesc::XMLErrs;
    const TreeCase cases[] = {
        {"text after the root", "<a/><b/>", 1, XMLErrs::ExpectedCommentOrPI, 1, 1, 5,
         "comment or processing instruction expected"},
        {"blank document", "  \n ", 2, XMLErrs::InvalidDocumentStructure, 1, 2, 2,
         "invalid document structure"},
        {"comment only", "<!-- c -->", 2, XMLErrs::InvalidDocumentStructure, 1, 1, 11,
         "invalid document structure"},
        {"duplicate attribute", "<r>\n<a b='1' b='2'/></r>", 3, XMLErrs::AttrAlreadyUsedInSTag,
         1, 2, 17, "attribute 'b' is already specified"},
        {"unterminated root", "<a>", 3, XMLErrs::EndedWithTagsOnStack, 1, 1, 4,
         "input ended before all started tags were ended"},
    };
    for (const TreeCase &c : cases) {
        TreeParse t(c.document);
        EXPECT_EQ(t.result, c.result) << c.label;
        EXPECT_EQ(t.record.errorCode, c.errorCode) << c.label;
        EXPECT_EQ(t.record.isXmlError, c.isXmlError) << c.label;
        EXPECT_EQ(t.record.line, c.line) << c.label;
        EXPECT_EQ(t.record.column, c.column) << c.label;
        EXPECT_EQ(t.message().rfind(c.message, 0), 0u) << c.label << ": " << t.message();
    }
}

TEST(MalformedTreeTest, ErrorsOutsideTheXmlDomainAreNotMarked)
{
    TreeParse t("<a b='1");
    EXPECT_EQ(t.result, 3);
    EXPECT_EQ(t.record.isXmlError, 0);
    EXPECT_EQ(t.message(), "unexpected end of input");
}

TEST(MalformedTreeTest, TheLatestErrorReplacesTheEarlierOne)
{
    // A validity error first (recoverable), then a fatal one.
    TreeParse t("<!DOCTYPE a [<!ELEMENT a EMPTY>]><a>x</a><b/>",
                CBLXML_OPT_TREE | CBLXML_OPT_VALIDATE);
    EXPECT_EQ(t.record.errorCode, unsigned{xercesc::XMLErrs::ExpectedCommentOrPI});
    EXPECT_EQ(t.record.isXmlError, 1);
    EXPECT_EQ(t.record.column, 42u);
    EXPECT_EQ(t.message(), "comment or processing instruction expected");
    EXPECT_EQ(t.result, 1);
}

TEST(MalformedTreeTest, ARecoverableErrorIsRecordedButNotMarked)
{
    TreeParse t("<!DOCTYPE a [<!ELEMENT a EMPTY>]><a>x</a>", CBLXML_OPT_TREE | CBLXML_OPT_VALIDATE);
    EXPECT_EQ(t.result, 3);
    EXPECT_EQ(t.record.isXmlError, 0);
    EXPECT_NE(t.record.errorCode, 0u);
    EXPECT_FALSE(t.message().empty());
}

// A stream that holds two documents is read one document at a time: the
// parse of the first stops where the second begins. The parser reports the
// second declaration as invalid content after the root element. A
// declaration that is misplaced before any root is an ordinary failure.
TEST(MalformedTreeTest, SecondDocumentAfterTheRootStopsEarly)
{
    TreeParse t("<?xml version=\"1.0\"?><a/>\n<?xml version=\"1.0\"?><b/>");
    EXPECT_EQ(t.record.errorCode, unsigned{xercesc::XMLErrs::NotValidAfterContent});
    EXPECT_EQ(t.result, 1);
    EXPECT_EQ(t.record.line, 2u);

    TreeParse early("<!--c--><?xml version=\"1.0\"?><a/>");
    EXPECT_EQ(early.record.errorCode, unsigned{xercesc::XMLErrs::XMLDeclMustBeFirst});
    EXPECT_EQ(early.result, 3);
}

TEST(MalformedTreeTest, NoErrorRecordIsFine)
{
    TreeParse t("<a/><b/>", CBLXML_OPT_TREE, false);
    EXPECT_EQ(t.result, 3);
    EXPECT_EQ(t.record.message, nullptr);
}

} // namespace
