// Coefficients of several cells at once: the rows of `kOrder` elements that belong to the cells, transposed to one
// vector per power. Included by *_simd.cpp files only.
#pragma once

#include "fit/simd/pack.h"

namespace nax::fit::NAX_FIT_SIMD {

// row(p) = base + p * order. Reads nothing outside the rows.
template <class P, int kOrder>
struct Rows {
    using F = typename P::F;
    using T = typename P::Element;
    [[gnu::always_inline]] static void load(const T* base, const int64_t* p, F* c) {
        const auto first = P::times(P::load_cells(p), kOrder);
        for (int m = 0; m < kOrder; ++m) c[m] = P::gather(base + m, first);
    }
};

template <class T, int kOrder>
struct Rows<Lane<T>, kOrder> {
    [[gnu::always_inline]] static void load(const T* base, const int64_t* p, T* c) {
        for (int m = 0; m < kOrder; ++m) c[m] = base[*p * kOrder + m];
    }
};

// The first kOrder elements from p on, three or four, and nothing behind them.
template <int kOrder>
[[gnu::always_inline]] inline __m256d row_of_four(const double* p) {
    if constexpr (kOrder == 4) return _mm256_loadu_pd(p);
    return _mm256_maskload_pd(p, _mm256_set_epi64x(0, -1, -1, -1));
}
template <int kOrder>
[[gnu::always_inline]] inline __m128 row_of_four(const float* p) {
    if constexpr (kOrder == 4) return _mm_loadu_ps(p);
    return _mm_maskload_ps(p, _mm_set_epi32(0, -1, -1, -1));
}

#if defined(__AVX512F__)

// Rows are placed in the halves and quarters of a register so that one unpack and one permutation by quarters leave the
// cells in order.
template <int kOrder>
    requires(kOrder == 3 || kOrder == 4)
struct Rows<Pack<double>, kOrder> {
    [[gnu::always_inline]] static __m512d pair(const double* base, int64_t low, int64_t high) {
        return _mm512_insertf64x4(_mm512_castpd256_pd512(row_of_four<kOrder>(base + kOrder * low)),
                                  row_of_four<kOrder>(base + kOrder * high), 1);
    }
    [[gnu::always_inline]] static void load(const double* base, const int64_t* p, __m512d* c) {
        const __m512d a0 = pair(base, p[0], p[2]), a1 = pair(base, p[1], p[3]);
        const __m512d b0 = pair(base, p[4], p[6]), b1 = pair(base, p[5], p[7]);
        const __m512d a_even = _mm512_unpacklo_pd(a0, a1), a_odd = _mm512_unpackhi_pd(a0, a1);
        const __m512d b_even = _mm512_unpacklo_pd(b0, b1), b_odd = _mm512_unpackhi_pd(b0, b1);
        c[0] = _mm512_shuffle_f64x2(a_even, b_even, _MM_SHUFFLE(2, 0, 2, 0));
        c[1] = _mm512_shuffle_f64x2(a_odd, b_odd, _MM_SHUFFLE(2, 0, 2, 0));
        c[2] = _mm512_shuffle_f64x2(a_even, b_even, _MM_SHUFFLE(3, 1, 3, 1));
        if constexpr (kOrder == 4) c[3] = _mm512_shuffle_f64x2(a_odd, b_odd, _MM_SHUFFLE(3, 1, 3, 1));
    }
};

template <>
struct Rows<Pack<double>, 2> {
    [[gnu::always_inline]] static __m512d four(const double* base, const int64_t* p) {
        const __m256d low = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(base + 2 * p[0])),
                                                 _mm_loadu_pd(base + 2 * p[2]), 1);
        const __m256d high = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(base + 2 * p[4])),
                                                  _mm_loadu_pd(base + 2 * p[6]), 1);
        return _mm512_insertf64x4(_mm512_castpd256_pd512(low), high, 1);
    }
    [[gnu::always_inline]] static void load(const double* base, const int64_t* p, __m512d* c) {
        const __m512d even = four(base, p), odd = four(base, p + 1);
        c[0] = _mm512_unpacklo_pd(even, odd);
        c[1] = _mm512_unpackhi_pd(even, odd);
    }
};

template <int kOrder>
    requires(kOrder == 3 || kOrder == 4)
