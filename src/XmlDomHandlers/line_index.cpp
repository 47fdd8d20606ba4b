#include "XmlDomHandlers/line_index.h"

namespace cblxml {

void LineIndex::build(const char16_t *text, uint32_t length, uint32_t firstLineStart)
{
    starts.clear();
    starts.push_back(firstLineStart);
    for (uint32_t i = 0; i < length; ++i) {
        if (text[i] == u'\n') {
            starts.push_back(i + 1);
        } else if (text[i] == u'\r') {
            if (i + 1 < length && text[i + 1] == u'\n')
                ++i;
            starts.push_back(i + 1);
        }
    }
    textLength = length;
    isBuilt = true;
}

uint32_t LineIndex::lineStart(uint64_t line) const
{
    if (line <= 1)
        return starts.empty() ? 0 : starts[0];
    if (line - 1 >= starts.size())
        return textLength;
    return starts[static_cast<size_t>(line - 1)];
}

} // namespace cblxml
