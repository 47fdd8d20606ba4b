/* Wraps malloc and friends for the whole process (the executable's
   definitions take precedence over the C library's for every shared object,
   the XML library and the parser included) and counts live bytes while
   asked to. Blocks are measured by their usable size, so that a block freed
   during counting that was allocated before it subtracts exactly what it
   holds; the net figure can therefore go below zero. Anonymous mappings
   made through mmap are counted as well (below). */
#include "heap_counter.h"

#ifdef CBLXML_BENCH_HEAP_HOOK

#include <errno.h>
#include <malloc.h>
#include <stdint.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

extern void *__libc_malloc(size_t size);
extern void *__libc_calloc(size_t count, size_t size);
extern void *__libc_realloc(void *block, size_t size);
extern void *__libc_memalign(size_t alignment, size_t size);
extern void __libc_free(void *block);

/* The wrappers must be exported from the executable (the build hides symbols
   by default), or the shared objects would keep calling the C library's. */
#define HOOK __attribute__((visibility("default")))

static int counting;
static long long live_bytes;
static long long peak_bytes;

static void *counted(void *block)
{
    if (counting && block != NULL) {
        live_bytes += (long long)malloc_usable_size(block);
        if (live_bytes > peak_bytes)
            peak_bytes = live_bytes;
    }
    return block;
}

static void uncount(void *block)
{
    if (counting && block != NULL)
        live_bytes -= (long long)malloc_usable_size(block);
}

HOOK void *malloc(size_t size) { return counted(__libc_malloc(size)); }

HOOK void *calloc(size_t count, size_t size) { return counted(__libc_calloc(count, size)); }

HOOK void *realloc(void *block, size_t size)
{
    void *moved;
    uncount(block);
    moved = __libc_realloc(block, size);
    if (moved == NULL && size != 0) {
        /* A failed realloc leaves the old block in place. */
        counted(block);
        return NULL;
    }
    return counted(moved);
}

HOOK void free(void *block)
{
    uncount(block);
    __libc_free(block);
}

HOOK void *memalign(size_t alignment, size_t size)
{
    return counted(__libc_memalign(alignment, size));
}

HOOK void *aligned_alloc(size_t alignment, size_t size)
{
    return counted(__libc_memalign(alignment, size));
}

HOOK int posix_memalign(void **out, size_t alignment, size_t size)
{
    void *block;
    if (alignment < sizeof(void *) || (alignment & (alignment - 1)) != 0)
        return EINVAL;
    block = counted(__libc_memalign(alignment, size));
    if (block == NULL)
        return ENOMEM;
    *out = block;
    return 0;
}

/* Anonymous mappings made through mmap count as heap too: a library may take
   large blocks straight from the system. (The C allocator's own mappings do
   not come through here; they are counted as its blocks.) The ranges are
   remembered, so that munmap takes off only what was counted, also when it
   unmaps a part. */
#define MAX_MAPPINGS 65536
static struct {
    uintptr_t start, end;
} mappings[MAX_MAPPINGS];
static size_t mapping_count;

static void count_bytes(long long bytes)
{
    live_bytes += bytes;
    if (live_bytes > peak_bytes)
        peak_bytes = live_bytes;
}

HOOK void *mmap(void *address, size_t length, int protection, int flags, int fd, off_t offset)
{
    void *mapped = (void *)syscall(SYS_mmap, address, length, protection, flags, fd, offset);
    if (mapped != MAP_FAILED && counting && (flags & MAP_ANONYMOUS) != 0 &&
        mapping_count < MAX_MAPPINGS) {
        const uintptr_t page = (uintptr_t)sysconf(_SC_PAGESIZE);
        mappings[mapping_count].start = (uintptr_t)mapped;
        mappings[mapping_count].end = ((uintptr_t)mapped + length + page - 1) & ~(page - 1);
        count_bytes((long long)(mappings[mapping_count].end - mappings[mapping_count].start));
        ++mapping_count;
    }
    return mapped;
}

HOOK int munmap(void *address, size_t length)
{
    const uintptr_t from = (uintptr_t)address, to = from + length;
    for (size_t i = 0; i < mapping_count; ++i) {
        const uintptr_t start = mappings[i].start, end = mappings[i].end;
        if (to <= start || from >= end)
            continue;
        const uintptr_t cut_from = from > start ? from : start, cut_to = to < end ? to : end;
        live_bytes -= (long long)(cut_to - cut_from);
        if (cut_from == start) {
            mappings[i].start = cut_to; /* the head goes (or all of it) */
        } else if (cut_to == end) {
            mappings[i].end = cut_from; /* the tail goes */
        } else if (mapping_count < MAX_MAPPINGS) {
            mappings[mapping_count].start = cut_to; /* a hole: two ranges */
            mappings[mapping_count].end = end;
            ++mapping_count;
            mappings[i].end = cut_from;
        }
    }
    return (int)syscall(SYS_munmap, address, length);
}

int heap_counter_available(void) { return 1; }

void heap_counter_begin(void)
{
    live_bytes = 0;
    peak_bytes = 0;
    mapping_count = 0;
    counting = 1;
}

long long heap_counter_end(void)
{
    counting = 0;
    return peak_bytes;
}

#else

int heap_counter_available(void) { return 0; }

void heap_counter_begin(void) {}

long long heap_counter_end(void) { return 0; }

#endif
