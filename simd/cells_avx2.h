// Cells beside vectors of numbers, rows of coefficients, and their interleaved stores in AVX2; see pack.h.
#pragma once

#include <cstdint>

#include "simd/avx2.h"

namespace nax::simd {
inline namespace avx2 {

// --- cells of double precision, 64 bits
NAX_VEC I64 lane_numbers(I64) { return (I64)_mm256_set_epi64x(3, 2, 1, 0); }
NAX_VEC I64 count_where(I64 a, LaneMask<I64> m) { return a - m.lanes; }
// Operands below 2^32.
NAX_VEC I64 product_of_cells(I64 a, I64 k) { return (I64)_mm256_mul_epu32((__m256i)a, (__m256i)k); }
// Of 0 <= a < 2^52, by the bits of a + 2^52.
NAX_VEC I64 truncated(__m256d a) {
    const __m256d magic = _mm256_set1_pd(0x1p52);
    const __m256d shifted = _mm256_add_pd(_mm256_round_pd(a, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC), magic);
    return (I64)_mm256_xor_si256(_mm256_castpd_si256(shifted), _mm256_castpd_si256(magic));
}
NAX_VEC __m256d number_of(I64 a) {
    const __m256d magic = _mm256_set1_pd(0x1p52);
    return _mm256_sub_pd(_mm256_castsi256_pd(_mm256_or_si256((__m256i)a, _mm256_castpd_si256(magic))), magic);
}
// Entries i and i + 1 of a table of counts.
NAX_VEC void look_up_counts(const int32_t* table, I64 i, I64& first, I64& second) {
    const __m128i low = _mm256_castsi256_si128(i), high = _mm256_extracti128_si256((__m256i)i, 1);
    const auto pair = [table](int64_t k) { return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(table + k)); };
    const __m128i a = _mm_unpacklo_epi64(pair(_mm_cvtsi128_si64(low)), pair(_mm_extract_epi64(low, 1)));
    const __m128i b = _mm_unpacklo_epi64(pair(_mm_cvtsi128_si64(high)), pair(_mm_extract_epi64(high, 1)));
    const __m256i both_counts = _mm256_inserti128_si256(_mm256_castsi128_si256(a), b, 1);
    first = (I64)_mm256_and_si256(both_counts, _mm256_set1_epi64x(0xFFFFFFFF));
    second = (I64)_mm256_srli_epi64(both_counts, 32);
}
NAX_VEC I64 look_up_wide(const int64_t* table, I64 i) {
    const __m256i all_lanes = _mm256_set1_epi64x(-1);
    return (I64)_mm256_mask_i64gather_epi64(_mm256_setzero_si256(), reinterpret_cast<const long long*>(table),
                                            (__m256i)i, all_lanes, 8);
}
NAX_VEC I64 cells_from(const int64_t* p, I64) { return (I64)_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
NAX_VEC I64 cells_from(const int32_t* p, I64) {
    return (I64)_mm256_cvtepi32_epi64(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
}
NAX_VEC void store_cells(int64_t* p, I64 a) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), (__m256i)a); }
NAX_VEC void store_cells(int32_t* p, I64 a) {
    const __m256i packed = _mm256_permutevar8x32_epi32((__m256i)a, _mm256_set_epi32(7, 5, 3, 1, 6, 4, 2, 0));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(packed));
}

