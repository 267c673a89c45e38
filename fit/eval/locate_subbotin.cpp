// The piece of a Subbotin spline: that of the cell's left point, or the next one when the knot between them is at or
// left of the site. Pieces 0 and nx - 1 extend beyond the ends.
#include "fit/eval/evaluator.h"
#include "fit/subgrid.h"

namespace nax::fit {

template <class T>
void locate_subbotin(EvalBlock<T>& block, bool wide_cells) {
    if (block.located) return;
    block.located = true;
    const Subgrid<T> knots = subgrid_of<T>(*block.task);
    for (int64_t i = 0; i < block.n; ++i) {
        const T site = block.site[i];
        int64_t p = polynomial_index(cell_at(block, wide_cells, i), knots.nx);
        if (knots[p + 1] <= site) ++p;
        block.index[i] = p;
        block.local[i] = site - knots.point(p);
    }
}

template void locate_subbotin(EvalBlock<double>&, bool);
template void locate_subbotin(EvalBlock<float>&, bool);

}  // namespace nax::fit
