// MRG32K3A: x(n) = 1403580 x(n-2) - 810728 x(n-3) mod 2^32 - 209, y(n) = 527612 y(n-1) - 1370589 y(n-3) mod 2^32 - 22853.
// Output words are z(n) = x(n) - y(n) modulo 2^32 - 209, taken in 1 ... 2^32 - 209. Period about 2^191.
// L'Ecuyer, Good parameters and implementations for combined multiple recursive random number generators, Operations
// Research 47 (1999).
//
// Skips of any length are powers of the companion matrices, so 2^64 streams of 2^127 numbers are at hand (L'Ecuyer, Simard,
// Chen, Kelton, Operations Research 50 (2002)).
#include "rng/generators/mrg32k3a.h"

#include <algorithm>

#include "rng/generator.h"

using namespace nax::rng;

namespace {

int seed_state(Mrg32k3aState& state, int n, const uint32_t* seeds) {
    uint32_t words[6] = {1, 1, 1, 1, 1, 1};
    for (int i = 0; i < std::min(n, 6); ++i) {
        const uint32_t modulus = i < 3 ? kMrgX.modulus : kMrgY.modulus;
        words[i] = seeds[i] >= modulus ? seeds[i] - modulus : seeds[i];
    }
    std::copy(words, words + 3, state.x);
    std::copy(words + 3, words + 6, state.y);
    if ((state.x[0] | state.x[1] | state.x[2]) == 0) state.x[0] = 1;
    if ((state.y[0] | state.y[1] | state.y[2]) == 0) state.y[0] = 1;
    return STO_STATUS_OK;
}

constexpr uint32_t kRowX[3] = {kMrgX.row(0), kMrgX.row(1), kMrgX.row(2)};
constexpr uint32_t kRowY[3] = {kMrgY.row(0), kMrgY.row(1), kMrgY.row(2)};

// By the tabulated powers: a product of matrix and vector for each bit set.
int skip_by_table(Mrg32k3aState& state, int words, const uint64_t* count) {
    __stoiVect3PowArrayMod_M1(state.x, words, count, _sto_mrg32k3a_skipahead_table);
    __stoiVect3PowArrayMod_M2(state.y, words, count, _sto_mrg32k3a_skipahead_table + 9 * kMrgMatrices);
    return STO_STATUS_OK;
}

// Bits that the table of matrices covers.
bool fits_table(int words, const uint64_t* count) {
    constexpr int kWhole = kMrgMatrices / 64, kRest = kMrgMatrices % 64;
    for (int i = kWhole; i < words; ++i) {
        const uint64_t beyond = i == kWhole ? count[i] >> kRest : count[i];
        if (beyond != 0) return false;
    }
    return true;
}

int skip_words(Mrg32k3aState& state, int words, const uint64_t* count) {
    if (words <= 0) return STO_STATUS_OK;
    if (fits_table(words, count)) return skip_by_table(state, std::min(words, (kMrgMatrices + 63) / 64), count);
    Mrg32k3aState moved = state;
    int status = __stoiVect3PowArrayMod(moved.x, kRowX, kMrgX.modulus, words, count);
    if (status == STO_STATUS_OK) status = __stoiVect3PowArrayMod(moved.y, kRowY, kMrgY.modulus, words, count);
    if (status == STO_STATUS_OK) state = moved;
    return status;
}

struct Mrg32k3a {
    static Mrg32k3aState& state(Stream* stream) { return payload<Mrg32k3aState>(stream); }
    static int seed(Stream* stream, int n, const uint32_t* seeds) { return seed_state(state(stream), n, seeds); }
    static int skip_ahead(Stream* stream, int, uint64_t count) { return skip_by_table(state(stream), 1, &count); }
    static int skip_ahead_far(Stream* stream, int words, const uint64_t* count) {
        return skip_words(state(stream), words, count);
    }
};

}  // namespace

NAX_GENERATOR(MRG32K3A, Mrg32k3a)
