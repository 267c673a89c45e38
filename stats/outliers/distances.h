// Mahalanobis distances of ranges of observations.
#pragma once

#include <cstddef>

#include "stats/basic/kernels.h"

namespace nax::stats::outliers {

// Reals that mahalanobis() needs at `work`.
template <class T>
[[gnu::always_inline]] constexpr std::size_t distance_work(int64_t p) {
    return static_cast<std::size_t>(p + 1) * (64 / sizeof(T));
}
// result[i - first] = sqrt((x_i - mean)' inverse (x_i - mean)) for the observations of the slice, in lanes of
// observations. `inverse` is full; its lower triangle by rows is read.
template <class T>
void mahalanobis(const basic::Slice<T>& slice, bool columns, const T* mean, const T* inverse, T* work, T* result);

// result[i - first] = sqrt(sum over j of (x_ij - centre_j)^2).
template <class T>
void euclidean(const basic::Slice<T>& slice, bool columns, const T* centre, T* result);

}  // namespace nax::stats::outliers
