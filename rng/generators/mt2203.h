// MT2203: state and block operations.
#pragma once

#include "rng/stream.h"

namespace nax::rng {

inline constexpr int kMt2203Words = 69;
inline constexpr int kMt2203Middle = 34;
inline constexpr uint32_t kMt2203LowerBits = 31;

struct Mt2203State {
    uint32_t x[kMt2203Words];
    int32_t next;  // word to deliver next; 69: a new block is due
    uint32_t matrix_a, temper_b, temper_c;
    uint32_t unused;
};
static_assert(kStreamStateSize<Mt2203State> == 312 && offsetof(Mt2203State, next) == 276 &&
              offsetof(Mt2203State, matrix_a) == 280);

}  // namespace nax::rng
