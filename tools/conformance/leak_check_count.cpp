// Plain builds: the program replaces the C allocator's entries with ones
// that count live blocks and pass on to the C library's own allocator.
// Every allocation in the process (the library, the parser, the C++
// run-time) goes through them, so a parse that frees what it allocated
// leaves the count where it was.
#include "leak_check.h"

#include <atomic>
#include <cerrno>
#include <cstddef>

#include <unistd.h>

extern "C" {
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *block, size_t size);
void *__libc_memalign(size_t alignment, size_t size);
void __libc_free(void *block);
}

namespace {

// Process-wide by nature: it counts the process's heap.
std::atomic<long> liveBlocks{0};
long markedBlocks = 0;

void *counted(void *block)
{
    if (block != nullptr)
        liveBlocks.fetch_add(1, std::memory_order_relaxed);
    return block;
}

size_t page_size() { return static_cast<size_t>(sysconf(_SC_PAGESIZE)); }

}  // namespace

extern "C" {

void *malloc(size_t size) { return counted(__libc_malloc(size)); }

void *calloc(size_t count, size_t size) { return counted(__libc_calloc(count, size)); }

void free(void *block)
{
    if (block == nullptr)
        return;
    liveBlocks.fetch_sub(1, std::memory_order_relaxed);
    __libc_free(block);
}

void *realloc(void *block, size_t size)
{
    if (block == nullptr)
        return malloc(size);
    if (size == 0) {
        // The C library frees the block and returns null here.
        free(block);
        return nullptr;
    }
    // Moved or not, one block stays one block; on failure the old one stays.
    return __libc_realloc(block, size);
}

void *memalign(size_t alignment, size_t size) { return counted(__libc_memalign(alignment, size)); }

void *aligned_alloc(size_t alignment, size_t size) { return memalign(alignment, size); }

int posix_memalign(void **out, size_t alignment, size_t size)
{
    const bool powerOfTwo = alignment != 0 && (alignment & (alignment - 1)) == 0;
    if (!powerOfTwo || alignment % sizeof(void *) != 0)
        return EINVAL;
    void *block = memalign(alignment, size);
    if (block == nullptr)
        return ENOMEM;
    *out = block;
    return 0;
}

void *valloc(size_t size) { return memalign(page_size(), size); }

void *pvalloc(size_t size)
{
    const size_t page = page_size();
    return memalign(page, (size + page - 1) / page * page);
}

}  // extern "C"

namespace conformance {

void mark_heap() { markedBlocks = liveBlocks.load(std::memory_order_relaxed); }

std::string leaks_since_mark()
{
    const long left = liveBlocks.load(std::memory_order_relaxed) - markedBlocks;
    if (left <= 0)
        return "";
    return std::to_string(left) + " heap blocks left behind";
}

std::string unreachable_blocks() { return ""; }

}  // namespace conformance
