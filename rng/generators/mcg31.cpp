// MCG31: x(n+1) = 1132489760 x(n) mod 2^31 - 1. Output words are the x themselves, 1 to 2^31 - 2. The multiplier is a
// primitive root, so the period is 2^31 - 2.
// L'Ecuyer, Tables of linear congruential generators of different sizes and good lattice structure, Math. Comp. 68 (1999).
//
// Integer output runs on the payload, real output on the lanes of chunk 14 and then brings the payload up to them. Integers
// drawn after reals so continue the sequence; reals drawn after integers start where the last reals ended.
#include "rng/generators/mcg.h"

using namespace nax::rng;

extern "C" int __stoBRngMCG31M1InitStream(int method, nax_stream* stream, int n, const void* params) {
    if (method != NAX_INIT_STANDARD) return split<Mcg31>(method, stream, n, params);
    const uint32_t seed = n >= 1 ? *static_cast<const uint32_t*>(params) % kMersenne31 : 1;
    payload<Mcg31State>(stream) = {seed != 0 ? seed : 1, static_cast<uint32_t>(Mcg31::kMultiplier)};
    return attach_lanes<Mcg31>(stream);
}
