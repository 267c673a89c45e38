// Cell search as the other stages of data fitting use it: choice of the algorithm, and search of one block of sites.
#pragma once

#include <cstdint>

#include "fit/partition_index.h"
#include "fit/task.h"

namespace nax::fit {

// The search algorithms, in the order of every table of the search: ROW(name, what else the caller wants).
#define NAX_DF_SEARCHES(ROW, ...)  \
    ROW(Uniform, __VA_ARGS__)      \
    ROW(QuasiUniform, __VA_ARGS__) \
    ROW(Sorted, __VA_ARGS__)       \
    ROW(Peak, __VA_ARGS__)         \
    ROW(Hybrid, __VA_ARGS__)       \
    ROW(UserDef, __VA_ARGS__)      \
    ROW(UniUserDef, __VA_ARGS__)

enum SearchAlgorithm : int32_t {
#define NAX_DF_ENUMERATOR(name, ...) kSearch##name,
    NAX_DF_SEARCHES(NAX_DF_ENUMERATOR)
#undef NAX_DF_ENUMERATOR
    kSearchAlgorithms,
    kSearchNone = kSearchAlgorithms  // the cells are given
};

// Flags of the per-block kernels.
enum SearchFlags : int64_t {
    kCells64 = 1,      // the caller's integers are 64 bits wide
    kCallerCells = 2,  // the cells go to the caller's array; an internal buffer is always 64 bits wide
};

// Which member of a search or evaluator family runs: width of the arithmetic on cells, and of their storage.
enum CellWidth : int32_t { kWidth32, kWidth64Pack, kWidth64 };
constexpr CellWidth cell_width(int64_t flags, int64_t nx) {
    if ((flags & kCallerCells) != 0 && (flags & kCells64) == 0) return kWidth32;
    return nx < INT32_MAX ? kWidth64Pack : kWidth64;
}

template <class T>
using SearchCallback = int32_t (*)(const int64_t* nsite, const T* site, int64_t* cell, int32_t* flag, void* parameters,
                                   void* reserved);

// Per-block kernels. Sorted alone reads `position` (where its walk starts, and where it ended); UserDef and UniUserDef
// alone read the callback. `scale` is the peak cell for Peak.
template <class T>
using SearchKernel = int32_t (*)(int64_t nx, const T* x, int64_t nsite, const T* site, int64_t* position,
                                 SearchCallback<T> callback, void* parameters, const int64_t* bin_table, void* cell,
                                 int64_t flags, T scale);
template <class T>
using SearchMember = int32_t (*)(int64_t nx, const T* x, int64_t nsite, const T* site, int64_t* position,
                                 SearchCallback<T> callback, void* parameters, const int64_t* bin_table, void* cell,
                                 T scale);

// The kernels by SearchAlgorithm: one that looks at the flags, and its members by CellWidth.
template <class T>
struct SearchTables {
    static const SearchKernel<T> _Search1DDispatch[kSearchAlgorithms];
    static const SearchMember<T> _Search1D32Dispatch[kSearchAlgorithms];
    static const SearchMember<T> _Search1D64PackDispatch[kSearchAlgorithms];
    static const SearchMember<T> _Search1D64Dispatch[kSearchAlgorithms];
};
// Defined in dispatch.cpp for both precisions.
template <>
const SearchKernel<double> SearchTables<double>::_Search1DDispatch[kSearchAlgorithms];
template <>
const SearchMember<double> SearchTables<double>::_Search1D32Dispatch[kSearchAlgorithms];
template <>
const SearchMember<double> SearchTables<double>::_Search1D64PackDispatch[kSearchAlgorithms];
template <>
const SearchMember<double> SearchTables<double>::_Search1D64Dispatch[kSearchAlgorithms];
template <>
const SearchKernel<float> SearchTables<float>::_Search1DDispatch[kSearchAlgorithms];
template <>
const SearchMember<float> SearchTables<float>::_Search1D32Dispatch[kSearchAlgorithms];
template <>
const SearchMember<float> SearchTables<float>::_Search1D64PackDispatch[kSearchAlgorithms];
template <>
const SearchMember<float> SearchTables<float>::_Search1D64Dispatch[kSearchAlgorithms];

// The algorithm for a task and its sites, or DfStatusBadDataHint.
template <class T>
int32_t choose_search(const Task& task, int64_t sitehint, const T* data_hint, bool has_callback);

// The floating-point argument of the algorithm's kernel.
template <class T>
T search_scale(const Task& task, int32_t algorithm, const T* data_hint);

// All that a block needs besides its sites.
template <class T>
struct BlockSearch {
    int64_t nx;
    const T* x;
    SearchCallback<T> callback;
    void* parameters;
    const int64_t* bin_table;
    T scale;
    int32_t algorithm;

    // 64-bit cells of one block. `position` is carried from block to block; it starts at 0.
    int32_t operator()(int64_t nsite, const T* site, int64_t* position, int64_t* cell) const {
        return SearchTables<T>::_Search1DDispatch[algorithm](nx, x, nsite, site, position, callback, parameters,
                                                             bin_table, cell, kCells64, scale);
    }
};

template <class T>
BlockSearch<T> plan_block_search(const Task& task, int32_t algorithm, const T* data_hint, SearchCallback<T> callback,
                                 void* parameters) {
    return {task.nx,    partition<T>(task),  callback,
            parameters, current_index(task), search_scale<T>(task, algorithm, data_hint),
            algorithm};
}

// Equally spaced sites given by their ends a and b: element i is a + i * step.
constexpr int64_t kUniformSites = 4;
constexpr int64_t kSortedSites = 64;
// The kernel that serves a call best: ascending sites, listed ones or equally spaced ones, are walked where several fall
// into a cell and an index knows no shorter way. The cells are the same.
inline constexpr int64_t kSitesToWalk = 4;
template <class T>
int32_t kernel_of_call(const Task& task, int32_t algorithm, bool uniform_sites, const T* site, int64_t nsite) {
    const bool ascending = uniform_sites && site[0] <= site[1] && __builtin_isfinite(site[1] - site[0]);
    if (algorithm != kSearchSorted && !(algorithm == kSearchHybrid && ascending)) return algorithm;
    const bool walk = nsite / kSitesToWalk >= task.nx || current_index(task) == nullptr;
    return walk ? kSearchSorted : kSearchHybrid;
}
template <class T>
constexpr T site_step(const T* ends, int64_t nsite) {
    return nsite <= 1 ? T(0) : (ends[1] - ends[0]) / static_cast<T>(nsite - 1);
}
// Writes sites first .. first + count - 1.
template <class T>
void expand_uniform_sites(T origin, T step, int64_t first, int64_t count, T* site);

}  // namespace nax::fit
