// Linear spline: c0 = y(i), c1 = (y(i+1) - y(i)) / h(i), the division as a product with the inverse length, which all
// functions share.
#include "fit/construct/dispatch.h"
#include "fit/construct/loop.h"
#include "nax/fitting_construction.h"

namespace nax::fit {
namespace {

constexpr int64_t kTileCells = 1024, kTileFunctions = 4, kSerialLimit = 128, kThreadedTiles = 5;

struct LinearContext {
    const Task* task;
    int32_t status;
};

template <class T, Layout L, Grid G>
struct Linear {
    const Task& task;
    Intervals<T, G> intervals{task};
    Functions<T, L> functions{task};
    int64_t cells = task.nx - 1;

    void store_cells(const T* y, const T* inverse, int64_t count, T* to) const {
        for_lanes<T>(count, [&]<class E>(int64_t i) {
            const E value = load<E>(y + i), rise = load<E>(y + i + 1) - value;
            store_interleaved(to + 2 * i, value, rise * load<E>(inverse + i));
        });
    }
    // One function needs no array of inverse lengths.
    void store_single(const T* y, int64_t first, int64_t count, T* to) const {
        for_lanes<T>(count, [&]<class E>(int64_t i) {
            E inverse;
            if constexpr (G == Grid::UniformGrid)
                inverse = splat<E>(intervals.inverse_step);
            else
                inverse = splat<E>(T(1)) / (load<E>(intervals.x + first + i + 1) - load<E>(intervals.x + first + i));
            const E value = load<E>(y + i), rise = load<E>(y + i + 1) - value;
            store_interleaved(to + 2 * i, value, rise * inverse);
        });
    }
    void build(int64_t j, int64_t functions_here, int64_t first, int64_t count) const {
        alignas(64) T rows[kTileFunctions][kTileCells + 1];
        const T* y[kTileFunctions];
        collect_rows(functions, j, functions_here, first, count + 1, rows, y);
        if (functions_here == 1) {
            store_single(y[0], first, count, functions.coefficients(j) + 2 * first);
            return;
        }
        alignas(64) T length[kTileCells], inverse[kTileCells];
        fill_lengths(intervals, first, count, length, inverse);
        for (int64_t k = 0; k < functions_here; ++k)
            store_cells(y[k], inverse, count, functions.coefficients(j + k) + 2 * first);
    }
    void build_tile(int64_t tile) const {
        const int64_t across = ceil_divide(cells, kTileCells);
        const int64_t j = tile / across * kTileFunctions, first = tile % across * kTileCells;
        build(j, smaller(function_count(task) - j, kTileFunctions), first, smaller(kTileCells, cells - first));
    }
    int32_t run(const Threaders* threaders, nax_loop_body body) const {
        if (task.bc_type == kBcPeriodic && !is_periodic<T, L>(task)) return DfStatusBadPeriodicVal;
        if (is_small(task, kSerialLimit)) {
            for (int64_t j = 0; j < function_count(task); ++j) build(j, 1, 0, cells);
            return DfStatusOk;
        }
        const int64_t tiles = ceil_divide(cells, kTileCells) * ceil_divide(function_count(task), kTileFunctions);
        const int64_t threads = tiles < kThreadedTiles ? 1 : smaller(tiles, thread_limit(threaders));
        LinearContext context{&task, DfStatusOk};
        run_items(tiles, threads, threaders, &context, body);
        return context.status;
    }
};

int32_t linear_entry(Task* task, int64_t method, const Threaders* threaders) {
    if (task == nullptr) return DfStatusNullTask;
    if (method != 0) return DfStatusBadMethod;
    if (task->nx < 2) return DfStatusBadNx;
    if (!is_storage_hint(task->yhint)) return DfStatusBadYHint;
    const int32_t status = check_arrays(*task);
    return status != DfStatusOk ? status : _Dispatch[layout_grid_index(*task)](task, threaders);
}

}  // namespace

#define NAX_DF_KERNEL(Y, G) _v1DLSLinear##Y##G,
const Kernel _Dispatch[] = {
#include "fit/construct/kernels.def"
};
#undef NAX_DF_KERNEL

}  // namespace nax::fit

using namespace nax::fit;

#define NAX_DF_KERNEL(Y, G)                                                                                              \
    void _v1DLinearThreader##Y##G(int64_t tile, int, int, void* context) {                                               \
        const Task& task = *static_cast<const LinearContext*>(context)->task;                                            \
        in_precision(task, [&]<class T>(T) { Linear<T, Layout::Y, Grid::G>{task}.build_tile(tile); });                   \
    }                                                                                                                    \
    int32_t _v1DLSLinear##Y##G(nax_df_task* task, const nax_threaders* threaders) {                                      \
        return in_precision(*task, [&]<class T>(T) {                                                                     \
            return Linear<T, Layout::Y, Grid::G>{*task}.run(threaders, _v1DLinearThreader##Y##G);                        \
        });                                                                                                              \
    }
#include "fit/construct/kernels.def"
#undef NAX_DF_KERNEL

int32_t nax_df_kernel_dDFLinearSpline1D(nax_df_task* task, int64_t, int64_t method, const nax_threaders* threaders) {
    return linear_entry(task, method, threaders);
}
int32_t nax_df_kernel_sDFLinearSpline1D(nax_df_task* task, int64_t, int64_t method, const nax_threaders* threaders) {
    return linear_entry(task, method, threaders);
}
