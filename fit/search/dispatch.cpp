// The search kernels that look at the flags, and the tables of all kernels.
#include "fit/search/search.h"

namespace nax::fit {

#define NAX_DF_ENTRY(name, precision, member) nax_df_kernel_##precision##DF##name##Search1D##member,
#define NAX_DF_TABLE(T, Function, table, precision, member) \
    template <>                                             \
    const Function<T> SearchTables<T>::table[kSearchAlgorithms] = {NAX_DF_SEARCHES(NAX_DF_ENTRY, precision, member)};
NAX_DF_TABLE(double, SearchKernel, _Search1DDispatch, d, )
NAX_DF_TABLE(double, SearchMember, _Search1D32Dispatch, d, 32)
NAX_DF_TABLE(double, SearchMember, _Search1D64PackDispatch, d, 64Pack)
NAX_DF_TABLE(double, SearchMember, _Search1D64Dispatch, d, 64)
NAX_DF_TABLE(float, SearchKernel, _Search1DDispatch, s, )
NAX_DF_TABLE(float, SearchMember, _Search1D32Dispatch, s, 32)
NAX_DF_TABLE(float, SearchMember, _Search1D64PackDispatch, s, 64Pack)
NAX_DF_TABLE(float, SearchMember, _Search1D64Dispatch, s, 64)

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

#define NAX_DF_SEARCH_KERNEL(algorithm, T, precision)                                                                  \
    extern "C" int32_t nax_df_kernel_##precision##DF##algorithm##Search1D(                                             \
        int64_t nx, const T* x, int64_t nsite, const T* site, int64_t* position, nax::fit::SearchCallback<T> callback, \
        void* parameters, const int64_t* bin_table, void* cell, int64_t flags, T scale) {                              \
        return nax::fit::search_by_flags<T>(nax::fit::kSearch##algorithm, nx, x, nsite, site, position, callback,      \
                                            parameters, bin_table, cell, flags, scale);                                \
    }
NAX_DF_SEARCHES(NAX_DF_SEARCH_KERNEL, double, d)
NAX_DF_SEARCHES(NAX_DF_SEARCH_KERNEL, float, s)
