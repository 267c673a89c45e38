// Evaluation: evaluators against direct polynomials, layouts, cells, statuses, bad input, threads.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <functional>

#include "fit/eval/evaluator.h"
#include "tests/fit/eval_support.h"
#include "tests/lib/failing_service.h"
#include "tests/lib/guarded_buffer.h"

namespace nax::testing {
namespace {

template <class T>
class EvalOf : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(EvalOf, Precisions);

// Derivative k of sum c[m] t^m, in long double.
template <class T>
long double direct(const T* c, int64_t order, int64_t k, long double t) {
    long double sum = 0;
    for (int64_t m = order - 1; m >= k; --m) {
        long double factor = 1;
        for (int64_t f = m; f > m - k; --f) factor *= static_cast<long double>(f);
        sum = sum * t + factor * static_cast<long double>(c[m]);
    }
    return sum;
}

struct OrderAndType {
    int64_t order, type;
};
constexpr std::array<OrderAndType, 10> kPolynomials{
    {{2, 0}, {2, 7}, {3, 0}, {4, 0}, {4, 2}, {4, 3}, {4, 4}, {4, 5}, {4, 9}, {6, 1}}};

// Values and all derivatives, one more than the spline has, on general and uniform partitions, within and outside.
TYPED_TEST(EvalOf, PolynomialsMatchDirectEvaluation) {
    using T = TypeParam;
    constexpr T kEps = std::numeric_limits<T>::epsilon();
    for (const auto& [order, type] : kPolynomials)
        for (const bool uniform : {false, true})
            for (const int64_t width : {0, 1}) {
                Spline<T> spline(9, order, type, 2, uniform, width);
                const std::vector<T> sites = random_values<T>(203, T(-2), T(12), 3);
                const auto nder = order + 1;
                const std::vector<T> r = spline.run(sites, std::vector<int>(static_cast<std::size_t>(nder), 1));
                for (int64_t j = 0; j < 2; ++j)
                    for (int64_t i = 0; i < 203; ++i) {
                        const T site = sites[static_cast<std::size_t>(i)];
                        const int64_t p = std::clamp<int64_t>(spline.cell(site) - 1, 0, 7);
                        const T t = site - spline.point(p);
                        for (int64_t d = 0; d < nder; ++d) {
                            const T got = r[static_cast<std::size_t>((j * 203 + i) * nder + d)];
                            const long double want = direct(spline.row(j, p), order, d, t);
                            // The factors of a derivative are at most 5! = 120 times the coefficients, which are
                            // below 1.
                            const long double scale = 120 * std::pow(1 + std::fabs(static_cast<long double>(t)), order);
                            ASSERT_LE(std::fabs(static_cast<long double>(got) - want), 4 * kEps * scale)
                                << "order " << order << " derivative " << d << " site " << site;
                            ASSERT_TRUE(d < order || got == T(0));
                        }
                    }
            }
}

// Exact bits of the nested fused form, from one site to more than a block: vectors and single sites give the same.
TYPED_TEST(EvalOf, CubicBitsAreThoseOfTheFusedForm) {
    using T = TypeParam;
    Spline<T> spline(50, 4, 2, 1, false);
    for (int64_t n = 1; n <= 70; ++n) {
        const std::vector<T> sites = random_values<T>(n, T(-1), T(51), static_cast<uint64_t>(n));
        const std::vector<T> value = spline.run(sites, {1}), all = spline.run(sites, {1, 1, 1, 1});
        for (std::size_t i = 0; i < sites.size(); ++i) {
            const int64_t p = std::clamp<int64_t>(spline.cell(sites[i]) - 1, 0, 48);
            const T* const c = spline.row(0, p);
            const T t = sites[i] - spline.point(p);
            ASSERT_EQ(value[i], std::fma(std::fma(std::fma(c[3], t, c[2]), t, c[1]), t, c[0]));
            ASSERT_EQ(all[4 * i], value[i]);
            ASSERT_EQ(all[4 * i + 1], std::fma(std::fma(3 * c[3], t, 2 * c[2]), t, c[1]));
            ASSERT_EQ(all[4 * i + 2], std::fma(6 * c[3], t, 2 * c[2]));
            ASSERT_EQ(all[4 * i + 3], 6 * c[3]);
        }
    }
}

// Long runs of sorted sites in one cell share its coefficients and give the same bits as unsorted ones.
TYPED_TEST(EvalOf, SortedRunsGiveTheBitsOfTheGeneralSearch) {
    using T = TypeParam;
    for (const auto& [order, type] : kPolynomials) {
        Spline<T> spline(7, order, type, 2, false);
        std::vector<T> sites = random_values<T>(3000, T(-1), T(8), 12);
        std::sort(sites.begin(), sites.end());
        spline.sitehint = 64;
        const std::vector<T> sorted = spline.run(sites, {1, 0, 1});
        spline.sitehint = 0;
        EXPECT_EQ(sorted, spline.run(sites, {1, 0, 1})) << order;
    }
}

TYPED_TEST(EvalOf, SubbotinPiecesMeetAtTheKnots) {
    using T = TypeParam;
    const std::vector<T> knots{0, T(0.25), T(1.5), T(2.875), 3}, uniform_knots{T(0.5), T(2.5)};
    for (int kind = 0; kind < 3; ++kind) {
        Spline<T> spline(4, 3, 1, 1, false);
        spline.task->ic = kind == 0 ? nullptr : (kind == 1 ? knots.data() : uniform_knots.data());
        spline.task->ic_type = kind == 2 ? 12 : 8;
        const std::vector<T> middles{0, T(0.5), T(1.5), T(2.5), 3};
        const std::vector<T>& t = kind == 1 ? knots : middles;
        std::vector<T> sites{-1, 4, 0, 1, 2, 3};
        for (int k = 1; k <= 3; ++k)
            for (const T s : {t[static_cast<std::size_t>(k)], std::nextafter(t[static_cast<std::size_t>(k)], T(-1))})
                sites.push_back(s);
        const std::vector<T> r = spline.run(sites, {1, 1, 1});
        for (std::size_t i = 0; i < sites.size(); ++i) {
            int64_t piece = 0;
            while (piece < 3 && t[static_cast<std::size_t>(piece) + 1] <= sites[i]) ++piece;
            const T* const c = spline.row(0, piece);
            const T u = sites[i] - spline.point(piece);
            EXPECT_EQ(r[3 * i], std::fma(std::fma(c[2], u, c[1]), u, c[0])) << "kind " << kind << " site " << sites[i];
            EXPECT_EQ(r[3 * i + 2], 2 * c[2]);
        }
    }
}

TYPED_TEST(EvalOf, StepsTakeTheirSide) {
    using T = TypeParam;
    const std::vector<T> sites{-1, 0, T(0.5), 1, T(2.5), 3, T(3.5), 4, 9};
    // Beyond the right end the cell of a right-continuous step extends; left of the partition that of a left-continuous
    // one.
    const std::vector<int> right{0, 0, 0, 1, 2, 3, 3, 4, 3}, left{1, 0, 1, 1, 3, 3, 4, 4, 4};
    for (const bool uniform : {false, true})
        for (const int64_t yhint : {16, 32}) {
            Spline<T> spline(5, 0, 7, 2, uniform, 1, yhint);
            for (const int64_t type : {7, 8}) {
                spline.task->s_type = type;
                const std::vector<T> r = spline.run(sites, {1, 1});
                for (std::size_t j = 0; j < 2; ++j)
                    for (std::size_t i = 0; i < sites.size(); ++i) {
                        const int point = (type == 7 ? right : left)[i];
                        EXPECT_EQ(r[(j * sites.size() + i) * 2], spline.y(static_cast<int64_t>(j), point))
                            << type << ' ' << sites[i];
                        EXPECT_EQ(r[(j * sites.size() + i) * 2 + 1], T(0));
                    }
            }
        }
}

TYPED_TEST(EvalOf, LookUpFindsPointsAndRefusesOtherSites) {
    using T = TypeParam;
    for (const bool uniform : {false, true})
        for (const int64_t yhint : {16, 32}) {
            Spline<T> spline(5, 0, 6, 2, uniform, 1, yhint);
            const std::vector<T> points{4, 0, 3, 1, 2};
            const std::vector<T> r = spline.run(points, {1});
            for (std::size_t j = 0; j < 2; ++j)
                for (std::size_t i = 0; i < 5; ++i)
                    EXPECT_EQ(r[j * 5 + i], spline.y(static_cast<int64_t>(j), static_cast<int64_t>(points[i])));
            EXPECT_EQ(spline.run(points, {}), r) << "no order asks for the value";
            for (const T bad : {T(-1), T(0.5), T(4.5), T(5), std::nextafter(T(4), T(9)) + T(1), nan_of<T>})
                EXPECT_EQ(spline.status({points[0], bad}, {1}), DfStatusBadSite) << bad;
            EXPECT_EQ(spline.status({T(0.5)}, {0, 1}), DfStatusBadSite) << "sites come first";
            EXPECT_EQ(spline.status(points, {1, 1}), DfStatusBadDerivCount);
            EXPECT_EQ(spline.status(points, {0, 1}), DfStatusBadDerivOrder);
        }
    Spline<T> spline(5, 0, 6, 1, true);
    if (sizeof(T) == sizeof(double)) {
        EXPECT_EQ(spline.run({T(1 + 0x1p-41)}, {1})[0], spline.y(0, 1));
        EXPECT_EQ(spline.status({T(1 + 0x1p-39)}, {1}), DfStatusBadSite);
    }
}

// Every layout holds the same numbers at its own indices.
TYPED_TEST(EvalOf, LayoutsAgree) {
    using T = TypeParam;
    for (const int64_t ny : {1, 2, 5, 70})
        for (const std::vector<int>& orders :
             std::vector<std::vector<int>>{{1}, {0, 1}, {1, 0, 1}, {1, 1, 1}, {1, 1, 1, 1, 1, 1}}) {
            Spline<T> spline(20, 4, 2, ny, false);
            const int64_t nder = std::count(orders.begin(), orders.end(), 1);
            for (const int64_t n : {1, 63, 64, 65, 200}) {
                const std::vector<T> sites = random_values<T>(n, T(0), T(19), 77);
                const std::vector<T> base = spline.run(sites, orders);
                for (const int64_t hint : {0, 128, 32, 256, 512}) {
                    spline.rhint = hint;
                    const std::vector<T> r = spline.run(sites, orders);
                    for (int64_t j = 0; j < ny; ++j)
                        for (int64_t i = 0; i < n; ++i)
                            for (int64_t d = 0; d < nder; ++d) {
                                const int64_t at = hint == 32    ? (j * nder + d) * n + i
                                                   : hint == 256 ? (i * ny + j) * nder + d
                                                   : hint == 512 ? (i * nder + d) * ny + j
                                                                 : (j * n + i) * nder + d;
                                ASSERT_EQ(r[static_cast<std::size_t>(at)],
                                          base[static_cast<std::size_t>((j * n + i) * nder + d)])
                                    << "hint " << hint << " function " << j << " site " << i << " slot " << d;
                            }
                }
                spline.rhint = 16;
            }
        }
}

TYPED_TEST(EvalOf, DerivativeFlagsArePackedAndOddOnesStayInBounds) {
    using T = TypeParam;
    Spline<T> spline(9, 4, 2, 1, false);
    const std::vector<T> sites{T(0.5), T(3.25), T(7.75)};
    const std::vector<T> all = spline.run(sites, {1, 1, 1, 1});
    const std::vector<T> some = spline.run(sites, {0, 1, 0, 1});
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(some[2 * i], all[4 * i + 1]);
        EXPECT_EQ(some[2 * i + 1], all[4 * i + 3]);
    }
    const std::vector<T> value = spline.run(sites, {1});
    EXPECT_EQ(spline.run(sites, {0, 0, 0}), value);
    EXPECT_EQ(spline.run(sites, {}), value);
    // Entries that are no flags: the sum says how many results there are.
    const std::vector<T> doubled = spline.run(sites, {2});
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(doubled[2 * i], value[i]);
        EXPECT_EQ(doubled[2 * i + 1], T(0));
    }
    EXPECT_EQ(spline.run(sites, {1, 1, -1}), value);
}

