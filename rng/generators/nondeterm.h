// NONDETERM: state.
#pragma once

#include "rng/stream.h"

namespace nax::rng {

struct NondetermState {
    uint32_t source;   // 0: RDRAND
    uint32_t retries;  // tries for a word
};
static_assert(kStreamStateSize<NondetermState> == 24);

}  // namespace nax::rng
