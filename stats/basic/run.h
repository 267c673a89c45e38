// Runs the basic entry over data.
#pragma once

#include "service/threaders.h"
#include "stats/basic/state.h"

namespace nax::stats::basic {

// All arrays of the job have been checked. Memory is the one failure; nothing has then been written.
template <class T>
int32_t run(const Job<T>& job, const Threaders* threaders);

}  // namespace nax::stats::basic
