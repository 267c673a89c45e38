// A spline to be built by a test: its data, conditions and storage, and the coefficients with their derivatives.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "fit/task.h"
#include "nax/fitting.h"
#include "nax/fitting_construction.h"

namespace nax::test {

using Build = int32_t (*)(nax_df_task*, int64_t, int64_t, const nax_threaders*);

// A family with its entries and the codes that belong to it.
struct Family {
    const char* name;
    Build build_d, build_s;
    int64_t order, type;
    std::vector<int64_t> boundaries;
    int64_t minimum;

    template <class T>
    Build build() const {
        return sizeof(T) == sizeof(double) ? build_d : build_s;
    }
};
inline const std::vector<int64_t> kAllBoundaries = {1, 2, 12, 36, 24, 48, 64, 0};
inline const std::vector<int64_t> kSetBoundaries = {1, 2, 12, 36, 24, 48, 64};
#define NAX_TEST_ENTRY(name) nax_df_kernel_dDF##name##Spline1D, nax_df_kernel_sDF##name##Spline1D
inline const Family kNatural{"natural", NAX_TEST_ENTRY(NaturalCubic), 4, 2, kSetBoundaries, 2};
inline const Family kDefault{"default", NAX_TEST_ENTRY(DefaultCubic), 4, 0, kSetBoundaries, 3};
inline const Family kHermite{"hermite", NAX_TEST_ENTRY(HermiteCubic), 4, 3, kAllBoundaries, 3};
inline const Family kBessel{"bessel", NAX_TEST_ENTRY(BesselCubic), 4, 4, kAllBoundaries, 4};
inline const Family kAkima{"akima", NAX_TEST_ENTRY(AkimaCubic), 4, 5, kAllBoundaries, 5};
inline const Family kHyman{"hyman", NAX_TEST_ENTRY(HymanCubic), 4, 9, kAllBoundaries, 4};
inline const Family kLinear{"linear", NAX_TEST_ENTRY(Linear), 2, 0, {0, 64}, 2};
inline const Family kStandard{"standard", NAX_TEST_ENTRY(Quadratic), 3, 0, {128}, 2};
inline const Family kSubbotin{"subbotin", NAX_TEST_ENTRY(Quadratic), 3, 1, {12, 36, 24, 48}, 2};
#undef NAX_TEST_ENTRY
inline const std::vector<const Family*> kLocalFamilies = {&kAkima, &kBessel, &kHyman, &kHermite};
inline const std::vector<const Family*> kCubicFamilies = {&kNatural, &kDefault, &kAkima, &kBessel, &kHyman, &kHermite};

template <class T>
int32_t new_task(nax_df_task** task, int64_t nx, const T* x, int64_t xhint, int64_t ny, const T* y, int64_t yhint) {
    if constexpr (sizeof(T) == sizeof(double))
        return nax_df_kernel_dNewTask1D(task, nx, x, xhint, ny, y, yhint, 1);
    else
        return nax_df_kernel_sNewTask1D(task, nx, x, xhint, ny, y, yhint, 1);
}

inline bool is_periodic(int64_t boundary) { return boundary == 64; }

template <class T>
struct SplineCase {
    const Family* family = nullptr;
    int64_t boundary = 0;
    std::vector<T> x;               // all points, also of a uniform partition
    std::vector<std::vector<T>> y;  // by function
    std::vector<T> bc, ic;
    int64_t ic_type = 0;
    bool uniform = false, columns = false;
    std::vector<T> c;  // coefficients of all functions, filled by build()

    int64_t nx() const { return static_cast<int64_t>(x.size()); }
    int64_t ny() const { return static_cast<int64_t>(y.size()); }
    int64_t cells() const { return family->type == 1 && family->order == 3 ? nx() : nx() - 1; }
    T h(int64_t i) const { return x[size_t(i) + 1] - x[size_t(i)]; }

