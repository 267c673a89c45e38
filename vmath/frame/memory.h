// Access to the caller's vectors: dense, or strided by 128-bit insert loads and lane stores. Gathers and scatters cost
// two to three times as much on the processors we know.
#pragma once

#include <cstddef>

#include "vmath/frame/vec.h"

namespace nax::vmath::avx512 {

// Inactive lanes of a partial load hold this value, which is ordinary for most functions.
inline constexpr double kFiller = 0.75;

NAX_VEC __m512d load(const double* p) { return _mm512_loadu_pd(p); }
NAX_VEC __m512 load(const float* p) { return _mm512_loadu_ps(p); }
NAX_VEC void store(double* p, __m512d x) { _mm512_storeu_pd(p, x); }
NAX_VEC void store(float* p, __m512 x) { _mm512_storeu_ps(p, x); }
NAX_VEC __m512d load(const double* p, __mmask8 m) { return _mm512_mask_loadu_pd(Double::row(kFiller), m, p); }
NAX_VEC __m512 load(const float* p, __mmask16 m) { return _mm512_mask_loadu_ps(Single::row(float(kFiller)), m, p); }
NAX_VEC void store(double* p, __mmask8 m, __m512d x) { _mm512_mask_storeu_pd(p, m, x); }
NAX_VEC void store(float* p, __mmask16 m, __m512 x) { _mm512_mask_storeu_ps(p, m, x); }

NAX_VEC __m256d four_strided(const double* p, ptrdiff_t s) {
    return _mm256_set_m128d(_mm_loadh_pd(_mm_load_sd(p + 2 * s), p + 3 * s), _mm_loadh_pd(_mm_load_sd(p), p + s));
}
NAX_VEC __m512d load_strided(const double* p, ptrdiff_t s) {
    return _mm512_insertf64x4(_mm512_castpd256_pd512(four_strided(p, s)), four_strided(p + 4 * s, s), 1);
}
NAX_VEC __m256 eight_strided(const float* p, ptrdiff_t s) {
    const float* const q = p + 4 * s;
    return _mm256_set_m128(_mm_setr_ps(q[0], q[s], q[2 * s], q[3 * s]), _mm_setr_ps(p[0], p[s], p[2 * s], p[3 * s]));
}
NAX_VEC __m512 load_strided(const float* p, ptrdiff_t s) {
    return _mm512_insertf32x8(_mm512_castps256_ps512(eight_strided(p, s)), eight_strided(p + 8 * s, s), 1);
}

NAX_VEC void store_two(double* p, ptrdiff_t s, __m128d x) {
    _mm_storel_pd(p, x);
    _mm_storeh_pd(p + s, x);
}
NAX_VEC void store_strided(double* p, ptrdiff_t s, __m512d x) {
    store_two(p, s, _mm512_castpd512_pd128(x));
    store_two(p + 2 * s, s, _mm512_extractf64x2_pd(x, 1));
    store_two(p + 4 * s, s, _mm512_extractf64x2_pd(x, 2));
    store_two(p + 6 * s, s, _mm512_extractf64x2_pd(x, 3));
}
NAX_VEC void store_four(float* p, ptrdiff_t s, __m128 x) {
    p[0] = x[0];
    p[s] = x[1];
    p[2 * s] = x[2];
    p[3 * s] = x[3];
}
NAX_VEC void store_strided(float* p, ptrdiff_t s, __m512 x) {
    store_four(p, s, _mm512_castps512_ps128(x));
    store_four(p + 4 * s, s, _mm512_extractf32x4_ps(x, 1));
    store_four(p + 8 * s, s, _mm512_extractf32x4_ps(x, 2));
    store_four(p + 12 * s, s, _mm512_extractf32x4_ps(x, 3));
}

// The vectors of one call, NI inputs and NO outputs, all dense.
template <class E, int NI, int NO>
struct Dense {
    using T = typename E::Element;
    using Vector = typename E::Vector;
    static constexpr bool dense = true;
    static constexpr int inputs = NI, outputs = NO;

    const T* in[NI];
    T* out[NO];

    NAX_VEC Vector read(int k, ptrdiff_t i) const { return load(in[k] + i); }
    NAX_VEC Vector read(int k, ptrdiff_t i, int lanes) const { return load(in[k] + i, lane_mask(lanes)); }
    NAX_VEC void write(int k, ptrdiff_t i, Vector x) const { store(out[k] + i, x); }
    NAX_VEC void write(int k, ptrdiff_t i, int lanes, Vector x) const { store(out[k] + i, lane_mask(lanes), x); }
    NAX_VEC int in_stride(int) const { return 1; }
    NAX_VEC int out_stride(int) const { return 1; }
    NAX_VEC static typename E::Mask lane_mask(int lanes) { return typename E::Mask(0xFFFFFFFFu >> (32 - lanes)); }
};

// The same with a stride for each vector, counted in elements, of any sign.
template <class E, int NI, int NO>
struct Strided {
    using T = typename E::Element;
    using Vector = typename E::Vector;
    static constexpr bool dense = false;
    static constexpr int inputs = NI, outputs = NO;

    const T* in[NI];
    T* out[NO];
    int in_strides[NI];
    int out_strides[NO];

    NAX_VEC Vector read(int k, ptrdiff_t i) const {
        const ptrdiff_t s = in_strides[k];
        return s == 1 ? load(in[k] + i) : load_strided(in[k] + i * s, s);
    }
    NAX_VEC Vector read(int k, ptrdiff_t i, int lanes) const {
        alignas(64) T row[E::lanes];
        store(row, E::row(T(kFiller)));
        for (int lane = 0; lane < lanes; ++lane) row[lane] = in[k][(i + lane) * in_strides[k]];
        return load(row);
    }
    NAX_VEC void write(int k, ptrdiff_t i, Vector x) const {
        const ptrdiff_t s = out_strides[k];
        if (s == 1)
            store(out[k] + i, x);
        else
            store_strided(out[k] + i * s, s, x);
    }
    NAX_VEC void write(int k, ptrdiff_t i, int lanes, Vector x) const {
        alignas(64) T row[E::lanes];
        store(row, x);
        for (int lane = 0; lane < lanes; ++lane) out[k][(i + lane) * out_strides[k]] = row[lane];
    }
    NAX_VEC int in_stride(int k) const { return in_strides[k]; }
    NAX_VEC int out_stride(int k) const { return out_strides[k]; }
    NAX_VEC bool all_unit() const {
        bool unit = true;
        for (const int s : in_strides) unit &= s == 1;
        for (const int s : out_strides) unit &= s == 1;
        return unit;
    }
};

}  // namespace nax::vmath::avx512
