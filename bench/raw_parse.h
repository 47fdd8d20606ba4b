// The baseline: the parser alone, set up as the library sets it up for an
// XML PARSE in event mode, with handlers that do nothing.
#ifndef CBLXML_BENCH_RAW_PARSE_H
#define CBLXML_BENCH_RAW_PARSE_H

#include <string>

namespace cblxml_bench {

// Initialises the parser library once; false when that fails.
bool init_raw_parser();

// Parses a private copy of `document` (the library parses a copy too) with a
// new reader. Returns false when the parser reported an error.
bool raw_parse(const std::string &document);

}  // namespace cblxml_bench

#endif
