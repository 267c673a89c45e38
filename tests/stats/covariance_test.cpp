// Pooled, partial and parametrised covariances.
#include <gtest/gtest.h>

#include <algorithm>

#include "stats/matrix_storage.h"
#include "tests/lib/failing_service.h"
#include "tests/stats/support.h"

namespace nax::testing {
namespace {

using stats::decode_matrix_storage;
using stats::matrix_index;

template <class T>
class CovarianceOf : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(CovarianceOf, Precisions);

template <class T>
struct Entries {
    static constexpr bool is_double = std::is_same_v<T, double>;
    static constexpr auto pooled = NAX_TEST_PICK(_stodSSPooledCovariance, _stosSSPooledCovariance);
    static constexpr auto partial = NAX_TEST_PICK(_stodSSPartialCovariance, _stosSSPartialCovariance);
    static constexpr auto parametrize = NAX_TEST_PICK(_stodSSCorParametrization, _stosSSCorParametrization);
};
template <class T>
constexpr double unit = sizeof(T) == 8 ? 2.3e-16 : 1.2e-7;

constexpr uint64_t kPooled = estimate_bit(14), kGroups = estimate_bit(15), kPooledMean = estimate_bit(35);

// A table whose ordered loop runs items in order, as one thread would.
void ordered_loop(int64_t count, int threads, void* context, nax_loop_body body) {
    for (int64_t i = 0; i < count; ++i) body(i, static_cast<int>(i), threads, context);
}
int g_ordered;
void run_ordered(int64_t i, int thread, int threads, void* context, nax_loop_body body) {
    ++g_ordered;
    body(i, thread, threads, context);
}

TYPED_TEST(CovarianceOf, PooledAndGroupResultsAreThoseOfTheGroupsAlone) {
    using T = TypeParam;
    for (const bool columns : {false, true})
        for (const bool weighted : {false, true})
            for (const int64_t code : {0, 1, 2})
                for (const bool threaded : {false, true}) {
                    const int64_t n = 900, p = 11, groups = 4;
                    Sample<T> all(n, p, columns);
                    all.fill(9, 0.7);
                    std::vector<int64_t> group(static_cast<std::size_t>(n)), marked{1, 0, 1, 1};
                    // Group 2 stays empty.
                    for (std::size_t i = 0; i < group.size(); ++i) group[i] = i % 7 < 3 ? 0 : i % 7 == 3 ? 3 : 1;
                    if (weighted)
                        for (int64_t i = 0; i < n; ++i) all.weights.push_back(static_cast<T>(i < 12 ? 0 : 1 + i % 3));
                    all.open();
                    const auto size = static_cast<std::size_t>(code == 0 ? p * p : p * (p + 1) / 2);
                    std::vector<T> pooled_mean(11, -7), pooled(size, -7), means(33, -7), covariances(3 * size, -7);
                    Statistics<T>::edit(all.task, 30, pooled_mean.data());
                    Statistics<T>::edit(all.task, 31, pooled.data());
                    Statistics<T>::edit(all.task, 33, means.data());
                    Statistics<T>::edit(all.task, 35, covariances.data());
                    __stoiSSEditTask(all.task, 28, group.data());
                    __stoiSSEditTask(all.task, 32, marked.data());
                    __stoiSSEditTask(all.task, 29, &code);
                    __stoiSSEditTask(all.task, 34, &code);
                    BackwardThreads::limit = 3;
                    nax_threaders table = BackwardThreads::table();
                    table.parallel_for_ordered = ordered_loop;
                    table.ordered = run_ordered;
                    g_ordered = 0;
                    ASSERT_EQ(Entries<T>::pooled(all.task, kPooled | kGroups, 2, threaded ? &table : nullptr), 0);
                    EXPECT_EQ(g_ordered, threaded ? 3 : 0);

                    long double total = 0, freedom = 0;
                    std::vector<long double> sum(11), products(121);
                    std::size_t place = 0;
                    for (int64_t g = 0; g < groups; ++g) {
                        std::vector<int64_t> members;
                        for (std::size_t i = 0; i < group.size(); ++i)
                            if (group[i] == g) members.push_back(static_cast<int64_t>(i));
                        if (members.empty()) {
                            for (std::size_t j = 0; j < 11; ++j) EXPECT_EQ(means[place * 11 + j], 0);
                            for (std::size_t e = 0; e < size; ++e) EXPECT_EQ(covariances[place * size + e], 0);
                            ++place;
                            continue;
                        }
                        Sample<T> one(static_cast<int64_t>(members.size()), p, columns);
                        for (int64_t i = 0; i < one.n; ++i) {
                            for (int64_t j = 0; j < p; ++j)
                                one.at(i, j) = all.at(members[static_cast<std::size_t>(i)], j);
                            if (weighted)
                                one.weights.push_back(
                                    all.weights[static_cast<std::size_t>(members[static_cast<std::size_t>(i)])]);
                        }
                        const Reference<T> reference(one);
                        total += reference.weight;
                        freedom += reference.weight - reference.weight2 / reference.weight;
                        for (std::size_t j = 0; j < 11; ++j) sum[j] += reference.results[10][j];
                        for (std::size_t e = 0; e < 121; ++e) products[e] += reference.matrices[2][e];
                        if (marked[static_cast<std::size_t>(g)] == 0) continue;
                        for (std::size_t a = 0; a < 11; ++a) {
                            EXPECT_NEAR(means[place * 11 + a], static_cast<double>(reference.results[0][a]),
                                        100 * unit<T>);
                            for (std::size_t b = 0; b < 11; ++b)
                                EXPECT_NEAR(
                                    covariances[place * size + static_cast<std::size_t>(matrix_index(
                                                                   decode_matrix_storage(code), p,
                                                                   static_cast<int64_t>(a), static_cast<int64_t>(b)))],
                                    static_cast<double>(reference.matrices[0][a * 11 + b]), 2000 * unit<T>);
                        }
                        ++place;
                    }
                    for (std::size_t a = 0; a < 11; ++a) {
                        EXPECT_NEAR(pooled_mean[a], static_cast<double>(sum[a] / total), 200 * unit<T>);
                        for (std::size_t b = 0; b < 11; ++b)
                            EXPECT_NEAR(
                                pooled[static_cast<std::size_t>(matrix_index(
                                    decode_matrix_storage(code), p, static_cast<int64_t>(a), static_cast<int64_t>(b)))],
                                static_cast<double>(products[a * 11 + b] / freedom), 2000 * unit<T>);
                    }
                    if (::testing::Test::HasFailure()) return;
                }
}

TEST(Covariance, PooledStatusesInTheirOrder) {
    Sample<double> s(8, 2, true);
    s.fill(1);
    s.open();
    int64_t group[8] = {0, 1, 0, 1, 2, 0, 1, 2}, marked[3] = {1, 0, 1}, code = 0;
    double out[5][16];
    const auto run = [&](uint64_t estimates, uint64_t method = 2) {
        return _stodSSPooledCovariance(s.task, estimates, method, nullptr);
    };
    const uint64_t all = kPooled | kGroups;
    EXPECT_EQ(_stodSSPooledCovariance(nullptr, all, 2, nullptr), SsStatusNullTask);
    s.storage = 1;
    EXPECT_EQ(run(all, 1), SsStatusBadStorage);
    s.storage = 0x20000;
    EXPECT_EQ(run(all, 1), SsStatusNoGroupIndices);
    __stoiSSEditTask(s.task, 28, group);
    EXPECT_EQ(run(all, 1), SsStatusNoPooledMean);
    __stodSSEditTask(s.task, 30, out[0]);
    EXPECT_EQ(run(all, 1), SsStatusNoStorage);
    __stoiSSEditTask(s.task, 29, &code);
    EXPECT_EQ(run(all, 1), SsStatusNoPooledCovariance);
    __stodSSEditTask(s.task, 31, out[1]);
    EXPECT_EQ(run(all, 1), SsStatusNoGroupIndices);
    __stoiSSEditTask(s.task, 32, marked);
    EXPECT_EQ(run(all, 1), SsStatusNoGroupMeans);
    __stodSSEditTask(s.task, 33, out[2]);
    EXPECT_EQ(run(all, 1), SsStatusNoStorage);
    __stoiSSEditTask(s.task, 34, &code);
    EXPECT_EQ(run(all, 1), SsStatusNoGroupCovariance);
    __stodSSEditTask(s.task, 35, out[3]);
    EXPECT_EQ(run(all, 1), SsStatusBadMethod);
    marked[1] = 2;
    EXPECT_EQ(run(all), SsStatusBadGroupIndices);
    EXPECT_EQ(run(kPooledMean), SsStatusOk) << "marks aren't read without group results";
    marked[1] = 1;
    group[7] = -1;
    EXPECT_EQ(run(all), SsStatusBadGroupIndices);
    group[7] = INT64_MAX / 4;
    EXPECT_EQ(run(kPooledMean), SsStatusMemory);
    group[7] = 0;
    EXPECT_GT(for_each_failing_allocation([&] { return run(all); }, int32_t{-4000}, int32_t{0}), 0);
}

// The partial covariance is the inverse of the precision matrix's block of the variables that aren't conditioned on.
TYPED_TEST(CovarianceOf, PartialCovarianceIsTheResidualCovarianceOfRegressions) {
    using T = TypeParam;
    const int64_t n = 400, p = 7;
    Sample<T> s(n, p, false);
    s.fill(5);
    for (int64_t i = 0; i < n; ++i)
        for (int64_t j = 1; j < p; ++j) s.at(i, j) += s.at(i, j - 1) * T(0.5);
    int64_t marks[7] = {1, -1, 0, 1, -1, 1, 0};
    for (const int64_t code : {0, 1, 2})
        for (const bool from_correlation : {false, true}) {
            s.matrix_storage = code;
            if (s.task == nullptr) s.open();
            ASSERT_EQ(Statistics<T>::basic(s.task, 0x3000, 2, nullptr), 0);
            nax_ss_task* task = nullptr;
            ASSERT_EQ(Statistics<T>::create(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr, 1u), 0);
            Statistics<T>::edit(task, from_correlation ? 21 : 19, s.matrices[from_correlation ? 1 : 0].data());
            __stoiSSEditTask(task, from_correlation ? 22 : 20, &code);
            std::vector<T> covariance(49, -7), correlation(49, -7);
            Statistics<T>::edit(task, 46, covariance.data());
            Statistics<T>::edit(task, 48, correlation.data());
            for (const int id : {47, 49}) __stoiSSEditTask(task, id, &code);
            __stoiSSEditTask(task, 45, marks);
            const uint64_t both = estimate_bit(20) | estimate_bit(21);
            s.pair[0] = s.pair[1] = 0;
            ASSERT_EQ(Entries<T>::partial(task, both, 1, nullptr), 0);
            const Reference<T> reference(s);
            const auto c = [&](int a, int b) { return reference.matrices[0][static_cast<std::size_t>(a * 7 + b)]; };
            // Two conditioning variables: their block's inverse in closed form.
            const long double det = c(1, 1) * c(4, 4) - c(1, 4) * c(1, 4);
            const auto partial = [&](int a, int b) {
                return c(a, b) - (c(a, 1) * (c(4, 4) * c(b, 1) - c(1, 4) * c(b, 4)) +
                                  c(a, 4) * (c(1, 1) * c(b, 4) - c(1, 4) * c(b, 1))) /
                                     det;
            };
            const auto storage = decode_matrix_storage(code);
            std::size_t written = 0;
            for (const int a : {0, 3, 5})
                for (const int b : {0, 3, 5}) {
                    const auto e = static_cast<std::size_t>(matrix_index(storage, p, a, b));
                    EXPECT_NEAR(covariance[e], static_cast<double>(partial(a, b)), 3000 * unit<T>);
                    EXPECT_NEAR(correlation[e],
                                static_cast<double>(a == b ? partial(a, a)
                                                           : partial(a, b) / std::sqrt(partial(a, a) * partial(b, b))),
                                3000 * unit<T>);
                }
            for (const T v : covariance) written += v != T(-7);
            EXPECT_EQ(written, code == 0 ? 9u : 6u);
            EXPECT_GT(for_each_failing_allocation([&] { return Entries<T>::partial(task, both, 1, nullptr); },
                                                  int32_t{-4000}, int32_t{0}),
                      0);
            __stoSSDeleteTask(&task);
        }
}

TEST(Covariance, PartialStatuses) {
    const int64_t p = 3, code = 0;
    double c[9] = {1, 0, 0, 0, 1, 1, 0, 1, 1}, out[9];
    int64_t marks[3] = {1, -1, -1};
    nax_ss_task* task = nullptr;
    ASSERT_EQ(__stodSSNewTask(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr, 1), 0);
    const auto run = [&](uint64_t method = 1) {
        return _stodSSPartialCovariance(task, estimate_bit(20) | estimate_bit(21), method, nullptr);
    };
    EXPECT_EQ(run(2), SsStatusNoCovariance);
    __stodSSEditTask(task, 19, c);
    EXPECT_EQ(run(2), SsStatusNoStorage);
    __stoiSSEditTask(task, 20, &code);
    EXPECT_EQ(run(2), SsStatusNoConditioningIndices);
    __stoiSSEditTask(task, 45, marks);
    EXPECT_EQ(run(2), SsStatusNoPartialCovariance);
    __stodSSEditTask(task, 46, out);
    EXPECT_EQ(run(2), SsStatusNoStorage);
    __stoiSSEditTask(task, 47, &code);
    EXPECT_EQ(run(2), SsStatusNoPartialCorrelation);
    __stodSSEditTask(task, 48, out);
    EXPECT_EQ(run(2), SsStatusNoStorage);
    __stoiSSEditTask(task, 49, &code);
    EXPECT_EQ(run(2), SsStatusBadMethod);
    EXPECT_EQ(run(), SsStatusUnusableCovariance) << "the conditioning block is singular";
    marks[0] = 0;
    EXPECT_EQ(run(), SsStatusNoConditioning);
    marks[0] = marks[1] = marks[2] = 1;
    EXPECT_EQ(run(), SsStatusNoConditioning);
    __stoSSDeleteTask(&task);
}

TYPED_TEST(CovarianceOf, ParametrizationLiftsWhatIsNotPositive) {
    using T = TypeParam;
    const int64_t p = 3;
    for (const int64_t from : {0, 1, 2})
        for (const int64_t to : {0, 1, 2})
            for (const bool valid : {false, true}) {
                const T r = valid ? T(0.3) : T(-0.9);  // three correlations of -0.9 can't be
                const T full[9] = {4, r, r, r, 9, r, r, r, 1};
                T in[9], out[9];
                std::fill_n(out, 9, T(-7));
                for (int64_t i = 0; i < 3; ++i)
                    for (int64_t j = 0; j < 3; ++j)
                        in[matrix_index(decode_matrix_storage(from), p, i, j)] = full[i * 3 + j];
                nax_ss_task* task = nullptr;
                ASSERT_EQ(Statistics<T>::create(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr, 1u), 0);
                Statistics<T>::edit(task, 21, static_cast<T*>(in));
                __stoiSSEditTask(task, 22, &from);
                Statistics<T>::edit(task, 60, static_cast<T*>(out));
                __stoiSSEditTask(task, 61, &to);
                ASSERT_EQ(for_each_failing_allocation([&] { return Entries<T>::parametrize(task, 0, 4, nullptr); },
                                                      int32_t{-4000}, int32_t{0}),
                          1);
                for (int64_t i = 0; i < 3; ++i)
                    for (int64_t j = 0; j < 3; ++j) {
                        // By symmetry the lifted matrix has equal correlations; its smallest eigenvalue is nearly 0.
                        const double want = i == j ? 1 : valid ? 0.3 : -0.5;
                        const double tolerance = i == j || valid ? 0 : 5e-7;
                        EXPECT_NEAR(out[matrix_index(decode_matrix_storage(to), p, i, j)],
                                    valid ? static_cast<double>(static_cast<T>(want)) : want, tolerance);
                    }
                __stoSSDeleteTask(&task);
            }
}

TEST(Covariance, ParametrizationStatuses) {
    const int64_t p = 2;
    int64_t from = 3, to = 3;
    double c[4] = {1, 2, 2, 1}, out[4] = {-7, -7, -7, -7};
    nax_ss_task* task = nullptr;
    ASSERT_EQ(__stodSSNewTask(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr, 1), 0);
    const auto run = [&](uint64_t method = 4) { return _stodSSCorParametrization(task, 0, method, nullptr); };
    EXPECT_EQ(run(1), SsStatusNoCorrelation);
    __stodSSEditTask(task, 21, c);
    EXPECT_EQ(run(1), SsStatusNoStorage);
    __stoiSSEditTask(task, 22, &from);
    EXPECT_EQ(run(1), SsStatusBadStorage);
    from = 0;
    EXPECT_EQ(run(1), SsStatusNoParametrizedCorrelation);
    __stodSSEditTask(task, 60, out);
    EXPECT_EQ(run(1), SsStatusNoStorage);
    __stoiSSEditTask(task, 61, &to);
    EXPECT_EQ(run(1), SsStatusBadStorage);
    to = 1;
    __stodSSEditTask(task, 60, c);
    EXPECT_EQ(run(1), SsStatusBadStorage) << "one array, two storages";
    to = 0;
    EXPECT_EQ(run(1), SsStatusBadMethod);
    __stodSSEditTask(task, 60, out);
    c[1] = c[2] = std::nan("");
    EXPECT_EQ(run(), SsStatusParametrizationFailed);
    EXPECT_EQ(out[0], -7);
    __stoSSDeleteTask(&task);
}

}  // namespace
}  // namespace nax::testing
