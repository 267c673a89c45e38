// The data-fitting task record and the codes of its fields.
#pragma once

#include <cstddef>
#include <cstdint>

#include "nax/fitting.h"
#include "nax/fitting.h"

// One record for both precisions: `T` of the element pointers is double when `precision` is 1, float when it is 0.
// The record owns the two pointer arrays and the partition index; everything the pointers lead to is the caller's.
struct nax_df_task {
    int32_t int_width;  // 0: the caller's integers are 32 bits wide, else 64
    int8_t component;   // always kComponentTag
    int32_t precision;  // 1 double, 0 single
    int32_t dimension;  // always 1
    int64_t nx;         // partition points
    const void* x;      // ascending; for a uniform partition the two ends only
    int64_t xhint;      // PartitionHint
    int64_t ny;         // functions
    const void** y;     // one pointer per function, or the base alone for kColumns
    int64_t yhint;      // StorageHint
    int64_t s_order;    // coefficients of one cell
    int64_t s_type;     // SplineType
    int64_t ic_type;    // InternalCondition
    const void* ic;
    int64_t bc_type;  // BoundaryCondition
    const void* bc;
    void** scoeff;       // one pointer per function
    int64_t scoeffhint;  // StorageHint
    int64_t check_flag;
    int64_t nbins;       // bins of the partition index
    int64_t* bin_table;  // pairs (lo, hi), see partition_index.h
    union {              // bins per unit of x
        double bin_scale_d;
        float bin_scale_s;
    };
    int64_t y_entries;       // usable entries of `y`: ny may be edited without them
    int64_t scoeff_entries;  // and of `scoeff`
    // Room for what tasks of few functions and points own, which then needs no memory of its own.
    void* few_functions[5];
    void* few_coefficients[5];
};

namespace nax::fit {

using Task = ::nax_df_task;

inline constexpr int8_t kComponentTag = 4;

// What a creator allocates: the record and room for the partition index of a few points.
struct TaskBlock {
    Task task;
    alignas(128) unsigned char small_index[1024];
};

enum PartitionHint : int64_t { kNoHint = 0, kNonUniform = 1, kQuasiUniform = 2, kUniform = 4 };
enum StorageHint : int64_t { kDefaultStorage = 0, kRows = 16, kColumns = 32, kFirstOnly = 128 };
enum SplineType : int64_t {
    kDefaultType = 0,
    kSubbotin = 1,
    kNatural = 2,
    kHermite = 3,
    kBessel = 4,
    kAkima = 5,
    kLookUp = 6,
    kStepRight = 7,
    kStepLeft = 8,
    kHyman = 9
};
enum InternalCondition : int64_t {
    kNoInternal = 0,
    kInternalFirst = 1,
    kInternalSecond = 2,
    kUniformSubgrid = 4,
    kSubbotinKnots = 8
};
enum BoundaryCondition : int64_t {
    kBcNone = 0,
    kBcNotAKnot = 1,
    kBcFreeEnd = 2,
    kBcLeftFirst = 4,
    kBcRightFirst = 8,
    kBcLeftSecond = 16,
    kBcRightSecond = 32,
    kBcPeriodic = 64,
    kBcQuadraticValue = 128
};

constexpr bool is_partition_hint(int64_t v) {
    return v == kNoHint || v == kNonUniform || v == kQuasiUniform || v == kUniform;
}
constexpr bool is_storage_hint(int64_t v) {
    return v == kDefaultStorage || v == kRows || v == kColumns || v == kFirstOnly;
}
// The types that construction knows. Steps and look-up are set only through the editor of a whole spline.
constexpr bool is_constructed_type(int64_t v) { return (v >= kDefaultType && v <= kAkima) || v == kHyman; }

constexpr bool has_uniform_grid(const Task& task) { return (task.xhint & kUniform) != 0; }
constexpr bool has_columns(const Task& task) { return task.yhint == kColumns; }

template <class T>
constexpr const T* partition(const Task& task) {
    return static_cast<const T*>(task.x);
}
template <class T>
constexpr T bin_scale(const Task& task) {
    if constexpr (sizeof(T) == sizeof(double))
        return task.bin_scale_d;
    else
        return task.bin_scale_s;
}
// Whether the coefficients of one function fit an address space: an editor takes any order.
constexpr bool is_possible_order(const Task& task) {
    int64_t elements = 0;
    return !__builtin_mul_overflow(task.nx, task.s_order, &elements) && elements <= INT64_MAX / 8;
}
// Right end of the partition.
template <class T>
constexpr T right_end(const Task& task) {
    return partition<T>(task)[has_uniform_grid(task) ? 1 : task.nx - 1];
}
// Step of a uniform partition.
template <class T>
constexpr T uniform_step(const Task& task) {
    return task.nx <= 1 ? T(0) : (partition<T>(task)[1] - partition<T>(task)[0]) / static_cast<T>(task.nx - 1);
}

// Function data as base and distance between points: rows through the pointer array, columns from its one entry.
template <class T>
struct FunctionData {
    const T* base;  // null when the caller set no pointer
    int64_t stride;
    constexpr T operator[](int64_t i) const { return base[i * stride]; }
};
template <class T>
constexpr FunctionData<T> function_data(const Task& task, int64_t j) {
    const int64_t entry = has_columns(task) ? 0 : j;
    if (task.y == nullptr || entry >= task.y_entries || task.y[entry] == nullptr) return {nullptr, 0};
    const T* const base = static_cast<const T*>(task.y[entry]);
    return has_columns(task) ? FunctionData<T>{base + j, task.ny} : FunctionData<T>{base, 1};
}
// Coefficients of function j; null when the caller set no pointer.
template <class T>
constexpr T* coefficients(const Task& task, int64_t j) {
    if (task.scoeff == nullptr || j >= task.scoeff_entries) return nullptr;
    return static_cast<T*>(task.scoeff[j]);
}
// Whether the pointers of all `functions` are there, which may be more than the arrays have entries.
constexpr bool has_functions(const Task& task, int64_t functions) {
    const int64_t pointers = has_columns(task) ? 1 : functions;
    if (task.y == nullptr || pointers > task.y_entries) return false;
    for (int64_t j = 0; j < pointers; ++j)
        if (task.y[j] == nullptr) return false;
    return true;
}
constexpr bool has_coefficients(const Task& task, int64_t functions) {
    if (task.scoeff == nullptr || functions > task.scoeff_entries) return false;
    for (int64_t j = 0; j < functions; ++j)
        if (task.scoeff[j] == nullptr) return false;
    return true;
}

}  // namespace nax::fit
