// R250: x(n) = x(n-147) xor x(n-250) on 32-bit words; every bit is the shift register of x^250 + x^103 + 1. Period 2^250 - 1.
// Output words are the x(n). No leapfrog and no skip-ahead.
// Kirkpatrick, Stoll, A very fast shift-register sequence random number generator, J. Comput. Phys. 40 (1981). Three-point
// correlations at the lags are its known weakness (Ferrenberg, Landau, Wong, Phys. Rev. Lett. 69 (1992)).
#include "rng/generators/r250.h"

#include <cstring>

#include "rng/generator.h"

using namespace nax::rng;

extern "C" {
alignas(64) const uint64_t iLoMask[8] = {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF,
                                         0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF};
alignas(64) const double db2pow52[8] = {0x1p52, 0x1p52, 0x1p52, 0x1p52, 0x1p52, 0x1p52, 0x1p52, 0x1p52};
alignas(64) const double dbInv2P32M1[8] = {0x1p-32, 0x1p-32, 0x1p-32, 0x1p-32, 0x1p-32, 0x1p-32, 0x1p-32, 0x1p-32};
}

namespace {

// A seed spreads over the state by a congruential sequence modulo 2^32. Then 32 words are made a triangular matrix of
// bits, so that the 32 shift registers are independent.
void spread_seed(R250State& state, uint32_t seed) {
    uint32_t x = seed;
    for (uint32_t& word : state.x) {
        x *= 69069;
        word = x;
    }
    for (int k = 0; k < 32; ++k) {
        uint32_t& word = state.x[3 + 7 * k];
        word = (word & (0xFFFFFFFFu >> k)) | (0x80000000u >> k);
    }
}

struct R250 {
    static int seed(Stream* stream, int n, const uint32_t* seeds) {
        R250State& state = payload<R250State>(stream);
        if (n >= kR250Lag) std::memcpy(state.x, seeds, sizeof(state.x));
        else spread_seed(state, n >= 1 && seeds[0] != 0 ? seeds[0] : 1);
        state.i = 0;
        state.j = kR250Start;
        return STO_STATUS_OK;
    }
    static bool valid(const Stream* stream) {
        const R250State& state = payload<R250State>(stream);
        const auto inside = [](int64_t index) { return index >= 0 && index < kR250Lag; };
        return inside(state.i) && inside(state.j);
    }
};

}  // namespace

NAX_GENERATOR(R250, R250)
