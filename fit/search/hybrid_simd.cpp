// General partition: the partition index bounds the cell of a site, and bisection finds it, for a vector of sites at
// once. With about one point to a bin two halvings settle almost every vector. Partitions of very uneven density take
// more of them, at most the logarithm of nx.
#include "fit/search/bounded.h"
#include "fit/search/for_each_site.h"

namespace nax::fit {
namespace {

template <class P, class T, class Cell>
void search_hybrid(const SearchBlock<T>& block, Cell* cell) {
    with_bounds(block.nx, block.x, block.bin_table, block.scale, [&](const auto& cells) {
        for_each_site<P>(block, cell,
                         [=](auto lanes, auto site) { return cells.template find<decltype(lanes)>(site); });
    });
}

template <class T, CellWidth kWidth>
int32_t search(const SearchBlock<T>& block) {
    auto* const cell = static_cast<CellOf<kWidth>*>(block.cell);
    if (needs_wide_cells<T, kWidth>(block.nx))
        search_hybrid<PackFor<T, true>>(block, cell);
    else
        search_hybrid<Pack<T>>(block, cell);
    return DfStatusOk;
}

}  // namespace
}  // namespace nax::fit

NAX_DF_SEARCH_FAMILY(Hybrid)
