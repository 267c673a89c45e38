// A statistics task with arrays for every result of the basic entry, references in extended precision, and a table of
// threaders that runs its bodies in any order.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <type_traits>
#include <vector>

#include "nax/statistics_basic.h"

namespace nax::testing {

template <class T>
struct Statistics {
    static constexpr bool is_double = std::is_same_v<T, double>;
#define NAX_TEST_PICK(d, s)      \
    [](auto... a) -> int32_t {   \
        if constexpr (is_double) \
            return d(a...);      \
        else                     \
            return s(a...);      \
    }
    static constexpr auto create = NAX_TEST_PICK(__stodSSNewTask, __stosSSNewTask);
    static constexpr auto edit = NAX_TEST_PICK(__stodSSEditTask, __stosSSEditTask);
    static constexpr auto basic = NAX_TEST_PICK(_stodSSBasic, _stosSSBasic);
    static constexpr auto minmax = NAX_TEST_PICK(_stodSSMinmax, _stosSSMinmax);
};

inline constexpr uint64_t estimate_bit(int bit) { return uint64_t{1} << bit; }
inline constexpr uint64_t kAllBasic = 0x3FF | 0x3000 | (uint64_t{0xFF} << 25);

// Data of n observations in both storages, and a task over them. Element (i, j) is observation i of variable j.
template <class T>
class Sample {
public:
    using S = Statistics<T>;
    Sample(int64_t n_, int64_t p_, bool columns_)
        : n(n_), p(p_), columns(columns_), x(static_cast<std::size_t>(n_ * p_)) {
        storage = columns ? 0x20000 : 0x10000;
        const auto size = static_cast<std::size_t>(p);
        for (auto& r : results) r.assign(size, T(-7));
        for (auto& m : matrices) m.assign(size * size, T(-7));
    }
    Sample(const Sample&) = delete;
    Sample& operator=(const Sample&) = delete;
    ~Sample() {
        if (task != nullptr) __stoSSDeleteTask(&task);
    }

    T& at(int64_t i, int64_t j) { return x[static_cast<std::size_t>(columns ? i * p + j : j * n + i)]; }
    void fill(unsigned seed, double offset = 0, double scale = 1) {
        std::mt19937_64 engine(seed);
        std::normal_distribution<double> normal;
        for (int64_t i = 0; i < n; ++i)
            for (int64_t j = 0; j < p; ++j)
                at(i, j) =
                    static_cast<T>(offset + scale * (normal(engine) + 0.3 * normal(engine) * static_cast<double>(j)));
    }
    // Makes the task and registers all arrays.
    nax_ss_task* open(bool with_pair = true) {
        EXPECT_EQ(S::create(&task, &p, &n, &storage, x.data(), weights.empty() ? nullptr : weights.data(),
                            mask.empty() ? nullptr : mask.data(), 1u),
                  0);
        const int ids[] = {7, 8, 9, 10, 11, 12, 13, 14, 15, 18, 67, 68, 69, 70, 71, 72, 73};
        for (std::size_t r = 0; r < results.size(); ++r) EXPECT_EQ(S::edit(task, ids[r], results[r].data()), 0);
        const int matrix_ids[3][2] = {{19, 20}, {21, 22}, {74, 75}};
        for (std::size_t m = 0; m < 3; ++m) {
            EXPECT_EQ(S::edit(task, matrix_ids[m][0], matrices[m].data()), 0);
            EXPECT_EQ(__stoiSSEditTask(task, matrix_ids[m][1], &matrix_storage), 0);
        }
        EXPECT_EQ(with_pair ? S::edit(task, 23, pair) : 0, 0);
        return task;
    }

