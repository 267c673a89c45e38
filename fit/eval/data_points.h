// Splines that read the function data: what evaluators of steps and look-ups share.
#pragma once

#include "fit/eval/evaluator.h"
#include "fit/subgrid.h"

namespace nax::fit {

// The point of every site: choose(site, left point p of its cell) gives its index.
template <class T, class Choose>
[[gnu::always_inline]] inline void choose_points(EvalBlock<T>& block, bool wide_cells, const Choose& choose) {
    if (block.located) return;
    block.located = true;
    const int64_t nx = block.task->nx, n = block.n;
    const T* const site = block.site;
    int64_t* const index = block.index;
    const auto all = [=](const auto* cell) {
        for (int64_t i = 0; i < n; ++i) index[i] = choose(site[i], polynomial_index(cell[i], nx));
    };
    if (wide_cells)
        all(static_cast<const int64_t*>(block.cell));
    else
        all(static_cast<const int32_t*>(block.cell));
}

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
