/* The table of threading functions that a caller hands to statistics and data-fitting entries.
 *
 *     nax_threaders threaders;
 *     nax_serv_fill_threaders(&threaders);     // once; the table may be used by any number of calls and threads
 *
 * A program with a pool of its own fills the five slots itself. A table whose max_threads returns 1 or less makes every
 * entry run serially, and no other slot is then called. Results never depend on the number of threads. */
#ifndef NAX_THREADERS_H
#define NAX_THREADERS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef void (*nax_loop_body)(int64_t item, int thread_index, int thread_count, void* context);
typedef void (*nax_region_body)(int thread_index, int thread_count, void* context);

/* All slots return when every body has returned. Bodies get the index of their thread, from 0 to thread_count - 1, and
 * the number of threads that really run. A body does not start another loop. */
typedef struct nax_threaders {
    /* Slot 0: body(i, thread, threads, context) once for each i below count, on up to `threads` threads. */
    void (*parallel_for)(int64_t count, int threads, void* context, nax_loop_body body);
    /* Slot 1: as slot 0; its bodies may call `ordered`. */
    void (*parallel_for_ordered)(int64_t count, int threads, void* context, nax_loop_body body);
    /* Slot 2: body(thread, threads, context) once on each thread. */
    void (*parallel_region)(int threads, void* context, nax_region_body body);
    /* Slot 3: called from a body of slot 1 with the three numbers that the body got: runs body(item, thread_index,
     * thread_count, context), one thread at a time, in ascending thread order. */
    void (*ordered)(int64_t item, int thread_index, int thread_count, void* context, nax_loop_body body);
    /* Slot 4: the limit on the number of threads for this request; 1 or less asks for the serial path. */
    int (*max_threads)(void);
} nax_threaders;

/* Fills `table` with slots served by the pool of libnax_threads.so, or by serial stand-ins (limit 1) when that
 * component can't be loaded. The pool has as many threads as OMP_NUM_THREADS says, else one for each core that the
 * process may use; items are dealt to threads in contiguous ranges, so a thread's share depends only on count and
 * number of threads. Bodies run with the caller's floating-point control words. Called inside another parallel region
 * of the same runtime, the limit is 1. Returns 0 for the pool, 1 for the stand-ins, -1 for a null pointer. */
int nax_serv_fill_threaders(nax_threaders* table);

#ifdef __cplusplus
}
#endif
#endif
