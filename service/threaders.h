// Internal view of the `threaders` table, with the test that every threaded entry starts with.
#pragma once

#include "nax/threaders.h"

namespace nax {

using Threaders = nax_threaders;

// Number of threads that the caller's table allows; 1 for a null table, one without a limit or without a loop, and a
// serial one. An entry asks once: the limit may change from one moment to the next, and scratch is sized by it.
inline int thread_limit(const Threaders* threaders) {
    if (threaders == nullptr || threaders->max_threads == nullptr || threaders->parallel_for == nullptr) return 1;
    const int limit = threaders->max_threads();
    return limit > 1 ? limit : 1;
}

}  // namespace nax
