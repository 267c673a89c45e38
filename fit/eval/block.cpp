// One block of sites: cells, all functions, results in the caller's layout.
#include "fit/eval/evaluation.h"

namespace nax::fit {

template <class T>
const T* block_sites(const Evaluation<T>& evaluation, int64_t first, int64_t n, T* buffer) {
    if (!evaluation.uniform_sites) return evaluation.site + first;
    expand_uniform_sites(evaluation.site[0], evaluation.site_step, first, n, buffer);
    return buffer;
}

template <class T>
int32_t find_cells(const Evaluation<T>& evaluation, int64_t n, const T* site, int64_t& position, void* cell,
                   int64_t flags) {
    const BlockSearch<T>& search = evaluation.search;
    if (search.algorithm == kSearchSorted && position > 0) {
        if (site[0] < search.x[position - 1]) position = 0;
        // A whole block of ascending sites in the cell where the last one ended.
        if (position > 0 && position < search.nx && site[n - 1] < search.x[position] && cell_width(flags, search.nx) != kWidth32) {
            for (int64_t i = 0; i < n; ++i) static_cast<int64_t*>(cell)[i] = position;
            return DfStatusOk;
        }
    }
    return SearchTables<T>::_Search1DDispatch[search.algorithm](search.nx, search.x, n, site, &position,
                                                                search.callback, search.parameters, search.bin_table,
                                                                cell, flags, search.scale);
}

template <class T>
int32_t evaluate_functions(const Evaluation<T>& evaluation, EvaluatorFunction evaluator, EvalBlock<T>& block,
                           int64_t first, int64_t n, int thread) {
    const ResultLayout& layout = evaluation.layout;
    const int64_t planes = layout.buffer_planes();
    T* const buffer = evaluation.buffer == nullptr ? nullptr : evaluation.buffer + thread * planes * kBlockSites;
    block.plane_stride = layout.plane_stride();
    for (int64_t j = 0; j < layout.ny; ++j) {
        block.plane = layout.plane(evaluation.r, buffer, j, first);
        if (const int32_t status = evaluator(&block, j)) return status;
        if (layout.hint == kResultFunctions && planes != 0)
            interleave(buffer, planes, n, evaluation.r + (j * layout.nsite + first) * planes);
    }
    if (layout.buffers_all()) interleave(buffer, planes, n, evaluation.r + first * planes);
    return DfStatusOk;
}

template <class T>
void copy_given_cells(const Evaluation<T>& evaluation, int64_t first, int64_t n, int64_t* cell) {
    const void* const given = evaluation.cell_from(first);
    const int64_t nx = evaluation.task->nx;
    for (int64_t i = 0; i < n; ++i) {
        const int64_t c =
            evaluation.wide_cells() ? static_cast<const int64_t*>(given)[i] : static_cast<const int32_t*>(given)[i];
        cell[i] = c < 0 ? 0 : (c > nx ? nx : c);
    }
}

template <class T>
int32_t evaluate_block(const Evaluation<T>& evaluation, int64_t first, int64_t n, int thread, int64_t& position) {
    alignas(64) T site_buffer[kBlockSites];
    alignas(64) int64_t cell_buffer[kBlockSites];
    const T* const site = block_sites(evaluation, first, n, site_buffer);
    const bool given = evaluation.given_cells();
    void* const cell = evaluation.caller_cells() && !given ? evaluation.cell_from(first) : cell_buffer;
    if (given)
        copy_given_cells(evaluation, first, n, cell_buffer);
    else if (const int32_t status = find_cells(evaluation, n, site, position, cell, evaluation.flags); status < 0)
        return status;
    if (evaluation.layout.ny <= 0) return DfStatusOk;

    EvalBlock<T> block;
    block.task = evaluation.task;
    block.orders = &evaluation.orders;
    block.step = evaluation.grid_step;
    block.n = n;
    block.site = site;
    block.cell = cell;
    block.located = false;
    block.one_cell = false;
    block.try_one_cell = evaluation.search.algorithm == kSearchSorted;
    const auto* const table = given || evaluation.wide_cells() ? EvaluatorTables<T>::_Interpolate1D64Dispatch
                                                               : EvaluatorTables<T>::_Interpolate1D32Dispatch;
    return evaluate_functions(evaluation, table[evaluation.evaluator], block, first, n, thread);
}

template const double* block_sites(const Evaluation<double>&, int64_t, int64_t, double*);
template const float* block_sites(const Evaluation<float>&, int64_t, int64_t, float*);
template int32_t find_cells(const Evaluation<double>&, int64_t, const double*, int64_t&, void*, int64_t);
template int32_t find_cells(const Evaluation<float>&, int64_t, const float*, int64_t&, void*, int64_t);
template int32_t evaluate_functions(const Evaluation<double>&, EvaluatorFunction, EvalBlock<double>&, int64_t, int64_t,
                                    int);
template int32_t evaluate_functions(const Evaluation<float>&, EvaluatorFunction, EvalBlock<float>&, int64_t, int64_t,
                                    int);
template void copy_given_cells(const Evaluation<double>&, int64_t, int64_t, int64_t*);
template void copy_given_cells(const Evaluation<float>&, int64_t, int64_t, int64_t*);
template int32_t evaluate_block(const Evaluation<double>&, int64_t, int64_t, int, int64_t&);
template int32_t evaluate_block(const Evaluation<float>&, int64_t, int64_t, int, int64_t&);

}  // namespace nax::fit
