// Median and mean absolute deviation, without a scale factor:
//
//     median over i of |x_i - median(x)|        mean over i of |x_i - mean|
#include <algorithm>

#include "nax/statistics_order.h"
#include "stats/order/quantiles.h"
#include "stats/order/ranking.h"
#include "stats/order/sum.h"
#include "stats/order/variables.h"

namespace nax::stats {
namespace {

double absolute(double x) { return __builtin_fabs(x); }
float absolute(float x) { return __builtin_fabsf(x); }

template <class T>
T mean_of(const T* x, int64_t n) {
    return sum_of(x, n) / static_cast<T>(n);
}

template <class T>
struct DeviationJob {
    const Task& task;
    int64_t p, n;
    bool rows, of_median, mean_is_given;
    SelectedVariables selected;
    QuantileRanks<T> half;  // ranks of the median
    service::SmallBlock<T, kShortScratch> scratch;

    int64_t scratch_size() const { return of_median ? 2 * n + 2 : n; }

    void run(int64_t i, int thread) {
        const int64_t j = selected[i];
        T* const own = scratch.get() + thread * scratch_size();
        const Variable<T> x = variable(reals<T>(task.observations), rows, p, n, j);
        if (!x.is_contiguous()) x.copy_to(own, n);
        const T* const values = x.is_contiguous() ? x.base : own;
        if (of_median) {
            deviations(values, median(values, own), own);
            reals<T>(task.median_absolute_deviation)[j] = median(own, own);
        } else {
            deviations(values, mean_is_given ? reals<T>(task.mean)[j] : mean_of(values, n), own);
            reals<T>(task.mean_absolute_deviation)[j] = mean_of(own, n);
        }
    }
    T median(const T* values, T* own) const {
        T *const work = own + n, *const selection = work + n;
        select_reals(values, n, work, half.ranks(), half.count(), selection);
        T result;
        half.quantiles_of_selected(selection, &result);
        return result;
    }
    void deviations(const T* values, T centre, T* target) const {
        for (int64_t i = 0; i < n; ++i) target[i] = absolute(values[i] - centre);
    }
};

template <class T>
int32_t deviate(const Task& task, int64_t p, int64_t n, bool rows, bool of_median, bool mean_is_given,
                const Threaders* threaders) {
    static constexpr T kHalf = T(0.5);
    DeviationJob<T> job{task, p, n, rows, of_median, mean_is_given, {}, {}, {}};
    const int64_t threads = std::min<int64_t>(thread_limit(threaders), p);
    if (!job.selected.find(task, p) || (of_median && !job.half.plan(&kHalf, 1, n)) ||
        !job.scratch.allocate(static_cast<std::size_t>(threads * job.scratch_size())))
        return SsStatusMemory;
    for_each_variable(job.selected.count(), threads, threaders, job);
    return SsStatusOk;
}

template <class T>
int32_t deviations(const Task& task, uint64_t estimates, uint64_t method, const Threaders* threaders) {
    const int64_t p = integer_or(task, task.dimension, 0), n = integer_or(task, task.observation_count, 0);
    if (p < 1) return SsStatusBadDimension;
    if (n < 1) return SsStatusBadObservationCount;
    if (task.observation_storage == nullptr) return SsStatusNoStorage;
    const int64_t storage = integer(task, task.observation_storage);
    if (!is_exact_storage(storage)) return SsStatusBadStorage;
    if (task.observations == nullptr) return SsStatusNoObservations;
    const bool rows = is_rows(storage, p);
    // The mean's outcome, where it is asked for, stands for both: a failure of the median alone is then not seen.
    int32_t status = SsStatusOk;
    if ((estimates & NAX_SS_ESTIMATE_MEDIAN_ABSOLUTE_DEVIATION) != 0) {
        if (task.median_absolute_deviation == nullptr)
            status = SsStatusNoMedianAbsoluteDeviation;
        else if ((method & NAX_SS_METHOD_FAST) == 0)
            status = SsStatusBadMethod;
        else
            status = deviate<T>(task, p, n, rows, true, false, threaders);
    }
    if ((estimates & NAX_SS_ESTIMATE_MEAN_ABSOLUTE_DEVIATION) != 0) {
        const bool mean_is_given = (method & NAX_SS_METHOD_USER_MEAN) != 0;
        if (task.mean_absolute_deviation == nullptr) return SsStatusNoMeanAbsoluteDeviation;
        if (!mean_is_given && (method & NAX_SS_METHOD_FAST) == 0) return SsStatusBadMethod;
        if (mean_is_given && task.mean == nullptr) return SsStatusNoMean;
        status = deviate<T>(task, p, n, rows, false, mean_is_given, threaders);
    }
    return status;
}

}  // namespace
}  // namespace nax::stats

NAX_SS_ENTRIES(SSMAD, deviations)
