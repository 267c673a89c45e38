// PHILOX4X32X10: state and block function.
#pragma once

#include "rng/generators/counter128.h"
#include "rng/stream.h"

namespace nax::rng {

struct PhiloxState {
    uint32_t key[2];
    uint32_t counter[4];  // least significant word first; one past the block below
    uint32_t left;        // unread words of the last block
    uint32_t block[4];
    uint32_t unused;
};
static_assert(kStreamStateSize<PhiloxState> == 64 && offsetof(PhiloxState, counter) == 8 &&
              offsetof(PhiloxState, left) == 24 && offsetof(PhiloxState, block) == 28);

inline constexpr uint32_t kPhiloxMultiplier0 = 0xD2511F53u;
inline constexpr uint32_t kPhiloxMultiplier1 = 0xCD9E8D57u;
inline constexpr uint32_t kPhiloxKeyStep0 = 0x9E3779B9u;
inline constexpr uint32_t kPhiloxKeyStep1 = 0xBB67AE85u;
inline constexpr int kPhiloxRounds = 10;

// The output block of state.counter.
inline void philox_block(const PhiloxState& state, uint32_t (&out)[4]) {
    uint32_t c0 = state.counter[0], c1 = state.counter[1], c2 = state.counter[2], c3 = state.counter[3];
    uint32_t k0 = state.key[0], k1 = state.key[1];
    for (int round = 0; round < kPhiloxRounds; ++round) {
        const uint64_t p0 = uint64_t{kPhiloxMultiplier0} * c0;
        const uint64_t p1 = uint64_t{kPhiloxMultiplier1} * c2;
        c0 = static_cast<uint32_t>(p1 >> 32) ^ c1 ^ k0;
        c1 = static_cast<uint32_t>(p1);
        c2 = static_cast<uint32_t>(p0 >> 32) ^ c3 ^ k1;
        c3 = static_cast<uint32_t>(p0);
        k0 += kPhiloxKeyStep0;
        k1 += kPhiloxKeyStep1;
    }
    out[0] = c0;
    out[1] = c1;
    out[2] = c2;
    out[3] = c3;
}

// The next n numbers, n at least 1.
void philox_draw(PhiloxState& state, int n, uint32_t* r);
void philox_draw(PhiloxState& state, int n, double* r, double a, double b);
void philox_draw(PhiloxState& state, int n, float* r, float a, float b);

}  // namespace nax::rng
