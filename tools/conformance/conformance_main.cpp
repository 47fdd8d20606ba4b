// The XML conformance suite through the XML PARSE entry: every XML 1.0
// fifth-edition document with option word 0, and the valid and invalid
// ones again with validation. Each document runs in a child process of its
// own; the outcomes are compared with the committed expected file.
//
// Exit status: 0 all as expected, 1 a difference, a failure, a deviation
// without its reason or a rate below its minimum, 2 a usage or set-up
// error, 77 the suite folder is absent (the test is skipped).
#include <cmath>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "cblxml.h"
#include "delivery.h"
#include "isolated_runs.h"
#include "leak_check.h"
#include "outcome_files.h"
#include "suite_cases.h"
#include "verdicts.h"

namespace conformance {
namespace {

constexpr int SkipStatus = 77;

struct Options {
    std::string suite;     // the folder that holds cases.tsv and xmlconf/
    std::string expected;  // the committed outcome file
    std::string reasons;   // the committed deviation reasons
    bool update = false;   // write the outcome file instead of comparing
    bool listDeviations = false;
    IsolationLimits limits;
};

[[noreturn]] void usage(const char *message)
{
    std::cerr << "conformance: " << message
              << "\nusage: cblxml-conformance --suite DIR --expected FILE --reasons FILE"
                 " [--update] [--list-deviations] [--jobs N] [--batch N] [--timeout SECONDS]\n";
    std::exit(2);
}

Options parse_arguments(int argc, char **argv)
{
    Options o;
    const long cores = sysconf(_SC_NPROCESSORS_ONLN);
    o.limits.parallel = cores > 0 ? static_cast<unsigned>(cores) : 1;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        auto value = [&]() -> std::string {
            if (i + 1 >= argc)
                usage(("missing value after " + arg).c_str());
            return argv[++i];
        };
        if (arg == "--suite")
            o.suite = value();
        else if (arg == "--expected")
            o.expected = value();
        else if (arg == "--reasons")
            o.reasons = value();
        else if (arg == "--update")
            o.update = true;
        else if (arg == "--list-deviations")
            o.listDeviations = true;
        else if (arg == "--jobs")
            o.limits.parallel = static_cast<unsigned>(std::atoi(value().c_str()));
        else if (arg == "--batch")
            o.limits.batch = static_cast<size_t>(std::atol(value().c_str()));
        else if (arg == "--timeout")
            o.limits.timeoutSeconds = static_cast<unsigned>(std::atoi(value().c_str()));
        else
            usage(("unknown argument " + arg).c_str());
    }
    if (o.suite.empty() || o.expected.empty() || o.reasons.empty())
        usage("--suite, --expected and --reasons are required");
    return o;
}

bool is_directory(const std::string &path)
{
    struct stat info {};
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

std::string read_bytes(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        throw std::runtime_error("cannot read " + path);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// What one child reports: the outcome, or a failure when the parse left
// blocks behind or a second parse of the same bytes ended differently.
std::string parse_in_child(const std::string &document, uint32_t options)
{
    // The first parse also fills the parser's caches (message loaders,
    // transcoders), which stay for the process and are no leak.
    const DeliverySummary first = deliver_all_events(document, options);
    mark_heap();
    const DeliverySummary second = deliver_all_events(document, options);
    const std::string leaks = leaks_since_mark();
    if (!leaks.empty())
        return "FAILURE: " + leaks;
    if (!(first == second))
        return "FAILURE: two parses of the same document ended differently: " + outcome_of(first) +
               " / " + outcome_of(second);
    return outcome_of(first);
}

struct Run {
    uint32_t options;
    std::vector<const SuiteCase *> tests;
};

std::vector<Run> plan_runs(const std::vector<SuiteCase> &cases)
{
    Run plain{0, {}};
    Run validating{CBLXML_OPT_VALIDATE, {}};
    for (const SuiteCase &c : cases) {
        plain.tests.push_back(&c);
        if (c.type == "valid" || c.type == "invalid")
            validating.tests.push_back(&c);
    }
    return {plain, validating};
}

// A scratch folder as the working folder: the documents are parsed from
// memory, so any relative reference to an external entity is looked up
// here and finds nothing, wherever the program was started.
std::string enter_empty_folder()
{
    char pattern[] = "/tmp/cblxml-conformance-XXXXXX";
    if (mkdtemp(pattern) == nullptr || chdir(pattern) != 0)
        throw std::runtime_error("cannot create an empty working folder");
    return pattern;
}

std::string absolute(const std::string &path)
{
    if (!path.empty() && path[0] == '/')
        return path;
    char here[4096];
    if (getcwd(here, sizeof here) == nullptr)
        throw std::runtime_error("cannot tell the working folder");
    return std::string(here) + "/" + path;
}

void print_lines(const char *title, const std::vector<std::string> &lines)
{
    if (lines.empty())
        return;
    std::cout << title << '\n';
    for (const std::string &line : lines)
        std::cout << "  " << line << '\n';
}

int run(Options o)
{
    o.suite = absolute(o.suite);
    o.expected = absolute(o.expected);
    o.reasons = absolute(o.reasons);
    if (!is_directory(o.suite + "/xmlconf")) {
        std::cout << "conformance: skipped, no suite at " << o.suite << '\n';
        return SkipStatus;
    }
    const auto started = std::chrono::steady_clock::now();
    const std::vector<SuiteCase> cases = read_fifth_edition_cases(o.suite + "/cases.tsv");
    std::vector<std::string> documents;
    documents.reserve(cases.size());
    for (const SuiteCase &c : cases)
        documents.push_back(read_bytes(o.suite + "/" + c.path));

    const std::string scratch = enter_empty_folder();
    // A validating parse reads grammars from these folders only; none are
    // given, so that the run is the same wherever it is started.
    unsetenv("CBLXML_GRAMMAR_PATH");
    // The one-time parser set-up happens here, so that no child repeats it.
    deliver_all_events("<a/>", 0);

    std::vector<TestResult> results;
    for (const Run &r : plan_runs(cases)) {
        auto job = [&](size_t i) {
            const size_t index = static_cast<size_t>(r.tests[i] - cases.data());
            return parse_in_child(documents[index], r.options);
        };
        const std::vector<std::string> outcomes =
            run_isolated(r.tests.size(), job, unreachable_blocks, o.limits);
        for (size_t i = 0; i < r.tests.size(); ++i)
            results.push_back({r.options, r.tests[i], outcomes[i]});
    }
    rmdir(scratch.c_str());

    bool ratesMet = true;
    for (const std::string &line : summary_lines(results, ratesMet))
        std::cout << line << '\n';

    std::vector<std::string> failures;
    for (const TestResult &r : results) {
        if (is_failure(r.outcome))
            failures.push_back(outcome_line(r));
    }
    const std::vector<std::string> diff =
        o.update ? std::vector<std::string>{} : diff_expected(o.expected, results);
    const std::vector<std::string> reasonProblems = check_reasons(o.reasons, results);
    if (o.update)
        write_expected(o.expected, results);
    if (o.listDeviations)
        print_lines("deviations from the suite's verdict:", deviation_list(o.reasons, results));

    print_lines("failures (never acceptable):", failures);
    print_lines("outcomes that differ from the expected file (-expected +actual):", diff);
    print_lines("deviation reasons to fix:", reasonProblems);
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    std::cout << results.size() << " runs in " << std::lround(seconds) << " s"
              << (o.update ? "; expected outcomes written to " + o.expected : std::string())
              << '\n';
    const bool good = failures.empty() && diff.empty() && reasonProblems.empty() && ratesMet;
    return good ? 0 : 1;
}

}  // namespace
}  // namespace conformance

int main(int argc, char **argv)
{
    try {
        return conformance::run(conformance::parse_arguments(argc, argv));
    } catch (const std::exception &e) {
        std::cerr << "conformance: " << e.what() << '\n';
        return 2;
    }
}
