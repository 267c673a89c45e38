// Modular arithmetic of the linear generators' states.
#pragma once

#include <cstdint>

namespace nax::rng {

inline constexpr uint32_t kMersenne31 = 0x7FFFFFFF;              // 2^31 - 1, prime
inline constexpr uint64_t kMask59 = (uint64_t{1} << 59) - 1;

// a b mod 2^31 - 1 for a, b below the modulus, by folding: 2^31 = 1. Two zero representatives meet in the subtraction.
constexpr uint32_t multiply_mod_mersenne31(uint32_t a, uint32_t b) {
    const uint64_t product = static_cast<uint64_t>(a) * b;
    const uint64_t sum = (product & kMersenne31) + (product >> 31);
    return static_cast<uint32_t>(sum >= kMersenne31 ? sum - kMersenne31 : sum);
}

constexpr uint64_t multiply_mod_2p59(uint64_t a, uint64_t b) { return (a * b) & kMask59; }

constexpr uint32_t multiply_mod(uint32_t a, uint32_t b, uint32_t m) {
    return static_cast<uint32_t>(static_cast<uint64_t>(a) * b % m);
}

}  // namespace nax::rng
