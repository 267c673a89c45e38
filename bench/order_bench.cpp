// Order statistics beside std::nth_element and std::sort, which a user would run on a copy, and stream quantiles beside
// the P-square estimator of Boost.Accumulators, which has no bound. Nanoseconds per observation. Takes the options of
// bench/measure.h.
#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "nax/statistics.h"
#include "nax/statistics_order.h"
#ifdef NAX_HAVE_BOOST
#include <boost/accumulators/accumulators.hpp>
#include <boost/accumulators/statistics/p_square_quantile.hpp>
#include <boost/accumulators/statistics/stats.hpp>
#endif

namespace nax::bench {
namespace {

struct Sample {
    explicit Sample(int32_t count)
        : n(count), x(static_cast<std::size_t>(count)), copy(x.size()), result(x.size() + 8) {
        std::mt19937_64 g(7);
        std::normal_distribution<double> normal;
        for (double& value : x) value = normal(g);
        __stodSSNewTask(&task, &p, &n, &storage, x.data(), nullptr, nullptr, 0);
    }
    Sample(const Sample&) = delete;
    Sample& operator=(const Sample&) = delete;
    ~Sample() { __stoSSDeleteTask(&task); }
    double rank(double q) {
        const auto k = static_cast<std::ptrdiff_t>(q * (n - 1));
        std::nth_element(copy.begin(), copy.begin() + k, copy.end());
        return copy[static_cast<std::size_t>(k)];
    }
    int32_t p = 1, n, storage = NAX_SS_STORAGE_ROWS;
    std::vector<double> x, copy, result;
    nax_ss_task* task = nullptr;
};

Options options_of(int64_t n) { return {n > 2000000 ? 3 : n > 200000 ? 9 : 25}; }

void time_quantiles(Report& report, int32_t n, int32_t m) {
    Sample s(n);
    std::vector<double> orders;
    for (int k = 1; k <= m; ++k) orders.push_back(static_cast<double>(k) / (m + 1));
    __stodSSEditQuantiles(s.task, &m, orders.data(), s.result.data(), nullptr, nullptr);
    report.time(std::to_string(m) + " quantiles", "64f", n,
                {{"ours", [&] { _stodSSQuantiles(s.task, NAX_SS_ESTIMATE_QUANTILES, NAX_SS_METHOD_FAST, nullptr); }},
                 {"copy, nth_element",
                  [&] {
                      s.copy = s.x;
                      for (const double q : orders) s.result[0] += s.rank(q);
                  }}},
                options_of(n));
}

void time_rest(Report& report, int32_t n) {
    Sample s(n);
    __stodSSEditTask(s.task, NAX_SS_SORTED, s.result.data());
    __stoiSSEditTask(s.task, NAX_SS_SORTED_STORAGE, &s.storage);
    report.time("sorted observations", "64f", n,
                {{"ours", [&] { _stodSSSort(s.task, 0, NAX_SS_METHOD_RADIX, nullptr); }},
                 {"copy, std::sort",
                  [&] {
                      s.copy = s.x;
                      std::sort(s.copy.begin(), s.copy.end());
                  }}},
                options_of(n));
    __stodSSEditTask(s.task, NAX_SS_MEDIAN_ABSOLUTE_DEVIATION, s.result.data());
    report.time(
        "median absolute deviation", "64f", n,
        {{"ours", [&] { _stodSSMAD(s.task, NAX_SS_ESTIMATE_MEDIAN_ABSOLUTE_DEVIATION, NAX_SS_METHOD_FAST, nullptr); }},
         {"copy, nth_element",
          [&] {
              s.copy = s.x;
              const double m = s.rank(0.5);
              for (double& value : s.copy) value = std::fabs(value - m);
              s.result[0] = s.rank(0.5);
          }}},
        options_of(n));
    std::vector<double> weights(s.x.size()), order{0.5};
    for (std::size_t i = 0; i < weights.size(); ++i) weights[i] = static_cast<double>(i % 7 + 1);
    __stodSSEditTask(s.task, NAX_SS_WEIGHTS, weights.data());
    __stodSSEditTask(s.task, NAX_SS_QUANTILE_ORDERS, order.data());
    __stodSSEditTask(s.task, NAX_SS_QUANTILES, s.result.data());
    std::vector<std::pair<double, double>> pairs(s.x.size());
    report.time("weighted median", "64f", n,
                {{"ours", [&] { _stodSSWMedian(s.task, 0, 0, nullptr); }},
                 {"std::sort of pairs",
                  [&] {
                      double total = 0, sum = 0;
                      for (std::size_t i = 0; i < pairs.size(); ++i) {
                          pairs[i] = {s.x[i], weights[i]};
                          total += weights[i];
                      }
                      std::sort(pairs.begin(), pairs.end());
                      std::size_t k = 0;
                      while ((sum += pairs[k].second) < 0.5 * total) ++k;
                      s.result[0] = pairs[k].first;
                  }}},
                options_of(n));
}

void time_stream(Report& report, int32_t block) {
    const std::string work = "stream quantiles, epsilon 0.001";
    if (!report.wanted(work)) return;
    constexpr int32_t kTotal = 2000000;
    Sample s(kTotal);
    const int32_t one = 1, none = 0;
    double epsilon = 0.001, order = 0.5;
    __stodSSEditStreamQuantiles(s.task, &one, &order, s.result.data(), &one, &epsilon);
    // Blocks arrive in one buffer, as they would from a file.
    std::vector<double> buffer(static_cast<std::size_t>(block));
    __stodSSEditTask(s.task, NAX_SS_OBSERVATIONS, buffer.data());
    const auto feed = [&] {
        __stoSQuantilesFreeBuffers(s.task);
        __stoiSSEditTask(s.task, NAX_SS_OBSERVATION_COUNT, &block);
        for (int32_t done = 0; done < kTotal; done += block) {
            for (int32_t i = 0; i < block; ++i)
                buffer[static_cast<std::size_t>(i)] = s.x[static_cast<std::size_t>(done + i)];
            _stodSSStreamQuantiles(s.task, 0, NAX_SS_METHOD_STREAM_FAST, nullptr);
        }
        __stoiSSEditTask(s.task, NAX_SS_OBSERVATION_COUNT, &none);
        _stodSSStreamQuantiles(s.task, 0, NAX_SS_METHOD_STREAM, nullptr);
    };
    std::vector<Contender> contenders{{"ours", feed}};
#ifdef NAX_HAVE_BOOST
    contenders.push_back({"boost P-square, one quantile", [&] {
                              using namespace boost::accumulators;
                              accumulator_set<double, stats<tag::p_square_quantile>> estimator(quantile_probability =
                                                                                                   0.5);
                              for (const double value : s.x) estimator(value);
                              s.result[0] = p_square_quantile(estimator);
                          }});
#endif
    report.time(work, "block " + std::to_string(block), kTotal, std::move(contenders), {5});
}

}  // namespace
}  // namespace nax::bench

int main(int argc, char** argv) {
    using namespace nax::bench;
    pin_to_one_core();
    Report report("Order statistics", argc, argv);
    for (const int32_t n : {10, 100, 1000, 10000, 100000, 1000000, 10000000})
        for (const int32_t m : {1, 3, 99}) time_quantiles(report, n, m);
    for (const int32_t n : {10, 100, 1000, 100000, 1000000}) time_rest(report, n);
    for (const int32_t block : {1, 10, 1000, 100000}) time_stream(report, block);
    return report.finish();
}
