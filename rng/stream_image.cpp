#include "rng/stream_image.h"

#include "rng/generators/mcg_lanes.h"
#include "rng/registry.h"
#include "rng/shared_data.h"
#include "service/block.h"

using namespace nax;
using namespace nax::rng;

namespace {

template <class Field>
int save_field(SaveFunction save, void* sink, const Field& field) {
    return save(&field, sizeof(Field), 1, sink);
}

// Only the data's status is returned: a record that can't be written shows there at the latest, or when the file is closed.
int save_chunk(const Chunk& chunk, SaveFunction save, void* sink) {
    save_field(save, sink, chunk.Id);
    save(chunk.GlobId, sizeof(uint64_t), 2, sink);
    save_field(save, sink, chunk.Size);
    return chunk.Size == 0 ? STO_STATUS_OK : save(chunk.Data, static_cast<std::size_t>(chunk.Size), 1, sink);
}

// What the older headers hold after their first word.
struct OldHeaderRest {
    uint16_t ignored1;
    uint16_t payload_size;
    uint16_t chunk_count;
    uint16_t ignored2;
    int32_t brng;
};
static_assert(sizeof(OldHeaderRest) == 12);

template <class Field>
int load_field(const ImageSource& source, Field& field) {
    return _LoadDispatch[source.loader](&field, sizeof(Field), 1, source.handle);
}

// The first word tells the form: version 2 in byte 0, or an older header with "RNG" in bytes 1 to 3 or 0 to 2.
int read_header(const ImageSource& source, nax_image_header& header) {
    int status = load_field(source, header.Magic);
    if (status != STO_STATUS_OK) return status;
    if ((header.Magic & 0xFF) == kImageVersion) {
        unsigned char* const rest = reinterpret_cast<unsigned char*>(&header) + sizeof(header.Magic);
        return _LoadDispatch[source.loader](rest, sizeof(header) - sizeof(header.Magic), 1, source.handle);
    }
    OldHeaderRest rest{};
    status = load_field(source, rest);
    header.HeaderSize = kImageHeaderSize;
    header.PayloadSize = rest.payload_size;
    header.ChunkCount = rest.chunk_count;
    header.Brng = rest.brng;
    return status;
}

int check_header(const ImageSource& source, const nax_image_header& header, const BrngPlace& place) {
    const uint32_t magic = header.Magic;
    const bool new_magic = (magic & 0xFFFFFF00) == kImageMagic;
    const bool old_magic = (magic & 0x00FFFFFF) == kImageMagic >> 8;
    if (!new_magic && !old_magic) return source.bad_header;
    if ((magic & 0xFF) > kImageVersion && magic >> 24 > kImageVersion) return source.too_new;
    if (!is_known(place)) return source.bad_header;
    // The empty rows of the older table are valid ids without a generator.
    if (place.properties().InitStream == nullptr) return source.bad_header;
    const bool sizes_agree = static_cast<uint32_t>(payload_size(place.properties())) == header.PayloadSize;
    return sizes_agree && (header.HeaderSize & 0xFFFF) >= kImageHeaderSize ? STO_STATUS_OK : source.bad_header;
}

int read_payload(const ImageSource& source, const nax_image_header& header, Stream* stream) {
    // Bytes of a longer header follow the ones known here.
    const long more = static_cast<long>(header.HeaderSize & 0xFFFF) - static_cast<long>(kImageHeaderSize);
    if (more > 0) source.skip(more, source.handle);
    if (header.PayloadSize == 0) return STO_STATUS_OK;
    return _LoadDispatch[source.loader](&payload<unsigned char>(stream), header.PayloadSize, 1, source.handle);
}

int check_processor(const Stream* stream) {
    if (stream->brng == NAX_BRNG_NONDETERM && !__stoCPUisRDRAND()) return STO_STATUS_NO_RDRAND;
    if (stream->brng == NAX_BRNG_ARS5 && !__stoCPUisAES()) return STO_STATUS_NO_AES;
    return STO_STATUS_OK;
}

struct ChunkRecord {
    uint32_t id = 0;
    uint64_t glob_id[2] = {0, 0};
    int32_t size = 0;
};

// Headers of version 0 have records without identity.
int read_record_head(const ImageSource& source, uint32_t version, ChunkRecord& record) {
    if (version > kImageVersion) return STO_STATUS_FILE_READ;
    int status = load_field(source, record.id);
    if (status == STO_STATUS_OK && version != 0) status = load_field(source, record.glob_id);
    if (status == STO_STATUS_OK) status = load_field(source, record.size);
    if (status != STO_STATUS_OK) return status;
    const int expected = chunk_size(static_cast<ChunkId>(record.id));
    return record.size < 0 || (expected != 0 && record.size != expected) ? STO_STATUS_FILE_READ : STO_STATUS_OK;
}

int read_chunk(const ImageSource& source, uint32_t version, Stream* stream) {
    ChunkRecord record;
    int status = read_record_head(source, version, record);
    if (status != STO_STATUS_OK) return status;
    const std::size_t size = static_cast<std::size_t>(record.size);
    service::Block<unsigned char> block;
    if (!block.allocate(size)) return STO_STATUS_NO_MEMORY;
    if (size > 0) status = _LoadDispatch[source.loader](block.get(), size, 1, source.handle);
    if (status == STO_STATUS_OK) status = add_loaded_chunk(stream, record.id, record.glob_id, block.get(), record.size);
    if (status != STO_STATUS_OK) return status;
    // An identity that was alive makes the stream share that block; the one just read then goes.
    if (stream->chunks->Data == block.get()) block.detach();
    return record.id == static_cast<uint32_t>(ChunkId::kLanes) ? restore_lanes(stream) : STO_STATUS_OK;
}

void read_chunks(int& status, const ImageSource& source, const nax_image_header& header, Stream* stream) {
    const int count = static_cast<int>(header.ChunkCount & 0xFFFF);
    for (int i = 0; i < count && status >= 0; ++i) status = read_chunk(source, header.Magic & 0xFF, stream);
}

}  // namespace

