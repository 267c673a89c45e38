// Internal view of the `threaders` table, with the test that every threaded entry starts with.
#pragma once

#include "nax/threaders.h"

namespace nax {

using Threaders = nax_threaders;

// Number of threads that the caller's table allows; 1 for a null table, a table without a limit slot or a serial one.
inline int thread_limit(const Threaders* threaders) {
    if (threaders == nullptr || threaders->max_threads == nullptr) return 1;
    const int limit = threaders->max_threads();
    return limit > 1 ? limit : 1;
}

}  // namespace nax
