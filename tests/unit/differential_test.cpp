// The XML PARSE entry moves the parse on as the program asks for events.
// What the program receives must be exactly what the whole event list of
// kvt_xe_xmlparse gives when it is delivered by the rules of the entry: the
// same events, names, codes and text bytes, in the same order. This test
// runs a varied corpus through both and compares them event by event.
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cblxml.h"
#include "parse_events.h"

namespace {

using cblxml_test::Event;

bool starts(const char *name, const char *prefix)
{
    return std::memcmp(name, prefix, std::strlen(prefix)) == 0;
}

// The events of the whole-document list, delivered by the entry's rules.
std::vector<Event> list_events(const std::string &document, uint32_t options)
{
    std::string copy = document;
    xd_parse_info sentinel{};
    const int32_t result =
        kvt_xe_xmlparse(&sentinel, copy.data(), static_cast<uint32_t>(copy.size()), options);
    std::vector<Event> events;
    if (sentinel.next == nullptr) {
        // Nothing was reported: the entry ends the parse by the result.
        events.push_back(result == 0 ? Event{"END-OF-DOCUMENT", 0, "", true}
                                     : Event{"EXCEPTION", 201, "", false});
        return events;
    }
    bool first = true;
    for (xd_parse_info *r = sentinel.next; r != nullptr;) {
        Event e;
        e.name.assign(r->event_name, CBLXML_EVENT_NAME_LEN);
        e.name.erase(e.name.find_last_not_of(' ') + 1);
        e.code = r->code;
        if (first && starts(r->event_name, "START-OF-DOCUMENT")) {
            e.text = document;
        } else if (starts(r->event_name, "END-OF-DOCUMENT") && r->code != -1) {
            e.nullText = true;
        } else if (r->text != nullptr) {
            const bool wide = (options & CBLXML_OPT_NATIONAL) ||
                              starts(r->event_name, "CONTENT-NATIONAL-CHARACTER") ||
                              starts(r->event_name, "ATTRIBUTE-NATIONAL-CHARACTER");
            size_t size = 0;
            if (wide) {
                while (r->text[size] != 0 || r->text[size + 1] != 0)
                    size += 2;
            } else {
                size = std::strlen(r->text);
            }
            e.text.assign(r->text, size);
        }
        events.push_back(e);
        first = false;
        xd_parse_info *next = r->next;
        kvt_xe_xmlparse_delete_info(r);
        r = next;
    }
    return events;
}

// Empty when both ways agree, else where and how they part.
std::string difference(const std::string &document, uint32_t options)
{
    const std::vector<Event> expected = list_events(document, options);
    const std::vector<Event> got = cblxml_test::parse_events(document, options);
    const size_t n = std::min(expected.size(), got.size());
    std::ostringstream out;
    for (size_t i = 0; i < n; ++i) {
        if (!(expected[i] == got[i])) {
            out << "event " << i << ": list " << expected[i] << " / entry " << got[i];
            return out.str();
        }
    }
    if (expected.size() != got.size())
        out << "list has " << expected.size() << " events, entry " << got.size();
    return out.str();
}

std::string read_file(const std::filesystem::path &path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// Regular files under `dir` whose names end in `suffix`, recursively.
std::vector<std::filesystem::path> collect(const std::string &dir, const std::string &suffix)
{
    std::vector<std::filesystem::path> out;
    std::error_code missing;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(dir, missing)) {
        const std::string name = entry.path().filename().string();
        if (entry.is_regular_file() && name.size() >= suffix.size() &&
            name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0)
            out.push_back(entry.path());
    }
    return out;
}

// Documents that exercise every kind of event and every way to fail,
// including the places where the call-backs read back into the text
// (references, attribute values, the document type declaration) and where
// a parse stops in the middle of a construct.
const char *const kDocuments[] = {
    "<a/>",
    "",
    "   ",
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n<r a='1' b=\"x&amp;y\">t</r>",
    "<?xml version=\"1.0\"?><!DOCTYPE r><r/>",
    "<?xml version=\"1.0\"?>\n<!DOCTYPE r [\n<!ENTITY e \"ent\">\n<!-- in the subset -->\n"
    "<?pi in subset?>\n]>\n<!-- after --><r>&e;&lt;&#65;&#x10000;<![CDATA[<x>]]></r>",
    "<!DOCTYPE r SYSTEM \"r.dtd\"><r/>",
    "<!DOCTYPE r PUBLIC \"-//p//EN\" \"r.dtd\"><r/>",
    "<!DOCTYPE r SYSTEM \"r.dtd\" [<!ENTITY e \"x\">]><!--c--><?p?><r k=\"&u;\"/>",
    "<r><!--c--><?t d?><s k=\"&quot;&apos;&gt;&#9;\">a&amp;b&#x20AC;c</s></r>",
    "<r>\r\nline\rtwo\n<s k='v'/>\r\n</r>\r\n",
    "<p:r xmlns:p=\"urn:x\" p:k=\"1\"><p:s/></p:r>",
    "<r><![CDATA[]]></r>",
    "<r>&undeclared;</r>",
    "<r k=\"&undeclared;\"/>",
    "<!DOCTYPE r [<!ENTITY e \"<s>x</s>\">]><r>&e;&e;</r>",
    "<!DOCTYPE r [<!ENTITY e \"<s>\">]><r>&e;</s></r>",
    "<!DOCTYPE r [<!ENTITY e \"<s\">]><r>&e;/></r>",
    "<!DOCTYPE r [<!ENTITY e \"a</r>\">]><r>&e;",
    "<!DOCTYPE r [<!ENTITY e \"x\">]><r k=\"&e;\" j=\"&lt;\"/>",
    "<!DOCTYPE r [<!ENTITY e SYSTEM \"file:///etc/passwd\">]><r>&e;</r>",
    "<!DOCTYPE r><!DOCTYPE r><r/>",
    "<a>text",
    "<a><b></a>",
    "<a></b>",
    "<a/><b/>",
    "<a/>junk",
    "<a/><?xml version=\"1.0\"?>",
    "text before",
    "<a b=\"1\" b=\"2\"/>",
    "<a b=1/>",
    "<a>&#0;</a>",
    "<a>\x01</a>",
    "<?xml version=\"2.0\"?><a/>",
    "<?xml encoding=\"UTF-8\"?><a/>",
    "<?xml version=\"1.0\" standalone=\"maybe\"?><a/>",
    "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>caf\xE9</a>",
    "<?xml version=\"1.0\" encoding=\"bogus\"?><a/>",
    "\xEF\xBB\xBF<?xml version=\"1.0\"?><a>mark</a>",
    "<a>caf\xC3\xA9 \xF0\x9F\x98\x80</a>",
    "<a>bad \xC3 byte</a>",
    "<!-- only a comment -->",
    "<a><!-- unterminated",
    "<a><![CDATA[open",
    "<a>]]></a>",
    "<?pi?><a/><?pi after?><!-- after --> \n",
    "<a xmlns:p=\"\"/>",
    // The scanner lets an exception through its first step here (a NEL in a
    // version 1.1 declaration): the rest is taken from a whole-document parse.
    "<?xml version=\"1.1\"\x85"
    "encoding=\"iso-8859-1\"?>\n<foo/>\n",
    "<p:a/>",
};

TEST(DifferentialTest, HandWrittenDocumentsInEveryForm)
{
    const uint32_t forms[] = {0, CBLXML_OPT_NATIONAL, CBLXML_OPT_EBCDIC_DATA, CBLXML_OPT_VALIDATE,
                              CBLXML_OPT_VALIDATE_ONLY};
    for (const char *text : kDocuments) {
        for (uint32_t options : forms) {
            EXPECT_EQ(difference(cblxml_test::in_form(text, options), options), "")
                << "options " << options << ", document: " << text;
        }
    }
}

TEST(DifferentialTest, LargeDocumentsCrossTheParserBuffers)
{
    // Long texts and many events cross the parser's internal buffer
    // boundaries while events are being produced on demand.
    std::string doc = "<?xml version=\"1.0\"?>\n<batch>\n";
    for (int i = 0; i < 3000; ++i) {
        doc += "  <rec id=\"" + std::to_string(i) + "\" note=\"a&amp;b&#" +
               std::to_string(160 + i % 500) + ";\">text &lt;" + std::to_string(i) + "&gt;\r\n" +
               std::string(static_cast<size_t>(i % 97), 'x') + "</rec>\n";
    }
    doc += "</batch>\n";
    EXPECT_EQ(difference(doc, 0), "");
    EXPECT_EQ(difference(cblxml_test::national(doc), CBLXML_OPT_NATIONAL), "");
    EXPECT_EQ(difference(doc.substr(0, doc.size() / 2), 0), "") << "cut in the middle";
}

TEST(DifferentialTest, FuzzCorpus)
{
    const std::vector<std::filesystem::path> files = collect(CBLXML_FUZZ_CORPUS, "");
    ASSERT_FALSE(files.empty());
    for (const auto &path : files) {
        const std::string document = read_file(path);
        EXPECT_EQ(difference(document, 0), "") << path;
        EXPECT_EQ(difference(cblxml_test::national(document), CBLXML_OPT_NATIONAL), "") << path;
    }
}

TEST(DifferentialTest, ConformanceSuiteDocuments)
{
    const std::vector<std::filesystem::path> files = collect(CBLXML_CONFORMANCE_DOCUMENTS, ".xml");
    if (files.empty())
        GTEST_SKIP() << "no conformance suite beside the repository";
    for (const auto &path : files)
        EXPECT_EQ(difference(read_file(path), 0), "") << path;
}

}  // namespace

