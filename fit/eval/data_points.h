// Splines that read the function data: what evaluators of steps and look-ups share.
#pragma once

#include "fit/eval/evaluator.h"
#include "fit/subgrid.h"

namespace nax::fit {

// Point i as the evaluators see it, also of a uniform partition.
template <class T>
T breakpoint(const EvalBlock<T>& block, int64_t i) {
    const T* const x = partition<T>(*block.task);
    return has_uniform_grid(*block.task) ? fused(static_cast<T>(i), block.step, x[0]) : x[i];
}

// Function values at the points of block.index go to the slot of the value; all other slots are zero.
template <class T>
void gather_values(EvalBlock<T>& block, int64_t function) {
    if (zero_missing_orders(block, 1) == 0) return;
    const FunctionData<T> y = function_data<T>(*block.task, function);
    for (int64_t i = 0; i < block.n; ++i) block.plane[i] = y[block.index[i]];
}

}  // namespace nax::fit
