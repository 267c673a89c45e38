// Editors of statistics tasks: by id, and one for each topic.
#include "stats/task.h"

namespace nax::stats {
namespace {

template <class T>
int32_t edit_reals(Task* task, int32_t id, T* value) {
    if (task == nullptr) return SsStatusNullTask;
    switch (id) {
#define NAX_SS_REALS(number, field, name, status, content) \
    case number:                                           \
        if (value == nullptr) return SsStatus##status;     \
        task->field = value;                               \
        return SsStatusOk;
#define NAX_SS_INTEGERS(number, field, name, status, content)
#define NAX_SS_PRIVATE(type, field)
#include "stats/parameters.def"
#undef NAX_SS_REALS
#undef NAX_SS_INTEGERS
        default:
            return SsStatusUnknownParameter;
    }
}

int32_t edit_integers(Task* task, int32_t id, const void* value) {
    if (task == nullptr) return SsStatusNullTask;
    switch (id) {
#define NAX_SS_INTEGERS(number, field, name, status, content) \
    case number:                                              \
        if (value == nullptr) return SsStatus##status;        \
        task->field = value;                                  \
        return SsStatusOk;
#define NAX_SS_REALS(number, field, name, status, content)
#include "stats/parameters.def"
#undef NAX_SS_REALS
#undef NAX_SS_INTEGERS
#undef NAX_SS_PRIVATE
        default:
            return SsStatusUnknownParameter;
    }
}

// A field and what a topic's editor stores in it; a null value leaves the field alone.
struct Reals {
    void* Task::*field;
    void* value;
};
struct IntegerField {
    const void* Task::*field;
    const void* value;
};

inline void store(Task& task, const Reals& edit) {
    if (edit.value != nullptr) task.*edit.field = edit.value;
}
inline void store(Task& task, const IntegerField& edit) {
    if (edit.value != nullptr) task.*edit.field = edit.value;
}

template <class... Edits>
int32_t store_all(Task* task, const Edits&... edits) {
    if (task == nullptr) return SsStatusNullTask;
    (store(*task, edits), ...);
    return SsStatusOk;
}

}  // namespace
}  // namespace nax::stats

using nax::stats::store_all;
using nax::stats::Task;

extern "C" int32_t __stodSSEditTask(Task* task, int32_t id, double* value) {
    return nax::stats::edit_reals(task, id, value);
}
extern "C" int32_t __stosSSEditTask(Task* task, int32_t id, float* value) {
    return nax::stats::edit_reals(task, id, value);
}
extern "C" int32_t __stoiSSEditTask(Task* task, int32_t id, const void* value) {
    return nax::stats::edit_integers(task, id, value);
}

// The topics' editors in both precisions: an argument list, and the fields in the order of the arguments.
#define R(name) \
    nax::stats::Reals { &Task::name, name }
#define I(name) \
    nax::stats::IntegerField { &Task::name, name }
#define NAX_SS_TOPIC(topic, arguments, ...)                                                                        \
    extern "C" int32_t __stodSSEdit##topic(Task* task, arguments(double)) { return store_all(task, __VA_ARGS__); } \
    extern "C" int32_t __stosSSEdit##topic(Task* task, arguments(float)) { return store_all(task, __VA_ARGS__); }

#define ARGUMENTS(T) \
    T *mean, T *raw_moment2, T *raw_moment3, T *raw_moment4, T *central_moment2, T *central_moment3, T *central_moment4
NAX_SS_TOPIC(Moments, ARGUMENTS, R(mean), R(raw_moment2), R(raw_moment3), R(raw_moment4), R(central_moment2),
             R(central_moment3), R(central_moment4))
#undef ARGUMENTS

#define ARGUMENTS(T) T *sum, T *raw_sum2, T *raw_sum3, T *raw_sum4, T *central_sum2, T *central_sum3, T *central_sum4
NAX_SS_TOPIC(Sums, ARGUMENTS, R(sum), R(raw_sum2), R(raw_sum3), R(raw_sum4), R(central_sum2), R(central_sum3),
             R(central_sum4))
#undef ARGUMENTS