struct Rows<Pack<float>, kOrder> {
    // Rows k, k + 4, k + 8, k + 12 in the quarters.
    [[gnu::always_inline]] static __m512 four(const float* base, const int64_t* p) {
        const auto row = [base](int64_t i) { return row_of_four<kOrder>(base + kOrder * i); };
        const __m256 low = _mm256_insertf128_ps(_mm256_castps128_ps256(row(p[0])), row(p[4]), 1);
        const __m256 high = _mm256_insertf128_ps(_mm256_castps128_ps256(row(p[8])), row(p[12]), 1);
        return _mm512_insertf32x8(_mm512_castps256_ps512(low), high, 1);
    }
    [[gnu::always_inline]] static void load(const float* base, const int64_t* p, __m512* c) {
        const __m512 r0 = four(base, p), r1 = four(base, p + 1), r2 = four(base, p + 2), r3 = four(base, p + 3);
        const __m512 low01 = _mm512_unpacklo_ps(r0, r1), high01 = _mm512_unpackhi_ps(r0, r1);
        const __m512 low23 = _mm512_unpacklo_ps(r2, r3), high23 = _mm512_unpackhi_ps(r2, r3);
        c[0] = _mm512_shuffle_ps(low01, low23, _MM_SHUFFLE(1, 0, 1, 0));
        c[1] = _mm512_shuffle_ps(low01, low23, _MM_SHUFFLE(3, 2, 3, 2));
        c[2] = _mm512_shuffle_ps(high01, high23, _MM_SHUFFLE(1, 0, 1, 0));
        if constexpr (kOrder == 4) c[3] = _mm512_shuffle_ps(high01, high23, _MM_SHUFFLE(3, 2, 3, 2));
    }
};

#else

template <int kOrder>
    requires(kOrder == 3 || kOrder == 4)
struct Rows<Pack<double>, kOrder> {
    [[gnu::always_inline]] static void load(const double* base, const int64_t* p, __m256d* c) {
        const auto row = [base](int64_t i) { return row_of_four<kOrder>(base + kOrder * i); };
        const __m256d r0 = row(p[0]), r1 = row(p[1]), r2 = row(p[2]), r3 = row(p[3]);
        const __m256d even01 = _mm256_unpacklo_pd(r0, r1), odd01 = _mm256_unpackhi_pd(r0, r1);
        const __m256d even23 = _mm256_unpacklo_pd(r2, r3), odd23 = _mm256_unpackhi_pd(r2, r3);
        c[0] = _mm256_permute2f128_pd(even01, even23, 0x20);
        c[1] = _mm256_permute2f128_pd(odd01, odd23, 0x20);
        c[2] = _mm256_permute2f128_pd(even01, even23, 0x31);
        if constexpr (kOrder == 4) c[3] = _mm256_permute2f128_pd(odd01, odd23, 0x31);
    }
};

template <>
struct Rows<Pack<double>, 2> {
    [[gnu::always_inline]] static void load(const double* base, const int64_t* p, __m256d* c) {
        const __m256d even = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(base + 2 * p[0])),
                                                  _mm_loadu_pd(base + 2 * p[2]), 1);
        const __m256d odd = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(base + 2 * p[1])),
                                                 _mm_loadu_pd(base + 2 * p[3]), 1);
        c[0] = _mm256_unpacklo_pd(even, odd);
        c[1] = _mm256_unpackhi_pd(even, odd);
    }
};

template <int kOrder>
    requires(kOrder == 3 || kOrder == 4)
struct Rows<Pack<float>, kOrder> {
    [[gnu::always_inline]] static __m256 two(const float* base, int64_t low, int64_t high) {
        return _mm256_insertf128_ps(_mm256_castps128_ps256(row_of_four<kOrder>(base + kOrder * low)),
                                    row_of_four<kOrder>(base + kOrder * high), 1);
    }
    [[gnu::always_inline]] static void load(const float* base, const int64_t* p, __m256* c) {
        const __m256 r0 = two(base, p[0], p[4]), r1 = two(base, p[1], p[5]);
        const __m256 r2 = two(base, p[2], p[6]), r3 = two(base, p[3], p[7]);
        const __m256 low01 = _mm256_unpacklo_ps(r0, r1), high01 = _mm256_unpackhi_ps(r0, r1);
        const __m256 low23 = _mm256_unpacklo_ps(r2, r3), high23 = _mm256_unpackhi_ps(r2, r3);
        c[0] = _mm256_shuffle_ps(low01, low23, _MM_SHUFFLE(1, 0, 1, 0));
        c[1] = _mm256_shuffle_ps(low01, low23, _MM_SHUFFLE(3, 2, 3, 2));
        c[2] = _mm256_shuffle_ps(high01, high23, _MM_SHUFFLE(1, 0, 1, 0));
        if constexpr (kOrder == 4) c[3] = _mm256_shuffle_ps(high01, high23, _MM_SHUFFLE(3, 2, 3, 2));
    }
};

#endif

}  // namespace nax::fit::NAX_FIT_SIMD
