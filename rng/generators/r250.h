// State of R250, shared by seeding and the block loops.
#pragma once

#include "rng/stream.h"

namespace nax::rng {

inline constexpr int kR250Lag = 250;
inline constexpr int kR250Short = 147;                        // x(n) = x(n-147) xor x(n-250)
inline constexpr int kR250Start = kR250Lag - kR250Short;      // where x(n-147) stands when x(n-250) stands at 0

struct R250State {
    uint32_t x[kR250Lag];        // ring of the last 250 words
    uint32_t i;                  // x(n-250), the oldest word
    uint32_t j;                  // x(n-147)
};
static_assert(kStreamStateSize<R250State> == 1024 && offsetof(R250State, i) == 1000);

}  // namespace nax::rng

// From words to doubles by the fraction of 2^52, each constant a full vector: the mask of a lane's low half, 2^52, and 2^-32
// (not the reciprocal of 2^32 - 1, as its name would have it).
extern "C" {
extern const uint64_t iLoMask[8];
extern const double db2pow52[8];
extern const double dbInv2P32M1[8];
}
