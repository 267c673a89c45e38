// Evaluators: what they are given, and the tables through which they are reached.
#pragma once

#include <cstdint>

#include "fit/search/search.h"
#include "fit/task.h"

namespace nax::fit {

// The evaluators, in the order of the evaluation index: ROW(name, what else the caller wants).
#define NAX_DF_EVALUATORS(ROW, ...) \
    ROW(Linear, __VA_ARGS__)        \
    ROW(Quadratic, __VA_ARGS__)     \
    ROW(Cubic, __VA_ARGS__)         \
    ROW(QuadSubb, __VA_ARGS__)      \
    ROW(Arbitr, __VA_ARGS__)        \
    ROW(StepLeft, __VA_ARGS__)      \
    ROW(StepRight, __VA_ARGS__)     \
    ROW(LookUp, __VA_ARGS__)

enum Evaluator : int32_t {
#define NAX_DF_ENUMERATOR(name, ...) kEval##name,
    NAX_DF_EVALUATORS(NAX_DF_ENUMERATOR)
#undef NAX_DF_ENUMERATOR
    kEvaluators
};

// Evaluation index of a task's order and type, or DfStatusBadType. Order 0 of no step or look-up type means that the
// caller's three callbacks compute everything.
int32_t evaluation_index(int64_t s_order, int64_t s_type, bool all_callbacks);

// The derivative orders of one call: one flag per order, results packed in ascending order.
struct Orders {
    const void* flags;
    int64_t count;  // of flags
    bool wide;      // 64-bit flags
    int64_t nder;   // results per site and function

    constexpr bool requested(int64_t order) const {
        if (only_value) return order == 0;
        if (order >= count) return false;
        return wide ? static_cast<const int64_t*>(flags)[order] != 0 : static_cast<const int32_t*>(flags)[order] != 0;
    }
    bool only_value;  // no flag is set: the value alone is meant
};
Orders read_orders(const void* dorder, int64_t ndorder, bool wide);

inline constexpr int64_t kBlockSites = 64;

// Output of the callbacks for the sites of one block, one batch per group.
template <class T>
struct CallbackBatch {
    int64_t count = 0;
    int64_t target[kBlockSites];  // position of each site in the block
    const T* result = nullptr;    // (j * count + i) * nder + d; null for a group without a callback
};

// One block of sites. Function j's results for slot d go to plane + d * plane_stride, one element per site. The first
// call of an evaluator on a block makes the polynomial indices and local coordinates, which further functions reuse.
// The members `CB` of a block find its n sites at `target` of the block, and the results for the others in `batches`.
template <class T>
struct EvalBlock {
    const Task* task;
    const Orders* orders;
    T step;     // of a uniform partition
    int64_t n;  // sites
    const T* site;
    const void* cell;  // 32-bit for the members `32`, else 64-bit
    T* plane;
    int64_t plane_stride;
    bool located;
    bool one_cell;      // all sites lie in the cell of the first: found for sorted sites only
    bool try_one_cell;  // whether that is worth a test
    alignas(64) int64_t index[kBlockSites];
    alignas(64) T local[kBlockSites];
    const int64_t* target;
    const CallbackBatch<T>* batches;
    int64_t batch_count;
};

// `block` is an EvalBlock of the evaluator's precision.
using EvaluatorFunction = int32_t (*)(void* block, int64_t function);

// By Evaluator, for 32-bit and 64-bit cells, and the members that merge in the callbacks' results.
template <class T>
struct EvaluatorTables {
    static const EvaluatorFunction _Interpolate1D32Dispatch[kEvaluators];
    static const EvaluatorFunction _Interpolate1D64Dispatch[kEvaluators];
    static const EvaluatorFunction _Interpolate1D32DispatchCB[kEvaluators];
    static const EvaluatorFunction _Interpolate1D64DispatchCB[kEvaluators];
};
template <>
const EvaluatorFunction EvaluatorTables<double>::_Interpolate1D32Dispatch[kEvaluators];
template <>
const EvaluatorFunction EvaluatorTables<double>::_Interpolate1D64Dispatch[kEvaluators];
template <>
const EvaluatorFunction EvaluatorTables<double>::_Interpolate1D32DispatchCB[kEvaluators];
template <>
const EvaluatorFunction EvaluatorTables<double>::_Interpolate1D64DispatchCB[kEvaluators];
template <>
const EvaluatorFunction EvaluatorTables<float>::_Interpolate1D32Dispatch[kEvaluators];
template <>
const EvaluatorFunction EvaluatorTables<float>::_Interpolate1D64Dispatch[kEvaluators];
template <>
const EvaluatorFunction EvaluatorTables<float>::_Interpolate1D32DispatchCB[kEvaluators];
template <>
const EvaluatorFunction EvaluatorTables<float>::_Interpolate1D64DispatchCB[kEvaluators];

// Zeroes the slots that an evaluator of `limit` derivative orders leaves over, and says how many it fills.
template <class T>
int64_t zero_missing_orders(EvalBlock<T>& block, int64_t limit);

// Polynomial index and local coordinate of every site, from its cell.
template <class T>
void locate(EvalBlock<T>& block, bool wide_cells);
// The same for a Subbotin spline, whose pieces meet at the knots of its sub-grid.
template <class T>
void locate_subbotin(EvalBlock<T>& block, bool wide_cells);

// The cell of a site in range, whatever the caller's array holds.
template <class T>
inline int64_t cell_at(const EvalBlock<T>& block, bool wide_cells, int64_t i) {
    const int64_t c =
        wide_cells ? static_cast<const int64_t*>(block.cell)[i] : static_cast<const int32_t*>(block.cell)[i];
    return c < 0 ? 0 : (c > block.task->nx ? block.task->nx : c);
}
// Cell 0 and cell nx extend the end polynomials.
inline int64_t polynomial_index(int64_t cell, int64_t nx) {
    const int64_t p = cell > 0 ? cell - 1 : 0;
    return p < nx - 2 ? p : nx - 2;
}

// Runs `plain` on the sites that no callback took, moves their results to their places and adds those of the callbacks.
template <class T>
int32_t merge_callbacks(EvalBlock<T>& block, int64_t function, EvaluatorFunction plain);

}  // namespace nax::fit

// The exported members of an evaluator, for a file that defines evaluate<T, wide cells>(block, function).
#define NAX_DF_EVAL_MEMBER(name, T, wide)                                                               \
    extern "C" int32_t name(void* block, int64_t function) {                                            \
        return nax::fit::evaluate<T, wide>(*static_cast<nax::fit::EvalBlock<T>*>(block), function);     \
    }                                                                                                   \
    extern "C" int32_t name##CB(void* block, int64_t function) {                                        \
        return nax::fit::merge_callbacks(*static_cast<nax::fit::EvalBlock<T>*>(block), function, name); \
    }
#define NAX_DF_EVAL_FAMILY(evaluator)                                            \
    NAX_DF_EVAL_MEMBER(nax_df_kernel_d_##evaluator##SplineEval32, double, false) \
    NAX_DF_EVAL_MEMBER(nax_df_kernel_d_##evaluator##SplineEval64, double, true)  \
    NAX_DF_EVAL_MEMBER(nax_df_kernel_s_##evaluator##SplineEval32, float, false)  \
    NAX_DF_EVAL_MEMBER(nax_df_kernel_s_##evaluator##SplineEval64, float, true)
