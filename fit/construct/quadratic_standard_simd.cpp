// Standard quadratic spline: parabolas between the points, through the data and a value s at the middle of each interval,
// with a continuous slope. s(0) is given; equal slopes at point k + 1 then give
//   s(k+1) = (h' / h) ((y(k) + 3 y(k+1)) / 4 - s(k)) + (3 y(k+1) + y(k+2)) / 4,   h = h(k), h' = h(k+1),
// and with w = (y(i) + y(i+1) - 2 s(i)) / h the cell is  c0 = y(i),  c1 = 2 (s(i) - y(i)) / h - w,  c2 = 2 w / h.
#include "fit/construct/dispatch.h"
#include "fit/construct/loop.h"
#include "fit/construct/quadratic.h"

namespace nax::fit {
namespace {

constexpr int64_t kChunk = 256;

template <class T, Layout L, Grid G>
struct StandardQuadratic {
    const Task& task;
    Intervals<T, G> intervals{task};
    Functions<T, L> functions{task};
    int64_t cells = task.nx - 1;

    // What a chunk of cells needs: points, lengths and middles, each with what the first cell after the chunk adds.
    struct Chunk {
        alignas(64) T row[kChunk + 2], length[kChunk + 1], inverse[kChunk + 1], ratio[kChunk], sum[kChunk], middle[kChunk + 1];
        alignas(64) T slope[kChunk], square[kChunk];  // the coefficients c1 and c2
    };

    // Middles 1 .. steps of a chunk from its first: only the product with the middle before it waits for that middle.
    void fill_middles(const T* y, int64_t steps, Chunk& chunk) const {
        for_lanes<T>(steps, [&]<class E>(int64_t i) {
            const E three = (E{} + 3) * load<E>(y + i + 1), quarter = splat<E>(T(0.25));
            const E before = (load<E>(y + i) + three) * quarter, after = (three + load<E>(y + i + 2)) * quarter;
            const E ratio = load<E>(chunk.length + i + 1) / load<E>(chunk.length + i);
            store(chunk.ratio + i, ratio);
            store(chunk.sum + i, fma(ratio, before, after));
        });
        T middle = chunk.middle[0];
        for (int64_t i = 0; i < steps; ++i) chunk.middle[i + 1] = middle = fma(-chunk.ratio[i], middle, chunk.sum[i]);
    }
    void store_cells(const T* y, Chunk& chunk, int64_t count, T* to) const {
        for_lanes<T>(count, [&]<class E>(int64_t i) {
            const E y0 = load<E>(y + i), y1 = load<E>(y + i + 1), middle = load<E>(chunk.middle + i), r = load<E>(chunk.inverse + i);
            const E w = (y0 + y1 - (middle + middle)) * r, slope = (middle - y0) * r;
            store(chunk.slope + i, slope + slope - w);
            store(chunk.square + i, (w + w) * r);
        });
        for (int64_t i = 0; i < count; ++i) to[3 * i] = y[i], to[3 * i + 1] = chunk.slope[i], to[3 * i + 2] = chunk.square[i];
    }
    int32_t run() const {
        Chunk chunk;
        for (int64_t j = 0; j < function_count(task); ++j) {
            chunk.middle[0] = static_cast<const T*>(task.bc)[0];
            for (int64_t first = 0; first < cells; first += kChunk) {
                const int64_t count = smaller(kChunk, cells - first), steps = smaller(count, cells - 1 - first);
                const T* const y = functions.row(j, first, steps + 2, chunk.row);
                fill_lengths(intervals, first, steps + 1, chunk.length, chunk.inverse);
                fill_middles(y, steps, chunk);
                store_cells(y, chunk, count, functions.coefficients(j) + 3 * first);
                chunk.middle[0] = chunk.middle[steps];
            }
        }
        return DfStatusOk;
    }
};

}  // namespace

int32_t standard_quadratic(Task* task, const Threaders* threaders) {
    if (task->bc_type != kBcQuadraticValue) return DfStatusBadBcType;
    if (task->bc == nullptr) return DfStatusBadBc;
    const int32_t status = check_arrays(*task);
    return status != DfStatusOk ? status : _Dispatch_Std[layout_grid_index(*task)](task, threaders);
}

#define NAX_DF_KERNEL(Y, G) _v1DQSStd##Y##G,
const Kernel _Dispatch_Std[] = {
#include "fit/construct/kernels.def"
};
#undef NAX_DF_KERNEL

}  // namespace nax::fit

using namespace nax::fit;

#define NAX_DF_KERNEL(Y, G)                                                                                               \
    int32_t _v1DQSStd##Y##G(nax_df_task* task, const nax_threaders*) {                                                    \
        return in_precision(*task, [&]<class T>(T) { return StandardQuadratic<T, Layout::Y, Grid::G>{*task}.run(); });    \
    }
#include "fit/construct/kernels.def"
#undef NAX_DF_KERNEL
