// Evaluation with callbacks: groups, batches, merging, statuses, the caller's search.
#include <gtest/gtest.h>

#include <array>
#include <mutex>
#include <set>

#include "tests/fit/eval_support.h"
#include "tests/lib/failing_service.h"

namespace nax::testing {
namespace {

template <class T>
class CallbackOf : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(CallbackOf, Precisions);

// Notes what it was called with and answers a number that tells group, function, site and slot.
template <class T>
struct Answering {
    int64_t ny = 1, nder = 1;
    T mark = 0;
    int32_t status = 0;
    std::mutex lock;
    std::vector<std::vector<T>> batches;
    std::set<int64_t> cells;

    static T answer(T mark, T site, int64_t j, int64_t d) { return mark + site * 16 + static_cast<T>(4 * j + d); }
    static int32_t call(const int64_t* n, const int64_t* cell, const T* site, T* r, void* parameters, void* reserved) {
        auto& self = *static_cast<Answering*>(parameters);
        const std::lock_guard<std::mutex> guard(self.lock);
        EXPECT_EQ(reserved, nullptr);
        self.batches.emplace_back(site, site + *n);
        self.cells.insert(cell, cell + *n);
        for (int64_t j = 0; j < self.ny; ++j)
            for (int64_t i = 0; i < *n; ++i)
                for (int64_t d = 0; d < self.nder; ++d) r[(j * *n + i) * self.nder + d] = answer(self.mark, site[i], j, d);
        return self.status;
    }
};

template <class T>
struct Three {
    std::array<Answering<T>, 3> groups;
    void attach(Spline<T>& spline, int mask, int64_t nder) {
        for (std::size_t g = 0; g < 3; ++g) {
            groups[g].ny = spline.ny;
            groups[g].nder = nder;
            groups[g].mark = static_cast<T>(1000 * (g + 1));
            spline.callbacks[g] = (mask >> g & 1) != 0 ? Answering<T>::call : nullptr;
            spline.parameters[g] = &groups[g];
        }
    }
};
template <class T>
std::size_t group_of(T site, T right) {
    return site < T(0) ? 0u : (site > right ? 1u : 2u);
}

// Every subset of callbacks, layout and partition kind: the callbacks' sites get their answers, the others the spline.
TYPED_TEST(CallbackOf, ResultsAreMergedInPlace) {
    using T = TypeParam;
    for (const bool uniform : {false, true})
        for (const int64_t width : {0, 1})
            for (int mask = 1; mask < 8; ++mask)
                for (const int64_t hint : {16, 32, 256, 512})
                    for (const std::vector<int>& orders : std::vector<std::vector<int>>{{1}, {1, 0, 1}}) {
                        Spline<T> spline(9, 4, 2, 2, uniform, width);
                        const auto nder = static_cast<int64_t>(std::count(orders.begin(), orders.end(), 1));
                        std::vector<T> sites = random_values<T>(150, T(-4), T(12), 5);
                        sites[3] = 0, sites[4] = 8;  // the ends belong to the interior
                        const int64_t n = 150;
                        const std::vector<T> plain = spline.run(sites, orders);
                        Three<T> three;
                        three.attach(spline, mask, nder);
                        spline.rhint = hint;
                        spline.job = 3;
                        const std::vector<T> r = spline.run(sites, orders);
                        for (int64_t i = 0; i < n; ++i) {
                            const T site = sites[static_cast<std::size_t>(i)];
                            const std::size_t g = group_of(site, T(8));
                            ASSERT_EQ(spline.stored_cell(static_cast<std::size_t>(i)), spline.cell(site));
                            for (int64_t j = 0; j < 2; ++j)
                                for (int64_t d = 0; d < nder; ++d) {
                                    const int64_t at = hint == 32    ? (j * nder + d) * n + i
                                                       : hint == 256 ? (i * 2 + j) * nder + d
                                                       : hint == 512 ? (i * nder + d) * 2 + j
                                                                     : (j * n + i) * nder + d;
                                    const T want = (mask >> g & 1) != 0
                                                       ? Answering<T>::answer(three.groups[g].mark, site, j, d)
                                                       : plain[static_cast<std::size_t>((j * n + i) * nder + d)];
                                    ASSERT_EQ(r[static_cast<std::size_t>(at)], want) << "mask " << mask << " hint " << hint << " site " << site;
                                }
                        }
                    }
}

TYPED_TEST(CallbackOf, EachGroupIsOneBatchOfABlockWithItsCells) {
    using T = TypeParam;
    Spline<T> spline(9, 4, 2, 3, false);
    // Block 0 holds all groups, block 1 the interior alone, block 2 is short and to the right.
    std::vector<T> sites;
    for (int i = 0; i < 64; ++i) sites.push_back(static_cast<T>(i % 4 == 0 ? -1 - i : (i % 4 == 1 ? 10 + i : 4)));
    for (int i = 0; i < 64; ++i) sites.push_back(static_cast<T>(i) / 16);
    for (int i = 0; i < 5; ++i) sites.push_back(T(20));
    Three<T> three;
    three.attach(spline, 7, 1);
    spline.run(sites, {1});
    const auto sizes = [&](std::size_t g) {
        std::vector<std::size_t> n;
        for (const auto& batch : three.groups[g].batches) n.push_back(batch.size());
        return n;
    };
    EXPECT_EQ(sizes(0), (std::vector<std::size_t>{16}));
    EXPECT_EQ(sizes(1), (std::vector<std::size_t>{16, 5}));
    EXPECT_EQ(sizes(2), (std::vector<std::size_t>{32, 64}));
    EXPECT_EQ(three.groups[0].cells, (std::set<int64_t>{0}));
    EXPECT_EQ(three.groups[1].cells, (std::set<int64_t>{9}));
    EXPECT_EQ(three.groups[2].cells, (std::set<int64_t>{1, 2, 3, 4, 5}));
}

TYPED_TEST(CallbackOf, OrderZeroIsLeftToTheThreeCallbacks) {
    using T = TypeParam;
    Spline<T> spline(9, 0, 0, 2, false);
    const std::vector<T> sites{-1, 4, 9, nan_of<T>};
    EXPECT_EQ(spline.status(sites, {1}), DfStatusBadType);
    Three<T> three;
    three.attach(spline, 3, 1);
    EXPECT_EQ(spline.status(sites, {1}), DfStatusBadType) << "two of three";
    three.attach(spline, 7, 1);
    const std::vector<T> r = spline.run(sites, {1});
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(r[i], Answering<T>::answer(three.groups[group_of(sites[i], T(8))].mark, sites[i], 0, 0));
    ASSERT_EQ(three.groups[2].batches.size(), 1u);
    EXPECT_EQ(three.groups[2].batches[0].size(), 2u) << "a NaN site compares with neither end";
}

// A look-up refuses sites outside the partition, unless a callback takes them.
TYPED_TEST(CallbackOf, PlainEvaluatorDoesNotSeeTheCallbacksSites) {
    using T = TypeParam;
    Spline<T> spline(9, 0, 6, 1, false);
    const std::vector<T> sites{-1, 4, 9, 8};
    EXPECT_EQ(spline.status(sites, {1}), DfStatusBadSite);
    Three<T> three;
    three.attach(spline, 3, 1);
    const std::vector<T> r = spline.run(sites, {1});
    EXPECT_EQ(r[1], spline.y(0, 4));
    EXPECT_EQ(r[3], spline.y(0, 8));
    EXPECT_EQ(r[0], Answering<T>::answer(T(1000), T(-1), 0, 0));
}

TYPED_TEST(CallbackOf, NegativeStatusEndsTheCall) {
    using T = TypeParam;
    for (std::size_t g = 0; g < 3; ++g) {
        Spline<T> spline(9, 4, 2, 1, false);
        const std::vector<T> sites = random_values<T>(200, T(-4), T(12), 5);
        Three<T> three;
        three.attach(spline, 7, 1);
        three.groups[g].status = -77;
        EXPECT_EQ(spline.status(sites, {1}), -77);
        EXPECT_EQ(three.groups[g].batches.size(), 1u) << "later blocks were still evaluated";
        three.groups[g].status = 55;
        EXPECT_EQ(spline.status(sites, {1}), 0) << "only negative statuses stop";
    }
}

TYPED_TEST(CallbackOf, ThreadsCallBackForTheSameResults) {
    using T = TypeParam;
    Spline<T> spline(9, 4, 2, 2, false);
    const std::vector<T> sites = random_values<T>(3000, T(-4), T(12), 5);
    Three<T> serial;
    serial.attach(spline, 7, 2);
    const std::vector<T> expected = spline.run(sites, {1, 1});
    for (const int limit : {2, 4}) {
        const nax_threaders table = threads(limit);
        spline.threaders = &table;
        Three<T> three;
        three.attach(spline, 7, 2);
        EXPECT_EQ(spline.run(sites, {1, 1}), expected);
        three.groups[1].status = -5;
        EXPECT_EQ(spline.status(sites, {1, 1}), -5);
    }
}

// Large batches need memory: 64 sites by 20 functions are more than the stack holds.
TYPED_TEST(CallbackOf, ScratchOfLargeBatchesMayFail) {
    using T = TypeParam;
    for (const auto& [ny, allocations] : std::vector<std::array<int64_t, 2>>{{16, 1}, {20, 2}}) {
        Spline<T> spline(9, 4, 2, ny, false);
        Three<T> three;
        three.attach(spline, 7, 1);
        const std::vector<T> sites = random_values<T>(64, T(-4), T(12), 5);
        EXPECT_EQ(for_each_failing_allocation([&] { return spline.status(sites, {1}); }, int32_t{DfStatusMemory}, int32_t{0}), allocations);
    }
}

// --- The caller's search ----------------------------------------------------------------------------------------------

template <class T>
struct Searching {
    std::vector<int64_t> counts;
    int32_t status = 0;
    static int32_t call(const int64_t* n, const T*, int64_t* cell, int32_t* flag, void* parameters, void*) {
        auto& self = *static_cast<Searching*>(parameters);
        self.counts.push_back(*n);
        for (int64_t i = 0; i < *n; ++i) cell[i] = 3, flag[i] = 0;
        return self.status;
    }
};

TYPED_TEST(CallbackOf, CallersSearchServesEvaluation) {
    using T = TypeParam;
    for (const bool uniform : {false, true}) {
        Spline<T> spline(9, 4, 2, 2, uniform);
        const std::vector<T> sites = random_values<T>(150, T(-1), T(9), 5);
        const std::vector<T> plain = spline.run(sites, {1});
        Searching<T> searching;
        spline.search = Searching<T>::call;
        spline.search_parameters = &searching;
        EXPECT_EQ(spline.run(sites, {1}), plain) << "guesses are refined";
        EXPECT_EQ(searching.counts, (std::vector<int64_t>{64, 64, 22}));
        searching.status = DfStatusExactResult;
        const std::vector<T> fixed = spline.run(sites, {1});
        for (std::size_t i = 0; i < sites.size(); ++i) {
            const T* const c = spline.row(0, 2);
            const T t = sites[i] - T(2);
            ASSERT_EQ(fixed[i], std::fma(std::fma(std::fma(c[3], t, c[2]), t, c[1]), t, c[0])) << "cell 3 was final";
        }
        searching.status = -9;
        EXPECT_EQ(spline.status(sites, {1}), -9);
    }
}

}  // namespace
}  // namespace nax::testing
