// The line index answers in any order of lines, though the parser asks in
// document order: every answer must equal a walk from the start of the text.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "XmlDomHandlers/line_index.h"
#include "XmlDomHandlers/text_units.h"

namespace {

// Line starts by a plain walk: LF, CR LF and a lone CR end a line.
std::vector<uint32_t> walk(const std::u16string &text, uint32_t first)
{
    std::vector<uint32_t> starts{first};
    for (uint32_t i = 0; i < text.size(); ++i) {
        if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
            ++i;
        if (text[i] == u'\n' || text[i] == u'\r')
            starts.push_back(i + 1);
    }
    return starts;
}

uint32_t expected_start(const std::vector<uint32_t> &starts, uint64_t line, uint32_t length)
{
    if (line <= 1)
        return starts[0];
    return line - 1 < starts.size() ? starts[line - 1] : length;
}

using cblxml::LineIndex;

TEST(LineIndexTest, AnyOrderOfLinesGivesTheWalkedStarts)
{
    std::u16string many;
    for (int i = 0; i < 300; ++i)
        many += std::u16string(static_cast<size_t>(i % 7), u'x') + (i % 3 == 0   ? u"\r\n"
                                                                    : i % 3 == 1 ? u"\n"
                                                                                 : u"\r");
    const struct {
        std::u16string text;
        uint32_t first;
    } cases[] = {
        {u"", 0},
        {u"one line", 0},
        {u"a\nb\r\nc\rd\n\n\r\r\n", 0},
        {u"\xFEFF<a>\n<b/>\n</a>", 1},  // a mark the parser does not count
        {u"\r\n\r\n", 0},
        {many, 0},
    };
    for (const auto &c : cases) {
        const std::vector<uint32_t> starts = walk(c.text, c.first);
        const auto length = static_cast<uint32_t>(c.text.size());
        std::vector<uint64_t> order;
        for (uint64_t line = 0; line <= starts.size() + 2; ++line)
            order.push_back(line);  // forward
        for (uint64_t line = starts.size() + 2; line > 0; --line)
            order.push_back(line);  // backward
        for (uint64_t k = 0; k < 200; ++k)
            order.push_back((k * 7919) % (starts.size() + 3));  // scattered
        LineIndex index;
        index.reset(c.text.data(), length, c.first);
        for (uint64_t line : order)
            ASSERT_EQ(index.lineStart(line), expected_start(starts, line, length))
                << "line " << line << " of a text of " << length << " units";
    }
}

// The scans for a unit take blocks of units: whatever the range and wherever
// the units stand in it, they find what a plain walk finds.
TEST(LineIndexTest, UnitScansFindWhatAWalkFinds)
{
    for (int64_t size = 0; size < 80; ++size) {
        for (int64_t at = -1; at < size; ++at) {
            std::u16string text(static_cast<size_t>(size), u'x');
            if (at >= 0)
                text[static_cast<size_t>(at)] = u'<';
            if (at >= 5)
                text[static_cast<size_t>(at - 5)] = u'&';
            for (int64_t from : {int64_t{0}, int64_t{3}}) {
                int64_t first = size, last = from - 1;
                for (int64_t i = size - 1; i >= from; --i)
                    first = (text[i] == u'<' || text[i] == u'&') ? i : first;
                for (int64_t i = from; i < size; ++i)
                    last = (text[i] == u'<' || text[i] == u'&') ? i : last;
                if (from > size)
                    continue;
                EXPECT_EQ(cblxml::find_either(text.data(), from, size, u'<', u'&'), first)
                    << size << " " << at;
                EXPECT_EQ(cblxml::find_last_either(text.data(), from, size, u'<', u'&'), last)
                    << size << " " << at;
            }
        }
    }
}

}  // namespace
