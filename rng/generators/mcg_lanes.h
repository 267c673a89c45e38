// What MCG31 and MCG59 share: the block of eight lanes behind their real output, kept in chunk 14.
//
// Lane i holds x(t+i). Multiplying all lanes by a^8 gives the next eight outputs; with a^8, a^16, a^24, a^32 at hand, 32
// numbers need four independent products and one that carries the lanes on.
#pragma once

#include "rng/stream.h"

namespace nax::rng {

inline constexpr int kLaneCount = 8;

// Chunk 14. It is saved whole, but on load all is rebuilt from lane 0 and the stream's multiplier.
struct LaneBlock {
    uint32_t engine;             // row of the engine property table: 0 MCG31, 1 MCG59
    uint32_t unused[15];
    uint64_t lanes[8];           // x(t) ... x(t+7)
    uint64_t steps[4][8];        // a^8, a^16, a^24, a^32, each in all lanes
};
static_assert(sizeof(LaneBlock) == chunk_size(ChunkId::kLanes) && offsetof(LaneBlock, lanes) == 64 && offsetof(LaneBlock, steps) == 128);

// Constants of an engine, each a full vector.
struct alignas(64) EngineProperty {
    uint32_t index[16];          // the row's number in the first word
    float single_scale[16];
    double double_scale[8];
};
static_assert(sizeof(EngineProperty) == 3 * 64);

// A multiplicative generator: the names behind the seed and the arithmetic of its modulus.
struct Mcg31State {
    uint32_t x;      // next output
    uint32_t a;      // multiplier
};
struct Mcg59State {
    uint64_t x;
    uint64_t a;
};
static_assert(kStreamStateSize<Mcg31State> == 24 && kStreamStateSize<Mcg59State> == 32);

// a^0 ... a^7 and the four steps for a multiplier.
struct Powers {
    uint64_t first[8];
    uint64_t steps[4];
};

template <class Multiply>
constexpr Powers powers_of(uint64_t a, Multiply multiply) {
    Powers powers{};
    uint64_t power = 1;
    for (uint64_t& entry : powers.first) {
        entry = power;
        power = multiply(power, a);
    }
    const uint64_t eighth = power;
    for (uint64_t& step : powers.steps) {
        step = power;
        power = multiply(power, eighth);
    }
    return powers;
}

inline LaneBlock* find_lanes(const Stream* stream) { return static_cast<LaneBlock*>(find_chunk(stream, ChunkId::kLanes)); }

// The lanes of a stream that has none yet, linked to it; null when memory is short.
LaneBlock* add_lanes(Stream* stream, uint32_t engine);

// After chunk 14 has been read back: rebuilds it from its lane 0 and the multiplier in the payload. STO_STATUS_FILE_READ
// when the chunk belongs to another generator than the stream. Streams of other generators are left alone.
int restore_lanes(Stream* stream);

}  // namespace nax::rng

extern "C" const nax::rng::EngineProperty nax_sto_sub_kernel_vrng_coreavx512_engine_property[2];
