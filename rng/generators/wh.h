// State of WH, shared by seeding and the block loops.
#pragma once

#include "rng/stream.h"

namespace nax::rng {

inline constexpr int kWhComponents = 4;

struct WhState {
    uint32_t x[kWhComponents];
    uint32_t a[kWhComponents];
};
static_assert(kStreamStateSize<WhState> == 48);

}  // namespace nax::rng
