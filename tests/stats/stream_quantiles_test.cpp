// Stream quantiles: the rank error against exact ranks, on orders of arrival chosen to hurt and in blocks of any size.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "nax/statistics.h"
#include "nax/statistics_order.h"
#include "nax/threaders.h"
#include "stats/stream_quantiles/summary.h"
#include "stats/task.h"
#include "tests/lib/failing_service.h"

namespace nax::testing {
namespace {

// A task fed block by block, in one storage.
template <class T>
class Stream {
public:
    Stream(int32_t variables, T accuracy, int32_t code, const std::vector<int32_t>& mask = {})
        : p(variables), storage(code), epsilon(accuracy) {
        const int32_t* const selected = mask.empty() ? nullptr : mask.data();
        for (int k = 0; k <= 200; ++k) orders.push_back(static_cast<T>(k) / 200);
        m = static_cast<int32_t>(orders.size());
        quantiles.resize(static_cast<std::size_t>(p) * orders.size(), T(-77));
        if constexpr (sizeof(T) == 8) {
            EXPECT_EQ(__stodSSNewTask(&task, &p, nullptr, nullptr, nullptr, nullptr, selected, 0), 0);
            EXPECT_EQ(__stodSSEditStreamQuantiles(task, &m, orders.data(), quantiles.data(), &one, &epsilon), 0);
        } else {
            EXPECT_EQ(__stosSSNewTask(&task, &p, nullptr, nullptr, nullptr, nullptr, selected, 0), 0);
            EXPECT_EQ(__stosSSEditStreamQuantiles(task, &m, orders.data(), quantiles.data(), &one, &epsilon), 0);
        }
        EXPECT_EQ(__stoiSSEditTask(task, NAX_SS_OBSERVATION_COUNT, &n), 0);
        EXPECT_EQ(__stoiSSEditTask(task, NAX_SS_OBSERVATION_STORAGE, &storage), 0);
    }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    ~Stream() { __stoSSDeleteTask(&task); }

    int32_t run(uint64_t method, const nax_threaders* threaders = nullptr) {
        if constexpr (sizeof(T) == 8)
            return _stodSSStreamQuantiles(task, 0, method, threaders);
        else
            return _stosSSStreamQuantiles(task, 0, method, threaders);
    }
    int32_t feed(T* x, int64_t count, uint64_t method = NAX_SS_METHOD_STREAM_FAST,
                 const nax_threaders* threaders = nullptr) {
        n = static_cast<int32_t>(count);
        if constexpr (sizeof(T) == 8)
            EXPECT_EQ(__stodSSEditTask(task, NAX_SS_OBSERVATIONS, x), 0);
        else
            EXPECT_EQ(__stosSSEditTask(task, NAX_SS_OBSERVATIONS, x), 0);
        return run(method, threaders);
    }

