// Cells beside vectors of numbers, rows of coefficients, and their interleaved stores in AVX-512; see pack.h.
#pragma once

#include <cstdint>

#include "simd/avx512.h"

namespace nax::simd {
inline namespace avx512 {

// --- cells of double precision, 64 bits
NAX_VEC I64 lane_numbers(I64) { return (I64)_mm512_set_epi64(7, 6, 5, 4, 3, 2, 1, 0); }
NAX_VEC I64 count_where(I64 a, LaneMask<__mmask8> m) {
    return (I64)_mm512_mask_add_epi64((__m512i)a, m.lanes, (__m512i)a, _mm512_set1_epi64(1));
}
NAX_VEC I64 product_of_cells(I64 a, I64 k) { return (I64)_mm512_mullo_epi64((__m512i)a, (__m512i)k); }
NAX_VEC I64 truncated(__m512d a) { return (I64)_mm512_cvttpd_epi64(a); }
NAX_VEC __m512d number_of(I64 a) { return _mm512_cvtepi64_pd((__m512i)a); }
// Entries i and i + 1 of a table of counts.
NAX_VEC void look_up_counts(const int32_t* table, I64 i, I64& first, I64& second) {
    const __m512i both_counts = _mm512_mask_i64gather_epi64(_mm512_setzero_si512(), 0xFF, (__m512i)i, table, 4);
    first = (I64)_mm512_and_si512(both_counts, _mm512_set1_epi64(0xFFFFFFFF));
    second = (I64)_mm512_srli_epi64(both_counts, 32);
}
NAX_VEC I64 look_up_wide(const int64_t* table, I64 i) {
    return (I64)_mm512_mask_i64gather_epi64(_mm512_setzero_si512(), 0xFF, (__m512i)i, table, 8);
}
NAX_VEC I64 cells_from(const int64_t* p, I64) { return (I64)_mm512_loadu_si512(p); }
NAX_VEC I64 cells_from(const int32_t* p, I64) {
    return (I64)_mm512_cvtepi32_epi64(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)));
}
NAX_VEC void store_cells(int64_t* p, I64 a) { _mm512_storeu_si512(p, (__m512i)a); }
NAX_VEC void store_cells(int32_t* p, I64 a) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_cvtepi64_epi32((__m512i)a));
}

// --- cells of single precision, 32 bits
NAX_VEC I32 lane_numbers(I32) { return (I32)_mm512_set_epi32(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0); }
NAX_VEC I32 count_where(I32 a, LaneMask<__mmask16> m) {
    return (I32)_mm512_mask_add_epi32((__m512i)a, m.lanes, (__m512i)a, _mm512_set1_epi32(1));
}
NAX_VEC I32 product_of_cells(I32 a, I32 k) { return (I32)_mm512_mullo_epi32((__m512i)a, (__m512i)k); }
NAX_VEC I32 truncated(__m512 a) { return (I32)_mm512_cvttps_epi32(a); }
NAX_VEC __m512 number_of(I32 a) { return _mm512_cvtepi32_ps((__m512i)a); }
// Entries i and i + 1 of a table of counts.
NAX_VEC void look_up_counts(const int32_t* table, I32 i, I32& first, I32& second) {
    first = (I32)_mm512_mask_i32gather_epi32(_mm512_setzero_si512(), 0xFFFF, (__m512i)i, table, 4);
    second = (I32)_mm512_mask_i32gather_epi32(_mm512_setzero_si512(), 0xFFFF, (__m512i)i, table + 1, 4);
}
NAX_VEC I32 look_up_wide(const int64_t* table, I32 i) {
    return (I32)_mm512_mask_i32gather_epi32(_mm512_setzero_si512(), 0xFFFF, (__m512i)i, table, 8);
}
NAX_VEC I32 cells_from(const int64_t* p, I32) {
    const __m256i low = _mm512_cvtepi64_epi32(_mm512_loadu_si512(p));
    return (I32)_mm512_inserti64x4(_mm512_castsi256_si512(low), _mm512_cvtepi64_epi32(_mm512_loadu_si512(p + 8)), 1);
}
NAX_VEC I32 cells_from(const int32_t* p, I32) { return (I32)_mm512_loadu_si512(p); }
NAX_VEC void store_cells(int64_t* p, I32 a) {
    _mm512_storeu_si512(p, _mm512_cvtepi32_epi64(_mm512_castsi512_si256((__m512i)a)));
    _mm512_storeu_si512(p + 8, _mm512_cvtepi32_epi64(_mm512_extracti64x4_epi64((__m512i)a, 1)));
}
NAX_VEC void store_cells(int32_t* p, I32 a) { _mm512_storeu_si512(p, (__m512i)a); }

