// Quadratic spline of Subbotin (Yu. N. Subbotin, Proc. Steklov Inst. Math. 88 (1967)): a parabola around each data point,
// joined with continuous slope at knots t(k) strictly between the points. The slopes s at the points solve, with
// D = x(k+1) - x(k-1), p = h(k) / D / (x(k) - t(k)), q = h(k-1) / D / (t(k+1) - x(k)),
//   a s(k-1) + (2 + a + b) s(k) + b s(k+1) = 2 (p dy(k-1) + q dy(k)),   a = p (t(k) - x(k-1)),  b = q (x(k+1) - t(k+1)),
// and at an end with a given second derivative M, u being the distance of the end to the next knot and h to the next point,
//   (h + u) s(0) + (h - u) s(1) = 2 dy(0) - M u h   (at the right the last sign is plus),
// taken divided by h, as the interior rows have no dimension either.
#include "fit/construct/dispatch.h"
#include "fit/construct/quadratic.h"
#include "fit/subgrid.h"
#include "nax/abi/tridiagonal.h"
#include "service/block.h"

namespace nax::fit {
namespace {

void solve(int64_t n, double* sub, double* diagonal, double* super, double* rhs, int64_t* info) {
    const int64_t one = 1;
    ddtsvb_4dfl(&n, &one, sub, diagonal, super, rhs, &n, info);
}
void solve(int64_t n, float* sub, float* diagonal, float* super, float* rhs, int64_t* info) {
    const int64_t one = 1;
    sdtsvb_4dfl(&n, &one, sub, diagonal, super, rhs, &n, info);
}

template <class T>
struct SubbotinScratch {
    T *x, *knot;                               // nx points, nx + 1 knots
    T *p, *q;                                  // of the interior rows
    T *sub, *diagonal, *super, *slope;         // the system of one function
    SubbotinScratch(T* base, int64_t nx)
        : x(base), knot(x + nx + 1), p(knot + nx + 1), q(p + nx + 1), sub(q + nx + 1), diagonal(sub + nx + 1),
          super(diagonal + nx + 1), slope(super + nx + 1) {}
};

template <class T, Layout L, Boundary B>
struct Subbotin {
    const Task& task;
    SubbotinScratch<T> s;
    Functions<T, L> functions{task};
    int64_t n = task.nx;

    static constexpr bool kFixedLeft = first_derivative_left(B), kFixedRight = first_derivative_right(B);
    T value(int side) const { return static_cast<const T*>(task.bc)[side]; }
    T length(int64_t i) const { return s.x[i + 1] - s.x[i]; }
    T rise(int64_t j, int64_t i) const { return functions(j, i + 1) - functions(j, i); }

