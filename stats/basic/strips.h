// Observations of one block of variables as rows of lanes, from either storage.
#pragma once

#include <algorithm>

#include "stats/basic/kernels.h"
#include "stats/lanes.h"

namespace nax::stats::basic {
inline namespace NAX_ISA {

// Observations of columns storage that stay in the first cache while all variables pass over them.
template <class T>
[[gnu::always_inline]] inline int64_t cached_rows(int64_t p) {
    constexpr int64_t kCachedBytes = 24576, kLeast = 8;
    return std::clamp<int64_t>(kCachedBytes / (p * static_cast<int64_t>(sizeof(T))), kLeast, kChunk);
}

// Four by four elements, each row of `from` to a column of `to`.
[[gnu::always_inline]] inline void turn_four(const double* const* from, int64_t k, double* to, int64_t stride) {
    const __m256d a = _mm256_loadu_pd(from[0] + k), b = _mm256_loadu_pd(from[1] + k);
    const __m256d c = _mm256_loadu_pd(from[2] + k), d = _mm256_loadu_pd(from[3] + k);
    const __m256d ab0 = _mm256_unpacklo_pd(a, b), ab1 = _mm256_unpackhi_pd(a, b);
    const __m256d cd0 = _mm256_unpacklo_pd(c, d), cd1 = _mm256_unpackhi_pd(c, d);
    _mm256_storeu_pd(to, _mm256_permute2f128_pd(ab0, cd0, 0x20));
    _mm256_storeu_pd(to + stride, _mm256_permute2f128_pd(ab1, cd1, 0x20));
    _mm256_storeu_pd(to + 2 * stride, _mm256_permute2f128_pd(ab0, cd0, 0x31));
    _mm256_storeu_pd(to + 3 * stride, _mm256_permute2f128_pd(ab1, cd1, 0x31));
}
[[gnu::always_inline]] inline void turn_four(const float* const* from, int64_t k, float* to, int64_t stride) {
    __m128 a = _mm_loadu_ps(from[0] + k), b = _mm_loadu_ps(from[1] + k);
    __m128 c = _mm_loadu_ps(from[2] + k), d = _mm_loadu_ps(from[3] + k);
    _MM_TRANSPOSE4_PS(a, b, c, d);
    _mm_storeu_ps(to, a);
    _mm_storeu_ps(to + stride, b);
    _mm_storeu_ps(to + 2 * stride, c);
    _mm_storeu_ps(to + 3 * stride, d);
}

// Variables stored apart to rows of lanes, `stride` reals apart; empty lanes are zero.
template <class T>
inline void gather_rows(const T* x, int64_t n, int64_t width, int64_t count, T* buffer, int64_t stride) {
    constexpr int64_t lanes = kLanes<T>;
    for (int64_t l = 0; l < lanes; l += 4) {
        int64_t k = 0;
        if (l + 4 <= width) {
            const T* const from[4] = {x + l * n, x + (l + 1) * n, x + (l + 2) * n, x + (l + 3) * n};
            for (; k + 4 <= count; k += 4) turn_four(from, k, buffer + k * stride + l, stride);
        }
        for (int64_t e = l; e < l + 4; ++e)
            for (int64_t i = k; i < count; ++i) buffer[i * stride + e] = e < width ? x[e * n + i] : T(0);
    }
}

// Row k of the strip, kLanes<T> reals, is at x + k * stride.
template <class T>
struct Strip {
    const T* x;
    int64_t stride;
};

// Observations first ... first + count - 1 of the variables of block b. `buffer` holds kChunk rows, and serves where
// the matrix has no such rows: variables stored apart, or lanes that would reach beyond its end.
template <class T, bool columns>
inline Strip<T> strip(const Slice<T>& slice, const Blocks& blocks, int64_t b, int64_t first, int64_t count, T* buffer) {
    constexpr int64_t lanes = kLanes<T>;
    const int64_t base = blocks.base(b);
    const int64_t width = std::min(lanes, slice.p);
    if constexpr (columns) {
        const T* const x = slice.x + first * slice.p + base;
        if ((first + count - 1) * slice.p + base + lanes <= slice.n * slice.p) return {x, slice.p};
        for (int64_t k = 0; k < count; ++k)
            for (int64_t l = 0; l < lanes; ++l) buffer[k * lanes + l] = l < width ? x[k * slice.p + l] : T(0);
    } else {
        gather_rows(slice.x + base * slice.n + first, slice.n, width, count, buffer, lanes);
    }
    return {buffer, lanes};
}

}  // namespace NAX_ISA
}  // namespace nax::stats::basic
