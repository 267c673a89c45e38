// Splines that read the function data: what evaluators of steps and look-ups share.
#pragma once

#include "fit/eval/evaluator.h"
#include "fit/subgrid.h"

namespace nax::fit {

// Function values at the points of block.index go to the slot of the value; all other slots are zero.
template <class T>
void gather_values(EvalBlock<T>& block, int64_t function) {
    if (zero_missing_orders(block, 1) == 0) return;
    const FunctionData<T> y = function_data<T>(*block.task, function);
    T* const plane = block.plane;
    const int64_t n = block.n;
    if (y.stride == 1)
        for (int64_t i = 0; i < n; ++i) plane[i] = y.base[block.index[i]];
    else
        for (int64_t i = 0; i < n; ++i) plane[i] = y[block.index[i]];
}

}  // namespace nax::fit
