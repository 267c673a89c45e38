// Polynomials of any order with coefficients of the caller, differentiated term by term. Order 0 stands for a spline
// that callbacks compute: it has no terms.
#include "fit/eval/polynomial.h"

namespace nax::fit {
namespace {

// m (m - 1) ... (m - k + 1), the factor of power m in derivative k.
template <class T>
T falling_factorial(int64_t m, int64_t k) {
    T product = 1;
    for (int64_t f = m; f > m - k; --f) product *= static_cast<T>(f);
    return product;
}

template <class P, class T>
[[gnu::always_inline]] inline void derivative_at(const EvalBlock<T>& block, const T* coeff, int64_t k, T* plane,
                                                 int64_t i) {
    const int64_t order = block.task->s_order;
    const auto first = P::times(P::load_cells(block.index + i), order);
    const auto t = P::load(block.local + i);
    auto sum = P::set(0);
    for (int64_t m = order - 1; m >= k; --m) {
        auto c = P::gather(coeff + m, first);
        if (k > 0) c = P::mul(P::set(falling_factorial<T>(m, k)), c);
        sum = m == order - 1 ? c : P::fma(sum, t, c);
    }
    P::store(plane + i, sum);
}

template <class T, bool kWideCells>
int32_t evaluate(EvalBlock<T>& block, int64_t function) {
    using P = Pack<T>;
    locate(block, kWideCells);
    const T* const coeff = coefficients<T>(*block.task, function);
    const int64_t order = block.task->s_order;
    const int64_t filled = zero_missing_orders(block, order);
    const bool packed = block.task->nx < INT32_MAX / (order + 1);
    int64_t slot = 0;
    for (int64_t k = 0; k < order && slot < filled; ++k) {
        if (!block.orders->requested(k)) continue;
        T* const plane = block.plane + slot++ * block.plane_stride;
        int64_t i = 0;
        if (packed)
            for (; i + P::kLanes <= block.n; i += P::kLanes) derivative_at<P>(block, coeff, k, plane, i);
        for (; i < block.n; ++i) derivative_at<Lane<T>>(block, coeff, k, plane, i);
    }
    return DfStatusOk;
}

}  // namespace
}  // namespace nax::fit

NAX_DF_EVAL_FAMILY(Arbitr)
