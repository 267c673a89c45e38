// Sites near a known cell k: a vector of sites that all lie in it is settled by one comparison, the others walk from
// it.
#include "fit/search/for_each_site.h"
#include "fit/search/walk.h"

namespace nax::fit {
namespace {

template <class T>
int64_t cell_from_peak(const T* x, int64_t nx, int64_t peak, T site) {
    const T right = x[nx - 1];
    if (site == right) return nx - 1;
    if (peak >= nx) return site > right ? nx : walk_down(x, nx - 1, site);
    if (site >= x[peak]) return walk_up(x, nx, peak, site);
    return walk_down(x, peak, site);
}

template <class T, bool kWide, class Cell>
void search_peak(const SearchBlock<T>& block, Cell* cell) {
    using P = PackFor<T, kWide>;
    const T* const x = block.x;
    const int64_t nx = block.nx;
    // The kernel may be called with any number; what is no cell counts as the nearest one.
    const int64_t peak = Lane<T>::truncate(Lane<T>::clamp(block.scale, static_cast<T>(nx)));
    int64_t i = 0;
    if constexpr (P::kLanes > 1) {
        const bool interior = peak > 0 && peak < nx;
        for (; interior && i + P::kLanes <= block.nsite; i += P::kLanes) {
            const auto sites = P::load(block.site + i);
            const auto inside = P::both(P::le(P::set(x[peak - 1]), sites), P::lt(sites, P::set(x[peak])));
            if (P::all(inside)) {
                P::store_cells(cell + i, P::iset(peak));
                continue;
            }
            for (int64_t k = i; k < i + P::kLanes; ++k)
                cell[k] = static_cast<Cell>(cell_from_peak(x, nx, peak, block.site[k]));
        }
    }
    for (; i < block.nsite; ++i) cell[i] = static_cast<Cell>(cell_from_peak(x, nx, peak, block.site[i]));
}

template <class T, CellWidth kWidth>
int32_t search(const SearchBlock<T>& block) {
    auto* const cell = static_cast<CellOf<kWidth>*>(block.cell);
    if (needs_wide_cells<T, kWidth>(block.nx))
        search_peak<T, true>(block, cell);
    else
        search_peak<T, false>(block, cell);
    return DfStatusOk;
}

}  // namespace
}  // namespace nax::fit

NAX_DF_SEARCH_FAMILY(Peak)
