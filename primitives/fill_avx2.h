// Filling memory with a pattern of 1, 2, 4, 8 or 16 bytes, the Width. The pattern comes repeated over 32 bytes.
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "primitives/member.h"
#include "runtime/processor_cache.h"

namespace nax::primitives::avx2 {

// Fills of more bytes than this may bypass the caches.
inline constexpr int64_t kCachedFillLimit = 0x200000;
// From this size on, fills run backward.
inline constexpr int64_t kBackwardFill = 32768;

inline void store32(uint8_t* p, __m256i row) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), row); }
inline void stream32(uint8_t* p, __m256i row) { _mm256_stream_si256(reinterpret_cast<__m256i*>(p), row); }
// Rows of 32 bytes one behind the other, written out: a loop of a fixed few turns would stay a loop.
template <ptrdiff_t Rows>
inline void store_rows(uint8_t* p, __m256i row) {
    if constexpr (Rows > 1) store_rows<Rows - 1>(p, row);
    store32(p + 32 * (Rows - 1), row);
}

// Two units, one from the start and one up to the end, that may overlap: sizeof(Unit) <= bytes <= 2 sizeof(Unit). As
// all units and `bytes` are multiples of the Width, what both write is the same.
template <class Unit>
inline int store_both_ends(uint8_t* p, int64_t bytes, __m128i row) {
    std::memcpy(p, &row, sizeof(Unit));
    std::memcpy(p + bytes - sizeof(Unit), &row, sizeof(Unit));
    return success();
}

// All of what follows returns the status of a member that ends with it.

// The result is `none` for a length below 1.
template <int Width>
inline int fill_below_32(uint8_t* p, int64_t bytes, __m128i row, int none) {
    if (rather(bytes >= 16)) return store_both_ends<__m128i>(p, bytes, row);
    if constexpr (Width <= 8)
        if (rather(bytes >= 8)) return store_both_ends<uint64_t>(p, bytes, row);
    if constexpr (Width <= 4)
        if (rather(bytes >= 4)) return store_both_ends<uint32_t>(p, bytes, row);
    if constexpr (Width <= 2)
        if (rather(bytes >= 2)) return store_both_ends<uint16_t>(p, bytes, row);
    if (bytes < 1) return none;
    if constexpr (Width == 1) std::memcpy(p, &row, 1);
    return success();
}

inline bool aligned_to(const uint8_t* p, int width) {
    return (reinterpret_cast<uintptr_t>(p) & static_cast<uintptr_t>(width - 1)) == 0;
}

// Bytes from `p` to the next multiple of `boundary`.
inline int64_t bytes_to_boundary(const uint8_t* p, int boundary) {
    return static_cast<int64_t>(-reinterpret_cast<uintptr_t>(p) & static_cast<uintptr_t>(boundary - 1));
}

// Up to kShortFill bytes, whatever the alignment: by the power of two that fits, once from the start and once up to the
// end, which takes fewer branches than one test for each bit of the length. More bytes are left to `longer`. A length
// below 1 is found last; its result is `none`.
inline constexpr int64_t kShortFill = 256;
template <int Width, class Longer>
[[gnu::always_inline]] inline int fill_short_or(uint8_t* p, int64_t bytes, __m128i half_row, int none, Longer longer) {
    const __m256i row = _mm256_broadcastsi128_si256(half_row);
    if (rather(bytes <= 64)) {
        if (!rather(bytes >= 32)) return fill_below_32<Width>(p, bytes, half_row, none);
        store32(p, row);
        store32(p + bytes - 32, row);
        return success();
    }
    if (!rather(bytes <= kShortFill)) return longer();
    if (rather(bytes <= 128)) {
        store_rows<2>(p, row);
        store_rows<2>(p + bytes - 64, row);
        return success();
    }
    store_rows<4>(p, row);
    store_rows<4>(p + bytes - 128, row);
    return success();
}

// Up to 127 bytes, or none.
template <int Width>
inline void fill_rest(uint8_t* p, int64_t bytes, __m256i row) {
    fill_short_or<Width>(p, bytes, _mm256_castsi256_si128(row), 0, [] { return 0; });
}

// The plain loop for arrays that are not aligned to their element.
template <int Width>
inline int fill_unaligned(uint8_t* p, int64_t bytes, __m256i row) {
    for (; bytes >= 32; bytes -= 32, p += 32) store32(p, row);
    return fill_below_32<Width>(p, bytes, _mm256_castsi256_si128(row), 0);
}

// From the first 32-byte boundary on backward from the end, in rows of 64 bytes by aligned stores: the start of the array, where its reader begins, is what the caches saw last. At least kBackwardFill bytes.
inline int fill_backward(uint8_t* p, int64_t bytes, __m256i row) {
    store32(p, row);
    const int64_t head = bytes_to_boundary(p, 32);
    p += head;
    bytes -= head;
    store32(p + bytes - 32, row);
    store32(p + bytes - 64, row);
    for (uint8_t* q = p + (bytes & ~int64_t{63}); q != p;) {
        q -= 64;
        store32(q + 32, row);
        store32(q, row);
    }
    return 0;
}

// Forward in rounds of 256 bytes from the first 32-byte boundary on; more than 256 bytes.
inline int fill_forward(uint8_t* p, int64_t bytes, __m256i row) {
    uint8_t* const end = p + bytes;
    store32(p, row);
    p += 32 - static_cast<int64_t>(reinterpret_cast<uintptr_t>(p) & 31);
    for (; end - p >= 256; p += 256) store_rows<8>(p, row);
    if (end - p > 128) store_rows<4>(p, row);
    store_rows<4>(end - 128, row);
    return 0;
}

// Through the caches. The empty asm hides what `row` holds, or a compiler turns the loops into calls of memset.
template <int Width>
[[gnu::always_inline]] inline int fill_cached(uint8_t* p, int64_t bytes, __m256i row) {
    __asm__("" : "+x"(row));
    // What most calls come for, before the chain of tests that short fills begin.
    if (bytes > kShortFill && bytes < kBackwardFill && aligned_to(p, Width)) [[likely]]
        return fill_forward(p, bytes, row);
    return fill_short_or<Width>(p, bytes, _mm256_castsi256_si128(row), 0, [=] {
        if (!aligned_to(p, Width)) return fill_unaligned<Width>(p, bytes, row);
        return fill_backward(p, bytes, row);
    });
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
    const int64_t cache = runtime::last_level_cache();
    return bytes > kCachedFillLimit && cache > 0 && bytes > cache;
}

// Apart, so that smaller fills don't pay for what the call in here makes it save. More than kCachedFillLimit bytes. It
// takes half a row, as GCC omits the vzeroupper at the end of a function that takes a whole one.
template <int Width>
[[gnu::noinline]] int fill_beyond_limit(uint8_t* p, int64_t bytes, __m128i half_row) {
    const bool streaming = aligned_to(p, Width) && exceeds_caches(bytes);
    const __m256i row = _mm256_broadcastsi128_si256(half_row);
    if (streaming) return fill_streaming<Width>(p, bytes, row);
    return aligned_to(p, Width) ? fill_backward(p, bytes, row) : fill_unaligned<Width>(p, bytes, row);
}

template <int Width>
[[gnu::always_inline]] inline int fill_large(uint8_t* p, int64_t bytes, __m256i row) {
    if (bytes > kCachedFillLimit) [[unlikely]]
        return fill_beyond_limit<Width>(p, bytes, _mm256_castsi256_si128(row));
    return fill_cached<Width>(p, bytes, row);
}

}  // namespace nax::primitives::avx2
