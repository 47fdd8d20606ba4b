#include "verdicts.h"

#include <cstdio>

#include "cblxml.h"

namespace conformance {
namespace {

bool accepted(const std::string &outcome) { return outcome == "end"; }

bool rejected(const std::string &outcome) { return outcome.compare(0, 10, "exception ") == 0; }

// The acceptance asks, of the documents that need no external entity, for
// at least this share of the suite's verdict.
constexpr double MinimumRate = 99.0;

struct RateRule {
    const char *type;
    uint32_t options;
    bool (*meetsVerdict)(const std::string &);
    const char *verdictWord;
};

const RateRule rateRules[] = {
    {"valid", 0, accepted, "end"},
    {"not-wf", 0, rejected, "exception"},
};

struct Counts {
    size_t tests = 0, ends = 0, exceptions = 0, failures = 0;
    size_t standalone = 0, standaloneMeeting = 0;  // ENTITIES none, namespaces on
    size_t namespacesOff = 0;  // ENTITIES none, meant for a parser without namespaces
};

std::string format_line(const char *type, uint32_t options, const Counts &c, const RateRule *rule,
                        bool &ratesMet)
{
    char line[400];
    int n = std::snprintf(
        line, sizeof line, "%-7s options %-2u %4zu tests: %4zu end, %4zu exception, %zu failure",
        type, static_cast<unsigned>(options), c.tests, c.ends, c.exceptions, c.failures);
    if (rule != nullptr && c.standalone > 0 && n > 0) {
        const double rate =
            100.0 * static_cast<double>(c.standaloneMeeting) / static_cast<double>(c.standalone);
        const bool met = rate >= MinimumRate;
        ratesMet = ratesMet && met;
        std::snprintf(line + n, sizeof line - static_cast<size_t>(n),
                      "; without external entities %zu/%zu %s (%.2f%%, %s %.0f%%;"
                      " %zu namespace-off tests left out)",
                      c.standaloneMeeting, c.standalone, rule->verdictWord, rate,
                      met ? "at least" : "BELOW", MinimumRate, c.namespacesOff);
    }
    return line;
}

}  // namespace

bool is_failure(const std::string &outcome) { return !accepted(outcome) && !rejected(outcome); }

bool deviates(const TestResult &r)
{
    const std::string &type = r.test->type;
    const bool validating = (r.options & (CBLXML_OPT_VALIDATE | CBLXML_OPT_VALIDATE_ONLY)) != 0;
    if (type == "valid" || (type == "invalid" && !validating))
        return !accepted(r.outcome);
    if (type == "invalid" || type == "not-wf")
        return !rejected(r.outcome);
    return false;
}

std::vector<std::string> summary_lines(const std::vector<TestResult> &results, bool &ratesMet)
{
    std::vector<std::string> lines;
    const char *types[] = {"valid", "invalid", "not-wf", "error"};
    std::vector<uint32_t> optionWords;
    for (const TestResult &r : results) {
        bool known = false;
        for (uint32_t o : optionWords)
            known = known || o == r.options;
        if (!known)
            optionWords.push_back(r.options);
    }
    for (uint32_t options : optionWords) {
        for (const char *type : types) {
            const RateRule *rule = nullptr;
            for (const RateRule &candidate : rateRules) {
                if (type == std::string(candidate.type) && candidate.options == options)
                    rule = &candidate;
            }
            Counts c;
            for (const TestResult &r : results) {
                if (r.options != options || r.test->type != type)
                    continue;
                ++c.tests;
                c.ends += accepted(r.outcome);
                c.exceptions += rejected(r.outcome);
                c.failures += is_failure(r.outcome);
                // The rate leaves out the tests that the suite means for a
                // parser with namespace processing off: this library always
                // processes namespaces. They stay in the counts and the
                // expected file.
                if (rule != nullptr && r.test->entities == "none") {
                    if (!r.test->namespaces) {
                        ++c.namespacesOff;
                        continue;
                    }
                    ++c.standalone;
                    c.standaloneMeeting += rule->meetsVerdict(r.outcome);
                }
            }
            if (c.tests > 0)
                lines.push_back(format_line(type, options, c, rule, ratesMet));
        }
    }
    return lines;
}

}  // namespace conformance
