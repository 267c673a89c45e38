// The service layer: memory, locks, environment, messages, exit and the by-name parallel loop.
// The kernels import exactly these functions; libnax_serv.so provides them.
#pragma once

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// A block of at least `size` bytes at a multiple of `alignment` (a power of two), or null when memory is short.
// Released only with nax_serv_deallocate.
void* nax_serv_allocate(size_t size, size_t alignment);
void nax_serv_deallocate(void* block);

// The same for per-thread cells; released only with nax_serv_free, on the exiting thread.
void* nax_serv_malloc(size_t size, size_t alignment);
void nax_serv_free(void* block);

// Blocking mutual exclusion on a 32-bit word in the caller's static data; a zero word is an unlocked lock.
void nax_serv_lock(int32_t* lock_word);
void nax_serv_unlock(int32_t* lock_word);

// `function(context)` is called once when the service layer shuts down.
void nax_serv_core_register_cleanup(void (*function)(void*), void* context);

// Copies the value of an environment variable, zero-terminated; returns its length, below 1 when absent, empty or too long.
int nax_serv_getenv(const char* name, char* value, int value_size);

// Bounded copy; 0 on success.
int nax_serv_memcpy_s(void* destination, size_t destination_size, const void* source, size_t count);

// Ends the process.
#ifdef __cplusplus
[[noreturn]]
#endif
void nax_serv_exit(int code);

// Prints message `number` of the catalogue; `count` values follow (texts, ints, doubles, as the message says).
void nax_serv_print(int channel, int number, int count, ...);

// Non-zero when the running processor belongs to the generation tagged `qgd`, or `qfb`.
int nax_serv_cpuisqgd(void);
int nax_serv_cpuisqfb(void);

// A function of the threading component by its name. For the two names below the result is never null:
// a serial pair stands in when the component can't be loaded.
//   "nax_sto_serv_threader_get_num_threads_limit"  int (*)(void)
//   "nax_sto_serv_threader_for"                    void (*)(int chunks, int zero, void* context, nax_serv_chunk_body)
void* nax_serv_load_thread_fun(const char* name);

typedef void (*nax_serv_chunk_body)(int chunk, int64_t unused1, int64_t unused2, void* context);
typedef int (*nax_serv_threads_limit_function)(void);
typedef void (*nax_serv_parallel_for_function)(int chunks, int zero, void* context, nax_serv_chunk_body body);

#ifdef __cplusplus
}
#endif
