// Step function continuous from the right: the value of the cell's left point. Beyond the right end the last cell
// extends, on it stands the last point's value.
#include "fit/eval/step.h"

namespace nax::fit {
namespace {

template <class T>
struct RightSide {
    T right;
    int64_t last;
    T point(int64_t) const { return right; }
    int64_t first(int64_t) const { return last; }
    int64_t second(int64_t p) const { return p; }
};

template <class T, bool kWideCells>
int32_t evaluate(EvalBlock<T>& block, int64_t function) {
    const RightSide<T> side{right_end<T>(*block.task), block.task->nx - 1};
    return evaluate_step(block, function, kWideCells, side);
}

}  // namespace
}  // namespace nax::fit

NAX_DF_EVAL_FAMILY(StepRight)
