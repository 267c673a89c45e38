// Streams in memory blocks.
#include "rng/stream_image.h"
#include "service/service.h"

using namespace nax::rng;

namespace {

unsigned char* place_of_cursor(const nax_image_cursor& cursor) {
    return static_cast<unsigned char*>(cursor.Base) + cursor.Offset;
}

}  // namespace

extern "C" {

int __stoSaveToMemory(const void* source, size_t size, size_t count, void* cursor) {
    nax_image_cursor& to = *static_cast<nax_image_cursor*>(cursor);
    nax_serv_memcpy_s(place_of_cursor(to), size * count, source, size * count);
    to.Offset += static_cast<int32_t>(size * count);
    return STO_STATUS_OK;
}

int __stoLoadFromMemory(void* destination, size_t size, size_t count, void* cursor) {
    nax_image_cursor& from = *static_cast<nax_image_cursor*>(cursor);
    nax_serv_memcpy_s(destination, size * count, place_of_cursor(from), size * count);
    from.Offset += static_cast<int32_t>(size * count);
    return STO_STATUS_OK;
}

int __stoSkipLoadingFromMemory(long offset, void* cursor) {
    static_cast<nax_image_cursor*>(cursor)->Offset += static_cast<int32_t>(offset);
    return 0;
}

int __stoSaveStreamM(const nax_stream* stream, void* memory) {
    nax_image_cursor cursor = {memory, 0};
    return save_image(stream, __stoSaveToMemory, &cursor);
}

int __stoLoadStreamM(nax_stream** stream, const void* memory) {
    // Only ever read through.
    nax_image_cursor cursor = {const_cast<void*>(memory), 0};
    const ImageSource source = {&cursor, 1, __stoSkipLoadingFromMemory, STO_STATUS_BAD_IMAGE, STO_STATUS_BAD_IMAGE};
    return load_image(stream, source);
}

}  // extern "C"
