// The twice continuously differentiable cubic spline. Its slopes d solve the tridiagonal system (de Boor 1978, chapter IV)
//   h(i) d(i-1) + 2 (h(i-1) + h(i)) d(i) + h(i-1) d(i+1) = 3 (h(i) m(i-1) + h(i-1) m(i)),
// divided by h on a uniform partition, with an end row for each boundary condition:
//   first derivative     d(0) = value
//   second derivative    2 d(0) + d(1) = 3 m(0) - value h(0) / 2         (free end: value 0)
//   not-a-knot           h(1) d(0) + H d(1) = ((h(0) + 2 H) h(1) m(0) + h(0)^2 m(1)) / H,  H = h(0) + h(1)
// and the mirrors at the right. The matrix belongs to the partition: it is factored once, functions follow by fours.
#include "fit/construct/dispatch.h"
#include "fit/construct/loop.h"
#include "fit/construct/tridiagonal.h"
#include "nax/fitting_construction.h"
#include "service/block.h"

namespace nax::fit {
namespace {

constexpr int64_t kGroup = 4, kChunk = 256, kStackScratch = 512;

// The factored matrix, and for periodic functions the solution for unit slopes at the seam.
template <class T>
struct SplineMatrix {
    T *sub, *diagonal, *super, *seam;
    T *length, *inverse;  // of all intervals when several functions share them, else null
    T seam_pivot;
};

struct NaturalContext {
    const Task* task;
    const void* matrix;
    void* rhs;  // kGroup * nx elements for each thread
};

template <class T, Layout L, Grid G, Boundary B>
struct Natural {
    const Task& task;
    Intervals<T, G> intervals{task};
    Functions<T, L> functions{task};
    int64_t n = task.nx;

    static constexpr bool kPeriodic = B == Boundary::Periodic;
    static constexpr bool kFixedLeft = kPeriodic || first_derivative_left(B), kFixedRight = kPeriodic || first_derivative_right(B);

    // The rows are homogeneous in the lengths, so any unit of length gives the same slopes. A power of two brings lengths
    // whose squares leave the range near to one; ordinary lengths keep the unit one.
    T unit = G == Grid::UniformGrid ? T(1) : length_unit((intervals.x[n - 1] - intervals.x[0]) / static_cast<T>(n - 1));
    static T length_unit(T mean) {
        constexpr T kSafe = sizeof(T) == sizeof(double) ? T(0x1p250) : T(0x1p30f);
        T unit = 1;
        for (int step = 0; step < 4; ++step) {  // to the ends of the range, and no further for coinciding points
            if (mean * unit > kSafe) unit /= kSafe;
            if (mean * unit < 1 / kSafe) unit *= kSafe;
        }
        return unit;
    }
    // Lengths as the rows use them: in steps on a uniform partition.
    T weight(int64_t i) const { return G == Grid::UniformGrid ? T(1) : intervals.length(i) * unit; }
    T value(int side) const {
        const T* const bc = static_cast<const T*>(task.bc);
        return B == Boundary::FreeEnd ? T(0) : bc[side];
    }
    T slope(int64_t j, int64_t i) const { return intervals.slope(functions(j, i + 1) - functions(j, i), i); }

    void fill_matrix(const SplineMatrix<T>& a) const {
        const auto row = [&]<class E>(int64_t i) {  // of point i + 1
            E left = splat<E>(T(1)), right = left;
            if constexpr (G == Grid::NoUniformGrid) {
                const E middle = load<E>(intervals.x + i + 1);
                left = (middle - load<E>(intervals.x + i)) * splat<E>(unit);
                right = (load<E>(intervals.x + i + 2) - middle) * splat<E>(unit);
            }
            store(a.sub + i, right);
            store(a.diagonal + i + 1, (E{} + 2) * (left + right));
            store(a.super + i + 1, left);
        };
        for_lanes<T>(n - 2, row);
        a.diagonal[0] = a.diagonal[n - 1] = kFixedLeft ? T(1) : T(2);
        a.super[0] = kFixedLeft ? T(0) : T(1);
        a.diagonal[n - 1] = kFixedRight ? T(1) : T(2);
        a.sub[n - 2] = kFixedRight ? T(0) : T(1);
        if constexpr (B == Boundary::NotAKnot) {
            a.diagonal[0] = weight(1), a.super[0] = weight(0) + weight(1);
            a.diagonal[n - 1] = weight(n - 3), a.sub[n - 2] = weight(n - 2) + weight(n - 3);
        }
    }

