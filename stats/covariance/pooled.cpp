// Means and covariances by group, and pooled over the groups.
#include "stats/covariance/pooled.h"

#include <algorithm>
#include <cstring>

#include "nax/statistics_basic.h"
#include "service/block.h"
#include "service/threaders.h"
#include "stats/basic/state.h"

namespace nax::stats::covariance {
namespace {

constexpr uint64_t kPooledMean = NAX_SS_ESTIMATE_POOLED_MEAN, kPooledCovariance = NAX_SS_ESTIMATE_POOLED_COVARIANCE;
constexpr uint64_t kGroupMean = NAX_SS_ESTIMATE_GROUP_MEAN, kGroupCovariance = NAX_SS_ESTIMATE_GROUP_COVARIANCE;

int32_t check(const Task& task, uint64_t estimates, uint64_t method) {
    const auto wants = [estimates](uint64_t any) { return (estimates & any) != 0; };
    if (task.observation_storage == nullptr) return SsStatusNoStorage;
    if (!is_storage(integer(task, task.observation_storage))) return SsStatusBadStorage;
    if (task.group_indices == nullptr) return SsStatusNoGroupIndices;
    if (wants(kPooledCovariance | kPooledMean) && task.pooled_mean == nullptr) return SsStatusNoPooledMean;
    if (wants(kPooledCovariance)) {
        if (task.pooled_covariance_storage == nullptr) return SsStatusNoStorage;
        if (task.pooled_covariance == nullptr) return SsStatusNoPooledCovariance;
    }
    if (wants(kGroupCovariance | kGroupMean)) {
        if (task.group_covariance_indices == nullptr) return SsStatusNoGroupIndices;
        if (task.group_means == nullptr) return SsStatusNoGroupMeans;
    }
    if (wants(kGroupCovariance)) {
        if (task.group_covariance_storage == nullptr) return SsStatusNoStorage;
        if (task.group_covariance == nullptr) return SsStatusNoGroupCovariance;
    }
    if (method != NAX_SS_METHOD_ONE_PASS) return SsStatusBadMethod;
    if (integer_or(task, task.dimension, 0) < 1) return SsStatusBadDimension;
    if (integer_or(task, task.observation_count, 0) < 1) return SsStatusBadObservationCount;
    return task.observations == nullptr ? SsStatusNoObservations : SsStatusOk;
}

// Number of groups, the largest index plus one; 0 where an index is negative or a mark is neither 0 nor 1.
int64_t count_groups(const Task& task, int64_t n, bool marks) {
    const Integers groups = integers(task, task.group_indices);
    int64_t largest = 0;
    for (int64_t i = 0; i < n; ++i) {
        if (groups[i] < 0) return 0;
        largest = std::max(largest, groups[i]);
    }
    if (largest == INT64_MAX) return 0;
    const Integers marked = integers(task, task.group_covariance_indices);
    for (int64_t g = 0; marks && g <= largest; ++g)
        if (marked[g] != 0 && marked[g] != 1) return 0;
    return largest + 1;
}

template <class T>
struct Context {
    const Task& task;
    const Threaders* threaders;
    GroupLayout<T> layout;
    int64_t n, groups;
    int parts;
    T* memory;
    int64_t stride;  // reals of a part: the groups, then one line
    bool columns;

