// The same document in every form a program may hand over gives the same
// result: tree strings in each UTF form, long multibyte documents, and
// references the parser skips because the external DTD subset is not read.
#include <gtest/gtest.h>

#include <iconv.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "XmlDomHandlers/event_pool.h"
#include "cblxml.h"
#include "parse_events.h"
#include "xmldom/dom_document.h"

namespace {

// The document's bytes in `code` (an iconv name), converted from UTF-8.
std::string convert(const std::string &utf8, const char *to, const char *from = "UTF-8")
{
    iconv_t cd = iconv_open(to, from);
    std::string out(utf8.size() * 4 + 16, '\0');
    char *in = const_cast<char *>(utf8.data());
    char *put = out.data();
    size_t inLeft = utf8.size(), outLeft = out.size();
    EXPECT_NE(iconv(cd, &in, &inLeft, &put, &outLeft), static_cast<size_t>(-1)) << to;
    iconv(cd, nullptr, nullptr, &put, &outLeft);  // the shift back, for ISO-2022-JP
    iconv_close(cd);
    out.resize(out.size() - outLeft);
    return out;
}

// Elements, attributes and texts of a tree, in document order.
std::string dump(const xd_dom_node_t *n)
{
    std::string s;
    for (; n != nullptr; n = n->next_sibling) {
        if (n->kind == XD_DOM_TEXT)
            s += "'" + std::string(n->value) + "'";
        if (n->kind != XD_DOM_ELEMENT)
            continue;
        s += "<" + std::string(n->name);
        for (const xd_dom_node_t *a = n->first_attribute; a != nullptr; a = a->next_sibling)
            s += " " + std::string(a->name) + "=" + (a->value != nullptr ? a->value : "");
        s += ">" + dump(n->first_child) + "</>";
    }
    return s;
}

struct TreeParse {
    xd_dom_node_t *doc = nullptr;
    int32_t result;
    explicit TreeParse(const std::string &bytes)
    {
        xd_dom_parse_err_t record{};
        xd_dom_parse_err_t *rec = &record;
        result = kvt_xe_xml_dom_parse(bytes.data(), static_cast<uint32_t>(bytes.size()), &doc, &rec,
                                      CBLXML_OPT_TREE);
        std::free(record.message);
    }
    ~TreeParse() { kvt_xe_xml_dom_free_node(doc, 0); }
};

TEST(DocumentFormsTest, TreeStringsAreUtf8InEveryUtfForm)
{
    const std::string body =
        "<r a=\"xyz\" b=\"\xC3\xA9\xF0\x9D\x84\x9E\"><s>th\xC3\xA9 &amp; caf\xC3\xA9 "
        "\xF0\x9D\x84\x9E</s>end</r>";
    const std::string utf8 = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" + body;
    TreeParse reference(utf8);
    ASSERT_EQ(reference.result, 0);
    const std::string expected = dump(reference.doc->first_child);
    ASSERT_NE(expected.find("th\xC3\xA9 & caf\xC3\xA9 \xF0\x9D\x84\x9E"), std::string::npos);

    struct Form {
        const char *code;      // iconv name of the bytes
        const char *mark;      // UTF-8 byte-order mark to put first, or ""
        const char *declared;  // encoding declared, or null for none
    };
    const Form forms[] = {
        {"UTF-8", "\xEF\xBB\xBF", nullptr},    {"UTF-16LE", "", "UTF-16"},
        {"UTF-16LE", "", "utf-16le"},          {"UTF-16BE", "", "UTF-16"},
        {"UTF-16LE", "\xEF\xBB\xBF", nullptr}, {"UTF-16BE", "\xEF\xBB\xBF", nullptr},
    };
    for (const Form &f : forms) {
        SCOPED_TRACE(std::string(f.code) + (*f.mark ? " with mark" : " declared ") +
                     (f.declared ? f.declared : ""));
        std::string decl;
        if (f.declared != nullptr)
            decl.append("<?xml version=\"1.0\" encoding=\"").append(f.declared).append("\"?>");
        TreeParse t(convert(f.mark + decl.append(body), f.code));
        ASSERT_EQ(t.result, 0);
        EXPECT_EQ(dump(t.doc->first_child), expected);
        // The declared name stays on the document node; the strings are UTF-8.
        if (f.declared != nullptr) {
            EXPECT_STREQ(t.doc->value, std::string(f.declared) == "UTF-16" ? "UTF-16" : "UTF-16LE");
        }
        EXPECT_STREQ(cblxml::dom_document_encoding(t.doc), "UTF-8");
    }
}

TEST(DocumentFormsTest, LongMultibyteDocumentsArriveWhole)
{
    // Over 4,096 units: more than one block of the multibyte transcoders.
    std::string text;
    for (int i = 0; i < 1000; ++i)
        text += "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE3\x81\xAE\xE6\x96\x87";  // 5 characters
    for (const char *code : {"EUC-JP", "Shift_JIS", "ISO-2022-JP"}) {
        SCOPED_TRACE(code);
        const std::string doc = convert(std::string("<?xml version=\"1.0\" encoding=\"") + code +
                                            "\"?><r>" + text + "</r>",
                                        code);
        std::string got;
        for (const cblxml_test::Event &e : cblxml_test::parse_events(doc)) {
            EXPECT_NE(e.name, "EXCEPTION") << e;
            if (e.name == "CONTENT-CHARACTERS")
                got += convert(e.text, "UTF-8", code);
        }
        EXPECT_EQ(got, text);
    }
}

TEST(DocumentFormsTest, SkippedReferencesArriveAsUnknownReferences)
{
    struct Case {
        const char *document;
        std::vector<std::string> events;  // from the first START-OF-ELEMENT on
        const char *tree;
    };
    const std::string dtd = "<!DOCTYPE r SYSTEM \"r.dtd\" [<!ENTITY lang \"fr\">]>";
    const Case cases[] = {
        {"<r>&laquo;\xD0\x9D\xD0\xB5&raquo; &a1;&a2;<b>&u;</b><b/>&lang;&amp;&z;</r>",
         {"START-OF-ELEMENT r", "UNKNOWN-REFERENCE-IN-CONTENT laquo",
          "CONTENT-CHARACTERS \xD0\x9D\xD0\xB5", "UNKNOWN-REFERENCE-IN-CONTENT raquo",
          "CONTENT-CHARACTERS  ", "UNKNOWN-REFERENCE-IN-CONTENT a1",
          "UNKNOWN-REFERENCE-IN-CONTENT a2", "START-OF-ELEMENT b", "UNKNOWN-REFERENCE-IN-CONTENT u",
          "END-OF-ELEMENT b", "START-OF-ELEMENT b", "END-OF-ELEMENT b",
          // A reference the parser resolves keeps the first-letter rule.
          "CONTENT-CHARACTER <", "CONTENT-CHARACTERS r", "CONTENT-CHARACTER &",
          "UNKNOWN-REFERENCE-IN-CONTENT z", "END-OF-ELEMENT r"},
         "<r>'\xD0\x9D\xD0\xB5 '<b></><b></>'fr&'</>"},
        {"<r a=\"1&bar;2\" b=\"&alpha;z\" c=\"&lt;\"/>",
         {"START-OF-ELEMENT r", "ATTRIBUTE-NAME a", "ATTRIBUTE-CHARACTERS 1",
          "UNKNOWN-REFERENCE-IN-ATTRIBUTE bar", "ATTRIBUTE-CHARACTERS 2", "ATTRIBUTE-NAME b",
          "UNKNOWN-REFERENCE-IN-ATTRIBUTE alpha", "ATTRIBUTE-CHARACTERS z", "ATTRIBUTE-NAME c",
          "ATTRIBUTE-CHARACTER <", "END-OF-ELEMENT r"},
         "<r a=12 b=z c=<></>"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.document);
        std::vector<std::string> got;
        for (const cblxml_test::Event &e : cblxml_test::parse_events(dtd + c.document)) {
            EXPECT_EQ(e.code, 0) << e;
            if (!got.empty() || e.name == "START-OF-ELEMENT")
                got.push_back(e.name + " " + e.text);
        }
        got.pop_back();  // END-OF-DOCUMENT
        EXPECT_EQ(got, c.events);
        TreeParse t(dtd + c.document);
        EXPECT_EQ(t.result, 0);
        EXPECT_EQ(dump(t.doc->first_child), c.tree);
    }
}

TEST(DocumentFormsTest, ThePoolKnowsItsOwnRecords)
{
    cblxml::EventPool pool;
    xd_parse_info *pooled = pool.take("COMMENT");
    // A record whose name a host allocator placed right behind it.
    struct Adjacent {
        xd_parse_info record{};
        char name[CBLXML_EVENT_NAME_LEN];
    } adjacent;
    adjacent.record.event_name = adjacent.name;
    EXPECT_TRUE(pool.owns(pooled));
    EXPECT_FALSE(pool.owns(&adjacent.record));
    cblxml::release_event(&pool, pooled);
}

}  // namespace