TYPED_TEST(EvalOf, JobStoresCellsOrTakesThem) {
    using T = TypeParam;
    for (const int64_t width : {0, 1}) {
        Spline<T> spline(9, 4, 2, 2, false, width);
        const std::vector<T> sites = random_values<T>(150, T(-1), T(9), 6);
        const std::vector<T> plain = spline.run(sites, {1});
        spline.job = 3;
        EXPECT_EQ(spline.run(sites, {1}), plain);
        for (std::size_t i = 0; i < sites.size(); ++i) ASSERT_EQ(spline.stored_cell(i), spline.cell(sites[i]));
        spline.job = 4;
        EXPECT_EQ(spline.run(sites, {1}), plain) << "given cells";
        // One cell for all sites evaluates its polynomial far away; numbers that are no cells count as the nearest.
        for (const int64_t c : {3, -5, 0, 9, 1000}) {
            spline.give_cells(std::vector<int64_t>(150, c));
            const std::vector<T> r = spline.run(sites, {1});
            const int64_t p = std::clamp<int64_t>(c - 1, 0, 7);
            for (std::size_t i = 0; i < sites.size(); ++i) {
                const T* const k = spline.row(0, p);
                const T t = sites[i] - spline.point(p);
                ASSERT_EQ(r[i], std::fma(std::fma(std::fma(k[3], t, k[2]), t, k[1]), t, k[0])) << c;
            }
        }
    }
}

