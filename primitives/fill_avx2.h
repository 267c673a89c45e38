// Filling memory with a pattern of 1, 2, 4, 8 or 16 bytes, the Width. The pattern comes repeated over 32 bytes.
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "nax/processor.h"

namespace nax::primitives::avx2 {

// Fills of more bytes than this may bypass the caches.
inline constexpr int64_t kCachedFillLimit = 0x200000;
// From this size on, fills run backward in narrow stores.
inline constexpr int64_t kBackwardFill = 32768;

inline void store32(uint8_t* p, __m256i row) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), row); }
inline void stream32(uint8_t* p, __m256i row) { _mm256_stream_si256(reinterpret_cast<__m256i*>(p), row); }
inline void store16(uint8_t* p, __m256i row) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(row));
}
inline void store16_aligned(uint8_t* p, __m256i row) {
    _mm_store_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(row));
}
// Rows of 32 bytes one behind the other, written out: a loop of a fixed few turns would stay a loop.
template <ptrdiff_t Rows>
inline void store_rows(uint8_t* p, __m256i row) {
    if constexpr (Rows > 1) store_rows<Rows - 1>(p, row);
    store32(p + 32 * (Rows - 1), row);
}
template <class Integer>
inline void store_low(uint8_t* p, __m256i row) {
    std::memcpy(p, &row, sizeof(Integer));
}

// Less than 256 bytes by falling powers of two, told by the bits of the length.
template <int Width>
inline void fill_rest(uint8_t* p, int64_t bytes, __m256i row) {
    if ((bytes & 128) != 0) {
        store_rows<4>(p, row);
        p += 128;
    }
    if ((bytes & 64) != 0) {
        store_rows<2>(p, row);
        p += 64;
    }
    if ((bytes & 32) != 0) store32(p, row), p += 32;
    if ((bytes & 31) == 0) return;
    if ((bytes & 16) != 0) store16(p, row), p += 16;
    if constexpr (Width <= 8)
        if ((bytes & 8) != 0) store_low<uint64_t>(p, row), p += 8;
    if constexpr (Width <= 4)
        if ((bytes & 4) != 0) store_low<uint32_t>(p, row), p += 4;
    if constexpr (Width <= 2)
        if ((bytes & 2) != 0) store_low<uint16_t>(p, row), p += 2;
    if constexpr (Width <= 1)
        if ((bytes & 1) != 0) store_low<uint8_t>(p, row);
}

// The plain loop for arrays that are not aligned to their element.
template <int Width>
inline int fill_unaligned(uint8_t* p, int64_t bytes, __m256i row) {
    for (; bytes >= 32; bytes -= 32, p += 32) store32(p, row);
    fill_rest<Width>(p, bytes, row);
    return 0;
}

// Backward from the end, in rows of 64 bytes by 16-byte stores: the start of the array, where its reader begins, is
// what the caches saw last. `p` is a multiple of 16.
inline int fill_backward(uint8_t* p, int64_t bytes, __m256i row) {
    store32(p + bytes - 32, row);
    store32(p + bytes - 64, row);
    for (uint8_t* q = p + (bytes & ~int64_t{63}); q != p;) {
        q -= 64;
        store16_aligned(q, row);
        store16_aligned(q + 16, row);
        store16_aligned(q + 32, row);
        store16_aligned(q + 48, row);
    }
    return 0;
}

inline bool aligned_to(const uint8_t* p, int width) {
    return (reinterpret_cast<uintptr_t>(p) & static_cast<uintptr_t>(width - 1)) == 0;
}

// Bytes from `p` to the next multiple of `boundary`.
inline int64_t bytes_to_boundary(const uint8_t* p, int boundary) {
    return static_cast<int64_t>(-reinterpret_cast<uintptr_t>(p) & static_cast<uintptr_t>(boundary - 1));
}

// All of these return 0, the status of a member that ends with them.

// Through the caches. The empty asm hides what `row` holds, or a compiler turns the loops into calls of memset.
template <int Width>
inline int fill_cached(uint8_t* p, int64_t bytes, __m256i row) {
    __asm__("" : "+x"(row));
    if (!aligned_to(p, Width)) return fill_unaligned<Width>(p, bytes, row);
    const bool backward = bytes >= kBackwardFill;
    if (bytes >= 256) {
        store32(p, row);
        const int64_t head = bytes_to_boundary(p, 32);
        p += head;
        bytes -= head;
    }
    if (backward) return fill_backward(p, bytes, row);
    for (; bytes >= 256; bytes -= 256, p += 256) store_rows<8>(p, row);
    fill_rest<Width>(p, bytes, row);
    return 0;
}

// Past the caches, by stores that don't fetch the lines: from the first 64-byte boundary on, two lines a round.
template <int Width>
inline int fill_streaming(uint8_t* p, int64_t bytes, __m256i row) {
    __asm__("" : "+x"(row));
    const int64_t head = bytes_to_boundary(p, 64);
    fill_rest<Width>(p, head, row);
    p += head;
    bytes -= head;
    for (; bytes >= 128; bytes -= 128, p += 128) {
        stream32(p, row);
        stream32(p + 32, row);
        stream32(p + 64, row);
        stream32(p + 96, row);
    }
    _mm_sfence();
    fill_rest<Width>(p, bytes, row);
    return 0;
}

// True for a fill that would drive everything else out of the largest cache, as far as that is known.
inline bool exceeds_caches(int64_t bytes) {
    int32_t cache = 0;
    return bytes > kCachedFillLimit && nax_dft_opaGetMaxCacheSizeB(&cache) == 0 && cache > 0 && bytes > cache;
}

template <int Width>
inline int fill_large(uint8_t* p, int64_t bytes, __m256i row) {
    if (exceeds_caches(bytes) && aligned_to(p, Width)) return fill_streaming<Width>(p, bytes, row);
    return fill_cached<Width>(p, bytes, row);
}

}  // namespace nax::primitives::avx2
