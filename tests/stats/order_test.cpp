// Order statistics: every entry against a plain computation from std::sort, over both storages, masks and threads.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "nax/statistics.h"
#include "nax/statistics_order.h"
#include "nax/threaders.h"
#include "stats/order/ranking.h"
#include "stats/task.h"
#include "tests/lib/failing_service.h"
#include "tests/lib/guarded_buffer.h"

namespace nax::testing {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr int32_t kRowCode = NAX_SS_STORAGE_ROWS, kColumnCode = NAX_SS_STORAGE_COLUMNS;

const nax_threaders* pool() {
    static nax_threaders table;
    nax_serv_fill_threaders(&table);
    return &table;
}

// A task over p variables of n normal values each, rounded so that some repeat.
template <class T>
class Data {
public:
    Data(int32_t variables, int32_t observations, int32_t code, std::vector<int32_t> selected = {})
        : p(variables), n(observations), storage(code), mask(std::move(selected)), x(static_cast<std::size_t>(p * n)) {
        std::mt19937_64 g(static_cast<uint64_t>(p * 1000 + n));
        std::normal_distribution<double> normal;
        for (int64_t j = 0; j < p; ++j)
            for (int64_t i = 0; i < n; ++i)
                at(j, i) = static_cast<T>(std::round(normal(g) * 1e4) / 1e4 * std::pow(10.0, static_cast<double>(j)));
        const int32_t* const chosen = mask.empty() ? nullptr : mask.data();
        if constexpr (sizeof(T) == 8)
            EXPECT_EQ(__stodSSNewTask(&task, &p, &n, &storage, x.data(), nullptr, chosen, 0), 0);
        else
            EXPECT_EQ(__stosSSNewTask(&task, &p, &n, &storage, x.data(), nullptr, chosen, 0), 0);
    }
    Data(const Data&) = delete;
    Data& operator=(const Data&) = delete;
    ~Data() { __stoSSDeleteTask(&task); }
    T& at(int64_t j, int64_t i) { return x[static_cast<std::size_t>(storage == kRowCode ? j * n + i : i * p + j)]; }
    std::vector<T> sorted(int64_t j) {
        std::vector<T> v;
        for (int64_t i = 0; i < n; ++i) v.push_back(at(j, i));
        std::sort(v.begin(), v.end());
        return v;
    }
    bool is_selected(int64_t j) const { return mask.empty() || mask[static_cast<std::size_t>(j)] != 0; }
    void edit(int32_t id, const void* value) { EXPECT_EQ(__stoiSSEditTask(task, id, value), 0); }
    void edit_reals(int32_t id, T* value) {
        if constexpr (sizeof(T) == 8)
            EXPECT_EQ(__stodSSEditTask(task, id, value), 0);
        else
            EXPECT_EQ(__stosSSEditTask(task, id, value), 0);
    }

