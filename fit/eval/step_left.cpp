// Step function continuous from the left: the value of the cell's right point, and a breakpoint keeps its own.
#include "fit/eval/data_points.h"

namespace nax::fit {
namespace {

template <class T, bool kWideCells>
int32_t evaluate(EvalBlock<T>& block, int64_t function) {
    const int64_t nx = block.task->nx;
    if (!block.located)
        for (int64_t i = 0; i < block.n; ++i) {
            const int64_t p = polynomial_index(cell_at(block, kWideCells, i), nx);
            block.index[i] = block.site[i] == breakpoint(block, p) ? p : p + 1;
        }
    block.located = true;
    gather_values(block, function);
    return DfStatusOk;
}

}  // namespace
}  // namespace nax::fit

NAX_DF_EVAL_FAMILY(StepLeft)
