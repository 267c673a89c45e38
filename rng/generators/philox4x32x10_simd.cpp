// PHILOX4X32X10: the block loop. A vector has a counter word of one block in each 64-bit lane; only the low halves count, so
// the low half of a product needs no masking and the high half one shift.
#include "rng/generators/counter_draw.h"
#include "rng/generators/philox4x32x10.h"
#include "rng/generators/to_real.h"
#include "rng/generator.h"
#include "rng/generators/words.h"

namespace nax::rng {

namespace {

constexpr int kBlocks = kLanes64;  // blocks in a vector
constexpr int kRows = 2;           // vectors of output words that they fill

inline U64 xor_lanes(U64 a, U64 b, U64 c) {
    return reinterpret_cast<U64>(xor3(reinterpret_cast<U32>(a), reinterpret_cast<U32>(b), reinterpret_cast<U32>(c)));
}

#ifdef __AVX512F__

inline U64 lane_numbers() { return U64{0, 1, 2, 3, 4, 5, 6, 7}; }
// Words (c0, c1, c2, c3) of blocks in lanes to blocks in a row: low |= c1 << 32, high |= c3 << 32, pairs interleaved.
inline void store_blocks(U32* to, U64 c0, U64 c1, U64 c2, U64 c3) {
    constexpr __mmask16 kOdd = 0xAAAA;
    const __m512i low = _mm512_mask_blend_epi32(kOdd, bits(c0), bits(c1 << 32));
    const __m512i high = _mm512_mask_blend_epi32(kOdd, bits(c2), bits(c3 << 32));
    constexpr long long kHigh = 8;  // lanes of the second operand
    const auto row = [&](long long first) {
        const __m512i order = _mm512_setr_epi64(first, kHigh + first, first + 1, kHigh + first + 1, first + 2,
                                                kHigh + first + 2, first + 3, kHigh + first + 3);
        return words_of(_mm512_permutex2var_epi64(low, order, high));
    };
    to[0] = row(0);
    to[1] = row(4);
}

#else

inline U64 lane_numbers() { return U64{0, 1, 2, 3}; }
inline void store_blocks(U32* to, U64 c0, U64 c1, U64 c2, U64 c3) {
    const auto merge = [](U64 a, U64 b) {
        return _mm256_blend_epi32(reinterpret_cast<__m256i>(a), reinterpret_cast<__m256i>(b << 32), 0xAA);
    };
    const __m256i low = merge(c0, c1);
    const __m256i high = merge(c2, c3);
    const __m256i even = _mm256_unpacklo_epi64(low, high);  // blocks 0, 2
    const __m256i odd = _mm256_unpackhi_epi64(low, high);   // blocks 1, 3
    to[0] = reinterpret_cast<U32>(_mm256_permute2x128_si256(even, odd, 0x20));
    to[1] = reinterpret_cast<U32>(_mm256_permute2x128_si256(even, odd, 0x31));
}

#endif

struct PhiloxVectors {
    static constexpr int kManyRows = 2 * kRows;  // two vectors in flight: one alone waits for its products
    static constexpr int kFewRows = kRows;

    uint32_t key0, key1;

    explicit PhiloxVectors(const PhiloxState& state) : key0(state.key[0]), key1(state.key[1]) {}

    // The blocks from counter on, in rows of words.
    template <int rows>
    [[gnu::always_inline]] void blocks(Wide counter, U32 (&out)[rows]) const {
        constexpr int kVectors = rows / kRows;
        const U64 m0 = broadcast(uint64_t{kPhiloxMultiplier0});
        const U64 m1 = broadcast(uint64_t{kPhiloxMultiplier1});
        U64 c0[kVectors], c1[kVectors], c2[kVectors], c3[kVectors];
        const uint64_t high = static_cast<uint64_t>(counter >> 64);
        for (int v = 0; v < kVectors; ++v) {
            c0[v] = broadcast(static_cast<uint64_t>(counter) + static_cast<uint64_t>(v * kBlocks)) + lane_numbers();
            c1[v] = c0[v] >> 32;
            c2[v] = broadcast(high);
            c3[v] = broadcast(high >> 32);
        }
        uint32_t key[2] = {key0, key1};
#pragma GCC unroll 10
        for (int round = 0; round < kPhiloxRounds; ++round) {
            const U64 k0 = broadcast(uint64_t{key[0]});
            const U64 k1 = broadcast(uint64_t{key[1]});
#pragma GCC unroll 4
            for (int v = 0; v < kVectors; ++v) {
                const U64 p0 = multiply_low_halves(c0[v], m0);
                const U64 p1 = multiply_low_halves(c2[v], m1);
                c0[v] = xor_lanes(p1 >> 32, c1[v], k0);
                c1[v] = p1;
                c2[v] = xor_lanes(p0 >> 32, c3[v], k1);
                c3[v] = p0;
            }
            key[0] += kPhiloxKeyStep0;
            key[1] += kPhiloxKeyStep1;
        }
#pragma GCC unroll 4
        for (int v = 0; v < kVectors; ++v) store_blocks(out + v * kRows, c0[v], c1[v], c2[v], c3[v]);
    }
};

template <class Map, class T>
void draw(PhiloxState& state, int n, T* r, const Map& map) {
    draw_counter(state, n, r, map, PhiloxVectors(state), philox_block);
}

}  // namespace

}  // namespace nax::rng

using namespace nax::rng;

NAX_WORD_OUTPUT(PHILOX4X32X10, PhiloxState, MidpointScale)
