/* The table of threading functions that a caller hands to statistics and data-fitting entries. */
#ifndef NAX_THREADERS_H
#define NAX_THREADERS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef void (*nax_loop_body)(int64_t item, int thread_index, int thread_count, void* context);
typedef void (*nax_region_body)(int thread_index, int thread_count, void* context);

/* Five slots; all may be called from the thread that runs the compute entry, slot 3 only from a body of slot 1. */
typedef struct nax_threaders {
    /* Slot 0: body(i, thread, threads, context) once for each i below count, on up to `threads` threads. */
    void (*parallel_for)(int64_t count, int threads, void* context, nax_loop_body body);
    /* Slot 1: as slot 0; its bodies may call `ordered`. */
    void (*parallel_for_ordered)(int64_t count, int threads, void* context, nax_loop_body body);
    /* Slot 2: body(thread, threads, context) once on each thread. */
    void (*parallel_region)(int threads, void* context, nax_region_body body);
    /* Slot 3: runs `body` with the same arguments, one thread at a time, in ascending thread order. */
    void (*ordered)(int64_t item, int thread_index, int thread_count, void* context, nax_loop_body body);
    /* Slot 4: the limit on the number of threads; 1 or less asks for the serial path. */
    int (*max_threads)(void);
} nax_threaders;

/* Fills `table` with the five slots served by the OpenMP pool of libnax_threads.so, or by serial stand-ins when that
 * component can't be loaded. Returns 0 for the pool, 1 for the stand-ins, -1 for a null pointer. */
int nax_serv_fill_threaders(nax_threaders* table);

#ifdef __cplusplus
}
#endif
#endif
