// Robust covariance: the biweight's constants, the start, the fixed point, contamination.
#include <gtest/gtest.h>

#include <algorithm>

#include "nax/statistics_robust.h"
#include "stats/robust/translated_biweight.h"
#include "tests/lib/failing_service.h"
#include "tests/stats/support.h"

namespace nax::testing {
namespace {

using stats::robust::biweight_for;
using stats::robust::expected_rho;
using stats::robust::TranslatedBiweight;

TEST(TranslatedBiweight, RhoIsTheIntegralOfPsiAndContinuous) {
    for (const auto& [c, m] : {std::pair{2.0, 1.5}, {0.01, 4.0}, {3.0, 0.0}, {0.0, 2.0}}) {
        const TranslatedBiweight b{c, m};
        const double top = m + c, step = top / 40000;
        double integral = 0;
        for (double d = step / 2; d < 1.2 * top; d += step) {
            integral += b.weight(d) * d * step;
            EXPECT_NEAR(b.rho(d + step / 2), integral, 2e-4 * b.rho_max()) << c << " " << m << " at " << d;
        }
        EXPECT_NEAR(b.rho(10 * top), b.rho_max(), 1e-15 * b.rho_max());
        EXPECT_EQ(b.weight(0), 1);
    }
}

TEST(TranslatedBiweight, ConstantsMeetTheirEquations) {
    // Solved independently to the digits shown: breakdown point, rejection probability, variables, c, M.
    const double rows[][5] = {{0.45, 0.05, 2, 1.204074, 1.243673},  {0.45, 0.05, 3, 0.704554, 2.090929},
                              {0.5, 0.001, 5, 4.005693, 0.523656},  {0.5, 0.001, 10, 2.240396, 3.199116},
                              {0.5, 0.001, 20, 0.886103, 5.845520}, {0.3, 0.01, 2, 1.141033, 1.893821},
                              {0.5, 0.001, 1, 1.5476, 0},           {0.5, 0.001, 2, 2.6608, 0}};
    for (const auto& [r, alpha, p, c, m] : rows) {
        const TranslatedBiweight b = biweight_for(p, r, alpha);
        const double tolerance = m == 0 ? 6e-5 : 2e-6;
        EXPECT_NEAR(b.c, c, tolerance) << p;
        EXPECT_NEAR(b.m, m, tolerance) << p;
        EXPECT_NEAR(expected_rho(b, p), r * b.rho_max(), 1e-11 * b.rho_max()) << p;
    }
    // No biweight of this breakdown point rejects so much: the sharp cut at the rejection point remains.
    const TranslatedBiweight sharp = biweight_for(10, 0.05, 0.9);
    EXPECT_EQ(sharp.c, 0);
    EXPECT_NEAR(sharp.m, std::sqrt(__stodChi2ICDF(10, 0.1)), 1e-12);
    for (const double p : {1.0, 4.0, 60.0, 300.0})
        for (const double r : {0.02, 0.25, 0.5}) {
            const TranslatedBiweight b = biweight_for(p, r, 0.001);
            EXPECT_TRUE(b.m >= 0 && b.c >= 0 && b.m + b.c > 0) << p << " " << r;
        }
}

template <class T>
class RobustOf : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(RobustOf, Precisions);

template <class T>
struct Robust {
    std::vector<T> mean, covariance;
    int64_t code = 0, four = 4;
    std::vector<T> params{T(-1), 0, 0, T(-1)};  // all out of range: the defaults
    int32_t run(Sample<T>& s, std::vector<T> given, const nax_threaders* threads = nullptr) {
        if (!given.empty()) params = given;
        const auto p = static_cast<std::size_t>(s.p);
        mean.assign(p, T(-7));
        covariance.assign(code == 0 ? p * p : p * (p + 1) / 2, T(-7));
        if (s.task == nullptr) s.open();
        Statistics<T>::edit(s.task, 40, mean.data());
        Statistics<T>::edit(s.task, 39, covariance.data());
        __stoiSSEditTask(s.task, 36, &code);
        if (!given.empty()) {
            Statistics<T>::edit(s.task, 38, params.data());
            __stoiSSEditTask(s.task, 37, &four);
        }
        if constexpr (sizeof(T) == 8)
            return _stodSSRobustCovariance(s.task, 0, 8, threads);
        else
            return _stosSSRobustCovariance(s.task, 0, 8, threads);
    }
};

double median_of(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    const std::size_t n = v.size();
    return n % 2 == 1 ? v[n / 2] : 0.5 * (v[n / 2 - 1] + v[n / 2]);
}
double deviation_of(const std::vector<double>& v) {
    const double centre = median_of(v);
    std::vector<double> d;
    for (const double x : v) d.push_back(std::fabs(x - centre));
    return median_of(d);
}

// With two variables the eigenvectors are (1, 1) and (1, -1): the start by hand.
TYPED_TEST(RobustOf, StartOfTwoVariablesIsTheOneByHand) {
    using T = TypeParam;
    for (const int64_t n : {61, 200}) {
        Sample<T> s(n, 2, true);
        s.fill(3, 5);
        for (int64_t i = 0; i < n / 5; ++i) s.at(i, 1) += T(30);
        std::vector<double> z[2], sum, difference, distance;
        for (int j = 0; j < 2; ++j) {
            std::vector<double> x;
            for (int64_t i = 0; i < n; ++i) x.push_back(static_cast<double>(s.at(i, j)));
            const double centre = median_of(x), scale = deviation_of(x);
            for (const double v : x) z[j].push_back((v - centre) / scale);
        }
        for (std::size_t i = 0; i < z[0].size(); ++i) {
            sum.push_back((z[0][i] + z[1][i]) / std::sqrt(2.0));
            difference.push_back((z[0][i] - z[1][i]) / std::sqrt(2.0));
        }
        for (std::size_t i = 0; i < sum.size(); ++i)
            distance.push_back(std::pow((sum[i] - median_of(sum)) / deviation_of(sum), 2) +
                               std::pow((difference[i] - median_of(difference)) / deviation_of(difference), 2));
        const double cut = __stodChi2ICDF(2, 0.9) * median_of(distance) / __stodChi2ICDF(2, 0.5);
        for (const double d : distance) s.weights.push_back(d < cut ? T(1) : T(0));
        const Reference<T> kept(s);
        s.weights.clear();
        Robust<T> robust;
        ASSERT_EQ(robust.run(s, {0, 0, 0, 0}), 0);
        for (std::size_t e = 0; e < 4; ++e)
            EXPECT_NEAR(robust.covariance[e], static_cast<double>(kept.matrices[0][e]), 1e-4);
        for (std::size_t j = 0; j < 2; ++j) EXPECT_NEAR(robust.mean[j], static_cast<double>(kept.results[0][j]), 1e-4);
    }
}

// At the end the distances solve the scale equation, and reweighting by them gives the estimate back.
TEST(Robust, TheEstimateIsAFixedPoint) {
    for (const int64_t p : {1, 2, 6}) {
        const int64_t n = 400;
        Sample<double> s(n, p, true);
        s.fill(11, 2);
        for (int64_t i = 0; i < n; i += 4) s.at(i, 0) += 15;
        Robust<double> robust;
        ASSERT_EQ(robust.run(s, {0.5, 0.001, 1e-10, 500}), 0);
        const TranslatedBiweight b = biweight_for(
            static_cast<double>(p), std::min(0.5, 0.5 * static_cast<double>(n - p) / static_cast<double>(n)), 0.001);
        std::vector<double> inverse = robust.covariance;
        ASSERT_EQ(__stodInvCov(p, inverse.data()), 0);
        double mean_rho = 0, sum_v = 0;
        for (int64_t i = 0; i < n; ++i) {
            double square = 0;
            for (int64_t j = 0; j < p; ++j)
                for (int64_t k = 0; k < p; ++k)
                    square += (s.at(i, j) - robust.mean[static_cast<std::size_t>(j)]) *
                              inverse[static_cast<std::size_t>(j * p + k)] *
                              (s.at(i, k) - robust.mean[static_cast<std::size_t>(k)]);
            const double d = std::sqrt(square);
            mean_rho += b.rho(d) / static_cast<double>(n);
            sum_v += b.weight(d) * square;
            s.weights.push_back(b.weight(d));
        }
        EXPECT_NEAR(mean_rho, expected_rho(b, static_cast<double>(p)), 1e-7);
        const Reference<double> again(s);
        for (std::size_t j = 0; j < static_cast<std::size_t>(p); ++j)
            EXPECT_NEAR(robust.mean[j], static_cast<double>(again.results[0][j]), 1e-6);
        for (std::size_t e = 0; e < static_cast<std::size_t>(p * p); ++e)
            EXPECT_NEAR(robust.covariance[e],
                        static_cast<double>(again.matrices[2][e]) * static_cast<double>(p) / sum_v, 1e-6);
    }
}

TYPED_TEST(RobustOf, ContaminationUpToTheBreakdownPointDoesNotMoveIt) {
    using T = TypeParam;
    const int64_t n = 3000, p = 5;
    for (const bool columns : {false, true})
        for (const double share : {0.0, 0.2, 0.35})
            for (const double offset : {0.0, 1000.0}) {
                Sample<T> s(n, p, columns);
                std::mt19937_64 engine(4);
                std::normal_distribution<double> normal;
                for (int64_t i = 0; i < n; ++i)
                    for (int64_t j = 0; j < p; ++j)
                        s.at(i, j) = static_cast<T>(offset + normal(engine) * (1 + static_cast<double>(j)) +
                                                    (static_cast<double>(i) < share * static_cast<double>(n) ? 60 : 0));
                Robust<T> robust;
                BackwardThreads::limit = 3;
                const nax_threaders table = BackwardThreads::table();
                ASSERT_EQ(robust.run(s, {}, &table), 0);
                const std::vector<T> threaded = robust.covariance;
                ASSERT_EQ(robust.run(s, {}), 0);
                // An S-estimate under contamination is too large as a whole, the more the nearer the breakdown point;
                // place and shape stay.
                double size = 0;
                for (std::size_t j = 0; j < 5; ++j)
                    size += static_cast<double>(robust.covariance[j * 6]) / (1 + static_cast<double>(j)) /
                            (1 + static_cast<double>(j)) / 5;
                EXPECT_GT(size, 0.93);
                EXPECT_LT(size, share == 0 ? 1.07 : share < 0.3 ? 1.7 : 3.2);
                for (std::size_t j = 0; j < 5; ++j) {
                    const double sd = 1 + static_cast<double>(j);
                    EXPECT_NEAR(robust.mean[j], offset, 0.15 * sd) << share;
                    for (std::size_t k = 0; k < 5; ++k) {
                        EXPECT_NEAR(robust.covariance[j * 5 + k] / size, j == k ? sd * sd : 0,
                                    0.15 * sd * (1 + static_cast<double>(k)))
                            << share;
                        EXPECT_NEAR(threaded[j * 5 + k], robust.covariance[j * 5 + k],
                                    0.01 * sd * (1 + static_cast<double>(k)));
                    }
                }
                std::vector<T> full = robust.covariance;
                for (robust.code = 1; robust.code <= 2; ++robust.code) {
                    ASSERT_EQ(robust.run(s, {}), 0);
                    std::size_t e = 0;
                    for (std::size_t i = 0; i < 5; ++i)
                        for (std::size_t j = robust.code == 1 ? 0 : i; j < (robust.code == 1 ? i + 1 : 5); ++j)
                            EXPECT_EQ(robust.covariance[e++], full[i * 5 + j]);
                }
                robust.code = 0;
            }
}

TEST(Robust, StatusesParametersAndFailingMemory) {
    Sample<double> s(50, 3, false);
    s.fill(2);
    Robust<double> robust, same;
    ASSERT_EQ(robust.run(s, {}), 0);
    for (const std::vector<double>& params :
         {std::vector<double>{0.9, 0.001, 0.001, 100}, {-1, 0, 0, -5}, {std::nan(""), 1, -1, 100}}) {
        ASSERT_EQ(same.run(s, params), 0);
        EXPECT_EQ(same.covariance, robust.covariance);
    }
    EXPECT_GT(for_each_failing_allocation([&] { return robust.run(s, {}); }, int32_t{-4000}, int32_t{0}), 3);
    EXPECT_EQ(_stodSSRobustCovariance(s.task, 0, 9, nullptr), SsStatusBadMethod);
    robust.code = 3;
    EXPECT_EQ(robust.run(s, {}), SsStatusBadStorage);
    s.n = 6;
    EXPECT_EQ(robust.run(s, {}), SsStatusBadObservationCount) << "n must be above 2 p";
    EXPECT_EQ(_stodSSRobustCovariance(nullptr, 0, 8, nullptr), SsStatusNullTask);
    Sample<double> flat(50, 3, false);
    flat.fill(2);
    for (int64_t i = 0; i < 30; ++i) flat.at(i, 1) = 4;
    EXPECT_EQ(same.run(flat, {}), SsStatusEigenvaluesFailed) << "more than half of a variable is one value";
    EXPECT_EQ(same.mean[0], -7) << "a failure leaves the results alone";
    nax_ss_task* bare = nullptr;
    const int64_t n = 50;
    double place[9];
    ASSERT_EQ(__stodSSNewTask(&bare, &s.p, &n, nullptr, nullptr, nullptr, nullptr, 1), 0);
    EXPECT_EQ(_stodSSRobustCovariance(bare, 0, 1, nullptr), SsStatusNoStorage);
    __stoiSSEditTask(bare, 4, &s.storage);
    EXPECT_EQ(_stodSSRobustCovariance(bare, 0, 1, nullptr), SsStatusNoRobustCovariance);
    __stodSSEditTask(bare, 39, place);
    EXPECT_EQ(_stodSSRobustCovariance(bare, 0, 1, nullptr), SsStatusNoRobustMean);
    __stodSSEditTask(bare, 40, place);
    EXPECT_EQ(_stodSSRobustCovariance(bare, 0, 1, nullptr), SsStatusNoStorage);
    __stoSSDeleteTask(&bare);
}

}  // namespace
}  // namespace nax::testing
