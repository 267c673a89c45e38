// A lock in one word: 0 free, 1 held, 2 held with sleepers (U. Drepper, "Futexes Are Tricky", 2011, section 5).
#include <cerrno>
#include <cstdint>

#include "service/futex.h"
#include "service/service.h"

extern "C" void nax_serv_lock(int32_t* lock_word) {
    int32_t seen = 0;
    if (__atomic_compare_exchange_n(lock_word, &seen, 1, false, __ATOMIC_ACQUIRE, __ATOMIC_RELAXED)) return;
    // From here on the word is taken as 2, so that the holder wakes us; we can't know whether others sleep too.
    const int saved_errno = errno;
    while (__atomic_exchange_n(lock_word, 2, __ATOMIC_ACQUIRE) != 0) nax::service::futex_wait(lock_word, 2);
    errno = saved_errno;
}

extern "C" void nax_serv_unlock(int32_t* lock_word) {
    if (__atomic_exchange_n(lock_word, 0, __ATOMIC_RELEASE) == 2) nax::service::futex_wake(lock_word, 1);
}
