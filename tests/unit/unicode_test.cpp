// UTF-8 <-> UTF-16 conversions of the platform layer.
#include <gtest/gtest.h>

#include <string>

#include "platform/platform.h"
#include "platform/unicode.h"

using cblxml::platform::utf16_to_utf8;
using cblxml::platform::utf16_units_of_utf8;
using cblxml::platform::utf8_to_utf16;

namespace {

struct Utf8Case {
    const char *what;
    std::string utf8;
    std::u16string utf16;
};

class Utf8ToUtf16 : public ::testing::TestWithParam<Utf8Case> {};

TEST_P(Utf8ToUtf16, ConvertsAndCounts) {
    const Utf8Case &c = GetParam();
    EXPECT_EQ(utf8_to_utf16(c.utf8.data(), c.utf8.size()), c.utf16) << c.what;
    EXPECT_EQ(utf16_units_of_utf8(c.utf8.data(), c.utf8.size()), c.utf16.size()) << c.what;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, Utf8ToUtf16,
    ::testing::Values(
        Utf8Case{"empty", "", u""}, Utf8Case{"ascii", "<a/>", u"<a/>"},
        Utf8Case{"embedded nul", std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
        Utf8Case{"two-byte", "\xC3\xA9", u"\u00E9"}, Utf8Case{"euro", "\xE2\x82\xAC", u"\u20AC"},
        Utf8Case{"last BMP", "\xEF\xBF\xBF", u"\uFFFF"},
        Utf8Case{"pair", "\xF0\x9F\x98\x80", u"\U0001F600"},
        Utf8Case{"last code point", "\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
        Utf8Case{"lone continuation", "a\x80z", u"a\uFFFDz"},
        Utf8Case{"truncated at end", "a\xE2\x82", u"a\uFFFD"},
        Utf8Case{"truncated then ascii", "\xE2\x82z", u"\uFFFDz"},
        Utf8Case{"overlong slash", "\xC0\xAF", u"\uFFFD\uFFFD"},
        Utf8Case{"overlong three-byte", "\xE0\x80\xAF", u"\uFFFD\uFFFD\uFFFD"},
        Utf8Case{"encoded surrogate", "\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},
        Utf8Case{"beyond U+10FFFF", "\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        Utf8Case{"never a lead byte", "\xFF\xFE", u"\uFFFD\uFFFD"},
        Utf8Case{"latin-1 text", "caf\xE9!", u"caf\uFFFD!"}));

struct Utf16Case {
    const char *what;
    std::u16string utf16;
    std::string utf8;
};

class Utf16ToUtf8 : public ::testing::TestWithParam<Utf16Case> {};

TEST_P(Utf16ToUtf8, Converts) {
    const Utf16Case &c = GetParam();
    EXPECT_EQ(utf16_to_utf8(c.utf16.data(), c.utf16.size()), c.utf8) << c.what;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, Utf16ToUtf8,
    ::testing::Values(Utf16Case{"empty", u"", ""}, Utf16Case{"ascii", u"abc", "abc"},
                      Utf16Case{"euro", u"\u20AC", "\xE2\x82\xAC"},
                      Utf16Case{"pair", u"\U0001F600", "\xF0\x9F\x98\x80"},
                      Utf16Case{"lone high at end", std::u16string(1, char16_t(0xD83D)), "?"},
                      Utf16Case{"lone low", std::u16string{0xDE00, u'x'}, "?x"},
                      Utf16Case{"high then ascii", std::u16string{0xD83D, u'x'}, "?x"},
                      Utf16Case{"two highs then low", std::u16string{0xD83D, 0xD83D, 0xDE00},
                                "?\xF0\x9F\x98\x80"}));

TEST(Unicode, EveryScalarValueRoundTrips) {
    std::u16string all;
    for (char32_t c = 0; c <= 0x10FFFF; ++c) {
        if (c >= 0xD800 && c <= 0xDFFF)
            continue;
        if (c > 0xFFFF) {
            all += static_cast<char16_t>(0xD800 | ((c - 0x10000) >> 10));
            all += static_cast<char16_t>(0xDC00 | ((c - 0x10000) & 0x3FF));
        } else {
            all += static_cast<char16_t>(c);
        }
    }
    const std::string utf8 = utf16_to_utf8(all.data(), all.size());
    EXPECT_EQ(utf8_to_utf16(utf8.data(), utf8.size()), all);
}

TEST(Unicode, NullInputGivesEmptyText) {
    EXPECT_TRUE(utf8_to_utf16(nullptr, 5).empty());
    EXPECT_TRUE(utf16_to_utf8(nullptr, 5).empty());
    EXPECT_EQ(utf16_units_of_utf8(nullptr, 5), 0u);
}

} // namespace
