// Step function continuous from the left: the value of the cell's right point, and a breakpoint keeps its own.
#include "fit/eval/step.h"

namespace nax::fit {
namespace {

template <class T>
struct LeftSide {
    const T* x;
    T step;
    bool uniform;
    T point(int64_t p) const { return uniform ? fused(static_cast<T>(p), step, x[0]) : x[p]; }
    int64_t first(int64_t p) const { return p; }
    int64_t second(int64_t p) const { return p + 1; }
};

template <class T, bool kWideCells>
int32_t evaluate(EvalBlock<T>& block, int64_t function) {
    const LeftSide<T> side{partition<T>(*block.task), block.step, has_uniform_grid(*block.task)};
    return evaluate_step(block, function, kWideCells, side);
}

}  // namespace
}  // namespace nax::fit

NAX_DF_EVAL_FAMILY(StepLeft)
