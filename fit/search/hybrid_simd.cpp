// General partition: the partition index bounds the cell of a site, and bisection finds it, for a vector of sites at
// once. With about one point to a bin two halvings settle almost every vector. Partitions of very uneven density take
// more of them, at most the logarithm of nx.
#include "fit/partition_index.h"
#include "fit/search/for_each_site.h"

namespace nax::fit {
namespace {
using namespace NAX_FIT_SIMD;

constexpr int kSureHalvings = 2;

// One halving of the lanes that are still open.
template <class P, class T>
[[gnu::always_inline]] inline void halve(const T* x, typename P::F site, typename P::M open, typename P::I last,
                                         typename P::I& low, typename P::I& high) {
    const auto middle = P::half(P::iadd(low, high));
    // A settled lane may stand on nx.
    const auto above = P::both(open, P::le(P::gather(x, P::imin(middle, last)), site));
    high = P::select(P::first_only(open, above), middle, high);
    low = P::select(above, P::iadd(middle, P::iset(1)), low);
}

// The number of points not above each site, known to be from `low` to `high`. The first halvings, which settle most
// vectors, are taken without asking: a branch on each would be mispredicted too often.
template <class P, class T>
[[gnu::always_inline]] inline typename P::I bisect(const T* x, typename P::F site, typename P::I low,
                                                   typename P::I high, int64_t nx) {
    const auto last = P::iset(nx - 1);
#pragma GCC unroll 2
    for (int k = 0; k < kSureHalvings; ++k) halve<P>(x, site, P::ilt(low, high), last, low, high);
    for (auto open = P::ilt(low, high); P::any(open); open = P::ilt(low, high))
        halve<P>(x, site, open, last, low, high);
    return low;
}

// Bounds by the finer index, by the pairs, and by nothing.
template <class T>
struct FineBounds {
    const int32_t* count;
    T origin, scale, bins;
    template <class P>
    [[gnu::always_inline]] void find(typename P::F site, typename P::I& low, typename P::I& high) const {
        const auto b = P::clamp(P::mul(P::set(scale), P::sub(site, P::set(origin))), P::set(bins));
        P::gather_counts(count, P::truncate(b), low, high);
    }
};
template <class T>
struct PairBounds {
    const int64_t* pair;
    T origin, scale, bins;
    template <class P>
    [[gnu::always_inline]] void find(typename P::F site, typename P::I& low, typename P::I& high) const {
        const auto b = P::truncate(P::clamp(P::mul(P::set(scale), P::sub(site, P::set(origin))), P::set(bins)));
        const auto first = P::iadd(b, b);
        low = P::gather_wide(pair, first);
        // x[hi] is right of every site of the bin but in the last bin, where the right end is still to be counted.
        high = P::iadd(P::gather_wide(pair, P::iadd(first, P::iset(1))), P::iset(1));
    }
};
template <class T>
struct NoBounds {
    int64_t nx;
    template <class P>
    [[gnu::always_inline]] void find(typename P::F, typename P::I& low, typename P::I& high) const {
        low = P::iset(0);
        high = P::iset(nx);
    }
};

template <class T, bool kWide, class Cell, class Bounds>
void search_bounded(const SearchBlock<T>& block, Cell* cell, const Bounds& bounds) {
    const int64_t nx = block.nx;
    const T* const x = block.x;
    const T right = x[nx - 1];
    for_each_site<PackFor<T, kWide>>(block, cell, [=](auto pack, auto site) {
        using P = decltype(pack);
        typename P::I low, high;
        bounds.template find<P>(site, low, high);
        const auto c = bisect<P>(x, site, low, high, nx);
        return P::select(P::eq(site, P::set(right)), P::iset(nx - 1), c);
    });
}

template <class T, bool kWide, class Cell>
void search_hybrid(const SearchBlock<T>& block, Cell* cell) {
    const IndexHead* const head = block.bin_table == nullptr ? nullptr : index_head(block.bin_table, block.nx);
    if (block.bin_table == nullptr || (head != nullptr && (head->nx != block.nx || head->x != block.x)))
        return search_bounded<T, kWide>(block, cell, NoBounds<T>{block.nx});
    if (head == nullptr || head->fine_bins == 0) {
        const PairBounds<T> pairs{block.bin_table, block.x[0], block.scale, static_cast<T>(bins_for(block.nx))};
        return search_bounded<T, kWide>(block, cell, pairs);
    }
    const FineBounds<T> fine{head->fine, block.x[0], static_cast<T>(head->fine_scale), static_cast<T>(head->fine_bins)};
    search_bounded<T, kWide>(block, cell, fine);
}

template <class T, CellWidth kWidth>
int32_t search(const SearchBlock<T>& block) {
    auto* const cell = static_cast<CellOf<kWidth>*>(block.cell);
    if (needs_wide_cells<T, kWidth>(block.nx))
        search_hybrid<T, true>(block, cell);
    else
        search_hybrid<T, false>(block, cell);
    return DfStatusOk;
}

}  // namespace
}  // namespace nax::fit

NAX_DF_SEARCH_FAMILY(Hybrid)
