// Creation, copying and deletion of streams.
#include <algorithm>
#include <cstring>

#include "rng/registry.h"
#include "rng/shared_data.h"
#include "service/block.h"

using namespace nax;
using namespace nax::rng;

namespace {

// Stream blocks take whole granules of 128 bytes: __stoCopyStreamState copies 64 bytes of payload for WH, whose payload
// has 32. The rest of the last granule is zero, as is the payload until the generator fills it.
std::size_t block_size(const BrngProperties& properties) {
    const std::size_t size = static_cast<std::size_t>(properties.StreamStateSize);
    const std::size_t granule = service::kBlockAlignment;
    return (size < kHeaderSize ? granule : (size + granule - 1) / granule * granule);
}

Stream* new_block(const BrngProperties& properties, int brng) {
    const std::size_t size = block_size(properties);
    Stream* const stream = static_cast<Stream*>(nax_serv_allocate(size, service::kBlockAlignment));
    if (stream == nullptr) return nullptr;
    std::memset(static_cast<void*>(stream), 0, size);
    stream->brng = brng;
    stream->live = 1;
    return stream;
}

}  // namespace

extern "C" {

int __stoAllocateStream(nax_stream** stream, const nax_brng_properties* table, int brng, int row, int offset) {
    *stream = nullptr;
    const BrngPlace place{table, row, offset};
    if (!is_known(place)) return STO_STATUS_BAD_BRNG;
    *stream = new_block(place.properties(), brng);
    return *stream != nullptr ? STO_STATUS_OK : STO_STATUS_NO_MEMORY;
}

int __stoNewStreamEx(nax_stream** stream, int brng, int n, const uint32_t* params) {
    *stream = nullptr;
    if (brng == NAX_BRNG_IABSTRACT || brng == NAX_BRNG_DABSTRACT || brng == NAX_BRNG_SABSTRACT) {
        return STO_STATUS_BAD_BRNG;
    }
    const BrngPlace place = place_of(brng);
    if (!is_known(place)) return STO_STATUS_BAD_BRNG;
    // The two empty rows of the older table are valid ids without a generator.
    if (place.properties().InitStream == nullptr) return STO_STATUS_NULL_POINTER;
    const int status = __stoAllocateStream(stream, place.table, brng, place.row, place.offset);
    if (status != STO_STATUS_OK) return status;
    return place.properties().InitStream(NAX_INIT_STANDARD, *stream, n, params);
}

int __stoCopyStream(nax_stream** new_stream, const nax_stream* source) {
    const BrngPlace place = place_of(source->brng);
    const int status = __stoAllocateStream(new_stream, place.table, source->brng, place.row, place.offset);
    if (status != STO_STATUS_OK) return status;
    const std::size_t size = static_cast<std::size_t>(place.properties().StreamStateSize);
    if (size > kHeaderSize) nax_serv_memcpy_s(*new_stream, size, source, size);
    (*new_stream)->chunks = nullptr;
    return __stoCopyChunks(*new_stream, source);
}

int __stoCopyStreamState(nax_stream* destination, const nax_stream* source) {
    if (destination == source) return STO_STATUS_OK;
    const BrngProperties& properties = properties_of(source);
    // A registered generator may announce more words than its streams have room for.
    const uint64_t announced = static_cast<uint64_t>(properties.WordSize) * static_cast<uint64_t>(properties.NSeeds);
    const std::size_t size = std::min(announced, block_size(properties) - kHeaderSize);
    nax_serv_memcpy_s(&payload<unsigned char>(destination), size, &payload<unsigned char>(source), size);
    __stoDeleteChunks(destination);
    return __stoCopyChunks(destination, source);
}

int __stoDeleteStream(nax_stream** stream) {
    if (*stream == nullptr) return STO_STATUS_OK;
    __stoDeleteChunks(*stream);
    nax_serv_deallocate(*stream);
    *stream = nullptr;
    return STO_STATUS_OK;
}

}  // extern "C"
