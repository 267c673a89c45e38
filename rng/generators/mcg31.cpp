// MCG31: x(n+1) = 1132489760 x(n) mod 2^31 - 1. Output words are the x themselves, 1 to 2^31 - 2. The multiplier is a
// primitive root, so the period is 2^31 - 2.
// L'Ecuyer, Tables of linear congruential generators of different sizes and good lattice structure, Math. Comp. 68 (1999).
//
// Integer output runs on the payload, real output on the lanes of chunk 14 and then brings the payload up to them. Integers
// drawn after reals so continue the sequence; reals drawn after integers start where the last reals ended.
#include "rng/generator.h"
#include "rng/generators/mcg.h"

using namespace nax::rng;

namespace {

uint64_t first_output(int n, const uint32_t* seeds) { return n >= 1 ? seeds[0] % kMersenne31 : 1; }

using Generator = Multiplicative<Mcg31, first_output>;

}  // namespace

NAX_GENERATOR(MCG31M1, Generator)
