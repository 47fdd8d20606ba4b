// Test support: the program's allocator counts every heap allocation
// (malloc, calloc, realloc, operator new) and can fail the n-th one; a sweep
// runs code once per allocation point, in a child process each time.
#ifndef CBLXML_TESTS_FAILING_ALLOCATOR_H
#define CBLXML_TESTS_FAILING_ALLOCATOR_H

#include <functional>
#include <string>

namespace alloc_sweep {

// What a run found wrong, as bits; the sweep adds Leak and Crash itself.
enum Fault {
    SilentStop = 1,
    WrongData = 2,
    BadState = 4,
    Leak = 8,
    Crash = 16
};

struct Tally {
    long points = 0;
    long faults[5] = {};     // runs with each Fault bit, in the order above
    std::string firstFault;  // "point N: faults F" of the first faulty run
};

// Counts the allocations of one run of `run`, then runs it once per point
// with that allocation failing. A child fails with the Fault bits `run`
// returns, Leak when it holds more blocks after the run than before.
Tally sweep(const std::function<int()> &run);

}  // namespace alloc_sweep

#endif
