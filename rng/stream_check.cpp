#include "rng/stream_check.h"

#include <cstring>

#include "rng/registry.h"

namespace nax::rng {
namespace {

// Rows of the current table.
enum Row { kR250 = 1, kWh = 4, kSobol = 5, kNiederreiter = 6, kMt19937 = 7, kMt2203 = 8, kIntegerRing = 9, kDoubleRing = 10,
           kSingleRing = 11, kSfmt19937 = 12, kArs5 = 14, kPhilox = 15 };

// A 32-bit word of the payload, the largest value that it may have, and what it is a multiple of.
struct Bound {
    Row row;
    unsigned offset;
    uint32_t largest;
    uint32_t unit;
};
constexpr Bound kBounds[] = {
    {kR250, 1000, 249, 1},      {kR250, 1004, 249, 1},                                    // the ring's two indices
    {kMt19937, 2496, 624, 1},   {kMt2203, 276, 69, 1},                                    // next word
    {kSfmt19937, 2496, 624, 4}, {kSfmt19937, 2512, 3, 1}, {kSfmt19937, 2516, 3, 1},       // next word, spare words
    {kArs5, 32, 4, 1},          {kPhilox, 24, 4, 1},                                      // unread words
};

uint32_t word_at(const Stream* stream, unsigned offset) {
    uint32_t word;
    std::memcpy(&word, &payload<unsigned char>(stream) + offset, sizeof(word));
    return word;
}

// The row of the current table for either numbering.
int current_row(const BrngPlace& place) {
    if (place.table == __RegBrngsNew || place.row < kWh) return place.row;
    const int first_after_wh = kWh + kWhRows;
    return place.row < first_after_wh ? kWh : place.row - first_after_wh + kSobol;
}

uint64_t chunk_size(const Stream* stream, ChunkId id) {
    for (const Chunk* chunk = stream->chunks; chunk != nullptr; chunk = chunk->Next) {
        if (chunk->Id == static_cast<uint32_t>(id)) return static_cast<uint64_t>(chunk->Size);
    }
    return 0;
}

// Dimension, selected coordinate, coordinates left of the point. A stream with a point and direction numbers in a chunk
// of its own has 33 words there for each dimension.
bool point_in_range(const Stream* stream, uint32_t most, ChunkId own_table) {
    const uint32_t dimension = word_at(stream, 4), left = word_at(stream, 12);
    const int32_t selected = static_cast<int32_t>(word_at(stream, 8));
    const uint64_t own = chunk_size(stream, own_table) / (33 * sizeof(uint32_t));
    return dimension >= 1 && dimension <= (own != 0 ? own : most) && left < dimension && selected >= -1 &&
           (selected < 0 || static_cast<uint32_t>(selected) < dimension);
}

bool ring_in_range(const Stream* stream) {
    const uint32_t n = word_at(stream, 0), index = word_at(stream, 4), free_slots = word_at(stream, 8);
    return n >= 1 && n <= 0x7FFFFFFF && index < n && free_slots <= n;
}

}  // namespace

bool positions_in_range(const Stream* stream) {
    const int row = current_row(place_of(stream->brng));
    for (const Bound& bound : kBounds) {
        if (bound.row != row) continue;
        const uint32_t word = word_at(stream, bound.offset);
        if (word > bound.largest || word % bound.unit != 0) return false;
    }
    switch (row) {
        case kSobol: return point_in_range(stream, 40, ChunkId::kSobolWork);
        case kNiederreiter: return point_in_range(stream, 318, ChunkId::kNiederreiterDirections);
        case kIntegerRing:
        case kDoubleRing:
        case kSingleRing: return ring_in_range(stream);
        default: return true;
    }
}

}  // namespace nax::rng
