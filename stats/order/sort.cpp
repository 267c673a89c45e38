// Every selected variable sorted, into another matrix or in place.
#include <algorithm>

#include "nax/statistics_order.h"
#include "stats/order/ranking.h"
#include "stats/order/variables.h"

namespace nax::stats {
namespace {

template <class T>
struct SortJob {
    const Task& task;
    int64_t p, n;
    bool rows, rows_out;
    SelectedVariables selected;
    service::SmallBlock<T, kShortScratch> scratch;
    int64_t scratch_size;

    void run(int64_t i, int thread) {
        T* const work = scratch.get() + thread * scratch_size;
        const Variable<T> x = variable(reals<T>(task.observations), rows, p, n, selected[i]);
        const Variable<T> target = variable(reals<T>(task.sorted), rows_out, p, n, i);
        T* const sorted = target.is_contiguous() ? target.base : work + n;
        if (sorted != x.base) x.copy_to(sorted, n);
        sort_reals(sorted, work, n);
        if (!target.is_contiguous())
            for (int64_t k = 0; k < n; ++k) target.base[k * target.stride] = sorted[k];
    }
};

int32_t check(const Task& task, uint64_t method) {
    if (task.sorted == nullptr) return SsStatusNoSorted;
    if (task.sorted_storage == nullptr || task.observation_storage == nullptr) return SsStatusNoStorage;
    const int64_t storage = integer(task, task.observation_storage), target = integer(task, task.sorted_storage);
    if (task.sorted == task.observations) {
        if (((storage ^ target) & kRows) != 0) return SsStatusNoStorage;
        if (task.variable_mask != nullptr) return SsStatusMaskInPlace;
    }
    if (!is_storage(storage) || !is_storage(target)) return SsStatusBadStorage;
    if ((method & NAX_SS_METHOD_RADIX) == 0) return SsStatusBadMethod;
    if (task.dimension == nullptr) return SsStatusBadDimension;
    if (task.observation_count == nullptr) return SsStatusBadObservationCount;
    if (task.observations == nullptr) return SsStatusNoObservations;
    return SsStatusOk;
}

template <class T>
int32_t sort_variables(const Task& task, uint64_t, uint64_t method, const Threaders* threaders) {
    if (const int32_t status = check(task, method); status != SsStatusOk) return status;
    const int64_t p = integer(task, task.dimension), n = integer(task, task.observation_count);
    if (p < 1 || n < 1) return SsStatusOk;
    const bool rows = is_rows(integer(task, task.observation_storage), p);
    const bool rows_out = is_rows(integer(task, task.sorted_storage), p);
    SortJob<T> job{task, p, n, rows, rows_out, {}, {}, rows_out ? n : 2 * n};
    if (!job.selected.find(task, p)) return SsStatusMemory;
    const int64_t limit = std::min<int64_t>(thread_limit(threaders), p);
    const int64_t bytes = job.scratch_size * static_cast<int64_t>(sizeof(T));
    // The limit stands before the quotient here: a gibibyte for every thread.
    const int64_t threads = std::min(std::max<int64_t>(thread_limit(threaders) * (int64_t{1} << 30) / bytes, 1), limit);
    if (!job.scratch.allocate(static_cast<std::size_t>(threads * job.scratch_size))) return SsStatusMemory;
    for_each_variable(job.selected.count(), threads, threaders, job);
    return SsStatusOk;
}

}  // namespace
}  // namespace nax::stats

NAX_SS_ENTRIES(SSSort, sort_variables)
