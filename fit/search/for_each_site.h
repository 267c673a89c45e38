// Applies a cell formula to all sites of a block, full vectors first. Included by *_simd.cpp files only.
#pragma once

#include "fit/search/member.h"
#include "fit/packs.h"

namespace nax::fit {
inline namespace NAX_ISA {

// formula(P{}, sites) gives the cells of P::kLanes sites.
template <class P, class T, class Cell, class Formula>
[[gnu::always_inline]] static inline void for_each_site(const SearchBlock<T>& block, Cell* cell,
                                                        const Formula& formula) {
    int64_t i = 0;
    for (; i + P::kLanes <= block.nsite; i += P::kLanes)
        P::store_cells(cell + i, formula(P{}, P::load(block.site + i)));
    if constexpr (P::kLanes > 1)
        for (; i < block.nsite; ++i) cell[i] = static_cast<Cell>(formula(Lane<T>{}, block.site[i]));
}

}  // namespace NAX_ISA
}  // namespace nax::fit
