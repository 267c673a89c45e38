// Sorted sites: one walk along the partition. A vector of ascending sites whose last one stays within a few points of
// the position is compared with those points at once; anything else, unsorted sites among it, goes site by site.
#include "fit/search/for_each_site.h"
#include "fit/search/walk.h"

namespace nax::fit {
namespace {

constexpr int64_t kPointsAhead = 4;

template <class T>
struct Walk {
    const T* x;
    int64_t nx;
    T right;
    int64_t position;

    // A site on the right end gets the last cell and leaves the position where it is.
    int64_t next(T site) {
        if (site == right) return nx - 1;
        if (position < nx && !(x[position] > site)) position = walk_up(x, nx, position + 1, site);
        return position;
    }

    // The cells of one vector when its sites, all below the right end, ascend over at most kPointsAhead points.
    template <class P, class Cell>
    [[gnu::always_inline]] bool vector(const T* site, Cell* cell) {
        const auto sites = P::load(site);
        auto cells = P::iset(position);
        if (P::all(P::lt(sites, P::set(x[position])))) {  // none reaches the next point
            P::store_cells(cell, cells);
            return true;
        }
        const T top = site[P::kLanes - 1];
        if (!(top < right) || !P::all(P::le(P::load(site - 1), sites))) return false;
        if (position + kPointsAhead > nx || !(x[position + kPointsAhead - 1] > top)) return false;
        int64_t passed = 0;
        for (int64_t k = 0; k < kPointsAhead - 1; ++k) {
            cells = P::count(cells, P::le(P::set(x[position + k]), sites));
            passed += x[position + k] <= top ? 1 : 0;
        }
        P::store_cells(cell, cells);
        position += passed;
        return true;
    }
};

template <class T, bool kWide, class Cell>
void search_sorted(const SearchBlock<T>& block, Cell* cell) {
    using P = PackFor<T, kWide>;
    const int64_t nx = block.nx;
    Walk<T> walk{block.x, nx, block.x[nx - 1], block.position != nullptr ? *block.position : 0};
    if (walk.position < 0 || walk.position > nx) walk.position = 0;
    int64_t i = 0;
    if (block.nsite > 0) cell[i++] = static_cast<Cell>(walk.next(block.site[0]));
    if constexpr (P::kLanes > 1) {
        for (; i + P::kLanes <= block.nsite; i += P::kLanes) {
            if (walk.position < nx && walk.template vector<P>(block.site + i, cell + i)) continue;
            for (int64_t k = i; k < i + P::kLanes; ++k) cell[k] = static_cast<Cell>(walk.next(block.site[k]));
        }
    }
    for (; i < block.nsite; ++i) cell[i] = static_cast<Cell>(walk.next(block.site[i]));
    if (block.position != nullptr) *block.position = walk.position;
}

template <class T, CellWidth kWidth>
int32_t search(const SearchBlock<T>& block) {
    auto* const cell = static_cast<CellOf<kWidth>*>(block.cell);
    if (needs_wide_cells<T, kWidth>(block.nx))
        search_sorted<T, true>(block, cell);
    else
        search_sorted<T, false>(block, cell);
    return DfStatusOk;
}

}  // namespace
}  // namespace nax::fit

NAX_DF_SEARCH_FAMILY(Sorted)