    // Builds through the family's entry, or with `task_hook` in its place.
    int32_t build(const nax_threaders* threaders = nullptr, const std::function<int32_t(nax_df_task*)>& task_hook = {}) {
        std::vector<T> ends = {x.front(), x.back()}, values;
        for (size_t k = 0; k < y.size() * x.size(); ++k)
            values.push_back(columns ? y[k % y.size()][k / y.size()] : y[k / x.size()][k % x.size()]);
        const size_t used = size_t(ny() * cells() * family->order);
        c.assign(used + 16, T(-77));
        nax_df_task* task = nullptr;
        EXPECT_EQ(new_task<T>(&task, nx(), uniform ? ends.data() : x.data(), uniform ? 4 : 0, ny(), values.data(), columns ? 32 : 16), 0);
        task->s_order = family->order, task->s_type = family->type, task->bc_type = boundary, task->ic_type = ic_type;
        task->bc = bc.empty() ? nullptr : bc.data();
        task->ic = ic.empty() ? nullptr : ic.data();
        std::vector<void*> rows;
        for (int64_t j = 0; j < ny(); ++j) rows.push_back(c.data() + j * cells() * family->order);
        task->scoeff = rows.data(), task->scoeff_entries = ny();
        const int32_t status = task_hook ? task_hook(task) : family->template build<T>()(task, 0, 0, threaders);
        task->scoeff = nullptr, task->scoeff_entries = 0;
        nax_df_kernel_DeleteTask(&task);
        for (size_t k = used; k < c.size(); ++k) EXPECT_EQ(c[k], T(-77)) << "written past the end";
        c.resize(used);
        return status;
    }
    const T* cell(int64_t j, int64_t i) const { return c.data() + (j * cells() + i) * family->order; }
    // k-th derivative of function j on cell i, at t from the cell's point.
    long double at(int64_t j, int64_t i, long double t, int k = 0) const {
        const T* const a = cell(j, i);
        long double sum = 0;
        for (int64_t m = family->order - 1; m >= k; --m) {
            long double factor = a[m];
            for (int f = 0; f < k; ++f) factor *= static_cast<long double>(m - f);
            sum = sum * t + factor;
        }
        return sum;
    }
    long double at_right(int64_t j, int64_t i, int k = 0) const { return at(j, i, static_cast<long double>(h(i)), k); }
};

// Partition of n points: uniform on [1, 1 + (n - 1) / 8], or with intervals whose lengths vary up to eightfold.
template <class T>
std::vector<T> make_partition(int64_t n, bool uniform, uint64_t seed = 1) {
    std::mt19937_64 engine(seed);
    std::uniform_real_distribution<double> length(0.05, 0.4);
    std::vector<T> x = {T(1)};
    for (int64_t i = 1; i < n; ++i) x.push_back(T(uniform ? 1 + double(i) / 8 : double(x.back()) + length(engine)));
    return x;
}
template <class T>
std::vector<T> make_function(const std::vector<T>& x, bool periodic, uint64_t seed) {
    std::mt19937_64 engine(seed);
    std::uniform_real_distribution<double> noise(-1, 1);
    std::vector<T> y;
    for (const T point : x) y.push_back(T(std::sin(3 * double(point)) + 0.5 * noise(engine)));
    if (periodic) y.back() = y.front();
    return y;
}

template <class T>
SplineCase<T> make_case(const Family& family, int64_t boundary, int64_t nx, int64_t ny, bool uniform, bool columns) {
    SplineCase<T> s;
    s.family = &family, s.boundary = boundary, s.uniform = uniform, s.columns = columns;
    s.x = make_partition<T>(nx, uniform);
    for (int64_t j = 0; j < ny; ++j) s.y.push_back(make_function(s.x, is_periodic(boundary), uint64_t(100 + j)));
    s.bc = {T(0.75), T(-1.25)};
    if (&family == &kDefault || &family == &kHermite)
        for (int64_t i = 1; i + 1 < nx; ++i) s.ic.push_back(T(std::cos(double(i))));
    if (&family == &kSubbotin) s.ic_type = 8;
    return s;
}

// A `threaders` table of real threads, whose limit a test sets.
inline int test_thread_limit = 1;
inline const nax_threaders* test_threads(int limit) {
    test_thread_limit = limit;
    static const nax_threaders table = {
        [](int64_t count, int threads, void* context, nax_loop_body body) {
            std::vector<std::thread> pool;
            for (int t = 0; t < threads; ++t)
                pool.emplace_back([=] {
                    for (int64_t i = t; i < count; i += threads) body(i, t, threads, context);
                });
            for (std::thread& thread : pool) thread.join();
        },
        nullptr, nullptr, nullptr, [] { return test_thread_limit; }};
    return &table;
}

// Solves A x = b in long double, with pivoting.
inline std::vector<long double> dense_solve(std::vector<std::vector<long double>> a, std::vector<long double> b) {
    const size_t n = b.size();
    for (size_t k = 0; k < n; ++k) {
        size_t pivot = k;
        for (size_t i = k + 1; i < n; ++i)
            if (std::fabs(a[i][k]) > std::fabs(a[pivot][k])) pivot = i;
        std::swap(a[k], a[pivot]);
        std::swap(b[k], b[pivot]);
        for (size_t i = k + 1; i < n; ++i) {
            const long double factor = a[i][k] / a[k][k];
            if (factor == 0) continue;
            for (size_t m = k; m < n; ++m) a[i][m] -= factor * a[k][m];
            b[i] -= factor * b[k];
        }
    }
    for (size_t k = n; k-- > 0;) {
        for (size_t m = k + 1; m < n; ++m) b[k] -= a[k][m] * b[m];
        b[k] /= a[k][k];
    }
    return b;
}

template <class T>
constexpr long double kTolerance = 400 * std::numeric_limits<T>::epsilon();

}  // namespace nax::test
