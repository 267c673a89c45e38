// Step function continuous from the right: the value of the cell's left point. Beyond the right end the last cell
// extends, on it stands the last point's value.
#include "fit/eval/data_points.h"

namespace nax::fit {
namespace {

template <class T, bool kWideCells>
int32_t evaluate(EvalBlock<T>& block, int64_t function) {
    const int64_t nx = block.task->nx;
    const T right = right_end<T>(*block.task);
    choose_points(block, kWideCells, [=](T site, int64_t p) { return site == right ? nx - 1 : p; });
    gather_values(block, function);
    return DfStatusOk;
}

}  // namespace
}  // namespace nax::fit

NAX_DF_EVAL_FAMILY(StepRight)
