// MT19937: state and block operations.
#pragma once

#include "rng/stream.h"

namespace nax::rng {

inline constexpr int kMt19937Words = 624;
inline constexpr int kMt19937Middle = 397;
inline constexpr uint32_t kMt19937UpperBit = 0x80000000u;
inline constexpr uint32_t kMt19937MatrixA = 0x9908B0DFu;

struct Mt19937State {
    uint32_t x[kMt19937Words];
    int32_t next;  // word to deliver next; 624: a new block is due
    uint32_t unused;
};
static_assert(kStreamStateSize<Mt19937State> == 2520 && offsetof(Mt19937State, next) == 2496);

// Passes over n words by plain generation.
void mt19937_discard(Mt19937State& state, uint64_t n);

}  // namespace nax::rng
