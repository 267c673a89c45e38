// Choice of the search algorithm and of its floating-point argument.
#include "fit/search/search.h"

namespace nax::fit {

// Element 1 of a data hint is its kind, element 4 the peak cell.
template <class T>
int32_t choose_search(const Task& task, int64_t sitehint, const T* data_hint, bool has_callback) {
    if (has_callback) return task.xhint == kUniform ? kSearchUniUserDef : kSearchUserDef;
    if (task.xhint == kUniform) return kSearchUniform;
    if (task.xhint == kQuasiUniform) return kSearchQuasiUniform;
    if (sitehint == kSortedSites) return kSearchSorted;
    if (data_hint == nullptr || data_hint[1] == T(0)) return kSearchHybrid;
    const bool peak = data_hint[1] == T(1) && data_hint[4] >= T(0) && data_hint[4] <= static_cast<T>(task.nx);
    return peak ? static_cast<int32_t>(kSearchPeak) : static_cast<int32_t>(DfStatusBadDataHint);
}

template <class T>
T search_scale(const Task& task, int32_t algorithm, const T* data_hint) {
    const T* const x = partition<T>(task);
    switch (algorithm) {
        case kSearchUniform:
        case kSearchUniUserDef:
            return static_cast<T>(task.nx - 1) / (x[1] - x[0]);
        case kSearchQuasiUniform:
            return static_cast<T>(task.nx - 1) / (x[task.nx - 1] - x[0]);
        case kSearchHybrid:
            return bin_scale<T>(task);
        case kSearchPeak:
            return data_hint[4];
        default:
            return T(0);
    }
}

template int32_t choose_search(const Task&, int64_t, const double*, bool);
template int32_t choose_search(const Task&, int64_t, const float*, bool);
template double search_scale(const Task&, int32_t, const double*);
template float search_scale(const Task&, int32_t, const float*);

}  // namespace nax::fit
