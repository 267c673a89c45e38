// Cells by formula and by bisection between bounds, for one vector of sites or for a single one. The namespace is the
// instruction set's.
#pragma once

#include <limits>

#include "fit/packs.h"
#include "fit/partition_index.h"
#include "fit/search/search.h"

namespace nax::fit {
inline namespace NAX_ISA {

// --- uniform partitions

// Vectors truncate numbers below this; larger partitions, which only two stored ends make possible, go site by site.
inline constexpr int64_t kMostPackedPoints = int64_t{1} << 51;

// The cell is truncated (scale * (site - x[0])) + 1. No correction follows, so a site on an interior breakpoint gets
// the cell that the rounded product gives. With more points than the significand counts the product can't tell the last
// cell from what lies right of it; then a comparison does.
template <class T>
struct UniformCells {
    T left, right, scale, limit, beyond;
    int64_t nx;

    UniformCells(int64_t points, const T* ends, T steps_per_unit)
        : left(ends[0]), right(ends[1]), scale(steps_per_unit), limit(step_limit(points)), beyond(right), nx(points) {
        const bool countable = nx <= int64_t{1} << std::numeric_limits<T>::digits;
        if (countable) beyond = std::numeric_limits<T>::infinity();
    }
    // What the products are limited to, so that they become integers: not below nx, which T may not hold, and below
    // 2^63.
    static constexpr T step_limit(int64_t nx) {
        const T above = static_cast<T>(nx) * (1 + std::numeric_limits<T>::epsilon());
        return above < T(0x1p63) ? above : T(0x1.fffffep62);
    }
    template <class P>
    [[gnu::always_inline]] typename P::I find(typename P::F site) const {
        const auto steps = P::mul(P::set(scale), P::sub(site, P::set(left)));
        const auto guess = P::iadd(P::truncate(P::clamp(steps, P::set(limit))), P::iset(1));
        auto c = P::imin(guess, P::iset(nx));
        c = P::select(P::le(P::set(left), site), c, P::iset(0));
        c = P::select(P::lt(P::set(beyond), site), P::iset(nx), c);
        return P::select(P::eq(site, P::set(right)), P::iset(nx - 1), c);
    }
};

// --- general partitions

inline constexpr int kSureHalvings = 2, kCloseBounds = 4;

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
    // A single site goes point by point where the bounds are close: what it would wait for is the comparison before.
    if constexpr (P::kLanes == 1) {
        if (high - low <= kCloseBounds) {
            while (low < high && x[low] <= site) ++low;
            return low;
        }
    }
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

template <class T, class Bounds>
struct BoundedCells {
    const T* x;
    int64_t nx;
    Bounds bounds;

    template <class P>
    [[gnu::always_inline]] typename P::I find(typename P::F site) const {
        typename P::I low, high;
        bounds.template find<P>(site, low, high);
        const auto c = bisect<P>(x, site, low, high, nx);
        return P::select(P::eq(site, P::set(x[nx - 1])), P::iset(nx - 1), c);
    }
};

template <class T, class Body>
[[gnu::always_inline]] inline void with_fine_bounds(const IndexHead& head, const T* x, const Body& body) {
    body(BoundedCells<T, FineBounds<T>>{
        x, head.nx, {head.fine, x[0], static_cast<T>(head.fine_scale), static_cast<T>(head.fine_bins)}});
}
// Calls body with the finder that suits the index of a general partition.
template <class T, class Body>
[[gnu::always_inline]] inline void with_bounds(int64_t nx, const T* x, const int64_t* bin_table, T scale,
                                               const Body& body) {
    const IndexHead* const head = bin_table == nullptr ? nullptr : index_head(bin_table, nx);
    if (bin_table == nullptr || (head != nullptr && (head->nx != nx || head->x != x)))
        return body(BoundedCells<T, NoBounds<T>>{x, nx, {nx}});
    if (head != nullptr && head->fine_bins != 0) return with_fine_bounds(*head, x, body);
    body(BoundedCells<T, PairBounds<T>>{x, nx, {bin_table, x[0], scale, static_cast<T>(bins_for(nx))}});
}

// Calls body with the finder for any partition of a task. It serves all search algorithms but the callers' own: their
// cells are the same.
template <class T, class Body>
[[gnu::always_inline]] inline void with_cell_finder(const Task& task, const Body& body) {
    const T* const x = partition<T>(task);
    if (task.xhint == kUniform) return body(UniformCells<T>(task.nx, x, static_cast<T>(task.nx - 1) / (x[1] - x[0])));
    const int64_t* const table = current_index(task);
    if (table != nullptr) {
        const IndexHead* const head = reinterpret_cast<const IndexHead*>(table) - 1;
        if (head->fine_bins != 0) [[likely]]
            return with_fine_bounds(*head, x, body);
    }
    with_bounds<T>(task.nx, x, table, bin_scale<T>(task), body);
}

}  // namespace NAX_ISA
}  // namespace nax::fit
