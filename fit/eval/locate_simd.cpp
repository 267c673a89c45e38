// Polynomial index and local coordinate t = site - x[p] of the sites of a block.
#include "fit/eval/evaluator.h"
#include "fit/simd/pack.h"

namespace nax::fit {
namespace {
using namespace NAX_FIT_SIMD;

template <class P, class T, class Cell>
[[gnu::always_inline]] inline void locate_at(EvalBlock<T>& block, const Cell* cell, int64_t i) {
    const Task& task = *block.task;
    const T* const x = partition<T>(task);
    const auto p = P::imin(P::imax(P::isub(P::load_cells(cell + i), P::iset(1)), P::iset(0)), P::iset(task.nx - 2));
    const auto left = has_uniform_grid(task) ? P::fma(P::from_int(p), P::set(block.step), P::set(x[0])) : P::gather(x, p);
    P::store_cells(block.index + i, p);
    P::store(block.local + i, P::sub(P::load(block.site + i), left));
}

template <class T, class Cell>
void locate_all(EvalBlock<T>& block, const Cell* cell) {
    using P = Pack<T>;
    int64_t i = 0;
    if (block.task->nx < INT32_MAX)
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
void locate(EvalBlock<double>& block, bool wide_cells) { locate_cells(block, wide_cells); }
template <>
void locate(EvalBlock<float>& block, bool wide_cells) { locate_cells(block, wide_cells); }

}  // namespace nax::fit
