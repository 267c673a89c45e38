// The basic entry: checks in the order of the statuses, then a run over data or a conversion of sums.
#include <bit>

#include "nax/statistics_basic.h"
#include "stats/basic/run.h"

namespace nax::stats::basic {
namespace {

constexpr uint64_t kDataMethods = NAX_SS_METHOD_FAST | NAX_SS_METHOD_ONE_PASS | NAX_SS_METHOD_USER_MEAN;
constexpr uint64_t kConversions = NAX_SS_METHOD_FROM_CROSS_PRODUCT | NAX_SS_METHOD_FROM_SUMS;

bool decode_method(uint64_t word, Method& method) {
    if ((word & ~(kDataMethods | kConversions)) != 0) return false;
    switch (word & kDataMethods) {
        case NAX_SS_METHOD_FAST:
            method = Method::kFast;
            return true;
        case NAX_SS_METHOD_ONE_PASS:
            method = Method::kOnePass;
            return true;
        case NAX_SS_METHOD_USER_MEAN:
            method = Method::kUserMean;
            return true;
        default:
            method = Method::kConversion;
            return (word & kDataMethods) == 0 && (word & kConversions) != 0;
    }
}

int32_t check_data(const Task& task) {
    if (integer_or(task, task.observation_count, 0) < 1) return SsStatusBadObservationCount;
    if (task.observations == nullptr) return SsStatusNoObservations;
    if (task.observation_storage == nullptr) return SsStatusNoStorage;
    return is_storage(integer(task, task.observation_storage)) ? SsStatusOk : SsStatusBadStorage;
}

// Sums of weights must come from somewhere: weights themselves aren't read in a conversion.
int32_t check_conversion(const Task& task) {
    if (task.accumulated_weights != nullptr) return SsStatusOk;
    return task.observation_count == nullptr || task.weights != nullptr ? SsStatusNoAccumulatedWeights : SsStatusOk;
}

int32_t check_storages(const Task& task, Results results) {
    if ((results & kCovariance) != 0 && task.covariance_storage == nullptr) return SsStatusNoStorage;
    if ((results & kCorrelation) != 0 && task.correlation_storage == nullptr) return SsStatusNoStorage;
    if ((results & kCrossProduct) != 0 && task.cross_product_storage == nullptr) return SsStatusNoStorage;
    return SsStatusOk;
}

template <class T>
int32_t compute(Task* record, uint64_t estimates, uint64_t word, const Threaders* threaders) {
    if (record == nullptr) return SsStatusNullTask;
    Task& task = *record;
    const int64_t p = integer_or(task, task.dimension, 0);
    if (p < 1) return SsStatusBadDimension;
    Method method;
    if (!decode_method(word, method)) return SsStatusBadMethod;
    const Results results = closure(estimates, method);
    if (const int32_t status = check_arrays(task, results)) return status;
    const bool on_data = method != Method::kConversion;
    if (const int32_t status = on_data ? check_data(task) : check_conversion(task)) return status;
    if (const int32_t status = check_storages(task, results)) return status;

    const auto storage = [&](const void* code) { return decode_matrix_storage(integer_or(task, code, 0)); };
    const Job<T> job{task,
                     results,
                     method,
                     blocks<T>(p),
                     integer_or(task, task.observation_count, 0),
                     on_data && !is_rows(integer(task, task.observation_storage), p),
                     variable_mask(task),
                     storage(task.covariance_storage),
                     storage(task.correlation_storage),
                     storage(task.cross_product_storage)};
    if (on_data) return run(job, threaders);
    const T* const pair = reals<T>(task.accumulated_weights);
    const T count = static_cast<T>(job.n);
    return convert(job, pair != nullptr ? pair[0] : count, pair != nullptr ? pair[1] : count);
}

}  // namespace
}  // namespace nax::stats::basic

extern "C" int32_t _stodSSBasic(nax_ss_task* task, uint64_t estimates, uint64_t method,
                                const nax_threaders* threaders) {
    return nax::stats::basic::compute<double>(task, estimates, method, threaders);
}
extern "C" int32_t _stosSSBasic(nax_ss_task* task, uint64_t estimates, uint64_t method,
                                const nax_threaders* threaders) {
    return nax::stats::basic::compute<float>(task, estimates, method, threaders);
}
