// A run over data: thread count, memory, the parallel region, the merge in thread order.
#include "stats/basic/run.h"

#include <algorithm>
#include <cstring>

#include "service/threaders.h"

namespace nax::stats::basic {
namespace {

// Bytes of a block of observations on their way into cross-products.
constexpr int64_t kPanelBytes = 262144;
constexpr int64_t kLeastPanelRows = 64;
// Elements and observations that a thread should have at least.
constexpr int kWorkShift = 13;
constexpr int kObservationShift = 4;
// Memory of small requests comes from the stack.
constexpr std::size_t kLocalReals = 512;

template <class T>
struct Plan {
    const Job<T>& job;
    Kernel<T> kernel;
    Order order;
    int threads;
    bool scaled_panel;
    int64_t panel_rows;  // 0 without cross-products
};

template <class T>
Plan<T> make_plan(const Job<T>& job, const Threaders* threaders) {
    const int64_t p = job.blocks.p, padded = job.blocks.padded();
    const bool weighted = job.task.weights != nullptr, cross = job.wants(kMatrices);
    const int64_t work = cross ? job.n * p * p : job.n * p;
    const int64_t limit = thread_limit(threaders);
    const int order = kernel_order(job.results, job.method);
    Plan<T> plan{job, nullptr, {}, 1, weighted || job.method == Method::kOnePass, 0};
    plan.threads =
        static_cast<int>(std::max<int64_t>(1, std::min({limit, work >> kWorkShift, job.n >> kObservationShift})));
    if (job.method == Method::kOnePass) {
        plan.kernel = one_pass_kernel<T>(one_pass_index(job.columns, weighted, order, cross));
        plan.order = kOnePassOrders[order];
    } else {
        const int index = power_sums_index(job.columns, weighted, order);
        plan.kernel = job.method == Method::kFast ? fast_kernel<T>(index) : user_mean_kernel<T>(index);
        plan.order = job.method == Method::kFast ? kFastOrders[order] : kUserMeanOrders[order];
    }
    if (cross) {
        const int64_t row_bytes = padded * static_cast<int64_t>(sizeof(T)) * (plan.scaled_panel ? 2 : 1);
        plan.panel_rows =
            std::min(std::max(kPanelBytes / row_bytes, kLeastPanelRows), job.n / plan.threads + job.n % plan.threads);
        if (job.method == Method::kOnePass) plan.panel_rows = std::min<int64_t>(plan.panel_rows, kChunk);
    }
    return plan;
}

// Where the arrays of one thread begin in its memory; `place` null counts reals only.
template <class T>
std::size_t lay_out(const Plan<T>& plan, T* place, Accumulators<T>* sums, Panels<T>* panels) {
    const auto padded = static_cast<std::size_t>(plan.job.blocks.padded());
    std::size_t used = 0;
    const auto take = [&](bool needed, std::size_t count) -> T* {
        if (!needed) return nullptr;
        used += count;
        return place == nullptr ? nullptr : place + used - count;
    };
    Accumulators<T> laid{};
    for (int k = 1; k <= 4; ++k) laid.power[raw_index(k)] = take(k <= plan.order.raw, padded);
    for (int k = 2; k <= 4; ++k) laid.power[central_index(k)] = take(k <= plan.order.central, padded);
    laid.mean = take(plan.job.method == Method::kUserMean, padded);
    const bool cross = plan.panel_rows > 0;
    laid.cross = take(cross, padded * padded);
    const auto rows = static_cast<std::size_t>(plan.panel_rows);
    Panels<T> paper{};
    paper.plain = take(cross, rows * padded);
    paper.scaled = take(cross && plan.scaled_panel, rows * padded);
    paper.rows = plan.panel_rows;
    if (sums != nullptr) *sums = laid;
    if (panels != nullptr) *panels = paper;
    return used;
}

template <class T>
struct Region {
    const Plan<T>& plan;
    T* memory;
    std::size_t stride;  // reals of one thread
};

// The accumulators of a thread stand in its memory; the weights it found come back at its end.
template <class T>
T* weights_of(const Region<T>& region, int part) {
    return region.memory + static_cast<std::size_t>(part) * region.stride;
}
template <class T>
Accumulators<T> accumulators_of(const Region<T>& region, int part, Panels<T>* panels = nullptr) {
    T* const pair = weights_of(region, part);
    Accumulators<T> sums;
    lay_out(region.plan, pair + 2, &sums, panels);
    sums.weight = pair[0];
    sums.weight2 = pair[1];
    return sums;
}

template <class T>
void run_part(const Region<T>& region, int part) {
    const Plan<T>& plan = region.plan;
    const Job<T>& job = plan.job;
    Panels<T> panels;
    Accumulators<T> sums = accumulators_of(region, part, &panels);
    const int64_t share = job.n / plan.threads;
    const Slice<T> slice{reals<const T>(job.task.observations),
                         reals<const T>(job.task.weights),
                         job.n,
                         part * share,
                         part + 1 == plan.threads ? job.n : (part + 1) * share,
                         job.blocks.p};
    plan.kernel(slice, sums, panels);
    weights_of(region, part)[0] = sums.weight;
    weights_of(region, part)[1] = sums.weight2;
}

// Runs with fewer threads than asked for do the parts in turn: results depend on their number alone.
template <class T>
void region_body(int thread_index, int thread_count, void* context) {
    const Region<T>& region = *static_cast<const Region<T>*>(context);
    for (int part = thread_index; part < region.plan.threads; part += thread_count) run_part(region, part);
}

template <class T>
void prepare(const Region<T>& region, T weight, T weight2) {
    const Job<T>& job = region.plan.job;
    std::memset(region.memory, 0, region.stride * static_cast<std::size_t>(region.plan.threads) * sizeof(T));
    weights_of(region, 0)[0] = weight;
    weights_of(region, 0)[1] = weight2;
    if (job.method == Method::kUserMean)
        for (int part = 0; part < region.plan.threads; ++part) {
            const Accumulators<T> sums = accumulators_of(region, part);
            for (int64_t b = 0; b < job.blocks.count(); ++b)
                for (int64_t l = 0; l < job.blocks.lanes && job.blocks.base(b) + l < job.blocks.p; ++l)
                    sums.mean[b * job.blocks.lanes + l] = reals<T>(job.task.mean)[job.blocks.base(b) + l];
        }
    if (weight > 0) {
        Accumulators<T> sums = accumulators_of(region, 0);
        restore(job, sums);
    }
}

// The mean that centred the cross-products, which a later run needs, even where the caller's has changed by then.
template <class T>
void save_mean(const Job<T>& job, service::Block<T>& saved) {
    if (!saved) return;
    std::memcpy(saved.get(), job.task.mean, static_cast<std::size_t>(job.blocks.p) * sizeof(T));
    if (job.task.work_vector != nullptr) nax_serv_deallocate(job.task.work_vector);
    job.task.work_vector = saved.detach();
}

}  // namespace

template <class T>
int32_t run(const Job<T>& job, const Threaders* threaders) {
    const Plan<T> plan = make_plan(job, threaders);
    const std::size_t line = 64 / sizeof(T);
    const std::size_t reals_each = (lay_out<T>(plan, nullptr, nullptr, nullptr) + 2 + line - 1) / line * line;
    const std::size_t needed = reals_each * static_cast<std::size_t>(plan.threads);
    alignas(64) T local[kLocalReals];
    service::Block<T> block, saved;
    if (needed > kLocalReals && !block.allocate(needed)) return SsStatusMemory;
    if (job.method == Method::kUserMean && job.wants(kMatrices) &&
        !saved.allocate(static_cast<std::size_t>(job.blocks.p)))
        return SsStatusMemory;
    T* const pair = reals<T>(job.task.accumulated_weights);
    Region<T> region{plan, block ? block.get() : local, reals_each};
    prepare(region, pair != nullptr ? pair[0] : T(0), pair != nullptr ? pair[1] : T(0));
    if (plan.threads > 1)
        threaders->parallel_region(plan.threads, &region, region_body<T>);
    else
        run_part(region, 0);
    Accumulators<T> total = accumulators_of(region, 0);
    for (int part = 1; part < plan.threads; ++part) merge(job, plan.order, total, accumulators_of(region, part));
    finish(job, total);
    if (pair != nullptr) {
        pair[0] = total.weight;
        pair[1] = total.weight2;
    }
    save_mean(job, saved);
    return SsStatusOk;
}
template int32_t run(const Job<double>&, const Threaders*);
template int32_t run(const Job<float>&, const Threaders*);

}  // namespace nax::stats::basic
