// Cubic spline from the second derivatives M at the interior points, one set for all functions. The ends follow from the
// boundary condition:
//   first derivative    M(0) = 3 (m(0) - value) / h(0) - M(1) / 2,   M(n-1) = 3 (value - m(n-2)) / h(n-2) - M(n-2) / 2
//   second derivative   the value; 0 for a free end; the one value at both ends of a periodic function
//   not-a-knot          the line through the next two M, which makes y''' continuous there
// The spline is continuous; its slope is so where the caller's M are those of a spline through the points.
#include "fit/construct/dispatch.h"
#include "nax/fitting_construction.h"
#include "service/block.h"

namespace nax::fit {
namespace {

template <class T, Layout L, Grid G, Boundary B>
struct DefaultCubic {
    const Task& task;
    Intervals<T, G> intervals{task};
    Functions<T, L> functions{task};
    int64_t n = task.nx;

    T given(int64_t i) const { return static_cast<const T*>(task.ic)[i - 1]; }

    // Second derivative at an end; `outer` is its interval, `inner` the next one, `i` the next point.
    T end(const T* slope, bool right) const {
        const T* const bc = static_cast<const T*>(task.bc);
        const int64_t outer = right ? n - 2 : 0, inner = right ? n - 3 : 1, i = right ? n - 2 : 1, next = right ? n - 3 : 2;
        if constexpr (B == Boundary::FreeEnd) return T(0);
        if constexpr (B == Boundary::Periodic) return bc[0];
        if constexpr (B == Boundary::NotAKnot) {
            if (n == 3) return given(1);
            return given(i) - intervals.length(outer) * (given(next) - given(i)) / intervals.length(inner);
        }
        if (right ? !first_derivative_right(B) : !first_derivative_left(B)) return bc[right ? 1 : 0];
        const T turn = right ? bc[1] - slope[outer] : slope[outer] - bc[0];
        return 3 * turn / intervals.length(outer) - given(i) / 2;
    }

    void build(int64_t j, T* slope) const {
        for (int64_t i = 0; i < n - 1; ++i) slope[i] = intervals.slope(functions(j, i + 1) - functions(j, i), i);
        T left = end(slope, false);
        const T last = end(slope, true);
        T* c = functions.coefficients(j);
        for (int64_t i = 0; i < n - 1; ++i, c += 4) {
            const T right = i == n - 2 ? last : given(i + 1), h = intervals.length(i);
            c[0] = functions(j, i);
            c[1] = slope[i] - h * (left / 3 + right / 6);
            c[2] = left / 2;
            c[3] = (right - left) / (6 * h);
            left = right;
        }
    }

    int32_t run() const {
        if (B == Boundary::Periodic && !is_periodic<T, L>(task)) return DfStatusBadPeriodicVal;
        service::Block<T> slope(static_cast<size_t>(n));
        if (!slope) return DfStatusMemory;
        for (int64_t j = 0; j < function_count(task); ++j) build(j, slope.get());
        return DfStatusOk;
    }
};

constexpr CubicRules kRules{.minimum_points = 3, .unset_ends = false, .checks_method = false, .needs_internal = true};

int32_t default_entry(Task* task, int64_t method, const Threaders* threaders) {
    int boundary = 0;
    const int32_t status = check_cubic(task, method, kRules, boundary);
    return status != DfStatusOk ? status : _DispatchDefault[kernel_index(*task, boundary)](task, threaders);
}

}  // namespace

#define NAX_DF_BOUNDARY_KERNEL(Y, G, B, boundary) _v1DCSDefault##Y##G##B,
const Kernel _DispatchDefault[] = {
#include "fit/construct/kernels.def"
};
#undef NAX_DF_BOUNDARY_KERNEL

}  // namespace nax::fit

using namespace nax::fit;

#define NAX_DF_BOUNDARY_KERNEL(Y, G, B, boundary)                                                                          \
    int32_t _v1DCSDefault##Y##G##B(nax_df_task* task, const nax_threaders*) {                                              \
        return in_precision(*task, [&]<class T>(T) {                                                                       \
            return DefaultCubic<T, Layout::Y, Grid::G, Boundary::boundary>{*task}.run();                                   \
        });                                                                                                                \
    }
#include "fit/construct/kernels.def"
#undef NAX_DF_BOUNDARY_KERNEL

int32_t nax_df_kernel_dDFDefaultCubicSpline1D(nax_df_task* task, int64_t, int64_t method, const nax_threaders* threaders) {
    return default_entry(task, method, threaders);
}
int32_t nax_df_kernel_sDFDefaultCubicSpline1D(nax_df_task* task, int64_t, int64_t method, const nax_threaders* threaders) {
    return default_entry(task, method, threaders);
}
