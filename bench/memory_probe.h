// Peak memory of one run of a piece of work, measured in a forked child so
// that neither the parent's earlier runs nor its freed heap skew it.
#ifndef CBLXML_BENCH_MEMORY_PROBE_H
#define CBLXML_BENCH_MEMORY_PROBE_H

#include <functional>

namespace cblxml_bench {

struct MemoryUse {
    bool measured = false;     // false when the child failed
    long long rssGrowth = 0;   // peak resident set minus the child's start, bytes
    long long heapGrowth = 0;  // peak net growth of live heap bytes
    bool heapCounted = false;  // the allocator wrapper is in this build
};

// Runs `work` once in a child process and reports its peak memory above
// what the child held when the work began (the document and the caller's
// buffers are already there: they are the caller's, not the parse's).
MemoryUse measure_memory(const std::function<void()> &work);

}  // namespace cblxml_bench

#endif