    T end_value(int64_t j, bool right) const {
        if constexpr (kPeriodic) return T(0);
        const int64_t outer = right ? n - 2 : 0, inner = right ? n - 3 : 1;
        if constexpr (B == Boundary::NotAKnot) {
            const T h0 = weight(outer), h1 = weight(inner), span = h0 + h1;
            const T share = h0 / span;
            return (share + 2) * (h1 * slope(j, outer)) + share * (h0 * slope(j, inner));
        }
        if (right ? kFixedRight : kFixedLeft) return value(right ? 1 : 0);
        const T bend = value(right ? 1 : 0) * intervals.length(outer) / 2;
        return 3 * slope(j, outer) + (right ? bend : -bend);
    }

    // Lengths of the intervals of one chunk.
    struct Chunk {
        const T *length, *inverse;
        alignas(64) T buffer[2][kChunk + 1];

        Chunk(const Natural& spline, const SplineMatrix<T>& a, int64_t first, int64_t count) {
            length = buffer[0], inverse = buffer[1];
            if (a.length == nullptr)
                fill_lengths(spline.intervals, first, count, buffer[0], buffer[1]);
            else
                length = a.length + first, inverse = a.inverse + first;
        }
    };

    // Right-hand sides of `count` interior points; y, the chunk and its lengths start one point before the first.
    void fill_rhs(const T* y, const Chunk& chunk, int64_t count, T* rhs) const {
        alignas(64) T slopes[kChunk + 1];
        fill_slopes(intervals, y, chunk.length, chunk.inverse, count + 1, slopes);
        for_lanes<T>(count, [&]<class E>(int64_t i) {
            const E left = load<E>(slopes + i), right = load<E>(slopes + i + 1);
            if constexpr (G == Grid::UniformGrid)
                store(rhs + i, (E{} + 3) * (left + right));
            else
                store(rhs + i, splat<E>(3 * unit) * fma(load<E>(chunk.length + i + 1), left, load<E>(chunk.length + i) * right));
        });
    }
    void store_cells(int64_t j, const T* y, const Chunk& chunk, int64_t first, int64_t count, const T* derivative) const {
        alignas(64) T slopes[kChunk];
        fill_slopes(intervals, y, chunk.length, chunk.inverse, count, slopes);
        store_hermite_cells(y, slopes, derivative, chunk.inverse, count, functions.coefficients(j) + 4 * first);
    }

    // Adds the slope at the seam: its row is the one equation left.
    template <class E>
    void close_seam(const SplineMatrix<T>& a, E* d, E rhs) const {
        const T first = weight(0), last = weight(n - 2);
        const E seam = (rhs - splat<E>(first) * d[n - 2] - splat<E>(last) * d[1]) / splat<E>(a.seam_pivot);
        for (int64_t i = 0; i < n; ++i) d[i] = fma(seam, splat<E>(a.seam[i]), d[i]);
    }
    T seam_rhs(int64_t j) const {
        return 3 * fma(weight(0), slope(j, n - 2), weight(n - 2) * slope(j, 0));
    }

    int32_t factor(SplineMatrix<T>& a) const {
        fill_matrix(a);
        if (eliminate<T, false>(n, a.sub, a.diagonal, a.super, nullptr) != 0) return DfStatusSolverFailure;
        if constexpr (kPeriodic) {
            for (int64_t i = 0; i < n; ++i) a.seam[i] = i == 0 || i == n - 1 ? T(1) : T(0);
            solve_factored(n, a.sub, a.diagonal, a.super, a.seam);
            a.seam_pivot = 2 * (weight(0) + weight(n - 2)) + weight(0) * a.seam[n - 2] + weight(n - 2) * a.seam[1];
            if (a.seam_pivot == 0) return DfStatusSolverFailure;
        }
        return DfStatusOk;
    }

    void build_one(int64_t j, const SplineMatrix<T>& a, T* rhs) const {
        fill_row(j, a, rhs);
        solve_factored(n, a.sub, a.diagonal, a.super, rhs);
        if constexpr (kPeriodic) close_seam(a, rhs, seam_rhs(j));
        store_row(j, a, rhs);
    }
    void fill_row(int64_t j, const SplineMatrix<T>& a, T* rhs) const {
        alignas(64) T row[kChunk + 2];
        rhs[0] = end_value(j, false);
        rhs[n - 1] = end_value(j, true);
        for (int64_t i = 1; i < n - 1; i += kChunk) {
            const int64_t points = smaller(kChunk, n - 1 - i);
            fill_rhs(functions.row(j, i - 1, points + 2, row), Chunk(*this, a, i - 1, points + 1), points, rhs + i);
        }
    }
    void store_row(int64_t j, const SplineMatrix<T>& a, const T* derivative) const {
        alignas(64) T row[kChunk + 1];
        for (int64_t i = 0; i < n - 1; i += kChunk) {
            const int64_t cells = smaller(kChunk, n - 1 - i);
            store_cells(j, functions.row(j, i, cells + 1, row), Chunk(*this, a, i, cells), i, cells, derivative + i);
        }
    }