    int32_t p, n = 0, storage, one = 1, m = 0;
    T epsilon;
    std::vector<T> orders, quantiles;
    nax_ss_task* task = nullptr;
};

// The distance from the rank asked for to the ranks that the value has among the data; huge if it isn't there.
template <class T>
double rank_error(const std::vector<T>& sorted, T value, T q) {
    const auto [first, end] = std::equal_range(sorted.begin(), sorted.end(), value);
    if (first == end) return std::numeric_limits<double>::infinity();
    const auto count = static_cast<double>(sorted.size());
    const double rank = std::clamp(std::floor(static_cast<double>(q) * count), 1.0, count);
    const auto lowest = static_cast<double>(first - sorted.begin() + 1),
               highest = static_cast<double>(end - sorted.begin());
    return std::max({0.0, lowest - rank, rank - highest});
}

struct Arrival {
    const char* name;
    std::function<double(int64_t i, int64_t n, std::mt19937_64& g)> value;
};
const Arrival kArrivals[] = {
    {"random", [](int64_t, int64_t, auto& g) { return std::normal_distribution<double>()(g); }},
    {"ascending", [](int64_t i, int64_t, auto&) { return static_cast<double>(i); }},
    {"descending", [](int64_t i, int64_t, auto&) { return -static_cast<double>(i); }},
    {"zigzag outward", [](int64_t i, int64_t, auto&) { return static_cast<double>(i % 2 ? i : -i); }},
    {"zigzag inward", [](int64_t i, int64_t n, auto&) { return static_cast<double>(i % 2 ? n - i : i - n); }},
    {"one value", [](int64_t, int64_t, auto&) { return 4.0; }},
    {"five values", [](int64_t, int64_t, auto& g) { return static_cast<double>(g() % 5); }},
    {"sawtooth of 16", [](int64_t i, int64_t n, auto&) { return static_cast<double>((i % 16) * n + i / 16); }},
    {"drifting scale",
     [](int64_t i, int64_t, auto& g) {
         return std::ldexp(static_cast<double>(g() % 1000), static_cast<int>(i % 1500) - 700);
     }},
};

TEST(StreamQuantiles, RankErrorStaysBelowEpsilon) {
    for (const double epsilon : {0.1, 0.01, 0.003})
        for (const Arrival& arrival : kArrivals)
            for (const int64_t count : {1, 2, 3, 17, 160, 1000, 30000, 210000}) {
                SCOPED_TRACE(std::string(arrival.name) + ", n = " + std::to_string(count) +
                             ", epsilon = " + std::to_string(epsilon));
                std::mt19937_64 g(static_cast<uint64_t>(count));
                std::vector<double> x(static_cast<std::size_t>(count));
                for (int64_t i = 0; i < count; ++i) x[static_cast<std::size_t>(i)] = arrival.value(i, count, g);
                Stream<double> stream(1, epsilon, NAX_SS_STORAGE_ROWS);
                for (int64_t done = 0; done < count;) {
                    const int64_t block =
                        std::min<int64_t>(count - done, 1 + static_cast<int64_t>(g() % (g() % 4 ? 3000 : 3)));
                    ASSERT_EQ(stream.feed(&x[static_cast<std::size_t>(done)], block), 0);
                    done += block;
                }
                EXPECT_EQ(stream.quantiles[0], -77.0);  // only fed so far
                ASSERT_EQ(stream.feed(x.data(), 0, NAX_SS_METHOD_STREAM), 0);
                std::sort(x.begin(), x.end());
                double worst = 0;
                for (std::size_t r = 0; r < stream.orders.size(); ++r)
                    worst = std::max(worst, rank_error(x, stream.quantiles[r], stream.orders[r]));
                EXPECT_LE(worst, epsilon * static_cast<double>(count));
                EXPECT_LE(worst, count <= 160 ? 0.0 : worst);  // so few are kept as they are
            }
}

// Reading in between neither disturbs the summaries nor depends on how the data were cut.
TEST(StreamQuantiles, BlocksAndReadingsMakeNoDifference) {
    std::mt19937_64 g(2);
    std::vector<float> x(20000);
    for (float& value : x) value = static_cast<float>(g() % 100000);
    Stream<float> one_by_one(1, 0.01f, NAX_SS_STORAGE_ROWS), at_once(1, 0.01f, NAX_SS_STORAGE_COLUMNS);
    std::vector<float> so_far;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const bool read = i % 1997 == 0;
        ASSERT_EQ(one_by_one.feed(&x[i], 1, read ? NAX_SS_METHOD_STREAM : NAX_SS_METHOD_STREAM_FAST), 0);
        so_far.push_back(x[i]);
        if (!read) continue;
        std::vector<float> sorted = so_far;
        std::sort(sorted.begin(), sorted.end());
        for (std::size_t r = 0; r < one_by_one.orders.size(); ++r)
            ASSERT_LE(rank_error(sorted, one_by_one.quantiles[r], one_by_one.orders[r]),
                      0.01 * static_cast<double>(sorted.size()));
    }
    ASSERT_EQ(one_by_one.feed(x.data(), 0, NAX_SS_METHOD_STREAM), 0);
    ASSERT_EQ(at_once.feed(x.data(), 20000, NAX_SS_METHOD_STREAM), 0);
    EXPECT_EQ(one_by_one.quantiles, at_once.quantiles);
}

TEST(StreamQuantiles, VariablesMasksAndThreads) {
    nax_threaders pool;
    nax_serv_fill_threaders(&pool);
    std::mt19937_64 g(8);
    constexpr int32_t p = 3, n = 20000;
    std::vector<double> rows(static_cast<std::size_t>(p) * n), columns(rows.size());
    for (std::size_t j = 0; j < p; ++j)
        for (std::size_t i = 0; i < n; ++i)
            rows[j * n + i] = columns[i * p + j] = static_cast<double>(g() % 1000000) + 1e7 * static_cast<double>(j);
    const std::vector<int32_t> mask{1, 0, 5};
    Stream<double> by_rows(p, 0.01, NAX_SS_STORAGE_ROWS, mask), by_columns(p, 0.01, NAX_SS_STORAGE_COLUMNS, mask);
    ASSERT_EQ(by_rows.feed(rows.data(), n, NAX_SS_METHOD_STREAM, &pool), 0);
    ASSERT_EQ(by_columns.feed(columns.data(), n, NAX_SS_METHOD_STREAM), 0);
    EXPECT_EQ(by_rows.quantiles, by_columns.quantiles);
    const auto m = static_cast<std::size_t>(by_rows.m);
    for (std::size_t i = 0; i < 2; ++i) {
        const auto first = rows.begin() + static_cast<std::ptrdiff_t>(2 * i * n);
        std::vector<double> sorted(first, first + n);
        std::sort(sorted.begin(), sorted.end());
        for (std::size_t r = 0; r < m; ++r)
            EXPECT_LE(rank_error(sorted, by_rows.quantiles[i * m + r], by_rows.orders[r]), 0.01 * n);
    }
    EXPECT_EQ(by_rows.quantiles[2 * m], -77.0);
    const int32_t other[] = {1, 1, 1}, fewer[] = {0, 0, 1};
    EXPECT_EQ(__stoiSSEditTask(by_rows.task, NAX_SS_VARIABLE_MASK, other), 0);
    EXPECT_EQ(by_rows.run(NAX_SS_METHOD_STREAM), SsStatusBadVariableMask);
    EXPECT_EQ(__stoiSSEditTask(by_rows.task, NAX_SS_VARIABLE_MASK, fewer), 0);
    EXPECT_EQ(by_rows.run(NAX_SS_METHOD_STREAM), SsStatusOk);
}

TEST(StreamQuantiles, FirstFaultIsReportedAndNothingIsWritten) {
    double x[4] = {1, 2, 3, 4}, orders[2] = {0.5, 1.5}, result[2] = {-77, -77}, epsilon = 0;
    const int32_t p = 1, negative = -1, four = 4, both = 3, two = 2, one = 1, rows = NAX_SS_STORAGE_ROWS;
    nax_ss_task* task = nullptr;
    ASSERT_EQ(__stodSSNewTask(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr, 0), 0);
    uint64_t method = NAX_SS_METHOD_FAST;
    const auto run = [&] { return _stodSSStreamQuantiles(task, 0, method, nullptr); };
    const auto integer = [&](int32_t id, const void* value) { ASSERT_EQ(__stoiSSEditTask(task, id, value), 0); };
    const auto real = [&](int32_t id, double* value) { ASSERT_EQ(__stodSSEditTask(task, id, value), 0); };
    EXPECT_EQ(run(), SsStatusBadObservationCount);
    integer(NAX_SS_OBSERVATION_COUNT, &negative);
    EXPECT_EQ(run(), SsStatusBadObservationCount);
    integer(NAX_SS_OBSERVATION_COUNT, &four);
    EXPECT_EQ(run(), SsStatusNoObservations);
    real(NAX_SS_OBSERVATIONS, x);
    EXPECT_EQ(run(), SsStatusNoStorage);
    integer(NAX_SS_OBSERVATION_STORAGE, &both);
    EXPECT_EQ(run(), SsStatusBadStorage);
    integer(NAX_SS_OBSERVATION_STORAGE, &rows);
    EXPECT_EQ(run(), SsStatusNoStreamQuantiles);
    real(NAX_SS_STREAM_QUANTILES, result);
    EXPECT_EQ(run(), SsStatusNoStreamOrders);
    real(NAX_SS_STREAM_ORDERS, orders);
    EXPECT_EQ(run(), SsStatusBadStreamOrders);
    integer(NAX_SS_STREAM_ORDER_COUNT, &two);
    EXPECT_EQ(run(), SsStatusNoStreamParamCount);
    integer(NAX_SS_STREAM_PARAM_COUNT, &two);
    EXPECT_EQ(run(), SsStatusBadStreamParamCount);
    integer(NAX_SS_STREAM_PARAM_COUNT, &one);
    EXPECT_EQ(run(), SsStatusBadStreamOrders);
    orders[1] = 0.75;
    EXPECT_EQ(run(), SsStatusNoStreamParams);
    real(NAX_SS_STREAM_PARAMS, &epsilon);
    EXPECT_EQ(run(), SsStatusBadMethod);
    method = NAX_SS_METHOD_STREAM;
    for (const double bad : {0.0, -0.1, 1.5, std::numeric_limits<double>::quiet_NaN()}) {
        epsilon = bad;
        EXPECT_EQ(run(), SsStatusBadStreamAccuracy);
    }
    EXPECT_EQ(result[0], -77.0);
    EXPECT_EQ(task->stream_state, nullptr);
    epsilon = 1;
    EXPECT_EQ(run(), SsStatusOk);
    EXPECT_EQ(result[0], 2.0);
    EXPECT_EQ(result[1], 3.0);
    EXPECT_EQ(__stoSQuantilesFreeBuffers(task), 0);
    EXPECT_EQ(task->stream_state, nullptr);
    const int32_t none = 0;
    integer(NAX_SS_OBSERVATION_COUNT, &none);
    result[0] = -77;
    EXPECT_EQ(run(), SsStatusOk);  // nothing fed: nothing to read
    EXPECT_EQ(result[0], -77.0);
    EXPECT_EQ(task->cleanup_count, 1);
    __stoSSDeleteTask(&task);
}

// Any allocation may fail: the state holds what had been added, and going on from there ends as if nothing had
// happened.
TEST(StreamQuantiles, FailingMemoryLeavesAUsableState) {
    std::vector<double> x(60000);
    std::mt19937_64 g(4);
    for (double& value : x) value = static_cast<double>(g() % 1000003);
    std::vector<double> undisturbed;
    for (int refused = -1;; ++refused) {
        const long live_before = live_blocks();
        bool happened = refused < 0;
        {
            Stream<double> stream(1, 0.05, NAX_SS_STORAGE_ROWS);
            {
                FailAllocation fail(refused < 0 ? 1 << 30 : refused);
                int32_t worst = 0;
                for (std::size_t done = 0; done < x.size() && worst == 0; done += 6000)
                    worst = stream.feed(&x[done], 6000, NAX_SS_METHOD_STREAM);
                happened |= fail.happened();
                EXPECT_EQ(worst, fail.happened() ? SsStatusMemory : SsStatusOk);
            }
            const auto* const state = static_cast<const stats::StreamState*>(stream.task->stream_state);
            const int64_t added = state == nullptr ? 0 : state->variables[0].total;
            EXPECT_EQ(stream.feed(x.data() + added, static_cast<int64_t>(x.size()) - added, NAX_SS_METHOD_STREAM), 0);
            if (refused < 0) undisturbed = stream.quantiles;
            EXPECT_EQ(stream.quantiles, undisturbed) << "allocation " << refused;
        }
        EXPECT_EQ(live_blocks(), live_before);
        if (HasFailure()) return;
        if (happened) continue;
        EXPECT_GT(refused, 8);
        return;
    }
}

}  // namespace
}  // namespace nax::testing
