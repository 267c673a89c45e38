// Access to the caller's vectors: dense, or strided.
#pragma once

#include <cstddef>

#include "simd/simd.h"

namespace nax::vmath::NAX_ISA {

using namespace nax::simd;
using simd::from_bits;  // that of vectors, which hides the scalar one

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
    NAX_VEC Vector read(int k, ptrdiff_t i, int lanes) const { return load(in[k] + i, lanes); }
    NAX_VEC void write(int k, ptrdiff_t i, Vector x) const { store(out[k] + i, x); }
    NAX_VEC void write(int k, ptrdiff_t i, int lanes, Vector x) const { store(out[k] + i, lanes, x); }
    NAX_VEC int in_stride(int) const { return 1; }
    NAX_VEC int out_stride(int) const { return 1; }
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
        return load_strided(in[k] + i * ptrdiff_t{in_strides[k]}, in_strides[k], lanes);
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

}  // namespace nax::vmath::NAX_ISA
