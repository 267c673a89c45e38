// One block of limit pairs: searches, order of the limits, pieces, evaluators.
#include "fit/integrate/block.h"

#include "fit/search/bounded.h"
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

// Pair i from its limits and their cells, which change places with them.
template <class T>
[[gnu::always_inline]] inline void order_pair(LimitBlock<T>& block, int64_t i, T l, T r, int64_t& l_cell,
                                              int64_t& r_cell, int64_t nx) {
    const bool forward = r >= l;  // false for a NaN
    const T pair[] = {l, r};
    const int64_t left = l_cell, right = r_cell;
    block.sign[i] = static_cast<T>(2 * static_cast<int>(forward) - 1);
    block.a[i] = pair[!forward];
    block.b[i] = pair[forward];
    l_cell = choose(forward, left, right);
    r_cell = choose(forward, right, left);
    block.p[i] = interval_piece(l_cell, nx);
    block.q[i] = interval_piece(r_cell, nx);
}
template <class T>
void find_parabolas(const Integration<T>& call, LimitBlock<T>& block, const int64_t* a_cell, const int64_t* b_cell) {
    const Subgrid<T> knots = subgrid_of<T>(*call.task);
    for (int64_t i = 0; i < block.count; ++i) {
        block.p[i] = parabola_piece(knots, a_cell[i], block.a[i]);
        block.q[i] = parabola_piece(knots, b_cell[i], block.b[i]);
    }
}
template <class T>
int32_t evaluate_functions(const Integration<T>& call, const IntegralFunction* table, const LimitBlock<T>& block,
                           int64_t first) {
    for (int64_t j = 0; j < call.ny; ++j) {
        T* const r = call.r + first * call.limit_stride + j * call.function_stride;
        if (const int32_t status = table[call.evaluator](&call, j, &block, r, call.limit_stride); status < 0)
            return status;
    }
    return DfStatusOk;
}

}  // namespace

template <class T>
void integrate_few(const Integration<T>& call) {
    LimitBlock<T> block;
    int64_t a_cell[kFewPairs], b_cell[kFewPairs];
    block.count = call.nlim;
    block.added = nullptr;
    with_cell_finder<T>(
        *call.task, [&](const auto& cells) __attribute__((always_inline)) {
            for (int64_t i = 0; i < call.nlim; ++i) {
                const T l = call.left.values[i], r = call.right.values[i];
                a_cell[i] = cells.template find<Lane<T>>(l), b_cell[i] = cells.template find<Lane<T>>(r);
                order_pair(block, i, l, r, a_cell[i], b_cell[i], call.task->nx);
            }
        });
    if (call.evaluator == kIntegrateSubbotin) find_parabolas(call, block, a_cell, b_cell);
    evaluate_functions(call, IntegralTables<T>::_Integrate1DDispatch, block, 0);
}
template void integrate_few(const Integration<double>&);
template void integrate_few(const Integration<float>&);

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
    for (int64_t i = 0; i < count; ++i) {
        a_cell[i] = clamp_cell(a_cell[i], nx), b_cell[i] = clamp_cell(b_cell[i], nx);
        order_pair(block, i, left[i], right[i], a_cell[i], b_cell[i], nx);
    }
    if (call.evaluator == kIntegrateSubbotin) find_parabolas(call, block, a_cell, b_cell);
    const bool callbacks = call.has_callbacks();
    if (callbacks) {
        status = run_callbacks(call, block, a_cell, b_cell, work);
        if (status < 0) return status;
    }
    return evaluate_functions(
        call, callbacks ? IntegralTables<T>::_Integrate1DDispatchCB : IntegralTables<T>::_Integrate1DDispatch, block,
        first);
}
template int32_t integrate_block(const Integration<double>&, int64_t, int64_t, SearchPositions&, double*);
template int32_t integrate_block(const Integration<float>&, int64_t, int64_t, SearchPositions&, float*);

}  // namespace nax::fit
