// MCG59: x(n+1) = 13^13 x(n) mod 2^59. Output words are the x themselves in 64 bits; for an odd seed they are odd and the
// period is 2^57 (13^13 = 5 mod 8), and the low bits have short periods: bit i repeats after 2^(i-1) words.
// Knuth, The Art of Computer Programming 2, section 3.2.1.2 (periods of multiplicative generators modulo powers of 2).
//
// Integer output runs on the payload, real output on the lanes of chunk 14; see MCG31.
#include "rng/generator.h"
#include "rng/generators/mcg.h"

using namespace nax::rng;

namespace {

uint64_t first_output(int n, const uint32_t* seeds) {
    if (n < 1) return 1;
    return n == 1 ? seeds[0] : (seeds[0] | static_cast<uint64_t>(seeds[1]) << 32) & kMask59;
}

using Generator = Multiplicative<Mcg59, first_output>;

}  // namespace

NAX_GENERATOR(MCG59, Generator)
