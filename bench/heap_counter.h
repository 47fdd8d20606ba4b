/* Net heap growth of a stretch of code, counted by wrapping the C allocator.
   The benchmark is single-threaded while it counts. */
#ifndef CBLXML_BENCH_HEAP_COUNTER_H
#define CBLXML_BENCH_HEAP_COUNTER_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* 1 when the allocator is wrapped in this build (not under sanitizers). */
int heap_counter_available(void);
/* Starts counting from zero. */
void heap_counter_begin(void);
/* Stops counting; returns the highest net growth of live heap bytes
   (usable sizes) seen since heap_counter_begin. */
long long heap_counter_end(void);

#ifdef __cplusplus
}
#endif

#endif