    // Four functions in the lanes of one solve; a last group of two or three repeats its last function.
    void build_group(int64_t j, int64_t count, const SplineMatrix<T>& a, T* storage) const {
        using E = Quad<T>;
        E* const rhs = reinterpret_cast<E*>(storage);
        const auto lane_function = [&](int64_t lane) { return j + smaller(lane, count - 1); };
        E seam{};
        for (int64_t lane = 0; lane < kGroup; ++lane) {
            rhs[0][lane] = end_value(lane_function(lane), false);
            rhs[n - 1][lane] = end_value(lane_function(lane), true);
            if constexpr (kPeriodic) seam[lane] = seam_rhs(lane_function(lane));
        }
        alignas(64) T rows[kGroup][kChunk + 2], copies[kGroup][kChunk + 2];
        const T* y[kGroup];
        for (int64_t i = 1; i < n - 1; i += kChunk) {
            const int64_t points = smaller(kChunk, n - 1 - i);
            const Chunk chunk(*this, a, i - 1, points + 1);
            collect_rows(functions, j, count, i - 1, points + 2, copies, y);
            for (int64_t lane = 0; lane < count; ++lane) fill_rhs(y[lane], chunk, points, rows[lane]);
            join_rows(rows, points, count, storage + kGroup * i);
        }
        solve_factored(n, a.sub, a.diagonal, a.super, rhs);
        if constexpr (kPeriodic) close_seam(a, rhs, seam);
        for (int64_t i = 0; i < n - 1; i += kChunk) {
            const int64_t cells = smaller(kChunk, n - 1 - i);
            const Chunk chunk(*this, a, i, cells);
            collect_rows(functions, j, count, i, cells + 1, copies, y);
            split_rows(storage + kGroup * i, kGroup, cells + 1, rows);
            for (int64_t lane = 0; lane < count; ++lane) store_cells(j + lane, y[lane], chunk, i, cells, rows[lane]);
        }
    }
    // to[i * 4 + lane] = rows[lane][i].
    static void join_rows(const T (*rows)[kChunk + 2], int64_t points, int64_t count, T* to) {
        const T* const last = rows[count - 1];
        const T *const a = rows[0], *const b = rows[1], *const c = count > 2 ? rows[2] : last, *const d = last;
        for_lanes<T>(points, [&]<class V>(int64_t i) {
            store_interleaved(to + kGroup * i, load<V>(a + i), load<V>(b + i), load<V>(c + i), load<V>(d + i));
        });
    }

    void build(int64_t group, const SplineMatrix<T>& a, T* rhs) const {
        const int64_t j = group * kGroup, count = smaller(kGroup, function_count(task) - j);
        if (count == 1)
            build_one(j, a, rhs);
        else
            build_group(j, count, a, rhs);
    }

    // One function: its right-hand side rides along with the elimination.
    int32_t run_single(SplineMatrix<T>& a, T* rhs) const {
        fill_matrix(a);
        fill_row(0, a, rhs);
        if (eliminate<T, true>(n, a.sub, a.diagonal, a.super, rhs) != 0) return DfStatusSolverFailure;
        backward(n, a.sub, a.diagonal, a.super, rhs);
        store_row(0, a, rhs);
        return DfStatusOk;
    }

    // Three points and no knots: the parabola, whose rows leave the system singular.
    void build_parabolas() const {
        for (int64_t j = 0; j < function_count(task); ++j) {
            const T h0 = weight(0), h1 = weight(1), m0 = slope(j, 0), m1 = slope(j, 1);
            const T share0 = h0 / (h0 + h1), share1 = h1 / (h0 + h1), turn = m1 - m0;
            const T derivative[] = {m0 - share0 * turn, share0 * m1 + share1 * m0, m1 + share1 * turn};
            store_row(j, SplineMatrix<T>{}, derivative);
        }
    }

    // Long functions are worth threads; short ones only when there are many threads.
    int64_t thread_count(int64_t groups, const Threaders* threaders) const {
        if (groups < 2 || n < 300) return 1;
        const int64_t threads = smaller(groups, thread_limit(threaders));
        return n >= 600 || threads >= 8 ? threads : 1;
    }

