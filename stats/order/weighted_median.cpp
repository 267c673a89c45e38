// Weighted quantile of one order, by the running sum of the weights of the sorted values.
#include "nax/statistics_order.h"
#include "stats/order/ranking.h"
#include "stats/order/sum.h"
#include "stats/order/variables.h"

namespace nax::stats {
namespace {

template <class T>
T weighted_quantile(const T* x, const T* w, int64_t n, T q, T total) {
    const T target = total * q;
    T sum = 0;
    int64_t k = 0;
    for (; k < n; ++k) {
        sum += w[k];
        if (sum >= target) break;
    }
    const bool ended = k == n;  // the total was summed in another order, or is NaN
    if (ended) k = n - 1;
    const bool is_odd = (n & 1) != 0;
    if (!ended && sum > target) {
        const T before = sum - w[k];
        if (!(before > 0)) return x[k];
        int64_t m = k - 1;
        while (m > 0 && !(w[m] > 0)) --m;
        if (m < 0 || (is_odd && before == (total - w[k]) * q)) return x[k];
        return fused(x[k] - x[m], (target - before) / (sum - before), x[m]);
    }
    if (is_odd || k == n - 1) return x[k];
    int64_t next = k + 1;
    while (next < n - 1 && !(w[next] > 0)) ++next;
    return T(0.5) * (x[k] + x[next]);
}

template <class T>
int32_t weighted_median(const Task& task, uint64_t, uint64_t, const Threaders*) {
    if (task.dimension == nullptr) return SsStatusBadDimension;
    if (task.observation_count == nullptr) return SsStatusBadObservationCount;
    if (task.observations == nullptr) return SsStatusNoObservations;
    if (task.observation_storage == nullptr) return SsStatusNoStorage;
    if (task.weights == nullptr) return SsStatusNoWeights;
    if (task.quantile_orders == nullptr) return SsStatusNoQuantileOrders;
    if (task.quantiles == nullptr) return SsStatusNoQuantiles;
    const int64_t p = integer(task, task.dimension), n = integer(task, task.observation_count);
    if (p < 1 || n < 1) return SsStatusOk;
    service::SmallBlock<T, kShortScratch> scratch;
    if (!scratch.allocate(static_cast<std::size_t>(4 * n))) return SsStatusMemory;
    T *const values = scratch.get(), *const weights = values + n;
    const bool rows = is_rows(integer(task, task.observation_storage), p);
    const T total = sum_of(reals<T>(task.weights), n);
    const T q = reals<T>(task.quantile_orders)[0];
    for (int64_t j = 0; j < p; ++j) {
        variable(reals<T>(task.observations), rows, p, n, j).copy_to(values, n);
        for (int64_t i = 0; i < n; ++i) weights[i] = reals<T>(task.weights)[i];
        sort_with_payload(values, weights, weights + n, n);
        reals<T>(task.quantiles)[j] = weighted_quantile(values, weights, n, q, total);
    }
    return SsStatusOk;
}

}  // namespace
}  // namespace nax::stats

NAX_SS_ENTRIES(SSWMedian, weighted_median)
