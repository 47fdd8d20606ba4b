// The data map: items of every class and usage <-> text, golden item bytes
// both ways, code pages, rooms and argument checks.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include "datamap.h"
#include "platform/platform.h"

namespace {

using namespace cblxml_test;

constexpr int32_t kNational = 0;  // national document
constexpr int32_t kNative = 1;
constexpr int32_t kEbcdic = 3;
constexpr uint32_t kNum = DM_CLASS_NUMERIC_EDITED;
constexpr uint32_t kAlnum = DM_CLASS_ALNUM_EDITED;

enum SignPosition : uint32_t {
    kTrailing = 1,
    kLeading = 2,
    kTrailingSep = 3,
    kLeadingSep = 4
};

dm_item_desc alnum(uint32_t length)
{
    return describe(DM_CLASS_ALPHANUMERIC, DM_USAGE_DISPLAY, length);
}

dm_item_desc national(uint32_t length, uint32_t classCode = DM_CLASS_NATIONAL)
{
    return describe(classCode, DM_USAGE_NATIONAL, length);
}

dm_item_desc numeric(uint32_t usage, uint32_t length, uint32_t digits, uint32_t scale = 0,
                     bool isSigned = false)
{
    return describe(DM_CLASS_NUMERIC, usage, length, digits, scale, isSigned);
}

dm_item_desc display(uint32_t length, uint32_t digits, uint32_t scale = 0, bool isSigned = false,
                     uint32_t signPosition = 0)
{
    return describe(DM_CLASS_NUMERIC, DM_USAGE_DISPLAY, length, digits, scale, isSigned,
                    signPosition);
}

dm_item_desc edited(uint32_t classCode, const char *picture, uint32_t length,
                    uint32_t usage = DM_USAGE_DISPLAY)
{
    return describe(classCode, usage, length, 0, 0, false, 0, picture);
}

template <typename T>
std::string bytes_of(T value)
{
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

std::string utf16(const std::u16string &units)
{
    return std::string(reinterpret_cast<const char *>(units.data()), units.size() * 2);
}

std::string machine_order(std::string bigEndian)
{
    if (__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__)
        return std::string(bigEndian.rbegin(), bigEndian.rend());
    return bigEndian;
}

std::string b(const char *bytes, size_t n) { return std::string(bytes, n); }

// Text stored into an item that held other bytes: the item's golden bytes
// and the status; a stored item then reads back as `back` (UTF-8). A
// refused text leaves the item's defined value (zero, or spaces).
struct StoreRow {
    const char *what;
    int32_t kind;
    dm_item_desc desc;
    std::string text;
    std::string item;
    std::string back;
    int32_t status = 0;
    int32_t point = 0;  // the decimal point the handle is opened with
};

TEST(DataMapTest, StoresGoldenBytesAndReadsThemBack)
{
    // clang-format off
    const StoreRow rows[] = {
        // Alphanumeric: code page bytes, padding, cutting, unconvertible characters.
        {"IBM-1140", kEbcdic, alnum(14), "<?xml []09Az\xC3\xA4\xE2\x82\xAC", "\x4C\x6F\xA7\x94\x93\x40\xBA\xBB\xF0\xF9\xC1\xA9\x43\x9F", "<?xml []09Az\xC3\xA4\xE2\x82\xAC"},
        {"EBCDIC line feed and nul", kEbcdic, alnum(2), b("\n\0", 2), b("\x25\x00", 2), b("\n\0", 2)},
        {"EBCDIC padded", kEbcdic, alnum(4), "ab", "\x81\x82\x40\x40", "ab  "},
        {"EBCDIC cut", kEbcdic, alnum(3), "abcdef", "\x81\x82\x83", "abc"},
        {"outside the page", kEbcdic, alnum(3), "a\xE4\xB8\xAD" "b", "\x81\x3F\x82", "a\x1A" "b"},
        {"malformed UTF-8 in EBCDIC", kEbcdic, alnum(3), "a\xFF" "b", "\x81\x3F\x82", "a\x1A" "b"},
        {"native padded", kNative, alnum(5), "abc", "abc  ", "abc  "},
        {"native cut", kNative, alnum(5), "abcdefg", "abcde", "abcde"},
        {"native empty text", kNative, alnum(3), "", "   ", "   "},
        {"multibyte kept", kNative, alnum(4), "ab\xC3\xA9", "ab\xC3\xA9", "ab\xC3\xA9"},
        {"multibyte never split", kNative, alnum(4), "abc\xC3\xA9", "abc ", "abc "},
        {"euro never split", kNative, alnum(3), "a\xE2\x82\xAC", "a  ", "a  "},
        {"malformed becomes ?", kNative, alnum(3), "a\xFF" "b", "a?b", "a?b"},
        {"zero length item", kNative, alnum(0), "abc", "", ""},
        {"alphabetic", kNative, describe(DM_CLASS_ALPHABETIC, DM_USAGE_DISPLAY, 4), "AB", "AB  ", "AB  "},
        // National: UTF-16 padded with spaces, pairs never split.
        {"national", kNational, national(8), "a\xE2\x82\xAC\xF0\x9F\x98\x80", utf16(u"a\u20AC\U0001F600"), "a\xE2\x82\xAC\xF0\x9F\x98\x80"},
        {"national padded", kEbcdic, national(8), "ab", utf16(u"ab  "), "ab  "},
        {"national empty", kNational, national(4), "", utf16(u"  "), "  "},
        {"pair never split", kNational, national(4), "a\xF0\x9F\x98\x80", utf16(u"a "), "a "},
        {"national malformed", kNational, national(2), "\xFF", utf16(u"\uFFFD"), "\xEF\xBF\xBD"},
        {"DBCS as national", kEbcdic, national(4, DM_CLASS_DBCS), "abc", utf16(u"ab"), "ab"},
        {"odd length pads the last byte", kNational, national(5), "a", utf16(u"a ") + " ", "a "},
        // Numeric DISPLAY, every sign position.
        {"unsigned", kNative, display(5, 5), "  42  ", "00042", "42"},
        {"unsigned takes the absolute value", kNative, display(3, 3), "-7", "007", "7"},
        {"trailing embedded minus", kNative, display(5, 5, 2, true, kTrailing), "-1.5", "0015p", "-1.50"},
        {"trailing embedded plus", kNative, display(5, 5, 2, true, kTrailing), "1.5", "00150", "1.50"},
        {"sign code 0 when signed", kNative, display(3, 3, 0, true, 0), "-9", "00y", "-9"},
        {"leading embedded", kNative, display(3, 3, 0, true, kLeading), "-12", "p12", "-12"},
        {"trailing separate", kNative, display(4, 3, 0, true, kTrailingSep), "-12", "012-", "-12"},
        {"leading separate", kNative, display(4, 3, 0, true, kLeadingSep), "12", "+012", "12"},
        {"cut on both sides", kNative, display(4, 4, 1), "12345.67", "3456", "345.6"},
        {"decimals padded", kNative, display(4, 4, 3), ".5", "0500", "0.500"},
        {"grouping ignored", kNative, display(6, 6, 1), "1,234.5", "012345", "1234.5"},
        {"trailing minus", kNative, display(3, 3, 0, true, kTrailing), "12-", "01r", "-12"},
        {"trailing CR", kNative, display(3, 3, 0, true, kTrailing), "12 CR", "01r", "-12"},
        {"negative zero is zero", kNative, display(2, 2, 0, true, kTrailing), "-0", "00", "0"},
        {"comma decimal point", kNative, display(6, 6, 1), "1.234,5", "012345", "1234,5", 0, ','},
        {"EBCDIC unsigned", kEbcdic, display(3, 3), "12", "\xF0\xF1\xF2", "12"},
        {"EBCDIC plus zone", kEbcdic, display(3, 3, 0, true, kTrailing), "12", "\xF0\xF1\xC2", "12"},
        {"EBCDIC minus zone", kEbcdic, display(3, 3, 0, true, kTrailing), "-12", "\xF0\xF1\xD2", "-12"},
        {"EBCDIC leading separate", kEbcdic, display(3, 2, 0, true, kLeadingSep), "-5", "\x60\xF0\xF5", "-5"},
        // Binary, big-endian unless native (COMP-5).
        {"binary negative", kNative, numeric(DM_USAGE_BINARY, 2, 4, 0, true), "-2", "\xFF\xFE", "-2"},
        {"binary big-endian", kNative, numeric(DM_USAGE_BINARY, 2, 4, 0, true), "1234", "\x04\xD2", "1234"},
        {"binary cut to digits", kNative, numeric(DM_USAGE_BINARY, 2, 4), "12345", "\x09\x29", "2345"},
        {"binary unsigned absolute", kNative, numeric(DM_USAGE_BINARY, 2, 4), "-5", b("\x00\x05", 2), "5"},
        {"binary with decimals", kEbcdic, numeric(DM_USAGE_BINARY, 4, 5, 2, true), "-1.5", "\xFF\xFF\xFF\x6A", "-1.50"},
        {"largest 8-byte", kNative, numeric(DM_USAGE_BINARY, 8, 0, 0, true), "9223372036854775807", "\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF", "9223372036854775807"},
        {"smallest 8-byte", kNative, numeric(DM_USAGE_BINARY, 8, 0, 0, true), "-9223372036854775808", b("\x80\0\0\0\0\0\0\0", 8), "-9223372036854775808"},
        {"largest unsigned 8-byte", kNative, numeric(DM_USAGE_BINARY, 8, 0), "18446744073709551615", std::string(8, '\xFF'), "18446744073709551615"},
        {"comp-5 machine order", kNative, numeric(DM_USAGE_COMP5, 4, 9, 0, true), "-2", machine_order("\xFF\xFF\xFF\xFE"), "-2"},
        {"comp-x unsigned", kNative, numeric(DM_USAGE_COMPX, 2, 0, 0, true), "65535", "\xFF\xFF", "65535"},
        {"comp-x three bytes", kNative, numeric(DM_USAGE_COMPX, 3, 0), "65536", b("\x01\x00\x00", 3), "65536"},
        // Packed.
        {"packed minus", kNative, numeric(DM_USAGE_PACKED, 3, 5, 0, true), "-123", b("\x00\x12\x3D", 3), "-123"},
        {"packed plus", kNative, numeric(DM_USAGE_PACKED, 3, 5, 0, true), "123", b("\x00\x12\x3C", 3), "123"},
        {"packed unsigned", kEbcdic, numeric(DM_USAGE_PACKED, 3, 5), "-123", b("\x00\x12\x3F", 3), "123"},
        {"packed decimals", kNative, numeric(DM_USAGE_PACKED, 3, 5, 2, true), "12.34", "\x01\x23\x4C", "12.34"},
        {"packed cut to digits", kNative, numeric(DM_USAGE_PACKED, 2, 3, 0, true), "98765", "\x76\x5C", "765"},
        {"comp-6", kNative, numeric(DM_USAGE_COMP6, 2, 4), "123", "\x01\x23", "123"},
        {"comp-6 odd digits", kNative, numeric(DM_USAGE_COMP6, 2, 3, 1), "-45.6", "\x04\x56", "45.6"},
        // Floating point: the shortest text that reads back the same.
        {"comp-1", kNative, numeric(DM_USAGE_COMP1, 4, 0), "0.1", bytes_of(0.1f), "0.1"},
        {"comp-2", kNative, numeric(DM_USAGE_COMP2, 8, 0), " -0.1 ", bytes_of(-0.1), "-0.1"},
        {"comp-2 exponent", kNative, numeric(DM_USAGE_COMP2, 8, 0), "1e20", bytes_of(1e20), "1E+20"},
        {"comp-2 plus sign", kEbcdic, numeric(DM_USAGE_COMP2, 8, 0), "+2.50", bytes_of(2.5), "2.5"},
        // Refused texts leave zero.
        {"letters", kNative, display(4, 4), "12a", "0000", "", 1},
        {"empty", kNative, display(2, 2), "", "00", "", 1},
        {"only a sign", kNative, display(2, 2), "-", "00", "", 1},
        {"two decimal points", kNative, display(3, 3, 1), "1.2.3", "000", "", 1},
        {"two signs", kNative, display(3, 3, 0, true, kTrailing), "-12-", "000", "", 1},
        {"EBCDIC zero", kEbcdic, display(2, 2, 0, true, kTrailing), "x", "\xF0\xC0", "", 1},
        {"separate sign zero", kNative, display(3, 2, 0, true, kLeadingSep), "?", "+00", "", 1},
        {"packed zero", kNative, numeric(DM_USAGE_PACKED, 2, 3, 0, true), "x", b("\x00\x0C", 2), "", 1},
        {"binary too long", kNative, numeric(DM_USAGE_BINARY, 9, 0), "1", std::string(9, '\0'), "", 1},
        {"comp-1 of the wrong size", kNative, numeric(DM_USAGE_COMP1, 8, 0), "1", std::string(8, '\0'), "", 1},
        {"float text", kNative, numeric(DM_USAGE_COMP2, 8, 0), "1.5x", std::string(8, '\0'), "", 1},
        {"sign code out of range", kNative, display(3, 3, 0, true, 9), "1", "000", "", 1},
        // Numeric-edited: an edited item reads back as its stored text.
        {"Z suppression", kNative, edited(kNum, "ZZZ9.99", 7), "5", "   5.00", "   5.00"},
        {"repeat count, decimals cut", kNative, edited(kNum, "Z(3)9.99", 7), "1234.567", "1234.56", "1234.56"},
        {"comma kept", kNative, edited(kNum, "Z,ZZ9.99", 8), "1234.5", "1,234.50", "1,234.50"},
        {"comma suppressed", kNative, edited(kNum, "Z,ZZ9.99", 8), "12", "   12.00", "   12.00"},
        {"all Z and zero", kNative, edited(kNum, "ZZZ.ZZ", 6), "0", "      ", "      "},
        {"all Z, decimals", kNative, edited(kNum, "ZZZ.ZZ", 6), "0.05", "   .05", "   .05"},
        {"check protection", kNative, edited(kNum, "**,**9", 6), "12", "****12", "****12"},
        {"floating currency", kNative, edited(kNum, "$$,$$9.99", 9), "123", "  $123.00", "  $123.00"},
        {"floating currency cut", kNative, edited(kNum, "$$,$$9.99", 9), "12345", "$2,345.00", "$2,345.00"},
        {"fixed currency", kNative, edited(kNum, "$ZZ9", 4), "7", "$  7", "$  7"},
        {"floating plus, negative", kNative, edited(kNum, "+++9", 4), "-5", "  -5", "  -5"},
        {"floating plus, positive", kNative, edited(kNum, "+++9", 4), "5", "  +5", "  +5"},
        {"floating minus, positive", kNative, edited(kNum, "---9", 4), "5", "   5", "   5"},
        {"trailing minus", kNative, edited(kNum, "ZZ9-", 4), "-5", "  5-", "  5-"},
        {"leading minus", kNative, edited(kNum, "-ZZ9", 4), "-5", "-  5", "-  5"},
        {"leading plus", kNative, edited(kNum, "+ZZ9", 4), "5", "+  5", "+  5"},
        {"CR", kNative, edited(kNum, "ZZ9CR", 5), "-5", "  5CR", "  5CR"},
        {"cr when positive", kNative, edited(kNum, "ZZ9cr", 5), "5", "  5  ", "  5  "},
        {"DB", kNative, edited(kNum, "ZZ9DB", 5), "-12", " 12DB", " 12DB"},
        {"slash insertion", kNative, edited(kNum, "99/99/99", 8), "123199", "12/31/99", "12/31/99"},
        {"B and 0 insertion", kNative, edited(kNum, "99B9990", 7), "1234", "01 2340", "01 2340"},
        {"lower-case v", kNative, edited(kNum, "zz9v99", 5), "1.5", "  150", "  150"},
        {"comma decimal point swaps symbols", kNative, edited(kNum, "Z.ZZ9,99", 8), "1234,5", "1.234,50", "1.234,50", 0, ','},
        {"edited in EBCDIC", kEbcdic, edited(kNum, "-Z9.9", 5), "-1.5", "\x60\x40\xF1\x4B\xF5", "- 1.5"},
        {"national edited", kNational, edited(kNum, "ZZ9.99", 12, DM_USAGE_NATIONAL), "7.5", utf16(u"  7.50"), "  7.50"},
        // Alphanumeric-edited.
        {"B insertion", kNative, edited(kAlnum, "XXBXX", 5), "abcd", "ab cd", "ab cd"},
        {"slashes", kNative, edited(kAlnum, "99/99/9999", 10), "12312024", "12/31/2024", "12/31/2024"},
        {"0 insertion", kNative, edited(kAlnum, "X(3)0X", 5), "abcd", "abc0d", "abc0d"},
        {"short text", kNative, edited(kAlnum, "XBX", 3), "a", "a  ", "a  "},
        {"multibyte character", kNative, edited(kAlnum, "XXBX", 5), "a\xC3\xA9" "b", "a\xC3\xA9 b", "a\xC3\xA9 b"},
        {"no picture moves plainly", kNative, edited(kAlnum, nullptr, 4), "ab", "ab  ", "ab  "},
        // Bad pictures or texts leave spaces.
        {"no picture", kNative, edited(kNum, nullptr, 4), "1", "    ", "", 1},
        {"unclosed count", kNative, edited(kNum, "Z(3", 4), "1", "    ", "", 1},
        {"count without symbol", kNative, edited(kNum, "(3)9", 4), "1", "    ", "", 1},
        {"zero count", kNative, edited(kNum, "9(0)", 4), "1", "    ", "", 1},
        {"huge count", kNative, edited(kNum, "9(99999999999)", 4), "1", "    ", "", 1},
        {"X in numeric", kNative, edited(kNum, "XX9", 4), "1", "    ", "", 1},
        {"not a number", kNative, edited(kNum, "ZZ9", 4), "abc", "    ", "", 1},
        {"unknown symbol", kNative, edited(kAlnum, "X(2)Q", 4), "ab", "    ", "", 1},
    };
    // clang-format on
    for (const StoreRow &r : rows) {
        SCOPED_TRACE(r.what);
        MapHandle map = open_map(r.kind, r.point);
        ASSERT_NE(map, nullptr);
        int32_t status = -1;
        EXPECT_EQ(store(map.get(), r.desc, r.text, &status), r.item);
        EXPECT_EQ(status, r.status);
        if (r.status == 0) {
            EXPECT_EQ(fetch(map.get(), r.desc, r.item, DM_FORM_UTF8, &status), r.back);
            EXPECT_EQ(status, 0);
        }
    }
}

// Items read in a given form: the text (with no terminator outside the UTF-8
// form) and the status. Invalid item data gives no text.
TEST(DataMapTest, ReadsItemsInEveryForm)
{
    const double inf = std::numeric_limits<double>::infinity();
    const struct {
        const char *what;
        int32_t kind;
        dm_item_desc desc;
        std::string item;
        int32_t form;
        std::string text;
        int32_t status;
        int32_t point;
    } rows[] = {
        // clang-format off
        {"trailing spaces kept", kNative, alnum(7), "<a/>   ", DM_FORM_UTF8, "<a/>   ", 0, 0},
        {"malformed byte replaced", kNative, alnum(2), "a\xFF", DM_FORM_UTF8, "a\xEF\xBF\xBD", 0, 0},
        {"every national unit", kNational, national(24), utf16(u"<a>\u20AC\U0001F600</a>  "), DM_FORM_UTF8, "<a>\xE2\x82\xAC\xF0\x9F\x98\x80</a>  ", 0, 0},
        {"a pair across the pieces read", kNational, national(8196), utf16(std::u16string(4095, u'a') + u"\U0001F600b"), DM_FORM_UTF8, std::string(4095, 'a') + "\xF0\x9F\x98\x80" + "b", 0, 0},
        {"float form", kNative, numeric(DM_USAGE_COMP1, 4, 0), bytes_of(-2.25f), DM_FORM_FLOAT, "-2.25", 0, 0},
        {"double form, comma point", kNative, numeric(DM_USAGE_COMP2, 8, 0), bytes_of(2.5), DM_FORM_DOUBLE, "2,5", 0, ','},
        {"not a number", kNative, numeric(DM_USAGE_COMP2, 8, 0), bytes_of(std::numeric_limits<double>::quiet_NaN()), DM_FORM_DOUBLE, "NaN", 0, 0},
        {"minus infinity", kNative, numeric(DM_USAGE_COMP2, 8, 0), bytes_of(-inf), DM_FORM_DOUBLE, "-INF", 0, 0},
        {"packed without sign", kNative, numeric(DM_USAGE_PACKED, 2, 3, 0, true), "\x12\x34", DM_FORM_UTF8, "", 1, 0},
        {"packed bad digit", kNative, numeric(DM_USAGE_PACKED, 2, 3, 0, true), "\x1A\x3C", DM_FORM_UTF8, "", 1, 0},
        {"display bad digit", kNative, display(2, 2), "1\xFF", DM_FORM_UTF8, "", 1, 0},
        {"display spaces read as zeros", kNative, display(3, 3), " 1 ", DM_FORM_UTF8, "10", 0, 0},
    };
    // clang-format on
    for (const auto &r : rows) {
        SCOPED_TRACE(r.what);
        MapHandle map = open_map(r.kind, r.point);
        ASSERT_NE(map, nullptr);
        int32_t status = -1;
        EXPECT_EQ(fetch(map.get(), r.desc, r.item, r.form, &status), r.text);
        EXPECT_EQ(status, r.status);
    }
}

TEST(DataMapTest, EveryEbcdicByteRoundTrips)
{
    MapHandle map = open_map(kEbcdic);
    std::string all(256, '\0');
    for (int i = 0; i < 256; ++i)
        all[i] = static_cast<char>(i);
    int32_t status = -1;
    const std::string text = fetch(map.get(), alnum(256), all, DM_FORM_UTF8, &status);
    EXPECT_EQ(store(map.get(), alnum(256), text, &status), all);
}

// Sets an environment variable for its lifetime.
struct ScopedEnv {
    const char *name;
    ScopedEnv(const char *variable, const char *value) : name(variable) { setenv(name, value, 1); }
    ~ScopedEnv() { unsetenv(name); }
};

TEST(DataMapTest, CodePageSettings)
{
    const struct {
        const char *variable;
        const char *value;
        int32_t kind;
        std::string text;
        std::string item;
    } rows[] = {
        // clang-format off
        {"CBLXML_PROGRAM_DATA", "EBCDIC", kNative, "A0", "\xC1\xF0"},  // every handle is EBCDIC
        // 037 has the currency sign where 1140 has the euro, and no euro at all.
        {"CBLXML_EBCDIC_CODEPAGE", "IBM-037", kEbcdic, "<?xml \xC2\xA4\xE2\x82\xAC", "\x4C\x6F\xA7\x94\x93\x40\x9F\x3F"},
        {"CBLXML_EBCDIC_CODEPAGE", "IBM1140", kEbcdic, "A\xE2\x82\xAC", "\xC1\x9F"},
        {"CBLXML_EBCDIC_CODEPAGE", "CP1140", kEbcdic, "A", "\xC1"},
        {"CBLXML_EBCDIC_CODEPAGE", "ibm-1140", kEbcdic, "A", "\xC1"},
        {"CBLXML_EBCDIC_CODEPAGE", "CCSID-1140", kEbcdic, "A", "\xC1"},
        {"CBLXML_EBCDIC_CODEPAGE", "CP037", kEbcdic, "A\xC2\xA4", "\xC1\x9F"},
        {"CBLXML_EBCDIC_CODEPAGE", "IBM-37", kEbcdic, "A\xC2\xA4", "\xC1\x9F"},
    };
    // clang-format on
    for (const auto &r : rows) {
        SCOPED_TRACE(r.value);
        ScopedEnv setting(r.variable, r.value);
        MapHandle map = open_map(r.kind);
        ASSERT_NE(map, nullptr);
        int32_t status = -1;
        const dm_item_desc desc = alnum(static_cast<uint32_t>(r.item.size()));
        EXPECT_EQ(store(map.get(), desc, r.text, &status), r.item);
    }
    ScopedEnv unknown("CBLXML_EBCDIC_CODEPAGE", "NO-SUCH-PAGE");
    EXPECT_EQ(DMInit(kEbcdic, 0, 0, 0, 0), nullptr);
    EXPECT_NE(open_map(kNative), nullptr) << "native handles do not need the EBCDIC page";
}

TEST(DataMapTest, TooSmallRoomWritesNothingBeyondIt)
{
    MapHandle map = open_map(kEbcdic);
    const dm_item_desc desc = alnum(3);
    const std::string item = "\x81\x9F\x82";  // a, euro, b: 5 UTF-8 bytes and the terminator
    for (uint32_t room = 0; room <= 6; ++room) {
        std::string text(8, 'x');
        uint32_t length = room;
        const int32_t status =
            DMGetCblData(map.get(), &desc, item.data(), DM_FORM_UTF8, text.data(), &length);
        EXPECT_EQ(status, room < 6 ? 1 : 0) << room;
        EXPECT_EQ(length, room < 6 ? 0u : 6u) << room;
        EXPECT_EQ(text.substr(room), std::string(8 - room, 'x')) << room;
        if (room == 6) {
            EXPECT_EQ(text.substr(0, 6), b("a\xE2\x82\xAC"
                                           "b\0",
                                           6));
        }
    }
    // Float forms give no terminator: a room of the text's size is enough.
    const dm_item_desc real = numeric(DM_USAGE_COMP1, 4, 0);
    const std::string value = bytes_of(-2.25f);
    char text[5];
    uint32_t length = sizeof text;
    EXPECT_EQ(DMGetCblData(map.get(), &real, value.data(), DM_FORM_FLOAT, text, &length), 0);
    EXPECT_EQ(std::string(text, length), "-2.25");
}

TEST(DataMapTest, StoredSizeFitsTheTextExactly)
{
    const struct {
        int32_t kind;
        dm_item_desc desc;
        std::string utf8;
        uint32_t size;
    } rows[] = {
        {kEbcdic, alnum(1), "a\xE2\x82\xAC", 2},          {kEbcdic, alnum(1), "a\xE4\xB8\xAD", 2},
        {kNative, alnum(1), "a\xE2\x82\xAC", 4},          {kNative, alnum(1), "a\xFF\xFF", 3},
        {kNational, national(2), "a\xF0\x9F\x98\x80", 6}, {kNational, national(2), "", 0},
    };
    for (const auto &r : rows) {
        MapHandle map = open_map(r.kind);
        const auto length = static_cast<uint32_t>(r.utf8.size());
        const uint32_t size =
            cblxml::platform::dm_stored_size(map.get(), &r.desc, r.utf8.data(), length);
        EXPECT_EQ(size, r.size) << r.utf8;
        dm_item_desc exact = r.desc;
        exact.length = size;
        int32_t status = -1;
        const std::string item = store(map.get(), exact, r.utf8, &status);
        // Nothing was padded: the last stored character is the text's own.
        if (size > 0) {
            EXPECT_NE(item.back(), r.kind == kEbcdic ? '\x40' : ' ') << r.utf8;
        }
    }
    EXPECT_EQ(cblxml::platform::dm_stored_size(nullptr, &rows[0].desc, "a", 1), 0u);
}

TEST(DataMapTest, RefusedArgumentsLeaveTheItemAlone)
{
    MapHandle map = open_map(kNative);
    const dm_item_desc desc = alnum(3);
    char item[3] = {'a', 'b', 'c'};
    char text[8];
    uint32_t length = sizeof text;
    EXPECT_EQ(DMGetCblData(nullptr, &desc, item, DM_FORM_UTF8, text, &length), 1);
    EXPECT_EQ(DMGetCblData(map.get(), nullptr, item, DM_FORM_UTF8, text, &length), 1);
    length = sizeof text;
    EXPECT_EQ(DMGetCblData(map.get(), &desc, nullptr, DM_FORM_UTF8, text, &length), 1);
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(DMGetCblData(map.get(), &desc, item, DM_FORM_UTF8, nullptr, &length), 1);
    EXPECT_EQ(DMGetCblData(map.get(), &desc, item, DM_FORM_UTF8, text, nullptr), 1);
    EXPECT_EQ(DMSetCblData(nullptr, &desc, item, DM_FORM_UTF8, "x", 1), 1);
    EXPECT_EQ(DMSetCblData(map.get(), nullptr, item, DM_FORM_UTF8, "x", 1), 1);
    EXPECT_EQ(DMSetCblData(map.get(), &desc, nullptr, DM_FORM_UTF8, "x", 1), 1);
    EXPECT_EQ(std::string(item, 3), "abc");
    DMTerm(nullptr);
    // An unsupported description: nothing stored, no text.
    for (const dm_item_desc &bad :
         {describe(99, DM_USAGE_DISPLAY, 3), describe(0, 0, 3), describe(DM_CLASS_NUMERIC, 4, 3)}) {
        EXPECT_EQ(DMSetCblData(map.get(), &bad, item, DM_FORM_UTF8, "1", 1), 1);
        EXPECT_EQ(std::string(item, 3), "abc");
        std::memset(text, 'x', sizeof text);
        length = sizeof text;
        EXPECT_EQ(DMGetCblData(map.get(), &bad, item, DM_FORM_UTF8, text, &length), 1);
        EXPECT_EQ(length, 0u);
        EXPECT_EQ(text[0], '\0');
    }
    // A null text or an unknown form clears the item.
    MapHandle ebcdic = open_map(kEbcdic);
    EXPECT_EQ(DMSetCblData(ebcdic.get(), &desc, item, DM_FORM_UTF8, nullptr, 2), 1);
    EXPECT_EQ(std::string(item, 3), "\x40\x40\x40");
    std::memcpy(item, "abc", 3);
    EXPECT_EQ(DMSetCblData(ebcdic.get(), &desc, item, 7, "x", 1), 1);
    EXPECT_EQ(std::string(item, 3), "\x40\x40\x40");
    length = sizeof text;
    EXPECT_EQ(DMGetCblData(ebcdic.get(), &desc, item, 7, text, &length), 1);
    EXPECT_EQ(length, 0u);
}

}  // namespace
