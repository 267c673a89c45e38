// Rank-k updates of a symmetric matrix in the vectors of a file's instruction set.
#pragma once

#include "stats/lanes.h"

namespace nax::stats::basic {
inline namespace NAX_ISA {

// scaled(k, j) = factors[k] plain(k, j).
template <class T>
inline void scale_rows(int64_t ld, int64_t rows, const T* factors, const T* plain, T* scaled) {
    using V = Lanes<T>;
    for (int64_t k = 0; k < rows; ++k) {
        const V factor = splat<V>(factors[k]);
        for (int64_t j = 0; j < ld; j += kLanes<T>) store(scaled + k * ld + j, factor * load<V>(plain + k * ld + j));
    }
}

// c(i, j) += sum over k of left(k, i) right(k, j), for the elements of the upper triangle and some below it. `ld` is
// the row length of all three, a multiple of the lanes. Every element adds its products in the order of k.
template <class T>
void rank_update(int64_t p, int64_t ld, int64_t rows, const T* left, const T* right, T* c);

}  // namespace NAX_ISA
}  // namespace nax::stats::basic
