// The processor's time-stamp counter.
#pragma once

#include <cstdint>

namespace nax::platform {

// Any instruction may pass it.
inline uint64_t time_stamp() {
    uint32_t low, high;
    __asm__ volatile("rdtsc" : "=a"(low), "=d"(high) : : "memory");
    return uint64_t{high} << 32 | low;
}
// Waits for all instructions before it.
inline uint64_t ordered_time_stamp() {
    uint32_t low, high, processor;
    __asm__ volatile("rdtscp" : "=a"(low), "=d"(high), "=c"(processor) : : "memory");
    return uint64_t{high} << 32 | low;
}

}  // namespace nax::platform
