// Blocks with callbacks. The sites fall into three groups: left of the partition, right of it, and the rest. A group with a
// callback goes to it as one batch for all functions; the sites of the others go through the plain evaluator.
#include "fit/eval/evaluation.h"
#include "service/block.h"

namespace nax::fit {
namespace {

constexpr int64_t kStackResults = 1024;

template <class T>
struct Group {
    int64_t count = 0;
    T site[kBlockSites];
    int64_t cell[kBlockSites];
    int64_t target[kBlockSites];
};

// The sites of a block by group, with 64-bit cells.
template <class T>
struct Groups {
    Group<T> group[kSiteGroups];

    void split(const Evaluation<T>& evaluation, const T* site, int64_t n) {
        const T left = partition<T>(*evaluation.task)[0];
        const T right = right_end<T>(*evaluation.task);
        for (int64_t i = 0; i < n; ++i) {
            const SiteGroup where = site[i] < left ? kLeftGroup : (site[i] > right ? kRightGroup : kInteriorGroup);
            Group<T>& to = group[where];
            to.site[to.count] = site[i];
            to.cell[to.count] = where == kLeftGroup ? 0 : evaluation.task->nx;
            to.target[to.count++] = i;
        }
    }
};

void write_cell(void* cell, bool wide, int64_t i, int64_t c) {
    if (wide)
        static_cast<int64_t*>(cell)[i] = c;
    else
        static_cast<int32_t*>(cell)[i] = static_cast<int32_t>(c);
}

// Cells of the rest: given, or found; then those of all groups into the caller's array when it is asked for.
template <class T>
int32_t fill_cells(const Evaluation<T>& evaluation, Groups<T>& groups, int64_t first, int64_t n, int64_t& position) {
    Group<T>& rest = groups.group[kInteriorGroup];
    const bool wide = evaluation.wide_cells();
    if (evaluation.given_cells()) {
        int64_t given[kBlockSites];
        copy_given_cells(evaluation, first, n, given);
        for (int64_t i = 0; i < rest.count; ++i) rest.cell[i] = given[rest.target[i]];
        return DfStatusOk;
    }
    if (rest.count > 0) {
        const int32_t status = find_cells(evaluation, rest.count, rest.site, position, rest.cell, kCells64);
        if (status < 0) return status;
    }
    if (evaluation.caller_cells())
        for (const Group<T>& group : groups.group)
            for (int64_t i = 0; i < group.count; ++i)
                write_cell(evaluation.cell_from(first), wide, group.target[i], group.cell[i]);
    return DfStatusOk;
}

// Sites without a callback, in the order of the block.
template <class T>
void collect_plain(const Evaluation<T>& evaluation, const Groups<T>& groups, Group<T>& plain) {
    int64_t next[kSiteGroups] = {};
    for (;;) {
        int64_t nearest = kBlockSites;
        int from = -1;
        for (int g = 0; g < kSiteGroups; ++g) {
            const Group<T>& group = groups.group[g];
            if (evaluation.callback[g] != nullptr || next[g] == group.count || group.target[next[g]] >= nearest) continue;
            nearest = group.target[next[g]];
            from = g;
        }
        if (from < 0) return;
        const Group<T>& group = groups.group[from];
        const int64_t i = next[from]++;
        plain.site[plain.count] = group.site[i];
        plain.cell[plain.count] = group.cell[i];
        plain.target[plain.count++] = group.target[i];
    }
}

// One batch to each callback that has sites. `result` holds them one after the other.
template <class T>
int32_t call_back(const Evaluation<T>& evaluation, const Groups<T>& groups, T* result, CallbackBatch<T>* batches) {
    const int64_t per_site = evaluation.layout.ny * evaluation.layout.nder;
    for (int g = 0; g < kSiteGroups; ++g) {
        const Group<T>& group = groups.group[g];
        if (evaluation.callback[g] == nullptr || group.count == 0) continue;
        CallbackBatch<T>& batch = batches[g];
        batch.count = group.count;
        batch.result = result;
        for (int64_t i = 0; i < group.count; ++i) batch.target[i] = group.target[i];
        const int32_t status =
            evaluation.callback[g](&group.count, group.cell, group.site, result, evaluation.parameters[g], nullptr);
        if (status < 0) return status;
        result += batch.count * per_site;
    }
    return DfStatusOk;
}

}  // namespace

template <class T>
int32_t merge_callbacks(EvalBlock<T>& block, int64_t function, EvaluatorFunction plain) {
    if (block.n > 0)
        if (const int32_t status = plain(&block, function)) return status;
    const int64_t nder = block.orders->nder;
    for (int64_t d = 0; d < nder; ++d) {
        T* const plane = block.plane + d * block.plane_stride;
        // Sites only move up, so the last goes first.
        for (int64_t i = block.n - 1; i >= 0; --i) plane[block.target[i]] = plane[i];
        for (int64_t b = 0; b < block.batch_count; ++b) {
            const CallbackBatch<T>& batch = block.batches[b];
            for (int64_t i = 0; i < batch.count; ++i)
                plane[batch.target[i]] = batch.result[(function * batch.count + i) * nder + d];
        }
    }
    return DfStatusOk;
}

template <class T>
int32_t evaluate_block_with_callbacks(const Evaluation<T>& evaluation, int64_t first, int64_t n, int thread, int64_t& position) {
    alignas(64) T site_buffer[kBlockSites];
    Groups<T> groups;
    groups.split(evaluation, block_sites(evaluation, first, n, site_buffer), n);
    if (const int32_t status = fill_cells(evaluation, groups, first, n, position)) return status;
    if (evaluation.layout.ny <= 0) return DfStatusOk;

    T stack_results[kStackResults];
    T* results = stack_results;
    service::Block<T> heap_results;
    const int64_t needed = n * evaluation.layout.ny * evaluation.layout.nder;
    if (needed > kStackResults) {
        if (!heap_results.allocate(static_cast<std::size_t>(needed))) return DfStatusMemory;
        results = heap_results.get();
    }
    for (int64_t k = 0; k < needed; ++k) results[k] = T(0);
    CallbackBatch<T> batches[kSiteGroups];
    if (const int32_t status = call_back(evaluation, groups, results, batches); status < 0) return status;

    Group<T> plain;
    collect_plain(evaluation, groups, plain);
    EvalBlock<T> block;
    block.task = evaluation.task;
    block.orders = &evaluation.orders;
    block.step = evaluation.grid_step;
    block.n = plain.count;
    block.site = plain.site;
    block.cell = plain.cell;
    block.located = false;
    block.one_cell = false;
    block.try_one_cell = evaluation.search.algorithm == kSearchSorted;
    block.target = plain.target;
    block.batches = batches;
    block.batch_count = kSiteGroups;
    return evaluate_functions(evaluation, EvaluatorTables<T>::_Interpolate1D64DispatchCB[evaluation.evaluator], block, first,
                              n, thread);
}

template int32_t merge_callbacks(EvalBlock<double>&, int64_t, EvaluatorFunction);
template int32_t merge_callbacks(EvalBlock<float>&, int64_t, EvaluatorFunction);
template int32_t evaluate_block_with_callbacks(const Evaluation<double>&, int64_t, int64_t, int, int64_t&);
template int32_t evaluate_block_with_callbacks(const Evaluation<float>&, int64_t, int64_t, int, int64_t&);

}  // namespace nax::fit
