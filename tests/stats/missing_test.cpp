// Missing values: EM against published estimates, the draws against their distributions, the entry's order and
// statuses.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "nax/statistics_robust.h"
#include "stats/missing/normal_model.h"
#include "tests/lib/failing_service.h"
#include "tests/stats/support.h"

namespace nax::testing {
namespace {

using namespace stats::missing;

template <class T>
T missing_entry() {
    return -std::numeric_limits<T>::quiet_NaN();
}

// A. Hald's cement data with the holes of D. B. Rubin (1976), Little and Rubin (2002), example 7.7: x4 of the last
// seven observations and x1, x2 of the last four are missing.
std::vector<double> hald() {
    const double x[5][13] = {{7, 1, 11, 11, 7, 11, 3, 1, 2, 21, 1, 11, 10},
                             {26, 29, 56, 31, 52, 55, 71, 31, 54, 47, 40, 66, 68},
                             {6, 15, 8, 8, 6, 9, 17, 22, 18, 4, 23, 9, 8},
                             {60, 52, 20, 47, 33, 22, 6, 44, 22, 26, 34, 12, 12},
                             {78.5, 74.3, 104.3, 87.6, 95.9, 109.2, 102.7, 72.5, 93.1, 115.9, 83.8, 113.3, 109.4}};
    std::vector<double> rows;
    for (int j = 0; j < 5; ++j)
        for (int i = 0; i < 13; ++i)
            rows.push_back((j < 2 && i >= 9) || (j == 3 && i >= 6) ? missing_entry<double>() : x[j][i]);
    return rows;
}

TEST(Missing, EmGivesThePublishedMaximumLikelihoodMeans) {
    const std::vector<double> x = hald();
    for (const double offset : {0.0, 1e7}) {
        std::vector<double> shifted = x;
        for (double& v : shifted)
            if (!std::isnan(v)) v += offset;
        const Observations<double> data{shifted.data(), 5, 13, true};
        Patterns patterns;
        ASSERT_EQ(patterns.find(data), 0);
        EXPECT_EQ(patterns.count(), 3);
        EXPECT_EQ(patterns.missing_entries(), 15);
        NormalModel<double> model(data, patterns);
        ASSERT_EQ(model.open(), 0);
        model.start_from_data();
        double change = 1;
        int steps = 0;
        for (; change > 1e-9 && steps < 5000; ++steps) change = model.em_step();
        EXPECT_LT(steps, 2000);
        const double means[5] = {6.655, 49.965, 11.769, 27.047, 95.423};
        for (int j = 0; j < 5; ++j) EXPECT_NEAR(model.theta()[j + 1] + model.centre()[j] - offset, means[j], 6e-4);
    }
}

// Rows without any entry are no data: the estimate is that without them.
TEST(Missing, EmptyRowsDontMoveTheEstimate) {
    const std::vector<double> x = hald();
    std::vector<double> longer;
    for (int j = 0; j < 5; ++j) {
        longer.insert(longer.end(), x.begin() + j * 13, x.begin() + (j + 1) * 13);
        longer.insert(longer.end(), 5, missing_entry<double>());
    }
    double theta[2][36];
    int which = 0;
    for (const std::vector<double>& rows : {x, longer}) {
        const Observations<double> data{rows.data(), 5, static_cast<int64_t>(rows.size()) / 5, true};
        Patterns patterns;
        ASSERT_EQ(patterns.find(data), 0);
        NormalModel<double> model(data, patterns);
        ASSERT_EQ(model.open(), 0);
        model.start_from_data();
        for (int step = 0; step < 100; ++step) model.em_step();
        std::copy(model.theta(), model.theta() + 36, theta[which++]);
    }
    for (int e = 0; e < 36; ++e) EXPECT_NEAR(theta[1][e], theta[0][e], 1e-9 * (1 + std::fabs(theta[0][e])));
}

TEST(Missing, ForwardSweepsGiveARegressionAndReverseOnesUndoThem) {
    // Variables z, y with y = 3 + 2 z + noise of variance 5: E z = 1, Var z = 4.
    const double theta[9] = {-1, 1, 5, 1, 4, 8, 5, 8, 21};
    double swept[9];
    std::memcpy(swept, theta, sizeof theta);
    sweep(3, swept, 1, 1);
    EXPECT_NEAR(swept[2], 3, 1e-14);
    EXPECT_NEAR(swept[5], 2, 1e-14);
    EXPECT_NEAR(swept[8], 5, 1e-14);
    sweep(3, swept, 1, -1);
    for (int e = 0; e < 9; ++e) EXPECT_NEAR(swept[e], theta[e], 1e-13);
}

// Posterior draws of complete data: Sigma has the mean Psi'/(m' - p - 1) and mu the centre, with the default prior and
// with one of its own.
TEST(Missing, PosteriorDrawsHaveTheirMeans) {
    const int64_t n = 30, p = 3;
    Sample<double> s(n, p, true);
    s.fill(5, 2);
    const Observations<double> data{s.x.data(), p, n, false};
    const Reference<double> reference(s);
    for (const bool informative : {false, true}) {
        Patterns patterns;
        ASSERT_EQ(patterns.find(data), 0);
        NormalModel<double> model(data, patterns);
        ASSERT_EQ(model.open(), 0);
        model.start_from_data();
        const double tau = informative ? 12 : 0, m = informative ? 20 : static_cast<double>(p);
        double mean0[3] = {0, 0, 0};
        if (informative) {
            model.prior().tau = tau;
            model.prior().m = 20;
            for (int j = 0; j < 3; ++j) {
                model.prior().mean[j] = mean0[j] = 0.5 - j;
                model.prior().scale[j * 4] = 25;
            }
        }
        nax_stream* stream = nullptr;
        const uint32_t seed = 3;
        ASSERT_EQ(__stoNewStreamEx(&stream, NAX_BRNG_MCG59, 1, &seed), 0);
        ASSERT_EQ(model.draw_missing(stream, nullptr), 0);
        constexpr int kDraws = 20000;
        double sigma[9] = {}, mu[3] = {};
        for (int d = 0; d < kDraws; ++d) {
            ASSERT_EQ(model.draw_theta(stream), 0);
            for (int j = 0; j < 3; ++j) {
                mu[j] += model.theta()[j + 1] / kDraws;
                for (int k = 0; k < 3; ++k) sigma[j * 3 + k] += model.theta()[(j + 1) * 4 + k + 1] / kDraws;
            }
        }
        __stoDeleteStream(&stream);
        for (int j = 0; j < 3; ++j) {
            const auto y = [&](int a) {
                return static_cast<double>(reference.results[0][static_cast<std::size_t>(a)]) - model.centre()[a];
            };
            EXPECT_NEAR(mu[j], (static_cast<double>(n) * y(j) + tau * mean0[j]) / (tau + static_cast<double>(n)), 0.02);
            for (int k = 0; k < 3; ++k) {
                const double psi = static_cast<double>(reference.matrices[2][static_cast<std::size_t>(j * 3 + k)]) +
                                   (informative && j == k ? 25 : 0) +
                                   static_cast<double>(n) * tau / (tau + static_cast<double>(n)) * (y(j) - mean0[j]) *
                                       (y(k) - mean0[k]);
                EXPECT_NEAR(
                    sigma[j * 3 + k], psi / (m + static_cast<double>(n) - 3 - 1),
                    0.02 * std::sqrt(static_cast<double>(reference.matrices[0][static_cast<std::size_t>(j * 4)]) *
                                     static_cast<double>(reference.matrices[0][static_cast<std::size_t>(k * 4)])));
            }
        }
    }
}

template <class T>
class ImputationOf : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(ImputationOf, Precisions);

template <class T>
struct Imputation {
    std::vector<T> params{50, 20, T(1e-4), 3, 0}, simulated, estimates;
    int64_t five = 5, simulated_count = 0, estimate_count = 0;
    void register_with(Sample<T>& s, int64_t missing) {
        params[4] = static_cast<T>(missing);
        const auto m = static_cast<int64_t>(params[3]), t = static_cast<int64_t>(params[1]);
        simulated_count = m * missing;
        estimate_count = m * t * s.p * (s.p + 3) / 2;
        simulated.assign(static_cast<std::size_t>(simulated_count), T(-7));
        estimates.assign(static_cast<std::size_t>(estimate_count), T(-7));
        __stoiSSEditTask(s.task, 50, &five);
        Statistics<T>::edit(s.task, 51, params.data());
        __stoiSSEditTask(s.task, 54, &simulated_count);
        Statistics<T>::edit(s.task, 55, simulated.data());
        __stoiSSEditTask(s.task, 56, &estimate_count);
        Statistics<T>::edit(s.task, 57, estimates.data());
    }
    static int32_t run(Sample<T>& s) {
        if constexpr (sizeof(T) == 8)
            return _stodSSMissingValues(s.task, 0, 0x10, nullptr);
        else
            return _stosSSMissingValues(s.task, 0, 0x10, nullptr);
    }
};

// Variables of very different levels, so that a value shows whose place it takes.
template <class T>
int64_t make_holes(Sample<T>& s, std::vector<std::pair<int64_t, int64_t>>& order) {
    std::vector<std::vector<std::pair<int64_t, int64_t>>> groups;
    std::vector<std::vector<bool>> seen;
    for (int64_t i = 0; i < s.n; ++i) {
        std::vector<bool> pattern;
        for (int64_t j = 0; j < s.p; ++j) {
            s.at(i, j) += static_cast<T>(100 * (j + 1));
            pattern.push_back((i * 7 + j * 3) % 10 == 0 && j != 1);
        }
        auto place = static_cast<std::size_t>(std::find(seen.begin(), seen.end(), pattern) - seen.begin());
        if (place == seen.size()) {
            seen.push_back(pattern);
            groups.emplace_back();
        }
        for (int64_t j = 0; j < s.p; ++j)
            if (pattern[static_cast<std::size_t>(j)]) {
                s.at(i, j) = missing_entry<T>();
                groups[place].emplace_back(i, j);
            }
    }
    for (const auto& group : groups) order.insert(order.end(), group.begin(), group.end());
    return static_cast<int64_t>(order.size());
}

TYPED_TEST(ImputationOf, ValuesStandInTheOrderOfThePatternsAndRepeat) {
    using T = TypeParam;
    std::vector<T> expected;
    for (const bool columns : {false, true}) {
        Sample<T> s(200, 4, columns);
        s.fill(12);
        std::vector<std::pair<int64_t, int64_t>> order;
        const int64_t k = make_holes(s, order);
        s.open();
        Imputation<T> imputation;
        imputation.register_with(s, k);
        ASSERT_EQ(imputation.run(s), 0);
        for (std::size_t v = 0; v < imputation.simulated.size(); ++v)
            EXPECT_NEAR(imputation.simulated[v], 100 * static_cast<double>(order[v % order.size()].second + 1), 12);
        EXPECT_NE(imputation.simulated[0], imputation.simulated[static_cast<std::size_t>(k)]) << "imputations differ";
        if (expected.empty()) expected = imputation.simulated;
        EXPECT_EQ(imputation.simulated, expected) << "both storages, one result";
        for (std::size_t e = 0; e < imputation.estimates.size(); e += 14)
            for (std::size_t j = 0; j < 4; ++j)
                EXPECT_NEAR(imputation.estimates[e + j], 100 * static_cast<double>(j + 1), 2);
        const auto first = imputation.simulated;
        ASSERT_EQ(imputation.run(s), 0);
        EXPECT_EQ(imputation.simulated, first);
    }
}

// Imputed values of a strongly correlated variable follow its regression with the residual's spread.
TEST(Missing, ImputedValuesFollowTheRegression) {
    const int64_t n = 4000;
    Sample<double> s(n, 2, false);
    s.fill(77);
    for (int64_t i = 0; i < n; ++i) s.at(i, 1) = 2 * s.at(i, 0) + 0.5 * s.at(i, 1);
    std::vector<double> truth;
    int64_t k = 0;
    for (int64_t i = 0; i < n; i += 2, ++k) s.at(i, 1) = missing_entry<double>();
    s.open();
    Imputation<double> imputation;
    imputation.register_with(s, k);
    ASSERT_EQ(imputation.run(s), 0);
    double slope = 0, squares = 0, residual = 0;
    for (int64_t m = 0; m < k; ++m) {
        const double x = s.at(2 * m, 0), y = imputation.simulated[static_cast<std::size_t>(m)];
        slope += x * y;
        squares += x * x;
        residual += (y - 2 * x) * (y - 2 * x) / static_cast<double>(k);
    }
    EXPECT_NEAR(slope / squares, 2, 0.05);
    // The second variable had its own variance of 1.09, a quarter of which remains.
    EXPECT_NEAR(residual, 0.25 * 1.09, 0.04);
}

TYPED_TEST(ImputationOf, StatusesInTheirOrderAndFailingMemory) {
    using T = TypeParam;
    Sample<T> s(60, 4, true);
    s.fill(12);
    std::vector<std::pair<int64_t, int64_t>> order;
    const int64_t k = make_holes(s, order);
    s.open();
    const auto run = [&] { return Imputation<T>::run(s); };
    EXPECT_EQ(run(), SsStatusNoMissingParams);
    Imputation<T> imputation;
    Statistics<T>::edit(s.task, 51, imputation.params.data());
    EXPECT_EQ(run(), SsStatusNoMissingParamCount);
    __stoiSSEditTask(s.task, 50, &imputation.five);
    imputation.five = 4;
    EXPECT_EQ(run(), SsStatusBadMissingParamCount);
    imputation.five = 5;
    EXPECT_EQ(run(), SsStatusNothingRequested);
    __stoiSSEditTask(s.task, 54, &imputation.simulated_count);
    EXPECT_EQ(run(), SsStatusNoSimulatedValues);
    imputation.register_with(s, k);
    EXPECT_EQ(run(), 0);
    imputation.params[4] = static_cast<T>(k - 1);
    EXPECT_EQ(run(), SsStatusBadMissingCount);
    imputation.params[4] = static_cast<T>(k);
    imputation.params[3] = 0;
    EXPECT_EQ(run(), SsStatusBadImputationCount);
    imputation.params[3] = 3;
    ++imputation.simulated_count;
    EXPECT_EQ(run(), SsStatusBadSimulatedCount);
    --imputation.simulated_count;
    ++imputation.estimate_count;
    EXPECT_EQ(run(), SsStatusBadEstimateCount);
    --imputation.estimate_count;
    s.storage = 0x30000;
    EXPECT_EQ(run(), SsStatusBadStorage);
    s.storage = 0x20000;
    EXPECT_GT(for_each_failing_allocation(run, int32_t{-4000}, int32_t{0}), 5);
    // Complete data are refused, as are draws from a covariance without rank.
    Sample<T> complete(20, 2, true);
    complete.fill(1);
    complete.open();
    Imputation<T> none;
    none.register_with(complete, 0);
    T place;
    Statistics<T>::edit(complete.task, 55, &place);
    EXPECT_EQ(Imputation<T>::run(complete), SsStatusBadImputationCount);
    for (int64_t i = 0; i < 20; ++i) complete.at(i, 1) = T(3);
    complete.at(4, 1) = missing_entry<T>();
    none.register_with(complete, 1);
    EXPECT_EQ(Imputation<T>::run(complete), SsStatusDrawFactorFailed);
}

}  // namespace
}  // namespace nax::testing
