// Kernel of the extremes.
#pragma once

#include "stats/basic/kernels.h"

namespace nax::stats::basic {

// Lowers `minimum` and raises `maximum`, in blocks of lanes, by the observations of the slice; either may be null.
template <class T>
void extremes(const Slice<T>& slice, bool columns, T* minimum, T* maximum);

}  // namespace nax::stats::basic
