// The data map: alphanumeric and national items <-> UTF-8 text, handles,
// code pages and argument checks.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "cblxml.h"
#include "datamap.h"
#include "platform/platform.h"

namespace {

using cblxml_test::describe;
using cblxml_test::open_map;
using Handle = cblxml_test::MapHandle;

constexpr int32_t kNationalDocument = 0;
constexpr int32_t kNativeData = 1;
constexpr int32_t kEbcdicData = 3;

dm_item_desc alphanumeric(uint32_t length) {
    return describe(DM_CLASS_ALPHANUMERIC, DM_USAGE_DISPLAY, length);
}
dm_item_desc national(uint32_t length) {
    return describe(DM_CLASS_NATIONAL, DM_USAGE_NATIONAL, length);
}

// Stores `text` into an item of the description and returns the item bytes.
std::string store(void *handle, const dm_item_desc &desc, const std::string &text) {
    int32_t status = -1;
    const std::string item = cblxml_test::store(handle, desc, text, &status, '\x01');
    EXPECT_EQ(status, 0);
    return item;
}

// The UTF-8 text of an item.
std::string fetch(void *handle, const dm_item_desc &desc, const std::string &item) {
    int32_t status = -1;
    const std::string text = cblxml_test::fetch(handle, desc, item, DM_FORM_UTF8, &status);
    EXPECT_EQ(status, 0);
    return text;
}

std::u16string national_units(const std::string &item) {
    std::u16string units(item.size() / 2, u'\0');
    std::memcpy(units.data(), item.data(), units.size() * 2);
    return units;
}

class ScopedEnv {
public:
    ScopedEnv(const char *name, const char *value) : name_(name) {
        const char *old = std::getenv(name);
        had_ = old != nullptr;
        if (had_)
            old_ = old;
        setenv(name, value, 1);
    }
    ~ScopedEnv() {
        if (had_)
            setenv(name_, old_.c_str(), 1);
        else
            unsetenv(name_);
    }

private:
    const char *name_;
    bool had_;
    std::string old_;
};

// --- EBCDIC (IBM-1140 by default) -------------------------------------------

struct EbcdicCase {
    const char *what;
    std::string utf8;
    std::string ebcdic;
    bool round_trips;
};

class EbcdicGolden : public ::testing::TestWithParam<EbcdicCase> {};

TEST_P(EbcdicGolden, StoresTheCodePageBytes) {
    const EbcdicCase &c = GetParam();
    Handle map = open_map(kEbcdicData);
    ASSERT_NE(map, nullptr);
    const dm_item_desc desc = alphanumeric(static_cast<uint32_t>(c.ebcdic.size()));
    const std::string item = store(map.get(), desc, c.utf8);
    EXPECT_EQ(item, c.ebcdic) << c.what;
    if (c.round_trips) {
        EXPECT_EQ(fetch(map.get(), desc, item), c.utf8) << c.what;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, EbcdicGolden,
    ::testing::Values(
        EbcdicCase{"declaration start", "<?xml ", "\x4C\x6F\xA7\x94\x93\x40", true},
        EbcdicCase{"euro sign", "\xE2\x82\xAC", "\x9F", true},
        EbcdicCase{"brackets", "[]", "\xBA\xBB", true},
        EbcdicCase{"digits", "0123456789", "\xF0\xF1\xF2\xF3\xF4\xF5\xF6\xF7\xF8\xF9", true},
        EbcdicCase{"letters", "Az", "\xC1\xA9", true},
        EbcdicCase{"a umlaut", "\xC3\xA4", "\x43", true},
        EbcdicCase{"padding", "ab", "\x81\x82\x40\x40", false},
        EbcdicCase{"cut on the right", "abcdef", "\x81\x82\x83", false},
        EbcdicCase{"character outside the page", "a\xE4\xB8\xAD" "b", "\x81\x3F\x82", false},
        EbcdicCase{"malformed UTF-8", "a\xFF" "b", "\x81\x3F\x82", false},
        EbcdicCase{"line feed and nul", std::string("\n\0", 2), std::string("\x25\x00", 2),
                   true}));

TEST(DataMapEbcdic, GetCountsTheTerminator) {
    Handle map = open_map(kEbcdicData);
    ASSERT_NE(map, nullptr);
    const dm_item_desc desc = alphanumeric(6);
    const std::string item = "\x4C\x6F\xA7\x94\x93\x40";
    char text[16];
    std::memset(text, 'x', sizeof text);
    uint32_t length = sizeof text;
    ASSERT_EQ(DMGetCblData(map.get(), &desc, item.data(), DM_FORM_UTF8, text, &length), 0);
    EXPECT_EQ(length, 7u);
    EXPECT_EQ(std::string(text, 7), std::string("<?xml \0", 7));
    EXPECT_EQ(text[7], 'x');
}

TEST(DataMapEbcdic, EveryByteRoundTrips) {
    Handle map = open_map(kEbcdicData);
    ASSERT_NE(map, nullptr);
    std::string all(256, '\0');
    for (int b = 0; b < 256; ++b)
        all[b] = static_cast<char>(b);
    const dm_item_desc desc = alphanumeric(256);
    EXPECT_EQ(store(map.get(), desc, fetch(map.get(), desc, all)), all);
}

TEST(DataMapEbcdic, ProgramDataSettingMakesEveryHandleEbcdic) {
    ScopedEnv data("CBLXML_PROGRAM_DATA", "EBCDIC");
    Handle map = open_map(kNativeData);
    ASSERT_NE(map, nullptr);
    EXPECT_EQ(store(map.get(), alphanumeric(2), "A0"), "\xC1\xF0");
}

TEST(DataMapEbcdic, CodePageSettingSelectsIbm037) {
    ScopedEnv page("CBLXML_EBCDIC_CODEPAGE", "IBM-037");
    Handle map = open_map(kEbcdicData);
    ASSERT_NE(map, nullptr);
    const dm_item_desc desc = alphanumeric(6);
    EXPECT_EQ(store(map.get(), desc, "<?xml "), "\x4C\x6F\xA7\x94\x93\x40");
    // 037 has the currency sign where 1140 has the euro, and no euro at all.
    const dm_item_desc one = alphanumeric(1);
    EXPECT_EQ(store(map.get(), one, "\xE2\x82\xAC"), "\x3F");
    EXPECT_EQ(fetch(map.get(), one, "\x9F"), "\xC2\xA4");
}

TEST(DataMapEbcdic, CodePageNamesInRunTimeSpellings) {
    for (const char *name : {"IBM-1140", "IBM1140", "CP1140", "ibm-1140", "CCSID-1140", "IBM037",
                             "CP037", "IBM-37"}) {
        ScopedEnv page("CBLXML_EBCDIC_CODEPAGE", name);
        Handle map = open_map(kEbcdicData);
        ASSERT_NE(map, nullptr) << name;
        EXPECT_EQ(store(map.get(), alphanumeric(1), "A"), "\xC1") << name;
    }
}

TEST(DataMapEbcdic, UnknownCodePageGivesNoHandle) {
    ScopedEnv page("CBLXML_EBCDIC_CODEPAGE", "NO-SUCH-PAGE");
    EXPECT_EQ(DMInit(kEbcdicData, 0, 0, 0, 0), nullptr);
    // Native handles do not need the EBCDIC page.
    Handle native = open_map(kNativeData);
    EXPECT_NE(native, nullptr);
}

// --- native alphanumeric --------------------------------------------------------

struct NativeCase {
    const char *what;
    std::string utf8;
    uint32_t length;
    std::string item;
};

class NativeAlphanumeric : public ::testing::TestWithParam<NativeCase> {};

TEST_P(NativeAlphanumeric, MovesLikeCobol) {
    const NativeCase &c = GetParam();
    Handle map = open_map(kNativeData);
    ASSERT_NE(map, nullptr);
    EXPECT_EQ(store(map.get(), alphanumeric(c.length), c.utf8), c.item) << c.what;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, NativeAlphanumeric,
    ::testing::Values(NativeCase{"exact", "abc", 3, "abc"},
                      NativeCase{"padded", "abc", 5, "abc  "},
                      NativeCase{"cut", "abcdefg", 5, "abcde"},
                      NativeCase{"empty text", "", 3, "   "},
                      NativeCase{"multibyte kept", "ab\xC3\xA9", 4, "ab\xC3\xA9"},
                      NativeCase{"multibyte never split", "abc\xC3\xA9", 4, "abc "},
                      NativeCase{"euro never split", "a\xE2\x82\xAC", 3, "a  "},
                      NativeCase{"malformed becomes ?", "a\xFF" "b", 3, "a?b"},
                      NativeCase{"zero length item", "abc", 0, ""}));

TEST(DataMapNative, GetGivesEveryByteIncludingTrailingSpaces) {
    Handle map = open_map(kNativeData);
    ASSERT_NE(map, nullptr);
    EXPECT_EQ(fetch(map.get(), alphanumeric(7), "<a/>   "), "<a/>   ");
    EXPECT_EQ(fetch(map.get(), alphanumeric(2), "\xC3\xA9"), "\xC3\xA9");
    EXPECT_EQ(fetch(map.get(), alphanumeric(2), "a\xFF"), "a\xEF\xBF\xBD");
    EXPECT_EQ(fetch(map.get(), alphanumeric(0), ""), "");
}

TEST(DataMapNative, AlphabeticItemsMoveAsAlphanumeric) {
    Handle map = open_map(kNativeData);
    ASSERT_NE(map, nullptr);
    EXPECT_EQ(store(map.get(), describe(DM_CLASS_ALPHABETIC, DM_USAGE_DISPLAY, 4), "AB"), "AB  ");
}

// --- national -------------------------------------------------------------------

struct NationalCase {
    const char *what;
    std::string utf8;
    uint32_t length;
    std::u16string units;
};

class NationalItems : public ::testing::TestWithParam<NationalCase> {};

TEST_P(NationalItems, StoreUtf16PaddedWithSpaces) {
    const NationalCase &c = GetParam();
    for (int32_t kind : {kNationalDocument, kEbcdicData}) {
        Handle map = open_map(kind);
        ASSERT_NE(map, nullptr);
        for (uint32_t class_code : {uint32_t{DM_CLASS_NATIONAL}, uint32_t{DM_CLASS_DBCS}}) {
            const dm_item_desc desc = describe(class_code, DM_USAGE_NATIONAL, c.length);
            EXPECT_EQ(national_units(store(map.get(), desc, c.utf8)), c.units) << c.what;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, NationalItems,
    ::testing::Values(NationalCase{"exact", "ab", 4, u"ab"},
                      NationalCase{"padded", "ab", 8, u"ab  "},
                      NationalCase{"cut", "abcdef", 4, u"ab"},
                      NationalCase{"euro", "\xE2\x82\xAC", 2, u"\u20AC"},
                      NationalCase{"pair kept", "\xF0\x9F\x98\x80", 4, u"\U0001F600"},
                      NationalCase{"pair never split", "a\xF0\x9F\x98\x80", 4, u"a "},
                      NationalCase{"malformed", "\xFF", 2, u"\uFFFD"},
                      NationalCase{"empty", "", 4, u"  "}));

TEST(DataMapNational, OddLengthPadsTheLastByteToo) {
    Handle map = open_map(kNationalDocument);
    ASSERT_NE(map, nullptr);
    const std::string item = store(map.get(), national(5), "a");
    EXPECT_EQ(national_units(item), u"a ");
    EXPECT_EQ(item[4], ' ');
    EXPECT_EQ(fetch(map.get(), national(5), item), "a ");
}

TEST(DataMapNational, GetConvertsEveryUnit) {
    Handle map = open_map(kNationalDocument);
    ASSERT_NE(map, nullptr);
    const std::u16string units = u"<a>\u20AC\U0001F600</a>  ";
    std::string item(units.size() * 2, '\0');
    std::memcpy(item.data(), units.data(), item.size());
    EXPECT_EQ(fetch(map.get(), national(static_cast<uint32_t>(item.size())), item),
              "<a>\xE2\x82\xAC\xF0\x9F\x98\x80</a>  ");
}

// --- sizes, rooms and forms -----------------------------------------------------

TEST(DataMapRoom, TooSmallRoomWritesNothingBeyondIt) {
    Handle map = open_map(kEbcdicData);
    ASSERT_NE(map, nullptr);
    const dm_item_desc desc = alphanumeric(3);
    const std::string item = "\x81\x9F\x82"; // a, euro, b: 5 UTF-8 bytes
    for (uint32_t room = 0; room <= 5; ++room) {
        std::string text(8, 'x');
        uint32_t length = room;
        EXPECT_EQ(DMGetCblData(map.get(), &desc, item.data(), DM_FORM_UTF8, text.data(), &length), 1)
            << room;
        EXPECT_EQ(length, 0u);
        EXPECT_EQ(text.substr(room), std::string(8 - room, 'x')) << room;
    }
    std::string text(8, 'x');
    uint32_t length = 6;
    EXPECT_EQ(DMGetCblData(map.get(), &desc, item.data(), DM_FORM_UTF8, text.data(), &length), 0);
    EXPECT_EQ(length, 6u);
    EXPECT_EQ(text, std::string("a\xE2\x82\xAC" "b\0xx", 8));
}

TEST(DataMapSize, StoredSizeFitsTheTextExactly) {
    struct SizeCase {
        int32_t kind;
        dm_item_desc desc;
        std::string utf8;
        uint32_t size;
    };
    const SizeCase cases[] = {
        {kEbcdicData, alphanumeric(1), "a\xE2\x82\xAC", 2},
        {kEbcdicData, alphanumeric(1), "a\xE4\xB8\xAD", 2},
        {kNativeData, alphanumeric(1), "a\xE2\x82\xAC", 4},
        {kNativeData, alphanumeric(1), "a\xFF\xFF", 3},
        {kNationalDocument, national(2), "a\xF0\x9F\x98\x80", 6},
        {kNationalDocument, national(2), "", 0},
    };
    for (const SizeCase &c : cases) {
        Handle map = open_map(c.kind);
        ASSERT_NE(map, nullptr);
        const uint32_t size = cblxml::platform::dm_stored_size(
            map.get(), &c.desc, c.utf8.data(), static_cast<uint32_t>(c.utf8.size()));
        EXPECT_EQ(size, c.size) << c.utf8;
        dm_item_desc exact = c.desc;
        exact.length = size;
        const std::string item = store(map.get(), exact, c.utf8);
        // Nothing was padded: the last stored character is the text's own.
        if (size > 0) {
            EXPECT_NE(item.back(), c.kind == kEbcdicData ? '\x40' : ' ') << c.utf8;
        }
    }
    EXPECT_EQ(cblxml::platform::dm_stored_size(nullptr, &cases[0].desc, "a", 1), 0u);
}

// --- argument checks ------------------------------------------------------------

TEST(DataMapArguments, NullArgumentsAreRefused) {
    Handle map = open_map(kNativeData);
    ASSERT_NE(map, nullptr);
    const dm_item_desc desc = alphanumeric(3);
    char item[3] = {'a', 'b', 'c'};
    char text[8];
    uint32_t length = sizeof text;
    EXPECT_EQ(DMGetCblData(nullptr, &desc, item, DM_FORM_UTF8, text, &length), 1);
    length = sizeof text;
    EXPECT_EQ(DMGetCblData(map.get(), nullptr, item, DM_FORM_UTF8, text, &length), 1);
    length = sizeof text;
    EXPECT_EQ(DMGetCblData(map.get(), &desc, nullptr, DM_FORM_UTF8, text, &length), 1);
    EXPECT_EQ(length, 0u);
    length = sizeof text;
    EXPECT_EQ(DMGetCblData(map.get(), &desc, item, DM_FORM_UTF8, nullptr, &length), 1);
    EXPECT_EQ(DMGetCblData(map.get(), &desc, item, DM_FORM_UTF8, text, nullptr), 1);
    EXPECT_EQ(DMSetCblData(nullptr, &desc, item, DM_FORM_UTF8, "x", 1), 1);
    EXPECT_EQ(DMSetCblData(map.get(), nullptr, item, DM_FORM_UTF8, "x", 1), 1);
    EXPECT_EQ(DMSetCblData(map.get(), &desc, nullptr, DM_FORM_UTF8, "x", 1), 1);
    EXPECT_EQ(std::string(item, 3), "abc");
    DMTerm(nullptr);
}

TEST(DataMapArguments, BadTextOrFormClearsTheItem) {
    Handle map = open_map(kEbcdicData);
    ASSERT_NE(map, nullptr);
    const dm_item_desc desc = alphanumeric(3);
    char item[3] = {'a', 'b', 'c'};
    EXPECT_EQ(DMSetCblData(map.get(), &desc, item, DM_FORM_UTF8, nullptr, 2), 1);
    EXPECT_EQ(std::string(item, 3), "\x40\x40\x40");
    std::memcpy(item, "abc", 3);
    EXPECT_EQ(DMSetCblData(map.get(), &desc, item, 7, "x", 1), 1);
    EXPECT_EQ(std::string(item, 3), "\x40\x40\x40");
    char text[8];
    uint32_t length = sizeof text;
    EXPECT_EQ(DMGetCblData(map.get(), &desc, item, 7, text, &length), 1);
    EXPECT_EQ(length, 0u);
}

TEST(DataMapArguments, UnsupportedDescriptionLeavesTheItemAlone) {
    Handle map = open_map(kNativeData);
    ASSERT_NE(map, nullptr);
    for (const dm_item_desc &desc : {describe(99, DM_USAGE_DISPLAY, 3), describe(0, 0, 3),
                                     describe(DM_CLASS_NUMERIC, 4, 3)}) {
        char item[3] = {'a', 'b', 'c'};
        EXPECT_EQ(DMSetCblData(map.get(), &desc, item, DM_FORM_UTF8, "1", 1), 1);
        EXPECT_EQ(std::string(item, 3), "abc");
        char text[8] = "xxxxxxx";
        uint32_t length = sizeof text;
        EXPECT_EQ(DMGetCblData(map.get(), &desc, item, DM_FORM_UTF8, text, &length), 1);
        EXPECT_EQ(length, 0u);
        EXPECT_EQ(text[0], '\0');
    }
}

} // namespace
