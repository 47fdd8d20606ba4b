// Runs jobs in child processes, so that a crash or a hang is the failure
// of the one job that caused it and the run goes on with the next.
#ifndef CBLXML_CONFORMANCE_ISOLATED_RUNS_H
#define CBLXML_CONFORMANCE_ISOLATED_RUNS_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace conformance {

struct IsolationLimits {
    unsigned parallel = 1;         // children at once
    unsigned timeoutSeconds = 30;  // a job still running then has hung
    size_t batch = 40;             // jobs per child
};

// Runs job(0) .. job(count - 1) in forked children, a batch of jobs per
// child, and returns their results in order: the string the job returned
// (one line), or "FAILURE: ..." when the child was killed by a signal, ran
// past the time limit or exited with a non-zero status (a sanitizer report,
// say) during that job. After its batch a child calls `batchCheck`; when
// that reports a problem, each job of the batch runs again alone to find
// the one at fault. Throws std::runtime_error when no child can be started.
std::vector<std::string> run_isolated(size_t count, const std::function<std::string(size_t)> &job,
                                      const std::function<std::string()> &batchCheck,
                                      const IsolationLimits &limits);

}  // namespace conformance

#endif
