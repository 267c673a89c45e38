// Look-up: the function value at a site that is a partition point.
#include "fit/eval/data_points.h"

namespace nax::fit {
namespace {

// Sites of a uniform partition match a point within this distance, whatever the step.
template <class T>
inline constexpr T kTolerance = T(0x1p-40);

constexpr int64_t kNoPoint = -1;

template <class T>
T distance(T a) {
    return a < 0 ? -a : a;
}

// The point that a site of cell c stands on.
template <class T>
int64_t point_of(const EvalBlock<T>& block, T site, int64_t c) {
    const Task& task = *block.task;
    const T* const x = partition<T>(task);
    if (c == 0) return kNoPoint;
    if (site == right_end<T>(task)) return task.nx - 1;
    if (!has_uniform_grid(task)) {
        if (site == x[c - 1]) return c - 1;
        return c < task.nx && site == x[c] ? c : kNoPoint;
    }
    const T h = block.step;
    if (distance(site - static_cast<T>(c - 1) * h - x[0]) <= kTolerance<T>) return c - 1;
    return c < task.nx && distance((site - x[0]) - static_cast<T>(c) * h) < kTolerance<T> ? c : kNoPoint;
}

template <class T, bool kWideCells>
int32_t evaluate(EvalBlock<T>& block, int64_t function) {
    if (!block.located)
        for (int64_t i = 0; i < block.n; ++i) {
            const int64_t point = point_of(block, block.site[i], cell_at(block, kWideCells, i));
            if (point == kNoPoint) return DfStatusBadSite;
            block.index[i] = point;
        }
    block.located = true;
    if (block.orders->nder != 1) return DfStatusBadDerivCount;
    if (!block.orders->requested(0)) return DfStatusBadDerivOrder;
    gather_values(block, function);
    return DfStatusOk;
}

}  // namespace
}  // namespace nax::fit

NAX_DF_EVAL_FAMILY(LookUp)
