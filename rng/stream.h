// The stream object: a header of 16 bytes, then the generator's payload. Saved streams hold the payload byte for byte, so
// the size of the header and every payload's layout are part of the file format.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "nax/abi/streams.h"

struct nax_stream {
    int32_t brng;             // the id that the stream was created with, sub-stream offset included
    uint8_t live;             // 1 since creation; nothing reads it
    uint8_t reserved[3];
    nax_stream_chunk* chunks;
};

namespace nax::rng {

using Stream = ::nax_stream;
using Chunk = ::nax_stream_chunk;
using BrngProperties = ::nax_brng_properties;
using SharedDataEntry = ::nax_shared_data_entry;

inline constexpr std::size_t kHeaderSize = 16;
static_assert(sizeof(Stream) == kHeaderSize && offsetof(Stream, live) == 4 && offsetof(Stream, chunks) == 8);
static_assert(sizeof(Chunk) == 40 && offsetof(Chunk, Data) == 8 && offsetof(Chunk, GlobId) == 24);
static_assert(sizeof(SharedDataEntry) == 32);
static_assert(sizeof(BrngProperties) == 7 * 8 && offsetof(BrngProperties, InitStream) == 24);

// What the chunks of the library hold, see chunk_ids.def.
enum class ChunkId : uint32_t {
#define CHUNK(name, id, size) k##name = id,
#include "rng/chunk_ids.def"
#undef CHUNK
};

// Bytes of the chunks of fixed size.
constexpr int chunk_size(ChunkId id) {
    switch (id) {
#define CHUNK(name, id, size) case ChunkId::k##name: return size;
#include "rng/chunk_ids.def"
#undef CHUNK
    }
    return 0;
}

// Views the payload as a generator's state.
template <class State>
State& payload(Stream* stream) {
    static_assert(std::is_trivially_copyable_v<State> && std::is_standard_layout_v<State>);
    return *reinterpret_cast<State*>(reinterpret_cast<unsigned char*>(stream) + kHeaderSize);
}
template <class State>
const State& payload(const Stream* stream) {
    static_assert(std::is_trivially_copyable_v<State> && std::is_standard_layout_v<State>);
    return *reinterpret_cast<const State*>(reinterpret_cast<const unsigned char*>(stream) + kHeaderSize);
}

// A payload must fill the registry row's StreamStateSize exactly.
template <class State>
inline constexpr int kStreamStateSize = static_cast<int>(kHeaderSize + sizeof(State));

// Whether every chunk of that id has at least so many bytes: which of several is found first changes with a copy.
inline bool chunks_hold(const Stream* stream, ChunkId id, uint64_t bytes) {
    for (const Chunk* chunk = stream->chunks; chunk != nullptr; chunk = chunk->Next) {
        if (chunk->Id == static_cast<uint32_t>(id) && static_cast<uint64_t>(chunk->Size) < bytes) return false;
    }
    return true;
}

// The data of the first chunk of that id, or null.
inline void* find_chunk(const Stream* stream, ChunkId id) {
    for (const Chunk* chunk = stream->chunks; chunk != nullptr; chunk = chunk->Next) {
        if (chunk->Id == static_cast<uint32_t>(id)) return chunk->Data;
    }
    return nullptr;
}

}  // namespace nax::rng
