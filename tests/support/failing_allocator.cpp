// The allocator entries of a test program: each passes on to the C library's
// allocator (to the address sanitizer's in a sanitizer build, which must
// see every block) after counting the allocation and, when it is the one
// asked for, failing it instead. operator new is replaced too, so that it
// counts once and fails the same way in both builds (the sanitizer's own
// does not go through malloc).
#include "failing_allocator.h"

#include <cstdio>
#include <cstdlib>
#include <new>

#include <sys/wait.h>
#include <unistd.h>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define SWEEP_ASAN 1
#endif
#endif

#ifdef SWEEP_ASAN
#include <sanitizer/allocator_interface.h>
#define REAL(name) __interceptor_##name
#else
#define REAL(name) __libc_##name
#endif

extern "C" {
void *REAL(malloc)(size_t size);
void *REAL(calloc)(size_t count, size_t size);
void *REAL(realloc)(void *block, size_t size);
void REAL(free)(void *block);
}

namespace {

// Process-wide by nature: they count the process's heap (tests are single
// threaded while a sweep runs).
long made = 0;       // allocations since the last fail_at
long countdown = 0;  // the allocation to fail, counted down; 0 none
long live = 0;

bool failing()
{
    ++made;
    return countdown > 0 && --countdown == 0;
}

#ifdef SWEEP_ASAN
// The sanitizer tells of every block, those it makes for its own
// interceptors (strdup and the like) too.
void on_alloc(const volatile void *, size_t) { ++live; }
void on_free(const volatile void *) { --live; }
[[maybe_unused]] const int hooks = __sanitizer_install_malloc_and_free_hooks(on_alloc, on_free);
void *counted(void *block) { return block; }
void uncount() {}
#else
void *counted(void *block)
{
    live += block != nullptr;
    return block;
}
void uncount() { --live; }
#endif

} // namespace

extern "C" {

void *malloc(size_t size)
{
    return failing() ? nullptr : counted(REAL(malloc)(size));
}

void *calloc(size_t count, size_t size)
{
    return failing() ? nullptr : counted(REAL(calloc)(count, size));
}

void free(void *block)
{
    if (block != nullptr)
        uncount();
    REAL(free)(block);
}

void *realloc(void *block, size_t size)
{
    if (block == nullptr)
        return malloc(size);
    if (size == 0) {
        free(block);
        return nullptr;
    }
    // Moved or not, one block stays one block; on failure the old one stays.
    return failing() ? nullptr : REAL(realloc)(block, size);
}

} // extern "C"

void *operator new(size_t size)
{
    if (void *block = malloc(size != 0 ? size : 1))
        return block;
    throw std::bad_alloc();
}
void *operator new[](size_t size) { return operator new(size); }
void *operator new(size_t size, const std::nothrow_t &) noexcept { return malloc(size ? size : 1); }
void *operator new[](size_t size, const std::nothrow_t &) noexcept { return malloc(size ? size : 1); }
void operator delete(void *block) noexcept { free(block); }
void operator delete[](void *block) noexcept { free(block); }
void operator delete(void *block, size_t) noexcept { free(block); }
void operator delete[](void *block, size_t) noexcept { free(block); }
void operator delete(void *block, const std::nothrow_t &) noexcept { free(block); }
void operator delete[](void *block, const std::nothrow_t &) noexcept { free(block); }

namespace alloc_sweep {

long live_blocks()
{
    return live;
}

long fail_at(long n)
{
    const long count = made;
    made = 0;
    countdown = n;
    return count;
}

Tally sweep(const std::function<int()> &run)
{
    run();  // what the parser makes once per process exists before the count
    fail_at(0);
    run();
    const long points = fail_at(0);
    Tally tally;
    for (long n = 1; n <= points; ++n) {
        std::fflush(nullptr);  // a child must not write out the parent's buffers
        const pid_t child = fork();
        if (child == 0) {
            const long before = live_blocks();
            fail_at(n);
            int faults = Crash;
            try {
                faults = run();
            } catch (...) {
                // Nothing may escape the code under test.
            }
            fail_at(0);
            if (live_blocks() != before)
                faults |= Leak;
            _exit(faults);  // no clean-up of the test program's own
        }
        int status = 0;
        const int faults = child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status)
                               ? WEXITSTATUS(status) : Crash;
        ++tally.points;
        for (int bit = 0; bit < 5; ++bit)
            tally.faults[bit] += (faults >> bit) & 1;
        if (faults != 0 && tally.firstFault.empty())
            tally.firstFault = "point " + std::to_string(n) + ": faults " + std::to_string(faults);
    }
    return tally;
}

} // namespace alloc_sweep
