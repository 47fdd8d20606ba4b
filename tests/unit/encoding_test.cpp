// Encoding detection, refusals and the normalisation of declared names.
#include <gtest/gtest.h>

#include <string>

#include "parse_events.h"

using cblxml_test::parse_events;

namespace {

std::string bytes(std::initializer_list<int> list)
{
    std::string out;
    for (int b : list)
        out.push_back(static_cast<char>(b));
    return out;
}

TEST(EncodingTest, RefusedDocumentsGiveOneExceptionAndNothingElse)
{
    const std::string ebcdicDecl = cblxml_test::ebcdic("<?xml version=\"1.0\"?><a/>");
    struct {
        const char *label;
        std::string document;
        uint32_t options;
        int32_t code;
    } cases[] = {
        {"EBCDIC < without the EBCDIC declaration", cblxml_test::ebcdic("<a/>"), 0, 300},
        {"EBCDIC declaration without encoding", ebcdicDecl, 0, 300},
        {"ASCII < with EBCDIC program data", "<a/>", CBLXML_OPT_EBCDIC_DATA, 306},
        {"UTF-8 declaration with EBCDIC program data", "<?xml version=\"1.0\"?><a/>",
         CBLXML_OPT_EBCDIC_DATA, 306},
        {"00 3C with EBCDIC program data", bytes({0x00, 0x3C, 0x00, 0x61}), CBLXML_OPT_EBCDIC_DATA,
         310},
        {"UTF-16LE declaration with EBCDIC program data",
         cblxml_test::national("<?xml version=\"1.0\"?><a/>"), CBLXML_OPT_EBCDIC_DATA, 310},
        {"any other start with EBCDIC program data", " <a/>", CBLXML_OPT_EBCDIC_DATA, 201},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        auto events = parse_events(c.document, c.options);
        ASSERT_EQ(events.size(), 1u);
        EXPECT_EQ(events[0].name, "EXCEPTION");
        EXPECT_EQ(events[0].code, c.code);
    }
}

TEST(EncodingTest, LeadingFFFE0000IsUtf16LittleEndian)
{
    std::string doc = bytes({0xFF, 0xFE}) + cblxml_test::national("<a>b</a>");
    doc[2] = '<';  // keep FF FE, then "<" as a UTF-16LE unit
    auto events = parse_events(doc);
    ASSERT_GE(events.size(), 2u);
    EXPECT_EQ(events[1].name, "START-OF-ELEMENT");
    EXPECT_EQ(events.back().name, "END-OF-DOCUMENT");
}

// The declared name, in any spelling a program uses, chooses how the text is
// read, by the data map or by the parser: the content comes back in the
// document's own encoding.
TEST(EncodingTest, DeclaredNamesChooseTheEncoding)
{
    const std::string euro = "<a>\xE2\x82\xAC</a>";
    const struct {
        std::string document;
        uint32_t options;
        std::string content;
    } cases[] = {
        // clang-format off
        {cblxml_test::ebcdic("<?xml version='1.0' encoding='IBM-1140'?>" + euro), CBLXML_OPT_EBCDIC_DATA, "\x9F"},
        {cblxml_test::ebcdic("<?xml version='1.0' encoding='IBM-1140'?>" + euro), 0, "\x9F"},
        {cblxml_test::ebcdic("<?xml version=\"1.0\" encoding=\"cp-1140\"?>" + euro), 0, "\x9F"},
        {cblxml_test::ebcdic("<?xml version='1.0' encoding='ebcdic-cp-us'?><a>A</a>"), 0, "\xC1"},
        {"<?xml version='1.0' encoding='UTF8'?><a>\xC3\xA9</a>", 0, "\xC3\xA9"},
        {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>", 0, "\xE9"},
        // clang-format on
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.document);
        const auto events = parse_events(c.document, c.options);
        ASSERT_GE(events.size(), 4u);
        EXPECT_EQ(events.back().name, "END-OF-DOCUMENT");
        EXPECT_EQ(events[events.size() - 3].text, c.content);
        for (const auto &e : events)
            EXPECT_NE(e.name, "EXCEPTION") << e;
    }
}

}  // namespace
