// Polynomial pieces of a known order: values and derivatives in the local coordinate. Included by *_simd.cpp files
// only.
#pragma once

#include "fit/eval/evaluator.h"
#include "fit/packs.h"

namespace nax::fit {
inline namespace NAX_ISA {

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

// The rows of the sites from i on, and the one row of sites that share a cell, as sorted sites in long runs do.
template <class P, int kOrder>
struct OwnRows {
    const typename P::Element* coeff;
    const int64_t* index;
    [[gnu::always_inline]] const typename P::F* get(int64_t i, typename P::F* scratch) const {
        Rows<P, kOrder>::load(coeff, index + i, scratch);
        return scratch;
    }
};
// The rows of ascending sites: one for a vector whose first and last site share a cell.
template <class P, int kOrder>
struct AscendingRows {
    const typename P::Element* coeff;
    const int64_t* index;
    [[gnu::always_inline]] const typename P::F* get(int64_t i, typename P::F* scratch) const {
        const int64_t p = index[i];
        if (p == index[i + P::kLanes - 1])
            for (int m = 0; m < kOrder; ++m) scratch[m] = P::set(coeff[p * kOrder + m]);
        else
            Rows<P, kOrder>::load(coeff, index + i, scratch);
        return scratch;
    }
};
template <class P, int kOrder>
struct SharedRow {
    typename P::F row[kOrder];
    SharedRow(const typename P::Element* coeff, const int64_t* index) {
        for (int m = 0; m < kOrder; ++m) row[m] = P::set(coeff[*index * kOrder + m]);
    }
    [[gnu::always_inline]] const typename P::F* get(int64_t, typename P::F*) const { return row; }
};

// Evaluates full vectors from site i on and returns the site behind them. The value alone is the common case and gets a
// loop without tests.
template <class P, int kOrder, class RowSource, class T>
[[gnu::always_inline]] static inline int64_t evaluate_from(int64_t i, int64_t n, const RowSource& rows, const T* local,
                                                           const Planes<T>& planes) {
    typename P::F scratch[kOrder];
    T* const value = planes.order[0];
    if (planes.only_value()) {
        for (; i + P::kLanes <= n; i += P::kLanes) {
            const auto* const c = rows.get(i, scratch);
            P::store(value + i, derivative<P, kOrder, 0>(c, P::load(local + i)));
        }
        return i;
    }
    T *const slope = planes.order[1], *const second = planes.order[2], *const third = planes.order[3];
    for (; i + P::kLanes <= n; i += P::kLanes) {
        const auto* const c = rows.get(i, scratch);
        const auto t = P::load(local + i);
        if (value) P::store(value + i, derivative<P, kOrder, 0>(c, t));
        if (slope) P::store(slope + i, derivative<P, kOrder, 1>(c, t));
        if (second) P::store(second + i, derivative<P, kOrder, 2>(c, t));
        if (third) P::store(third + i, derivative<P, kOrder, 3>(c, t));
    }
    return i;
}

template <int kOrder, class T>
static inline int32_t evaluate_polynomials(EvalBlock<T>& block, int64_t function) {
    using P = Pack<T>;
    const T* const coeff = coefficients<T>(*block.task, function);
    const Planes<T> planes(block, zero_missing_orders(block, kOrder));
    // Offsets of packed cells are 32 bits wide at least in one of the two precisions.
    const bool packed = (block.task->nx + 1) * kOrder < INT32_MAX;
    int64_t i = 0;
    if (packed && block.one_cell)
        i = evaluate_from<P, kOrder>(i, block.n, SharedRow<P, kOrder>(coeff, block.index), block.local, planes);
    else if (packed && block.try_one_cell)
        i = evaluate_from<P, kOrder>(i, block.n, AscendingRows<P, kOrder>{coeff, block.index}, block.local, planes);
    else if (packed)
        i = evaluate_from<P, kOrder>(i, block.n, OwnRows<P, kOrder>{coeff, block.index}, block.local, planes);
    evaluate_from<Lane<T>, kOrder>(i, block.n, OwnRows<Lane<T>, kOrder>{coeff, block.index}, block.local, planes);
    return DfStatusOk;
}

}  // namespace NAX_ISA
}  // namespace nax::fit
