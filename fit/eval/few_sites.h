// Evaluation of a few sites, site by site: what a call of one site costs is mostly the way to the arithmetic.
#pragma once

#include "fit/task.h"

namespace nax::fit {

inline constexpr int64_t kFewSites = 16;

// Evaluates when the call is as plain as most are: no callbacks, no cells, listed sites and good arguments, of a
// linear, quadratic or cubic spline. Else it does nothing and returns false, and the general way says what is the
// matter. The bits are those of the general way.
template <class T>
bool evaluate_few(const Task* task, int64_t nsite, const T* site, int64_t sitehint, int64_t ndorder, const void* dorder,
                  T* r, int64_t rhint);

}  // namespace nax::fit
