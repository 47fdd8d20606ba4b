// Deterministic benchmark documents: the same shape and size always give the
// same bytes, so that runs on different days and machines compare.
#ifndef CBLXML_BENCH_CORPUS_H
#define CBLXML_BENCH_CORPUS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace cblxml_bench {

enum class Shape {
    Records,         // record-shaped: attributes, short fields, indented LF lines
    References,      // text and attributes dense with entity and character references
    Deep,            // nesting 400 levels deep, a short text at every level
    Lines,           // one short element per CR LF line
    Text,            // paragraphs of several KB of prose, few inline elements
    RecordsEbcdic,   // the records in the EBCDIC code page 037
    RecordsNational  // the records as national (UTF-16) data
};

struct ShapeInfo {
    Shape shape;
    const char *name;
    uint32_t flags;  // the XML PARSE option word the document is parsed with
};

// Every shape in the order the table prints them.
const std::vector<ShapeInfo> &all_shapes();

// A well-formed document of `shape` that is at least `target` bytes long and
// exceeds it by less than one record plus the closing tags (twice that for
// the national form).
std::string make_document(Shape shape, size_t target);

}  // namespace cblxml_bench

#endif
