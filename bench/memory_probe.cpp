#include "memory_probe.h"

#include <cerrno>
#include <cstdio>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "heap_counter.h"

namespace cblxml_bench {
namespace {

long long peak_rss_bytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<long long>(usage.ru_maxrss) * 1024;  // Linux reports KiB
}

// Lowers the child's recorded peak to its current resident set. Without
// this the peak starts at the parent's size at fork time, which hides any
// growth below it.
void reset_peak_rss()
{
    if (FILE *f = std::fopen("/proc/self/clear_refs", "w")) {
        std::fputs("5", f);
        std::fclose(f);
    }
}

void child(int out, const std::function<void()> &work)
{
    // Hand freed heap back to the system first, so that the work cannot
    // reuse already-resident pages without them showing in the peak.
    malloc_trim(0);
    reset_peak_rss();
    MemoryUse use;
    const long long before = peak_rss_bytes();
    heap_counter_begin();
    work();
    use.heapGrowth = heap_counter_end();
    use.heapCounted = heap_counter_available() != 0;
    use.rssGrowth = peak_rss_bytes() - before;
    use.measured = true;
    const ssize_t written = write(out, &use, sizeof use);
    _exit(written == static_cast<ssize_t>(sizeof use) ? 0 : 1);
}

}  // namespace

MemoryUse measure_memory(const std::function<void()> &work)
{
    MemoryUse use;
    int pipeEnds[2];
    if (pipe(pipeEnds) != 0)
        return use;
    std::fflush(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        close(pipeEnds[0]);
        child(pipeEnds[1], work);
    }
    close(pipeEnds[1]);
    if (pid > 0) {
        MemoryUse received;
        ssize_t got;
        do
            got = read(pipeEnds[0], &received, sizeof received);
        while (got < 0 && errno == EINTR);
        int status = 0;
        waitpid(pid, &status, 0);
        if (got == static_cast<ssize_t>(sizeof received) && WIFEXITED(status) &&
            WEXITSTATUS(status) == 0)
            use = received;
    }
    close(pipeEnds[0]);
    return use;
}

}  // namespace cblxml_bench
