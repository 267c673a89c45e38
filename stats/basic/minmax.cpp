// Extremes: the caller's arrays are seeds and results.
#include "nax/statistics_basic.h"
#include "service/block.h"
#include "stats/basic/extremes.h"
#include "stats/task.h"

namespace nax::stats::basic {
namespace {

int32_t check(const Task& task, uint64_t estimates, uint64_t method) {
    if (task.observation_storage == nullptr) return SsStatusNoStorage;
    if (!is_storage(integer(task, task.observation_storage))) return SsStatusBadStorage;
    if ((estimates & NAX_SS_ESTIMATE_MINIMUM) != 0 && task.minimum == nullptr) return SsStatusNoMinimum;
    if ((estimates & NAX_SS_ESTIMATE_MAXIMUM) != 0 && task.maximum == nullptr) return SsStatusNoMaximum;
    if (method != NAX_SS_METHOD_FAST && method != NAX_SS_METHOD_ONE_PASS) return SsStatusBadMethod;
    if (integer_or(task, task.dimension, 0) < 1) return SsStatusBadDimension;
    if (integer_or(task, task.observation_count, 0) < 1) return SsStatusBadObservationCount;
    return task.observations == nullptr ? SsStatusNoObservations : SsStatusOk;
}

template <class T>
int32_t compute(Task* record, uint64_t estimates, uint64_t method) {
    if (record == nullptr) return SsStatusNullTask;
    Task& task = *record;
    if (const int32_t status = check(task, estimates, method)) return status;
    const int64_t p = integer(task, task.dimension), n = integer(task, task.observation_count);
    const Blocks blocks = basic::blocks<T>(p);
    // Results in blocks of lanes: one kernel writes whole blocks, and the caller's own places only where selected.
    const auto padded = static_cast<std::size_t>(blocks.padded());
    constexpr std::size_t kLocal = 64;
    alignas(64) T local[2 * kLocal];
    service::Block<T> block;
    if (padded > kLocal && !block.allocate(2 * padded)) return SsStatusMemory;
    T* const work = block ? block.get() : local;
    struct {
        T* results;
        T* work;
    } const wanted[2] = {
        {(estimates & NAX_SS_ESTIMATE_MINIMUM) != 0 ? reals<T>(task.minimum) : nullptr, work},
        {(estimates & NAX_SS_ESTIMATE_MAXIMUM) != 0 ? reals<T>(task.maximum) : nullptr, work + padded}};
    for (const auto& extreme : wanted)
        for (int64_t b = 0; extreme.results != nullptr && b < blocks.count(); ++b)
            for (int64_t l = 0; l < blocks.lanes; ++l) {
                const int64_t j = blocks.base(b) + l;
                extreme.work[b * blocks.lanes + l] = j < p ? extreme.results[j] : T(0);
            }
    const bool columns = !is_rows(integer(task, task.observation_storage), p);
    extremes(Slice<T>{reals<const T>(task.observations), nullptr, n, 0, n, p}, columns,
             wanted[0].results != nullptr ? wanted[0].work : nullptr,
             wanted[1].results != nullptr ? wanted[1].work : nullptr);
    const VariableMask mask = variable_mask(task);
    for (const auto& extreme : wanted)
        for (int64_t j = 0; extreme.results != nullptr && j < p; ++j)
            if (mask[j]) extreme.results[j] = extreme.work[blocks.slot(j)];
    return SsStatusOk;
}

}  // namespace
}  // namespace nax::stats::basic

extern "C" int32_t _stodSSMinmax(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders*) {
    return nax::stats::basic::compute<double>(task, estimates, method);
}
extern "C" int32_t _stosSSMinmax(nax_ss_task* task, uint64_t estimates, uint64_t method, const nax_threaders*) {
    return nax::stats::basic::compute<float>(task, estimates, method);
}
