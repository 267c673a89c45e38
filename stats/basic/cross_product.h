// Rank-k updates of a symmetric matrix in the vectors of a file's instruction set.
#pragma once

#include "stats/lanes.h"

namespace nax::stats::basic {
inline namespace NAX_ISA {

// c(i, j) += sum over k of left(k, i) right(k, j), for the elements of the upper triangle and some below it. `ld` is
// the row length of all three, a multiple of the lanes. Every element adds its products in the order of k.
template <class T>
void rank_update(int64_t p, int64_t ld, int64_t rows, const T* left, const T* right, T* c);

}  // namespace NAX_ISA
}  // namespace nax::stats::basic
