// Step function continuous from the left: the value of the cell's right point, and a breakpoint keeps its own.
#include "fit/eval/data_points.h"

namespace nax::fit {
namespace {

template <class T, bool kWideCells>
int32_t evaluate(EvalBlock<T>& block, int64_t function) {
    const T* const x = partition<T>(*block.task);
    const T step = block.step;
    if (has_uniform_grid(*block.task))
        choose_points(block, kWideCells, [=](T site, int64_t p) {
            return site == fused(static_cast<T>(p), step, x[0]) ? p : p + 1;
        });
    else
        choose_points(block, kWideCells, [=](T site, int64_t p) { return site == x[p] ? p : p + 1; });
    gather_values(block, function);
    return DfStatusOk;
}

}  // namespace
}  // namespace nax::fit

NAX_DF_EVAL_FAMILY(StepLeft)
