// Start offsets of the lines of the UTF-16 document text, for turning a
// parser line and column into an offset. The parser asks about lines in
// document order, so the index remembers where it last answered and walks
// on from there: over a whole parse every unit is looked at about once. A
// start is kept for every 64th line, so that an earlier line costs a walk of
// at most 63 lines and the index stays small beside the text.
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
    void reset(const char16_t *text, uint32_t length, uint32_t firstLineStart = 0);
    bool built() const { return isReset; }
    // Offset of the first unit of `line` (1-based); lines past the last line
    // give the text length, as a walk that runs off the end would.
    uint32_t lineStart(uint64_t line);

private:
    static constexpr uint64_t kStride = 64;
    // The start of the line after the one starting at `from`, or the text
    // length when that line is the last.
    bool nextLine(uint32_t from, uint32_t &next) const;

    const char16_t *text = nullptr;
    uint32_t textLength = 0;
    bool isReset = false;
    std::vector<uint32_t> checkpoints;  // starts of lines 1, 65, 129, ...
    uint64_t knownLines = 0;            // lines whose starts the walks have found
    uint64_t cursorLine = 0;            // the last line answered, and its start
    uint32_t cursorStart = 0;
};

}  // namespace cblxml

#endif
