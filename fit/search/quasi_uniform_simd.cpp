// Quasi-uniform partition: the guess of the uniform formula, then a walk to the cell. A few steps are taken for a whole
// vector of sites; what is then still on its way walks alone.
#include "fit/search/for_each_site.h"
#include "fit/search/walk.h"

namespace nax::fit {
namespace {

// Steps taken without asking whether a site still moves, and with asking.
constexpr int kSureSteps = 1;
constexpr int kVectorSteps = 3;

// One step towards the cell; lanes that rest stay. Says which lanes moved.
template <class P, class T>
[[gnu::always_inline]] inline typename P::M step(const T* x, typename P::I nx, typename P::F site, typename P::I& c) {
    const auto one = P::iset(1), zero = P::iset(0);
    const auto up = P::both(P::ilt(c, nx), P::le(P::gather(x, P::imin(c, P::isub(nx, one))), site));
    const auto below = P::isub(c, one);
    const auto down = P::both(P::ilt(zero, c), P::lt(site, P::gather(x, P::imax(below, zero))));
    c = P::select(down, below, P::count(c, up));
    return P::either(up, down);
}

template <class P, class T>
[[gnu::noinline]] typename P::I finish(const T* x, int64_t nx, typename P::F site, typename P::I c) {
    T sites[P::kLanes];
    int64_t cells[P::kLanes];
    P::store(sites, site);
    P::store_cells(cells, c);
    for (int k = 0; k < P::kLanes; ++k) {
        const int64_t g = cells[k];
        cells[k] = g < nx && sites[k] >= x[g] ? walk_up(x, nx, g, sites[k]) : walk_down(x, g, sites[k]);
    }
    return P::load_cells(cells);
}

template <class T, bool kWide, class Cell>
void search_quasi_uniform(const SearchBlock<T>& block, Cell* cell) {
    const int64_t nx = block.nx;
    const T* const x = block.x;
    const T left = x[0], right = x[nx - 1], scale = block.scale;
    for_each_site<PackFor<T, kWide>>(block, cell, [=](auto pack, auto site) {
        using P = decltype(pack);
        const auto guess = P::clamp(P::mul(P::set(scale), P::sub(site, P::set(left))), P::set(static_cast<T>(nx)));
        auto c = P::imin(P::iadd(P::truncate(guess), P::iset(1)), P::iset(nx));
        for (int k = 0; k < kSureSteps; ++k) step<P>(x, P::iset(nx), site, c);
        bool moving = true;
        for (int k = 0; moving && k < kVectorSteps; ++k) moving = P::any(step<P>(x, P::iset(nx), site, c));
        if (moving) c = finish<P>(x, nx, site, c);
        return P::select(P::eq(site, P::set(right)), P::iset(nx - 1), c);
    });
}

template <class T, CellWidth kWidth>
int32_t search(const SearchBlock<T>& block) {
    auto* const cell = static_cast<CellOf<kWidth>*>(block.cell);
    if (needs_wide_cells<T, kWidth>(block.nx))
        search_quasi_uniform<T, true>(block, cell);
    else
        search_quasi_uniform<T, false>(block, cell);
    return DfStatusOk;
}

}  // namespace
}  // namespace nax::fit

NAX_DF_SEARCH_FAMILY(QuasiUniform)
