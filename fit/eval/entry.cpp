// The interpolation entries.
#include "fit/eval/evaluation.h"
#include "fit/eval/few_sites.h"
#include "service/block.h"

namespace nax::fit {
namespace {

// The work block of a call: a transposition buffer of 8192 elements, and room to spare for alignment and small arrays.
constexpr int64_t kBufferElements = 8192, kStackPlanes = 8;
template <class T>
constexpr std::size_t kWorkBytes = sizeof(T) == sizeof(double) ? 67664 : 34384;

// The arguments of an entry.
template <class T>
struct Arguments {
    const Task* task;
    int64_t job, nsite;
    const T* site;
    int64_t sitehint, ndorder;
    const void* dorder;
    const T* data_hint;
    T* r;
    int64_t rhint;
    void* cell;
    InterpolationCallback<T> callback[kSiteGroups];
    void* parameters[kSiteGroups];
    SearchCallback<T> search;
    void* search_parameters;
    const Threaders* threaders;
};

constexpr bool stores_cells(int64_t job) { return (job & NAX_DF_JOB_STORE_CELLS) != 0; }
constexpr bool gives_cells(int64_t job) { return job == NAX_DF_JOB_GIVEN_CELLS; }

// What every function needs before it can be evaluated: coefficients, or data for the splines that read them.
template <class T>
int32_t check_functions(const Task& task, int32_t evaluator) {
    const bool reads_data = evaluator == kEvalStepLeft || evaluator == kEvalStepRight || evaluator == kEvalLookUp;
    if (!reads_data && task.s_order == 0) return DfStatusOk;
    if (!is_possible_order(task)) return DfStatusBadOrder;
    for (int64_t j = 0; j < task.ny; ++j) {
        if (reads_data && function_data<T>(task, j).base == nullptr) return DfStatusBadY;
        if (!reads_data && coefficients<T>(task, j) == nullptr) return DfStatusBadCoeff;
    }
    return DfStatusOk;
}

// Elements of the transposition buffers of all threads; negative when their number, or that of all results, is more
// than memory can hold.
int64_t buffer_elements(const ResultLayout& layout, int threads) {
    int64_t planes = 0, results = 0, elements = 0;
    const int64_t ny = layout.ny > 0 ? layout.ny : 0;
    if (__builtin_mul_overflow(ny, layout.nder, &planes) || __builtin_mul_overflow(planes, layout.nsite, &results))
        return -1;
    if (layout.direct()) return 0;
    if (!layout.buffers_all()) planes = layout.nder;
    return __builtin_mul_overflow(planes, kBlockSites * threads, &elements) ? -1 : elements;
}

template <class T>
Evaluation<T> plan_evaluation(const Arguments<T>& a, int32_t evaluator, int32_t algorithm) {
    const Task& task = *a.task;
    const bool uniform_sites = (a.sitehint & kUniformSites) != 0;
    const bool caller_cells = stores_cells(a.job) || gives_cells(a.job);
    const ResultHint hint = a.rhint == 0 || a.rhint == 128 ? kResultFunctions : static_cast<ResultHint>(a.rhint);
    Evaluation<T> evaluation{};
    evaluation.task = a.task;
    evaluation.evaluator = evaluator;
    evaluation.search = plan_block_search(task, algorithm, a.data_hint, a.search, a.search_parameters);
    evaluation.search.algorithm = kernel_of_call(task, algorithm, uniform_sites, a.site, a.nsite);
    if (evaluation.search.algorithm == kSearchHybrid) evaluation.search.scale = bin_scale<T>(task);
    evaluation.flags = (task.int_width != 0 ? int64_t{kCells64} : 0) | (caller_cells ? int64_t{kCallerCells} : 0);
    evaluation.orders = read_orders(a.dorder, a.ndorder, task.int_width != 0);
    evaluation.nsite = a.nsite;
    evaluation.site = a.site;
    evaluation.uniform_sites = uniform_sites;
    evaluation.site_step = uniform_sites ? site_step(a.site, a.nsite) : T(0);
    evaluation.grid_step = has_uniform_grid(task) ? uniform_step<T>(task) : T(0);
    evaluation.r = a.r;
    evaluation.layout = {hint, a.nsite, task.ny, evaluation.orders.nder};
    evaluation.cell = a.cell;
    for (int g = 0; g < kSiteGroups; ++g) {
        evaluation.callback[g] = a.callback[g];
        evaluation.parameters[g] = a.parameters[g];
    }
    return evaluation;
}

// A call of one block needs no memory when its planes are few.
template <class T>
int32_t evaluate_one_block(Evaluation<T>& evaluation) {
    alignas(64) T buffer[kStackPlanes * kBlockSites];
    evaluation.buffer = buffer;
    return evaluate_all(evaluation, nullptr, 1);
}

// Apart from the entries, so that a short call doesn't pay for the registers that this one saves.
template <class T>
[[gnu::noinline]] int32_t interpolate(const Arguments<T>& a) {
    if (a.task == nullptr) return DfStatusNullTask;
    const Task& task = *a.task;
    if (task.x == nullptr) return DfStatusBadX;
    const bool all_callbacks = a.callback[kLeftGroup] && a.callback[kRightGroup] && a.callback[kInteriorGroup];
    const int32_t evaluator = evaluation_index(task.s_order, task.s_type, all_callbacks);
    if (evaluator < 0) return evaluator;
    const int32_t algorithm =
        gives_cells(a.job) ? kSearchNone : choose_search(task, a.sitehint, a.data_hint, a.search != nullptr);
    if (algorithm < 0) return algorithm;
    if (!is_result_hint(a.rhint)) return DfStatusBadResultHint;
    if (a.nsite <= 0) return DfStatusOk;
    if (a.site == nullptr) return DfStatusBadSite;
    if (task.ny > 0 && a.r == nullptr) return DfStatusNullOutput;
    if ((stores_cells(a.job) || gives_cells(a.job)) && a.cell == nullptr) return DfStatusNullOutput;
    if (const int32_t status = check_functions<T>(task, evaluator)) return status;

    Evaluation<T> evaluation = plan_evaluation(a, evaluator, algorithm);
    if (a.nsite <= kBlockSites && !evaluation.has_callback() && 0 <= evaluation.layout.buffer_planes() &&
        evaluation.layout.buffer_planes() <= kStackPlanes && buffer_elements(evaluation.layout, 1) >= 0)
        return evaluate_one_block(evaluation);
    const service::Block<unsigned char> work(kWorkBytes<T>);
    if (!work) return DfStatusMemory;
    service::Block<T> large_buffer;
    const int limit = thread_limit(a.threaders);
    const int64_t elements = buffer_elements(evaluation.layout, limit);
    if (elements < 0) return DfStatusMemory;
    evaluation.buffer = reinterpret_cast<T*>(work.get());
    if (elements > kBufferElements) {
        if (!large_buffer.allocate(static_cast<std::size_t>(elements))) return DfStatusMemory;
        evaluation.buffer = large_buffer.get();
    }
    return evaluate_all(evaluation, a.threaders, limit);
}

}  // namespace
}  // namespace nax::fit