    int64_t n, p;
    bool columns;
    int64_t storage, matrix_storage = 0;
    std::vector<T> x, weights;
    std::vector<int64_t> mask;
    T pair[2] = {0, 0};
    enum Result {
        kMean,
        kRaw2,
        kRaw3,
        kRaw4,
        kC2,
        kC3,
        kC4,
        kKurtosis,
        kSkewness,
        kVariation,
        kSum,
        kRs2,
        kRs3,
        kRs4,
        kCs2,
        kCs3,
        kCs4
    };
    std::array<std::vector<T>, 17> results;
    std::array<std::vector<T>, 3> matrices;  // covariance, correlation, cross-products
    nax_ss_task* task = nullptr;
};

// All of a sample by two passes in extended precision.
template <class T>
struct Reference {
    std::vector<long double> results[17];
    std::vector<long double> matrices[3];
    long double weight = 0, weight2 = 0;

    explicit Reference(Sample<T>& s) {
        const auto w = [&](int64_t i) {
            return s.weights.empty() ? 1.0L : static_cast<long double>(s.weights[static_cast<std::size_t>(i)]);
        };
        for (int64_t i = 0; i < s.n; ++i) weight += w(i), weight2 += w(i) * w(i);
        const auto size = static_cast<std::size_t>(s.p);
        for (auto& r : results) r.resize(size);
        for (auto& m : matrices) m.resize(size * size);
        const long double factor = 1 / (weight - weight2 / weight);
        for (std::size_t j = 0; j < size; ++j) {
            long double raw[5] = {}, central[5] = {};
            const auto x = [&](int64_t i) { return static_cast<long double>(s.at(i, static_cast<int64_t>(j))); };
            for (int64_t i = 0; i < s.n; ++i)
                for (int k = 1; k <= 4; ++k) raw[k] += w(i) * std::pow(x(i), k);
            for (int64_t i = 0; i < s.n; ++i)
                for (int k = 2; k <= 4; ++k) central[k] += w(i) * std::pow(x(i) - raw[1] / weight, k);
            for (std::size_t k = 1; k <= 4; ++k) {
                results[k - 1][j] = raw[k] / weight;
                results[9 + k][j] = raw[k];
            }
            for (std::size_t k = 2; k <= 4; ++k) {
                results[2 + k][j] = k == 2 ? central[k] * factor : central[k] / weight;
                results[12 + k][j] = central[k];
            }
            const long double c2 = results[4][j];
            results[7][j] = results[6][j] / (c2 * c2) - 3;
            results[8][j] = results[5][j] / std::sqrt(c2 * c2 * c2);
            results[9][j] = std::sqrt(c2) / results[0][j];
        }
        auto& cp = matrices[2];
        for (int64_t i = 0; i < s.n; ++i)
            for (std::size_t a = 0; a < size; ++a)
                for (std::size_t b = 0; b < size; ++b)
                    cp[a * size + b] += w(i) * (s.at(i, static_cast<int64_t>(a)) - results[0][a]) *
                                        (s.at(i, static_cast<int64_t>(b)) - results[0][b]);
        for (std::size_t a = 0; a < size; ++a)
            for (std::size_t b = 0; b < size; ++b) {
                matrices[0][a * size + b] = cp[a * size + b] * factor;
                matrices[1][a * size + b] = a == b ? cp[a * size + b] * factor
                                                   : cp[a * size + b] / std::sqrt(cp[a * size + a] * cp[b * size + b]);
            }
    }
};

// Threads that really are calls in turn, from the last to the first: a result that hangs on scheduling shows.
struct BackwardThreads {
    static inline int limit = 2;
    static inline int regions = 0;
    static void region(int threads, void* context, nax_region_body body) {
        ++regions;
        for (int t = threads - 1; t >= 0; --t) body(t, threads, context);
    }
    // Fewer threads than asked for.
    static void region_of_one(int, void* context, nax_region_body body) { body(0, 1, context); }
    static void loop(int64_t count, int threads, void* context, nax_loop_body body) {
        for (int64_t i = count - 1; i >= 0; --i) body(i, static_cast<int>(i % threads), threads, context);
    }
    static int max_threads() { return limit; }
    static nax_threaders table() { return {loop, nullptr, region, nullptr, max_threads}; }
};

}  // namespace nax::testing
