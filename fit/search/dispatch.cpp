// The search kernels that look at the flags, and the tables of all kernels.
#include "fit/search/search.h"

namespace nax::fit {

#define NAX_DF_SEARCH(name) nax_df_kernel_dDF##name##Search1D,
template <>
const SearchKernel<double> SearchTables<double>::_Search1DDispatch[kSearchAlgorithms] = {
#include "fit/search/algorithms.def"
};
#undef NAX_DF_SEARCH
#define NAX_DF_SEARCH(name) nax_df_kernel_dDF##name##Search1D32,
template <>
const SearchMember<double> SearchTables<double>::_Search1D32Dispatch[kSearchAlgorithms] = {
#include "fit/search/algorithms.def"
};
#undef NAX_DF_SEARCH
#define NAX_DF_SEARCH(name) nax_df_kernel_dDF##name##Search1D64Pack,
template <>
const SearchMember<double> SearchTables<double>::_Search1D64PackDispatch[kSearchAlgorithms] = {
#include "fit/search/algorithms.def"
};
#undef NAX_DF_SEARCH
#define NAX_DF_SEARCH(name) nax_df_kernel_dDF##name##Search1D64,
template <>
const SearchMember<double> SearchTables<double>::_Search1D64Dispatch[kSearchAlgorithms] = {
#include "fit/search/algorithms.def"
};
#undef NAX_DF_SEARCH

#define NAX_DF_SEARCH(name) nax_df_kernel_sDF##name##Search1D,
template <>
const SearchKernel<float> SearchTables<float>::_Search1DDispatch[kSearchAlgorithms] = {
#include "fit/search/algorithms.def"
};
#undef NAX_DF_SEARCH
#define NAX_DF_SEARCH(name) nax_df_kernel_sDF##name##Search1D32,
template <>
const SearchMember<float> SearchTables<float>::_Search1D32Dispatch[kSearchAlgorithms] = {
#include "fit/search/algorithms.def"
};
#undef NAX_DF_SEARCH
#define NAX_DF_SEARCH(name) nax_df_kernel_sDF##name##Search1D64Pack,
template <>
const SearchMember<float> SearchTables<float>::_Search1D64PackDispatch[kSearchAlgorithms] = {
#include "fit/search/algorithms.def"
};
#undef NAX_DF_SEARCH
#define NAX_DF_SEARCH(name) nax_df_kernel_sDF##name##Search1D64,
template <>
const SearchMember<float> SearchTables<float>::_Search1D64Dispatch[kSearchAlgorithms] = {
#include "fit/search/algorithms.def"
};
#undef NAX_DF_SEARCH

namespace {

template <class T>
int32_t search_by_flags(SearchAlgorithm algorithm, int64_t nx, const T* x, int64_t nsite, const T* site,
                        int64_t* position, SearchCallback<T> callback, void* parameters, const int64_t* bin_table,
                        void* cell, int64_t flags, T scale) {
    using Tables = SearchTables<T>;
    const SearchMember<T>* const members[] = {Tables::_Search1D32Dispatch, Tables::_Search1D64PackDispatch,
                                              Tables::_Search1D64Dispatch};
    return members[cell_width(flags, nx)][algorithm](nx, x, nsite, site, position, callback, parameters, bin_table,
                                                     cell, scale);
}

}  // namespace
}  // namespace nax::fit

#define NAX_DF_SEARCH_KERNEL(name, T, algorithm)                                                                      \
    extern "C" int32_t name(int64_t nx, const T* x, int64_t nsite, const T* site, int64_t* position,                  \
                            nax::fit::SearchCallback<T> callback, void* parameters, const int64_t* bin_table,         \
                            void* cell, int64_t flags, T scale) {                                                     \
        return nax::fit::search_by_flags<T>(algorithm, nx, x, nsite, site, position, callback, parameters, bin_table, \
                                            cell, flags, scale);                                                      \
    }
#define NAX_DF_SEARCH(name)                                                                  \
    NAX_DF_SEARCH_KERNEL(nax_df_kernel_dDF##name##Search1D, double, nax::fit::kSearch##name) \
    NAX_DF_SEARCH_KERNEL(nax_df_kernel_sDF##name##Search1D, float, nax::fit::kSearch##name)
#include "fit/search/algorithms.def"
