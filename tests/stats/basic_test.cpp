// Moments, covariance and the like: against two-pass references, over methods, storages, weights, blocks and threads.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>

#include "service/service.h"
#include "stats/basic/request.h"
#include "stats/task.h"
#include "tests/lib/failing_service.h"
#include "tests/stats/support.h"

namespace nax::testing {
namespace {

constexpr uint64_t kFast = 1, kOnePass = 2, kUserMean = 0x100;

template <class T>
class BasicOf : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(BasicOf, Precisions);

enum class Weights { kNone, kRandom, kSomeZero, kLeadingZero };

template <class T>
void set_weights(Sample<T>& s, Weights kind) {
    if (kind == Weights::kNone) return;
    std::mt19937 engine(5);
    for (int64_t i = 0; i < s.n; ++i) {
        const bool zero = (kind == Weights::kSomeZero && i % 3 == 1) || (kind == Weights::kLeadingZero && i < 2);
        s.weights.push_back(zero ? T(0) : static_cast<T>(0.25 + static_cast<double>(engine() % 1000) / 500));
    }
}

// What central moments that are differences of raw ones are small against.
template <class T>
long double lost_in_raw(const Reference<T>& want, std::size_t r, std::size_t j) {
    const long double raw4 = want.results[3][j], c2 = want.results[4][j];
    if (r == 5 || r == 6) return raw4;
    if (r == 15 || r == 16) return want.results[13][j];
    return r == 7 || r == 8 ? raw4 / (c2 * c2) : 0;
}

// Every result of `want` within `tolerance` of what rounding may do to a result of its size.
template <class T>
void expect_close(const Sample<T>& s, const Reference<T>& want, double tolerance, const char* what, bool from_raw) {
    for (std::size_t r = 0; r < 17; ++r) {
        for (std::size_t j = 0; j < want.results[r].size(); ++j) {
            const long double w = want.results[r][j];
            // Odd moments are sums of both signs: rounding is relative to the absolute moment, about the even one.
            const long double scale = std::fabs(w) + (r == 2 || r == 12 ? want.results[r + 1][j] : 0) +
                                      (r == 0 || r == 10 ? std::sqrt(want.results[r + 1][j]) : 0) +
                                      (r == 5 || r == 15 ? want.results[r + 1][j] : 0) + (r >= 7 && r < 10 ? 3 : 0) +
                                      (r == 9 ? w * w : 0) + (from_raw ? lost_in_raw(want, r, j) : 0);
            EXPECT_NEAR(static_cast<double>(s.results[r][j]), static_cast<double>(w),
                        tolerance * static_cast<double>(scale))
                << what << " result " << r << " variable " << j << " n " << s.n << " p " << s.p << " columns "
                << s.columns;
        }
    }
    const auto p = static_cast<std::size_t>(s.p);
    for (std::size_t m = 0; m < 3; ++m)
        for (std::size_t a = 0; a < p; ++a)
            for (std::size_t b = 0; b < p; ++b) {
                const auto& matrix = want.matrices[m];
                const long double scale = m == 1 && a != b ? 1 : std::sqrt(matrix[a * p + a] * matrix[b * p + b]);
                EXPECT_NEAR(static_cast<double>(s.matrices[m][a * p + b]), static_cast<double>(matrix[a * p + b]),
                            tolerance * static_cast<double>(scale))
                    << what << " matrix " << m << " (" << a << ", " << b << ") n " << s.n << " columns " << s.columns;
            }
}

template <class T>
constexpr double unit = sizeof(T) == 8 ? 2.3e-16 : 1.2e-7;

TYPED_TEST(BasicOf, AllEstimatesOfAllMethodsMeetTheTwoPassReference) {
    using T = TypeParam;
    for (const int64_t p : {1, 2, 3, 8, 11, 16, 37})
        for (const int64_t n : {5, 23, 300, 1100})
            for (const bool columns : {false, true})
                for (const Weights weights :
                     {Weights::kNone, Weights::kRandom, Weights::kSomeZero, Weights::kLeadingZero}) {
                    Sample<T> s(n, p, columns);
                    s.fill(static_cast<unsigned>(n + p), 0.4);
                    set_weights(s, weights);
                    s.open();
                    const Reference<T> reference(s);
                    const double tolerance = unit<T> * (20 + 2 * static_cast<double>(n > 100 ? 60 : n)) * 4;
                    for (const uint64_t method : {kFast, kOnePass, kUserMean}) {
                        // Of few values the variance may be nearly nothing beside the mean square.
                        if (method != kOnePass && n < 20) continue;
                        s.pair[0] = s.pair[1] = 0;
                        if (method == kUserMean)
                            for (std::size_t j = 0; j < static_cast<std::size_t>(p); ++j)
                                s.results[0][j] = static_cast<T>(reference.results[0][j]);
                        ASSERT_EQ(Statistics<T>::basic(s.task, kAllBasic, method, nullptr), 0);
                        expect_close(s, reference, tolerance,
                                     method == kFast      ? "fast"
                                     : method == kOnePass ? "one pass"
                                                          : "user mean",
                                     method == kFast);
                        EXPECT_NEAR(static_cast<double>(s.pair[0]), static_cast<double>(reference.weight),
                                    unit<T> * 100 * static_cast<double>(reference.weight));
                        if (::testing::Test::HasFailure()) return;
                    }
                }
}

// Each request alone asks its own kernel, and must agree with the request for everything.
TYPED_TEST(BasicOf, EachEstimateAloneAgreesWithAllTogether) {
    using T = TypeParam;
    for (const bool columns : {false, true})
        for (const bool weighted : {false, true}) {
            Sample<T> all(150, 9, columns), one(150, 9, columns);
            for (auto* s : {&all, &one}) {
                s->fill(3, 0.2);
                if (weighted) set_weights(*s, Weights::kRandom);
                s->open();
            }
            for (const uint64_t method : {kFast, kOnePass, kUserMean}) {
                const Reference<T> reference(all);
                for (auto* s : {&all, &one})
                    for (std::size_t j = 0; j < 9; ++j) s->results[0][j] = static_cast<T>(reference.results[0][j]);
                all.pair[0] = all.pair[1] = 0;
                ASSERT_EQ(Statistics<T>::basic(all.task, kAllBasic, method, nullptr), 0);
                const int bits[20] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 25, 26, 27, 28, 29, 30, 31, 12, 13, 32};
                for (int b = 0; b < 20; ++b) {
                    one.pair[0] = one.pair[1] = 0;
                    ASSERT_EQ(Statistics<T>::basic(one.task, estimate_bit(bits[b]), method, nullptr), 0);
                    const auto& got = b < 17 ? one.results[b] : one.matrices[b - 17];
                    const auto& want = b < 17 ? all.results[b] : all.matrices[b - 17];
                    for (std::size_t e = 0; e < got.size(); ++e)
                        EXPECT_NEAR(got[e], want[e], 60 * unit<T> * (1 + std::fabs(static_cast<double>(want[e]))))
                            << "bit " << bits[b] << " method " << method;
                }
            }
        }
}

// Blocks of any size, one after the other, equal one run: the state is in the results.
TYPED_TEST(BasicOf, BlocksAddUpToOneRun) {
    using T = TypeParam;
    for (const bool columns : {false, true})
        for (const bool weighted : {false, true})
            for (const int64_t matrix_storage : {0, 1, 2})
                for (const uint64_t method : {kFast, kOnePass, kUserMean}) {
                    const int64_t n = 200, p = 10;
                    Sample<T> whole(n, p, columns);
                    whole.fill(17, 0.3);
                    if (weighted) set_weights(whole, Weights::kSomeZero);
                    whole.matrix_storage = matrix_storage;
                    Sample<T> blocks(n, p, columns);
                    blocks.matrix_storage = matrix_storage;
                    blocks.x.assign(whole.x.size(), T(0));
                    if (weighted) blocks.weights.assign(whole.weights.size(), T(0));
                    whole.open();
                    blocks.open();
                    const Reference<T> reference(whole);
                    for (auto* s : {&whole, &blocks})
                        for (std::size_t j = 0; j < static_cast<std::size_t>(p); ++j)
                            s->results[0][j] = static_cast<T>(reference.results[0][j]);
                    // A correlation under a caller's mean can't be taken up again.
                    const uint64_t estimates = method == kUserMean ? kAllBasic & ~estimate_bit(13) : kAllBasic;
                    ASSERT_EQ(Statistics<T>::basic(whole.task, estimates, method, nullptr), 0);
                    int64_t first = 0;
                    for (const int64_t size : {2, 1, 90, 7, 100}) {
                        blocks.n = size;
                        for (int64_t i = 0; i < size; ++i) {
                            for (int64_t j = 0; j < p; ++j) blocks.at(i, j) = whole.at(first + i, j);
                            if (weighted)
                                blocks.weights[static_cast<std::size_t>(i)] =
                                    whole.weights[static_cast<std::size_t>(first + i)];
                        }
                        first += size;
                        ASSERT_EQ(Statistics<T>::basic(blocks.task, estimates, method, nullptr), 0);
                    }
                    for (std::size_t r = 0; r < 17; ++r)
                        for (std::size_t j = 0; j < static_cast<std::size_t>(p); ++j)
                            EXPECT_NEAR(blocks.results[r][j], whole.results[r][j],
                                        400 * unit<T> * (1 + std::fabs(static_cast<double>(whole.results[r][j]))))
                                << r << " method " << method;
                    const std::size_t elements =
                        static_cast<std::size_t>(matrix_storage == 0 ? p * p : p * (p + 1) / 2);
                    for (std::size_t m = 0; m < 3; ++m)
                        for (std::size_t e = 0; e < elements; ++e)
                            EXPECT_NEAR(blocks.matrices[m][e], whole.matrices[m][e],
                                        400 * unit<T> * (1 + std::fabs(static_cast<double>(whole.matrices[m][e]))))
                                << m << " element " << e << " method " << method;
                    if (::testing::Test::HasFailure()) return;
                }
}

// The same number of threads gives the same bits, however they run; and close to a serial run.
TYPED_TEST(BasicOf, ThreadsMergeInOrder) {
    using T = TypeParam;
    for (const bool columns : {false, true})
        for (const uint64_t method : {kFast, kOnePass, kUserMean}) {
            Sample<T> s(6000, 9, columns), serial(6000, 9, columns), fewer(6000, 9, columns);
            for (auto* sample : {&s, &serial, &fewer}) {
                sample->fill(8, 0.5);
                set_weights(*sample, Weights::kLeadingZero);
                std::fill_n(sample->weights.begin(), 2100, T(0));  // the first thread of three sees nothing
                sample->open();
                std::fill(sample->results[0].begin(), sample->results[0].end(), T(0.5));
            }
            BackwardThreads::limit = 3;
            nax_threaders table = BackwardThreads::table();
            BackwardThreads::regions = 0;
            ASSERT_EQ(Statistics<T>::basic(s.task, kAllBasic, method, &table), 0);
            EXPECT_EQ(BackwardThreads::regions, 1);
            table.parallel_region = BackwardThreads::region_of_one;
            ASSERT_EQ(Statistics<T>::basic(fewer.task, kAllBasic, method, &table), 0);
            ASSERT_EQ(Statistics<T>::basic(serial.task, kAllBasic, method, nullptr), 0);
            for (std::size_t r = 0; r < 17; ++r) {
                EXPECT_EQ(s.results[r], fewer.results[r]) << r;
                for (std::size_t j = 0; j < 9; ++j)
                    EXPECT_NEAR(s.results[r][j], serial.results[r][j],
                                4000 * unit<T> * (1 + std::fabs(static_cast<double>(serial.results[r][j]))))
                        << r << " method " << method;
            }
            for (std::size_t m = 0; m < 3; ++m) {
                EXPECT_EQ(s.matrices[m], fewer.matrices[m]) << m;
                for (std::size_t e = 0; e < 81; ++e)
                    EXPECT_NEAR(s.matrices[m][e], serial.matrices[m][e],
                                4000 * unit<T> * (1 + std::fabs(static_cast<double>(serial.matrices[m][e]))))
                        << m;
            }
        }
}

TYPED_TEST(BasicOf, MaskedVariablesKeepWhatTheyHeld) {
    using T = TypeParam;
    for (const int64_t matrix_storage : {0, 1, 2})
        for (const uint64_t method : {kFast, kOnePass, kUserMean}) {
            Sample<T> masked(40, 11, true), whole(40, 11, true);
            masked.mask.assign(11, 0);
            for (const std::size_t j : {1u, 4u, 10u}) masked.mask[j] = 5;
            for (auto* s : {&masked, &whole}) {
                s->fill(21);
                s->matrix_storage = matrix_storage;
                s->open();
                std::fill(s->results[0].begin(), s->results[0].end(), T(0.125));
                ASSERT_EQ(Statistics<T>::basic(s->task, kAllBasic, method, nullptr), 0);
            }
            std::size_t written = 0;
            for (std::size_t r = 0; r < 17; ++r)
                for (std::size_t j = 0; j < 11; ++j)
                    EXPECT_EQ(masked.results[r][j], masked.mask[j] != 0 ? whole.results[r][j] : T(r == 0 ? 0.125 : -7));
            for (std::size_t m = 0; m < 3; ++m)
                for (std::size_t e = 0; e < 121; ++e)
                    if (masked.matrices[m][e] != T(-7)) {
                        EXPECT_EQ(masked.matrices[m][e], whole.matrices[m][e]);
                        ++written;
                    }
            EXPECT_EQ(written, 3u * (matrix_storage == 0 ? 9u : 6u));
        }
}

// One-pass moments don't care for offsets, and a constant variable has no spread at all, threads or not.
TYPED_TEST(BasicOf, HugeOffsetsAndConstantColumns) {
    using T = TypeParam;
    const double offset = sizeof(T) == 8 ? 1e9 : 1e4;
    for (const bool columns : {false, true}) {
        Sample<T> s(9000, 3, columns);
        for (int64_t i = 0; i < s.n; ++i) {
            s.at(i, 0) = static_cast<T>(offset + (i % 2 == 0 ? -1 : 1));
            s.at(i, 1) = T(0.1);
            s.at(i, 2) = static_cast<T>(-offset + static_cast<double>(i % 3) - 1);
        }
        s.open();
        BackwardThreads::limit = 2;
        const nax_threaders table = BackwardThreads::table();
        for (const nax_threaders* threads : {static_cast<const nax_threaders*>(nullptr), &table}) {
            s.pair[0] = s.pair[1] = 0;
            ASSERT_EQ(Statistics<T>::basic(s.task, kAllBasic, kOnePass, threads), 0);
            EXPECT_NEAR(s.results[Sample<T>::kC2][0], 9000.0 / 8999, 1e-4);
            EXPECT_NEAR(s.results[Sample<T>::kC2][2], 6000.0 / 8999, 1e-4);
            EXPECT_NEAR(s.results[Sample<T>::kC4][0], 1.0, 2e-3);
            EXPECT_EQ(s.results[Sample<T>::kMean][1], T(0.1));
            EXPECT_EQ(s.results[Sample<T>::kC2][1], T(0));
            EXPECT_EQ(s.results[Sample<T>::kCs4][1], T(0));
            for (const std::size_t e : {1u, 3u, 4u, 5u, 7u}) EXPECT_EQ(s.matrices[2][e], T(0)) << e;
        }
    }
}

TYPED_TEST(BasicOf, OneObservationAndNoWeightAtAll) {
    using T = TypeParam;
    Sample<T> one(1, 2, true);
    one.x = {3, 4};
    one.open(false);
    ASSERT_EQ(Statistics<T>::basic(one.task, kAllBasic, kOnePass, nullptr), 0);
    EXPECT_EQ(one.results[0], (std::vector<T>{3, 4}));
    EXPECT_EQ(one.results[Sample<T>::kCs2], (std::vector<T>{0, 0}));
    EXPECT_TRUE(std::isnan(one.results[Sample<T>::kC2][0]));
    EXPECT_EQ(one.matrices[2], (std::vector<T>{0, 0, 0, 0}));
    for (const uint64_t method : {kFast, kOnePass, kUserMean}) {
        Sample<T> none(50, 3, false);
        none.fill(1);
        none.weights.assign(50, T(0));
        none.open();
        none.results[0].assign(3, T(0));
        ASSERT_EQ(Statistics<T>::basic(none.task, 0x3080 | kAllBasic, method, nullptr), 0);
        for (const int r : {0, 1, 4, 5, 6, 10, 14}) EXPECT_EQ(none.results[r], std::vector<T>(3, T(0))) << r;
        EXPECT_EQ(none.matrices[0], std::vector<T>(9, T(0)));
        EXPECT_EQ(none.pair[0], T(0));
        // Later blocks then count as the first.
        std::fill(none.weights.begin(), none.weights.end(), T(1));
        if (method == kUserMean) continue;
        ASSERT_EQ(Statistics<T>::basic(none.task, kAllBasic, method, nullptr), 0);
        const Reference<T> reference(none);
        EXPECT_NEAR(none.results[4][1], static_cast<double>(reference.results[4][1]), 1e-5);
    }
}

TYPED_TEST(BasicOf, ConversionGivesWhatADataRunGives) {
    using T = TypeParam;
    for (const int64_t matrix_storage : {0, 1, 2}) {
        Sample<T> s(60, 5, false);
        s.fill(2, 1.5);
        set_weights(s, Weights::kRandom);
        s.matrix_storage = matrix_storage;
        s.open();
        ASSERT_EQ(Statistics<T>::basic(s.task, kAllBasic, kOnePass, nullptr), 0);
        const auto results = s.results;
        const auto matrices = s.matrices;
        for (std::size_t r = 0; r < 10; ++r) s.results[r].assign(5, T(-7));
        for (std::size_t m = 0; m < 2; ++m) s.matrices[m].assign(25, T(-7));
        ASSERT_EQ(Statistics<T>::basic(s.task, 0x3FF, 0x400, nullptr), 0);
        ASSERT_EQ(Statistics<T>::basic(s.task, 0x3000, 0x200, nullptr), 0);
        for (std::size_t r = 0; r < 17; ++r)
            for (std::size_t j = 0; j < 5; ++j)
                EXPECT_NEAR(s.results[r][j], results[r][j],
                            20 * unit<T> * std::fabs(static_cast<double>(results[r][j])) + 1e-30)
                    << r;
        for (std::size_t m = 0; m < 3; ++m)
            for (std::size_t e = 0; e < 25; ++e)
                EXPECT_NEAR(s.matrices[m][e], matrices[m][e],
                            20 * unit<T> * std::fabs(static_cast<double>(matrices[m][e])))
                    << m;
        // A kurtosis alone takes the moments as they stand, whether there are sums or not.
        s.results[Sample<T>::kC2].assign(5, T(2));
        s.results[Sample<T>::kC4].assign(5, T(20));
        ASSERT_EQ(Statistics<T>::basic(s.task, estimate_bit(7), 0x400, nullptr), 0);
        EXPECT_EQ(s.results[Sample<T>::kKurtosis], std::vector<T>(5, T(2)));
    }
}

// Certified means and standard deviations of the Statistical Reference Datasets (NIST), in files as published.
TEST(Basic, CertifiedDataSets) {
    const struct {
        const char* name;
        double digits_of_mean, digits_of_deviation;  // of the one-pass method
    } sets[] = {{"Lew", 15, 14},       {"Lottery", 15, 14}, {"Mavro", 15, 12},      {"Michelso", 15, 12.3},
                {"NumAcc1", 15, 14.5}, {"NumAcc2", 14, 13}, {"NumAcc3", 14.5, 8.5}, {"NumAcc4", 14.5, 7.5}};
    for (const auto& set : sets) {
        std::ifstream file(std::string(NAX_SOURCE_DIR "/tests/data/nist/") + set.name + ".dat");
        double mean = 0, deviation = 0;
        std::vector<double> values;
        int dashes = 0;
        for (std::string line; std::getline(file, line);) {
            const auto colon = line.find(':');
            if (line.rfind("Sample Mean", 0) == 0) mean = std::stod(line.substr(colon + 1));
            if (line.rfind("Sample Standard Deviation", 0) == 0) deviation = std::stod(line.substr(colon + 1));
            if (line.rfind("-----", 0) == 0)
                ++dashes;
            else if (dashes > 0 && !line.empty() && line.find_first_of("0123456789") != std::string::npos)
                values.push_back(std::stod(line));
        }
        ASSERT_GT(values.size(), 2u) << set.name;
        Sample<double> s(static_cast<int64_t>(values.size()), 1, false);
        s.x = values;
        s.open();
        ASSERT_EQ(_stodSSBasic(s.task, kAllBasic, kOnePass, nullptr), 0);
        const auto digits = [](double got, double want) {
            return got == want ? 16 : -std::log10(std::fabs(got / want - 1));
        };
        EXPECT_GE(digits(s.results[0][0], mean), set.digits_of_mean) << set.name;
        EXPECT_GE(digits(std::sqrt(s.results[Sample<double>::kC2][0]), deviation), set.digits_of_deviation) << set.name;
        // About its mean the second pass gives what the data hold.
        s.pair[0] = s.pair[1] = 0;
        ASSERT_EQ(_stodSSBasic(s.task, estimate_bit(4), kUserMean, nullptr), 0);
        EXPECT_GE(digits(std::sqrt(s.results[Sample<double>::kC2][0]), deviation), set.name[6] == '4' ? 7.5 : 8.5)
            << set.name;
    }
}

// Which arrays a request misses, over all requests and methods: the lowest of its closure that isn't there.
TEST(Basic, MissingArraysAreReportedInOrderAndNothingIsWritten) {
    using namespace stats::basic;
    const int ids[20] = {7, 8, 9, 10, 11, 12, 13, 19, 21, 14, 15, 18, 67, 68, 69, 70, 71, 72, 73, 74};
    const int bits[20] = {0, 1, 2, 3, 4, 5, 6, 12, 13, 7, 8, 9, 25, 26, 27, 28, 29, 30, 31, 32};
    const int statuses[20] = {-4006, -4007, -4008, -4009, -4010, -4011, -4012, -4018, -4019, -4013,
                              -4014, -4017, -4074, -4075, -4076, -4077, -4078, -4079, -4080, -4081};
    const struct {
        uint64_t word;
        Method method;
    } methods[] = {{1, Method::kFast}, {2, Method::kOnePass}, {0x100, Method::kUserMean}, {0x400, Method::kConversion}};
    double x[6] = {1, 2, 3, 4, 5, 7}, place[20][4];
    const int64_t p = 2, n = 3, storage = 0x10000, full = 0;
    for (const auto& m : methods)
        for (int request = 0; request < 20; ++request) {
            const Results needs = closure(estimate_bit(bits[request]), m.method);
            for (int missing = 0; missing < 20; ++missing) {
                nax_ss_task* task = nullptr;
                ASSERT_EQ(__stodSSNewTask(&task, &p, &n, &storage, x, nullptr, nullptr, 1), 0);
                for (int a = 0; a < 20; ++a) {
                    std::fill_n(place[a], 4, a == 0 ? 2.5 : -7.0);
                    ASSERT_EQ(a != missing ? __stodSSEditTask(task, ids[a], place[a]) : 0, 0);
                }
                for (const int id : {20, 22, 75}) ASSERT_EQ(__stoiSSEditTask(task, id, &full), 0);
                const bool needed = (needs >> missing & 1) != 0;
                const bool refused = (needs & kRefused) != 0;
                EXPECT_EQ(_stodSSBasic(task, estimate_bit(bits[request]), m.word, nullptr), needed ? statuses[missing]
                                                                                            : refused ? -4029
                                                                                                      : 0)
                    << "request " << bits[request] << " without " << ids[missing] << " method " << m.word;
                for (int a = 0; a < 20 && (needed || refused); ++a) EXPECT_EQ(place[a][0], a == 0 ? 2.5 : -7.0);
                __stoSSDeleteTask(&task);
            }
        }
}

TEST(Basic, OtherStatusesInTheirOrder) {
    Sample<double> s(4, 2, false);
    s.fill(1);
    nax_ss_task* const task = s.open();
    const auto run = [&](uint64_t estimates, uint64_t method) {
        return _stodSSBasic(task, estimates, method, nullptr);
    };
    EXPECT_EQ(_stodSSBasic(nullptr, 1, 2, nullptr), SsStatusNullTask);
    for (const uint64_t method : {0, 3, 0x101, 0x103, 0x20, 0x22})
        EXPECT_EQ(run(1, method), SsStatusBadMethod) << method;
    const int64_t bad_count = 0, bad_storage = 0x40000;
    __stoiSSEditTask(task, 4, &bad_storage);
    EXPECT_EQ(run(1, 2), SsStatusBadStorage);
    __stoiSSEditTask(task, 2, &bad_count);
    EXPECT_EQ(run(1, 2), SsStatusBadObservationCount);
    nax_ss_task* bare = nullptr;
    ASSERT_EQ(__stodSSNewTask(&bare, &s.p, nullptr, nullptr, nullptr, nullptr, nullptr, 1), 0);
    double out[4], w[4] = {1, 1, 1, 1}, pair[2] = {4, 4};
    for (const int id : {7, 67, 19, 74}) __stodSSEditTask(bare, id, out);
    EXPECT_EQ(_stodSSBasic(bare, 1, 0x400, nullptr), SsStatusNoAccumulatedWeights);
    EXPECT_EQ(_stodSSBasic(bare, 1, 2, nullptr), SsStatusBadObservationCount);
    __stoiSSEditTask(bare, 2, &s.n);
    EXPECT_EQ(_stodSSBasic(bare, 1, 2, nullptr), SsStatusNoObservations);
    EXPECT_EQ(_stodSSBasic(bare, 1, 0x400, nullptr), SsStatusOk);
    __stodSSEditTask(bare, 6, w);
    EXPECT_EQ(_stodSSBasic(bare, 1, 0x400, nullptr), SsStatusNoAccumulatedWeights);
    __stodSSEditTask(bare, 23, pair);
    EXPECT_EQ(_stodSSBasic(bare, 1, 0x400, nullptr), SsStatusOk);
    __stodSSEditTask(bare, 3, s.x.data());
    EXPECT_EQ(_stodSSBasic(bare, 1, 2, nullptr), SsStatusNoStorage);
    __stoiSSEditTask(bare, 4, &s.storage);
    EXPECT_EQ(_stodSSBasic(bare, estimate_bit(12), 2, nullptr), SsStatusNoStorage);
    __stoSSDeleteTask(&bare);
}

TEST(Basic, EveryFailingAllocationGivesItsStatusAndLeavesResultsAlone) {
    for (const uint64_t method : {kFast, kOnePass, kUserMean}) {
        Sample<double> s(300, 30, true);
        s.fill(4);
        s.open();
        s.results[0].assign(30, 0.25);
        const int failures = for_each_failing_allocation(
            [&] {
                s.pair[0] = s.pair[1] = 0;
                const int32_t status = _stodSSBasic(s.task, kAllBasic, method, nullptr);
                if (status != 0) {
                    EXPECT_EQ(s.results[1][3], -7);
                    EXPECT_EQ(s.pair[0], 0);
                }
                if (s.task->work_vector != nullptr) nax_serv_deallocate(s.task->work_vector);
                s.task->work_vector = nullptr;
                return status;
            },
            int32_t{-4000}, int32_t{0});
        EXPECT_EQ(failures, method == kUserMean ? 2 : 1);
    }
}

TYPED_TEST(BasicOf, ExtremesGoOnFromTheirSeeds) {
    using T = TypeParam;
    for (const int64_t p : {1, 3, 8, 19})
        for (const int64_t n : {1, 7, 100, 700})
            for (const bool columns : {false, true}) {
                Sample<T> s(n, p, columns);
                s.fill(static_cast<unsigned>(p * n));
                s.at(n / 2, 0) = std::numeric_limits<T>::quiet_NaN();
                if (p == 19) s.mask.assign(19, 1), s.mask[3] = 0;
                s.open();
                std::vector<T> low(static_cast<std::size_t>(p), T(-0.5)), high(static_cast<std::size_t>(p), T(0.5));
                Statistics<T>::edit(s.task, 16, low.data());
                Statistics<T>::edit(s.task, 17, high.data());
                ASSERT_EQ(Statistics<T>::minmax(s.task, estimate_bit(10), 1, nullptr), 0);
                EXPECT_EQ(high, std::vector<T>(high.size(), T(0.5)));
                ASSERT_EQ(Statistics<T>::minmax(s.task, estimate_bit(10) | estimate_bit(11), 2, nullptr), 0);
                for (int64_t j = 0; j < p; ++j) {
                    T l = T(-0.5), h = T(0.5);
                    const bool selected = s.mask.empty() || s.mask[static_cast<std::size_t>(j)] != 0;
                    for (int64_t i = 0; i < n && selected; ++i) {
                        if (s.at(i, j) < l) l = s.at(i, j);
                        if (s.at(i, j) > h) h = s.at(i, j);
                    }
                    EXPECT_EQ(low[static_cast<std::size_t>(j)], l) << j;
                    EXPECT_EQ(high[static_cast<std::size_t>(j)], h) << j;
                }
            }
    Sample<T> s(4, 1, false);
    s.open();
    EXPECT_EQ(Statistics<T>::minmax(s.task, estimate_bit(10), 0, nullptr), SsStatusNoMinimum);
    EXPECT_EQ(Statistics<T>::minmax(s.task, estimate_bit(11), 0, nullptr), SsStatusNoMaximum);
    EXPECT_EQ(Statistics<T>::minmax(s.task, 0, 4, nullptr), SsStatusBadMethod);
    s.storage = 3;
    EXPECT_EQ(Statistics<T>::minmax(s.task, estimate_bit(10), 0, nullptr), SsStatusBadStorage);
}

}  // namespace
}  // namespace nax::testing
