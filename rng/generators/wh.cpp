// WH: four multiplicative generators x_j(n+1) = a_j x_j(n) mod m_j, whose fractions x_j/m_j are added modulo 1. Output
// words come four to an output: x_1 to x_4 before the step. The moduli are primes below 2^24, each multiplier a primitive
// root below 128, and the (m_j - 1)/2 of a row are pairwise coprime, so a row's period is about 2^93. 273 rows without a
// common modulus make 273 generators.
// Wichmann, Hill, Algorithm AS 183, Appl. Statist. 31 (1982); Maclaren, The generation of multiple independent sequences of
// pseudorandom numbers, Appl. Statist. 38 (1989), for the family.
#include "rng/generators/wh.h"

#include "rng/generator.h"
#include "rng/generators/modular_power.h"

using namespace nax::rng;

namespace {

struct Wh {
    // A negative count reads all four seeds.
    static int seed(Stream* stream, int n, const uint32_t* seeds) {
        const int row = substream_of(stream);
        WhState& state = payload<WhState>(stream);
        for (int j = 0; j < kWhComponents; ++j) {
            const bool given = n < 0 || j < n;
            const uint32_t x = given ? seeds[j] % _sto_WH_M[row][j] : 1;
            state.x[j] = x != 0 ? x : 1;
            state.a[j] = _sto_WH_A[row][j];
        }
        return STO_STATUS_OK;
    }
    // x := x a^count in every component.
    static int skip_ahead(Stream* stream, int, uint64_t count) {
        const int row = substream_of(stream);
        WhState& state = payload<WhState>(stream);
        for (int j = 0; j < kWhComponents; ++j) {
            const uint32_t m = _sto_WH_M[row][j];
            state.x[j] = multiply_mod(state.x[j], __stoiPowMod(state.a[j], count, m), m);
        }
        return STO_STATUS_OK;
    }
    static int leapfrog(Stream* stream, uint32_t k, int streams) {
        skip_ahead(stream, 1, k);
        const int row = substream_of(stream);
        for (int j = 0; j < kWhComponents; ++j) {
            uint32_t& a = payload<WhState>(stream).a[j];
            a = __stoiPowMod(a, static_cast<uint64_t>(streams), _sto_WH_M[row][j]);
        }
        return STO_STATUS_OK;
    }
};

}  // namespace

NAX_GENERATOR(WH, Wh)
