// Tasks of the library's own, by which methods use other entries as tools.
#pragma once

#include "nax/statistics_basic.h"
#include "nax/statistics_order.h"
#include "stats/task.h"

namespace nax::stats {

// A task over n observations of p variables, with integers of its own.
template <class T>
class PrivateTask {
public:
    PrivateTask(int64_t p, int64_t n, int64_t storage, const T* x, const T* weights)
        : p_(p), n_(n), storage_(storage), task(private_task<T>()) {
        task.dimension = &p_;
        task.observation_count = &n_;
        task.observation_storage = &storage_;
        task.observations = const_cast<T*>(x);  // no entry used here writes to them
        task.weights = const_cast<T*>(weights);
    }
    PrivateTask(const PrivateTask&) = delete;
    PrivateTask& operator=(const PrivateTask&) = delete;

    // Mean and full covariance; `pair` receives the weights' sum and that of their squares.
    int32_t covariance(uint64_t method, T* mean, T* matrix, T* pair, const nax_threaders* threaders) {
        pair[0] = pair[1] = 0;
        task.accumulated_weights = pair;
        task.mean = mean;
        task.covariance = matrix;
        task.covariance_storage = &full_;
        const auto entry = [] {
            if constexpr (sizeof(T) == sizeof(double))
                return _stodSSBasic;
            else
                return _stosSSBasic;
        }();
        return entry(&task, NAX_SS_ESTIMATE_COVARIANCE, method, threaders);
    }

    // Median of each variable, weighted where the task has weights.
    int32_t medians(T* result, const nax_threaders* threaders) {
        T half = T(0.5);
        task.quantile_order_count = &one_;
        task.quantile_orders = &half;
        task.quantiles = result;
        const bool weighted = task.weights != nullptr;
        const auto entry = [weighted] {
            if constexpr (sizeof(T) == sizeof(double))
                return weighted ? _stodSSWMedian : _stodSSQuantiles;
            else
                return weighted ? _stosSSWMedian : _stosSSQuantiles;
        }();
        return entry(&task, NAX_SS_ESTIMATE_QUANTILES, NAX_SS_METHOD_FAST, threaders);
    }

private:
    int64_t p_, n_, storage_;
    int64_t full_ = NAX_SS_MATRIX_FULL;
    int64_t one_ = 1;

public:
    Task task;
};

}  // namespace nax::stats
