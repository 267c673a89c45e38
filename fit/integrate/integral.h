// What one integration call carries, and the evaluators that serve its blocks.
#pragma once

#include <cstdint>

#include "fit/integrate/running_sum.h"
#include "fit/search/search.h"
#include "fit/task.h"
#include "service/threaders.h"

namespace nax::fit {

enum IntegralEvaluator : int32_t {
    kIntegrateLinear,
    kIntegrateQuadratic,
    kIntegrateCubic,
    kIntegrateSubbotin,
    kIntegrateArbitrary,
    kIntegrateStepLeft,
    kIntegrateStepRight,
    kIntegralEvaluators
};
constexpr bool reads_functions(int32_t evaluator) { return evaluator >= kIntegrateStepLeft; }

inline constexpr int64_t kBlockLimits = 128;

template <class T>
using IntegralCallback = int32_t (*)(const int64_t* n, const int64_t* lcell, const T* llim, const int64_t* rcell,
                                     const T* rlim, T* r, void* parameters, void* reserved);

// Limits of one side.
template <class T>
struct Limits {
    const T* values;  // the two ends when uniform
    T step;
    bool uniform;
    BlockSearch<T> search;

    // Limits first .. first + count - 1, in place or in `buffer`.
    const T* block(int64_t first, int64_t count, T* buffer) const {
        if (!uniform) return values + first;
        expand_uniform_sites(values[0], step, first, count, buffer);
        return buffer;
    }
};

enum Part { kLeftPart, kRightPart, kInteriorPart, kParts };

template <class T>
struct Integration {
    const Task* task;  // first, so that a thread body can read the precision
    int32_t evaluator;
    int64_t nlim, ny;
    Limits<T> left, right;
    T* r;
    int64_t limit_stride, function_stride;  // of r
    IntegralCallback<T> callbacks[kParts];
    void* parameters[kParts];
    const RunningSum* sums;  // (pieces + 1) for each function, or null: cells are added one by one
    const double* sum_limits;  // by function: smallest difference of running sums to trust
    T* work;                   // callbacks only: 2 * ny * kBlockLimits elements for each thread
    int64_t stage_first, stage_last;  // limits of the running stage
    int64_t blocks_per_item;
    int32_t status;            // the first negative one of any block

    bool has_callbacks() const { return callbacks[0] != nullptr || callbacks[1] != nullptr || callbacks[2] != nullptr; }
};

// One block of pairs, ordered so that a <= b; p and q are the pieces that hold a and b.
template <class T>
struct LimitBlock {
    int64_t count;
    T a[kBlockLimits], b[kBlockLimits], sign[kBlockLimits];
    int64_t p[kBlockLimits], q[kBlockLimits];
    // With callbacks only. `covered`: nothing of a .. b is left to the spline; `apart`: the last piece's extension from
    // tail_a to tail_b is, besides a .. b; `added`: results of the callbacks, by function.
    bool covered[kBlockLimits], apart[kBlockLimits];
    T tail_a[kBlockLimits], tail_b[kBlockLimits];
    const T* added;
};

// Writes the integrals of one function over a block to r, r + stride, ... `call` and `block` are an Integration and a
// LimitBlock of the evaluator's precision.
using IntegralFunction = int32_t (*)(const void* call, int64_t function, const void* block, void* r, int64_t stride);

// By IntegralEvaluator; the CB members also add what callbacks computed.
template <class T>
struct IntegralTables {
    static const IntegralFunction _Integrate1DDispatch[kIntegralEvaluators];
    static const IntegralFunction _Integrate1DDispatchCB[kIntegralEvaluators];
};
template <> const IntegralFunction IntegralTables<double>::_Integrate1DDispatch[kIntegralEvaluators];
template <> const IntegralFunction IntegralTables<double>::_Integrate1DDispatchCB[kIntegralEvaluators];
template <> const IntegralFunction IntegralTables<float>::_Integrate1DDispatch[kIntegralEvaluators];
template <> const IntegralFunction IntegralTables<float>::_Integrate1DDispatchCB[kIntegralEvaluators];

// Number of pieces of a task's spline.
constexpr int64_t piece_count(const Task& task, int32_t evaluator) {
    return evaluator == kIntegrateSubbotin ? task.nx : task.nx - 1;
}

// Runs all blocks of a call, on threads where they pay.
template <class T>
int32_t _Integr1DKernel(Integration<T>& call, const Threaders* threaders);

// Fills the running sums of one function and returns the smallest difference of two of them that is to be trusted;
// infinite when a cell isn't finite.
template <class T>
double fill_running_sums(const Integration<T>& call, int64_t function, RunningSum* sums);

}  // namespace nax::fit
