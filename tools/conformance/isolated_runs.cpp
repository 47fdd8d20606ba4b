#include "isolated_runs.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <deque>
#include <map>
#include <sstream>
#include <stdexcept>

#include <sys/wait.h>
#include <unistd.h>

namespace conformance {
namespace {

struct Batch {
    std::vector<size_t> jobs;
    bool alone = false;  // a rerun of one job after a failed batch check
};

struct Child {
    Batch batch;
    int resultPipe;
};

// The child's report: "index TAB result" per job, then "check TAB problem"
// when the batch check found one.
const char CheckTag[] = "check";

// The pipe's buffer holds every line of a batch, so a child never waits
// for the parent to read; results are cut to keep it so.
constexpr size_t MaxResultLength = 300;

void write_all(int fd, const std::string &text)
{
    size_t done = 0;
    while (done < text.size()) {
        const ssize_t n = write(fd, text.data() + done, text.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return;
        done += static_cast<size_t>(n);
    }
}

std::string read_all(int fd)
{
    std::string text;
    char buffer[4096];
    for (;;) {
        const ssize_t n = read(fd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return text;
        text.append(buffer, static_cast<size_t>(n));
    }
}

std::string one_line(std::string text)
{
    for (char &c : text) {
        if (c == '\n' || c == '\t')
            c = ' ';
    }
    if (text.size() > MaxResultLength)
        text.resize(MaxResultLength);
    return text;
}

[[noreturn]] void run_child(const std::function<std::string(size_t)> &job,
                            const std::function<std::string()> &batchCheck, const Batch &batch,
                            int resultPipe, unsigned timeoutSeconds)
{
    for (size_t index : batch.jobs) {
        // The default action of the alarm ends the child: a hang becomes a
        // death by SIGALRM that the parent can tell apart.
        alarm(timeoutSeconds);
        std::string result;
        try {
            result = job(index);
        } catch (const std::exception &e) {
            result = std::string("FAILURE: exception in the runner: ") + e.what();
        }
        write_all(resultPipe, std::to_string(index) + "\t" + one_line(result) + "\n");
    }
    alarm(0);
    const std::string problem = batchCheck();
    if (!problem.empty())
        write_all(resultPipe, std::string(CheckTag) + "\t" + one_line(problem) + "\n");
    close(resultPipe);
    // No exit handlers: they belong to the parent.
    _exit(0);
}

pid_t start_child(const std::function<std::string(size_t)> &job,
                  const std::function<std::string()> &batchCheck, const Batch &batch,
                  unsigned timeoutSeconds, int &resultPipe)
{
    int fds[2];
    if (pipe(fds) != 0)
        throw std::runtime_error(std::string("pipe: ") + std::strerror(errno));
    const pid_t pid = fork();
    if (pid < 0)
        throw std::runtime_error(std::string("fork: ") + std::strerror(errno));
    if (pid == 0) {
        close(fds[0]);
        run_child(job, batchCheck, batch, fds[1], timeoutSeconds);
    }
    // Closed at once so that no later child inherits it and the read end
    // sees the end of the data when this child is gone.
    close(fds[1]);
    resultPipe = fds[0];
    return pid;
}

std::string abnormal_end(int status, unsigned timeoutSeconds)
{
    if (WIFSIGNALED(status)) {
        const int sig = WTERMSIG(status);
        if (sig == SIGALRM)
            return "FAILURE: hang (still running after " + std::to_string(timeoutSeconds) + " s)";
        return "FAILURE: crash (signal " + std::to_string(sig) + ", " + strsignal(sig) + ")";
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) != 0)
        return "FAILURE: exit status " + std::to_string(WEXITSTATUS(status)) +
               " (sanitizer report above)";
    return "";
}

// Takes in what a finished child wrote and queues what is left to do.
void settle(const Child &child, int status, const std::string &written, unsigned timeoutSeconds,
            std::vector<std::string> &results, std::deque<Batch> &pending)
{
    std::map<size_t, std::string> reported;
    std::string checkProblem;
    std::istringstream lines(written);
    std::string line;
    while (std::getline(lines, line)) {
        const size_t tab = line.find('\t');
        if (tab == std::string::npos)
            continue;
        const std::string tag = line.substr(0, tab);
        if (tag == CheckTag)
            checkProblem = line.substr(tab + 1);
        else
            reported[std::stoul(tag)] = line.substr(tab + 1);
    }
    const std::string ending = abnormal_end(status, timeoutSeconds);
    const std::vector<size_t> &jobs = child.batch.jobs;
    size_t done = 0;
    while (done < jobs.size() && reported.count(jobs[done]) != 0) {
        results[jobs[done]] = reported[jobs[done]];
        ++done;
    }
    if (done < jobs.size()) {
        // The job that was running when the child ended is the one at fault;
        // the rest of the batch starts again in a new child.
        results[jobs[done]] = ending.empty() ? "FAILURE: no result from the child" : ending;
        const auto fault = jobs.begin() + static_cast<std::ptrdiff_t>(done);
        Batch rest{{fault + 1, jobs.end()}, child.batch.alone};
        if (!rest.jobs.empty())
            pending.push_front(rest);
        // The jobs done before the fault missed the batch check: they run
        // again, for the check's sake.
        Batch finished{{jobs.begin(), fault}, child.batch.alone};
        if (!finished.jobs.empty())
            pending.push_back(finished);
        return;
    }
    if (checkProblem.empty() && ending.empty())
        return;
    const std::string problem = "FAILURE: " + (checkProblem.empty() ? ending : checkProblem);
    if (child.batch.alone || jobs.size() == 1) {
        results[jobs.front()] = problem;
        return;
    }
    for (size_t index : jobs)
        pending.push_back(Batch{{index}, true});
}

}  // namespace

std::vector<std::string> run_isolated(size_t count, const std::function<std::string(size_t)> &job,
                                      const std::function<std::string()> &batchCheck,
                                      const IsolationLimits &limits)
{
    std::vector<std::string> results(count);
    std::deque<Batch> pending;
    const size_t batchSize = limits.batch > 0 ? limits.batch : 1;
    for (size_t first = 0; first < count; first += batchSize) {
        Batch batch;
        for (size_t i = first; i < count && i < first + batchSize; ++i)
            batch.jobs.push_back(i);
        pending.push_back(batch);
    }
    const unsigned parallel = limits.parallel > 0 ? limits.parallel : 1;
    std::map<pid_t, Child> running;
    while (!pending.empty() || !running.empty()) {
        while (!pending.empty() && running.size() < parallel) {
            Child child{pending.front(), -1};
            pending.pop_front();
            const pid_t pid =
                start_child(job, batchCheck, child.batch, limits.timeoutSeconds, child.resultPipe);
            running.emplace(pid, child);
        }
        int status = 0;
        const pid_t pid = waitpid(-1, &status, 0);
        if (pid < 0) {
            if (errno == EINTR)
                continue;
            throw std::runtime_error(std::string("waitpid: ") + std::strerror(errno));
        }
        const auto found = running.find(pid);
        if (found == running.end())
            continue;
        const std::string written = read_all(found->second.resultPipe);
        close(found->second.resultPipe);
        settle(found->second, status, written, limits.timeoutSeconds, results, pending);
        running.erase(found);
    }
    return results;
}

}  // namespace conformance
