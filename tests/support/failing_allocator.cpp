// The allocator entries of a test program pass on to the C library's (to
// the address sanitizer's in a sanitizer build, which must see every block)
// unless the allocation is the one to fail. operator new is replaced too, so
// that it counts once and fails alike in both builds (the sanitizer's own
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
#include <sanitizer/allocator_interface.h>
#endif
#endif

#ifdef SWEEP_ASAN
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

// Process-wide by nature (a sweep runs single threaded).
long made = 0;       // allocations since fail_at
long countdown = 0;  // the allocation to fail, counted down; 0 none
long live = 0;       // blocks held

bool failing()
{
    ++made;
    return countdown > 0 && --countdown == 0;
}

long fail_at(long n)
{
    const long count = made;
    made = 0;
    countdown = n;
    return count;
}

#ifdef SWEEP_ASAN
// The sanitizer tells of every block, those of its own interceptors too.
[[maybe_unused]] const int hooks = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void *, size_t) { ++live; }, [](const volatile void *) { --live; });
void *counted(void *block) { return block; }
#else
void *counted(void *block) { return live += block != nullptr, block; }
#endif

}  // namespace

extern "C" {
void *malloc(size_t size) { return failing() ? nullptr : counted(REAL(malloc)(size)); }
void *calloc(size_t n, size_t size) { return failing() ? nullptr : counted(REAL(calloc)(n, size)); }
void free(void *block)
{
#ifndef SWEEP_ASAN
    live -= block != nullptr;
#endif
    REAL(free)(block);
}
void *realloc(void *block, size_t size)
{
    if (block == nullptr || size == 0)
        return size == 0 ? (free(block), nullptr) : malloc(size);
    return failing() ? nullptr : REAL(realloc)(block, size);  // still one block
}
}  // extern "C"

void *operator new(size_t size)
{
    if (void *block = malloc(size != 0 ? size : 1))
        return block;
    throw std::bad_alloc();
}
void *operator new[](size_t size) { return operator new(size); }
void *operator new(size_t size, const std::nothrow_t &) noexcept { return malloc(size + !size); }
void *operator new[](size_t size, const std::nothrow_t &) noexcept { return malloc(size + !size); }
void operator delete(void *block) noexcept { free(block); }
void operator delete[](void *block) noexcept { free(block); }
void operator delete(void *block, size_t) noexcept { free(block); }
void operator delete[](void *block, size_t) noexcept { free(block); }
void operator delete(void *block, const std::nothrow_t &) noexcept { free(block); }
void operator delete[](void *block, const std::nothrow_t &) noexcept { free(block); }

alloc_sweep::Tally alloc_sweep::sweep(const std::function<int()> &run)
{
    run();  // what is made once per process exists before the count
    fail_at(0);
    run();
    Tally tally;
    for (long n = 1, points = fail_at(0); n <= points; ++n) {
        std::fflush(nullptr);  // a child must not write out the parent's buffers
        const pid_t child = fork();
        if (child == 0) {
            const long before = live;
            int faults = Crash;
            fail_at(n);
            try {
                faults = run();
            } catch (...) {
                // nothing may escape the code under test
            }
            fail_at(0);
            _exit(faults | (live != before ? Leak : 0));  // no clean-up of the parent's
        }
        int status = 0;
        const bool exited = child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status);
        const int faults = exited ? WEXITSTATUS(status) : Crash;
        ++tally.points;
        for (int bit = 0; bit < 5; ++bit)
            tally.faults[bit] += (faults >> bit) & 1;
        if (faults != 0 && tally.firstFault.empty())
            tally.firstFault = "point " + std::to_string(n) + ": faults " + std::to_string(faults);
    }
    return tally;
}