// --- rows of coefficients, transposed
// The first kOrder elements from p on, three or four, and nothing behind them.
template <int kOrder>
NAX_VEC __m256d row_of_four(const double* p) {
    if constexpr (kOrder == 4) return _mm256_loadu_pd(p);
    return _mm256_maskload_pd(p, _mm256_set_epi64x(0, -1, -1, -1));
}
template <int kOrder>
NAX_VEC __m128 row_of_four(const float* p) {
    if constexpr (kOrder == 4) return _mm_loadu_ps(p);
    return _mm_maskload_ps(p, _mm_set_epi32(0, -1, -1, -1));
}

// Rows are placed in the halves and quarters of a register so that one unpack and one permutation by quarters leave the
// cells in order.
template <int kOrder>
NAX_VEC __m512d row_pair(const double* base, int64_t low, int64_t high) {
    return _mm512_insertf64x4(_mm512_castpd256_pd512(row_of_four<kOrder>(base + kOrder * low)),
                              row_of_four<kOrder>(base + kOrder * high), 1);
}
template <int kOrder>
requires(kOrder > 2) NAX_VEC void load_rows(const double* base, const int64_t* p, __m512d* c) {
    const __m512d a0 = row_pair<kOrder>(base, p[0], p[2]), a1 = row_pair<kOrder>(base, p[1], p[3]);
    const __m512d b0 = row_pair<kOrder>(base, p[4], p[6]), b1 = row_pair<kOrder>(base, p[5], p[7]);
    const __m512d a_even = _mm512_unpacklo_pd(a0, a1), a_odd = _mm512_unpackhi_pd(a0, a1);
    const __m512d b_even = _mm512_unpacklo_pd(b0, b1), b_odd = _mm512_unpackhi_pd(b0, b1);
    c[0] = _mm512_shuffle_f64x2(a_even, b_even, _MM_SHUFFLE(2, 0, 2, 0));
    c[1] = _mm512_shuffle_f64x2(a_odd, b_odd, _MM_SHUFFLE(2, 0, 2, 0));
    c[2] = _mm512_shuffle_f64x2(a_even, b_even, _MM_SHUFFLE(3, 1, 3, 1));
    if constexpr (kOrder == 4) c[3] = _mm512_shuffle_f64x2(a_odd, b_odd, _MM_SHUFFLE(3, 1, 3, 1));
}

NAX_VEC __m512d row_four(const double* base, const int64_t* p) {
    const __m256d low =
        _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(base + 2 * p[0])), _mm_loadu_pd(base + 2 * p[2]), 1);
    const __m256d high =
        _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(base + 2 * p[4])), _mm_loadu_pd(base + 2 * p[6]), 1);
    return _mm512_insertf64x4(_mm512_castpd256_pd512(low), high, 1);
}
template <int kOrder>
requires(kOrder == 2) NAX_VEC void load_rows(const double* base, const int64_t* p, __m512d* c) {
    const __m512d even = row_four(base, p), odd = row_four(base, p + 1);
    c[0] = _mm512_unpacklo_pd(even, odd);
    c[1] = _mm512_unpackhi_pd(even, odd);
}