#define NAX_DF_INTERPOLATE(prefix, T)                                                                                  \
    extern "C" int32_t nax_df_kernel_##prefix##DFInterpolate1D(                                                        \
        const nax_df_task* task, int64_t job, int64_t, int64_t nsite, const T* site, int64_t sitehint,                 \
        int64_t ndorder, const void* dorder, const T* data_hint, T* r, int64_t rhint, void* cell,                      \
        nax_df_interpolation_callback_##prefix left, void* left_parameters,                                            \
        nax_df_interpolation_callback_##prefix right, void* right_parameters,                                          \
        nax_df_interpolation_callback_##prefix interior, void* interior_parameters,                                    \
        nax_df_search_callback_##prefix search, void* search_parameters, const nax_threaders* threaders) {             \
        const bool plain = job == NAX_DF_JOB_EVALUATE && data_hint == nullptr && left == nullptr && right == nullptr &&     \
                           interior == nullptr && search == nullptr;                                                   \
        if (plain && nsite > 0 && nsite <= nax::fit::kFewSites &&                                                      \
            nax::fit::evaluate_few(task, nsite, site, sitehint, ndorder, dorder, r, rhint))                            \
            return DfStatusOk;                                                                                         \
        return nax::fit::interpolate<T>({task, job, nsite, site, sitehint, ndorder, dorder, data_hint, r, rhint, cell, \
                                         {left, right, interior},                                                      \
                                         {left_parameters, right_parameters, interior_parameters},                     \
                                         search, search_parameters, threaders});                                       \
    }
NAX_DF_INTERPOLATE(d, double)
NAX_DF_INTERPOLATE(s, float)
