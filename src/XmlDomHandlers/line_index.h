// Start offsets of the lines of the UTF-16 document text, built once per
// parse so that turning a parser line and column into an offset costs O(log n)
// instead of a walk from the start of the text on every call-back.
#ifndef CBLXML_XMLDOMHANDLERS_LINE_INDEX_H
#define CBLXML_XMLDOMHANDLERS_LINE_INDEX_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace cblxml {

class LineIndex {
public:
    // Lines end where the parser ends them: at LF, at CR LF and at a lone CR
    // (the parser normalises both to LF before it counts).
    // firstLineStart: where column 1 of line 1 is (past a byte-order mark
    // that the parser does not count).
    void build(const char16_t *text, uint32_t length, uint32_t firstLineStart = 0);
    bool built() const { return isBuilt; }
    // Offset of the first unit of `line` (1-based); lines past the last line
    // give the text length, as a walk that runs off the end would.
    uint32_t lineStart(uint64_t line) const;

private:
    std::vector<uint32_t> starts;
    uint32_t textLength = 0;
    bool isBuilt = false;
};

} // namespace cblxml

#endif
