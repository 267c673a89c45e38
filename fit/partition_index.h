// The partition index: which points of a general partition can bound the cell of a site.
#pragma once

#include <cstdint>

#include "fit/task.h"

namespace nax::fit {

// `bin_table` of a task points at pairs (lo, hi) for equal bins of the partition: for a site in bin b, x[lo] is at or
// left of it and x[hi] right of it. This head stands before the pairs in the same block. Behind the pairs stands, for
// partitions searched by bins, a finer index with about as many bins as points, whose entry b counts the points in the
// bins below b. The head tells which partition was indexed; a search that is given another one must not use the index.
struct alignas(128) IndexHead {
    int64_t nx;
    const void* x;
    int64_t nbins;
    int64_t fine_bins;    // 0: no finer index
    const int32_t* fine;  // fine_bins + 2 counts; the last two are the number of all points
    double fine_scale;    // fine bins per unit of x, exact in the precision of the task
};

inline constexpr int64_t kMinBins = 16;
inline constexpr int64_t kMaxBins = 1024;

constexpr int64_t bins_for(int64_t nx) {
    const int64_t bins = nx / 16;
    return bins < kMinBins ? kMinBins : bins > kMaxBins ? kMaxBins : bins;
}

// Head of an index; null when the table is null or belongs to another partition.
inline const IndexHead* index_head(const int64_t* bin_table, int64_t nx, const void* x) {
    if (bin_table == nullptr) return nullptr;
    const IndexHead* const head = reinterpret_cast<const IndexHead*>(bin_table) - 1;
    return head->nx == nx && head->x == x ? head : nullptr;
}

// Bin of a site as a number in [0, bins]: clamped before it becomes an integer, so that no range, however short or
// long, and no NaN leads outside the table. Monotone in `site`, by which the index is exact.
template <class T>
inline int64_t bin_of(T site, T origin, T scale, T bins) {
    const T b = scale * (site - origin);
    return static_cast<int64_t>(b > 0 ? (b < bins ? b : bins) : T(0));
}

// Builds the index of the task's stored partition, replacing an earlier one. False when memory is short; the task then
// has no index.
bool build_partition_index(Task& task);
void free_partition_index(Task& task);

}  // namespace nax::fit
