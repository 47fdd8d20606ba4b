// Test support: an allocator that counts every heap allocation of the
// process (malloc, calloc, realloc, operator new) and can make the n-th one
// fail, and a sweep that runs a piece of code once per allocation point,
// each time in a child process, with that allocation failing.
#ifndef CBLXML_TESTS_FAILING_ALLOCATOR_H
#define CBLXML_TESTS_FAILING_ALLOCATOR_H

#include <functional>
#include <string>

namespace alloc_sweep {

// What a run found wrong, as bits; the sweep adds Leak and Crash itself.
enum Fault { SilentStop = 1, WrongData = 2, BadState = 4, Leak = 8, Crash = 16 };

// Blocks the process holds now.
long live_blocks();

// Makes the n-th allocation from now fail (0: none); returns how many
// allocations were made since the previous call.
long fail_at(long n);

struct Tally {
    long points = 0;
    long faults[5] = {};  // runs with each Fault bit, in the order above
    std::string firstFault;  // "point N: bits" of the first faulty run
};

// Counts the allocations of one run of `run`, then runs it once per
// allocation point in a child process with that allocation failing. A child
// fails with the Fault bits `run` returns, Leak when it holds more blocks
// afterwards than before, Crash when it dies.
Tally sweep(const std::function<int()> &run);

} // namespace alloc_sweep

#endif
