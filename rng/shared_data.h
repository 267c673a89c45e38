// Ownership of a chunk's data: by its node, or by the process-wide table of read-only data.
#pragma once

#include "rng/stream.h"

namespace nax::rng {

inline constexpr int kSharedDataCapacity = 128;
// Chunks leave the last entry to __stoCreateGlobRODataTableEntry.
inline constexpr int kSharedDataLimitForChunks = 127;

inline bool has_identity(const uint64_t* glob_id) { return glob_id[0] != 0 || glob_id[1] != 0; }

// Whose word is taken for the size of an entry that no chunk brought.
enum class UnknownSize { kTrusted, kRefused };

// Gives a node with an identity its place in the table: takes a reference to the entry of that identity and points the
// node at the entry's data, or makes the entry from the node's own data. With a full table, or where the entry's data have
// another size, the node becomes private.
void share_node_data(Chunk* node, UnknownSize unknown = UnknownSize::kTrusted);

// __stoAddChunk for a chunk that comes from an image: it shares only what can be shared, and with data of its own size.
int add_loaded_chunk(Stream* stream, uint32_t id, const uint64_t* glob_id, void* data, int size);

// Releases all chunks of that id; the others stay.
void drop_chunks(Stream* stream, ChunkId id);

// Releases a node, and its data unless the table owns them.
void release_node(Chunk* node);

}  // namespace nax::rng
