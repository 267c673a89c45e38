// Polynomial index and local coordinate t = site - x[p] of the sites of a block.
#include "fit/eval/evaluator.h"
#include "fit/packs.h"

namespace nax::fit {
namespace {

template <class P, class T, class Cell>
[[gnu::always_inline]] inline void locate_at(EvalBlock<T>& block, const Cell* cell, int64_t i) {
    const Task& task = *block.task;
    const T* const x = partition<T>(task);
    const auto p = P::imin(P::imax(P::isub(P::load_cells(cell + i), P::iset(1)), P::iset(0)), P::iset(task.nx - 2));
    const auto left =
        has_uniform_grid(task) ? P::fma(P::from_int(p), P::set(block.step), P::set(x[0])) : P::gather(x, p);
    P::store_cells(block.index + i, p);
    P::store(block.local + i, P::sub(P::load(block.site + i), left));
}

// The same for a vector of ascending sites in one cell.
template <class P, class T>
[[gnu::always_inline]] inline void locate_run(EvalBlock<T>& block, int64_t cell, int64_t i) {
    const Task& task = *block.task;
    const T* const x = partition<T>(task);
    const int64_t p = polynomial_index(cell < 0 ? 0 : cell, task.nx);
    const T left = has_uniform_grid(task) ? Lane<T>::fma(static_cast<T>(p), block.step, x[0]) : x[p];
    P::store_cells(block.index + i, P::iset(p));
    P::store(block.local + i, P::sub(P::load(block.site + i), P::set(left)));
}

// Local coordinates of sites that share one cell. Every index is set, for the evaluators that read one for each site.
template <class T, class Cell>
void locate_one_cell(EvalBlock<T>& block, const Cell* cell) {
    using P = Pack<T>;
    locate_at<Lane<T>>(block, cell, 0);
    const Task& task = *block.task;
    const T* const x = partition<T>(task);
    const int64_t p = block.index[0];
    const T left = has_uniform_grid(task) ? Lane<T>::fma(static_cast<T>(p), block.step, x[0]) : x[p];
    int64_t i = 0;
    for (; i + P::kLanes <= block.n; i += P::kLanes) {
        P::store(block.local + i, P::sub(P::load(block.site + i), P::set(left)));
        P::store_cells(block.index + i, P::iset(p));
    }
    for (; i < block.n; ++i) {
        block.local[i] = block.site[i] - left;
        block.index[i] = p;
    }
}

template <class T, class Cell>
void locate_all(EvalBlock<T>& block, const Cell* cell) {
    using P = Pack<T>;
    const bool task_fits = block.task->nx < INT32_MAX;
    // A walk never steps back: what its first and last site share, all do.
    block.one_cell = block.try_one_cell && task_fits && cell[0] == cell[block.n - 1];
    if (block.one_cell) return locate_one_cell(block, cell);
    int64_t i = 0;
    if (task_fits && block.try_one_cell)
        for (; i + P::kLanes <= block.n; i += P::kLanes) {
            if (cell[i] == cell[i + P::kLanes - 1])
                locate_run<P>(block, cell[i], i);
            else
                locate_at<P>(block, cell, i);
        }
    else if (task_fits)
        for (; i + P::kLanes <= block.n; i += P::kLanes) locate_at<P>(block, cell, i);
    for (; i < block.n; ++i) locate_at<Lane<T>>(block, cell, i);
}

template <class T>
void locate_cells(EvalBlock<T>& block, bool wide_cells) {
    if (block.located) return;
    block.located = true;
    if (wide_cells)
        locate_all(block, static_cast<const int64_t*>(block.cell));
    else
        locate_all(block, static_cast<const int32_t*>(block.cell));
}

}  // namespace

template <>
void locate(EvalBlock<double>& block, bool wide_cells) {
    locate_cells(block, wide_cells);
}
template <>
void locate(EvalBlock<float>& block, bool wide_cells) {
    locate_cells(block, wide_cells);
}

}  // namespace nax::fit
