// UTF-8 <-> UTF-16 conversions of the platform layer: every scalar value
// round-trips; malformed input becomes replacement characters.
#include <gtest/gtest.h>

#include <string>

#include "platform/platform.h"
#include "platform/unicode.h"

using cblxml::platform::utf16_to_utf8;
using cblxml::platform::utf16_units_of_utf8;
using cblxml::platform::utf8_to_utf16;

namespace {

TEST(Unicode, Utf8ToUtf16ReplacesWhatIsMalformed)
{
    const struct {
        std::string utf8;
        std::u16string utf16;
    } rows[] = {
        {"a\xC3\xA9\xE2\x82\xAC\xEF\xBF\xBF\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF",
         u"a\u00E9\u20AC\uFFFF\U0001F600\U0010FFFF"},
        {std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
        {"a\x80z", u"a\uFFFDz"},                            // lone continuation
        {"a\xE2\x82", u"a\uFFFD"},                          // truncated at the end
        {"\xE2\x82z", u"\uFFFDz"},                          // truncated, then ASCII
        {"\xC0\xAF", u"\uFFFD\uFFFD"},                      // overlong
        {"\xE0\x80\xAF", u"\uFFFD\uFFFD\uFFFD"},            // overlong, three bytes
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},            // an encoded surrogate
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // beyond U+10FFFF
        {"\xFF\xFE", u"\uFFFD\uFFFD"},                      // never a lead byte
        {"caf\xE9!", u"caf\uFFFD!"},                        // Latin-1
    };
    for (const auto &r : rows) {
        EXPECT_EQ(utf8_to_utf16(r.utf8.data(), r.utf8.size()), r.utf16) << r.utf8;
        EXPECT_EQ(utf16_units_of_utf8(r.utf8.data(), r.utf8.size()), r.utf16.size()) << r.utf8;
    }
}

TEST(Unicode, UnpairedSurrogatesBecomeQuestionMarks)
{
    const struct {
        std::u16string utf16;
        std::string utf8;
    } rows[] = {
        {std::u16string(1, char16_t(0xD83D)), "?"},
        {std::u16string{0xDE00, u'x'}, "?x"},
        {std::u16string{0xD83D, u'x'}, "?x"},
        {std::u16string{0xD83D, 0xD83D, 0xDE00}, "?\xF0\x9F\x98\x80"},
    };
    for (const auto &r : rows)
        EXPECT_EQ(utf16_to_utf8(r.utf16.data(), r.utf16.size()), r.utf8);
}

TEST(Unicode, EveryScalarValueRoundTrips)
{
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
    EXPECT_EQ(utf8.size(), 0x80 + 0x780 * 2 + (0x10000 - 0x800 - 0x800) * 3 + 0x100000 * 4);
    EXPECT_EQ(utf8_to_utf16(utf8.data(), utf8.size()), all);
    EXPECT_EQ(utf16_units_of_utf8(utf8.data(), utf8.size()), all.size());
    EXPECT_TRUE(utf8_to_utf16(nullptr, 5).empty());
    EXPECT_TRUE(utf16_to_utf8(nullptr, 5).empty());
    EXPECT_EQ(utf16_units_of_utf8(nullptr, 5), 0u);
}

}  // namespace