    int32_t p, n, storage;
    std::vector<int32_t> mask;
    std::vector<T> x;
    nax_ss_task* task = nullptr;
};

template <class T>
using Entry = int32_t (*)(nax_ss_task*, uint64_t, uint64_t, const nax_threaders*);
template <class T>
int32_t quantiles_of(Data<T>& d, uint64_t estimates, const nax_threaders* threaders = nullptr) {
    const Entry<T> entry = sizeof(T) == 8 ? _stodSSQuantiles : _stosSSQuantiles;
    return entry(d.task, estimates, NAX_SS_METHOD_FAST, threaders);
}

// The definition, in the arithmetic of each form.
template <class T>
T expected_quantile(const std::vector<T>& x, T q, bool from_sorted) {
    const auto n = static_cast<int64_t>(x.size());
    const T last = static_cast<T>(n - 1);
    const auto k = static_cast<int64_t>(last * q);
    const T f = std::fma(q, last, -static_cast<T>(k));
    const T low = x[static_cast<std::size_t>(k)], high = x[static_cast<std::size_t>(std::min(k + 1, n - 1))];
    return from_sorted ? std::fma(1 - f, low, f * high) : std::fma(high - low, f, low);
}

template <class T>
void check_quantiles(int32_t p, int32_t n, int32_t storage, std::vector<int32_t> mask, const nax_threaders* threaders) {
    SCOPED_TRACE(std::to_string(p) + " by " + std::to_string(n));
    Data<T> d(p, n, storage, mask);
    std::vector<T> orders{T(0.5), T(1), T(0), T(0.3), T(0.999), T(0.001), T(0.3)};
    for (int k = 1; k < 60; ++k) orders.push_back(static_cast<T>(k) / 60);
    const auto m = static_cast<int32_t>(orders.size());
    for (const int32_t out : {kRowCode, kColumnCode}) {
        const T untouched = T(-77);
        std::vector<T> quantiles(static_cast<std::size_t>(p * m), untouched),
            ranked(static_cast<std::size_t>(p * n), untouched);
        d.edit(NAX_SS_QUANTILE_ORDER_COUNT, &m);
        d.edit_reals(NAX_SS_QUANTILE_ORDERS, orders.data());
        d.edit_reals(NAX_SS_QUANTILES, quantiles.data());
        d.edit_reals(NAX_SS_ORDER_STATISTICS, ranked.data());
        d.edit(NAX_SS_ORDER_STATISTICS_STORAGE, &out);
        const std::vector<T> before = d.x;
        for (const bool sorted : {false, true}) {
            ASSERT_EQ(
                quantiles_of(d, NAX_SS_ESTIMATE_QUANTILES | (sorted ? NAX_SS_ESTIMATE_ORDER_STATISTICS : 0), threaders),
                0);
            int64_t i = 0;
            for (int64_t j = 0; j < p; ++j) {
                if (!d.is_selected(j)) continue;
                const std::vector<T> x = d.sorted(j);
                for (int32_t r = 0; r < m; ++r)
                    ASSERT_EQ(quantiles[static_cast<std::size_t>(i * m + r)],
                              expected_quantile(x, orders[static_cast<std::size_t>(r)], sorted))
                        << "variable " << j << " order " << orders[static_cast<std::size_t>(r)];
                for (int64_t k = 0; sorted && k < n; ++k)
                    ASSERT_EQ(ranked[static_cast<std::size_t>(out == kRowCode || p == 1 ? i * n + k : k * p + i)],
                              x[static_cast<std::size_t>(k)]);
                ++i;
            }
            for (std::size_t r = static_cast<std::size_t>(i * m); r < quantiles.size(); ++r)
                ASSERT_EQ(quantiles[r], untouched);
        }
        EXPECT_EQ(d.x, before);
    }
}

TEST(OrderStatistics, QuantilesFollowTheirDefinition) {
    for (const int32_t storage : {kRowCode, kColumnCode})
        for (const nax_threaders* threaders : {static_cast<const nax_threaders*>(nullptr), pool()}) {
            for (const int32_t n : {1, 2, 3, 11, 128, 129, 300, 4000}) {
                check_quantiles<double>(3, n, storage, {}, threaders);
                check_quantiles<float>(4, n, storage, {0, 1, 0, 2}, threaders);
            }
            check_quantiles<double>(1, 30000, storage, {}, threaders);
            check_quantiles<float>(2, 30000, storage, {}, threaders);
        }
}

// Selection on data that maps of buckets find hard, every rank's neighbourhood included.
TEST(OrderStatistics, SelectionOfHardData) {
    constexpr int64_t n = 20000;
    std::mt19937_64 g(5);
    std::vector<std::vector<double>> sets(6, std::vector<double>(n));
    for (std::size_t i = 0; i < n; ++i) {
        sets[0][i] = 3;
        sets[1][i] = i % 50 == 0 ? static_cast<double>(g() % 1000) : 0.0;
        sets[2][i] = std::ldexp(1.0, static_cast<int>(g() % 2000) - 1000) * (g() % 2 ? 1 : -1);
        sets[3][i] = static_cast<double>(std::min(i, n - i));
        sets[4][i] = g() % 8   ? 1.0
                     : g() % 8 ? 1.0 + std::ldexp(static_cast<double>(g() % 100), -40)
                               : std::ldexp(static_cast<double>(g() % 100), -1060);
        sets[5][i] = i % 3 ? kInfinity : g() % 2 ? -kInfinity : -0.0;
    }
    std::vector<int64_t> ranks{0, 1, 2, 17, 4999, 5000, 9999, 10000, 10001, 15000, 19998, 19999};
    for (const std::vector<double>& x : sets) {
        std::vector<double> sorted = x, values(ranks.size());
        std::sort(sorted.begin(), sorted.end());
        GuardedBuffer<double> data(n), work(n);
        std::copy(x.begin(), x.end(), data.begin());
        stats::select_reals(data.data(), n, work.data(), ranks.data(), static_cast<int64_t>(ranks.size()),
                            values.data());
        for (std::size_t r = 0; r < ranks.size(); ++r) EXPECT_EQ(values[r], sorted[static_cast<std::size_t>(ranks[r])]);
        EXPECT_EQ(std::memcmp(data.data(), x.data(), n * sizeof(double)), 0);
    }
}

TEST(OrderStatistics, InfiniteNeighboursGiveNoNaN) {
    double x[11], orders[] = {0.0, 0.3, 0.35, 0.5, 0.75, 1.0}, quantiles[6], ranked[11];
    for (int i = 0; i < 11; ++i) x[i] = i < 2 ? -kInfinity : i > 6 ? kInfinity : i;
    const double expected[] = {-kInfinity, 3, 3.5, 5, kInfinity, kInfinity};
    const int32_t p = 1, n = 11, m = 6;
    nax_ss_task* task = nullptr;
    ASSERT_EQ(__stodSSNewTask(&task, &p, &n, &kRowCode, x, nullptr, nullptr, 0), 0);
    ASSERT_EQ(__stodSSEditQuantiles(task, &m, orders, quantiles, ranked, &kRowCode), 0);
    for (const uint64_t sorted : {uint64_t{0}, NAX_SS_ESTIMATE_ORDER_STATISTICS}) {
        ASSERT_EQ(_stodSSQuantiles(task, NAX_SS_ESTIMATE_QUANTILES | sorted, NAX_SS_METHOD_FAST, nullptr), 0);
        for (int r = 0; r < m; ++r) {
            if (std::isinf(expected[r]))
                EXPECT_EQ(quantiles[r], expected[r]) << r;
            else
                EXPECT_NEAR(quantiles[r], expected[r], 1e-14) << r;
        }
    }
    __stoSSDeleteTask(&task);
}

TEST(OrderStatistics, QuantilesReportTheFirstFault) {
    Data<double> d(40, 500, kRowCode);
    const auto run = [&](uint64_t estimates, uint64_t method = NAX_SS_METHOD_FAST) {
        return _stodSSQuantiles(d.task, estimates, method, nullptr);
    };
    constexpr uint64_t kQuantiles = NAX_SS_ESTIMATE_QUANTILES, kOrders = NAX_SS_ESTIMATE_ORDER_STATISTICS;
    EXPECT_EQ(_stodSSQuantiles(nullptr, kQuantiles, 1, nullptr), SsStatusNullTask);
    double orders[2] = {0.5, 1.5}, quantiles[80] = {9, 9, 9, 9}, ranked[1];
    const int32_t negative = -1, two = 2, one = 1, zero = 0, none = 4;
    EXPECT_EQ(run(kQuantiles | kOrders), SsStatusNoQuantiles);
    d.edit_reals(NAX_SS_QUANTILES, quantiles);
    EXPECT_EQ(run(kQuantiles | kOrders), SsStatusNoQuantileOrders);
    d.edit_reals(NAX_SS_QUANTILE_ORDERS, orders);
    EXPECT_EQ(run(kQuantiles | kOrders), SsStatusBadQuantileOrders);
    d.edit(NAX_SS_QUANTILE_ORDER_COUNT, &negative);
    EXPECT_EQ(run(kQuantiles | kOrders), SsStatusBadQuantileOrders);
    d.edit(NAX_SS_QUANTILE_ORDER_COUNT, &two);
    EXPECT_EQ(run(kQuantiles | kOrders), SsStatusBadQuantileOrders);
    d.edit(NAX_SS_QUANTILE_ORDER_COUNT, &one);
    EXPECT_EQ(run(kQuantiles | kOrders), SsStatusNoOrderStatistics);
    d.edit_reals(NAX_SS_ORDER_STATISTICS, ranked);
    EXPECT_EQ(run(kQuantiles | kOrders), SsStatusNoStorage);
    d.edit(NAX_SS_ORDER_STATISTICS_STORAGE, &none);
    EXPECT_EQ(run(kQuantiles | kOrders), SsStatusBadStorage);
    EXPECT_EQ(run(kQuantiles, NAX_SS_METHOD_ONE_PASS), SsStatusBadMethod);
    EXPECT_EQ(quantiles[0], 9);
    d.edit(NAX_SS_QUANTILE_ORDER_COUNT, &zero);
    EXPECT_EQ(run(kQuantiles), SsStatusOk);
    EXPECT_EQ(quantiles[0], 9);
    d.edit(NAX_SS_QUANTILE_ORDER_COUNT, &one);
    for (const nax_threaders* threaders : {static_cast<const nax_threaders*>(nullptr), pool()}) {
        EXPECT_EQ(for_each_failing_allocation([&] { return _stodSSQuantiles(d.task, kQuantiles, 1, threaders); },
                                              int32_t{SsStatusMemory}, int32_t{SsStatusOk}),
                  2);
    }
    d.edit(NAX_SS_OBSERVATION_STORAGE, &none);
    EXPECT_EQ(run(kQuantiles), SsStatusBadStorage);
}

TEST(OrderStatistics, SortingIntoAnyStorageAndInPlace) {
    for (const int32_t from : {kRowCode, kColumnCode})
        for (const int32_t to : {kRowCode, kColumnCode})
            for (const bool masked : {false, true}) {
                Data<double> d(3, 1000, from, masked ? std::vector<int32_t>{1, 0, 1} : std::vector<int32_t>{});
                std::vector<double> sorted(3000, -77.0);
                d.edit_reals(NAX_SS_SORTED, sorted.data());
                d.edit(NAX_SS_SORTED_STORAGE, &to);
                ASSERT_EQ(_stodSSSort(d.task, 0, NAX_SS_METHOD_RADIX, pool()), 0);
                int64_t i = 0;
                for (int64_t j = 0; j < 3; ++j) {
                    if (!d.is_selected(j)) continue;
                    const std::vector<double> x = d.sorted(j);
                    for (int64_t k = 0; k < 1000; ++k)
                        ASSERT_EQ(sorted[static_cast<std::size_t>(to == kRowCode ? i * 1000 + k : k * 3 + i)],
                                  x[static_cast<std::size_t>(k)]);
                    ++i;
                }
                EXPECT_EQ(std::count(sorted.begin(), sorted.end(), -77.0), (3 - i) * 1000);
                EXPECT_EQ(_stodSSSort(d.task, 0, NAX_SS_METHOD_FAST, nullptr), SsStatusBadMethod);
                EXPECT_EQ(
                    for_each_failing_allocation([&] { return _stodSSSort(d.task, 0, NAX_SS_METHOD_RADIX, nullptr); },
                                                int32_t{SsStatusMemory}, int32_t{SsStatusOk}),
                    1);

                d.edit_reals(NAX_SS_SORTED, d.x.data());
                std::vector<std::vector<double>> expected;
                for (int64_t j = 0; j < 3; ++j) expected.push_back(d.sorted(j));
                const int32_t status = _stodSSSort(d.task, 0, NAX_SS_METHOD_RADIX, nullptr);
                EXPECT_EQ(status, from != to ? SsStatusNoStorage : masked ? SsStatusMaskInPlace : SsStatusOk);
                for (int64_t j = 0; status == 0 && j < 3; ++j)
                    for (int64_t k = 0; k < 1000; ++k)
                        ASSERT_EQ(d.at(j, k), expected[static_cast<std::size_t>(j)][static_cast<std::size_t>(k)]);
            }
    Data<double> d(1, 4, kRowCode);
    EXPECT_EQ(_stodSSSort(d.task, 0, NAX_SS_METHOD_RADIX, nullptr), SsStatusNoSorted);
    double sorted[4];
    d.edit_reals(NAX_SS_SORTED, sorted);
    EXPECT_EQ(_stodSSSort(d.task, 0, NAX_SS_METHOD_RADIX, nullptr), SsStatusNoStorage);
}

// The rule, step by step on exact integer weights, where no sum is rounded.
double expected_weighted(std::vector<std::pair<double, double>> x, double q) {
    std::sort(x.begin(), x.end());
    const bool odd = x.size() % 2 != 0;
    double total = 0, c = 0;
    for (const auto& [value, weight] : x) total += weight;
    const double target = total * q;
    for (std::size_t k = 0; k < x.size(); ++k) {
        c += x[k].second;
        if (c < target) continue;
        const double before = c - x[k].second;
        if (c > target) {
            if (!(before > 0)) return x[k].first;
            std::size_t m = k - 1;
            while (!(x[m].second > 0)) --m;
            if (odd && before == (total - x[k].second) * q) return x[k].first;
            return std::fma(x[k].first - x[m].first, (target - before) / (c - before), x[m].first);
        }
        if (odd || k + 1 == x.size()) return x[k].first;
        for (std::size_t next = k + 1; next < x.size(); ++next)
            if (x[next].second > 0) return 0.5 * (x[k].first + x[next].first);
        return 0.5 * (x[k].first + x.back().first);
    }
    return x.back().first;
}

TEST(OrderStatistics, WeightedMedianFollowsItsRule) {
    std::mt19937_64 g(3);
    for (const int32_t storage : {kRowCode, kColumnCode})
        for (int32_t n = 1; n < 60; ++n)
            for (double q : {0.0, 0.25, 0.5, 0.75, 1.0}) {
                Data<double> d(2, n, storage);
                std::vector<double> w(static_cast<std::size_t>(n));
                for (double& weight : w) weight = static_cast<double>(g() % 4);
                if (n % 9 == 0) std::fill(w.begin(), w.end(), 0.0);
                for (int64_t j = 0; j < 2; ++j)  // all different: the order of equal values is open
                    for (int64_t i = 0; i < n; ++i)
                        d.at(j, i) = static_cast<double>((i * 17 + j) % 61) + 0.25 * static_cast<double>(i);
                double result[2];
                d.edit_reals(NAX_SS_WEIGHTS, w.data());
                d.edit_reals(NAX_SS_QUANTILE_ORDERS, &q);
                d.edit_reals(NAX_SS_QUANTILES, result);
                ASSERT_EQ(_stodSSWMedian(d.task, 0, 0, nullptr), 0);
                for (int64_t j = 0; j < 2; ++j) {
                    std::vector<std::pair<double, double>> pairs;
                    for (int64_t i = 0; i < n; ++i) pairs.emplace_back(d.at(j, i), w[static_cast<std::size_t>(i)]);
                    ASSERT_EQ(result[j], expected_weighted(pairs, q)) << "n = " << n << " q = " << q;
                }
            }
    // Sums that round differently on the way: the walk ends within the data.
    Data<double> d(1, 999, kRowCode);
    std::vector<double> w(999);
    for (double& weight : w) weight = static_cast<double>(g() >> 11) * 0x1p-53;
    double one = 1, result = 0;
    d.edit_reals(NAX_SS_WEIGHTS, w.data());
    d.edit_reals(NAX_SS_QUANTILE_ORDERS, &one);
    d.edit_reals(NAX_SS_QUANTILES, &result);
    ASSERT_EQ(_stodSSWMedian(d.task, 0, 0, nullptr), 0);
    EXPECT_GE(result, d.sorted(0)[997]);
    EXPECT_LE(result, d.sorted(0)[998]);
    EXPECT_EQ(for_each_failing_allocation([&] { return _stodSSWMedian(d.task, 0, 0, nullptr); },
                                          int32_t{SsStatusMemory}, int32_t{SsStatusOk}),
              1);
}

template <class T>
void check_deviations(int32_t p, int32_t n, int32_t storage, const nax_threaders* threaders) {
    Data<T> d(p, n, storage, p == 3 ? std::vector<int32_t>{1, 0, 1} : std::vector<int32_t>{});
    std::vector<T> median(static_cast<std::size_t>(p), T(-1)), mean = median,
                                                               centre(static_cast<std::size_t>(p), T(0.5));
    d.edit_reals(NAX_SS_MEDIAN_ABSOLUTE_DEVIATION, median.data());
    d.edit_reals(NAX_SS_MEAN_ABSOLUTE_DEVIATION, mean.data());
    d.edit_reals(NAX_SS_MEAN, centre.data());
    const Entry<T> entry = sizeof(T) == 8 ? _stodSSMAD : _stosSSMAD;
    constexpr uint64_t kBoth = NAX_SS_ESTIMATE_MEDIAN_ABSOLUTE_DEVIATION | NAX_SS_ESTIMATE_MEAN_ABSOLUTE_DEVIATION;
    const auto mean_deviation = [&](int64_t j, long double m) {
        long double sum = 0;
        for (int64_t i = 0; i < n; ++i) sum += std::fabs(static_cast<long double>(d.at(j, i)) - m);
        return static_cast<double>(sum / n);
    };
    for (const uint64_t method :
         {NAX_SS_METHOD_FAST, NAX_SS_METHOD_FAST, NAX_SS_METHOD_FAST | NAX_SS_METHOD_USER_MEAN}) {
        ASSERT_EQ(entry(d.task, kBoth, method, threaders), 0);
        for (int64_t j = 0; j < p; ++j) {
            const auto at = static_cast<std::size_t>(j);
            if (!d.is_selected(j)) {
                EXPECT_EQ(median[at], T(-1));
                EXPECT_EQ(mean[at], T(-1));
                continue;
            }
            std::vector<T> x = d.sorted(j);
            const T m = expected_quantile(x, T(0.5), false);
            for (T& value : x) value = std::fabs(value - m);
            std::sort(x.begin(), x.end());
            EXPECT_EQ(median[at], expected_quantile(x, T(0.5), false));
            long double sum = 0;
            for (int64_t i = 0; i < n; ++i) sum += static_cast<long double>(d.at(j, i));
            const double expected = mean_deviation(j, (method & NAX_SS_METHOD_USER_MEAN) != 0 ? 0.5L : sum / n);
            EXPECT_NEAR(mean[at], expected, 8 * expected * std::numeric_limits<T>::epsilon() + (n == 1 ? 1e-6 : 0));
        }
    }
}

TEST(OrderStatistics, AbsoluteDeviations) {
    for (const int32_t storage : {kRowCode, kColumnCode})
        for (const int32_t n : {1, 2, 3, 100, 5001}) {
            check_deviations<double>(3, n, storage, nullptr);
            check_deviations<float>(2, n, storage, pool());
        }
    Data<double> d(1, 900, kRowCode);
    constexpr uint64_t kMedian = NAX_SS_ESTIMATE_MEDIAN_ABSOLUTE_DEVIATION,
                       kMean = NAX_SS_ESTIMATE_MEAN_ABSOLUTE_DEVIATION;
    const auto run = [&](uint64_t estimates, uint64_t method) {
        return _stodSSMAD(d.task, estimates, method, nullptr);
    };
    EXPECT_EQ(run(kMedian, 1), SsStatusNoMedianAbsoluteDeviation);
    EXPECT_EQ(run(kMean, 1), SsStatusNoMeanAbsoluteDeviation);
    double result = 0, mean = 0;
    d.edit_reals(NAX_SS_MEAN_ABSOLUTE_DEVIATION, &result);
    EXPECT_EQ(run(kMedian | kMean, 1), SsStatusOk);  // the mean's outcome stands for both
    EXPECT_EQ(run(kMean, 2), SsStatusBadMethod);
    EXPECT_EQ(run(kMean, NAX_SS_METHOD_USER_MEAN), SsStatusNoMean);
    d.edit_reals(NAX_SS_MEDIAN_ABSOLUTE_DEVIATION, &result);
    d.edit_reals(NAX_SS_MEAN, &mean);
    EXPECT_EQ(run(kMedian, NAX_SS_METHOD_USER_MEAN), SsStatusBadMethod);
    EXPECT_EQ(
        for_each_failing_allocation([&] { return run(kMedian, 1); }, int32_t{SsStatusMemory}, int32_t{SsStatusOk}), 1);
    const int32_t both = 0x30000, zero = 0;
    d.edit(NAX_SS_OBSERVATION_STORAGE, &both);
    EXPECT_EQ(run(kMean, 1), SsStatusBadStorage);
    d.edit(NAX_SS_OBSERVATION_COUNT, &zero);
    EXPECT_EQ(run(kMean, 1), SsStatusBadObservationCount);
    d.edit(NAX_SS_DIMENSION, &zero);
    EXPECT_EQ(run(kMean, 1), SsStatusBadDimension);
}

TEST(OrderStatistics, MahalanobisDistances) {
    for (const int32_t storage : {kRowCode, kColumnCode})
        for (const int32_t p : {1, 2, 5, 33, 1030}) {
            constexpr int32_t n = 12, first = 3, last = 10;
            Data<double> d(p, n, storage);
            std::mt19937_64 g(9);
            for (double& value : d.x) value = static_cast<double>(g() % 1000) / 100;
            std::vector<double> mean(static_cast<std::size_t>(p)), inverse(static_cast<std::size_t>(p * p));
            for (double& m : mean) m = static_cast<double>(g() % 1000) / 100;
            for (int64_t i = 0; i < p; ++i)
                for (int64_t j = 0; j < p; ++j)
                    inverse[static_cast<std::size_t>(i * p + j)] =
                        (i == j ? 2.0 : 0.0) + 1.0 / static_cast<double>(1 + i + j);
            std::vector<double> work(static_cast<std::size_t>(2 * (last - first) * p));
            for (const int32_t room : {0, static_cast<int32_t>(work.size()) - 1, static_cast<int32_t>(work.size())}) {
                std::vector<double> result(n, -1.0);
                d.task->distance_first = &first;
                d.task->distance_last = &last;
                d.task->distance_mean = mean.data();
                d.task->distance_inverse = inverse.data();
                d.task->distance_result = result.data();
                d.task->distance_work = work.data();
                d.task->distance_work_size = &room;
                ASSERT_EQ(_stodSSMahDistance(d.task, 0, 0, nullptr), 0);
                for (int64_t i = 0; i < n; ++i) {
                    long double form = 0;
                    for (int64_t a = 0; a < p; ++a)
                        for (int64_t b = 0; b < p; ++b)
                            form += (static_cast<long double>(d.at(a, i)) - mean[static_cast<std::size_t>(a)]) *
                                    inverse[static_cast<std::size_t>(a * p + b)] *
                                    (static_cast<long double>(d.at(b, i)) - mean[static_cast<std::size_t>(b)]);
                    const double expected = i < first || i >= last ? -1.0 : static_cast<double>(std::sqrt(form));
                    ASSERT_NEAR(result[static_cast<std::size_t>(i)], expected, 1e-13 * std::fabs(expected)) << p;
                }
                d.task->distance_last = &first;  // an empty range
                std::vector<double> same = result;
                ASSERT_EQ(_stodSSMahDistance(d.task, 0, 0, nullptr), 0);
                EXPECT_EQ(result, same);
            }
        }
}

// Keys move with what belongs to them, equal ones in their old order, on data that maps of buckets find hard as well.
TEST(OrderStatistics, SortingWithPayloadIsStable) {
    std::mt19937_64 g(6);
    for (int kind = 0; kind < 6; ++kind)
        for (const std::size_t n : {1u, 2u, 19u, 20u, 21u, 200u, 5000u, 40000u}) {
            GuardedBuffer<double> keys(n), payload(n), scratch(2 * n);
            std::vector<std::pair<double, double>> expected;
            for (std::size_t i = 0; i < n; ++i) {
                keys[i] = kind == 0   ? static_cast<double>(g()) - 0x1p63
                          : kind == 1 ? static_cast<double>(g() % 7)
                          : kind == 2 ? -static_cast<double>(i)
                          : kind == 3 ? 4.0
                          : kind == 4 ? std::ldexp(1.0, -static_cast<int>(g() % 64)) *
                                            (1 + static_cast<double>(g() % 3) * 0x1p-50)
                                      : (g() % 100 ? 2.0 : static_cast<double>(g()));
                payload[i] = static_cast<double>(i);
                expected.emplace_back(keys[i], payload[i]);
            }
            std::stable_sort(expected.begin(), expected.end(),
                             [](const auto& a, const auto& b) { return a.first < b.first; });
            stats::sort_with_payload(keys.data(), payload.data(), scratch.data(), static_cast<int64_t>(n));
            for (std::size_t i = 0; i < n; ++i)
                ASSERT_EQ(std::make_pair(keys[i], payload[i]), expected[i]) << "kind " << kind << " n " << n;
        }
}

TEST(OrderStatistics, QuicksortsAndTheirSelection) {
    std::mt19937_64 g(1);
    for (int kind = 0; kind < 6; ++kind)
        for (const int64_t n : {0, 1, 2, 7, 8, 9, 40, 1000}) {
            std::vector<double> x(static_cast<std::size_t>(n));
            for (std::size_t i = 0; i < x.size(); ++i)
                x[i] = kind == 0   ? static_cast<double>(g())
                       : kind == 1 ? static_cast<double>(i)
                       : kind == 2 ? -static_cast<double>(i)
                       : kind == 3 ? 1.0
                       : kind == 4 ? static_cast<double>(std::min(i, x.size() - i))
                                   : static_cast<double>(g() % 3);
            std::vector<double> expected = x, y = x;
            std::sort(expected.begin(), expected.end());
            __stodQSort(n, y.data());
            ASSERT_EQ(y, expected);
            for (int64_t k = 0; k < n; k += 1 + n / 7) {
                y = x;
                ASSERT_EQ(__stodQSortSelect(n, y.data(), k), expected[static_cast<std::size_t>(k)]);
            }
            std::vector<double> strided(static_cast<std::size_t>(3 * n), -5.0), payload(x.size());
            for (std::size_t i = 0; i < x.size(); ++i) strided[3 * i] = x[i];
            __stodQSortStep(n, strided.data(), 3);
            for (std::size_t i = 0; i < x.size(); ++i) {
                ASSERT_EQ(strided[3 * i], expected[i]);
                ASSERT_EQ(strided[3 * i + 1], -5.0);
            }
            y = x;
            for (std::size_t i = 0; i < x.size(); ++i) payload[i] = static_cast<double>(i);
            _vdSSQuickMapSort(n, y.data(), payload.data());
            ASSERT_EQ(y, expected);
            for (std::size_t i = 0; i < x.size(); ++i) ASSERT_EQ(x[static_cast<std::size_t>(payload[i])], y[i]);
            std::sort(payload.begin(), payload.end());
            for (std::size_t i = 0; i < x.size(); ++i) ASSERT_EQ(payload[i], static_cast<double>(i));
        }
    // NaNs don't lead a scan out of the array.
    GuardedBuffer<float> x(500);
    for (float& value : x) value = g() % 3 ? std::numeric_limits<float>::quiet_NaN() : static_cast<float>(g() % 10);
    const auto nans = [&] { return std::count_if(x.begin(), x.end(), [](float v) { return v != v; }); };
    const auto before = nans();
    __stosQSort(500, x.data());
    __stosQSortSelect(500, x.data(), 250);
    EXPECT_EQ(nans(), before);
}

}  // namespace
}  // namespace nax::testing
