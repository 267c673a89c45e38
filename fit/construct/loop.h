// Loops over elements: whole registers first, single elements for the rest, one body for both.
// Included by *_simd.cpp files only.
#pragma once

#include "fit/construct/lanes.h"
#include "fit/construct/spline_data.h"

namespace nax::fit {

// body.operator()<E>(i) handles the elements from i on that E holds.
template <class T, class Body>
inline void for_lanes(int64_t count, Body&& body) {
    int64_t i = 0;
    for (; i + kLanes<T> <= count; i += kLanes<T>) body.template operator()<Vector<T>>(i);
    for (; i < count; ++i) body.template operator()<T>(i);
}

// Lengths, slopes and inverse lengths of the intervals first .. first + count - 1.
template <class T, Grid G>
inline void fill_lengths(const Intervals<T, G>& intervals, int64_t first, int64_t count, T* length, T* inverse) {
    if constexpr (G == Grid::UniformGrid) {
        for (int64_t i = 0; i < count; ++i) {
            length[i] = intervals.step;
            inverse[i] = intervals.inverse_step;
        }
    } else {
        const T* const x = intervals.x + first;
        for_lanes<T>(count, [&]<class E>(int64_t i) {
            const E h = load<E>(x + i + 1) - load<E>(x + i);
            store(length + i, h);
            store(inverse + i, splat<E>(T(1)) / h);
        });
    }
}
template <class T, Grid G>
inline void fill_slopes(const Intervals<T, G>& intervals, const T* y, const T* length, int64_t count, T* slope) {
    for_lanes<T>(count, [&]<class E>(int64_t i) {
        const E rise = load<E>(y + i + 1) - load<E>(y + i);
        if constexpr (G == Grid::UniformGrid)
            store(slope + i, rise * splat<E>(intervals.inverse_step));
        else
            store(slope + i, rise / load<E>(length + i));
    });
}

// The cubic of a cell from its end slopes d0, d1, its chord's slope m and its inverse length r:
//   y0 + d0 t + (3 m - 2 d0 - d1) r t^2 + (d0 + d1 - 2 m) r^2 t^3
template <class E>
inline E square_coefficient(E d0, E d1, E m, E r) {
    return fma(E{} + 3, m, -(d0 + d0 + d1)) * r;
}
template <class E>
inline E cube_coefficient(E d0, E d1, E m, E r) {
    return fma(E{} - 2, m, d0 + d1) * (r * r);
}
template <class T>
inline void store_hermite_cells(const T* y, const T* slope, const T* derivative, const T* inverse, int64_t count, T* to) {
    for_lanes<T>(count, [&]<class E>(int64_t i) {
        const E d0 = load<E>(derivative + i), d1 = load<E>(derivative + i + 1);
        const E m = load<E>(slope + i), r = load<E>(inverse + i);
        store_interleaved(to + 4 * i, load<E>(y + i), d0, square_coefficient(d0, d1, m, r), cube_coefficient(d0, d1, m, r));
    });
}

}  // namespace nax::fit
