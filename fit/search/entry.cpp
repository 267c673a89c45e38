// The search entries.
#include "fit/search/bounded.h"
#include "fit/search/search.h"
#include "fit/search/whole_array.h"

namespace nax::fit {
namespace {

// Fewer sites are searched in place.
constexpr int64_t kInPlaceSites = 32;

template <class T>
int32_t search_in_place(const SearchRequest<T>& request) {
    if (!request.uniform_sites) return search_range(request, request.site, 0, request.nsite);
    T site[kInPlaceSites];
    expand_uniform_sites(request.site[0], site_step(request.site, request.nsite), 0, request.nsite, site);
    return search_range(request, site, 0, request.nsite);
}

// Few sites, one by one: the way to a vector kernel would take longer than the search.
template <class T, class Cell>
void search_few(const Task& task, int64_t count, const T* site, Cell* cell) {
    with_cell_finder<T>(
        task, [=](const auto& cells) __attribute__((always_inline)) {
            for (int64_t i = 0; i < count; ++i) cell[i] = static_cast<Cell>(cells.template find<Lane<T>>(site[i]));
        });
}

template <class T>
int32_t search_entry(const Task* task, int64_t nsite, const T* site, int64_t sitehint, const T* data_hint, void* cell,
                     SearchCallback<T> callback, void* parameters, const Threaders* threaders) {
    if (task == nullptr) return DfStatusNullTask;
    if (task->x == nullptr) return DfStatusBadX;
    const int32_t algorithm = choose_search(*task, sitehint, data_hint, callback != nullptr);
    if (algorithm < 0) return algorithm;
    if (nsite <= 0 && callback == nullptr) return DfStatusOk;
    const int64_t count = nsite > 0 ? nsite : 0;
    if (count > 0 && site == nullptr) return DfStatusBadSite;
    if (count > 0 && cell == nullptr) return DfStatusNullOutput;
    if (count < kInPlaceSites && sitehint != kUniformSites && algorithm != kSearchUserDef &&
        algorithm != kSearchUniUserDef) {
        if (task->int_width != 0)
            search_few(*task, count, site, static_cast<int64_t*>(cell));
        else
            search_few(*task, count, site, static_cast<int32_t*>(cell));
        return DfStatusOk;
    }
    const int64_t flags = kCallerCells | (task->int_width != 0 ? int64_t{kCells64} : int64_t{0});
    const bool uniform_sites = sitehint == kUniformSites && count > 0;
    const SearchRequest<T> request{task,  count,
                                   site,  uniform_sites,
                                   cell,  plan_block_search<T>(*task, algorithm, data_hint, callback, parameters),
                                   flags, threaders};
    if (count < kInPlaceSites) return search_in_place(request);
    return WholeArraySearch<T>::_SearchDispatch[algorithm](request);
}

}  // namespace
}  // namespace nax::fit

extern "C" int32_t nax_df_kernel_dDFSearch1D(const nax_df_task* task, int64_t, int64_t nsite, const double* site,
                                             int64_t sitehint, const double* data_hint, void* cell,
                                             nax_df_search_callback_d callback, void* parameters, void*,
                                             const nax_threaders* threaders) {
    return nax::fit::search_entry(task, nsite, site, sitehint, data_hint, cell, callback, parameters, threaders);
}
extern "C" int32_t nax_df_kernel_sDFSearch1D(const nax_df_task* task, int64_t, int64_t nsite, const float* site,
                                             int64_t sitehint, const float* data_hint, void* cell,
                                             nax_df_search_callback_s callback, void* parameters, void*,
                                             const nax_threaders* threaders) {
    return nax::fit::search_entry(task, nsite, site, sitehint, data_hint, cell, callback, parameters, threaders);
}
