// Construction of the partition index.
#include "fit/partition_index.h"

#include <cstring>

#include "service/service.h"

namespace nax::fit {
namespace {

constexpr std::size_t kAlignment = 128;
// Bins of the finer index per point: sparse while the index stays in the first cache levels, else one.
constexpr int64_t kDenseLimit = 16384;

// Bin numbers must be exact in the task's precision, and counts fit 32 bits.
constexpr int64_t kMostFloatBins = int64_t{1} << 24;

int64_t fine_bins_for(const Task& task) {
    if (task.xhint == kQuasiUniform || task.nx >= INT32_MAX) return 0;
    if (task.nx <= kDenseLimit) return 2 * task.nx;
    return task.precision != 0 || task.nx < kMostFloatBins ? task.nx : kMostFloatBins;
}

// The pairs. First and last point of each bin from one ascending pass, then gaps are closed from both sides.
template <class T>
void fill_pairs(const T* x, int64_t nx, int64_t nbins, T scale, int64_t* table) {
    const auto lo = [table](int64_t b) -> int64_t& { return table[2 * b]; };
    const auto hi = [table](int64_t b) -> int64_t& { return table[2 * b + 1]; };
    for (int64_t k = 0; k < 2 * nbins; ++k) table[k] = -1;
    lo(0) = 0;
    for (int64_t i = 1; i < nx; ++i) {
        const int64_t b = bin_of(x[i], x[0], scale, static_cast<T>(nbins));
        if (b == 0) continue;
        if (hi(b - 1) == -1) hi(b - 1) = i;
        lo(b + 1) = i;
    }
    hi(nbins - 1) = nx - 1;
    for (int64_t b = 1; b < nbins; ++b)
        if (lo(b) == -1) lo(b) = lo(b - 1);
    for (int64_t b = nbins - 2; b >= 0; --b)
        if (hi(b) == -1) hi(b) = hi(b + 1);
    lo(nbins) = lo(nbins - 1);
    hi(nbins) = hi(nbins - 1);
}

// Entry b of the finer index: how many points lie in bins below b.
template <class T>
void fill_fine(const T* x, int64_t nx, int64_t bins, T scale, int32_t* count) {
    std::memset(count, 0, static_cast<std::size_t>(bins + 2) * sizeof(int32_t));
    for (int64_t i = 0; i < nx; ++i) ++count[bin_of(x[i], x[0], scale, static_cast<T>(bins)) + 1];
    for (int64_t b = 0; b <= bins; ++b) count[b + 1] += count[b];
}

template <class T>
bool build(Task& task) {
    const T* const x = partition<T>(task);
    const int64_t nbins = bins_for(task.nx);
    const int64_t fine_bins = fine_bins_for(task);
    const std::size_t pairs = static_cast<std::size_t>(table_length(nbins));
    const std::size_t counts = fine_bins == 0 ? 0 : static_cast<std::size_t>(fine_bins + 2);
    const std::size_t bytes = sizeof(IndexHead) + pairs * sizeof(int64_t) + counts * sizeof(int32_t);
    void* const small = reinterpret_cast<TaskBlock&>(task).small_index;
    void* const block = bytes <= sizeof(TaskBlock::small_index) ? small : nax_serv_allocate(bytes, kAlignment);
    if (block == nullptr) return false;

    const T range = x[task.nx - 1] - x[0];
    const T scale = static_cast<T>(nbins) / range;
    const T fine_scale = static_cast<T>(fine_bins) / range;
    IndexHead* const head = static_cast<IndexHead*>(block);
    int64_t* const table = reinterpret_cast<int64_t*>(head + 1);
    int32_t* const fine = reinterpret_cast<int32_t*>(table + pairs);
    *head = {task.nx, x, nbins, fine_bins, fine, static_cast<double>(fine_scale)};
    fill_pairs(x, task.nx, nbins, scale, table);
    mark_head(table, nbins, true);
    if (fine_bins != 0) fill_fine(x, task.nx, fine_bins, fine_scale, fine);
    task.nbins = nbins;
    task.bin_table = table;
    if constexpr (sizeof(T) == sizeof(double))
        task.bin_scale_d = scale;
    else
        task.bin_scale_s = scale;
    return true;
}

}  // namespace

bool build_partition_index(Task& task) {
    free_partition_index(task);
    return task.precision != 0 ? build<double>(task) : build<float>(task);
}

void free_partition_index(Task& task) {
    if (task.bin_table == nullptr) return;
    IndexHead* const head = reinterpret_cast<IndexHead*>(task.bin_table) - 1;
    mark_head(task.bin_table, head->nbins, false);  // the memory may become a caller's table
    if (static_cast<void*>(head) != reinterpret_cast<TaskBlock&>(task).small_index) nax_serv_deallocate(head);
    task.bin_table = nullptr;
}

}  // namespace nax::fit
