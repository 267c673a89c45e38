// Covariances that can be inverted, and their inverses.
#pragma once

#include <cstddef>
#include <cstdint>

namespace nax::stats::outliers {

// Reals of scratch for a p by p matrix.
inline constexpr std::size_t invertible_work(int64_t p) { return static_cast<std::size_t>(6 * p + 1); }

// Raises the diagonal of a covariance whose smallest eigenvalue is nearly zero. Full storage; the triangle above the
// diagonal by rows stays as it is, the one below is used up. Status: UnusableCovariance, EigenvaluesFailed.
template <class T>
int32_t make_invertible(int64_t p, T* covariance, T* work);

// Inverts in place, both triangles. Status: FactorFailed, InverseFailed.
template <class T>
int32_t invert(int64_t p, T* covariance);

// Both, one after the other.
template <class T>
int32_t usable_inverse(int64_t p, T* covariance, T* work) {
    const int32_t status = make_invertible(p, covariance, work);
    return status != 0 ? status : invert(p, covariance);
}

}  // namespace nax::stats::outliers
