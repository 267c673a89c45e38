// What an evaluation works out before the first site: the evaluator and the derivative orders.
#include "fit/eval/evaluator.h"

namespace nax::fit {

int32_t evaluation_index(int64_t s_order, int64_t s_type, bool all_callbacks) {
    if (s_order == 2) return kEvalLinear;
    if (s_order == 3 && s_type == kDefaultType) return kEvalQuadratic;
    if (s_order == 3 && s_type == kSubbotin) return kEvalQuadSubb;
    if (s_order == 4 && s_type != kSubbotin && is_constructed_type(s_type)) return kEvalCubic;
    if (s_order > 4) return kEvalArbitr;
    if (s_order != 0) return DfStatusBadType;
    switch (s_type) {
        case kStepLeft:
            return kEvalStepLeft;
        case kStepRight:
            return kEvalStepRight;
        case kLookUp:
            return kEvalLookUp;
        default:
            return all_callbacks ? static_cast<int32_t>(kEvalArbitr) : static_cast<int32_t>(DfStatusBadType);
    }
}

namespace {

constexpr int64_t saturating_add(int64_t a, int64_t b) {
    int64_t sum = 0;
    if (!__builtin_add_overflow(a, b, &sum)) return sum;
    return a < 0 ? INT64_MIN : INT64_MAX;
}

}  // namespace

Orders read_orders(const void* dorder, int64_t ndorder, bool wide) {
    Orders orders{dorder, dorder == nullptr ? 0 : ndorder, wide, 0, false};
    // No flag but 0 and 1 has a meaning; whatever stands there, the sum doesn't wrap.
    for (int64_t k = 0; k < orders.count; ++k)
        orders.nder = saturating_add(
            orders.nder, wide ? static_cast<const int64_t*>(dorder)[k] : static_cast<const int32_t*>(dorder)[k]);
    if (orders.nder <= 0) {
        orders.nder = 1;
        orders.only_value = true;
    }
    return orders;
}

template <class T>
int64_t zero_missing_orders(EvalBlock<T>& block, int64_t limit) {
    const Orders& orders = *block.orders;
    int64_t filled = 0;
    const int64_t flags = orders.only_value ? 1 : orders.count;
    for (int64_t k = 0; k < limit && k < flags && filled < orders.nder; ++k) filled += orders.requested(k) ? 1 : 0;
    for (int64_t slot = filled; slot < orders.nder; ++slot)
        for (int64_t i = 0; i < block.n; ++i) block.plane[slot * block.plane_stride + i] = T(0);
    return filled;
}

template int64_t zero_missing_orders(EvalBlock<double>&, int64_t);
template int64_t zero_missing_orders(EvalBlock<float>&, int64_t);

}  // namespace nax::fit
