// Per-thread cells: one key record for each kind of cell, made on first use, and a cell for each thread.
//
// Every read and every write of a cell goes through the same steps, which tls_cell() holds once: see that the key
// exists (double-checked under the record's lock), then find or make the thread's cell. Where a key can't be made, each
// access works on a fresh cell that is never freed, and a value written is lost.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <cstdint>

#include "nax/error.h"
#include "nax/mode.h"

namespace nax::runtime {

static_assert(sizeof(pthread_key_t) == sizeof(uint32_t));

inline constexpr uint32_t kKeyExists = 1;

// The four records.
[[gnu::visibility("hidden")]] extern nax_tls_key Mode_key;
[[gnu::visibility("hidden")]] extern nax_tls_key ErrStatus_key;
[[gnu::visibility("hidden")]] extern nax_tls_key CallBack_key;
[[gnu::visibility("hidden")]] extern nax_tls_key InputVecorPointer_key;

// Makes the key if it does not exist yet, then the calling thread's cell: `size` zero bytes.
[[gnu::visibility("hidden")]] void* make_tls_cell(nax_tls_key& record, void (*cleanup)(void*), size_t size);

inline bool key_exists(const nax_tls_key& record) {
    return (__atomic_load_n(&record.flags, __ATOMIC_ACQUIRE) & kKeyExists) != 0;
}

// The cell of the calling thread; `Record` and its destructor are template arguments so that the short path is a flag
// test, pthread_getspecific and the caller's load.
template <class Value, nax_tls_key& Record, void (*Cleanup)(void*), size_t Size>
inline Value* tls_cell() {
    static_assert(sizeof(Value) <= Size);
    if (key_exists(Record)) [[likely]]
        if (void* const cell = pthread_getspecific(Record.key)) [[likely]]
            return static_cast<Value*>(cell);
    return static_cast<Value*>(make_tls_cell(Record, Cleanup, Size));
}

inline uint32_t& mode_cell() { return *tls_cell<uint32_t, Mode_key, Mode_cleanup, 8>(); }
inline int32_t& status_cell() { return *tls_cell<int32_t, ErrStatus_key, ErrStatus_cleanup, 8>(); }
inline arq_error_callback& callback_cell() {
    return *tls_cell<arq_error_callback, CallBack_key, CallBack_cleanup, 16>();
}
inline const void*& input_vector_cell() {
    return *tls_cell<const void*, InputVecorPointer_key, InputVecorPointer_cleanup, 16>();
}

}  // namespace nax::runtime