    int32_t run(const Threaders* threaders, nax_loop_body body) const {
        if (kPeriodic && !is_periodic<T, L>(task)) return DfStatusBadPeriodicVal;
        if (B == Boundary::NotAKnot && n == 3) {
            build_parabolas();
            return DfStatusOk;
        }
        const int64_t groups = ceil_divide(function_count(task), kGroup), threads = thread_count(groups, threaders);
        const bool shared = function_count(task) > 1;
        const int64_t per_thread = shared ? kGroup * n : n, arrays = shared ? 6 : 4;
        const int64_t elements = arrays * padded(n) + threads * padded(per_thread);
        alignas(64) T stack[kStackScratch];
        service::Block<T> heap;
        if (elements > kStackScratch && !heap.allocate(static_cast<size_t>(elements))) return DfStatusMemory;
        T* const scratch = heap ? heap.get() : stack;
        const auto array = [&](int64_t k) { return scratch + k * padded(n); };
        SplineMatrix<T> matrix{array(0), array(1), array(2), array(3), nullptr, nullptr, T(0)};
        T* const rhs = array(arrays);
        if (shared) {
            matrix.length = array(4), matrix.inverse = array(5);
            fill_lengths(intervals, 0, n - 1, matrix.length, matrix.inverse);
        }
        if (function_count(task) == 1 && !kPeriodic) return run_single(matrix, rhs);
        const int32_t status = factor(matrix);
        if (status != DfStatusOk) return status;
        NaturalContext context{&task, &matrix, rhs};
        run_items(groups, threads, threaders, &context, body);
        return DfStatusOk;
    }
    // Whole cache lines, so that the arrays are aligned for vectors and no two threads share a line.
    static constexpr int64_t padded(int64_t count) { return ceil_divide(count, 32) * 32; }
};

template <Layout L, Grid G, Boundary B>
void natural_group(int64_t group, int thread, const NaturalContext& context) {
    in_precision(*context.task, [&]<class T>(T) {
        using Spline = Natural<T, L, G, B>;
        T* const rhs = static_cast<T*>(context.rhs) + thread * Spline::padded(kGroup * context.task->nx);
        Spline{*context.task}.build(group, *static_cast<const SplineMatrix<T>*>(context.matrix), rhs);
    });
}
template <Layout L, Grid G, Boundary B>
int32_t natural(const Task& task, const Threaders* threaders, nax_loop_body body) {
    return in_precision(task, [&]<class T>(T) { return Natural<T, L, G, B>{task}.run(threaders, body); });
}

constexpr CubicRules kRules{.minimum_points = 2, .unset_ends = false, .checks_method = true, .needs_internal = false};

int32_t natural_entry(Task* task, int64_t method, const Threaders* threaders) {
    CubicRules rules = kRules;
    if (task != nullptr && task->bc_type == kBcNotAKnot) rules.minimum_points = 3;
    int boundary = 0;
    const int32_t status = check_cubic(task, method, rules, boundary);
    return status != DfStatusOk ? status : _DispatchNatural[kernel_index(*task, boundary)](task, threaders);
}

}  // namespace

#define NAX_DF_BOUNDARY_KERNEL(Y, G, B, boundary) _v1DCSNatural##Y##G##B,
const Kernel _DispatchNatural[] = {
#include "fit/construct/kernels.def"
};
#undef NAX_DF_BOUNDARY_KERNEL

}  // namespace nax::fit

using namespace nax::fit;

#define NAX_DF_BOUNDARY_KERNEL(Y, G, B, boundary)                                                                     \
    void _v1DCSNaturalThreader##Y##G##B(int64_t group, int thread, int, void* context) {                              \
        natural_group<Layout::Y, Grid::G, Boundary::boundary>(group, thread, *static_cast<NaturalContext*>(context)); \
    }                                                                                                                 \
    int32_t _v1DCSNatural##Y##G##B(nax_df_task* task, const nax_threaders* threaders) {                               \
        return natural<Layout::Y, Grid::G, Boundary::boundary>(*task, threaders, _v1DCSNaturalThreader##Y##G##B);     \
    }
#include "fit/construct/kernels.def"
#undef NAX_DF_BOUNDARY_KERNEL

int32_t nax_df_kernel_dDFNaturalCubicSpline1D(nax_df_task* task, int64_t, int64_t method, const nax_threaders* threaders) {
    return natural_entry(task, method, threaders);
}
int32_t nax_df_kernel_sDFNaturalCubicSpline1D(nax_df_task* task, int64_t, int64_t method, const nax_threaders* threaders) {
    return natural_entry(task, method, threaders);
}
