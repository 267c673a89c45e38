// PHILOX4X32X10: state and block function.
#pragma once

#include "rng/generators/counter128.h"
#include "rng/stream.h"

namespace nax::rng {

using PhiloxState = CounterState<2>;
static_assert(kStreamStateSize<PhiloxState> == 64 && offsetof(PhiloxState, counter) == 8 &&
              offsetof(PhiloxState, left) == 24 && offsetof(PhiloxState, block) == 28);

inline constexpr uint32_t kPhiloxMultiplier0 = 0xD2511F53u;
inline constexpr uint32_t kPhiloxMultiplier1 = 0xCD9E8D57u;
inline constexpr uint32_t kPhiloxKeyStep0 = 0x9E3779B9u;
inline constexpr uint32_t kPhiloxKeyStep1 = 0xBB67AE85u;
inline constexpr int kPhiloxRounds = 10;

// The output block of state.counter.
void philox_block(const PhiloxState& state, uint32_t (&out)[4]);

}  // namespace nax::rng
