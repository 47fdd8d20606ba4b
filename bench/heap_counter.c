/* Wraps malloc and friends for the whole process (the executable's
   definitions take precedence over the C library's for every shared object,
   the XML library and the parser included) and counts live bytes while
   asked to. Blocks are measured by their usable size, so that a block freed
   during counting that was allocated before it subtracts exactly what it
   holds; the net figure can therefore go below zero. */
#include "heap_counter.h"

#ifdef CBLXML_BENCH_HEAP_HOOK

#include <errno.h>
#include <malloc.h>
#include <stdlib.h>

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

int heap_counter_available(void) { return 1; }

void heap_counter_begin(void)
{
    live_bytes = 0;
    peak_bytes = 0;
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
