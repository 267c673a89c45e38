// Uniform partition: the cell follows from one multiplication, truncated (scale * (site - x[0])) + 1. No correction
// follows, so a site on an interior breakpoint gets the cell that the rounded product gives.
#include "fit/search/for_each_site.h"

namespace nax::fit {
namespace {
using namespace NAX_FIT_SIMD;

template <class T, bool kWide, class Cell>
void search_uniform(const SearchBlock<T>& block, Cell* cell) {
    const T left = block.x[0], right = block.x[1];
    const int64_t nx = block.nx;
    for_each_site<T, kWide>(block, cell, [=](auto pack, auto site) {
        using P = decltype(pack);
        const auto steps = P::mul(P::set(block.scale), P::sub(site, P::set(left)));
        const auto guess = P::iadd(P::truncate(P::clamp(steps, P::set(static_cast<T>(nx)))), P::iset(1));
        auto c = P::imin(guess, P::iset(nx));
        c = P::select(P::le(P::set(left), site), c, P::iset(0));
        return P::select(P::eq(site, P::set(right)), P::iset(nx - 1), c);
    });
}

template <class T, CellWidth kWidth>
int32_t search(const SearchBlock<T>& block) {
    auto* const cell = static_cast<CellOf<kWidth>*>(block.cell);
    if (needs_wide_cells<T, kWidth>(block.nx))
        search_uniform<T, true>(block, cell);
    else
        search_uniform<T, false>(block, cell);
    return DfStatusOk;
}

}  // namespace
}  // namespace nax::fit

NAX_DF_SEARCH_FAMILY(Uniform)
