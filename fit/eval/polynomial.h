// Polynomial pieces of a known order: values and derivatives in the local coordinate. Included by *_simd.cpp files only.
#pragma once

#include "fit/eval/evaluator.h"
#include "fit/simd/rows.h"

namespace nax::fit::NAX_FIT_SIMD {

// Derivative kD of c0 + t (c1 + t (c2 + ...)), by nested fused multiply-add of the differentiated coefficients.
template <class P, int kOrder, int kD>
[[gnu::always_inline]] static inline typename P::F derivative(const typename P::F* c, typename P::F t) {
    if constexpr (kD >= kOrder) {
        return P::set(0);
    } else {
        using T = typename P::Element;
        const auto scaled = [&](int m) {
            T factor = 1;
            for (int k = 0; k < kD; ++k) factor *= static_cast<T>(m - k);
            return kD == 0 || factor == T(1) ? c[m] : P::mul(P::set(factor), c[m]);
        };
        auto sum = scaled(kOrder - 1);
        for (int m = kOrder - 2; m >= kD; --m) sum = P::fma(sum, t, scaled(m));
        return sum;
    }
}

// Where the requested ones of the orders 0 to 3 go; null for an order that isn't requested.
template <class T>
struct Planes {
    T* order[4] = {};
    Planes(const EvalBlock<T>& block, int64_t filled) {
        int64_t slot = 0;
        for (int64_t k = 0; k < 4 && slot < filled; ++k)
            if (block.orders->requested(k)) order[k] = block.plane + slot++ * block.plane_stride;
    }
    bool only_value() const { return order[0] != nullptr && !order[1] && !order[2] && !order[3]; }
};

template <class P, int kOrder, class T>
[[gnu::always_inline]] static inline void evaluate_at(const EvalBlock<T>& block, const T* coeff, const Planes<T>& planes, int64_t i) {
    typename P::F c[kOrder];
    Rows<P, kOrder>::load(coeff, block.index + i, c);
    const auto t = P::load(block.local + i);
    if (planes.order[0]) P::store(planes.order[0] + i, derivative<P, kOrder, 0>(c, t));
    if (planes.order[1]) P::store(planes.order[1] + i, derivative<P, kOrder, 1>(c, t));
    if (planes.order[2]) P::store(planes.order[2] + i, derivative<P, kOrder, 2>(c, t));
    if (planes.order[3]) P::store(planes.order[3] + i, derivative<P, kOrder, 3>(c, t));
}

// The value alone is the common case and gets a loop without tests.
template <class P, int kOrder, class T>
[[gnu::always_inline]] static inline void value_at(const EvalBlock<T>& block, const T* coeff, T* value, int64_t i) {
    typename P::F c[kOrder];
    Rows<P, kOrder>::load(coeff, block.index + i, c);
    P::store(value + i, derivative<P, kOrder, 0>(c, P::load(block.local + i)));
}

template <int kOrder, class T>
static inline int32_t evaluate_polynomials(EvalBlock<T>& block, int64_t function) {
    using P = Pack<T>;
    const T* const coeff = coefficients<T>(*block.task, function);
    const Planes<T> planes(block, zero_missing_orders(block, kOrder));
    // Offsets of packed cells are 32 bits wide at least in one of the two precisions.
    const bool packed = (block.task->nx + 1) * kOrder < INT32_MAX;
    int64_t i = 0;
    if (packed && planes.only_value())
        for (; i + P::kLanes <= block.n; i += P::kLanes) value_at<P, kOrder>(block, coeff, planes.order[0], i);
    else if (packed)
        for (; i + P::kLanes <= block.n; i += P::kLanes) evaluate_at<P, kOrder>(block, coeff, planes, i);
    for (; i < block.n; ++i) evaluate_at<Lane<T>, kOrder>(block, coeff, planes, i);
    return DfStatusOk;
}

}  // namespace nax::fit::NAX_FIT_SIMD
