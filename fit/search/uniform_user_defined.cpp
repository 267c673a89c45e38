// Search by the caller's callback on a uniform partition. A guess is dropped: the formula costs less than its
// correction.
#include "fit/search/callback_batches.h"

namespace nax::fit {
namespace {

template <class T, CellWidth kWidth>
int32_t search(const SearchBlock<T>& block) {
    return search_batches<T, CellOf<kWidth>>(block, [&](T site, int64_t) {
        int64_t cell;
        SearchTables<T>::_Search1D64Dispatch[kSearchUniform](block.nx, block.x, 1, &site, nullptr, nullptr, nullptr,
                                                             nullptr, &cell, block.scale);
        return cell;
    });
}

}  // namespace
}  // namespace nax::fit

NAX_DF_SEARCH_FAMILY(UniUserDef)
