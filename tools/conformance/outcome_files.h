// The committed files of the conformance run: the expected outcome of
// every test, and the reason for each deviation from the suite's verdict.
#ifndef CBLXML_CONFORMANCE_OUTCOME_FILES_H
#define CBLXML_CONFORMANCE_OUTCOME_FILES_H

#include <string>
#include <vector>

#include "verdicts.h"

namespace conformance {

// One line per result: option word, TYPE, ENTITIES, id, outcome (tabs).
std::string outcome_line(const TestResult &result);

// Writes the outcome lines under a header that says how to regenerate
// them. Throws std::runtime_error when the file cannot be written.
void write_expected(const std::string &file, const std::vector<TestResult> &results);

// The differences between the file and the run, as "-expected" and
// "+actual" lines keyed by option word and id, in run order; empty when
// they agree. A missing file is a difference on every line.
std::vector<std::string> diff_expected(const std::string &file,
                                       const std::vector<TestResult> &results);

// Checks the reasons file (lines "option<TAB>id<TAB>reason", '#' comments)
// against the run: every deviation needs a reason, and a reason whose test
// no longer deviates is stale. Returns the problems, one per line.
std::vector<std::string> check_reasons(const std::string &file,
                                       const std::vector<TestResult> &results);

// The deviations of the run with their reasons, one per line.
std::vector<std::string> deviation_list(const std::string &reasonsFile,
                                        const std::vector<TestResult> &results);

}  // namespace conformance

#endif
