// Uniform partition: the cell follows from one multiplication, truncated (scale * (site - x[0])) + 1. No correction
// follows, so a site on an interior breakpoint gets the cell that the rounded product gives. With more points than the
// significand counts the product can't tell the last cell from what lies right of it; then a comparison does.
#include <limits>

#include "fit/search/for_each_site.h"

namespace nax::fit {
namespace {
using namespace NAX_FIT_SIMD;

// Vectors truncate numbers below this; larger partitions, which only two stored ends make possible, go site by site.
constexpr int64_t kMostPackedPoints = int64_t{1} << 51;

// What the products are limited to, so that they become integers: not below nx, which T may not hold, and below 2^63.
template <class T>
constexpr T step_limit(int64_t nx) {
    const T above = static_cast<T>(nx) * (1 + std::numeric_limits<T>::epsilon());
    return above < T(0x1p63) ? above : T(0x1.fffffep62);
}

template <class P, class T, class Cell>
void search_uniform(const SearchBlock<T>& block, Cell* cell) {
    const T left = block.x[0], right = block.x[1], limit = step_limit<T>(block.nx);
    const int64_t nx = block.nx;
    const bool countable = nx <= int64_t{1} << std::numeric_limits<T>::digits;
    const T beyond = countable ? std::numeric_limits<T>::infinity() : right;
    for_each_site<P>(block, cell, [=](auto lanes, auto site) {
        using V = decltype(lanes);
        const auto steps = V::mul(V::set(block.scale), V::sub(site, V::set(left)));
        const auto guess = V::iadd(V::truncate(V::clamp(steps, V::set(limit))), V::iset(1));
        auto c = V::imin(guess, V::iset(nx));
        c = V::select(V::le(V::set(left), site), c, V::iset(0));
        c = V::select(V::lt(V::set(beyond), site), V::iset(nx), c);
        return V::select(V::eq(site, V::set(right)), V::iset(nx - 1), c);
    });
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
