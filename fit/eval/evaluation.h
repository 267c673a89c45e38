// One call of an interpolation entry, as its blocks see it.
#pragma once

#include "fit/eval/evaluator.h"
#include "fit/eval/layout.h"
#include "service/threaders.h"

namespace nax::fit {

template <class T>
using InterpolationCallback = int32_t (*)(const int64_t* nsite, const int64_t* cell, const T* site, T* r,
                                          void* parameters, void* reserved);

enum SiteGroup { kLeftGroup, kRightGroup, kInteriorGroup, kSiteGroups };

template <class T>
struct Evaluation {
    const Task* task;
    int32_t evaluator;
    BlockSearch<T> search;  // algorithm kSearchNone: the cells are given
    int64_t flags;          // SearchFlags: the caller's cell array takes part or not
    Orders orders;
    int64_t nsite;
    const T* site;
    bool uniform_sites;  // `site` holds two ends
    T site_step;
    T grid_step;
    T* r;
    ResultLayout layout;
    void* cell;
    T* buffer;  // one slice of layout.buffer_size() elements for each thread
    InterpolationCallback<T> callback[kSiteGroups];
    void* parameters[kSiteGroups];
    int32_t status;  // of the first thread that failed

    bool has_callback() const { return callback[kLeftGroup] || callback[kRightGroup] || callback[kInteriorGroup]; }
    bool given_cells() const { return search.algorithm == kSearchNone; }
    bool caller_cells() const { return (flags & kCallerCells) != 0; }
    bool wide_cells() const { return cell_width(flags, task->nx) != kWidth32; }
    // The caller's cells from site `first` on.
    void* cell_from(int64_t first) const { return static_cast<char*>(cell) + first * (wide_cells() ? 8 : 4); }
};

// The sites of one block: those of the caller, or equally spaced ones in `buffer`.
template <class T>
const T* block_sites(const Evaluation<T>& evaluation, int64_t first, int64_t n, T* buffer);

// The caller's cells of a block, as 64-bit numbers from 0 to nx: one that is none counts as the nearest.
template <class T>
void copy_given_cells(const Evaluation<T>& evaluation, int64_t first, int64_t n, int64_t* cell);

// One block of sites first .. first + n - 1, with `position` carried from block to block.
template <class T>
int32_t evaluate_block(const Evaluation<T>& evaluation, int64_t first, int64_t n, int thread, int64_t& position);
template <class T>
int32_t evaluate_block_with_callbacks(const Evaluation<T>& evaluation, int64_t first, int64_t n, int thread,
                                      int64_t& position);

// The cells of n sites. The walk of a sorted search restarts when the sites of a block lie left of its position, so
// that a block's cells don't depend on the blocks before it.
template <class T>
int32_t find_cells(const Evaluation<T>& evaluation, int64_t n, const T* site, int64_t& position, void* cell,
                   int64_t flags);

// Runs the evaluator for every function of a block of `n` sites from `first` on, and puts the results into the caller's
// layout. block.n may be less than n, when callbacks did the rest.
template <class T>
int32_t evaluate_functions(const Evaluation<T>& evaluation, EvaluatorFunction evaluator, EvalBlock<T>& block,
                           int64_t first, int64_t n, int thread);

// All blocks, on up to `limit` threads when there are enough sites.
template <class T>
int32_t evaluate_all(Evaluation<T>& evaluation, const Threaders* threaders, int limit);

}  // namespace nax::fit