// --- cells of single precision, 32 bits
NAX_VEC I32 lane_numbers(I32) { return (I32)_mm256_set_epi32(7, 6, 5, 4, 3, 2, 1, 0); }
NAX_VEC I32 count_where(I32 a, LaneMask<I32> m) { return a - m.lanes; }
NAX_VEC I32 product_of_cells(I32 a, I32 k) { return (I32)_mm256_mullo_epi32((__m256i)a, (__m256i)k); }
NAX_VEC I32 truncated(__m256 a) { return (I32)_mm256_cvttps_epi32(a); }
NAX_VEC __m256 number_of(I32 a) { return _mm256_cvtepi32_ps((__m256i)a); }
// Entries i and i + 1 of a table of counts.
NAX_VEC void look_up_counts(const int32_t* table, I32 i, I32& first, I32& second) {
    const __m256i all_lanes = _mm256_set1_epi32(-1);
    first = (I32)_mm256_mask_i32gather_epi32(_mm256_setzero_si256(), table, (__m256i)i, all_lanes, 4);
    second = (I32)_mm256_mask_i32gather_epi32(_mm256_setzero_si256(), table + 1, (__m256i)i, all_lanes, 4);
}
NAX_VEC I32 look_up_wide(const int64_t* table, I32 i) {
    const __m256i all_lanes = _mm256_set1_epi32(-1);
    return (I32)_mm256_mask_i32gather_epi32(_mm256_setzero_si256(), reinterpret_cast<const int*>(table), (__m256i)i,
                                            all_lanes, 8);
}
NAX_VEC I32 cells_from(const int64_t* p, I32) {
    const __m256i even = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    const __m256i odd = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 4));
    const __m256 low = _mm256_shuffle_ps(_mm256_castsi256_ps(even), _mm256_castsi256_ps(odd), _MM_SHUFFLE(2, 0, 2, 0));
    return (I32)_mm256_permute4x64_epi64(_mm256_castps_si256(low), _MM_SHUFFLE(3, 1, 2, 0));
}
NAX_VEC I32 cells_from(const int32_t* p, I32) { return (I32)_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
NAX_VEC void store_cells(int64_t* p, I32 a) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm256_cvtepi32_epi64(_mm256_castsi256_si128((__m256i)a)));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + 4),
                        _mm256_cvtepi32_epi64(_mm256_extracti128_si256((__m256i)a, 1)));
}
NAX_VEC void store_cells(int32_t* p, I32 a) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), (__m256i)a); }

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

template <int kOrder>
requires(kOrder > 2) NAX_VEC void load_rows(const double* base, const int64_t* p, __m256d* c) {
    const auto row = [base](int64_t i) { return row_of_four<kOrder>(base + kOrder * i); };
    const __m256d r0 = row(p[0]), r1 = row(p[1]), r2 = row(p[2]), r3 = row(p[3]);
    const __m256d even01 = _mm256_unpacklo_pd(r0, r1), odd01 = _mm256_unpackhi_pd(r0, r1);
    const __m256d even23 = _mm256_unpacklo_pd(r2, r3), odd23 = _mm256_unpackhi_pd(r2, r3);
    c[0] = _mm256_permute2f128_pd(even01, even23, 0x20);
    c[1] = _mm256_permute2f128_pd(odd01, odd23, 0x20);
    c[2] = _mm256_permute2f128_pd(even01, even23, 0x31);
    if constexpr (kOrder == 4) c[3] = _mm256_permute2f128_pd(odd01, odd23, 0x31);
}

template <int kOrder>
requires(kOrder == 2) NAX_VEC void load_rows(const double* base, const int64_t* p, __m256d* c) {
    const __m256d even =
        _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(base + 2 * p[0])), _mm_loadu_pd(base + 2 * p[2]), 1);
    const __m256d odd =
        _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(base + 2 * p[1])), _mm_loadu_pd(base + 2 * p[3]), 1);
    c[0] = _mm256_unpacklo_pd(even, odd);
    c[1] = _mm256_unpackhi_pd(even, odd);
}

template <int kOrder>
NAX_VEC __m256 row_two(const float* base, int64_t low, int64_t high) {
    return _mm256_insertf128_ps(_mm256_castps128_ps256(row_of_four<kOrder>(base + kOrder * low)),
                                row_of_four<kOrder>(base + kOrder * high), 1);
}
template <int kOrder>
requires(kOrder > 2) NAX_VEC void load_rows(const float* base, const int64_t* p, __m256* c) {
    const __m256 r0 = row_two<kOrder>(base, p[0], p[4]), r1 = row_two<kOrder>(base, p[1], p[5]);
    const __m256 r2 = row_two<kOrder>(base, p[2], p[6]), r3 = row_two<kOrder>(base, p[3], p[7]);
    const __m256 low01 = _mm256_unpacklo_ps(r0, r1), high01 = _mm256_unpackhi_ps(r0, r1);
    const __m256 low23 = _mm256_unpacklo_ps(r2, r3), high23 = _mm256_unpackhi_ps(r2, r3);
    c[0] = _mm256_shuffle_ps(low01, low23, _MM_SHUFFLE(1, 0, 1, 0));
    c[1] = _mm256_shuffle_ps(low01, low23, _MM_SHUFFLE(3, 2, 3, 2));
    c[2] = _mm256_shuffle_ps(high01, high23, _MM_SHUFFLE(1, 0, 1, 0));
    if constexpr (kOrder == 4) c[3] = _mm256_shuffle_ps(high01, high23, _MM_SHUFFLE(3, 2, 3, 2));
}

