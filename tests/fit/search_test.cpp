// Cell search: all algorithms against counting, in all widths; callbacks; threads; bad input.
#include "fit/search/search.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "fit/partition_index.h"
#include "fit/search/whole_array.h"
#include "tests/fit/support.h"
#include "tests/lib/failing_service.h"
#include "tests/lib/guarded_buffer.h"

namespace nax::testing {
namespace {

using fit::SearchAlgorithm;
constexpr int64_t kWide = fit::kCells64;

template <class T>
class SearchOf : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(SearchOf, Precisions);

// Breakpoints, their neighbours, the middles, sites outside and at infinity.
template <class T>
std::vector<T> telling_sites(const std::vector<T>& x) {
    std::vector<T> sites{-infinity_of<T>, infinity_of<T>, std::numeric_limits<T>::lowest(),
                         std::numeric_limits<T>::max(), T(0)};
    for (std::size_t i = 0; i < x.size(); ++i) {
        sites.push_back(x[i]);
        sites.push_back(std::nextafter(x[i], -infinity_of<T>));
        sites.push_back(std::nextafter(x[i], infinity_of<T>));
        if (i + 1 < x.size()) sites.push_back(x[i] / 2 + x[i + 1] / 2);
    }
    std::shuffle(sites.begin(), sites.end(), std::mt19937_64(5));
    return sites;
}

// The cells of a per-block kernel through its member of a width.
template <class T>
std::vector<int64_t> cells_of(const nax_df_task* task, SearchAlgorithm algorithm, fit::CellWidth width,
                              const std::vector<T>& sites, T scale, int64_t* position = nullptr) {
    using Tables = fit::SearchTables<T>;
    const fit::SearchMember<T>* const members[] = {Tables::_Search1D32Dispatch, Tables::_Search1D64PackDispatch,
                                                   Tables::_Search1D64Dispatch};
    const auto n = sites.size();
    GuardedBuffer<T> site(n);
    std::copy(sites.begin(), sites.end(), site.data());
    GuardedBuffer<int32_t> narrow(width == fit::kWidth32 ? n : 0);
    GuardedBuffer<int64_t> wide(width == fit::kWidth32 ? 0 : n);
    void* const cell = width == fit::kWidth32 ? static_cast<void*>(narrow.data()) : wide.data();
    EXPECT_EQ(members[width][algorithm](task->nx, fit::partition<T>(*task), static_cast<int64_t>(n), site.data(),
                                        position, nullptr, nullptr, task->bin_table, cell, scale),
              0);
    if (width == fit::kWidth32) return {narrow.data(), narrow.data() + n};
    return {wide.data(), wide.data() + n};
}

template <class T>
void expect_counted(const Partition<T>& p, const std::vector<T>& sites, const std::vector<int64_t>& cells,
                    const char* what) {
    for (std::size_t i = 0; i < sites.size(); ++i)
        ASSERT_EQ(cells[i], cell_by_counting(p.x, sites[i]))
            << what << ", partition " << p.name << " of " << p.x.size() << ", site " << sites[i];
}

constexpr std::array<int64_t, 12> kSizes{2, 3, 4, 5, 9, 16, 17, 33, 64, 100, 300, 1025};
constexpr std::array<fit::CellWidth, 3> kWidths{fit::kWidth32, fit::kWidth64Pack, fit::kWidth64};

TYPED_TEST(SearchOf, GeneralSearchCountsInEveryWidthWithAndWithoutIndex) {
    using T = TypeParam;
    for (const int64_t nx : kSizes)
        for (const Partition<T>& p : partitions<T>(nx)) {
            const std::vector<T> sites = telling_sites(p.x);
            OwnedTask fine(p.x, nx, 0), pairs(p.x, nx, 2), bare(p.x, nx, 0);
            std::vector<T> copy = p.x;
            bare->x = copy.data();  // not the partition that was indexed
            for (const auto width : kWidths)
                for (const OwnedTask* task : {&fine, &pairs, &bare})
                    expect_counted(
                        p, sites,
                        cells_of<T>(task->get(), fit::kSearchHybrid, width, sites, fit::bin_scale<T>(*task->get())),
                        "hybrid");
        }
}

TYPED_TEST(SearchOf, QuasiUniformSearchCountsHoweverUneven) {
    using T = TypeParam;
    for (const int64_t nx : kSizes)
        for (const Partition<T>& p : partitions<T>(nx)) {
            const std::vector<T> sites = telling_sites(p.x);
            OwnedTask task(p.x, nx, 2);
            const T scale = fit::search_scale<T>(*task.get(), fit::kSearchQuasiUniform, nullptr);
            for (const auto width : kWidths)
                expect_counted(p, sites, cells_of<T>(task.get(), fit::kSearchQuasiUniform, width, sites, scale),
                               "quasi-uniform");
        }
}

TYPED_TEST(SearchOf, PeakSearchCountsFromAnyCell) {
    using T = TypeParam;
    for (const int64_t nx : {2, 3, 17, 100})
        for (const Partition<T>& p : partitions<T>(nx)) {
            std::vector<T> sites = telling_sites(p.x);
            OwnedTask task(p.x, nx, 0);
            for (const int64_t peak : {int64_t{0}, int64_t{1}, nx / 2, nx - 1, nx}) {
                // A run within the peak cell reaches the shared comparison.
                const T inside = p.x[static_cast<std::size_t>(std::max<int64_t>(peak - 1, 0))];
                for (int k = 0; k < 40; ++k) sites.push_back(inside);
                for (const auto width : kWidths)
                    expect_counted(p, sites,
                                   cells_of<T>(task.get(), fit::kSearchPeak, width, sites, static_cast<T>(peak)),
                                   "peak");
            }
        }
}

TYPED_TEST(SearchOf, SortedSearchCountsAndCarriesItsPosition) {
    using T = TypeParam;
    for (const int64_t nx : kSizes)
        for (const Partition<T>& p : partitions<T>(nx)) {
            std::vector<T> sites = telling_sites(p.x);
            // Dense stretches, so that vectors pass none, a few and many points.
            for (const T s : random_values<T>(200, T(0), T(8), 3)) sites.push_back(s);
            std::sort(sites.begin(), sites.end());
            OwnedTask task(p.x, nx, 0);
            for (const auto width : kWidths) {
                int64_t position = 0;
                expect_counted(p, sites, cells_of<T>(task.get(), fit::kSearchSorted, width, sites, T(0), &position),
                               "sorted");
                const auto half = static_cast<std::ptrdiff_t>(sites.size() / 2);
                const std::vector<T> first(sites.begin(), sites.begin() + half),
                    second(sites.begin() + half, sites.end());
                position = 0;
                expect_counted(p, first, cells_of<T>(task.get(), fit::kSearchSorted, width, first, T(0), &position),
                               "first half");
                expect_counted(p, second, cells_of<T>(task.get(), fit::kSearchSorted, width, second, T(0), &position),
                               "second half");
            }
        }
}

// Unsorted sites: the walk only goes up, in vectors as site by site.
TYPED_TEST(SearchOf, SortedSearchOfUnsortedSitesNeverStepsBack) {
    using T = TypeParam;
    std::vector<T> x = random_values<T>(300, T(0), T(1), 8);
    std::sort(x.begin(), x.end());
    OwnedTask task(x, 300, 0);
    std::vector<T> sites = random_values<T>(500, T(0), T(1), 9);
    std::sort(sites.begin(), sites.end());
    for (std::size_t i = 7; i + 3 < sites.size(); i += 23) std::swap(sites[i], sites[i + 3]);
    int64_t position = 0, expected = 0;
    const auto cells = cells_of<T>(task.get(), fit::kSearchSorted, fit::kWidth64Pack, sites, T(0), &position);
    for (std::size_t i = 0; i < sites.size(); ++i) {
        while (expected < 300 && !(x[static_cast<std::size_t>(expected)] > sites[i])) ++expected;
        ASSERT_EQ(cells[i], expected) << i;
    }
}

TYPED_TEST(SearchOf, UniformSearchIsTheRoundedFormula) {
    using T = TypeParam;
    for (const int64_t nx : {2, 3, 10, 1000}) {
        const std::vector<T> ends{T(-1.7), T(3.1)};
        OwnedTask task(ends, nx, 4);
        const T scale = static_cast<T>(nx - 1) / (ends[1] - ends[0]);
        std::vector<T> sites = random_values<T>(300, T(-2), T(3.5), 4);
        for (int64_t i = 0; i < nx; ++i) sites.push_back(ends[0] + static_cast<T>(i) / scale);
        for (const T s : {ends[0], ends[1], std::nextafter(ends[0], T(-9)), std::nextafter(ends[1], T(9)),
                          infinity_of<T>, -infinity_of<T>, std::numeric_limits<T>::max(), nan_of<T>})
            sites.push_back(s);
        for (const auto width : kWidths) {
            const auto cells = cells_of<T>(task.get(), fit::kSearchUniform, width, sites, scale);
            for (std::size_t i = 0; i < sites.size(); ++i) {
                const T steps = scale * (sites[i] - ends[0]);
                int64_t expected = 0;
                if (sites[i] == ends[1])
                    expected = nx - 1;
                else if (sites[i] >= ends[0])
                    expected =
                        steps >= static_cast<T>(nx) ? nx : std::min<int64_t>(static_cast<int64_t>(steps) + 1, nx);
                ASSERT_EQ(cells[i], expected) << "site " << sites[i] << " of " << nx;
            }
        }
    }
}

// Uniform partitions of more points than the significand, 32-bit cells or a vector's truncation count: their two ends
// are all that is stored.
TYPED_TEST(SearchOf, UniformSearchTellsInsideFromOutsideHoweverManyPoints) {
    using T = TypeParam;
    for (const int64_t nx : {int64_t{1} << 24, (int64_t{1} << 24) + 1, (int64_t{1} << 26) + 3, (int64_t{1} << 30) + 60,
                             int64_t{INT32_MAX}, (int64_t{1} << 31) + 5, (int64_t{1} << 52) + 1, (int64_t{1} << 53) + 3,
                             (int64_t{1} << 61) + 3, INT64_MAX})
        for (const auto& [a, b] : {std::pair<T, T>(0, 1), {-3, 5}, {T(1e-20), T(7e-20)}, {T(-2e19), T(1e20)}}) {
            const std::vector<T> ends{a, b};
            OwnedTask task(ends, nx, 4);
            std::vector<T> sites = {a, b, std::nextafter(b, infinity_of<T>), b + (b - a) / 4, infinity_of<T>};
            const std::size_t outside = 2;
            for (int k = 1; k < 16; ++k) sites.push_back(a + (b - a) * static_cast<T>(k) / 16);
            for (const auto width : kWidths) {
                if (width != fit::kWidth64 && nx >= INT32_MAX) continue;
                const auto cells = cells_of<T>(task.get(), fit::kSearchUniform, width, sites,
                                               static_cast<T>(nx - 1) / (b - a));
                EXPECT_EQ(cells[0], 1);
                EXPECT_EQ(cells[1], nx - 1);
                // The first site beyond the end is told where the rounded product isn't asked.
                if (nx > int64_t{1} << std::numeric_limits<T>::digits) {
                    EXPECT_EQ(cells[outside], nx);
                }
                for (std::size_t i = outside + 1; i < 5; ++i) EXPECT_EQ(cells[i], nx) << "site " << sites[i];
                for (std::size_t i = 5; i < sites.size(); ++i) {
                    const double expected = static_cast<double>(nx) * static_cast<double>(i - 4) / 16;
                    EXPECT_NEAR(static_cast<double>(cells[i]), expected,
                                1 + 4 * static_cast<double>(std::numeric_limits<T>::epsilon()) * static_cast<double>(nx));
                }
            }
        }
}

TYPED_TEST(SearchOf, EndsBelongToTheFirstAndLastCell) {
    using T = TypeParam;
    const std::vector<T> x{1, 2, 4, 8}, ends{1, 8}, sites{1, 8};
    const T peak[5] = {0, 1, 0, 0, 2};
    for (const auto& [xhint, sitehint, hint] : std::vector<std::tuple<int64_t, int64_t, const T*>>{
             {0, 0, nullptr}, {0, 64, nullptr}, {0, 0, peak}, {2, 0, nullptr}, {4, 0, nullptr}}) {
        OwnedTask task(xhint == 4 ? ends : x, 4, xhint);
        int64_t cell[2] = {-1, -1};
        EXPECT_EQ(
            Fit<T>::search(task.get(), 0, 2, sites.data(), sitehint, hint, cell, nullptr, nullptr, nullptr, nullptr),
            0);
        EXPECT_EQ(cell[0], 1);
        EXPECT_EQ(cell[1], 3);
    }
}

// NaN sites and partitions that are unsorted, NaN or infinite: any cell, but one from 0 to nx, and no access outside.
TYPED_TEST(SearchOf, BadInputTerminatesWithinBounds) {
    using T = TypeParam;
    for (const int64_t nx : {2, 3, 20, 200}) {
        const auto n = static_cast<std::size_t>(nx);
        for (int kind = 0; kind < 6; ++kind) {
            GuardedBuffer<T> x(n, kind % 2 == 0 ? Guard::kAfter : Guard::kBefore);
            const std::vector<T> random = random_values<T>(nx, T(-1), T(1), 17);
            for (std::size_t i = 0; i < n; ++i) {
                x[i] = kind < 2 ? random[i] : (kind < 4 ? nan_of<T> : static_cast<T>(i));
                if (kind >= 4 && i % 5 == 2) x[i] = i % 2 == 0 ? nan_of<T> : infinity_of<T>;
            }
            std::vector<T> sites = random_values<T>(333, T(-2), T(2), 18);
            for (std::size_t i = 0; i < sites.size(); i += 7) sites[i] = i % 2 == 0 ? nan_of<T> : infinity_of<T>;
            nax_df_task* task = nullptr;
            ASSERT_EQ(Fit<T>::create(&task, nx, x.data(), 0, 0, nullptr, 0, 1), 0);
            for (int algorithm = fit::kSearchUniform; algorithm <= fit::kSearchHybrid; ++algorithm)
                for (const auto width : kWidths)
                    for (const T scale : {T(0), T(1), T(1e30), infinity_of<T>, nan_of<T>}) {
                        int64_t position = 0;
                        const auto which = static_cast<SearchAlgorithm>(algorithm);
                        for (const int64_t c : cells_of<T>(task, which, width, sites, scale, &position))
                            ASSERT_TRUE(c >= 0 && c <= nx)
                                << "algorithm " << algorithm << " kind " << kind << " cell " << c;
                    }
            nax_df_kernel_DeleteTask(&task);
        }
    }
}

// A table made by the caller of the search kernels, as the pairs are defined: no head before it, spare pair of anything.
TYPED_TEST(SearchOf, IndexOfTheCallerServes) {
    using T = TypeParam;
    for (const int64_t nx : {2, 17, 300, 5000}) {
        Partition<T> p{"random", random_values<T>(nx, T(-4), T(9), 29)};
        std::sort(p.x.begin(), p.x.end());
        const int64_t nbins = std::clamp<int64_t>(nx / 16, 16, 1024);
        const std::size_t length = static_cast<std::size_t>(2 * nbins + 4);
        for (const int64_t rest : {int64_t{0}, int64_t{-1}, INT64_MIN, nx - 1}) {
            GuardedBuffer<int64_t> table(length, Guard::kBefore);
            const auto lo = [&](int64_t b) -> int64_t& { return table[static_cast<std::size_t>(2 * b)]; };
            const auto hi = [&](int64_t b) -> int64_t& { return table[static_cast<std::size_t>(2 * b + 1)]; };
            for (std::size_t k = 0; k < length; ++k) table[k] = k < 2 * static_cast<std::size_t>(nbins) ? -1 : rest;
            lo(0) = 0;
            const T scale = static_cast<T>(nbins) / (p.x.back() - p.x[0]);
            for (int64_t i = 1; i < nx; ++i) {
                const auto b = static_cast<int64_t>(scale * (p.x[static_cast<std::size_t>(i)] - p.x[0]));
                if (b == 0) continue;
                if (hi(b - 1) == -1) hi(b - 1) = i;
                lo(b + 1) = i;
            }
            hi(nbins - 1) = nx - 1;
            for (int64_t b = 1; b < nbins; ++b)
                if (lo(b) == -1) lo(b) = lo(b - 1);
            for (int64_t b = nbins - 2; b >= 0; --b)
                if (hi(b) == -1) hi(b) = hi(b + 1);
            lo(nbins) = lo(nbins - 1), hi(nbins) = hi(nbins - 1);

            std::vector<T> sites = random_values<T>(200, T(-5), T(10), 31);
            sites.insert(sites.end(), p.x.begin(), p.x.end());
            nax_df_task bare{};
            bare.nx = nx, bare.x = p.x.data(), bare.bin_table = table.data();
            for (const auto width : kWidths)
                expect_counted(p, sites, cells_of<T>(&bare, fit::kSearchHybrid, width, sites, scale), "caller's index");
        }
    }
}

// A stale index is not used: nx edited up and down without a rebuild.
TYPED_TEST(SearchOf, EditedPartitionIsSearchedWithoutItsOldIndex) {
    using T = TypeParam;
    GuardedBuffer<T> x(100);
    for (std::size_t i = 0; i < 100; ++i) x[i] = static_cast<T>(i * i);
    nax_df_task* task = nullptr;
    ASSERT_EQ(Fit<T>::create(&task, 40, x.data(), 0, 0, nullptr, 0, 1), 0);
    const std::vector<T> sites = random_values<T>(100, T(-5), T(9900), 21);
    for (const int64_t nx : {100, 30, 2}) {
        nax_df_kernel_iEditVal(task, 14, nx);
        const Partition<T> p{"edited", {x.data(), x.data() + nx}};
        expect_counted(p, sites, cells_of<T>(task, fit::kSearchHybrid, fit::kWidth32, sites, fit::bin_scale<T>(*task)),
                       "hybrid");
    }
    nax_df_kernel_DeleteTask(&task);
}

TYPED_TEST(SearchOf, AlgorithmFollowsHintsInOrder) {
    using T = TypeParam;
    const std::vector<T> x{0, 1, 2, 3, 4};
    const auto choose = [&](int64_t xhint, int64_t sitehint, const T* hint, bool callback) {
        OwnedTask task(x, 5, xhint);
        return fit::choose_search<T>(*task.get(), sitehint, hint, callback);
    };
    const T peak[5] = {9, 1, 9, 9, 5}, beyond[5] = {9, 1, 9, 9, T(5.5)}, none[5] = {9, 0, 9, 9, 77},
            odd[5] = {0, 2, 0, 0, 1};
    const T nan_kind[5] = {0, nan_of<T>, 0, 0, 1}, nan_peak[5] = {0, 1, 0, 0, nan_of<T>},
            negative[5] = {0, 1, 0, 0, T(-0.5)};
    EXPECT_EQ(choose(4, 64, odd, true), fit::kSearchUniUserDef);
    EXPECT_EQ(choose(2, 64, odd, true), fit::kSearchUserDef);
    EXPECT_EQ(choose(4, 64, odd, false), fit::kSearchUniform);
    EXPECT_EQ(choose(2, 64, odd, false), fit::kSearchQuasiUniform);
    EXPECT_EQ(choose(0, 64, odd, false), fit::kSearchSorted);
    EXPECT_EQ(choose(1, 0, nullptr, false), fit::kSearchHybrid);
    EXPECT_EQ(choose(0, 68, none, false), fit::kSearchHybrid);
    EXPECT_EQ(choose(0, 0, peak, false), fit::kSearchPeak);
    for (const T* bad : {beyond, odd, nan_kind, nan_peak, negative})
        EXPECT_EQ(choose(0, 0, bad, false), DfStatusBadDataHint);
}

TYPED_TEST(SearchOf, EntryReportsMissingPointersAndDoesNothingWithoutSites) {
    using T = TypeParam;
    const std::vector<T> x{0, 1, 2};
    const T odd[5] = {0, 2, 0, 0, 1};
    OwnedTask task(x, 3, 0);
    int64_t cell = -7;
    const auto search = [&](const nax_df_task* t, int64_t n, const T* site, const T* hint, void* c) {
        return Fit<T>::search(t, 0, n, site, 0, hint, c, nullptr, nullptr, nullptr, nullptr);
    };
    EXPECT_EQ(search(nullptr, 1, nullptr, odd, nullptr), DfStatusNullTask);
    EXPECT_EQ(search(task.get(), 1, nullptr, odd, nullptr), DfStatusBadDataHint);
    EXPECT_EQ(search(task.get(), 1, nullptr, nullptr, nullptr), DfStatusBadSite);
    EXPECT_EQ(search(task.get(), 1, x.data(), nullptr, nullptr), DfStatusNullOutput);
    EXPECT_EQ(search(task.get(), 0, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(search(task.get(), -3, x.data(), nullptr, &cell), 0);
    EXPECT_EQ(cell, -7);
}

// The entry with both integer widths and all ways to give sites.
TYPED_TEST(SearchOf, EntryWritesCellsInTheCallersWidth) {
    using T = TypeParam;
    const Partition<T> p{"squares", {0, 1, 4, 9, 16, 25, 36, 49, 64, 81}};
    for (const int64_t n : {1, 2, 7, 31, 32, 33, 100, 4095, 4096, 4097, 9000})
        for (const int64_t width : {0, 1})
            for (const bool uniform : {false, true}) {
                OwnedTask task(p.x, 10, 0, width);
                const T a = T(-3), b = T(90), step = n > 1 ? (b - a) / static_cast<T>(n - 1) : T(0);
                std::vector<T> sites(static_cast<std::size_t>(n));
                for (int64_t i = 0; i < n; ++i)
                    sites[static_cast<std::size_t>(i)] = std::fma(step, static_cast<T>(i), a);
                const T ends[2] = {a, b};
                std::vector<int32_t> narrow(static_cast<std::size_t>(n) + 1, -7);
                std::vector<int64_t> wide(static_cast<std::size_t>(n) + 1, -7);
                void* const cell = width == 0 ? static_cast<void*>(narrow.data()) : wide.data();
                ASSERT_EQ(Fit<T>::search(task.get(), 0, n, uniform ? ends : sites.data(), uniform ? 4 : 0, nullptr,
                                         cell, nullptr, nullptr, nullptr, nullptr),
                          0);
                for (std::size_t i = 0; i < sites.size(); ++i)
                    ASSERT_EQ(width == 0 ? narrow[i] : wide[i], cell_by_counting(p.x, sites[i])) << n << ' ' << i;
                EXPECT_EQ(width == 0 ? narrow.back() : wide.back(), -7);
            }
}

// --- Callbacks
// --------------------------------------------------------------------------------------------------------

template <class T>
struct CallbackLog {
    std::vector<int64_t> counts;
    int64_t guess = 0;
    int32_t status = 0;
    int32_t final_flag = 0;
    bool reserved_is_zero = true;
    static int32_t call(const int64_t* n, const T* site, int64_t* cell, int32_t* flag, void* parameters,
                        void* reserved) {
        auto& log = *static_cast<CallbackLog*>(parameters);
        log.counts.push_back(*n);
        log.reserved_is_zero &= reserved == nullptr;
        for (int64_t i = 0; i < *n; ++i) {
            cell[i] = log.guess;
            flag[i] = log.final_flag != 0 && site[i] > T(2) ? log.final_flag : 0;
        }
        return log.status;
    }
};

TYPED_TEST(SearchOf, CallbackGetsBatchesOf128AndOneForTheRest) {
    using T = TypeParam;
    const std::vector<T> x{0, 1, 2, 3}, ends{0, 3};
    for (const bool uniform : {false, true})
        for (const int64_t n : {0, 1, 31, 32, 127, 128, 129, 256, 300}) {
            OwnedTask task(uniform ? ends : x, 4, uniform ? 4 : 0);
            const std::vector<T> sites = random_values<T>(n, T(-1), T(4), 2);
            std::vector<int64_t> cell(static_cast<std::size_t>(n));
            CallbackLog<T> log;
            const nax_threaders table = threads(4);
            loops().clear();
            EXPECT_EQ(Fit<T>::search(task.get(), 0, n, sites.data(), 0, nullptr, cell.data(), CallbackLog<T>::call,
                                     &log, nullptr, &table),
                      0);
            std::vector<int64_t> expected(static_cast<std::size_t>(n / 128), 128);
            expected.push_back(n % 128);
            EXPECT_EQ(log.counts, expected) << n;
            EXPECT_TRUE(log.reserved_is_zero);
            EXPECT_TRUE(loops().empty()) << "callbacks of the search aren't threaded";
            for (std::size_t i = 0; i < cell.size(); ++i) ASSERT_EQ(cell[i], cell_by_counting(x, sites[i])) << sites[i];
        }
}

TYPED_TEST(SearchOf, GuessesAreRefinedAndOnesOnAPointStand) {
    using T = TypeParam;
    const std::vector<T> x{0, 1, 2, 3, 5, 8}, sites{-1, 0, T(0.5), 1, 2, 3, 4, 5, 6, 8, 9};
    OwnedTask task(x, 6, 0);
    for (const int64_t guess : {-5, 0, 1, 2, 3, 4, 5, 6, 100}) {
        CallbackLog<T> log;
        log.guess = guess;
        std::vector<int64_t> cell(sites.size());
        ASSERT_EQ(Fit<T>::search(task.get(), 0, 11, sites.data(), 0, nullptr, cell.data(), CallbackLog<T>::call, &log,
                                 nullptr, nullptr),
                  0);
        for (std::size_t i = 0; i < sites.size(); ++i) {
            const int64_t c = std::max<int64_t>(guess, 0);
            const bool on_the_point = c < 6 && sites[i] == x[static_cast<std::size_t>(c)];
            EXPECT_EQ(cell[i], on_the_point ? c : cell_by_counting(x, sites[i]))
                << "guess " << guess << " site " << sites[i];
        }
    }
}

TYPED_TEST(SearchOf, FlagsAndStatusSayWhatIsFinal) {
    using T = TypeParam;
    const std::vector<T> x{0, 1, 2, 3}, ends{0, 3}, sites{T(0.5), T(2.5), T(1.5), 7};
    for (const bool uniform : {false, true}) {
        OwnedTask task(uniform ? ends : x, 4, uniform ? 4 : 0, 0);
        int32_t cell[4];
        CallbackLog<T> log;
        log.guess = 77;
        log.final_flag = -1;
        const auto run = [&] {
            return Fit<T>::search(task.get(), 0, 4, sites.data(), 0, nullptr, cell, CallbackLog<T>::call, &log, nullptr,
                                  nullptr);
        };
        EXPECT_EQ(run(), 0);
        EXPECT_EQ((std::array<int32_t, 4>{cell[0], cell[1], cell[2], cell[3]}), (std::array<int32_t, 4>{1, 77, 2, 77}));
        log.status = DfStatusExactResult;
        EXPECT_EQ(run(), 0);
        for (const int32_t c : cell) EXPECT_EQ(c, 77);
        log.status = 3;
        log.final_flag = 0;
        EXPECT_EQ(run(), 0);
        EXPECT_EQ((std::array<int32_t, 4>{cell[0], cell[1], cell[2], cell[3]}), (std::array<int32_t, 4>{1, 3, 2, 4}));
        log.status = -4242;
        EXPECT_EQ(run(), -4242);
    }
}

// --- Threads
// ----------------------------------------------------------------------------------------------------------

struct ThreadCase {
    SearchAlgorithm algorithm;
    int64_t nsite, nx;
    int limit;
    bool in_double, in_single;
};
// Both sides of every threshold.
const std::vector<ThreadCase> kThreadCases{
    {fit::kSearchUniform, 5000, 10, 2, false, false},
    {fit::kSearchUniform, 5001, 10, 2, true, false},
    {fit::kSearchUniform, 8192, 10, 2, true, false},
    {fit::kSearchUniform, 8193, 10, 2, true, true},
    {fit::kSearchUniform, 99999, 10, 1, false, false},
    {fit::kSearchSorted, 3000, 10, 4, false, false},
    {fit::kSearchSorted, 3001, 10, 4, true, true},
    {fit::kSearchQuasiUniform, 301, 10, 2, true, true},
    {fit::kSearchQuasiUniform, 300, 39, 8, false, false},
    {fit::kSearchQuasiUniform, 151, 40, 4, true, true},
    {fit::kSearchQuasiUniform, 151, 40, 2, false, false},
    {fit::kSearchQuasiUniform, 151, 600, 2, true, true},
    {fit::kSearchQuasiUniform, 150, 600, 8, false, false},
    {fit::kSearchPeak, 1200, 1200, 2, false, false},
    {fit::kSearchPeak, 1201, 5, 2, true, true},
    {fit::kSearchPeak, 40, 1201, 2, true, true},
    {fit::kSearchHybrid, 300, 10, 2, false, false},
    {fit::kSearchHybrid, 301, 10, 2, true, true},
    {fit::kSearchHybrid, 600, 10, 4, false, false},
    {fit::kSearchHybrid, 601, 10, 4, true, true},
    {fit::kSearchHybrid, 601, 10, 8, false, false},
    {fit::kSearchHybrid, 1001, 10, 8, false, true},
    {fit::kSearchHybrid, 2000, 10, 8, false, true},
    {fit::kSearchHybrid, 2001, 10, 8, true, true},
    {fit::kSearchUserDef, 99999, 10, 8, false, false},
    {fit::kSearchUniUserDef, 99999, 10, 8, false, false},
};

TEST(Search, ThreadsStartAtTheirThresholds) {
    for (const ThreadCase& c : kThreadCases) {
        EXPECT_EQ(fit::worth_threads<double>(c.algorithm, c.nsite, c.nx, c.limit), c.in_double)
            << c.algorithm << ' ' << c.nsite;
        EXPECT_EQ(fit::worth_threads<float>(c.algorithm, c.nsite, c.nx, c.limit), c.in_single)
            << c.algorithm << ' ' << c.nsite;
    }
}

TYPED_TEST(SearchOf, ThreadsGiveTheSameCells) {
    using T = TypeParam;
    std::vector<T> x = random_values<T>(1500, T(0), T(1), 31);
    std::sort(x.begin(), x.end());
    const std::vector<T> ends{0, 1};
    const T peak[5] = {0, 1, 0, 0, 700};
    std::vector<T> sites = random_values<T>(10007, T(-0.01), T(1.01), 32), sorted = sites;
    std::sort(sorted.begin(), sorted.end());
    for (const auto& [xhint, sitehint, hint] : std::vector<std::tuple<int64_t, int64_t, const T*>>{
             {0, 0, nullptr}, {0, 64, nullptr}, {0, 0, peak}, {2, 0, nullptr}, {4, 0, nullptr}, {0, 4, nullptr}})
        for (const int64_t width : {0, 1}) {
            OwnedTask task(xhint == 4 ? ends : x, 1500, xhint, width);
            const std::vector<T>& use = sitehint == 64 ? sorted : (sitehint == 4 ? ends : sites);
            std::vector<int64_t> serial(10007), threaded(10007);
            ASSERT_EQ(Fit<T>::search(task.get(), 0, 10007, use.data(), sitehint, hint, serial.data(), nullptr, nullptr,
                                     nullptr, nullptr),
                      0);
            for (const int limit : {1, 2, 4}) {
                const nax_threaders table = threads(limit);
                loops().clear();
                std::fill(threaded.begin(), threaded.end(), -1);
                if (width == 0) std::fill(threaded.begin() + 5004, threaded.end(), 0);
                ASSERT_EQ(Fit<T>::search(task.get(), 0, 10007, use.data(), sitehint, hint, threaded.data(), nullptr,
                                         nullptr, nullptr, &table),
                          0);
                EXPECT_EQ(loops().size(), limit > 1 ? 1u : 0u);
                for (const LoopRecord& loop : loops()) EXPECT_EQ(loop.threads, limit);
                EXPECT_EQ(std::memcmp(serial.data(), threaded.data(), 10007 * (width == 0 ? 4 : 8)), 0);
            }
        }
}

TYPED_TEST(SearchOf, ManyUniformSitesNeedMemory) {
    using T = TypeParam;
    const std::vector<T> x{0, 1, 2};
    const T ends[2] = {0, 2};
    std::vector<int64_t> cell(5000);
    OwnedTask task(x, 3, 0);
    const auto run = [&](int64_t n) {
        return Fit<T>::search(task.get(), 0, n, ends, 4, nullptr, cell.data(), nullptr, nullptr, nullptr, nullptr);
    };
    EXPECT_EQ(for_each_failing_allocation([&] { return run(4096); }, int32_t{DfStatusMemory}, int32_t{0}), 0);
    EXPECT_EQ(for_each_failing_allocation([&] { return run(4097); }, int32_t{DfStatusMemory}, int32_t{0}), 1);
}

TEST(Search, WidthFollowsFlagsAndSize) {
    constexpr int64_t kLimit = INT32_MAX;
    for (const int64_t flags : {int64_t{0}, kWide, fit::kCallerCells | kWide}) {
        EXPECT_EQ(fit::cell_width(flags, kLimit - 1), fit::kWidth64Pack);
        EXPECT_EQ(fit::cell_width(flags, kLimit), fit::kWidth64);
    }
    EXPECT_EQ(fit::cell_width(fit::kCallerCells, kLimit), fit::kWidth32);
}

}  // namespace
}  // namespace nax::testing
