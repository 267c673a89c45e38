// Outliers, and the covariance and chi-square helpers below them.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <limits>
#include <sstream>

#include "nax/statistics_robust.h"
#include "tests/lib/failing_service.h"
#include "tests/stats/support.h"

namespace nax::testing {
namespace {

template <class T>
int32_t find_outliers(Sample<T>& s, std::vector<T>& weights, std::vector<T> params,
                      const nax_threaders* threads = nullptr) {
    static const int64_t three = 3;
    weights.assign(static_cast<std::size_t>(s.n), T(-7));
    if (s.task == nullptr) s.open();
    Statistics<T>::edit(s.task, 43, weights.data());
    if (!params.empty()) {
        Statistics<T>::edit(s.task, 42, params.data());
        __stoiSSEditTask(s.task, 41, &three);
    }
    if constexpr (sizeof(T) == 8)
        return _stodSSOutliersDetection(s.task, 0, 0x20, threads);
    else
        return _stosSSOutliersDetection(s.task, 0, 0x20, threads);
}

// Rows of comma-separated numbers below a header.
std::vector<std::vector<double>> read_csv(const std::string& name) {
    std::ifstream file(std::string(NAX_SOURCE_DIR "/tests/data/real/") + name);
    std::vector<std::vector<double>> rows;
    std::string line;
    std::getline(file, line);
    while (std::getline(file, line)) {
        std::stringstream cells(line);
        rows.emplace_back();
        for (std::string cell; std::getline(cells, cell, ',');) rows.back().push_back(std::stod(cell));
    }
    return rows;
}

template <class T>
class OutliersOf : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(OutliersOf, Precisions);

// D. M. Hawkins, D. Bradu, G. V. Kass (1984): the first 14 of 75 observations are outliers, ten of them hidden from the
// classical distances.
TYPED_TEST(OutliersOf, HawkinsBraduKass) {
    using T = TypeParam;
    const auto rows = read_csv("hawkins_bradu_kass.csv");
    ASSERT_EQ(rows.size(), 75u);
    const auto p = static_cast<int64_t>(rows[0].size());
    for (const bool columns : {false, true})
        for (const T method : {T(1), T(2)}) {
            Sample<T> s(75, p, columns);
            for (int64_t i = 0; i < 75; ++i)
                for (int64_t j = 0; j < p; ++j)
                    s.at(i, j) = static_cast<T>(rows[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)]);
            std::vector<T> weights;
            // The medians are a start that outliers don't move; the mean isn't.
            ASSERT_EQ(find_outliers(s, weights, {T(2), T(0.001), T(0.005)}), 0);
            for (std::size_t i = 0; i < 14; ++i) EXPECT_EQ(weights[i], T(0)) << i;
            EXPECT_LE(std::count(weights.begin() + 14, weights.end(), T(0)), 2);
            EXPECT_EQ(find_outliers(s, weights, {method, T(0.001), T(0.005)}), 0);
        }
}

TYPED_TEST(OutliersOf, ShiftedRowsAreFoundWhateverTheirPlaceWeightAndTheThreads) {
    using T = TypeParam;
    const int64_t n = 3000, p = 4;
    std::vector<T> expected;
    for (const bool columns : {false, true})
        for (const int threads : {1, 2, 3})
            for (const bool weighted : {false, true}) {
                Sample<T> s(n, p, columns);
                s.fill(6, 100);
                for (int64_t i = 0; i < n; i += 10) s.at(i, i % p) += T(40);
                if (weighted) s.weights.assign(static_cast<std::size_t>(n), T(3));
                BackwardThreads::limit = threads;
                const nax_threaders table = BackwardThreads::table();
                std::vector<T> weights;
                ASSERT_EQ(find_outliers(s, weights, {}, threads > 1 ? &table : nullptr), 0);
                int64_t clean_marked = 0;
                for (int64_t i = 0; i < n; ++i) {
                    const T w = weights[static_cast<std::size_t>(i)];
                    EXPECT_TRUE(w == 0 || w == (weighted ? T(3) : T(1)));
                    if (i % 10 == 0) {
                        EXPECT_EQ(w, T(0)) << i;
                    } else {
                        clean_marked += w == 0;
                    }
                }
                EXPECT_LT(clean_marked, n / 8);
                EXPECT_GT(clean_marked, 0) << "a threshold that no clean row ever passes";
                if (!weighted) {
                    if (expected.empty()) expected = weights;
                    EXPECT_EQ(weights, expected) << threads;
                }
            }
}

TEST(Outliers, DegenerateSamplesEndWithAStatus) {
    std::vector<double> weights;
    Sample<double> constant(20, 1, false);
    constant.x.assign(20, 2.5);
    EXPECT_EQ(find_outliers(constant, weights, {}), SsStatusNoConvergence);
    Sample<double> mostly(20, 1, false);
    mostly.x.assign(20, 2.5);
    for (std::size_t i = 0; i < 5; ++i) mostly.x[i] = static_cast<double>(i);
    EXPECT_LT(find_outliers(mostly, weights, {}), 0);
    Sample<double> twins(40, 4, true);
    twins.fill(1);
    for (int64_t i = 0; i < 40; ++i) twins.at(i, 2) = twins.at(i, 1);
    const int32_t status = find_outliers(twins, weights, {});
    EXPECT_TRUE(status == 0 || status == SsStatusFactorFailed || status == SsStatusNoConvergence) << status;
    Sample<double> few(10, 2, true);
    few.fill(3);
    EXPECT_EQ(find_outliers(few, weights, {}), 0) << "5 p observations are enough";
    few.n = 9;
    EXPECT_EQ(find_outliers(few, weights, {}), SsStatusBadObservationCount);
    // Small samples that go round in circles end too.
    for (unsigned seed = 0; seed < 300; ++seed) {
        Sample<double> s(15, 1, false);
        s.fill(seed);
        const int32_t end = find_outliers(s, weights, {2, 0.5, 0.005});
        EXPECT_TRUE(end == 0 || end == SsStatusNoConvergence || end == SsStatusUnusableCovariance) << end;
    }
}

TEST(Outliers, StatusesParametersAndFailingMemory) {
    Sample<double> s(60, 3, true);
    s.fill(8);
    std::vector<double> defaults, weights;
    ASSERT_EQ(find_outliers(s, defaults, {}), 0);
    for (const std::vector<double>& same :
         {std::vector<double>{0, 0.05, 0.005}, {3, -1, 0}, {2.9, 1.5, -4}, {7, std::nan(""), std::nan("")}}) {
        ASSERT_EQ(find_outliers(s, weights, same), 0);
        EXPECT_EQ(weights, defaults);
    }
    EXPECT_EQ(_stodSSOutliersDetection(s.task, 0, 1, nullptr), SsStatusBadMethod);
    s.storage = 0x30000;
    EXPECT_EQ(_stodSSOutliersDetection(s.task, 0, 1, nullptr), SsStatusBadStorage);
    s.storage = 0x20000;
    nax_ss_task* bare = nullptr;
    ASSERT_EQ(__stodSSNewTask(&bare, &s.p, &s.n, &s.storage, s.x.data(), nullptr, nullptr, 1), 0);
    EXPECT_EQ(_stodSSOutliersDetection(bare, 0, 1, nullptr), SsStatusNoOutlierWeights);
    __stoSSDeleteTask(&bare);
    EXPECT_EQ(_stodSSOutliersDetection(nullptr, 0, 0x20, nullptr), SsStatusNullTask);
    for (const double method : {1.0, 2.0}) {
        const int failures = for_each_failing_allocation(
            [&] {
                return find_outliers(s, weights, {method, 0.05, 0.005});
            },
            int32_t{-4000}, int32_t{0});
        EXPECT_GT(failures, 1);
    }
}

TEST(Outliers, InverseOfACovariance) {
    for (const int64_t p : {1, 2, 3, 4, 7, 20}) {
        Sample<double> s(3 * p + 10, p, true);
        s.fill(static_cast<unsigned>(p));
        s.open();
        ASSERT_EQ(_stodSSBasic(s.task, 0x1000, 2, nullptr), 0);
        std::vector<double> inverse = s.matrices[0];
        ASSERT_EQ(__stodTestCovRank(p, inverse.data()), 0);
        ASSERT_EQ(__stodInvCov(p, inverse.data()), 0);
        for (int64_t i = 0; i < p; ++i)
            for (int64_t j = 0; j < p; ++j) {
                double sum = 0;
                for (int64_t k = 0; k < p; ++k)
                    sum += s.matrices[0][static_cast<std::size_t>(i * p + k)] *
                           inverse[static_cast<std::size_t>(k * p + j)];
                EXPECT_NEAR(sum, i == j ? 1 : 0, 1e-9) << p;
            }
    }
    double one[1] = {0};
    EXPECT_EQ(__stodTestCovRank(1, one), 0);
    EXPECT_EQ(one[0], 1000 * std::numeric_limits<double>::denorm_min());
    one[0] = -1;
    EXPECT_EQ(__stodTestCovRank(1, one), SsStatusUnusableCovariance);
    one[0] = std::nan("");
    EXPECT_EQ(__stodTestCovRank(1, one), SsStatusUnusableCovariance);
    double singular[4] = {1, 1, 1, 1};
    EXPECT_EQ(__stodTestCovRank(2, singular), 0) << "a hundredth of the eigenvalue 2 on the diagonal";
    EXPECT_NEAR(singular[0], 1.02, 1e-12);
    double zero[4] = {0, 0, 0, 0};
    EXPECT_EQ(__stodTestCovRank(2, zero), SsStatusUnusableCovariance);
    double indefinite[16] = {1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    EXPECT_EQ(__stodInvCov(4, indefinite), SsStatusFactorFailed);
}

// Even degrees give finite sums, one degree the error function.
TEST(ChiSquare, DistributionMeetsItsClosedForms) {
    for (const double x : {1e-9, 0.01, 0.5, 1.0, 2.0, 3.84, 10.0, 25.0, 60.0, 200.0, 700.0})
        for (int half = 1; half <= 300; half += half < 5 ? 1 : 31) {
            long double term = std::exp(-static_cast<long double>(x) / 2), sum = term;
            for (int k = 1; k < half; ++k) sum += term *= static_cast<long double>(x) / 2 / k;
            const double upper = _vdSSQ(half, x / 2);
            const double density = static_cast<double>(term / 2);
            // Both are exponentials, whose argument's rounding counts.
            const double rounding = 4e-16 * (60 + std::fabs(std::log(density + 1e-300)));
            EXPECT_NEAR(upper, static_cast<double>(sum), rounding * static_cast<double>(sum) + 1e-300)
                << x << " " << half;
            EXPECT_NEAR(__stodChi2PDF(2 * half, x), density, rounding * density + 1e-300);
            const double one = std::erf(std::sqrt(x / 2));
            EXPECT_NEAR(__stodChi2CDF(1, x), one, 1e-14 * one);
        }
    EXPECT_EQ(__stodChi2CDF(3, 0), 0);
    EXPECT_EQ(__stodChi2CDF(3, -1), 0);
    EXPECT_EQ(__stodChi2CDF(3, std::numeric_limits<double>::infinity()), 1);
    EXPECT_NEAR(__stosChi2CDF(1, 3.841459f), 0.95, 1e-6);
}

TEST(ChiSquare, QuantilesInvertTheDistribution) {
    for (const double d : {0.1, 1.0, 2.0, 3.0, 5.0, 10.0, 37.5, 200.0, 5000.0, 1e6})
        for (const double q : {1e-12, 1e-4, 0.01, 0.3, 0.5, 0.9, 0.95, 0.999, 1 - 1e-9}) {
            const double x = __stodChi2ICDF(d, q);
            if (x < 1e-290) continue;  // below what a double holds well
            const double got = q < 0.5 ? __stodChi2CDF(d, x) : 1 - _vdSSQ(d / 2, x / 2);
            EXPECT_NEAR(q < 0.5 ? got / q : (1 - got) / (1 - q), 1, q > 0.99999 ? 1e-7 : 1e-11) << d << " " << q;
        }
    EXPECT_NEAR(__stodChi2ICDF(1, 0.95), 3.8414588206941236, 1e-14);
    EXPECT_EQ(__stodChi2ICDF(4, 0), 0);
    EXPECT_TRUE(std::isinf(__stodChi2ICDF(4, 1)));
    EXPECT_TRUE(std::isnan(__stodChi2ICDF(0, 0.5)));
    EXPECT_TRUE(std::isnan(__stodChi2ICDF(4, std::nan(""))));
}

}  // namespace
}  // namespace nax::testing
