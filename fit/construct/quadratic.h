// The two quadratic splines behind one entry.
#pragma once

#include "fit/construct/dispatch.h"

namespace nax::fit {

// Checks what is the spline's own, and runs its kernel.
int32_t standard_quadratic(Task* task, const Threaders* threaders);
int32_t subbotin_quadratic(Task* task, const Threaders* threaders);

}  // namespace nax::fit
