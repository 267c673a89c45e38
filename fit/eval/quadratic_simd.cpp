// Standard quadratic spline: c0 + t (c1 + t c2) and its derivatives.
#include "fit/eval/polynomial.h"

namespace nax::fit {
namespace {

template <class T, bool kWideCells>
int32_t evaluate(EvalBlock<T>& block, int64_t function) {
    locate(block, kWideCells);
    return evaluate_polynomials<3>(block, function);
}

}  // namespace
}  // namespace nax::fit

NAX_DF_EVAL_FAMILY(Quadratic)
