// The test cases of the XML conformance suite that this library answers
// for: XML 1.0 documents under the fifth edition's rules.
#ifndef CBLXML_CONFORMANCE_SUITE_CASES_H
#define CBLXML_CONFORMANCE_SUITE_CASES_H

#include <string>
#include <vector>

namespace conformance {

struct SuiteCase {
    std::string path;      // relative to the suite folder
    std::string type;      // valid, invalid, not-wf, error
    std::string entities;  // none, general, parameter, both
    std::string id;        // unique over the suite
    bool namespaces;       // false: the suite means it for a parser with namespaces off
};

// Reads the case list (tab-separated, '#' header) and keeps the XML 1.0
// cases that hold for the fifth edition, in file order. Throws
// std::runtime_error when the list cannot be read or a line is short.
std::vector<SuiteCase> read_fifth_edition_cases(const std::string &casesFile);

}  // namespace conformance

#endif
