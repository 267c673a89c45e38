// Remainders modulo polynomials of few terms, without their inverse.
//
// With p = x^d + sum of x^e, q x^d = sum of q x^e modulo p. The quotient comes out from its top: a block of words of the
// value is right once the terms of all quotient words above are added, and the quotient words that a block needs lie at
// least d - e bits above it. So each block gathers shifted words of the quotient, term by term, and is stored once.
#include <cstring>

#include "rng/generators/gf2_polynomial.h"
#include "simd/integers.h"

namespace nax::rng {

using namespace simd;

namespace {

constexpr int kBlockVectors = kFoldBlock / kLanes64;

// A term x^e brings quotient words from d - e bits above.
struct Term {
    int words;
    uint64_t down, up;
};

// block[i] ^= the quotient from a term's distance above place i, for all terms.
void gather(uint64_t* block, const uint64_t* quotient, const Term* term, const Term* end) {
    U64 sum[kBlockVectors];
#pragma GCC unroll 2
    for (int v = 0; v < kBlockVectors; ++v) sum[v] = load<U64>(block + v * kLanes64);
    for (; term < end; ++term) {
        const U64 down = broadcast(term->down), up = broadcast(term->up);
        const uint64_t* from = quotient + term->words;
#pragma GCC unroll 2
        for (int v = 0; v < kBlockVectors; ++v, from += kLanes64) {
            sum[v] ^= shift_down(load<U64>(from), down);
            sum[v] ^= shift_up(load<U64>(from + 1), up);
        }
    }
#pragma GCC unroll 2
    for (int v = 0; v < kBlockVectors; ++v) store(block + v * kLanes64, sum[v]);
}

}  // namespace

void poly_fold(uint64_t* value, int words, int degree, int terms, const int32_t* exponents, uint64_t* quotient) {
    Term table[kFoldTerms];
    Term* last = table;
    for (int i = terms - 2; i >= 0; --i) {
        const int distance = degree - exponents[i];
        *last++ = {distance / 64, static_cast<uint64_t>(distance % 64), static_cast<uint64_t>(64 - distance % 64)};
    }
    const int first = degree / 64;  // lowest word of the quotient, with its bits from `degree` on
    const uint64_t below = (uint64_t{1} << (degree % 64)) - 1;
    std::memset(quotient, 0, static_cast<std::size_t>(words + kFoldPadding) * sizeof(uint64_t));
    const Term* begin = table;  // terms begin ... end - 1 reach into the quotient
    const Term* end = table;
    for (int j = words - kFoldBlock; j >= 0; j -= kFoldBlock) {
        while (begin < last && j + begin->words + kFoldBlock < first) ++begin;
        while (end < last && j + end->words < words) ++end;
        gather(value + j, quotient + j, begin, end);
        for (int i = j > first ? j : first; i < j + kFoldBlock; ++i) {
            const uint64_t kept = i == first ? value[i] & below : 0;
            quotient[i] = value[i] ^ kept;
            value[i] = kept;
        }
    }
}

}  // namespace nax::rng
