// Linear spline: c0 + c1 t and c1.
#include "fit/eval/polynomial.h"

namespace nax::fit {
namespace {

template <class T, bool kWideCells>
int32_t evaluate(EvalBlock<T>& block, int64_t function) {
    locate(block, kWideCells);
    return evaluate_polynomials<2>(block, function);
}

}  // namespace
}  // namespace nax::fit

NAX_DF_EVAL_FAMILY(Linear)
