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

struct Utf8Row {
    std::string utf8;
    std::u16string utf16;
};

const Utf8Row kUtf8Rows[] = {
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

TEST(Unicode, Utf8ToUtf16ReplacesWhatIsMalformed)
{
    for (const auto &r : kUtf8Rows) {
        EXPECT_EQ(utf8_to_utf16(r.utf8.data(), r.utf8.size()), r.utf16) << r.utf8;
        EXPECT_EQ(utf16_units_of_utf8(r.utf8.data(), r.utf8.size()), r.utf16.size()) << r.utf8;
    }
}

// The conversions take runs of ASCII in blocks: every row, placed at every
// offset of such a block and followed by ASCII, converts as on its own.
TEST(Unicode, AsciiBlocksAroundOtherTextConvertAlike)
{
    for (const auto &r : kUtf8Rows) {
        for (size_t before = 0; before < 34; before += 3) {
            const std::string ascii(before, 'x');
            const std::u16string wide(before, u'x');
            std::string utf8 = ascii;
            utf8.append(r.utf8).append(ascii).append("<").append(ascii);
            std::u16string utf16 = wide;
            utf16.append(r.utf16).append(wide).append(u"<").append(wide);
            EXPECT_EQ(utf8_to_utf16(utf8.data(), utf8.size()), utf16) << before << r.utf8;
            if (r.utf16.find(char16_t(0xFFFD)) == std::u16string::npos) {
                EXPECT_EQ(utf16_to_utf8(utf16.data(), utf16.size()), utf8) << before << r.utf8;
            }
        }
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
