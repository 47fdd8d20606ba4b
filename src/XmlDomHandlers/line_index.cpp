#include "XmlDomHandlers/line_index.h"

#include "XmlDomHandlers/text_units.h"

namespace cblxml {

void LineIndex::reset(const char16_t *newText, uint32_t length, uint32_t firstLineStart)
{
    text = newText;
    textLength = length;
    isReset = true;
    checkpoints.assign(1, firstLineStart);
    knownLines = 1;
    cursorLine = 1;
    cursorStart = firstLineStart;
}

bool LineIndex::nextLine(uint32_t from, uint32_t &next) const
{
    // Line 1 may start past a byte-order mark; the scan for its end still
    // starts at the mark, which is never a line end.
    const size_t i = find_either(text, from, textLength, u'\n', u'\r');
    if (i >= textLength)
        return false;
    if (text[i] == u'\n')
        next = static_cast<uint32_t>(i + 1);
    else
        next = static_cast<uint32_t>((i + 1 < textLength && text[i + 1] == u'\n') ? i + 2 : i + 1);
    return true;
}

uint32_t LineIndex::lineStart(uint64_t line)
{
    if (checkpoints.empty())
        return 0;
    if (line <= 1)
        return checkpoints[0];
    uint64_t at = cursorLine;
    uint32_t start = cursorStart;
    if (line < cursorLine) {
        // An earlier line: from the nearest kept start at or before it.
        const uint64_t k = (line - 1) / kStride;
        at = k * kStride + 1;
        start = checkpoints[static_cast<size_t>(k)];
    }
    // Line 1 starts at the first line start; the walk for its end begins at
    // offset 0 so that a mark before it is passed over like any other unit.
    uint32_t scanFrom = at == 1 ? 0 : start;
    while (at < line) {
        uint32_t next = 0;
        if (!nextLine(scanFrom, next))
            return textLength;  // past the last line
        ++at;
        start = next;
        scanFrom = next;
        if (at > knownLines) {
            knownLines = at;
            if ((at - 1) % kStride == 0)
                checkpoints.push_back(start);
        }
    }
    cursorLine = at;
    cursorStart = start;
    return start;
}

}  // namespace cblxml
