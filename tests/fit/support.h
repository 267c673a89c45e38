// What the data-fitting tests share: the entries of both precisions under one name, tables of threads, partitions.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "fit/task.h"
#include "nax/fitting.h"
#include "nax/threaders.h"

namespace nax::testing {

template <class T>
struct Fit;
template <>
struct Fit<double> {
    static constexpr auto create = nax_df_kernel_dNewTask1D;
    static constexpr auto edit_spline = nax_df_kernel_dEditPPSpline1D;
    static constexpr auto edit_pointer = nax_df_kernel_dEditPtr;
    static constexpr auto edit_indexed = nax_df_kernel_dEditIdxPtr;
    static constexpr auto query_pointer = nax_df_kernel_dQueryPtr;
    static constexpr auto query_indexed = nax_df_kernel_dQueryIdxPtr;
    static constexpr auto search = nax_df_kernel_dDFSearch1D;
    static constexpr auto interpolate = nax_df_kernel_dDFInterpolate1D;
};
template <>
struct Fit<float> {
    static constexpr auto create = nax_df_kernel_sNewTask1D;
    static constexpr auto edit_spline = nax_df_kernel_sEditPPSpline1D;
    static constexpr auto edit_pointer = nax_df_kernel_sEditPtr;
    static constexpr auto edit_indexed = nax_df_kernel_sEditIdxPtr;
    static constexpr auto query_pointer = nax_df_kernel_sQueryPtr;
    static constexpr auto query_indexed = nax_df_kernel_sQueryIdxPtr;
    static constexpr auto search = nax_df_kernel_sDFSearch1D;
    static constexpr auto interpolate = nax_df_kernel_sDFInterpolate1D;
};

// A task that goes away with its scope.
class OwnedTask {
public:
    OwnedTask() = default;
    template <class T>
    OwnedTask(const std::vector<T>& x, int64_t nx, int64_t xhint, int64_t int_width = 1, int64_t ny = 0,
              const T* y = nullptr, int64_t yhint = 0) {
        EXPECT_EQ(Fit<T>::create(&task_, nx, x.data(), xhint, ny, y, yhint, int_width), 0);
    }
    OwnedTask(const OwnedTask&) = delete;
    OwnedTask& operator=(const OwnedTask&) = delete;
    ~OwnedTask() {
        if (task_ != nullptr) nax_df_kernel_DeleteTask(&task_);
    }
    nax_df_task* get() const { return task_; }
    nax_df_task** address() { return &task_; }
    nax_df_task* operator->() const { return task_; }

private:
    nax_df_task* task_ = nullptr;
};

// The pool's table with a thread limit of 1, 2 or 4, which notes what was asked of its parallel loop.
struct LoopRecord {
    int64_t count;
    int threads;
};
inline std::vector<LoopRecord>& loops() {
    static std::vector<LoopRecord> record;
    return record;
}
inline const nax_threaders& pool() {
    static const nax_threaders table = [] {
        nax_threaders t;
        nax_serv_fill_threaders(&t);
        return t;
    }();
    return table;
}
inline nax_threaders threads(int limit) {
    nax_threaders table = pool();
    table.parallel_for = [](int64_t count, int used, void* context, nax_loop_body body) {
        loops().push_back({count, used});
        pool().parallel_for(count, used, context, body);
    };
    switch (limit) {
        case 1:
            table.max_threads = [] { return 1; };
            break;
        case 2:
            table.max_threads = [] { return 2; };
            break;
        case 4:
            table.max_threads = [] { return 4; };
            break;
        default:
            table.max_threads = [] { return 8; };
            break;
    }
    return table;
}

template <class T>
constexpr T nan_of = std::numeric_limits<T>::quiet_NaN();
template <class T>
constexpr T infinity_of = std::numeric_limits<T>::infinity();

template <class T>
std::vector<T> random_values(int64_t n, T from, T to, uint64_t seed) {
    std::mt19937_64 bits(seed);
    std::uniform_real_distribution<T> draw(from, to);
    std::vector<T> values(static_cast<std::size_t>(n));
    for (T& v : values) v = draw(bits);
    return values;
}

// Partitions of nx points that try an index: even, random, crowded at one end, geometric, with repeated points, of
// extreme range.
template <class T>
struct Partition {
    std::string name;
    std::vector<T> x;
};
template <class T>
std::vector<Partition<T>> partitions(int64_t nx) {
    const auto make = [nx](auto rule) {
        std::vector<T> x(static_cast<std::size_t>(nx));
        for (int64_t i = 0; i < nx; ++i) x[static_cast<std::size_t>(i)] = static_cast<T>(rule(static_cast<double>(i)));
        return x;
    };
    const double n = static_cast<double>(nx - 1);
    std::vector<T> random = random_values<T>(nx, T(-3), T(7), 99);
    std::sort(random.begin(), random.end());
    const double huge = sizeof(T) == sizeof(double) ? 1e308 : 3e38;
    const double tiny = std::numeric_limits<T>::denorm_min();
    return {{"even", make([](double i) { return 0.5 + i; })},
            {"random", random},
            {"crowded left", make([n](double i) { return std::pow(i / n, 5); })},
            {"crowded right", make([n](double i) { return 1 - std::pow(1 - i / n, 5); })},
            {"geometric", make([n](double i) { return std::pow(10.0, 30 * i / n - 15); })},
            {"repeated", make([](double i) { return std::floor(i / 3); })},
            {"repeated ends", make([nx](double i) { return i < 3 ? 0.0 : (i > double(nx) - 4 ? double(nx) : i); })},
            {"one value", make([](double) { return 2.5; })},
            {"huge range", make([n, huge](double i) { return huge * (2 * i / n - 1); })},
            {"subnormal range", make([tiny](double i) { return tiny * i; })},
            {"infinite end", make([n](double i) { return i == n ? std::numeric_limits<double>::infinity() : i; })}};
}

// The cell rule by counting, site by site. A NaN site may get any cell.
template <class T>
int64_t cell_by_counting(const std::vector<T>& x, T site) {
    if (site == x.back()) return static_cast<int64_t>(x.size()) - 1;
    int64_t count = 0;
    while (count < static_cast<int64_t>(x.size()) && !(x[static_cast<std::size_t>(count)] > site)) ++count;
    return count;
}

}  // namespace nax::testing
