// XML PARSE end to end, driven as a COBOL run-time drives it.
#ifndef CBLXML_BENCH_XML_PARSE_RUN_H
#define CBLXML_BENCH_XML_PARSE_RUN_H

#include <cstdint>
#include <string>
#include <vector>

namespace cblxml_bench {

struct ParseTally {
    uint64_t events = 0;
    uint64_t textBytes = 0;
    bool clean = true;  // no EXCEPTION event
};

// Calls the delivery entry from the first call to END-OF-DOCUMENT (or the
// last event), copying each text into `textArea` as a program's MOVE of
// XML-TEXT would; the area must be at least as long as the document. Frees
// the last buffer handed over, as the program's run-time does. `flags` is
// the option word (1: a national document).
ParseTally xml_parse(std::string &document, std::vector<char> &textArea, uint32_t flags = 0);

}  // namespace cblxml_bench

#endif
