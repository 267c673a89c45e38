// Step functions: one of two function values for every site, by a comparison with one point.
#pragma once

#include "fit/eval/data_points.h"
#include "fit/packs.h"

namespace nax::fit {
inline namespace NAX_ISA {

// Side gives, for the left point p of a site's cell: point(p), first(p) the value of a site that stands on that point,
// and second(p) that of all others.
template <class T, class Cell, class Side>
[[gnu::always_inline]] inline void evaluate_steps(EvalBlock<T>& block, const Cell* cell, const FunctionData<T> y,
                                                  const Side& side) {
    using P = Pack<T>;
    const T* const site = block.site;
    T* const plane = block.plane;
    const int64_t nx = block.task->nx, n = block.n;
    const auto one = [&](int64_t i) {
        const int64_t p = polynomial_index(cell[i], nx);
        return y[site[i] == side.point(p) ? side.first(p) : side.second(p)];
    };
    int64_t i = 0;
    // Vectors of ascending sites in one cell take two values at most.
    if (block.try_one_cell)
        for (; i + P::kLanes <= n; i += P::kLanes) {
            if (cell[i] != cell[i + P::kLanes - 1]) {
                for (int64_t k = i; k < i + P::kLanes; ++k) plane[k] = one(k);
                continue;
            }
            const int64_t p = polynomial_index(cell[i], nx);
            const auto on_point = P::eq(P::load(site + i), P::set(side.point(p)));
            P::store(plane + i, P::choose(on_point, P::set(y[side.first(p)]), P::set(y[side.second(p)])));
        }
    for (; i < n; ++i) plane[i] = one(i);
}

template <class T, class Side>
int32_t evaluate_step(EvalBlock<T>& block, int64_t function, bool wide_cells, const Side& side) {
    if (zero_missing_orders(block, 1) == 0) return DfStatusOk;
    const FunctionData<T> y = function_data<T>(*block.task, function);
    if (wide_cells)
        evaluate_steps(block, static_cast<const int64_t*>(block.cell), y, side);
    else
        evaluate_steps(block, static_cast<const int32_t*>(block.cell), y, side);
    return DfStatusOk;
}

}  // namespace NAX_ISA
}  // namespace nax::fit
