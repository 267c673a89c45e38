// Cubic spline from the second derivatives M at the interior points, one set for all functions. The ends follow from the
// boundary condition:
//   first derivative    M(0) = 3 (m(0) - value) / h(0) - M(1) / 2,   M(n-1) = 3 (value - m(n-2)) / h(n-2) - M(n-2) / 2
//   second derivative   the value; 0 for a free end; the one value at both ends of a periodic function
//   not-a-knot          the line through the next two M, which makes y''' continuous there
// The spline is continuous; its slope is so where the caller's M are those of a spline through the points.
#include "fit/construct/dispatch.h"
#include "fit/construct/loop.h"
#include "nax/fitting_construction.h"

namespace nax::fit {
namespace {

constexpr int64_t kChunk = 256;

template <class T, Layout L, Grid G, Boundary B>
struct DefaultCubic {
    const Task& task;
    Intervals<T, G> intervals{task};
    Functions<T, L> functions{task};
    int64_t n = task.nx;

    T given(int64_t i) const { return static_cast<const T*>(task.ic)[i - 1]; }

    // Second derivative at an end; `outer` is its interval, `inner` the next one, `i` the next point.
    T end(int64_t j, bool right) const {
        const T* const bc = static_cast<const T*>(task.bc);
        const int64_t outer = right ? n - 2 : 0, inner = right ? n - 3 : 1, i = right ? n - 2 : 1, next = right ? n - 3 : 2;
        if constexpr (B == Boundary::FreeEnd) return T(0);
        if constexpr (B == Boundary::Periodic) return bc[0];
        if constexpr (B == Boundary::NotAKnot) {
            if (n == 3) return given(1);
            return given(i) - intervals.length(outer) * (given(next) - given(i)) / intervals.length(inner);
        }
        if (right ? !first_derivative_right(B) : !first_derivative_left(B)) return bc[right ? 1 : 0];
        const T chord = intervals.slope(functions(j, outer + 1) - functions(j, outer), outer);
        const T turn = right ? bc[1] - chord : chord - bc[0];
        return 3 * turn / intervals.length(outer) - given(i) / 2;
    }

    struct Chunk {
        alignas(64) T row[kChunk + 1], bend[kChunk + 1];
    };

    // Second derivatives at the points first .. first + count: the caller's own array, or a copy with the ends added.
    const T* bends(int64_t j, int64_t first, int64_t count, T* copy) const {
        const bool from_end = first == 0, to_end = first + count == n - 1;
        if (!from_end && !to_end) return static_cast<const T*>(task.ic) + (first - 1);
        for (int64_t i = from_end ? 1 : 0; i < (to_end ? count : count + 1); ++i) copy[i] = given(first + i);
        if (from_end) copy[0] = end(j, false);
        if (to_end) copy[count] = end(j, true);
        return copy;
    }
    void build(int64_t j, int64_t first, int64_t count, Chunk& chunk) const {
        const T* const y = functions.row(j, first, count + 1, chunk.row);
        const T* const bend = bends(j, first, count, chunk.bend);
        const T* const x = intervals.x + (G == Grid::UniformGrid ? 0 : first);
        T* const to = functions.coefficients(j) + 4 * first;
        // In one pass: with so little arithmetic, buffers of lengths and chords would cost more than they save.
        for_lanes<T>(count, [&]<class E>(int64_t i) {
            const E y0 = load<E>(y + i), rise = load<E>(y + i + 1) - y0;
            E h = splat<E>(intervals.step), r = splat<E>(intervals.inverse_step), chord = rise * r;
            if constexpr (G == Grid::NoUniformGrid) {
                h = load<E>(x + i + 1) - load<E>(x + i);
                r = splat<E>(T(1)) / h;
                chord = rise * r;
                chord = fma(fma(-chord, h, rise), r, chord);
            }
            const E left = load<E>(bend + i), right = load<E>(bend + i + 1), sixth = splat<E>(T(1) / 6);
            const E slope = fma(-(h * sixth), left + left + right, chord), third = (right - left) * (r * sixth);
            store_interleaved(to + 4 * i, y0, slope, left * splat<E>(T(0.5)), third);
        });
    }

    int32_t run() const {
        if (B == Boundary::Periodic && !is_periodic<T, L>(task)) return DfStatusBadPeriodicVal;
        Chunk chunk;
        for (int64_t j = 0; j < function_count(task); ++j)
            for (int64_t first = 0; first < n - 1; first += kChunk) build(j, first, smaller(kChunk, n - 1 - first), chunk);
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