TYPED_TEST(EvalOf, UniformSitesEqualListedOnes) {
    using T = TypeParam;
    Spline<T> spline(9, 4, 2, 2, false);
    for (const int64_t n : {1, 2, 64, 65, 1000, 5000}) {
        const T a = T(-0.5), b = T(8.5), step = n > 1 ? (b - a) / static_cast<T>(n - 1) : T(0);
        std::vector<T> sites(static_cast<std::size_t>(n));
        for (int64_t i = 0; i < n; ++i) sites[static_cast<std::size_t>(i)] = std::fma(step, static_cast<T>(i), a);
        const std::vector<T> listed = spline.run(sites, {1, 1});
        spline.sitehint = 4;
        EXPECT_EQ(spline.run({a, b}, {1, 1}, n), listed) << n;
        spline.sitehint = 0;
    }
}

TEST(Eval, IndexFollowsOrderAndType) {
    using fit::evaluation_index;
    for (int64_t type = 0; type <= 10; ++type) {
        EXPECT_EQ(evaluation_index(2, type, false), fit::kEvalLinear);
        EXPECT_EQ(evaluation_index(3, type, true), type == 0   ? fit::kEvalQuadratic
                                                   : type == 1 ? +fit::kEvalQuadSubb
                                                               : +DfStatusBadType);
        const bool cubic = type == 0 || type == 2 || type == 3 || type == 4 || type == 5 || type == 9;
        EXPECT_EQ(evaluation_index(4, type, true), cubic ? +fit::kEvalCubic : +DfStatusBadType);
        EXPECT_EQ(evaluation_index(5, type, false), fit::kEvalArbitr);
        EXPECT_EQ(evaluation_index(1, type, true), DfStatusBadType);
        const int32_t at_zero = type == 8   ? fit::kEvalStepLeft
                                : type == 7 ? fit::kEvalStepRight
                                : type == 6 ? fit::kEvalLookUp
                                            : fit::kEvaluators;
        EXPECT_EQ(evaluation_index(0, type, false), at_zero == fit::kEvaluators ? +DfStatusBadType : at_zero);
        EXPECT_EQ(evaluation_index(0, type, true), at_zero == fit::kEvaluators ? +fit::kEvalArbitr : at_zero);
    }
}

