// What construction reads of a task: the partition as interval lengths, the functions as rows, and where coefficients go.
#pragma once

#include <cstdint>

#include "fit/task.h"
#include "service/threaders.h"
#include "simd/isa.h"

namespace nax::fit {

// In the order of the dispatch indices.
enum class Layout { YCols, YRows };
enum class Grid { NoUniformGrid, UniformGrid };
enum class Subgrids { NoUniformSubgrid, UniformSubgrid };
enum class Boundary { NotAKnot, FreeEnd, FirstFirst, FirstSecond, SecondFirst, SecondSecond, Periodic, NotSet };
inline constexpr int kBoundaries = 7;  // with a kernel of their own

// Index of a boundary type, or -1 when no cubic spline takes it.
constexpr int boundary_index(int64_t bc_type) {
    constexpr int64_t kTypes[] = {1, 2, 12, 36, 24, 48, 64, 0};
    for (int i = 0; i < 8; ++i)
        if (kTypes[i] == bc_type) return i;
    return -1;
}
constexpr bool reads_two_values(int boundary) { return boundary >= 2 && boundary <= 5; }
constexpr bool first_derivative_left(Boundary b) { return b == Boundary::FirstFirst || b == Boundary::FirstSecond; }
constexpr bool first_derivative_right(Boundary b) { return b == Boundary::FirstFirst || b == Boundary::SecondFirst; }

// Index of a kernel among the four of a family, and among the 28 of one that has a kernel for each boundary type.
constexpr int layout_grid_index(const Task& task) { return (has_columns(task) ? 0 : 2) + (has_uniform_grid(task) ? 1 : 0); }
constexpr int kernel_index(const Task& task, int boundary) { return layout_grid_index(task) * kBoundaries + boundary; }

constexpr int64_t function_count(const Task& task) { return task.ny < 1 ? 1 : task.ny; }
constexpr int64_t ceil_divide(int64_t a, int64_t b) { return (a + b - 1) / b; }
constexpr int64_t smaller(int64_t a, int64_t b) { return a < b ? a : b; }
constexpr int64_t larger(int64_t a, int64_t b) { return a > b ? a : b; }
// True when nx times the number of functions stays below the limit.
constexpr bool is_small(const Task& task, int64_t limit) {
    return task.nx < limit && function_count(task) < ceil_divide(limit, task.nx);
}

// Kernels of the families with one kernel for each layout and grid, and one that also takes the boundary index.
using Kernel = int32_t (*)(Task* task, const Threaders* threaders);
using BoundaryKernel = int32_t (*)(Task* task, int64_t boundary, const Threaders* threaders);

inline namespace NAX_ISA {

// Interval lengths. E is an element, or a vector of the lengths from i on.
template <class T, Grid G>
struct Intervals {
    const T* x;
    T step, inverse_step;

    explicit Intervals(const Task& task)
        : x(partition<T>(task)), step(uniform_step<T>(task)), inverse_step(static_cast<T>(task.nx - 1) / (x[1] - x[0])) {}
    T length(int64_t i) const {
        if constexpr (G == Grid::UniformGrid) return step;
        return x[i + 1] - x[i];
    }
    T inverse(int64_t i) const {
        if constexpr (G == Grid::UniformGrid) return inverse_step;
        return T(1) / (x[i + 1] - x[i]);
    }
    // (rise of the function) / (length of interval i)
    T slope(T rise, int64_t i) const {
        if constexpr (G == Grid::UniformGrid) return rise * inverse_step;
        return rise / (x[i + 1] - x[i]);
    }
};

// Functions and coefficients.
template <class T, Layout L>
struct Functions {
    const Task& task;

    T operator()(int64_t j, int64_t i) const {
        if constexpr (L == Layout::YCols) return static_cast<const T*>(task.y[0])[i * function_count(task) + j];
        return static_cast<const T*>(task.y[j])[i];
    }
    // Where point i of function j stands among columns.
    const T* column(int64_t j, int64_t i) const { return static_cast<const T*>(task.y[0]) + i * function_count(task) + j; }
    // Points first .. first + count - 1 of a function as a row: its own memory, or a copy in `buffer`.
    const T* row(int64_t j, int64_t first, int64_t count, T* buffer) const {
        if constexpr (L == Layout::YRows) return static_cast<const T*>(task.y[j]) + first;
        for (int64_t i = 0; i < count; ++i) buffer[i] = (*this)(j, first + i);
        return buffer;
    }
    T* coefficients(int64_t j) const { return static_cast<T*>(task.scoeff[j]); }
};

// Runs kernel<T> in the task's precision.
template <class Kernel>
auto in_precision(const Task& task, Kernel&& kernel) {
    return task.precision == 1 ? kernel(double()) : kernel(float());
}

// False when the first and last value of a function differ, or one of them is a NaN.
template <class T, Layout L>
bool is_periodic(const Task& task) {
    const Functions<T, L> y{task};
    for (int64_t j = 0; j < function_count(task); ++j)
        if (!(y(j, 0) == y(j, task.nx - 1))) return false;
    return true;
}

// Status of the arrays that every kernel reads and writes: all functions and all coefficient pointers must be there.
inline int32_t check_arrays(const Task& task) {
    if (!has_functions(task, function_count(task))) return DfStatusBadY;
    return has_coefficients(task, function_count(task)) ? DfStatusOk : DfStatusBadCoeff;
}

// Calls body(i, ...) for every i below count, through the caller's loop where more than one thread may run.
inline void run_items(int64_t count, int64_t threads, const Threaders* threaders, void* context, nax_loop_body body) {
    if (threads > 1) {
        threaders->parallel_for(count, static_cast<int>(threads), context, body);
        return;
    }
    for (int64_t i = 0; i < count; ++i) body(i, 0, 1, context);
}

}  // namespace NAX_ISA
}  // namespace nax::fit
