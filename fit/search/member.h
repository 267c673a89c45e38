// What the members of a search family share: the arguments of one block, and the spelling of their names.
#pragma once

#include <type_traits>

#include "fit/search/search.h"

namespace nax::fit {

template <class T>
struct SearchBlock {
    int64_t nx;
    const T* x;
    int64_t nsite;
    const T* site;
    int64_t* position;
    SearchCallback<T> callback;
    void* parameters;
    const int64_t* bin_table;
    void* cell;
    T scale;
};

template <CellWidth kWidth>
using CellOf = std::conditional_t<kWidth == kWidth32, int32_t, int64_t>;

// Single-precision vectors hold 32-bit cells, and float numbers near 2^31 are 128 apart: larger partitions, of any cell
// width, are searched with 64-bit cells.
inline constexpr int64_t kLargestPacked = int64_t{1} << 30;
template <class T, CellWidth kWidth>
constexpr bool needs_wide_cells(int64_t nx) {
    return kWidth == kWidth64 || (sizeof(T) == sizeof(float) && nx > kLargestPacked);
}

}  // namespace nax::fit

// The exported members of a family, for a file that defines search<T, width>(block).
#define NAX_DF_SEARCH_MEMBER(name, T, width)                                                                  \
    extern "C" int32_t name(int64_t nx, const T* x, int64_t nsite, const T* site, int64_t* position,          \
                            nax::fit::SearchCallback<T> callback, void* parameters, const int64_t* bin_table, \
                            void* cell, T scale) {                                                            \
        return nax::fit::search<T, nax::fit::width>(                                                          \
            {nx, x, nsite, site, position, callback, parameters, bin_table, cell, scale});                    \
    }
#define NAX_DF_SEARCH_FAMILY(algorithm)                                                      \
    NAX_DF_SEARCH_MEMBER(nax_df_kernel_dDF##algorithm##Search1D32, double, kWidth32)         \
    NAX_DF_SEARCH_MEMBER(nax_df_kernel_dDF##algorithm##Search1D64Pack, double, kWidth64Pack) \
    NAX_DF_SEARCH_MEMBER(nax_df_kernel_dDF##algorithm##Search1D64, double, kWidth64)         \
    NAX_DF_SEARCH_MEMBER(nax_df_kernel_sDF##algorithm##Search1D32, float, kWidth32)          \
    NAX_DF_SEARCH_MEMBER(nax_df_kernel_sDF##algorithm##Search1D64Pack, float, kWidth64Pack)  \
    NAX_DF_SEARCH_MEMBER(nax_df_kernel_sDF##algorithm##Search1D64, float, kWidth64)