// Rows k, k + 4, k + 8, k + 12 in the quarters.
template <int kOrder>
NAX_VEC __m512 row_four(const float* base, const int64_t* p) {
    const auto row = [base](int64_t i) { return row_of_four<kOrder>(base + kOrder * i); };
    const __m256 low = _mm256_insertf128_ps(_mm256_castps128_ps256(row(p[0])), row(p[4]), 1);
    const __m256 high = _mm256_insertf128_ps(_mm256_castps128_ps256(row(p[8])), row(p[12]), 1);
    return _mm512_insertf32x8(_mm512_castps256_ps512(low), high, 1);
}
template <int kOrder>
requires(kOrder > 2) NAX_VEC void load_rows(const float* base, const int64_t* p, __m512* c) {
    const __m512 r0 = row_four<kOrder>(base, p), r1 = row_four<kOrder>(base, p + 1), r2 = row_four<kOrder>(base, p + 2),
                 r3 = row_four<kOrder>(base, p + 3);
    const __m512 low01 = _mm512_unpacklo_ps(r0, r1), high01 = _mm512_unpackhi_ps(r0, r1);
    const __m512 low23 = _mm512_unpacklo_ps(r2, r3), high23 = _mm512_unpackhi_ps(r2, r3);
    c[0] = _mm512_shuffle_ps(low01, low23, _MM_SHUFFLE(1, 0, 1, 0));
    c[1] = _mm512_shuffle_ps(low01, low23, _MM_SHUFFLE(3, 2, 3, 2));
    c[2] = _mm512_shuffle_ps(high01, high23, _MM_SHUFFLE(1, 0, 1, 0));
    if constexpr (kOrder == 4) c[3] = _mm512_shuffle_ps(high01, high23, _MM_SHUFFLE(3, 2, 3, 2));
}

// --- interleaved stores
// to[2k], to[2k+1] = a[k], b[k]: the coefficients of neighbouring linear cells.
NAX_VEC void store_interleaved(double* to, __m512d a, __m512d b) {
    store(to, __builtin_shufflevector(a, b, 0, 8, 1, 9, 2, 10, 3, 11));
    store(to + 8, __builtin_shufflevector(a, b, 4, 12, 5, 13, 6, 14, 7, 15));
}
NAX_VEC void store_interleaved(float* to, __m512 a, __m512 b) {
    store(to, __builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
    store(to + 16, __builtin_shufflevector(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31));
}

// to[4k .. 4k+3] = a[k], b[k], c[k], d[k]: the coefficients of neighbouring cubic cells.
NAX_VEC void store_interleaved(double* to, __m512d a, __m512d b, __m512d c, __m512d d) {
    const __m512d ab0 = __builtin_shufflevector(a, b, 0, 8, 1, 9, 2, 10, 3, 11);
    const __m512d ab1 = __builtin_shufflevector(a, b, 4, 12, 5, 13, 6, 14, 7, 15);
    const __m512d cd0 = __builtin_shufflevector(c, d, 0, 8, 1, 9, 2, 10, 3, 11);
    const __m512d cd1 = __builtin_shufflevector(c, d, 4, 12, 5, 13, 6, 14, 7, 15);
    store(to, __builtin_shufflevector(ab0, cd0, 0, 1, 8, 9, 2, 3, 10, 11));
    store(to + 8, __builtin_shufflevector(ab0, cd0, 4, 5, 12, 13, 6, 7, 14, 15));
    store(to + 16, __builtin_shufflevector(ab1, cd1, 0, 1, 8, 9, 2, 3, 10, 11));
    store(to + 24, __builtin_shufflevector(ab1, cd1, 4, 5, 12, 13, 6, 7, 14, 15));
}
NAX_VEC void store_interleaved(float* to, __m512 a, __m512 b, __m512 c, __m512 d) {
    const __m512 ab0 = __builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    const __m512 ab1 = __builtin_shufflevector(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    const __m512 cd0 = __builtin_shufflevector(c, d, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    const __m512 cd1 = __builtin_shufflevector(c, d, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    store(to, __builtin_shufflevector(ab0, cd0, 0, 1, 16, 17, 2, 3, 18, 19, 4, 5, 20, 21, 6, 7, 22, 23));
    store(to + 16, __builtin_shufflevector(ab0, cd0, 8, 9, 24, 25, 10, 11, 26, 27, 12, 13, 28, 29, 14, 15, 30, 31));
    store(to + 32, __builtin_shufflevector(ab1, cd1, 0, 1, 16, 17, 2, 3, 18, 19, 4, 5, 20, 21, 6, 7, 22, 23));
    store(to + 48, __builtin_shufflevector(ab1, cd1, 8, 9, 24, 25, 10, 11, 26, 27, 12, 13, 28, 29, 14, 15, 30, 31));
}
}  // namespace avx512
}  // namespace nax::simd
