// Subbotin quadratic spline: parabolas around the data points, which meet at the knots of the sub-grid.
#include "fit/eval/polynomial.h"

namespace nax::fit {
namespace {

template <class T, bool kWideCells>
int32_t evaluate(EvalBlock<T>& block, int64_t function) {
    locate_subbotin(block, kWideCells);
    return evaluate_polynomials<3>(block, function);
}

}  // namespace
}  // namespace nax::fit

NAX_DF_EVAL_FAMILY(QuadSubb)
