/* The service layer (libnax_serv.so): memory, locks, environment, messages, processor generation, threads.
 *
 * The kernels take everything that they need from outside through these functions. A program that uses the library
 * seldom calls them; those worth calling from outside are
 *
 *   nax_serv_fill_threaders            (nax/threaders.h) the table that statistics and data-fitting entries want
 *   nax_serv_allocate, _deallocate     blocks aligned for vector loads
 *   nax_serv_core_register_cleanup     work to be done when the layer goes away
 *   nax_serv_load_thread_fun           the parallel loop by name
 *
 * The layer needs no initialisation: every function may be the first one called, from any thread, also before main.
 * All of them may run on several threads at once. Link with -lnax_serv (libnax.so brings it along). */
#ifndef NAX_SERVICE_H
#define NAX_SERVICE_H

#include <stddef.h>
#include <stdint.h>

#include "nax/threaders.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A block of at least `size` bytes whose address is a multiple of `alignment`, a power of two (128 suits every vector).
 * A size of 0 gives a block of its own too. Returns null when memory is short, when the size can't be had with the
 * alignment, or when the alignment is no power of two. The contents are undefined. */
void* nax_serv_allocate(size_t size, size_t alignment);

/* Gives back a block of nax_serv_allocate, from any thread; null does nothing. */
void nax_serv_deallocate(void* block);

/* The same pair for the library's per-thread cells. The two families don't mix: a block goes back through its own. */
void* nax_serv_malloc(size_t size, size_t alignment);
void nax_serv_free(void* block);

/* Mutual exclusion on a 32-bit word in the caller's memory. A zero word is a free lock, so static data need no set-up.
 * nax_serv_lock waits until it holds the word (asleep, not spinning); the lock is not recursive. What one holder wrote
 * before nax_serv_unlock is seen by the next. The word is not to be touched otherwise while in use. */
void nax_serv_lock(int32_t* lock_word);
void nax_serv_unlock(int32_t* lock_word);

/* Keeps the pair and calls function(context) once when the layer is unloaded or the process ends by exit. Pairs run in
 * the reverse order of registration; one that is registered while they run is run too. A null function is ignored. */
void nax_serv_core_register_cleanup(void (*function)(void*), void* context);

/* Copies the value of environment variable `name` into `value`, zero-terminated, and returns its length. Returns 0,
 * with empty text in `value` if there is room for it, when the variable is absent or empty, when the value with its
 * terminator exceeds `value_size` bytes, or when an argument is null. Not safe against a setenv at the same time. */
int nax_serv_getenv(const char* name, char* value, int value_size);

/* Copies `count` bytes between blocks that don't overlap. Returns 0 on success (also for a count of 0), -1 without
 * touching anything when a pointer is null or `count` exceeds `destination_size`. */
int nax_serv_memcpy_s(void* destination, size_t destination_size, const void* source, size_t count);

/* Ends the process at once with the code; neither handlers of atexit nor the cleanups run, as the caller may be in any
 * state. */
#ifdef __cplusplus
[[noreturn]]
#else
__attribute__((__noreturn__))
#endif
void nax_serv_exit(int code);

/* Prints message `number` of the layer's catalogue, one line, on channel 1, the standard error stream. `count` values
 * follow: zero-terminated texts, ints and doubles as the message wants them (docs/statuses.md lists the messages). A
 * number that the catalogue lacks, or a count that is not the message's, prints the bare number. Other channels print
 * nothing. */
void nax_serv_print(int channel, int number, int count, ...);

/* Non-zero when the running processor, and the operating system with it, belongs to a generation:
 *   qgd: AVX-512 (F, CD, BW, DQ, VL) with the AES and carry-less products of whole vectors (VAES, VPCLMULQDQ);
 *   qfb: AVX-512 without these.
 * At most one of the two holds. On both a working block of 6,144 elements is preferred. */
int nax_serv_cpuisqgd(void);
int nax_serv_cpuisqfb(void);

/* Body of the parallel loop by name: the chunk, two arguments without meaning, the context. */
typedef void (*nax_serv_chunk_body)(int chunk, int64_t unused1, int64_t unused2, void* context);
typedef int (*nax_serv_threads_limit_function)(void);
typedef void (*nax_serv_parallel_for_function)(int chunks, int zero, void* context, nax_serv_chunk_body body);

/* A function of the threading component (libnax_threads.so), by its name; to be cast to the type shown.
 *   "nax_sto_serv_threader_get_num_threads_limit"  nax_serv_threads_limit_function: threads that a loop may use now
 *   "nax_sto_serv_threader_for"                    nax_serv_parallel_for_function: calls body(chunk, ., ., context)
 * once for each chunk from 0 to chunks - 1, in any order and possibly at once, and returns when all have returned;
 * `zero` has no meaning For these two the result is never null: where the component can't be loaded, a serial pair
 * stands in, with a limit of 1. Any other name, and null, gives null. The component is looked for once, on the first
 * request, next to libnax_serv.so and then along the loader's default path. */
void* nax_serv_load_thread_fun(const char* name);

#ifdef __cplusplus
}
#endif
#endif
