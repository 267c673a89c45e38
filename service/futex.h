// Sleeping until a word changes, as the kernel offers it to locks and turn counters.
#pragma once

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>

namespace nax::service {

// Returns when the word no longer holds `seen`, on a wake, or for no reason: callers test again.
inline void futex_wait(int32_t* word, int32_t seen) {
    syscall(SYS_futex, word, FUTEX_WAIT_PRIVATE, seen, nullptr, nullptr, 0);
}
inline void futex_wake(int32_t* word, int waiters) {
    syscall(SYS_futex, word, FUTEX_WAKE_PRIVATE, waiters, nullptr, nullptr, 0);
}

}  // namespace nax::service
