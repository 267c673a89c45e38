// One integration call: running sums where they pay, blocks of 128 pairs, threads.
#include <algorithm>

#include "fit/integrate/block.h"
#include "nax/fitting_integration.h"
#include "service/block.h"

const int64_t _dfIntegrThreadThresholdsSortedSearch[8] = {640, 512, 512, 256, 640, 640, 640, 640};

namespace nax::fit {
namespace {

constexpr int64_t kThreadedPairs = 256, kBlocksPerItem = 5, kStackElements = 2048, kSampledPairs = 64;
// So that the byte count of running sums doesn't wrap.
constexpr int64_t kMostSums = INT64_MAX / static_cast<int64_t>(sizeof(RunningSum));

template <class T>
int32_t read_status(Integration<T>& call) {
    return __atomic_load_n(&call.status, __ATOMIC_RELAXED);
}

template <class T>
void run_item(Integration<T>& call, int64_t item, int thread) {
    const int64_t span = call.blocks_per_item * kBlockLimits, start = call.stage_first + item * span;
    const int64_t stop = std::min(start + span, call.stage_last);
    T* const work = call.work + (call.work == nullptr ? 0 : thread * 2 * call.ny * kBlockLimits);
    SearchPositions positions;
    for (int64_t first = start; first < stop; first += kBlockLimits) {
        const int32_t status = integrate_block(call, first, std::min(kBlockLimits, stop - first), positions, work);
        if (status < 0) {
            __atomic_store_n(&call.status, status, __ATOMIC_RELAXED);
            return;
        }
    }
}

// Five blocks to an item, the rest by single blocks, what is left on the calling thread.
template <class T>
int32_t run_parallel(Integration<T>& call, int threads, const Threaders* threaders) {
    const nax_loop_body body = call.has_callbacks() ? _v1DIntegrThreaderCB : _v1DIntegrThreader;
    call.stage_first = 0;
    for (const int64_t blocks : {kBlocksPerItem, int64_t{1}}) {
        const int64_t rest = call.nlim - call.stage_first, items = rest / (blocks * kBlockLimits);
        if (items == 0 || (blocks == 1 && rest <= kBlockLimits)) continue;
        call.blocks_per_item = blocks;
        call.stage_last = call.stage_first + items * blocks * kBlockLimits;
        threaders->parallel_for(items, static_cast<int>(std::min<int64_t>(items, threads)), &call, body);
        call.stage_first = call.stage_last;
        if (read_status(call) < 0) return call.status;
    }
    call.blocks_per_item = 1;
    call.stage_last = call.nlim;
    if (call.stage_first < call.nlim) run_item(call, 0, 0);
    return call.status;
}

// Cells between the limits of an average pair, from a sample, times the number of pairs.
template <class T>
double estimate_cells(const Integration<T>& call) {
    const Task& task = *call.task;
    const T *const x = partition<T>(task), start = x[0], end = right_end<T>(task);
    const auto cell = [&](const Limits<T>& limits, int64_t i) {
        const T limit = limits.uniform ? limits.values[0] + static_cast<T>(i) * limits.step : limits.values[i];
        if (!(limit > start)) return 0.0;
        if (limit >= end) return static_cast<double>(task.nx);
        if (has_uniform_grid(task)) return static_cast<double>((limit - start) / uniform_step<T>(task));
        return static_cast<double>(std::upper_bound(x, x + task.nx, limit) - x);
    };
    const int64_t sampled = std::min(call.nlim, kSampledPairs);
    double cells = 0;
    for (int64_t k = 0; k < sampled; ++k) {
        const int64_t i = k * (call.nlim / sampled);
        cells += __builtin_fabs(cell(call.left, i) - cell(call.right, i));
    }
    return cells / static_cast<double>(sampled) * static_cast<double>(call.nlim);
}

struct SumsContext {
    const void* call;
    RunningSum* sums;
    double* limits;
    int64_t length;
};
template <class T>
void fill_function(int64_t j, int, int, void* context) {
    const SumsContext& c = *static_cast<const SumsContext*>(context);
    c.limits[j] = fill_running_sums(*static_cast<const Integration<T>*>(c.call), j, c.sums + j * c.length);
}

}  // namespace

template <class T>
int32_t _Integr1DKernel(Integration<T>& call, const Threaders* threaders) {
    const bool sorted = call.left.search.algorithm == kSearchSorted || call.right.search.algorithm == kSearchSorted;
    const int64_t threshold = sorted ? _dfIntegrThreadThresholdsSortedSearch[call.evaluator] : kThreadedPairs;
    const int threads = call.nlim >= threshold ? thread_limit(threaders) : 1;

    T stack[kStackElements];
    service::Block<T> work;
    call.work = nullptr;
    if (call.has_callbacks()) {
        const int64_t elements = 2 * call.ny * kBlockLimits * threads;
        if (elements > kStackElements && !work.allocate(static_cast<size_t>(elements))) return DfStatusMemory;
        call.work = work ? work.get() : stack;
    }
    const int64_t length = piece_count(*call.task, call.evaluator) + 1;
    service::Block<RunningSum> sums;
    service::Block<double> limits;
    call.sums = nullptr;
    const bool has_pieces = call.evaluator != kIntegrateArbitrary || call.task->s_order > 0;
    // Without memory for them the cells are added one by one.
    if (has_pieces && estimate_cells(call) > 2 * static_cast<double>(length) && length <= kMostSums / call.ny &&
        sums.allocate(static_cast<size_t>(length * call.ny)) && limits.allocate(static_cast<size_t>(call.ny))) {
        SumsContext context{&call, sums.get(), limits.get(), length};
        if (threads > 1 && call.ny > 1)
            threaders->parallel_for(call.ny, static_cast<int>(std::min<int64_t>(call.ny, threads)), &context,
                                    fill_function<T>);
        else
            for (int64_t j = 0; j < call.ny; ++j) fill_function<T>(j, 0, 1, &context);
        call.sums = sums.get();
        call.sum_limits = limits.get();
    }
    call.status = DfStatusOk;
    if (threads > 1) return run_parallel(call, threads, threaders);
    call.stage_first = 0;
    call.stage_last = call.nlim;
    call.blocks_per_item = (call.nlim + kBlockLimits - 1) / kBlockLimits;
    run_item(call, 0, 0);
    return call.status;
}
template int32_t _Integr1DKernel(Integration<double>&, const Threaders*);
template int32_t _Integr1DKernel(Integration<float>&, const Threaders*);

}  // namespace nax::fit

// The context is an Integration of either precision; both start with the task.
void _v1DIntegrThreader(int64_t item, int thread, int, void* context) {
    using namespace nax::fit;
    if ((*static_cast<const Task* const*>(context))->precision == 1)
        run_item(*static_cast<Integration<double>*>(context), item, thread);
    else
        run_item(*static_cast<Integration<float>*>(context), item, thread);
}
void _v1DIntegrThreaderCB(int64_t item, int thread, int threads, void* context) {
    _v1DIntegrThreader(item, thread, threads, context);
}
