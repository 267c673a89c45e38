// The piece of a Subbotin spline: that of the cell's left point, or the next one when the knot between them is at or
// left of the site. Pieces 0 and nx - 1 extend beyond the ends.
#include "fit/eval/evaluator.h"
#include "fit/packs.h"
#include "fit/subgrid.h"

namespace nax::fit {
namespace {

// knot(p) is the knot between pieces p and p + 1, point(p) the point of piece p.
template <class T, class Cell, class Knot, class Point>
[[gnu::always_inline]] inline void locate_pieces(EvalBlock<T>& block, const Cell* cell, const Knot& knot,
                                                 const Point& point) {
    using P = Pack<T>;
    const T* const site = block.site;
    const int64_t nx = block.task->nx, n = block.n;
    const auto locate_one = [&](int64_t i) {
        int64_t p = polynomial_index(cell[i], nx);
        p += knot(p) <= site[i] ? 1 : 0;
        block.index[i] = p;
        block.local[i] = site[i] - point(p);
    };
    int64_t i = 0;
    // Vectors of ascending sites in one cell have two pieces at most.
    if (block.try_one_cell && nx < INT32_MAX)
        for (; i + P::kLanes <= n; i += P::kLanes) {
            if (cell[i] != cell[i + P::kLanes - 1]) {
                for (int64_t k = i; k < i + P::kLanes; ++k) locate_one(k);
                continue;
            }
            const int64_t p = polynomial_index(cell[i], nx);
            const auto sites = P::load(site + i);
            const auto next = P::le(P::set(knot(p)), sites);
            P::store_cells(block.index + i, P::count(P::iset(p), next));
            P::store(block.local + i, P::sub(sites, P::choose(next, P::set(point(p + 1)), P::set(point(p)))));
        }
    for (; i < n; ++i) locate_one(i);
}

// The two usual kinds of knots on a general partition, and all others by the way that construction takes.
template <class T, class Cell>
void locate_on_subgrid(EvalBlock<T>& block, const Cell* cell) {
    const Subgrid<T> knots = subgrid_of<T>(*block.task);
    const T *const x = knots.x, *const ic = knots.ic;
    const auto point = [x](int64_t p) { return x[p]; };
    if (!knots.uniform_partition && ic == nullptr)
        return locate_pieces(
            block, cell, [x](int64_t p) { return (x[p] + x[p + 1]) / 2; }, point);
    if (!knots.uniform_partition && !knots.uniform_knots)
        return locate_pieces(
            block, cell, [ic](int64_t p) { return ic[p + 1]; }, point);
    locate_pieces(
        block, cell, [&](int64_t p) { return knots[p + 1]; }, [&](int64_t p) { return knots.point(p); });
}

template <class T>
void locate_in_pieces(EvalBlock<T>& block, bool wide_cells) {
    if (block.located) return;
    block.located = true;
    if (wide_cells)
        locate_on_subgrid(block, static_cast<const int64_t*>(block.cell));
    else
        locate_on_subgrid(block, static_cast<const int32_t*>(block.cell));
}

}  // namespace

template <>
void locate_subbotin(EvalBlock<double>& block, bool wide_cells) {
    locate_in_pieces(block, wide_cells);
}
template <>
void locate_subbotin(EvalBlock<float>& block, bool wide_cells) {
    locate_in_pieces(block, wide_cells);
}

}  // namespace nax::fit