TYPED_TEST(EvalOf, StatusesComeInOrder) {
    using T = TypeParam;
    Spline<T> spline(5, 4, 2, 1, false);
    const T site[1] = {1}, odd_hint[5] = {0, 2, 0, 0, 1};
    T r[1];
    const auto run = [&](const nax_df_task* t, int64_t job, int64_t n, const T* s, const T* hint, T* out,
                         int64_t rhint) {
        return Fit<T>::interpolate(t, job, 0, n, s, 0, 0, nullptr, hint, out, rhint, nullptr, nullptr, nullptr, nullptr,
                                   nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    };
    nax_df_task* const task = spline.task.get();
    FailAllocation fail(0, Family::kBlocks, true);
    EXPECT_EQ(run(nullptr, 3, 1, nullptr, odd_hint, nullptr, 7), DfStatusNullTask);
    task->s_type = 1;
    EXPECT_EQ(run(task, 3, 1, nullptr, odd_hint, nullptr, 7), DfStatusBadType);
    task->s_type = 2;
    EXPECT_EQ(run(task, 3, 1, nullptr, odd_hint, nullptr, 7), DfStatusBadDataHint);
    EXPECT_EQ(run(task, 4, 1, nullptr, odd_hint, nullptr, 7), DfStatusBadResultHint) << "given cells need no search";
    EXPECT_EQ(run(task, 3, 0, nullptr, nullptr, nullptr, 16), 0) << "no sites";
    EXPECT_EQ(run(task, 3, 1, nullptr, nullptr, nullptr, 16), DfStatusBadSite);
    EXPECT_EQ(run(task, 3, 1, site, nullptr, nullptr, 16), DfStatusNullOutput);
    EXPECT_EQ(run(task, 3, 1, site, nullptr, r, 16), DfStatusNullOutput) << "no cells";
    void* const coeff = task->scoeff[0];
    task->scoeff[0] = nullptr;
    EXPECT_EQ(run(task, 1, 1, site, nullptr, r, 16), DfStatusBadCoeff);
    task->scoeff[0] = coeff;
    task->y[0] = nullptr;
    task->s_order = 0;
    for (const int64_t type : {6, 7, 8}) {
        task->s_type = type;
        EXPECT_EQ(run(task, 1, 1, site, nullptr, r, 16), DfStatusBadY);
    }
    task->s_type = 2;
    EXPECT_EQ(run(task, 1, 1, site, nullptr, r, 16), DfStatusBadType);
    task->s_order = 4;
    const std::vector<T> block(65, site[0]);
    std::vector<T> results(block.size());
    EXPECT_EQ(run(task, 1, 65, block.data(), nullptr, results.data(), 16), DfStatusMemory);
}

// Calls of any length give the bits of a long call: of one site, of a few, of a block.
TYPED_TEST(EvalOf, ShortCallsGiveTheBitsOfLongOnes) {
    using T = TypeParam;
    const std::vector<std::vector<int>> flags{{}, {1}, {0, 1}, {1, 1, 1}, {0, 0, 1, 1}, {1, 0, 0, 1, 1}};
    for (const auto& [order, type] : std::vector<std::array<int64_t, 2>>{{2, 0}, {3, 0}, {3, 1}, {4, 5}, {6, 0}, {0, 7}, {0, 8}})
        for (const bool uniform : {false, true})
            for (const int64_t rhint : {16, 32, 256, 512})
                for (const auto& requested : flags) {
                    Spline<T> spline(30, order, type, 3, uniform);
                    if (type == 1) spline.task->ic_type = 8;
                    spline.rhint = rhint;
                    std::vector<T> sites = random_values<T>(200, T(-2), T(32), 8);
                    for (std::size_t i = 0; i < 30; ++i) sites[3 * i] = static_cast<T>(i);
                    sites[1] = nan_of<T>, sites[2] = infinity_of<T>, sites[4] = -infinity_of<T>;
                    int64_t nder = 0;
                    for (const int flag : requested) nder += flag;
                    nder = std::max<int64_t>(nder, 1);
                    const auto at = [&](int64_t n, int64_t i, int64_t j, int64_t d) {
                        const int64_t ny = 3;
                        return static_cast<std::size_t>(rhint == 16    ? (j * n + i) * nder + d
                                                        : rhint == 32  ? (j * nder + d) * n + i
                                                        : rhint == 256 ? (i * ny + j) * nder + d
                                                                       : (i * nder + d) * ny + j);
                    };
                    const std::vector<T> expected = spline.run(sites, requested);
                    for (const int64_t n : {1, 2, 5, 16, 17, 63}) {
                        for (int64_t first = 0; first + n <= 200; first += n) {
                            const std::vector<T> part(sites.begin() + first, sites.begin() + first + n);
                            const std::vector<T> r = spline.run(part, requested);
                            for (int64_t i = 0; i < n; ++i)
                                for (int64_t j = 0; j < 3; ++j)
                                    for (int64_t d = 0; d < nder; ++d) {
                                        const T a = r[at(n, i, j, d)], b = expected[at(200, first + i, j, d)];
                                        ASSERT_TRUE(a == b || (a != a && b != b))
                                            << order << " " << type << " n " << n << " site " << part[static_cast<std::size_t>(i)]
                                            << " order " << d << ": " << a << " " << b;
                                    }
                        }
                    }
                }
}

// The limit of a caller's table may change between two questions, and a table may lack its loop.
TYPED_TEST(EvalOf, ThreadLimitIsAskedOnceAndNeedsALoop) {
    using T = TypeParam;
    static int asked;
    Spline<T> spline(40, 4, 2, 7, false);
    const std::vector<T> sites = random_values<T>(3000, spline.x.front(), spline.x.back(), 3);
    std::vector<T> expected(3 * 7 * sites.size()), r(expected.size());
    for (const int64_t rhint : {16, 32, 256, 512}) {
        spline.rhint = rhint;
        spline.threaders = nullptr;
        ASSERT_EQ(spline.interpolate(sites.data(), 3000, {1, 1, 1}, expected.data()), 0);
        nax_threaders rising = pool(), no_loop = pool();
        rising.max_threads = [] { return asked++ == 0 ? 1 : 8; };
        no_loop.max_threads = [] { return 8; };
        no_loop.parallel_for = nullptr;
        for (const nax_threaders* table : {&rising, &no_loop}) {
            asked = 0;
            spline.threaders = table;
            std::fill(r.begin(), r.end(), T(0));
            ASSERT_EQ(spline.interpolate(sites.data(), 3000, {1, 1, 1}, r.data()), 0);
            EXPECT_EQ(r, expected);
            EXPECT_LE(asked, 1);
        }
    }
}

// Sums of derivative flags and numbers of coefficients that wrap.
TYPED_TEST(EvalOf, ImpossibleCountsAreRefused) {
    using T = TypeParam;
    Spline<T> spline(10, 4, 2, 2, false);
    const std::vector<T> sites{1, 2, 3};
    std::vector<T> r(64, T(-7));
    const auto status = [&](const std::vector<int64_t>& flags, int64_t rhint) {
        return Fit<T>::interpolate(spline.task.get(), 1, 0, 3, sites.data(), 0, 3, flags.data(), nullptr, r.data(), rhint,
                                   nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                   nullptr);
    };
    for (const int64_t rhint : {16, 32, 256, 512})
        for (const int64_t many : {INT64_MAX, INT64_MAX / 2 + 1})
            EXPECT_EQ(status({many, many, many}, rhint), DfStatusMemory);
    EXPECT_EQ(status({INT64_MIN, INT64_MIN, -1}, 16), 0);  // no flag set: the value
    EXPECT_NE(r[0], T(-7));
    std::fill(r.begin(), r.end(), T(-7));
    for (const int64_t order : {INT64_MAX, INT64_MAX / 10 + 1, int64_t{1} << 60}) {
        Fit<T>::edit_spline(spline.task.get(), order, 0, 0, nullptr, 0, nullptr, r.data(), 0);
        EXPECT_EQ(spline.interpolate(sites.data(), 3, {1}, r.data()), DfStatusBadOrder);
    }
    EXPECT_EQ(r, std::vector<T>(64, T(-7)));
}

TYPED_TEST(EvalOf, MemoryFailuresComputeNothing) {
    using T = TypeParam;
    // A block of sites with few planes needs none; few planes fit the work block; many need a buffer of their own.
    for (const auto& [ny, n, allocations] : std::vector<std::array<int64_t, 3>>{{2, 64, 0}, {2, 65, 1}, {300, 65, 2}}) {
        Spline<T> spline(9, 4, 2, ny, false);
        spline.rhint = 256;
        const std::vector<T> sites(static_cast<std::size_t>(n), T(3));
        std::vector<T> r(static_cast<std::size_t>(n * ny), T(-7));
        const auto run = [&, count = n] {
            const int32_t status = spline.interpolate(sites.data(), count, {1}, r.data());
            EXPECT_TRUE(status == 0 || r == std::vector<T>(r.size(), T(-7)));
            return status;
        };
        EXPECT_EQ(for_each_failing_allocation(run, int32_t{DfStatusMemory}, int32_t{0}), allocations);
    }
}

// Guard pages around everything that the caller owns; sites and results share memory in one run; NaN and unsorted
// sites.
TYPED_TEST(EvalOf, NothingOutsideTheCallersArraysIsTouched) {
    using T = TypeParam;
    for (const auto& [order, type] :
         std::vector<OrderAndType>{{2, 0}, {3, 0}, {3, 1}, {4, 2}, {5, 0}, {0, 6}, {0, 7}, {0, 8}})
        for (const int64_t xhint : {0, 2, 4})
            for (const Guard guard : {Guard::kAfter, Guard::kBefore}) {
                const int64_t nx = 6, cells = type == 1 ? nx : nx - 1;
                GuardedBuffer<T> x(xhint == 4 ? 2 : 6, guard), y(12, guard),
                    c(static_cast<std::size_t>(2 * cells * std::max<int64_t>(order, 1)), guard);
                for (std::size_t i = 0; i < (xhint == 4 ? 2u : 6u); ++i)
                    x[i] = xhint == 4 ? static_cast<T>(5 * i) : static_cast<T>(i);
                nax_df_task* task = nullptr;
                ASSERT_EQ(Fit<T>::create(&task, nx, x.data(), xhint, 2, y.data(), 16, 1), 0);
                ASSERT_EQ(Fit<T>::edit_spline(task, order, type, 0, nullptr, 0, nullptr, c.data(), 16), 0);
                for (const int64_t n : {1, 7, 64, 67, 130}) {
                    GuardedBuffer<T> sites(static_cast<std::size_t>(2 * n), guard);
                    for (int64_t i = 0; i < 2 * n; ++i)
                        sites[static_cast<std::size_t>(i)] =
                            i % 11 == 5 ? nan_of<T> : static_cast<T>((i * 7) % 13) - T(3.5);
                    for (const int64_t sitehint : {0, 64}) {
                        // Results over the sites: wrong numbers are the caller's, an access outside would be ours.
                        const int32_t status = Fit<T>::interpolate(
                            task, 1, 0, n, sites.data(), sitehint, 0, nullptr, nullptr, sites.data(), 32, nullptr,
                            nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
                        EXPECT_TRUE(status == 0 || (type == 6 && status == DfStatusBadSite)) << status;
                    }
                }
                nax_df_kernel_DeleteTask(&task);
            }
}

TYPED_TEST(EvalOf, NanSitesGiveNanAndDisturbNoOther) {
    using T = TypeParam;
    for (const int64_t xhint : {0, 2, 4}) {
        Spline<T> spline(30, 4, 2, 1, xhint == 4);
        if (xhint == 2) nax_df_kernel_iEditVal(spline.task.get(), 15, 2);
        std::vector<T> sites = random_values<T>(200, T(0), T(29), 40);
        const std::vector<T> clean = spline.run(sites, {1});
        for (std::size_t i = 3; i < sites.size(); i += 10) sites[i] = nan_of<T>;
        const std::vector<T> r = spline.run(sites, {1});
        for (std::size_t i = 0; i < sites.size(); ++i) {
            if (i % 10 == 3)
                EXPECT_TRUE(std::isnan(r[i]));
            else
                EXPECT_EQ(r[i], clean[i]);
        }
    }
}

TYPED_TEST(EvalOf, ThreadsGiveTheSameBitsByTheBlockPlan) {
    using T = TypeParam;
    for (const auto& [order, type] : std::vector<OrderAndType>{{2, 0}, {3, 1}, {4, 2}, {0, 7}})
        for (const int64_t hint : {16, 32, 256, 512})
            for (const int64_t n : {1024, 1025, 1300, 3333}) {
                Spline<T> spline(40, order, type, 3, false);
                spline.rhint = hint;
                spline.job = 3;
                const std::vector<T> sites = random_values<T>(n, T(-1), T(40), 50);
                const std::vector<T> serial = spline.run(sites, {1, 1});
                for (const int limit : {1, 2, 4}) {
                    const nax_threaders table = threads(limit);
                    spline.threaders = &table;
                    loops().clear();
                    ASSERT_EQ(spline.run(sites, {1, 1}), serial) << n << " sites, " << limit << " threads";
                    std::vector<std::array<int64_t, 2>> plan;
                    for (const LoopRecord& loop : loops()) plan.push_back({loop.count, loop.threads});
                    std::vector<std::array<int64_t, 2>> expected;
                    if (limit > 1 && n > 1024) {
                        expected.push_back({n / 320, std::min<int64_t>(n / 320, limit)});
                        const int64_t rest = n % 320;
                        if (rest > 64) expected.push_back({rest / 64, std::min<int64_t>(rest / 64, limit)});
                    }
                    EXPECT_EQ(plan, expected) << n;
                    spline.threaders = nullptr;
                }
            }
}

}  // namespace
}  // namespace nax::testing