    T* area(int64_t part) const { return memory + part * stride; }
};

template <class T>
void accumulate(const Context<T>& context, int64_t part) {
    const int64_t share = context.n / context.parts;
    const basic::Slice<T> slice{reals<const T>(context.task.observations),
                                reals<const T>(context.task.weights),
                                context.n,
                                part * share,
                                part + 1 == context.parts ? context.n : (part + 1) * share,
                                context.layout.p};
    T* const area = context.area(part);
    add_to_groups(slice, context.columns, integers(context.task, context.task.group_indices), context.layout, area,
                  area + context.groups * context.layout.size());
}

template <class T>
void merge_group(const GroupLayout<T>& layout, T* into, T* from, int64_t group) {
    T* const weights = layout.weights(into, group);
    const T* const added = layout.weights(from, group);
    if (added[0] == 0) return;
    const T a = weights[0], b = added[0], share = b / (a + b);
    T* const mean = layout.mean(into, group);
    const T* const other = layout.mean(from, group);
    for (int64_t i = 0; layout.cross && i < layout.p; ++i) {
        T* const row = layout.products(into, group) + i * layout.row;
        const T* const other_row = layout.products(from, group) + i * layout.row;
        const T d = a * share * (other[i] - mean[i]);
        for (int64_t j = i; j < layout.p; ++j) row[j] += other_row[j] + d * (other[j] - mean[j]);
    }
    for (int64_t j = 0; j < layout.p; ++j) mean[j] += share * (other[j] - mean[j]);
    weights[0] = a + b;
    weights[1] += added[1];
}

template <class T>
void merge_part(int64_t part, int, int, void* pointer) {
    const Context<T>& context = *static_cast<const Context<T>*>(pointer);
    if (part == 0) return;
    for (int64_t g = 0; g < context.groups; ++g) merge_group(context.layout, context.area(0), context.area(part), g);
}

// A part accumulates on its own and waits for its turn to merge: the sums have one order, whatever the schedule.
template <class T>
void accumulate_and_merge(int64_t part, int thread, int threads, void* pointer) {
    const Context<T>& context = *static_cast<const Context<T>*>(pointer);
    accumulate(context, part);
    context.threaders->ordered(part, thread, threads, pointer, merge_part<T>);
}

template <class T>
void write_matrix(const GroupLayout<T>& layout, const T* products, T factor, MatrixStorage storage, T* matrix) {
    for (int64_t i = 0; i < layout.p; ++i)
        for (int64_t j = i; j < layout.p; ++j) {
            const T value = products[i * layout.row + j] * factor;
            matrix[matrix_index(storage, layout.p, i, j)] = value;
            if (storage == MatrixStorage::kFull) matrix[j * layout.p + i] = value;
        }
}

template <class T>
void write_groups(const Context<T>& context, uint64_t estimates) {
    const Task& task = context.task;
    const GroupLayout<T>& layout = context.layout;
    const Integers marked = integers(task, task.group_covariance_indices);
    const MatrixStorage storage = decode_matrix_storage(integer_or(task, task.group_covariance_storage, 0));
    T* mean = reals<T>(task.group_means);
    T* matrix = reals<T>(task.group_covariance);
    for (int64_t g = 0; g < context.groups; ++g) {
        if (marked[g] == 0) continue;
        std::memcpy(mean, layout.mean(context.area(0), g), static_cast<std::size_t>(layout.p) * sizeof(T));
        mean += layout.p;
        if ((estimates & kGroupCovariance) == 0) continue;
        const T* const weights = layout.weights(context.area(0), g);
        write_matrix(layout, layout.products(context.area(0), g), basic::unbiased_factor(weights[0], weights[1]),
                     storage, matrix);
        matrix += matrix_size(storage, layout.p);
    }
}

// Adds all groups into the first; empty ones have no share, and no degree of freedom.
template <class T>
void write_pooled(const Context<T>& context, uint64_t estimates) {
    const Task& task = context.task;
    const GroupLayout<T>& layout = context.layout;
    T* const mean = reals<T>(task.pooled_mean);
    T total = 0, freedom = 0;
    for (int64_t j = 0; j < layout.p; ++j) mean[j] = 0;
    T* const products = layout.products(context.area(0), 0);
    for (int64_t g = 0; g < context.groups; ++g) {
        const T* const weights = layout.weights(context.area(0), g);
        if (!(weights[0] > 0)) continue;
        total += weights[0];
        freedom += weights[0] - weights[1] / weights[0];
        const T* const group_mean = layout.mean(context.area(0), g);
        for (int64_t j = 0; j < layout.p; ++j) mean[j] += weights[0] * group_mean[j];
        const T* const group_products = layout.products(context.area(0), g);
        for (int64_t e = 0; g > 0 && layout.cross && e < layout.p * layout.row; ++e) products[e] += group_products[e];
    }
    for (int64_t j = 0; total > 0 && j < layout.p; ++j) mean[j] /= total;
    if ((estimates & kPooledCovariance) == 0) return;
    write_matrix(layout, products, total > 0 ? 1 / freedom : T(1),
                 decode_matrix_storage(integer(task, task.pooled_covariance_storage)),
                 reals<T>(task.pooled_covariance));
}

template <class T>
int32_t compute(Task* record, uint64_t estimates, uint64_t method, const Threaders* threaders) {
    if (record == nullptr) return SsStatusNullTask;
    const Task& task = *record;
    if (const int32_t status = check(task, estimates, method)) return status;
    const bool of_groups = (estimates & (kGroupCovariance | kGroupMean)) != 0;
    const int64_t p = integer(task, task.dimension), n = integer(task, task.observation_count);
    const int64_t groups = count_groups(task, n, of_groups);
    if (groups == 0) return SsStatusBadGroupIndices;
    const bool cross = (estimates & (kPooledCovariance | kGroupCovariance)) != 0;
    Context<T> context{task,    threaders, {p, basic::blocks<T>(p).padded(), cross},
                       n,       groups,    1,
                       nullptr, 0,         !is_rows(integer(task, task.observation_storage), p)};
    context.parts = static_cast<int>(
        std::max<int64_t>(1, std::min({int64_t{thread_limit(threaders)}, n * p * (cross ? p : 1) >> 13, n >> 4})));
    int64_t reals_in_all = 0;
    if (__builtin_mul_overflow(groups, context.layout.size(), &context.stride) ||
        __builtin_add_overflow(context.stride, context.layout.row, &context.stride) ||
        __builtin_mul_overflow(context.stride, context.parts, &reals_in_all))
        return SsStatusMemory;
    service::Block<T> block(static_cast<std::size_t>(reals_in_all));
    if (!block) return SsStatusMemory;
    std::memset(block.get(), 0, static_cast<std::size_t>(reals_in_all) * sizeof(T));
    context.memory = block.get();
    if (context.parts > 1)
        threaders->parallel_for_ordered(context.parts, context.parts, &context, accumulate_and_merge<T>);
    else
        accumulate(context, 0);
    // The pooled sums overwrite the first group's.
    if (of_groups) write_groups(context, estimates);
    if ((estimates & (kPooledCovariance | kPooledMean)) != 0) write_pooled(context, estimates);
    return SsStatusOk;
}

}  // namespace
}  // namespace nax::stats::covariance

extern "C" int32_t _stodSSPooledCovariance(nax_ss_task* task, uint64_t estimates, uint64_t method,
                                           const nax_threaders* threaders) {
    return nax::stats::covariance::compute<double>(task, estimates, method, threaders);
}
extern "C" int32_t _stosSSPooledCovariance(nax_ss_task* task, uint64_t estimates, uint64_t method,
                                           const nax_threaders* threaders) {
    return nax::stats::covariance::compute<float>(task, estimates, method, threaders);
}
