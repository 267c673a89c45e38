// Orthogonalised Gnanadesikan-Kettenring estimate: R. A. Maronna, R. H. Zamar, Robust estimates of location and
// dispersion for high-dimensional datasets, Technometrics 44 (2002) 307-317, one pass, with the median absolute
// deviation as scale.
#pragma once

#include <cstdint>

#include "service/threaders.h"

namespace nax::stats::robust {

// Mean and full covariance of the observations that lie near the centre. `weights` has n reals: 1 for those, 0 for the
// others. Status: Memory; EigenvaluesFailed also where a variable or projection has no spread about its median.
template <class T>
int32_t ogk(int64_t p, int64_t n, int64_t storage, const T* x, int threads, const Threaders* threaders, T* weights,
            T* mean, T* covariance);

}  // namespace nax::stats::robust
