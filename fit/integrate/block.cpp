// One block of limit pairs: searches, order of the limits, pieces, evaluators.
#include "fit/integrate/block.h"

#include "fit/subgrid.h"

namespace nax::fit {
namespace {

constexpr int64_t clamp_cell(int64_t cell, int64_t nx) { return cell < 0 ? 0 : cell > nx ? nx : cell; }

// Without a branch: the order of random limits can't be predicted.
constexpr int64_t choose(bool first, int64_t a, int64_t b) {
    const int64_t mask = -static_cast<int64_t>(first);
    return (a & mask) | (b & ~mask);
}

// Limits outside the partition belong to the end pieces.
constexpr int64_t interval_piece(int64_t cell, int64_t nx) {
    const int64_t p = cell > 0 ? cell - 1 : 0;
    return p > nx - 2 ? nx - 2 : p;
}
// A Subbotin spline changes to the next piece at the knot inside the cell.
template <class T>
int64_t parabola_piece(const Subgrid<T>& knots, int64_t cell, T limit) {
    if (cell == 0) return 0;
    if (cell >= knots.nx) return knots.nx - 1;
    return knots[cell] <= limit ? cell : cell - 1;
}

}  // namespace

template <class T>
int32_t integrate_block(const Integration<T>& call, int64_t first, int64_t count, SearchPositions& positions, T* work) {
    T left_buffer[kBlockLimits], right_buffer[kBlockLimits];
    int64_t a_cell[kBlockLimits], b_cell[kBlockLimits];
    const T* const left = call.left.block(first, count, left_buffer);
    const T* const right = call.right.block(first, count, right_buffer);
    int32_t status = call.left.search(count, left, &positions.left, a_cell);
    if (status < 0) return status;
    status = call.right.search(count, right, &positions.right, b_cell);
    if (status < 0) return status;

    LimitBlock<T> block;
    block.count = count;
    block.added = nullptr;
    const int64_t nx = call.task->nx;
    const bool parabolas = call.evaluator == kIntegrateSubbotin;
    for (int64_t i = 0; i < count; ++i) {
        const T l = left[i], r = right[i];
        const bool forward = r >= l;  // false for a NaN
        const int64_t l_cell = clamp_cell(a_cell[i], nx), r_cell = clamp_cell(b_cell[i], nx);
        const T pair[] = {l, r};
        block.sign[i] = static_cast<T>(2 * static_cast<int>(forward) - 1);
        block.a[i] = pair[!forward];
        block.b[i] = pair[forward];
        a_cell[i] = choose(forward, l_cell, r_cell);
        b_cell[i] = choose(forward, r_cell, l_cell);
        block.p[i] = interval_piece(a_cell[i], nx);
        block.q[i] = interval_piece(b_cell[i], nx);
    }
    if (parabolas) {
        const Subgrid<T> knots = subgrid_of<T>(*call.task);
        for (int64_t i = 0; i < count; ++i) {
            block.p[i] = parabola_piece(knots, a_cell[i], block.a[i]);
            block.q[i] = parabola_piece(knots, b_cell[i], block.b[i]);
        }
    }
    const bool callbacks = call.has_callbacks();
    if (callbacks) {
        status = run_callbacks(call, block, a_cell, b_cell, work);
        if (status < 0) return status;
    }
    const auto& table = callbacks ? IntegralTables<T>::_Integrate1DDispatchCB : IntegralTables<T>::_Integrate1DDispatch;
    for (int64_t j = 0; j < call.ny; ++j) {
        status = table[call.evaluator](&call, j, &block, call.r + first * call.limit_stride + j * call.function_stride,
                                       call.limit_stride);
        if (status < 0) return status;
    }
    return DfStatusOk;
}
template int32_t integrate_block(const Integration<double>&, int64_t, int64_t, SearchPositions&, double*);
template int32_t integrate_block(const Integration<float>&, int64_t, int64_t, SearchPositions&, float*);

}  // namespace nax::fit
