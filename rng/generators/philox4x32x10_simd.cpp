// PHILOX4X32X10: the block loop. A vector has a counter word of one block in each 64-bit lane; only the low halves count, so
// the low half of a product needs no masking and the high half one shift.
#include "rng/generators/counter_draw.h"
#include "rng/generators/philox4x32x10.h"
#include "rng/generators/to_real.h"
#include "rng/generator.h"

namespace nax::rng {

namespace {

constexpr int kBlocks = kLanes64;  // blocks in a vector
constexpr int kRows = 2;           // vectors of output words that they fill

// Words (c0, c1, c2, c3) of blocks in lanes to blocks in a row.
inline void store_blocks(U32* to, U64 c0, U64 c1, U64 c2, U64 c3) {
    U64 lower, upper;
    interleave((U64)interleave_low_halves(c0, c1), (U64)interleave_low_halves(c2, c3), lower, upper);
    to[0] = (U32)lower;
    to[1] = (U32)upper;
}

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
                c0[v] = xor3(p1 >> 32, c1[v], k0);
                c1[v] = p1;
                c2[v] = xor3(p0 >> 32, c3[v], k1);
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
