// The suite's verdict on an outcome, and the per-TYPE summary of a run.
#ifndef CBLXML_CONFORMANCE_VERDICTS_H
#define CBLXML_CONFORMANCE_VERDICTS_H

#include <cstdint>
#include <string>
#include <vector>

#include "suite_cases.h"

namespace conformance {

struct TestResult {
    uint32_t options;  // the option word of the run
    const SuiteCase *test;
    std::string outcome;  // see outcome_of
};

bool is_failure(const std::string &outcome);

// True when the outcome goes against what the suite expects of a parser
// run with these options: a non-validating parse must accept valid and
// invalid documents, a validating one must reject invalid ones, every
// parse must reject documents that are not well-formed. An "error"
// document may go either way.
bool deviates(const TestResult &result);

// One summary line per TYPE present in the results (in the order valid,
// invalid, not-wf, error), with the acceptance rate where one applies: of
// the documents that need no external entity (and are not meant for a
// parser without namespaces), the share that meets the suite's verdict.
// `ratesMet` is cleared when a rate falls below its minimum.
std::vector<std::string> summary_lines(const std::vector<TestResult> &results, bool &ratesMet);

}  // namespace conformance

#endif
