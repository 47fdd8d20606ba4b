// Malformed documents end to end: through the XML PARSE entry (event mode)
// and through the tree-mode parse start, for every classified parser error.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include <xercesc/framework/XMLErrorCodes.hpp>
#include <xercesc/framework/XMLValidityCodes.hpp>
#include <xercesc/util/XMLExceptMsgs.hpp>

#include "cblxml.h"
#include "parse_events.h"

using namespace std::string_literals;
using cblxml_test::Event;
using cblxml_test::parse_events;

namespace {

struct MalformedCase {
    int index;  // the error-op table slot the parser's error maps to; 0 for none
    std::string document;
    int32_t code;             // XML-CODE of the final "EXCEPTION"
    std::string text;         // its text: the document through the error
    std::string before = {};  // "name|text" of the event before it, when that matters
};

// One or more documents for every slot and for every branch of a text-
// dependent rule that the parser can reach. Slot 17 (an empty main entity)
// has none: the parser reports a document without a root element under
// slot 1's error, whose code at the end of the text is the same (102).
// Texts are C strings: a NUL in the document ends the delivered text.
// Fatal errors that no slot classifies give the generic code 201.
const std::vector<MalformedCase> &malformed_cases()
{
    static const std::vector<MalformedCase> cases = {
        // clang-format off
        {1, "  "s, 102, "  "s},
        {1, "<!-- c -->"s, 102, "<!-- c -->"s},
        {1, "x<a/>"s, 102, "x"s},
        {1, "<!DOCTYPE r SYSTEM \"r.dtd\" []> x"s, 102, "<!DOCTYPE r SYSTEM \"r.dtd\" []> x"s, "DOCUMENT-TYPE-DECLARATION|<!DOCTYPE r SYSTEM \"r.dtd\" []>"s},
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
        // An undeclared entity: in content or a value the reference comes first; elsewhere a
        // plain exception; inside another entity the outer reference is named.
        {37, "<a>x&foo;</a>"s, 161, ""s, "UNKNOWN-REFERENCE-IN-CONTENT|foo"s},
        {37, "<a b=\"x&name;\"/>"s, 162, ""s, "UNKNOWN-REFERENCE-IN-ATTRIBUTE|name"s},
        {37, "<!DOCTYPE a [<!ATTLIST a b CDATA \"&foo;\">]><a/>"s, 201, "<!DOCTYPE a [<!ATTLIST a b CDATA \"&foo;"s},
        {37, "<!DOCTYPE a [<!ENTITY e \"&foo;\">]><a>&e;</a>"s, 161, ""s, "UNKNOWN-REFERENCE-IN-CONTENT|e"s},
        // A refused external entity: the text runs to the reference, so the program sees what
        // was refused; content before it is kept.
        {0, "<!DOCTYPE r [<!ENTITY e SYSTEM \"/etc/hostname\">]><r>a&e;b</r>"s, 201, "<!DOCTYPE r [<!ENTITY e SYSTEM \"/etc/hostname\">]><r>a&e;b"s, "CONTENT-CHARACTERS|a"s},
        // Lines that end in CR LF keep the position.
        {3, "<r>\r\n<a b='1' b='2'/>\r\n</r>"s, 3, "<r>"s},
        {38, "<r>\r\n<a\r\n b='1"s, 110, "<r>\r\n<a\r\n b='1"s},
        // Unknown prefix, misplaced declarations, markup declaration in content, bad UTF-8.
        {0, "<a xmlns:p=\"u\"><q:b/></a>"s, 201, "<a xmlns:p=\"u\"><q:b/><"s},
        {0, "<a/><?xml version=\"1.0\"?><a/>"s, 201, "<a/><?xml v"s},
        {0, " <?xml version=\"1.0\"?><a/>"s, 201, " <?xml v"s},
        {0, "<a><!x</a>"s, 201, "<a><!"s},
        {0, "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a>\xC3</a>"s, 201, "<?xml version=\"1.0\" encoding=\"UTF-8\"?><"s},
        // clang-format on
    };
    return cases;
}

using cblxml_test::TreeParse;

TEST(MalformedTest, EverySlotGivesItsCodeAndText)
{
    std::set<int> slots;
    for (const MalformedCase &c : malformed_cases()) {
        SCOPED_TRACE("slot " + std::to_string(c.index) + ": " + c.document);
        const std::vector<Event> events = parse_events(c.document);
        ASSERT_FALSE(events.empty());
        const Event &last = events.back();
        EXPECT_EQ(last.name, "EXCEPTION");
        EXPECT_EQ(last.code, c.code);
        EXPECT_EQ(last.text.size(), c.text.size());
        EXPECT_EQ(last.text, c.text);
        if (!c.before.empty()) {
            ASSERT_GE(events.size(), 2u);
            const Event &before = events[events.size() - 2];
            EXPECT_EQ(before.name + "|" + before.text, c.before);
        }
        for (const Event &e : events)
            EXPECT_NE(e.name, "END-OF-DOCUMENT");
        slots.insert(c.index);
    }
    for (int index = 1; index <= 39; ++index) {
        if (index != 17) {
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
        const std::vector<Event> wide =
            parse_events(cblxml_test::national(document), CBLXML_OPT_NATIONAL);
        ASSERT_FALSE(wide.empty());
        EXPECT_EQ(wide.back().code, alpha.back().code) << document;
        EXPECT_EQ(wide.back().text, cblxml_test::national(alpha.back().text)) << document;
    }
}

// Validity errors and warnings give 201 and the parse goes on; the parser's
// note that a declared encoding contradicts the bytes is not passed on.
TEST(MalformedTest, RecoverableErrorsAndWarnings)
{
    const struct {
        std::string document;
        uint32_t options;
        size_t exceptions;
        const char *text;  // of the first exception, when checked
    } rows[] = {
        // clang-format off
        {"<!DOCTYPE a [<!ELEMENT a EMPTY>]><a>x</a>", CBLXML_OPT_VALIDATE, 1, "<!DOCTYPE a [<!ELEMENT a EMPTY>]><a>x<"},
        {"<!DOCTYPE a [<!ELEMENT a EMPTY><!ATTLIST a x CDATA #IMPLIED><!ATTLIST a x CDATA #IMPLIED>]><a/>", CBLXML_OPT_VALIDATE, 1, nullptr},
        {"<?xml version=\"1.0\" encoding=\"UTF-16\"?><a/>", 0, 0, nullptr},
        // clang-format on
    };
    for (const auto &r : rows) {
        SCOPED_TRACE(r.document);
        const std::vector<Event> events = parse_events(r.document, r.options);
        std::vector<Event> exceptions;
        for (const Event &e : events) {
            if (e.name == "EXCEPTION")
                exceptions.push_back(e);
        }
        ASSERT_EQ(exceptions.size(), r.exceptions);
        if (r.exceptions > 0) {
            EXPECT_EQ(exceptions[0].code, 201);
        }
        if (r.text != nullptr) {
            EXPECT_EQ(exceptions[0].text, r.text);
        }
        EXPECT_EQ(events.back().name, "END-OF-DOCUMENT");
    }
}

// Tree mode: the error record and the parse result. The latest error
// replaces an earlier one; a recoverable error is recorded but not marked as
// an XML error, nor is one outside the XML domain. A stream that holds two
// documents is read one document at a time: the parse of the first stops
// where the second begins (the parser reports the second declaration as
// content after the root); a misplaced declaration before any root is an
// ordinary failure.
TEST(MalformedTreeTest, ErrorRecordAndResult)
{
    using xercesc::XMLErrs;
    using xercesc::XMLExcepts;
    using xercesc::XMLValid;
    const uint32_t validate = CBLXML_OPT_TREE | CBLXML_OPT_VALIDATE;
    const struct {
        std::string document;
        uint32_t options;
        int32_t result;
        unsigned errorCode;
        int32_t isXmlError;
        uint32_t line;
        uint32_t column;
        const char *message;  // the start of the parser's message
    } rows[] = {
        // clang-format off
        {"<a/><b/>", CBLXML_OPT_TREE, 1, XMLErrs::ExpectedCommentOrPI, 1, 1, 5, "comment or processing instruction expected"},
        {"  \n ", CBLXML_OPT_TREE, 2, XMLErrs::InvalidDocumentStructure, 1, 2, 2, "invalid document structure"},
        {"<!-- c -->", CBLXML_OPT_TREE, 2, XMLErrs::InvalidDocumentStructure, 1, 1, 11, "invalid document structure"},
        {"<r>\n<a b='1' b='2'/></r>", CBLXML_OPT_TREE, 3, XMLErrs::AttrAlreadyUsedInSTag, 1, 2, 17, "attribute 'b' is already specified"},
        {"<a>", CBLXML_OPT_TREE, 3, XMLErrs::EndedWithTagsOnStack, 1, 1, 4, "input ended before all started tags were ended"},
        {"<!DOCTYPE a [<!ELEMENT a EMPTY>]><a>x</a><b/>", validate, 1, XMLErrs::ExpectedCommentOrPI, 1, 1, 42, "comment or processing instruction expected"},
        {"<!DOCTYPE a [<!ELEMENT a EMPTY>]><a>x</a>", validate, 3, XMLValid::NoCharDataInCM, 0, 1, 38, ""},
        {"<a b='1", CBLXML_OPT_TREE, 3, XMLExcepts::Gen_UnexpectedEOF, 0, 1, 8, "unexpected end of input"},
        {"<?xml version=\"1.0\"?><a/>\n<?xml version=\"1.0\"?><b/>", CBLXML_OPT_TREE, 1, XMLErrs::NotValidAfterContent, 1, 2, 7, ""},
        {"<!--c--><?xml version=\"1.0\"?><a/>", CBLXML_OPT_TREE, 3, XMLErrs::XMLDeclMustBeFirst, 1, 1, 15, ""},
        // clang-format on
    };
    for (const auto &r : rows) {
        SCOPED_TRACE(r.document);
        TreeParse t(r.document, r.options);
        EXPECT_EQ(t.result, r.result);
        EXPECT_EQ(t.record.errorCode, r.errorCode);
        EXPECT_EQ(t.record.isXmlError, r.isXmlError);
        EXPECT_EQ(t.record.line, r.line);
        EXPECT_EQ(t.record.column, r.column);
        EXPECT_FALSE(t.message().empty());
        EXPECT_EQ(t.message().rfind(r.message, 0), 0u) << t.message();
    }
    TreeParse unrecorded("<a/><b/>", CBLXML_OPT_TREE, false);
    EXPECT_EQ(unrecorded.result, 3);
    EXPECT_EQ(unrecorded.record.message, nullptr);
}

}  // namespace
