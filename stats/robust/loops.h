// Loops over the observations of a variable, in the vectors of the library's flavour.
#pragma once

#include <cstdint>

namespace nax::stats::robust {

// out = a + factor b; out may be a.
template <class T>
void add_scaled(const T* a, T factor, const T* b, int64_t n, T* out);
// out = |x - centre|.
template <class T>
void absolute_deviations(const T* x, T centre, int64_t n, T* out);
// sums += ((x - centre) factor)^2.
template <class T>
void add_squares(const T* x, T centre, T factor, int64_t n, T* sums);

}  // namespace nax::stats::robust
