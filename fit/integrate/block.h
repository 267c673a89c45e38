// One block of limit pairs: its cells, its pieces, and what callbacks contribute.
#pragma once

#include "fit/integrate/integral.h"

namespace nax::fit {

// Running positions of the two searches.
struct SearchPositions {
    int64_t left = 0, right = 0;
};

// Integrals of all functions over limits first .. first + count - 1; `work` as in Integration, of this thread.
template <class T>
int32_t integrate_block(const Integration<T>& call, int64_t first, int64_t count, SearchPositions& positions, T* work);

// All pairs of a call of at most kFewPairs listed ones without callbacks, pair by pair: the way through blocks, plans and
// scratch would take longer than the integrals.
inline constexpr int64_t kFewPairs = 8;
template <class T>
void integrate_few(const Integration<T>& call);

// Cuts what belongs to callbacks off the pairs of a block, whose limits lie in the given cells, and adds their results up
// by function in `work`.
template <class T>
int32_t run_callbacks(const Integration<T>& call, LimitBlock<T>& block, const int64_t* a_cell, const int64_t* b_cell, T* work);

}  // namespace nax::fit