#define ARGUMENTS(T) \
    T *mean, T *covariance, const void *covariance_storage, T *correlation, const void *correlation_storage
NAX_SS_TOPIC(CovCor, ARGUMENTS, R(mean), R(covariance), I(covariance_storage), R(correlation), I(correlation_storage))
#undef ARGUMENTS

#define ARGUMENTS(T) T *mean, T *sum, T *cross_product, const void *cross_product_storage
NAX_SS_TOPIC(CP, ARGUMENTS, R(mean), R(sum), R(cross_product), I(cross_product_storage))
#undef ARGUMENTS

#define ARGUMENTS(T)                                                                                    \
    const void *conditioning_indices, T *covariance, const void *covariance_storage, T *correlation,    \
        const void *correlation_storage, T *partial_covariance, const void *partial_covariance_storage, \
        T *partial_correlation, const void *partial_correlation_storage
NAX_SS_TOPIC(PartialCovCor, ARGUMENTS, I(conditioning_indices), R(covariance), I(covariance_storage), R(correlation),
             I(correlation_storage), R(partial_covariance), I(partial_covariance_storage), R(partial_correlation),
             I(partial_correlation_storage))
#undef ARGUMENTS

#define ARGUMENTS(T)                                                                         \
    const void *quantile_order_count, T *quantile_orders, T *quantiles, T *order_statistics, \
        const void *order_statistics_storage
NAX_SS_TOPIC(Quantiles, ARGUMENTS, I(quantile_order_count), R(quantile_orders), R(quantiles), R(order_statistics),
             I(order_statistics_storage))
#undef ARGUMENTS

#define ARGUMENTS(T)                                                                                       \
    const void *stream_order_count, T *stream_orders, T *stream_quantiles, const void *stream_param_count, \
        T *stream_params
NAX_SS_TOPIC(StreamQuantiles, ARGUMENTS, I(stream_order_count), R(stream_orders), R(stream_quantiles),
             I(stream_param_count), R(stream_params))
#undef ARGUMENTS

#define ARGUMENTS(T)                                                                                       \
    const void *group_indices, T *pooled_mean, T *pooled_covariance, const void *group_covariance_indices, \
        T *group_means, T *group_covariance
NAX_SS_TOPIC(PooledCovariance, ARGUMENTS, I(group_indices), R(pooled_mean), R(pooled_covariance),
             I(group_covariance_indices), R(group_means), R(group_covariance))
#undef ARGUMENTS

#define ARGUMENTS(T)                                                                                              \
    const void *missing_param_count, T *missing_params, const void *initial_estimate_count, T *initial_estimates, \
        const void *prior_count, T *prior, const void *simulated_count, T *simulated_values,                      \
        const void *estimate_count, T *estimates
NAX_SS_TOPIC(MissingVals, ARGUMENTS, I(missing_param_count), R(missing_params), I(initial_estimate_count),
             R(initial_estimates), I(prior_count), R(prior), I(simulated_count), R(simulated_values), I(estimate_count),
             R(estimates))
#undef ARGUMENTS

#define ARGUMENTS(T) const void *outlier_param_count, T *outlier_params, T *outlier_weights
NAX_SS_TOPIC(OutDetect, ARGUMENTS, I(outlier_param_count), R(outlier_params), R(outlier_weights))
#undef ARGUMENTS

#define ARGUMENTS(T)                                                                                               \
    const void *robust_covariance_storage, const void *robust_param_count, T *robust_params, T *robust_covariance, \
        T *robust_mean
NAX_SS_TOPIC(RCov, ARGUMENTS, I(robust_covariance_storage), I(robust_param_count), R(robust_params),
             R(robust_covariance), R(robust_mean))
#undef ARGUMENTS

#define ARGUMENTS(T)                                                              \
    T *correlation, const void *correlation_storage, T *parametrized_correlation, \
        const void *parametrized_correlation_storage
NAX_SS_TOPIC(MtxParametrz, ARGUMENTS, R(correlation), I(correlation_storage), R(parametrized_correlation),
             I(parametrized_correlation_storage))
#undef ARGUMENTS

#undef NAX_SS_TOPIC
#undef R
#undef I