TEST(DifferentialTest, LongUtf8DocumentsReadTheirTextLate)
{
    // The text of a long UTF-8 document is read back only where a construct
    // needs it: here after some 300 KB of content in which nothing does,
    // with characters of every UTF-8 length lying across every offset.
    std::string filler;
    for (int i = 0; filler.size() < 300 * 1024; ++i)
        filler.append(static_cast<size_t>(i % 7), 'w')
            .append("\xC3\xA9t\xE2\x82\xAC \xF0\x9F\x98\x80<i>x</i>\r\n");
    const std::string prologs[] = {
        "",
        "<?xml version=\"1.0\"?>\n",
        "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>",
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>",
        "<?xml version=\"1.0\"" + std::string(600, ' ') + "?><!DOCTYPE r>",
        "<?xml version=\"1.0\"?><!--" + std::string(9000, '.') + "--><!DOCTYPE r>\n",
        "<!DOCTYPE r [<!ENTITY e \"x\">]>",
    };
    const std::string tails[] = {
        "",
        "<s k='v'>a&amp;b&e;</s>",
        "&undeclared;",
        "<!--c--><?p d?>",
        "bad \xC3 byte",
        "\x01",
        "</x>",
    };
    for (const std::string &prolog : prologs) {
        for (const std::string &tail : tails) {
            std::string doc = prolog;
            doc.append("<r>").append(filler).append(tail).append("</r>");
            EXPECT_EQ(difference(doc, 0), "") << prolog << " / " << tail;
        }
    }
}
