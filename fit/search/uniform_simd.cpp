// Uniform partition: the cell follows from one multiplication.
#include "fit/search/bounded.h"
#include "fit/search/for_each_site.h"

namespace nax::fit {
namespace {

template <class P, class T, class Cell>
void search_uniform(const SearchBlock<T>& block, Cell* cell) {
    const UniformCells<T> cells(block.nx, block.x, block.scale);
    for_each_site<P>(block, cell, [=](auto lanes, auto site) { return cells.template find<decltype(lanes)>(site); });
}

template <class T, CellWidth kWidth>
int32_t search(const SearchBlock<T>& block) {
    auto* const cell = static_cast<CellOf<kWidth>*>(block.cell);
    if (block.nx > kMostPackedPoints)
        search_uniform<Lane<T>>(block, cell);
    else if (needs_wide_cells<T, kWidth>(block.nx))
        search_uniform<PackFor<T, true>>(block, cell);
    else
        search_uniform<Pack<T>>(block, cell);
    return DfStatusOk;
}

}  // namespace
}  // namespace nax::fit

NAX_DF_SEARCH_FAMILY(Uniform)
