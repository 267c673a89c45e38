// The control and status words of both floating-point units. The memory clobbers keep arithmetic, loads and stores on
// their side of a change. All of it is inlined, so that each caller keeps to its own instruction set.
#pragma once

#include <cstdint>

namespace nax::platform {

[[gnu::always_inline]] inline uint32_t read_mxcsr() {
    uint32_t word;
    __asm__ volatile("stmxcsr %0" : "=m"(word) : : "memory");
    return word;
}
[[gnu::always_inline]] inline void write_mxcsr(uint32_t word) {
    __asm__ volatile("ldmxcsr %0" : : "m"(word) : "memory");
}

[[gnu::always_inline]] inline uint32_t read_x87_control() {
    uint16_t word;
    __asm__ volatile("fnstcw %0" : "=m"(word));
    return word;
}
[[gnu::always_inline]] inline void write_x87_control(uint32_t value) {
    const auto word = static_cast<uint16_t>(value);
    __asm__ volatile("fldcw %0" : : "m"(word));
}
inline uint32_t read_x87_status() {
    uint16_t word;
    __asm__ volatile("fnstsw %0" : "=m"(word));
    return word;
}
inline void clear_x87_exceptions() { __asm__ volatile("fnclex"); }

// `word` with the bits of `mask` taken from `value`.
constexpr uint32_t merged(uint32_t word, uint32_t value, uint32_t mask) { return (word & ~mask) | (value & mask); }

}  // namespace nax::platform
