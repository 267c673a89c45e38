// Quantiles and order statistics, variable by variable. With n values x(0) <= ... <= x(n-1) the quantile of order q is
//
//     x(k) + f (x(k+1) - x(k)),   k = trunc((n-1) q),   f = (n-1) q - k
//
// in two forms that differ in the last bit: one for values that have been sorted, as order statistics are, and one for
// those that have only been selected.
#include "stats/order/quantiles.h"

#include "nax/statistics_order.h"
#include "stats/order/variables.h"

namespace nax::stats {
namespace {

template <class T>
struct QuantileJob {
    const Task& task;
    int64_t p, n, m;
    bool rows, with_quantiles, with_order_statistics, rows_out;
    bool with_sort;  // selecting would take longer
    SelectedVariables selected;
    QuantileRanks<T> ranks;
    service::SmallBlock<T, kShortScratch> scratch;
    int64_t scratch_size;  // of a thread: work for the sort or the selection, a copy of a strided variable, values

    void run(int64_t i, int thread) {
        T* const work = scratch.get() + thread * scratch_size;
        const Variable<T> x = variable(reals<T>(task.observations), rows, p, n, selected[i]);
        T* const quantiles = reals<T>(task.quantiles) + i * m;
        if (with_order_statistics)
            sort(x, variable(reals<T>(task.order_statistics), rows_out, p, n, i), work, quantiles);
        else
            select(x, work, quantiles);
    }

    void sort(const Variable<T>& x, const Variable<T>& target, T* work, T* quantiles) {
        T* const sorted = target.is_contiguous() ? target.base : work + n;
        x.copy_to(sorted, n);
        sort_reals(sorted, work, n);
        if (with_quantiles)
            for (int64_t r = 0; r < m; ++r) {
                const QuantilePlace<T> place = quantile_place(reals<T>(task.quantile_orders)[r], n);
                quantiles[r] = quantile_of_sorted(sorted[place.k], sorted[place.upper], place.f);
            }
        if (!target.is_contiguous())
            for (int64_t k = 0; k < n; ++k) target.base[k * target.stride] = sorted[k];
    }

    void select(const Variable<T>& x, T* work, T* quantiles) {
        const T* values = x.base;
        if (!x.is_contiguous()) {
            x.copy_to(work + n, n);
            values = work + n;
        }
        if (with_sort) {
            T* const sorted = work + n;
            if (x.is_contiguous()) x.copy_to(sorted, n);
            sort_reals(sorted, work, n);
            for (int64_t r = 0; r < m; ++r) {
                const QuantilePlace<T> place = quantile_place(reals<T>(task.quantile_orders)[r], n);
                quantiles[r] = quantile_of_selected(sorted[place.k], sorted[place.upper], place.f);
            }
            return;
        }
        T* const wanted = work + 2 * n;
        select_reals(values, n, work, ranks.ranks(), ranks.count(), wanted);
        ranks.quantiles_of_selected(wanted, quantiles);
    }
};

template <class T>
int32_t check_orders(const Task& task) {
    if (task.quantiles == nullptr) return SsStatusNoQuantiles;
    if (task.quantile_orders == nullptr) return SsStatusNoQuantileOrders;
    const int64_t m = integer_or(task, task.quantile_order_count, -1);
    if (m < 0) return SsStatusBadQuantileOrders;
    for (int64_t r = 0; r < m; ++r) {
        const T q = reals<T>(task.quantile_orders)[r];
        if (!(q >= 0 && q <= 1)) return SsStatusBadQuantileOrders;
    }
    return SsStatusOk;
}

template <class T>
int32_t check(const Task& task, uint64_t estimates, uint64_t method) {
    if (task.observation_storage == nullptr) return SsStatusNoStorage;
    if (!is_storage(integer(task, task.observation_storage))) return SsStatusBadStorage;
    if ((estimates & NAX_SS_ESTIMATE_QUANTILES) != 0)
        if (const int32_t status = check_orders<T>(task); status != SsStatusOk) return status;
    if ((estimates & NAX_SS_ESTIMATE_ORDER_STATISTICS) != 0) {
        if (task.order_statistics == nullptr) return SsStatusNoOrderStatistics;
        if (task.order_statistics_storage == nullptr) return SsStatusNoStorage;
        if (!is_storage(integer(task, task.order_statistics_storage))) return SsStatusBadStorage;
    }
    if ((method & NAX_SS_METHOD_FAST) == 0) return SsStatusBadMethod;
    if (task.dimension == nullptr) return SsStatusBadDimension;
    if (task.observation_count == nullptr) return SsStatusBadObservationCount;
    if (task.observations == nullptr) return SsStatusNoObservations;
    return SsStatusOk;
}

template <class T>
int32_t quantiles(const Task& task, uint64_t estimates, uint64_t method, const Threaders* threaders) {
    if (const int32_t status = check<T>(task, estimates, method); status != SsStatusOk) return status;
    const int64_t p = integer(task, task.dimension), n = integer(task, task.observation_count);
    const bool with_quantiles = (estimates & NAX_SS_ESTIMATE_QUANTILES) != 0;
    const bool with_order_statistics = (estimates & NAX_SS_ESTIMATE_ORDER_STATISTICS) != 0;
    const int64_t m = with_quantiles ? integer(task, task.quantile_order_count) : 0;
    if (p < 1 || n < 1 || (m == 0 && !with_order_statistics)) return SsStatusOk;
    const bool rows = is_rows(integer(task, task.observation_storage), p);
    const bool rows_out = !with_order_statistics || is_rows(integer(task, task.order_statistics_storage), p);
    const bool with_sort = n <= 64 || m > n / 16;
    QuantileJob<T> job{task, p, n, m, rows, with_quantiles, with_order_statistics, rows_out, with_sort, {}, {}, {}, 0};
    if (!job.selected.find(task, p)) return SsStatusMemory;
    if (!with_order_statistics && !with_sort && !job.ranks.plan(reals<T>(task.quantile_orders), m, n))
        return SsStatusMemory;
    job.scratch_size = with_order_statistics ? (rows_out ? n : 2 * n) : 2 * n + job.ranks.count();
    const int64_t limit = std::min<int64_t>(thread_limit(threaders), p);
    const int64_t threads = threads_within_memory(limit, n * static_cast<int64_t>(sizeof(T)));
    if (!job.scratch.allocate(static_cast<std::size_t>(threads * job.scratch_size))) return SsStatusMemory;
    for_each_variable(job.selected.count(), threads, threaders, job);
    return SsStatusOk;
}

}  // namespace
}  // namespace nax::stats

NAX_SS_ENTRIES(SSQuantiles, quantiles)
