// ARS5: state and block function.
#pragma once

#include "rng/generators/counter128.h"
#include "rng/stream.h"

namespace nax::rng {

using Ars5State = CounterState<4>;
static_assert(kStreamStateSize<Ars5State> == 72 && offsetof(Ars5State, counter) == 16 && offsetof(Ars5State, left) == 32 &&
              offsetof(Ars5State, block) == 36);

inline constexpr int kArs5Rounds = 5;
inline constexpr uint64_t kArs5KeyStepLow = 0x9E3779B97F4A7C15u;
inline constexpr uint64_t kArs5KeyStepHigh = 0xBB67AE8584CAA73Bu;

// The output block of state.counter.
void ars5_block(const Ars5State& state, uint32_t (&out)[4]);

}  // namespace nax::rng
