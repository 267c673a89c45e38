// The stored form of a stream, the same in files and in memory (little-endian, no pointers):
//   header    version 2 and "RNG" (4 bytes), header size 20 (4), payload size (4), chunk count (4), generator id (4)
//   payload   the stream from byte 16 on, as it stands
//   chunks    id (4), identity (16), size (4), data (size) each, in list order from the head
// Two older headers of 16 bytes are read as well; see read_header.
#pragma once

#include "rng/stream.h"

namespace nax::rng {

inline constexpr uint32_t kImageMagic = 0x474E5200;    // "RNG" in bytes 1 to 3, version in byte 0
inline constexpr uint32_t kImageVersion = 2;
inline constexpr uint32_t kImageHeaderSize = 20;
inline constexpr int kChunkRecordHead = 24;
static_assert(sizeof(nax_image_header) == kImageHeaderSize);

using SaveFunction = int (*)(const void* source, std::size_t size, std::size_t count, void* sink);

// How a stream is read: from a file or from memory, and what header faults are called there.
struct ImageSource {
    void* handle;
    int loader;                          // index into _LoadDispatch
    int (*skip)(long bytes, void* handle);
    int bad_header;
    int too_new;
};

// Writes header, payload and chunks. The status is the first failing one of header and payload; of the chunks, only the
// last one's data decides.
int save_image(const Stream* stream, SaveFunction save, void* sink);

// Rebuilds a stream; on failure *stream is null.
int load_image(Stream** stream, const ImageSource& source);

}  // namespace nax::rng
