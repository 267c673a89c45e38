// The knots of a Subbotin spline: t[0] = x[0], t[nx] = x[nx-1], and one knot strictly inside each interval between.
#pragma once

#include "fit/task.h"
#include "simd/isa.h"

namespace nax::fit {

inline namespace NAX_ISA {

inline double fused(double a, double b, double c) { return __builtin_fma(a, b, c); }
inline float fused(float a, float b, float c) { return __builtin_fmaf(a, b, c); }

// How construction, evaluation and integration read the same knots from a task.
template <class T>
struct Subgrid {
    const T* x;
    const T* ic;  // nx + 1 knots, two ends of a uniform sub-grid, or null for the middles of the intervals
    int64_t nx;
    T origin, step;  // of a uniform partition
    T first, pitch;  // of a uniform sub-grid
    bool uniform_partition, uniform_knots;

    T point(int64_t i) const {
        if (!uniform_partition) return x[i];
        return i == nx - 1 ? x[1] : fused(static_cast<T>(i), step, origin);
    }
    T operator[](int64_t k) const {
        if (k <= 0) return point(0);
        if (k >= nx) return point(nx - 1);
        if (ic == nullptr) return (point(k - 1) + point(k)) / 2;
        if (!uniform_knots) return ic[k];
        return static_cast<T>(k - 1) * pitch + first;
    }
};

template <class T>
constexpr Subgrid<T> subgrid_of(const Task& task) {
    const T* const x = partition<T>(task);
    const T* const ic = (task.ic_type & kSubbotinKnots) != 0 ? static_cast<const T*>(task.ic) : nullptr;
    const bool uniform_knots = ic != nullptr && (task.ic_type & kUniformSubgrid) != 0;
    // With two points there is one interior knot, which ic[0] gives.
    const T pitch = uniform_knots && task.nx > 2 ? (ic[1] - ic[0]) / static_cast<T>(task.nx - 2) : T(0);
    return {x,
            ic,
            task.nx,
            x[0],
            uniform_step<T>(task),
            uniform_knots ? ic[0] : T(0),
            pitch,
            has_uniform_grid(task),
            uniform_knots};
}

}  // namespace NAX_ISA
}  // namespace nax::fit
