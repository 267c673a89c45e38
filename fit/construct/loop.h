// Loops over elements: whole registers first, single elements for the rest, one body for both.
// Included by *_simd.cpp files only.
#pragma once

#include "simd/element.h"
#include "fit/construct/spline_data.h"

namespace nax::fit {

inline namespace NAX_ISA {
using namespace simd;

// body.operator()<E>(i) handles the elements from i on that E holds. Inlined always: as a function of its own it would load
// the body's captures anew in every round, for fear that a store has changed them.
template <class T, class Body>
[[gnu::always_inline]] inline void for_lanes(int64_t count, Body&& body) {
    int64_t i = 0;
    for (; i + kLanes<T> <= count; i += kLanes<T>) body.template operator()<Vector<T>>(i);
    for (; i < count; ++i) body.template operator()<T>(i);
}

// Lengths and inverse lengths of the intervals first .. first + count - 1.
template <class T, Grid G>
inline void fill_lengths(const Intervals<T, G>& intervals, int64_t first, int64_t count, T* length, T* inverse) {
    const T* const x = intervals.x + (G == Grid::UniformGrid ? 0 : first);
    for_lanes<T>(count, [&]<class E>(int64_t i) {
        if constexpr (G == Grid::UniformGrid) {
            store(length + i, splat<E>(intervals.step));
            store(inverse + i, splat<E>(intervals.inverse_step));
        } else {
            const E h = load<E>(x + i + 1) - load<E>(x + i);
            store(length + i, h);
            store(inverse + i, splat<E>(T(1)) / h);
        }
    });
}
// Chord slopes. On a general partition this is the quotient rise / length, correctly rounded, by one Newton step on the
// product with the rounded inverse (P. W. Markstein, IBM J. Res. Dev. 34 (1990) 111-119).
template <class T, Grid G>
inline void fill_slopes(const Intervals<T, G>& intervals, const T* y, const T* length, const T* inverse, int64_t count, T* slope) {
    for_lanes<T>(count, [&]<class E>(int64_t i) {
        const E rise = load<E>(y + i + 1) - load<E>(y + i);
        if constexpr (G == Grid::UniformGrid) {
            store(slope + i, rise * splat<E>(intervals.inverse_step));
        } else {
            const E r = load<E>(inverse + i), quotient = rise * r;
            store(slope + i, fma(fma(-quotient, load<E>(length + i), rise), r, quotient));
        }
    });
}

// rows[k][i] = from[i * stride + k] for four functions k.
template <class T, int64_t kPitch>
inline void split_rows(const T* from, int64_t stride, int64_t count, T (*rows)[kPitch]) {
    using V = Quad<T>;
    int64_t i = 0;
    for (; i + 4 <= count; i += 4) {
        const T* const at = from + i * stride;
        V a = load<V>(at), b = load<V>(at + stride), c = load<V>(at + 2 * stride), d = load<V>(at + 3 * stride);
        simd::transpose(a, b, c, d);
        store(rows[0] + i, a), store(rows[1] + i, b), store(rows[2] + i, c), store(rows[3] + i, d);
    }
    for (; i < count; ++i)
        for (int64_t k = 0; k < 4; ++k) rows[k][i] = from[i * stride + k];
}
// Points first .. first + count - 1 of up to four functions from j on, each as a row: its own memory, or a copy in `rows`.
template <class T, Layout L, int64_t kPitch>
inline void collect_rows(const Functions<T, L>& functions, int64_t j, int64_t functions_here, int64_t first, int64_t count,
                         T (*rows)[kPitch], const T** out) {
    for (int64_t k = 0; k < functions_here; ++k) {
        if constexpr (L == Layout::YRows)
            out[k] = functions.row(j + k, first, count, rows[k]);
        else
            out[k] = functions_here == 4 ? rows[k] : functions.row(j + k, first, count, rows[k]);
    }
    if constexpr (L == Layout::YCols)
        if (functions_here == 4) split_rows(functions.column(j, first), function_count(functions.task), count, rows);
}

// The cubic of a cell from its end slopes d0, d1, its chord's slope m and its inverse length r:
//   y0 + d0 t + (3 m - 2 d0 - d1) r t^2 + (d0 + d1 - 2 m) r^2 t^3
// The square of r is never formed: it leaves the range long before the coefficient does.
template <class E>
inline E square_coefficient(E d0, E d1, E m, E r) {
    return fma(E{} + 3, m, -(d0 + d0 + d1)) * r;
}
template <class E>
inline E cube_coefficient(E d0, E d1, E m, E r) {
    return fma(E{} - 2, m, d0 + d1) * r * r;
}
template <class T>
inline void store_hermite_cells(const T* y, const T* slope, const T* derivative, const T* inverse, int64_t count, T* to) {
    for_lanes<T>(count, [&]<class E>(int64_t i) {
        const E d0 = load<E>(derivative + i), d1 = load<E>(derivative + i + 1);
        const E m = load<E>(slope + i), r = load<E>(inverse + i);
        store_interleaved(to + 4 * i, load<E>(y + i), d0, square_coefficient(d0, d1, m, r), cube_coefficient(d0, d1, m, r));
    });
}

}  // namespace NAX_ISA
}  // namespace nax::fit
