// Standard quadratic spline: parabolas between the points, through the data and a value s at the middle of each interval,
// with a continuous slope. s(0) is given; equal slopes at point k + 1 then give
//   s(k+1) = (h' / h) ((y(k) + 3 y(k+1)) / 4 - s(k)) + (3 y(k+1) + y(k+2)) / 4,   h = h(k), h' = h(k+1),
// and with w = (y(i) + y(i+1) - 2 s(i)) / h the cell is  c0 = y(i),  c1 = 2 (s(i) - y(i)) / h - w,  c2 = 2 w / h.
#include "fit/construct/dispatch.h"
#include "fit/construct/quadratic.h"
#include "service/block.h"

namespace nax::fit {
namespace {

constexpr int64_t kStackMiddles = 4096;

template <class T, Layout L, Grid G>
struct StandardQuadratic {
    const Task& task;
    Intervals<T, G> intervals{task};
    Functions<T, L> functions{task};
    int64_t cells = task.nx - 1;

    void fill_middles(int64_t j, T* middle) const {
        middle[0] = static_cast<const T*>(task.bc)[0];
        for (int64_t k = 0; k + 1 < cells; ++k) {
            const T y0 = functions(j, k), y1 = functions(j, k + 1), y2 = functions(j, k + 2);
            if constexpr (G == Grid::UniformGrid) {
                middle[k + 1] = (y0 + 6 * y1 + y2) / 4 - middle[k];
            } else {
                const T h = intervals.length(k), next = intervals.length(k + 1);
                middle[k + 1] = next / h * ((y0 + 3 * y1) / 4 - middle[k]) + (3 * y1 + y2) / 4;
            }
        }
    }
    void store_cells(int64_t j, const T* middle) const {
        T* c = functions.coefficients(j);
        for (int64_t i = 0; i < cells; ++i, c += 3) {
            const T y0 = functions(j, i), y1 = functions(j, i + 1), h = intervals.length(i);
            const T w = (y0 + y1 - 2 * middle[i]) / h;
            c[0] = y0;
            c[1] = 2 * (middle[i] - y0) / h - w;
            c[2] = 2 * w / h;
        }
    }
    int32_t run() const {
        T stack[kStackMiddles];
        service::Block<T> heap;
        T* middle = stack;
        if (task.nx >= kStackMiddles - 1) {
            if (!heap.allocate(static_cast<size_t>(task.nx + 1))) return DfStatusMemory;
            middle = heap.get();
        }
        for (int64_t j = 0; j < function_count(task); ++j) {
            fill_middles(j, middle);
            store_cells(j, middle);
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
