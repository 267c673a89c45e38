// WH: four multiplicative generators x_j(n+1) = a_j x_j(n) mod m_j, whose fractions x_j/m_j are added modulo 1. Output
// words come four to an output: x_1 to x_4 before the step. The moduli are primes below 2^24, each multiplier a primitive
// root below 128, and the (m_j - 1)/2 of a row are pairwise coprime, so a row's period is about 2^93. 273 rows without a
// common modulus make 273 generators.
// Wichmann, Hill, Algorithm AS 183, Appl. Statist. 31 (1982); Maclaren, The generation of multiple independent sequences of
// pseudorandom numbers, Appl. Statist. 38 (1989), for the family.
#include "rng/generators/wh.h"

#include "rng/registry.h"

using namespace nax::rng;

namespace {

// A negative count reads all four seeds.
void seed(WhState& state, int row, int n, const uint32_t* seeds) {
    for (int j = 0; j < kWhComponents; ++j) {
        const bool given = n < 0 || j < n;
        const uint32_t x = given ? seeds[j] % _sto_WH_M[row][j] : 1;
        state.x[j] = x != 0 ? x : 1;
        state.a[j] = _sto_WH_A[row][j];
    }
}

// x := x a^count in every component.
void skip(WhState& state, int row, uint64_t count) {
    for (int j = 0; j < kWhComponents; ++j) {
        const uint32_t m = _sto_WH_M[row][j];
        state.x[j] = static_cast<uint32_t>(static_cast<uint64_t>(state.x[j]) * __stoiPowMod(state.a[j], count, m) % m);
    }
}

void leapfrog(WhState& state, int row, uint32_t k, uint64_t streams) {
    skip(state, row, k);
    for (int j = 0; j < kWhComponents; ++j) state.a[j] = __stoiPowMod(state.a[j], streams, _sto_WH_M[row][j]);
}

}  // namespace

extern "C" int __stoBRngWHInitStream(int method, nax_stream* stream, int n, const void* params) {
    WhState& state = payload<WhState>(stream);
    const int row = substream_of(stream);
    switch (method) {
        case NAX_INIT_STANDARD: seed(state, row, n, static_cast<const uint32_t*>(params)); return STO_STATUS_OK;
        case NAX_INIT_LEAPFROG:
            leapfrog(state, row, *static_cast<const uint32_t*>(params), static_cast<uint64_t>(n));
            return STO_STATUS_OK;
        case NAX_INIT_SKIPAHEAD: skip(state, row, *static_cast<const uint64_t*>(params)); return STO_STATUS_OK;
        case NAX_INIT_SKIPAHEADEX: return STO_STATUS_NO_SKIPAHEADEX;
        default: return STO_STATUS_BAD_METHOD;
    }
}
