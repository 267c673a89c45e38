#include <sched.h>

#include "service/service.h"

// 0 free, 1 held. Held for a few instructions only (key creation, environment reads), so waiting yields and retries.
extern "C" void nax_serv_lock(int32_t* lock_word) {
    while (__atomic_exchange_n(lock_word, 1, __ATOMIC_ACQUIRE) != 0) sched_yield();
}
extern "C" void nax_serv_unlock(int32_t* lock_word) { __atomic_store_n(lock_word, 0, __ATOMIC_RELEASE); }
