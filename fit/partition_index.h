// The partition index: which points of a general partition can bound the cell of a site.
#pragma once

#include <cstdint>

#include "fit/task.h"

namespace nax::fit {

// `bin_table` of a task points at pairs (lo, hi) for equal bins of the partition: for a site in bin b, x[lo] is at or
// left of it and x[hi] right of it. This head stands before the pairs in the same block. Behind the pairs stands, for
// partitions searched by bins, a finer index with about as many bins as points, whose entry b counts the points in the
// bins below b. The head tells which partition was indexed; a search that is given another one must not use the index.
//
// A table of the bare pairs, made by a caller of the search kernels, serves too: the spare pair behind pair `nbins`
// tells whether there is a head.
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

// The integers of a table with `nbins` bins, whose last pair is spare.
constexpr int64_t table_length(int64_t nbins) { return 2 * nbins + 4; }

// What the spare pair holds where a head stands before the table: no index of a point, and nothing that a copy of the
// table would keep valid.
inline int64_t head_mark(const int64_t* bin_table) { return ~static_cast<int64_t>(reinterpret_cast<uintptr_t>(bin_table)); }
inline void mark_head(int64_t* bin_table, int64_t nbins, bool has_head) {
    int64_t* const spare = bin_table + table_length(nbins) - 2;
    spare[0] = spare[1] = has_head ? head_mark(bin_table) : 0;
}
// Head of the table of a partition of nx points, null when it is of bare pairs.
inline const IndexHead* index_head(const int64_t* bin_table, int64_t nx) {
    const int64_t* const spare = bin_table + table_length(bins_for(nx)) - 2;
    const int64_t mark = head_mark(bin_table);
    return spare[0] == mark && spare[1] == mark ? reinterpret_cast<const IndexHead*>(bin_table) - 1 : nullptr;
}
// The index of a task as long as it belongs to the stored partition, else null: points may have been edited since.
inline const int64_t* current_index(const Task& task) {
    if (task.bin_table == nullptr) return nullptr;
    const IndexHead* const head = reinterpret_cast<const IndexHead*>(task.bin_table) - 1;
    return head->nx == task.nx && head->x == task.x ? task.bin_table : nullptr;
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