namespace nax::rng {

int save_image(const Stream* stream, SaveFunction save, void* sink) {
    const BrngPlace place = place_of(stream->brng);
    if (!is_known(place)) return STO_STATUS_BAD_BRNG;
    const uint32_t size = static_cast<uint32_t>(payload_size(place.properties()));
    const nax_image_header header = {kImageMagic + kImageVersion, kImageHeaderSize, size,
                                     static_cast<uint32_t>(__stoGetNumChunks(stream)), stream->brng};
    int status = save(&header, sizeof(header), 1, sink);
    if (status == STO_STATUS_OK && size > 0) {
        status = save(&payload<unsigned char>(stream), size, 1, sink);
    }
    if (status != STO_STATUS_OK) return status;
    for (const Chunk* chunk = stream->chunks; chunk != nullptr; chunk = chunk->Next) {
        status = save_chunk(*chunk, save, sink);
    }
    return status;
}

int load_image(Stream** stream, const ImageSource& source) {
    *stream = nullptr;
    nax_image_header header{};
    int status = read_header(source, header);
    if (status != STO_STATUS_OK) return status;
    const BrngPlace place = place_of(header.Brng);
    status = check_header(source, header, place);
    if (status != STO_STATUS_OK) return status;
    status = __stoAllocateStream(stream, place.table, header.Brng, place.row, place.offset);
    if (status != STO_STATUS_OK) return status;
    status = read_payload(source, header, *stream);
    if (status == STO_STATUS_OK) status = check_processor(*stream);
    read_chunks(status, source, header, *stream);
    if (status >= 0 && !is_usable(*stream)) status = source.bad_header;
    if (status < 0) __stoDeleteStream(stream);
    return status;
}

}  // namespace nax::rng

extern "C" {

int (*const _LoadDispatch[2])(void*, size_t, size_t, void*) = {__stoLoadFromFile, __stoLoadFromMemory};

void __stoReadChunks(int* status, void* source, const nax_image_header* header, nax_stream* stream, int loader) {
    const ImageSource from = {source, loader, nullptr, STO_STATUS_BAD_FILE, STO_STATUS_FILE_TOO_NEW};
    read_chunks(*status, from, *header, stream);
}

int __stoGetStreamSize(const nax_stream* stream) {
    int size = payload_size(properties_of(stream)) + static_cast<int>(kImageHeaderSize);
    for (const Chunk* chunk = stream->chunks; chunk != nullptr; chunk = chunk->Next) {
        size += kChunkRecordHead + chunk->Size;
    }
    return size;
}

}  // extern "C"
