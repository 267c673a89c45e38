// One run of the basic entry over data: what is wanted, the threads' accumulators, and the way from and to the caller's
// arrays.
#pragma once

#include "service/block.h"
#include "stats/basic/kernels.h"
#include "stats/basic/request.h"
#include "stats/matrix_storage.h"

namespace nax::stats::basic {

template <class T>
struct Job {
    Task& task;
    Results results;  // the closure
    Method method;
    Blocks blocks;
    int64_t n;
    bool columns;
    VariableMask mask;
    MatrixStorage covariance, correlation, cross_product;  // storages

    bool wants(Results any) const { return (results & any) != 0; }
    // The caller's array of a result, null unless the closure has it.
    T* array(ResultBit bit, void* field) const { return (results >> bit & 1) != 0 ? reals<T>(field) : nullptr; }
};
// array(job, mean) and the like, by the names of the list.
#define NAX_SS_RESULT(Name, field, estimate, one_pass, fast, conversion) \
    template <class T>                                                   \
    T* field##_of(const Job<T>& job) {                                   \
        return job.array(k##Name##Bit, job.task.field);                  \
    }
#include "stats/basic/results.def"
#undef NAX_SS_RESULT

// 1/(W - W2/W), the factor of an unbiased second moment; 1 without weight.
template <class T>
T unbiased_factor(T weight, T weight2) {
    return weight > 0 ? 1 / (weight - weight2 / weight) : T(1);
}

// Earlier results back into the accumulators of the first thread, whose weights are set and positive.
template <class T>
void restore(const Job<T>& job, Accumulators<T>& sums);

// Adds accumulators to those of an earlier thread.
template <class T>
void merge(const Job<T>& job, Order order, Accumulators<T>& into, const Accumulators<T>& from);

// Accumulators into the caller's arrays, for selected variables.
template <class T>
void finish(const Job<T>& job, Accumulators<T>& sums);

// The moments and matrices that sums and cross-products give.
template <class T>
int32_t convert(const Job<T>& job, T weight, T weight2);

// Kurtosis, skewness and variation of variable j from its moments.
template <class T>
void finish_derived(const Job<T>& job, int64_t j, T mean, T c2, T c3, T c4);

// Covariance, correlation and cross-products from cross-products whose element (i, j), j >= i, is cross(i, j).
template <class T, class Cross>
void finish_matrices(const Job<T>& job, T factor, Cross cross);

}  // namespace nax::stats::basic
