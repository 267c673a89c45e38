// Observations of one block of variables as rows of lanes, from either storage.
#pragma once

#include <algorithm>

#include "stats/basic/kernels.h"
#include "stats/lanes.h"

namespace nax::stats::basic {
inline namespace NAX_ISA {

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
        for (int64_t l = 0; l < lanes; ++l) {
            const T* const x = slice.x + (base + l) * slice.n + first;
            if (l < width)
                for (int64_t k = 0; k < count; ++k) buffer[k * lanes + l] = x[k];
            else
                for (int64_t k = 0; k < count; ++k) buffer[k * lanes + l] = T(0);
        }
    }
    return {buffer, lanes};
}

}  // namespace NAX_ISA
}  // namespace nax::stats::basic
