// Encoding detection, refusals and the normalisation of declared names.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include <xercesc/util/XMLString.hpp>

#include "XmlDomHandlers/XmlDomHandlers.h"
#include "XmlDomHandlers/encoding_names.h"
#include "parse_events.h"
#include "xexml/parser_init.h"

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
    struct { const char *label; std::string document; uint32_t options; int32_t code; } cases[] = {
        {"EBCDIC < without the EBCDIC declaration", cblxml_test::ebcdic("<a/>"), 0, 300},
        {"EBCDIC declaration without encoding", ebcdicDecl, 0, 300},
        {"ASCII < with EBCDIC program data", "<a/>", CBLXML_OPT_EBCDIC_DATA, 306},
        {"UTF-8 declaration with EBCDIC program data", "<?xml version=\"1.0\"?><a/>",
         CBLXML_OPT_EBCDIC_DATA, 306},
        {"00 3C with EBCDIC program data", bytes({0x00, 0x3C, 0x00, 0x61}),
         CBLXML_OPT_EBCDIC_DATA, 310},
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

TEST(EncodingTest, EbcdicDocumentsAreParsed)
{
    struct { const char *label; std::string document; uint32_t options; } cases[] = {
        {"converted by the data map", cblxml_test::ebcdic("<a b='c'>d</a>"),
         CBLXML_OPT_EBCDIC_DATA},
        {"declared EBCDIC encoding, converted by the data map",
         cblxml_test::ebcdic("<?xml version='1.0' encoding='IBM-1140'?><a>\xE2\x82\xAC</a>"),
         CBLXML_OPT_EBCDIC_DATA},
        {"declared EBCDIC encoding, read by the parser",
         cblxml_test::ebcdic("<?xml version='1.0' encoding='IBM-1140'?><a>\xE2\x82\xAC</a>"), 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        auto events = parse_events(c.document, c.options);
        ASSERT_FALSE(events.empty());
        EXPECT_EQ(events.back().name, "END-OF-DOCUMENT");
        for (const auto &e : events)
            EXPECT_NE(e.name, "EXCEPTION") << e;
    }
    auto events = parse_events(cblxml_test::ebcdic("<a>\xE2\x82\xAC</a>"), CBLXML_OPT_EBCDIC_DATA);
    ASSERT_GE(events.size(), 3u);
    EXPECT_EQ(events[2].text, "\x9F") << "the euro sign in IBM-1140";
}

TEST(EncodingTest, LeadingFFFE0000IsUtf16LittleEndian)
{
    std::string doc = bytes({0xFF, 0xFE}) + cblxml_test::national("<a>b</a>");
    doc[2] = '<';  // keep FF FE, then "<" as a UTF-16LE unit
    auto events = parse_events(doc);
    ASSERT_GE(events.size(), 2u);
    EXPECT_EQ(events[1].name, "START-OF-ELEMENT");
    EXPECT_EQ(events.back().name, "END-OF-DOCUMENT");

    cblxml::ensure_parser_initialised();
    const std::string start = bytes({0xFF, 0xFE, 0x00, 0x00});
    cblxml::XmlDomHandlers handler(start.data(), 4, nullptr, nullptr, 0);
    ASSERT_NE(handler.getTranscoder(), nullptr);
    EXPECT_TRUE(xercesc::XMLString::equals(handler.getTranscoder()->getEncodingName(), u"UTF-16LE"));
}

TEST(EncodingTest, DeclaredNamesAreNormalised)
{
    struct { std::u16string declared; std::u16string canonical; } cases[] = {
        {u"CP-1140", u"IBM1140"},   {u"CP_1140", u"IBM1140"},
        {u"IBM01140", u"IBM1140"},  {u"EBCDIC-CP-US", u"IBM037"},
        {u"CCSID_037", u"IBM037"},  {u"UTF-16 (LE)", u"UTF-16LE"},
        {u"UCS_4", u"UCS-4"},       {u"UTF8", u"UTF-8"},
        {u"ISO-8859-1", u"ISO-8859-1"},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(cblxml::normalise_encoding_name(c.declared), c.canonical);
    }
}

struct HandlerCase {
    const char *label;
    std::string document;
    uint32_t options;
    const char16_t *transcoder;
};

TEST(EncodingTest, HandlerChoosesTheTranscoder)
{
    cblxml::ensure_parser_initialised();
    const HandlerCase cases[] = {
        {"cp-1140 lower case, double quotes",
         cblxml_test::ebcdic("<?xml version=\"1.0\" encoding=\"cp-1140\"?><a/>"), 0, u"IBM1140"},
        {"CP-1140 single quotes",
         cblxml_test::ebcdic("<?xml version='1.0' encoding='Cp-1140'?><a/>"), 0, u"IBM1140"},
        {"ebcdic-cp-us", cblxml_test::ebcdic("<?xml version='1.0' encoding='ebcdic-cp-us'?><a/>"),
         0, u"IBM037"},
        {"declared UTF-16 keeps the detected transcoder",
         cblxml_test::national("<?xml version='1.0' encoding='UTF-16'?><a/>"), 0, u"UTF-16LE"},
        {"declared equal to detected", "<?xml version='1.0' encoding='utf-8'?><a/>", 0, u"UTF-8"},
        {"white space before = ends the scan and keeps the detected transcoder",
         "<?xml version='1.0' encoding ='ISO-8859-1'?><a/>", 0, u"UTF-8"},
        {"declared ISO-8859-1", "<?xml version='1.0' encoding='ISO-8859-1'?><a/>", 0,
         u"ISO-8859-1"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        cblxml::XmlDomHandlers handler(c.document.data(), static_cast<uint32_t>(c.document.size()),
                                       nullptr, nullptr, c.options);
        EXPECT_FALSE(handler.getSawErrors());
        ASSERT_NE(handler.getTranscoder(), nullptr);
        const XMLCh *name = handler.getTranscoder()->getEncodingName();
        EXPECT_TRUE(xercesc::XMLString::equals(name, c.transcoder))
            << std::string(name, name + xercesc::XMLString::stringLen(name));
    }
}

TEST(EncodingTest, DataMapHandlesNationalAndUnknownDocuments)
{
    cblxml::ensure_parser_initialised();
    const std::string nat = cblxml_test::national("<a>\xC3\xA9</a>");
    cblxml::XmlDomHandlers national(nat.data(), static_cast<uint32_t>(nat.size()), nullptr, nullptr,
                                    CBLXML_OPT_NATIONAL);
    EXPECT_NE(national.getMPH(), nullptr);
    EXPECT_EQ(national.getIdesc()->class_code, 21u);
    EXPECT_EQ(national.getIdesc()->usage_code, 9u);
    EXPECT_EQ(national.getDocTextLen(), 8u);
    EXPECT_EQ(std::u16string(national.getDocText(), 8), u"<a>\u00E9</a>");

    const std::string spaced = "  <a/>";
    cblxml::XmlDomHandlers unknown(spaced.data(), 6, nullptr, nullptr, 0);
    EXPECT_NE(unknown.getMPH(), nullptr) << "no pattern matched: the data map converts";
    EXPECT_EQ(unknown.getIdesc()->class_code, 19u);
}

} // namespace
