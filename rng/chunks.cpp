// The chunk list of a stream: private data that generators and distributions keep on it. New nodes go in at the head; the
// order has no meaning.
#include "rng/shared_data.h"
#include "rng/stream.h"
#include "service/block.h"

using namespace nax;
using namespace nax::rng;

namespace {

Chunk* new_node(uint32_t id, int size, void* data) {
    Chunk* const node = static_cast<Chunk*>(nax_serv_allocate(sizeof(Chunk), service::kBlockAlignment));
    if (node != nullptr) *node = {id, size, data, nullptr, {0, 0}};
    return node;
}

void link(Stream* stream, Chunk* node) {
    node->Next = stream->chunks;
    stream->chunks = node;
}

// Duplicates one node: shares the source's data where the table has them, else copies them.
Chunk* copy_node(const Chunk& source) {
    Chunk* const node = new_node(source.Id, source.Size, nullptr);
    if (node == nullptr) return nullptr;
    node->GlobId[0] = source.GlobId[0];
    node->GlobId[1] = source.GlobId[1];
    if (has_identity(node->GlobId) && __stoRegisterGlobRODataReference(node, node->GlobId) == STO_STATUS_OK) {
        return node;
    }
    const std::size_t size = static_cast<std::size_t>(source.Size);
    node->Data = nax_serv_allocate(size, service::kBlockAlignment);
    if (node->Data == nullptr) {
        nax_serv_deallocate(node);
        return nullptr;
    }
    nax_serv_memcpy_s(node->Data, size, source.Data, size);
    if (has_identity(node->GlobId)) {
        // Another stream may enter the identity first; its block then replaces the copy.
        void* const copy = node->Data;
        share_node_data(node);
        if (node->Data != copy) nax_serv_deallocate(copy);
    }
    return node;
}

int add_node(Stream* stream, uint32_t id, const uint64_t* glob_id, void* data, int size, UnknownSize unknown) {
    Chunk* const node = new_node(id, size, data);
    if (node == nullptr) return STO_STATUS_NO_MEMORY;
    if (glob_id != nullptr && has_identity(glob_id)) {
        node->GlobId[0] = glob_id[0];
        node->GlobId[1] = glob_id[1];
        share_node_data(node, unknown);
    }
    link(stream, node);
    return STO_STATUS_OK;
}

// Chunks that the library writes to are their stream's own, whatever an image says.
bool may_be_shared(uint32_t id) {
#define CHUNK(name, number, size) \
    if (id == number) return ChunkId::k##name == ChunkId::kSobolDirections;
#include "rng/chunk_ids.def"
#undef CHUNK
    return true;
}

}  // namespace

namespace nax::rng {

int add_loaded_chunk(Stream* stream, uint32_t id, const uint64_t* glob_id, void* data, int size) {
    return add_node(stream, id, may_be_shared(id) ? glob_id : nullptr, data, size, UnknownSize::kRefused);
}

void drop_chunks(Stream* stream, ChunkId id) {
    for (Chunk** at = &stream->chunks; *at != nullptr;) {
        Chunk* const node = *at;
        if (node->Id != static_cast<uint32_t>(id)) {
            at = &node->Next;
            continue;
        }
        *at = node->Next;
        release_node(node);
    }
}

}  // namespace nax::rng

extern "C" {

int __stoAddChunk(nax_stream* stream, uint32_t id, const uint64_t* glob_id, void* data, int size) {
    return add_node(stream, id, glob_id, data, size, UnknownSize::kTrusted);
}

void* __stoSearchChunk(const nax_stream* stream, uint32_t id) {
    return find_chunk(stream, static_cast<ChunkId>(id));
}

int __stoGetNumChunks(const nax_stream* stream) {
    int count = 0;
    for (const Chunk* node = stream->chunks; node != nullptr; node = node->Next) ++count;
    return count;
}

int __stoDeleteChunks(nax_stream* stream) {
    while (Chunk* const node = stream->chunks) {
        stream->chunks = node->Next;
        release_node(node);
    }
    return STO_STATUS_OK;
}

// Deliberately, only the last of the surviving nodes stays: it becomes the head, and those before it go as well.
nax_stream_chunk* __stoDeleteChunksById(nax_stream* stream, uint32_t id) {
    Chunk* survivor = nullptr;
    while (Chunk* const node = stream->chunks) {
        stream->chunks = node->Next;
        if (node->Id == id) {
            release_node(node);
            continue;
        }
        if (survivor != nullptr) release_node(survivor);
        survivor = node;
    }
    if (survivor != nullptr) survivor->Next = nullptr;
    stream->chunks = survivor;
    return survivor;
}

int __stoCopyChunks(nax_stream* destination, const nax_stream* source) {
    for (const Chunk* node = source->chunks; node != nullptr; node = node->Next) {
        Chunk* const copy = copy_node(*node);
        if (copy == nullptr) {
            __stoDeleteChunks(destination);
            return STO_STATUS_NO_MEMORY;
        }
        link(destination, copy);
    }
    return STO_STATUS_OK;
}

}  // extern "C"
