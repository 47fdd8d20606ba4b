// Every event kind of well-formed documents, in the three forms a program
// hands a document over: alphanumeric, national and EBCDIC.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "parse_events.h"

using cblxml_test::Event;
using cblxml_test::in_form;
using cblxml_test::parse_events;

namespace {

struct Expected {
    const char *name;
    std::string text;  // UTF-8; converted to the program's form per run
};

struct EventCase {
    const char *label;
    std::string document;          // UTF-8
    std::vector<Expected> events;  // after START-OF-DOCUMENT, before END-OF-DOCUMENT
};

// The three forms, by the option word that names them.
constexpr uint32_t kAlphanumeric = 0;
constexpr uint32_t kNational = CBLXML_OPT_NATIONAL;
constexpr uint32_t kEbcdic = CBLXML_OPT_EBCDIC_DATA;

std::vector<Event> expected_events(const EventCase &c, uint32_t form)
{
    std::vector<Event> out;
    const std::string doc = in_form(c.document, form);
    out.push_back({"START-OF-DOCUMENT", 0, doc, false});
    for (const Expected &e : c.events) {
        const std::string name = e.name;
        const bool wide =
            name == "CONTENT-NATIONAL-CHARACTER" || name == "ATTRIBUTE-NATIONAL-CHARACTER";
        out.push_back(
            {name, 0, wide ? cblxml_test::national(e.text) : in_form(e.text, form), false});
    }
    out.push_back({"END-OF-DOCUMENT", 0, "", true});
    return out;
}

const std::vector<EventCase> &cases()
{
    static const std::vector<EventCase> all = {
        // clang-format off
        {"references in attributes and content",
         R"(<a x="1&lt;2" y="&#65;">t&amp;u</a>)",
         {{"START-OF-ELEMENT", "a"}, {"ATTRIBUTE-NAME", "x"}, {"ATTRIBUTE-CHARACTERS", "1"},
          {"ATTRIBUTE-CHARACTER", "<"}, {"ATTRIBUTE-CHARACTERS", "2"}, {"ATTRIBUTE-NAME", "y"},
          {"ATTRIBUTE-NATIONAL-CHARACTER", "A"}, {"CONTENT-CHARACTERS", "t"},
          {"CONTENT-CHARACTER", "&"}, {"CONTENT-CHARACTERS", "u"}, {"END-OF-ELEMENT", "a"}}},
        {"declaration with standalone and no encoding",
         R"(<?xml version="1.0" standalone="yes"?><r/>)",
         {{"VERSION-INFORMATION", "1.0"}, {"STANDALONE-DECLARATION", "yes"},
          {"START-OF-ELEMENT", "r"}, {"END-OF-ELEMENT", "r"}}},
        {"single quotes in the declaration",
         "<?xml version='1.0' standalone='no'?><r/>",
         {{"VERSION-INFORMATION", "1.0"}, {"STANDALONE-DECLARATION", "no"},
          {"START-OF-ELEMENT", "r"}, {"END-OF-ELEMENT", "r"}}},
        {"every predefined entity and empty attribute",
         R"(<e v="" w="&gt;&quot;&apos;">&lt;&gt;&quot;&apos;&amp;</e>)",
         {{"START-OF-ELEMENT", "e"}, {"ATTRIBUTE-NAME", "v"}, {"ATTRIBUTE-CHARACTERS", ""},
          {"ATTRIBUTE-NAME", "w"}, {"ATTRIBUTE-CHARACTER", ">"}, {"ATTRIBUTE-CHARACTER", "\""},
          {"ATTRIBUTE-CHARACTER", "'"}, {"CONTENT-CHARACTER", "<"}, {"CONTENT-CHARACTER", ">"},
          {"CONTENT-CHARACTER", "\""}, {"CONTENT-CHARACTER", "'"}, {"CONTENT-CHARACTER", "&"},
          {"END-OF-ELEMENT", "e"}}},
        {"document type declaration, comments, CDATA and PIs",
         "<!DOCTYPE r [\n<!ENTITY e \"hello\">\n<!-- inside -->\n]>\n<!-- after -->\n"
         "<r>&e;<![CDATA[a&lt;b]]><![CDATA[]]><?p?><?q d?></r>",
         {{"DOCUMENT-TYPE-DECLARATION",
           "<!DOCTYPE r [\n<!ENTITY e \"hello\">\n<!-- inside -->\n]>"},
          {"COMMENT", " after "}, {"START-OF-ELEMENT", "r"}, {"CONTENT-CHARACTERS", "hello"},
          {"START-OF-CDATA-SECTION", "<![CDATA["}, {"CONTENT-CHARACTERS", "a&lt;b"},
          {"END-OF-CDATA-SECTION", "]]>"}, {"START-OF-CDATA-SECTION", "<![CDATA["},
          {"END-OF-CDATA-SECTION", "]]>"}, {"PROCESSING-INSTRUCTION-TARGET", "p"},
          {"PROCESSING-INSTRUCTION-DATA", ""}, {"PROCESSING-INSTRUCTION-TARGET", "q"},
          {"PROCESSING-INSTRUCTION-DATA", "d"}, {"END-OF-ELEMENT", "r"}}},
        {"character references above U+FFFF",
         R"(<s a="&#x10000;">&#x1F600;</s>)",
         {{"START-OF-ELEMENT", "s"}, {"ATTRIBUTE-NAME", "a"},
          {"ATTRIBUTE-NATIONAL-CHARACTER", "\xF0\x90\x80\x80"},
          {"CONTENT-NATIONAL-CHARACTER", "\xF0\x9F\x98\x80"}, {"END-OF-ELEMENT", "s"}}},
        {"declared entity in an attribute ends that element's attributes",
         "<!DOCTYPE r [<!ENTITY e \"EE\">]><r a=\"x&e;y\" b=\"z\"/>",
         {{"DOCUMENT-TYPE-DECLARATION", "<!DOCTYPE r [<!ENTITY e \"EE\">]>"},
          {"START-OF-ELEMENT", "r"}, {"ATTRIBUTE-NAME", "a"}, {"ATTRIBUTE-CHARACTERS", "x"},
          {"ATTRIBUTE-CHARACTERS", "EEy"}, {"END-OF-ELEMENT", "r"}}},
        {"many lines with CR LF and nested elements",
         "<a>\r\n <b k=\"&amp;\">x&#x41;</b>\r\n <c>1</c>\r\n</a>",
         {{"START-OF-ELEMENT", "a"}, {"CONTENT-CHARACTERS", "\n "}, {"START-OF-ELEMENT", "b"},
          {"ATTRIBUTE-NAME", "k"}, {"ATTRIBUTE-CHARACTER", "&"}, {"CONTENT-CHARACTERS", "x"},
          {"CONTENT-NATIONAL-CHARACTER", "A"}, {"END-OF-ELEMENT", "b"},
          {"CONTENT-CHARACTERS", "\n "}, {"START-OF-ELEMENT", "c"}, {"CONTENT-CHARACTERS", "1"},
          {"END-OF-ELEMENT", "c"}, {"CONTENT-CHARACTERS", "\n"}, {"END-OF-ELEMENT", "a"}}},
        {"attribute names that also stand in the element name and in values",
         R"(<bab b="a=1" a="2"/>)",
         {{"START-OF-ELEMENT", "bab"}, {"ATTRIBUTE-NAME", "b"}, {"ATTRIBUTE-CHARACTERS", "a=1"},
          {"ATTRIBUTE-NAME", "a"}, {"ATTRIBUTE-CHARACTERS", "2"}, {"END-OF-ELEMENT", "bab"}}},
        {"a bare document type declaration keeps its place among comments and PIs",
         "<!--a--><!DOCTYPE r><?p x?><r/>",
         {{"COMMENT", "a"}, {"DOCUMENT-TYPE-DECLARATION", "<!DOCTYPE r>"},
          {"PROCESSING-INSTRUCTION-TARGET", "p"}, {"PROCESSING-INSTRUCTION-DATA", "x"},
          {"START-OF-ELEMENT", "r"}, {"END-OF-ELEMENT", "r"}}},
        {"a bare document type declaration just before the root",
         "<?xml version=\"1.0\"?>\n<!DOCTYPE r >\n<r/>",
         {{"VERSION-INFORMATION", "1.0"}, {"DOCUMENT-TYPE-DECLARATION", "<!DOCTYPE r >"},
          {"START-OF-ELEMENT", "r"}, {"END-OF-ELEMENT", "r"}}},
        {"lone CR line ends keep positions right",
         "<a>\r<b x=\"&lt;\">&amp;</b>\r</a>",
         {{"START-OF-ELEMENT", "a"}, {"CONTENT-CHARACTERS", "\n"}, {"START-OF-ELEMENT", "b"},
          {"ATTRIBUTE-NAME", "x"}, {"ATTRIBUTE-CHARACTER", "<"}, {"CONTENT-CHARACTER", "&"},
          {"END-OF-ELEMENT", "b"}, {"CONTENT-CHARACTERS", "\n"}, {"END-OF-ELEMENT", "a"}}},
        // The parser never ends a declaration that names an external subset
        // (which is not read): it ends at its closing ">" all the same.
        {"external subset named, with an internal one and a skipped reference",
         "<?xml version=\"1.0\"?>\n<!DOCTYPE r SYSTEM \"r.dtd\" [<!ENTITY e \"x\">]>\n"
         "<!-- c1 -->\n<r a=\"&u;\">t<!-- c2 --></r>\n",
         {{"VERSION-INFORMATION", "1.0"},
          {"DOCUMENT-TYPE-DECLARATION", "<!DOCTYPE r SYSTEM \"r.dtd\" [<!ENTITY e \"x\">]>"},
          {"COMMENT", " c1 "}, {"START-OF-ELEMENT", "r"}, {"ATTRIBUTE-NAME", "a"},
          {"ATTRIBUTE-CHARACTERS", ""}, {"UNKNOWN-REFERENCE-IN-ATTRIBUTE", "u"},
          {"CONTENT-CHARACTERS", "t"}, {"COMMENT", " c2 "}, {"END-OF-ELEMENT", "r"}}},
        {"external subset named alone, a PI and a comment after it",
         "<!DOCTYPE r SYSTEM \"r.dtd\"><?p d?>\n<!--c--><r/>",
         {{"DOCUMENT-TYPE-DECLARATION", "<!DOCTYPE r SYSTEM \"r.dtd\">"},
          {"PROCESSING-INSTRUCTION-TARGET", "p"}, {"PROCESSING-INSTRUCTION-DATA", "d"},
          {"COMMENT", "c"}, {"START-OF-ELEMENT", "r"}, {"END-OF-ELEMENT", "r"}}},
        {"public id and a subset whose literal, comment and PI hold ]>",
         "<!DOCTYPE r PUBLIC \"-//p\" \"r[.dtd\" [<!-- ]> --><!ENTITY e \"]>\"><?q ]>?>]>\n"
         "<!--c--><?p?><r>&e;</r>",
         {{"DOCUMENT-TYPE-DECLARATION",
           "<!DOCTYPE r PUBLIC \"-//p\" \"r[.dtd\" [<!-- ]> --><!ENTITY e \"]>\"><?q ]>?>]>"},
          {"COMMENT", "c"}, {"PROCESSING-INSTRUCTION-TARGET", "p"},
          {"PROCESSING-INSTRUCTION-DATA", ""}, {"START-OF-ELEMENT", "r"},
          {"CONTENT-CHARACTERS", "]>"}, {"END-OF-ELEMENT", "r"}}},
        {"non-ASCII text",
         "<p>caf\xC3\xA9 \xE2\x82\xAC</p>",
         {{"START-OF-ELEMENT", "p"}, {"CONTENT-CHARACTERS", "caf\xC3\xA9 \xE2\x82\xAC"},
          {"END-OF-ELEMENT", "p"}}},
        // clang-format on
    };
    return all;
}

class EventsTest : public ::testing::TestWithParam<uint32_t> {};

TEST_P(EventsTest, DocumentsGiveTheirEventsInOrder)
{
    const uint32_t form = GetParam();
    for (const EventCase &c : cases()) {
        SCOPED_TRACE(c.label);
        EXPECT_EQ(parse_events(in_form(c.document, form), form), expected_events(c, form));
    }
}

INSTANTIATE_TEST_SUITE_P(AllForms, EventsTest,
                         ::testing::Values(kAlphanumeric, kNational, kEbcdic));

// Documents whose events differ by form: the declared encoding, validation
// only, tree mode, and a byte-order mark, for which the parser counts no column (so
// positions on line 1 still land on the right character). The events from
// `at` on (0: all of them), or from the end backwards for a negative `at`.
TEST(EventsTest, AlphanumericOnly)
{
    const struct {
        std::string document;
        uint32_t options;
        int at;
        std::vector<Event> events;
    } rows[] = {
        // clang-format off
        // Standalone before encoding ends the declaration events in an exception.
        {R"(<?xml version="1.0" standalone="yes" encoding="UTF-8"?><r/>)", 0, 1, {{"VERSION-INFORMATION", 0, "1.0"}, {"STANDALONE-DECLARATION", 0, "yes"}, {"EXCEPTION", 201, R"(<?xml version="1.0" standalone="yes" encoding="UTF-8"?)"}}},
        // Text comes back in the document's own encoding.
        {"<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><r>\xE9</r>", 0, 2, {{"ENCODING-DECLARATION", 0, "ISO-8859-1"}, {"START-OF-ELEMENT", 0, "r"}, {"CONTENT-CHARACTERS", 0, "\xE9"}}},
        {"<!DOCTYPE r [<!ELEMENT r EMPTY>]><r/>", CBLXML_OPT_VALIDATE_ONLY, 0, {{"END-OF-DOCUMENT", 0, "", true}}},
        // The tree bit in a program's option word still yields events.
        {"<a/>", CBLXML_OPT_TREE, 0, {{"START-OF-DOCUMENT", 0, "<a/>"}, {"START-OF-ELEMENT", 0, "a"}, {"END-OF-ELEMENT", 0, "a"}, {"END-OF-DOCUMENT", 0, "", true}}},
        {"\xEF\xBB\xBF<a x=\"1&lt;2\">t&amp;u</a>", 0, 4, {{"ATTRIBUTE-CHARACTER", 0, "<"}, {"ATTRIBUTE-CHARACTERS", 0, "2"}, {"CONTENT-CHARACTERS", 0, "t"}, {"CONTENT-CHARACTER", 0, "&"}}},
        {"\xEF\xBB\xBF<a><b></a>", 0, -1, {{"EXCEPTION", 5, "\xEF\xBB\xBF<a><b></a"}}},
        {"\xEF\xBB\xBF<r>\n<a><b></a></r>", 0, -1, {{"EXCEPTION", 5, "\xEF\xBB\xBF<r>\n<a><b></a"}}},
        // clang-format on
    };
    for (const auto &r : rows) {
        SCOPED_TRACE(r.document);
        const std::vector<Event> all = parse_events(r.document, r.options);
        const size_t from = r.at >= 0 ? static_cast<size_t>(r.at) : all.size() + r.at;
        ASSERT_LE(from + r.events.size(), all.size());
        EXPECT_EQ(std::vector<Event>(all.begin() + from, all.begin() + from + r.events.size()),
                  r.events);
        if (r.at == 0) {
            EXPECT_EQ(all.size(), r.events.size());
        }
    }
}

}  // namespace
