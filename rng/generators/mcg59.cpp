// MCG59: x(n+1) = 13^13 x(n) mod 2^59. Output words are the x themselves in 64 bits; for an odd seed they are odd and the
// period is 2^57 (13^13 = 5 mod 8), and the low bits have short periods: bit i repeats after 2^(i-1) words.
// Knuth, The Art of Computer Programming 2, section 3.2.1.2 (periods of multiplicative generators modulo powers of 2).
//
// Integer output runs on the payload, real output on the lanes of chunk 14; see MCG31.
#include "rng/generators/mcg.h"

using namespace nax::rng;

extern "C" int __stoBRngMCG59InitStream(int method, nax_stream* stream, int n, const void* params) {
    if (method != NAX_INIT_STANDARD) return split<Mcg59>(method, stream, n, params);
    const uint32_t* const seeds = static_cast<const uint32_t*>(params);
    uint64_t seed = 1;
    if (n == 1) seed = seeds[0];
    if (n >= 2) seed = (seeds[0] | static_cast<uint64_t>(seeds[1]) << 32) & kMask59;
    payload<Mcg59State>(stream) = {seed != 0 ? seed : 1, Mcg59::kMultiplier};
    return attach_lanes<Mcg59>(stream);
}
