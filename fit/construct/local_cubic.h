// The driver of the cubic families whose slopes at the points are local estimates: Akima, Bessel, Hyman and Hermite.
// A family is a type with
//   kMinimum           smallest number of points
//   kMargin            points next to an end that its interior formula doesn't cover, the end itself included
//   slope<E>(w, k)     slope estimate at the window's points from k on
//   near_left, near_right   the same at the points between an end and the interior, when kMargin is 2
//   periodic_left, periodic_right   the end slopes of a periodic function
// Work is cut in tiles of 2048 points by 4 functions, and these in blocks that stay in the first-level cache.
#pragma once

#include "fit/construct/boundary.h"
#include "fit/construct/dispatch.h"
#include "fit/construct/loop.h"
#include "service/block.h"

namespace nax::fit {

inline namespace NAX_ISA {

inline constexpr int64_t kLocalTilePoints = 2048, kTileFunctions = 4, kLocalSerialLimit = 512;
inline constexpr int64_t kBlockCells = 256, kOverlap = 2, kWindow = kBlockCells + 2 * kOverlap + 1;

// Buffers of one thread, for the points of one block and two more at either side.
template <class T>
struct LocalScratch {
    alignas(64) T length[kWindow], inverse[kWindow], slope[kWindow], derivative[kWindow];
    alignas(64) T rows[kTileFunctions][kWindow];
};

// What a slope estimate sees: pointers to the block's first point.
template <class T>
struct Window {
    const T *length, *slope;  // of the interval right of the point; two more are there at the left
    const T* given;           // derivatives from the caller, at the block's first point
};

struct LocalContext {
    const Task* task;
    int64_t boundary;
    void* scratch;  // one LocalScratch for each thread
};

template <class Family, class T, Layout L, Grid G>
struct LocalCubic {
    const Task& task;
    int64_t boundary;
    Intervals<T, G> intervals{task};
    Functions<T, L> functions{task};
    int64_t cells = task.nx - 1;

    // The end of a function as the boundary conditions see it; `at` and `over` count from that end.
    End<T> end_of(int64_t j, bool right, T inner_derivative) const {
        const auto at = [&](int64_t i) { return functions(j, right ? cells - i : i); };
        const auto interval = [&](int64_t i) { return right ? cells - 1 - i : i; };
        const auto slope = [&](int64_t i) {
            return intervals.slope(functions(j, i + 1) - functions(j, i), i);
        };
        const T* const bc = static_cast<const T*>(task.bc);
        End<T> end;
        end.y[0] = at(0), end.y[1] = at(1), end.y[2] = at(2);
        end.h[0] = intervals.length(interval(0)), end.h[1] = intervals.length(interval(1));
        end.m[0] = slope(interval(0)), end.m[1] = slope(interval(1));
        const int64_t far = right ? 0 : cells - 1, next = right ? 1 : cells - 2;
        end.wrapped_h = intervals.length(far);
        end.wrapped_m[0] = slope(far), end.wrapped_m[1] = slope(next);
        end.inverse_step = intervals.inverse_step;
        end.inner = inner_derivative;
        end.value = bc == nullptr || !(reads_two_values(static_cast<int>(boundary)) || boundary == int(Boundary::Periodic))
                        ? T(0)
                        : bc[right && boundary != int(Boundary::Periodic) ? 1 : 0];
        end.uniform = G == Grid::UniformGrid;
        return end;
    }

    // Slopes at the points first .. first + count of function j; `slope` and `length` belong to the interval `first`.
    void estimate(int64_t j, int64_t first, int64_t count, const T* length, const T* slope, T* derivative) const {
        const int64_t from = larger(first, Family::kMargin), to = smaller(first + count, cells - Family::kMargin);
        const T* const ic = static_cast<const T*>(task.ic);
        const Window<T> window{length + (from - first), slope + (from - first), ic == nullptr ? ic : ic + (from - 1)};
        for_lanes<T>(to - from + 1, [&]<class E>(int64_t k) {
            store(derivative + (from - first) + k, Family::template slope<E>(window, k));
        });
        if constexpr (Family::kMargin == 2) {
            if (first <= 1) derivative[1 - first] = Family::near_left(slope - first);
            if (first + count >= cells - 1)
                derivative[cells - 1 - first] = Family::near_right(slope + (cells - 1 - first));
        }
        if (first == 0) derivative[0] = BoundaryTables<Family, T>::left[boundary](end_of(j, false, derivative[1]));
        if (first + count == cells)
            derivative[count] = BoundaryTables<Family, T>::right[boundary](end_of(j, true, derivative[count - 1]));
    }

    void build_block(int64_t j, int64_t functions_here, int64_t first, int64_t count, LocalScratch<T>& scratch) const {
        const int64_t left = smaller(first, kOverlap), right = smaller(cells - first - count, kOverlap);
        const int64_t window = left + count + right;
        fill_lengths(intervals, first - left, window, scratch.length, scratch.inverse);
        const T* y[kTileFunctions];
        collect_rows(functions, j, functions_here, first - left, window + 1, scratch.rows, y);
        for (int64_t k = 0; k < functions_here; ++k) {
            fill_slopes(intervals, y[k], scratch.length, scratch.inverse, window, scratch.slope);
            estimate(j + k, first, count, scratch.length + left, scratch.slope + left, scratch.derivative);
            store_hermite_cells(y[k] + left, scratch.slope + left, scratch.derivative, scratch.inverse + left, count,
                                functions.coefficients(j + k) + 4 * first);
        }
    }

    void build_tile(int64_t tile, LocalScratch<T>& scratch) const {
        const int64_t tiles_across = ceil_divide(cells, kLocalTilePoints);
        const int64_t j = tile / tiles_across * kTileFunctions, start = tile % tiles_across * kLocalTilePoints;
        const int64_t functions_here = smaller(function_count(task) - j, kTileFunctions);
        const int64_t stop = smaller(start + kLocalTilePoints, cells);
        for (int64_t first = start; first < stop; first += kBlockCells)
            build_block(j, functions_here, first, smaller(kBlockCells, stop - first), scratch);
    }

    int64_t tile_count() const {
        return ceil_divide(cells, kLocalTilePoints) * ceil_divide(function_count(task), kTileFunctions);
    }

    int32_t run(const Threaders* threaders, nax_loop_body body) const {
        if (boundary == int(Boundary::Periodic) && !is_periodic<T, L>(task)) return DfStatusBadPeriodicVal;
        if (is_small(task, kLocalSerialLimit)) {
            LocalScratch<T> scratch;
            for (int64_t tile = 0; tile < tile_count(); ++tile) build_tile(tile, scratch);
            return DfStatusOk;
        }
        const int64_t threads = smaller(thread_limit(threaders), tile_count());
        service::Block<LocalScratch<T>> scratch(static_cast<size_t>(threads));
        if (!scratch) return DfStatusMemory;
        LocalContext context{&task, boundary, scratch.get()};
        run_items(tile_count(), threads, threaders, &context, body);
        return DfStatusOk;
    }
};

template <class Family, Layout L, Grid G>
void local_tile(int64_t tile, int thread, const LocalContext& context) {
    in_precision(*context.task, [&]<class T>(T) {
        LocalCubic<Family, T, L, G>{*context.task, context.boundary}.build_tile(
            tile, static_cast<LocalScratch<T>*>(context.scratch)[thread]);
    });
}
template <class Family, Layout L, Grid G>
int32_t local_cubic(const Task& task, int64_t boundary, const Threaders* threaders, nax_loop_body body) {
    return in_precision(task, [&]<class T>(T) {
        return LocalCubic<Family, T, L, G>{task, boundary}.run(threaders, body);
    });
}

}  // namespace NAX_ISA
}  // namespace nax::fit
