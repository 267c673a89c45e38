// Search by the caller's callback on a general partition: cells that it doesn't call final start a walk.
#include "fit/search/callback_batches.h"
#include "fit/search/walk.h"

namespace nax::fit {
namespace {

// A guess becomes a cell of the general partition. A guess c with the site exactly on x[c] stands, one below what the
// cell rule gives: a callback that returns it has chosen it.
template <class T>
int64_t refine(const T* x, int64_t nx, T site, int64_t guess) {
    const int64_t c = guess > 0 ? guess : 0;
    const T right = x[nx - 1];
    if (c >= nx) return site == right ? nx - 1 : walk_down(x, nx, site);
    if (site > x[c]) return site == right ? nx - 1 : walk_up(x, nx, c, site);
    if (c > 0 && x[c - 1] > site) return site == right ? nx - 1 : walk_down(x, c, site);
    return c;
}

template <class T, CellWidth kWidth>
int32_t search(const SearchBlock<T>& block) {
    return search_batches<T, CellOf<kWidth>>(
        block, [&](T site, int64_t guess) { return refine(block.x, block.nx, site, guess); });
}

}  // namespace
}  // namespace nax::fit

NAX_DF_SEARCH_FAMILY(UserDef)
