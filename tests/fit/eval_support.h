// A task with a partition 0, 1, 2, ... and random coefficients, and its evaluation.
#pragma once

#include <array>

#include "tests/fit/support.h"

namespace nax::testing {

template <class T>
using EvalCallback = int32_t (*)(const int64_t*, const int64_t*, const T*, T*, void*, void*);

template <class T>
struct Spline {
    int64_t nx, order, ny, width, yhint;
    std::vector<T> x, data, coefficients;
    OwnedTask task;
    // Arguments of the calls to come.
    int64_t job = 1, sitehint = 0, rhint = 16;
    const nax_threaders* threaders = nullptr;
    std::array<EvalCallback<T>, 3> callbacks{};  // left, right, interior
    std::array<void*, 3> parameters{};
    int32_t (*search)(const int64_t*, const T*, int64_t*, int32_t*, void*, void*) = nullptr;
    void* search_parameters = nullptr;
    std::vector<int32_t> narrow_cells;
    std::vector<int64_t> wide_cells;

    Spline(int64_t points, int64_t s_order, int64_t s_type, int64_t functions, bool uniform, int64_t int_width = 1,
           int64_t storage = 16)
        : nx(points), order(s_order), ny(functions), width(int_width), yhint(storage) {
        const std::vector<T> ends{T(0), static_cast<T>(nx - 1)};
        for (int64_t i = 0; i < nx; ++i) x.push_back(static_cast<T>(i));
        if (uniform) x = ends;
        data = random_values<T>(nx * ny, T(-1), T(1), 1);
        coefficients = random_values<T>(nx * ny * std::max<int64_t>(order, 1), T(-1), T(1), 2);
        EXPECT_EQ(Fit<T>::create(task.address(), nx, x.data(), uniform ? 4 : 0, ny, data.data(), yhint, width), 0);
        EXPECT_EQ(Fit<T>::edit_spline(task.get(), order, s_type, 0, nullptr, 0, nullptr, coefficients.data(), 16), 0);
    }

    T point(int64_t i) const { return static_cast<T>(i); }
    T y(int64_t j, int64_t i) const {
        return data[static_cast<std::size_t>(yhint == 32 ? i * ny + j : j * nx + i)];
    }
    const T* row(int64_t j, int64_t p) const { return static_cast<const T*>(task->scoeff[j]) + p * order; }
    int64_t cell(T site) const {
        std::vector<T> points;
        for (int64_t i = 0; i < nx; ++i) points.push_back(point(i));
        return cell_by_counting(points, site);
    }
    int64_t stored_cell(std::size_t i) const { return width == 0 ? narrow_cells[i] : wide_cells[i]; }
    void give_cells(const std::vector<int64_t>& cells) {
        wide_cells = cells;
        narrow_cells.assign(cells.begin(), cells.end());
    }

    int32_t interpolate(const T* site, int64_t n, const std::vector<int>& orders, T* r) {
        const std::vector<int32_t> narrow(orders.begin(), orders.end());
        const std::vector<int64_t> wide(orders.begin(), orders.end());
        const void* const flags = width == 0 ? static_cast<const void*>(narrow.data()) : wide.data();
        narrow_cells.resize(static_cast<std::size_t>(n));
        wide_cells.resize(static_cast<std::size_t>(n));
        void* const cells = width == 0 ? static_cast<void*>(narrow_cells.data()) : wide_cells.data();
        return Fit<T>::interpolate(task.get(), job, 0, n, site, sitehint, static_cast<int64_t>(orders.size()), flags, nullptr, r,
                                   rhint, cells, callbacks[0], parameters[0], callbacks[1], parameters[1], callbacks[2],
                                   parameters[2], search, search_parameters, threaders);
    }
    // Results at all sites, with a look at what stands behind them. Uniform sites are given by two ends and a count.
    std::vector<T> run(const std::vector<T>& sites, const std::vector<int>& orders, int64_t count = -1) {
        const int64_t n = count < 0 ? static_cast<int64_t>(sites.size()) : count;
        int64_t nder = 0;
        for (const int flag : orders) nder += flag;
        const auto size = static_cast<std::size_t>(n * ny * std::max<int64_t>(nder, 1));
        std::vector<T> r(size + 1, T(-77));
        EXPECT_EQ(interpolate(sites.data(), n, orders, r.data()), 0);
        EXPECT_EQ(r.back(), T(-77));
        r.pop_back();
        return r;
    }
    int32_t status(const std::vector<T>& sites, const std::vector<int>& orders) {
        std::vector<T> r(sites.size() * static_cast<std::size_t>(ny) * (orders.size() + 1));
        return interpolate(sites.data(), static_cast<int64_t>(sites.size()), orders, r.data());
    }
};

}  // namespace nax::testing