    // Fills points and knots; false when a knot isn't strictly inside its interval, or the ends don't fit.
    bool place_knots(const Subgrid<T>& subgrid) const {
        for (int64_t i = 0; i < n; ++i) s.x[i] = subgrid.point(i);
        for (int64_t k = 0; k <= n; ++k) s.knot[k] = subgrid[k];
        const T left = s.x[0], right = s.x[n - 1];
        if (subgrid.ic != nullptr && subgrid.uniform_knots) {
            if (!(left < subgrid.ic[0]) || !(subgrid.ic[1] < right)) return false;
        } else if (subgrid.ic != nullptr && (subgrid.ic[0] != left || subgrid.ic[n] != right)) {
            return false;
        }
        for (int64_t k = 1; k < n; ++k)
            if (!(s.x[k - 1] < s.knot[k]) || !(s.knot[k] < s.x[k])) return false;
        return true;
    }
    void prepare_rows() const {
        for (int64_t k = 1; k < n - 1; ++k) {
            const T span = s.x[k + 1] - s.x[k - 1];
            s.p[k] = length(k) / span / (s.x[k] - s.knot[k]);
            s.q[k] = length(k - 1) / span / (s.knot[k + 1] - s.x[k]);
        }
    }
    // Slopes at all points. A given end slope leaves the system; its column goes to the right-hand side.
    bool find_slopes(int64_t j) const {
        for (int64_t k = 1; k < n - 1; ++k) {
            const T a = s.p[k] * (s.knot[k] - s.x[k - 1]), b = s.q[k] * (s.x[k + 1] - s.knot[k + 1]);
            s.sub[k - 1] = a;
            s.super[k] = b;
            s.diagonal[k] = 2 + a + b;
            s.slope[k] = 2 * (s.p[k] * rise(j, k - 1) + s.q[k] * rise(j, k));
        }
        const T h = length(0), u = s.knot[1] - s.x[0], g = length(n - 2), v = s.x[n - 1] - s.knot[n - 1];
        if (kFixedLeft) {
            s.slope[0] = value(0);
            if (n > 2) s.slope[1] -= s.sub[0] * value(0);
        } else {
            s.diagonal[0] = (h + u) / h;
            s.super[0] = (h - u) / h;
            s.slope[0] = 2 * rise(j, 0) / h - value(0) * u;
        }
        if (kFixedRight) {
            s.slope[n - 1] = value(1);
            const int64_t row = n - 2;
            if (row > 0 || !kFixedLeft) s.slope[row] -= s.super[row] * value(1);
        } else {
            s.sub[n - 2] = (g - v) / g;
            s.diagonal[n - 1] = (g + v) / g;
            s.slope[n - 1] = 2 * rise(j, n - 2) / g + value(1) * v;
            if (kFixedLeft && n == 2) s.slope[1] -= s.sub[0] * value(0);
        }
        const int64_t first = kFixedLeft ? 1 : 0, order = n - first - (kFixedRight ? 1 : 0);
        int64_t info = 0;
        if (order > 0) solve(order, s.sub + first, s.diagonal + first, s.super + first, s.slope + first, &info);
        return info == 0;
    }
    void store_pieces(int64_t j) const {
        T* const c = functions.coefficients(j);
        for (int64_t i = 0; i < n; ++i) {
            c[3 * i] = functions(j, i);
            c[3 * i + 1] = s.slope[i];
            if (i == n - 1) break;
            const T h = length(i), d0 = s.slope[i], d1 = s.slope[i + 1], u = s.knot[i + 1] - s.x[i];
            c[3 * i + 2] = (d1 - d0) / (2 * h) + (rise(j, i) / h - (d0 + d1) / 2) / u;
        }
        // The last piece starts at the last knot with the slope of the piece before it.
        const T knot = s.knot[n - 1], before = c[3 * n - 5] + 2 * c[3 * n - 4] * (knot - s.x[n - 2]);
        c[3 * n - 1] = (s.slope[n - 1] - before) / (2 * (s.x[n - 1] - knot));
    }
    int32_t run() const {
        if (!place_knots(subgrid_of<T>(task))) return DfStatusBadIc;
        prepare_rows();
        for (int64_t j = 0; j < function_count(task); ++j) {
            if (!find_slopes(j)) return DfStatusSolverFailure;
            store_pieces(j);
        }
        return DfStatusOk;
    }
};

template <Layout L, Boundary B>
int32_t run_subbotin(const Task& task) {
    return in_precision(task, [&]<class T>(T) -> int32_t {
        service::Block<T> scratch(static_cast<size_t>(8 * (task.nx + 1)));
        if (!scratch) return DfStatusMemory;
        return Subbotin<T, L, B>{task, {scratch.get(), task.nx}}.run();
    });
}

}  // namespace

int32_t subbotin_quadratic(Task* task, const Threaders* threaders) {
    if ((task->ic_type & kSubbotinKnots) == 0) return DfStatusBadIcType;
    const int boundary = boundary_index(task->bc_type);
    if (boundary < 0 || !reads_two_values(boundary)) return DfStatusBadBcType;
    if (task->bc == nullptr) return DfStatusBadBc;
    const int subgrid = (task->ic_type & kUniformSubgrid) != 0 ? 1 : 0;
    if (subgrid == 1 && task->ic == nullptr) return DfStatusBadIc;
    const int32_t status = check_arrays(*task);
    return status != DfStatusOk ? status : _Dispatch_Subb[subgrid * 28 + kernel_index(*task, boundary)](task, threaders);
}

#define NAX_DF_SUBGRID_KERNEL(S, Y, G, B, boundary) _v1DQSSubb##S##Y##G##B,
#define NAX_DF_NO_KERNEL nullptr,
const Kernel _Dispatch_Subb[] = {
#include "fit/construct/kernels.def"
};
#undef NAX_DF_SUBGRID_KERNEL
#undef NAX_DF_NO_KERNEL

}  // namespace nax::fit

using namespace nax::fit;

// Points and knots are spelled out once per call, so one body serves all partitions and sub-grids.
#define NAX_DF_SUBGRID_KERNEL(S, Y, G, B, boundary)                                    \
    int32_t _v1DQSSubb##S##Y##G##B(nax_df_task* task, const nax_threaders*) {          \
        return run_subbotin<Layout::Y, Boundary::boundary>(*task);                     \
    }
#define NAX_DF_NO_KERNEL
#include "fit/construct/kernels.def"
#undef NAX_DF_SUBGRID_KERNEL
#undef NAX_DF_NO_KERNEL
