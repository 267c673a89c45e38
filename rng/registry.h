// Decoding of generator ids, the parts of the sub-stream numbering that generators need, and the generators' judgement of
// what a stream holds.
#pragma once

#include "rng/stream.h"

namespace nax::rng {

inline constexpr int kOldRows = 281;        // rows of __RegBrngs that pass the validity test; the last two are empty
inline constexpr int kMaxRows = 512;        // capacity of __RegBrngsNew
inline constexpr int kFirstNewId = 0x100000;
inline constexpr int kWhRows = 273;         // sub-streams of WH
inline constexpr int kMt2203Rows = 6024;    // sub-streams of MT2203

// Where an id leads: a row of one of the two tables and the sub-stream within it.
struct BrngPlace {
    const BrngProperties* table;
    int row;
    int offset;

    const BrngProperties& properties() const { return table[row]; }
};

inline BrngPlace place_of(int brng) {
    BrngPlace place{};
    place.table = __stoGetBrngBaseOffset(brng, &place.row, &place.offset);
    return place;
}

// The validity test has no lower bound, so a negative id passes it; nothing may be read at a negative row, though.
inline bool is_known(const BrngPlace& place) {
    return place.row >= 0 && __stoIsBrngValid(place.table, place.row, place.offset) == STO_STATUS_OK;
}

// The sub-stream that a stream was created for: selects the parameter row of WH and MT2203.
inline int substream_of(const Stream* stream) { return place_of(stream->brng).offset; }

// The registry row of an existing stream, which is trusted to be valid.
inline const BrngProperties& properties_of(const Stream* stream) { return place_of(stream->brng).properties(); }

// Bytes of a stream behind its header; a registered generator may have none.
inline int payload_size(const BrngProperties& properties) {
    constexpr int header = static_cast<int>(kHeaderSize);
    return properties.StreamStateSize > header ? properties.StreamStateSize - header : 0;
}

// Of each built-in generator, see rng/generator.h.
#define BRNG(generator, ...) bool valid_##generator(const Stream* stream);
#include "rng/registry_rows.def"
#undef BRNG

// Whether the stream's generator can work with what the stream holds. One that was registered is not asked.
bool is_usable(const Stream* stream);

}  // namespace nax::rng