// --- interleaved stores
// to[2k], to[2k+1] = a[k], b[k]: the coefficients of neighbouring linear cells.
NAX_VEC void store_interleaved(double* to, __m256d a, __m256d b) {
    const __m256d even = __builtin_shufflevector(a, b, 0, 4, 2, 6), odd = __builtin_shufflevector(a, b, 1, 5, 3, 7);
    store(to, __builtin_shufflevector(even, odd, 0, 1, 4, 5));
    store(to + 4, __builtin_shufflevector(even, odd, 2, 3, 6, 7));
}
NAX_VEC void store_interleaved(float* to, __m256 a, __m256 b) {
    const __m256 low = __builtin_shufflevector(a, b, 0, 8, 1, 9, 4, 12, 5, 13);
    const __m256 high = __builtin_shufflevector(a, b, 2, 10, 3, 11, 6, 14, 7, 15);
    store(to, __builtin_shufflevector(low, high, 0, 1, 2, 3, 8, 9, 10, 11));
    store(to + 8, __builtin_shufflevector(low, high, 4, 5, 6, 7, 12, 13, 14, 15));
}

// to[4k .. 4k+3] = a[k], b[k], c[k], d[k]: the coefficients of neighbouring cubic cells.
NAX_VEC void store_interleaved(double* to, __m256d a, __m256d b, __m256d c, __m256d d) {
    const __m256d ab0 = __builtin_shufflevector(a, b, 0, 4, 2, 6), ab1 = __builtin_shufflevector(a, b, 1, 5, 3, 7);
    const __m256d cd0 = __builtin_shufflevector(c, d, 0, 4, 2, 6), cd1 = __builtin_shufflevector(c, d, 1, 5, 3, 7);
    store(to, __builtin_shufflevector(ab0, cd0, 0, 1, 4, 5));
    store(to + 4, __builtin_shufflevector(ab1, cd1, 0, 1, 4, 5));
    store(to + 8, __builtin_shufflevector(ab0, cd0, 2, 3, 6, 7));
    store(to + 12, __builtin_shufflevector(ab1, cd1, 2, 3, 6, 7));
}
NAX_VEC void store_interleaved(float* to, __m256 a, __m256 b, __m256 c, __m256 d) {
    const __m256 ab0 = __builtin_shufflevector(a, b, 0, 8, 1, 9, 4, 12, 5, 13);
    const __m256 ab1 = __builtin_shufflevector(a, b, 2, 10, 3, 11, 6, 14, 7, 15);
    const __m256 cd0 = __builtin_shufflevector(c, d, 0, 8, 1, 9, 4, 12, 5, 13);
    const __m256 cd1 = __builtin_shufflevector(c, d, 2, 10, 3, 11, 6, 14, 7, 15);
    const __m256 cells04 = __builtin_shufflevector(ab0, cd0, 0, 1, 8, 9, 4, 5, 12, 13);
    const __m256 cells15 = __builtin_shufflevector(ab0, cd0, 2, 3, 10, 11, 6, 7, 14, 15);
    const __m256 cells26 = __builtin_shufflevector(ab1, cd1, 0, 1, 8, 9, 4, 5, 12, 13);
    const __m256 cells37 = __builtin_shufflevector(ab1, cd1, 2, 3, 10, 11, 6, 7, 14, 15);
    store(to, __builtin_shufflevector(cells04, cells15, 0, 1, 2, 3, 8, 9, 10, 11));
    store(to + 8, __builtin_shufflevector(cells26, cells37, 0, 1, 2, 3, 8, 9, 10, 11));
    store(to + 16, __builtin_shufflevector(cells04, cells15, 4, 5, 6, 7, 12, 13, 14, 15));
    store(to + 24, __builtin_shufflevector(cells26, cells37, 4, 5, 6, 7, 12, 13, 14, 15));
}
}  // namespace avx2
}  // namespace nax::simd
