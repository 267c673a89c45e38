// Summary statistics beside plain loops, Eigen, Boost.Accumulators, GSL and OpenBLAS alone: nanoseconds per element of
// the matrix, or per product of a covariance's triangle. One thread unless said. Takes the options of bench/measure.h.
#ifdef NAX_HAVE_GSL
#include <gsl/gsl_statistics.h>
#endif
#ifdef NAX_HAVE_BOOST
#include <boost/accumulators/accumulators.hpp>
#include <boost/accumulators/statistics.hpp>
#endif
#ifdef NAX_HAVE_EIGEN
#include <Eigen/Dense>
#endif
#include <cmath>
#include <cstring>
#include <memory>
#include <random>

#include "bench/measure.h"
#include "nax/service.h"
#include "nax/statistics_basic.h"
#include "nax/statistics_robust.h"
#include "stats/linear_algebra.h"

extern "C" void openblas_set_num_threads(int);

namespace nax::bench {
namespace {

constexpr uint64_t kMoments = 0x3FF;
const Options slow{7, 2e-3};

// A matrix of n observations with a task and all arrays of the basic entry.
template <class T>
struct Data {
    Data(int64_t n_, int64_t p_, int64_t storage_)
        : n(n_), p(p_), storage(storage_), x(static_cast<std::size_t>(n_ * p_)) {
        std::mt19937_64 engine(1);
        for (T& v : x) v = static_cast<T>(static_cast<double>(engine() >> 11) * 0x1p-53 - 0.3);
        const auto size = static_cast<std::size_t>(p);
        for (auto& r : results) r.resize(size);
        for (auto& m : matrices) m.resize(size * size);
        const auto edit = [&](int id, T* value) {
            if constexpr (sizeof(T) == 8)
                __stodSSEditTask(task, id, value);
            else
                __stosSSEditTask(task, id, value);
        };
        if constexpr (sizeof(T) == 8)
            __stodSSNewTask(&task, &p, &n, &storage, x.data(), nullptr, nullptr, 1);
        else
            __stosSSNewTask(&task, &p, &n, &storage, x.data(), nullptr, nullptr, 1);
        const int ids[] = {7, 8, 9, 10, 11, 12, 13, 14, 15, 18, 16, 17};
        for (std::size_t r = 0; r < 12; ++r) edit(ids[r], results[r].data());
        edit(19, matrices[0].data());
        edit(21, matrices[1].data());
        for (const int id : {20, 22}) __stoiSSEditTask(task, id, &full);
    }
    ~Data() { __stoSSDeleteTask(&task); }
    void run(uint64_t estimates, uint64_t method, const nax_threaders* threads = nullptr) const {
        if constexpr (sizeof(T) == 8)
            _stodSSBasic(task, estimates, method, threads);
        else
            _stosSSBasic(task, estimates, method, threads);
    }
    int64_t elements() const { return n * p; }

    int64_t n, p, storage, full = 0;
    std::vector<T> x, results[12], matrices[2];
    nax_ss_task* task = nullptr;
};

// Reads the matrix once.
template <class T>
Contender read_floor(const std::shared_ptr<Data<T>>& data) {
    return {"read", [data] {
                T sum[64] = {};
                const T* x = data->x.data();
                const int64_t count = data->elements();
                for (int64_t i = 0; i + 64 <= count; i += 64)
                    for (int64_t l = 0; l < 64; ++l) sum[l] += x[i + l];
                volatile T keep = sum[0] + sum[33];
                (void)keep;
            }};
}

// What a compiler makes of two plain passes, the mean and then the powers of the deviations.
template <class T>
[[gnu::noinline]] void plain_moments(const Data<T>& data, T* out) {
    const bool rows = data.storage == NAX_SS_STORAGE_ROWS;
    for (int64_t j = 0; j < data.p; ++j) {
        const T* const x = data.x.data() + (rows ? j * data.n : j);
        const int64_t step = rows ? 1 : data.p;
        T mean = 0, c2 = 0, c3 = 0, c4 = 0;
        for (int64_t i = 0; i < data.n; ++i) mean += x[i * step];
        mean /= static_cast<T>(data.n);
        for (int64_t i = 0; i < data.n; ++i) {
            const T d = x[i * step] - mean, d2 = d * d;
            c2 += d2, c3 += d2 * d, c4 += d2 * d2;
        }
        out[j] = c2 + c3 + c4;
    }
}

#ifdef NAX_HAVE_EIGEN
template <class T>
void eigen_moments(const Data<T>& data, T* out) {
    using Array = Eigen::Array<T, Eigen::Dynamic, 1>;
    for (int64_t j = 0; j < data.p; ++j) {
        Eigen::Map<const Array> x(data.x.data() + j * data.n, data.n);
        const T mean = x.mean();
        const auto d2 = (x - mean).square();
        out[j] = d2.sum() + (d2 * (x - mean)).sum() + d2.square().sum();
    }
}
#endif

template <class T>
void time_moments(Report& report, int64_t n, int64_t p, int64_t storage, const char* type) {
    const auto data = std::make_shared<Data<T>>(n, p, storage);
    const bool rows = storage == NAX_SS_STORAGE_ROWS;
    std::vector<Contender> contenders{{"ours", [data] { data->run(kMoments, NAX_SS_METHOD_FAST); }},
                                      {"one pass", [data] { data->run(kMoments, NAX_SS_METHOD_ONE_PASS); }},
                                      {"user mean", [data] { data->run(kMoments, NAX_SS_METHOD_USER_MEAN); }},
                                      read_floor(data),
                                      {"plain -O3", [data] { plain_moments(*data, data->results[0].data()); }}};
#ifdef NAX_HAVE_EIGEN
    if (rows) contenders.push_back({"Eigen", [data] { eigen_moments(*data, data->results[0].data()); }});
#endif
#ifdef NAX_HAVE_BOOST
    if (rows && sizeof(T) == 8)
        contenders.push_back(
            {"Boost", [data] {
                 using namespace boost::accumulators;
                 for (int64_t j = 0; j < data->p; ++j) {
                     accumulator_set<T,
                                     boost::accumulators::stats<tag::mean, tag::variance, tag::skewness, tag::kurtosis>>
                         a;
                     for (int64_t i = 0; i < data->n; ++i) a(data->x[static_cast<std::size_t>(j * data->n + i)]);
                     data->results[0][static_cast<std::size_t>(j)] = kurtosis(a) + skewness(a) + variance(a);
                 }
             }});
#endif
#ifdef NAX_HAVE_GSL
    if constexpr (sizeof(T) == 8)
        if (n * p < 1000000)
            contenders.push_back({"GSL", [data, rows] {
                                      const auto n = static_cast<std::size_t>(data->n);
                                      const auto stride = rows ? 1 : static_cast<std::size_t>(data->p);
                                      for (std::size_t j = 0; j < static_cast<std::size_t>(data->p); ++j) {
                                          const double* const x = data->x.data() + (rows ? j * n : j);
                                          const double mean = gsl_stats_mean(x, stride, n),
                                                       sd = gsl_stats_sd_m(x, stride, n, mean);
                                          data->results[0][j] = gsl_stats_skew_m_sd(x, stride, n, mean, sd) +
                                                                gsl_stats_kurtosis_m_sd(x, stride, n, mean, sd);
                                      }
                                  }});
#endif
    report.time(std::string("moments to order 4, ") + type + ", p=" + std::to_string(p), rows ? "rows" : "columns",
                n * p, std::move(contenders), n * p >= 100000 ? slow : Options{});
}

template <class T>
void time_variance(Report& report, int64_t n, int64_t p, int64_t storage) {
    const auto data = std::make_shared<Data<T>>(n, p, storage);
    report.time("mean and variance, p=" + std::to_string(p), storage == NAX_SS_STORAGE_ROWS ? "rows" : "columns", n * p,
                {{"ours", [data] { data->run(0x11, NAX_SS_METHOD_FAST); }},
                 {"one pass", [data] { data->run(0x11, NAX_SS_METHOD_ONE_PASS); }},
                 read_floor(data)},
                n * p >= 100000 ? slow : Options{});
}

template <class T>
void time_extremes(Report& report, int64_t n, int64_t p, int64_t storage) {
    const auto data = std::make_shared<Data<T>>(n, p, storage);
    report.time("least and greatest, p=" + std::to_string(p), storage == NAX_SS_STORAGE_ROWS ? "rows" : "columns",
                n * p, {{"ours", [data] { _stodSSMinmax(data->task, 0xC00, 1, nullptr); }}, read_floor(data)},
                n * p >= 100000 ? slow : Options{});
}

// Covariances, per product of the triangle: mean removed by the library, OpenBLAS multiplying alone.
void time_covariance(Report& report, int64_t n, int64_t p, int64_t storage) {
    const auto data = std::make_shared<Data<double>>(n, p, storage);
    const bool rows = storage == NAX_SS_STORAGE_ROWS;
    const auto scratch = std::make_shared<std::vector<double>>(static_cast<std::size_t>(p * p));
    std::vector<Contender> contenders{{"ours", [data] { data->run(0x1000, NAX_SS_METHOD_FAST); }},
                                      {"one pass", [data] { data->run(0x1000, NAX_SS_METHOD_ONE_PASS); }},
                                      {"dsyrk alone", [data, scratch, rows] {
                                           const int count = static_cast<int>(data->n),
                                                     size = static_cast<int>(data->p);
                                           stats::syrk('L', rows ? 'T' : 'N', size, count, 1.0, data->x.data(),
                                                       rows ? count : size, 0.0, scratch->data(), size);
                                       }}};
#ifdef NAX_HAVE_EIGEN
    contenders.push_back({"Eigen", [data, scratch, rows] {
                              using Matrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic>;
                              Eigen::Map<Matrix> c(scratch->data(), data->p, data->p);
                              if (rows) {
                                  Eigen::Map<const Matrix> x(data->x.data(), data->n, data->p);
                                  const Matrix d = x.rowwise() - x.colwise().mean();
                                  c.noalias() = d.transpose() * d;
                              } else {
                                  Eigen::Map<const Matrix> x(data->x.data(), data->p, data->n);
                                  const Matrix d = x.colwise() - x.rowwise().mean();
                                  c.noalias() = d * d.transpose();
                              }
                          }});
#endif
    report.time("covariance, p=" + std::to_string(p), rows ? "rows" : "columns", n * p * (p + 1) / 2,
                std::move(contenders), n * p >= 100000 ? Options{5, 2e-3} : Options{});
}

// The same work by two threads of the pool: the time of one beside that of two.
void time_threads(Report& report, int64_t n, int64_t p, int64_t storage) {
    const auto data = std::make_shared<Data<double>>(n, p, storage);
    static nax_threaders pool;
    nax_serv_fill_threaders(&pool);
    for (const auto& [name, estimates, method] :
         {std::tuple{"moments, fast", kMoments, uint64_t{1}}, std::tuple{"moments, one pass", kMoments, uint64_t{2}},
          std::tuple{"covariance, fast", uint64_t{0x1000}, uint64_t{1}},
          std::tuple{"covariance, one pass", uint64_t{0x1000}, uint64_t{2}}})
        report.time(std::string("threads: ") + name + ", p=" + std::to_string(p),
                    storage == NAX_SS_STORAGE_ROWS ? "rows" : "columns", n * p,
                    {{"pool", [data, estimates = estimates, method = method] { data->run(estimates, method, &pool); }},
                     {"one thread", [data, estimates = estimates, method = method] { data->run(estimates, method); }}},
                    slow);
}

// Outliers, robust covariance and imputation of a sample of which one in twenty observations lies far off.
void time_robust(Report& report, int64_t n, int64_t p, int64_t storage) {
    const auto data = std::make_shared<Data<double>>(n, p, storage);
    const bool rows = storage == NAX_SS_STORAGE_ROWS;
    std::mt19937_64 engine(2);
    std::normal_distribution<double> normal;
    for (int64_t i = 0; i < n; ++i)
        for (int64_t j = 0; j < p; ++j)
            data->x[static_cast<std::size_t>(rows ? j * n + i : i * p + j)] = normal(engine) + (i % 20 == 0 ? 20 : 0);
    struct Extra {
        int64_t three = 3, four = 4, five = 5, full = 0, count = 0;
        double outliers[3] = {2, 0.05, 0.005}, start[4] = {0.5, 0.001, 0.001, 0}, missing[5] = {1, 1, 1e300, 1, 0};
        std::vector<double> weights, mean, covariance, estimates;
    };
    const auto extra = std::make_shared<Extra>();
    const auto size = static_cast<std::size_t>(p);
    extra->weights.resize(static_cast<std::size_t>(n));
    extra->mean.resize(size);
    extra->covariance.resize(size * size);
    nax_ss_task* const task = data->task;
    __stodSSEditOutDetect(task, &extra->three, extra->outliers, extra->weights.data());
    __stodSSEditRCov(task, &extra->full, nullptr, nullptr, extra->covariance.data(), extra->mean.data());
    const std::string shape = ", p=" + std::to_string(p), layout = rows ? "rows" : "columns";
    const Options once{3, 1e-3};
    report.time("outliers by BACON" + shape, layout, n * p,
                {{"ours", [data, extra] { _stodSSOutliersDetection(data->task, 0, NAX_SS_METHOD_BACON, nullptr); }}},
                once);
    report.time("S-estimate, translated biweight" + shape, layout, n * p,
                {{"ours", [data, extra] { _stodSSRobustCovariance(data->task, 0, NAX_SS_METHOD_TBS, nullptr); }}},
                once);
    __stodSSEditRCov(task, nullptr, &extra->four, extra->start, nullptr, nullptr);
    report.time("OGK" + shape, layout, n * p,
                {{"ours", [data, extra] { _stodSSRobustCovariance(data->task, 0, NAX_SS_METHOD_TBS, nullptr); }}},
                once);
    // One entry in ten missing; an EM step and a step of augmentation.
    for (std::size_t e = 0; e < data->x.size(); e += 10) data->x[e] = -std::nan(""), extra->missing[4] += 1;
    extra->count = p * (p + 3) / 2;
    extra->estimates.resize(static_cast<std::size_t>(extra->count));
    __stodSSEditMissingVals(task, &extra->five, extra->missing, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                            &extra->count, extra->estimates.data());
    report.time("EM and augmentation, a step" + shape, layout, n * p,
                {{"ours", [data, extra] { _stodSSMissingValues(data->task, 0, NAX_SS_METHOD_IMPUTATION, nullptr); }}},
                once);
}

}  // namespace
}  // namespace nax::bench

int main(int argc, char** argv) {
    using namespace nax::bench;
    Report report("Summary statistics", argc, argv);
    openblas_set_num_threads(1);
    if (report.wanted("threads") && argc > 2) {
        time_threads(report, 200000, 20, NAX_SS_STORAGE_ROWS);
        time_threads(report, 200000, 20, NAX_SS_STORAGE_COLUMNS);
    }
    pin_to_one_core();
    for (const int64_t storage : {NAX_SS_STORAGE_ROWS, NAX_SS_STORAGE_COLUMNS}) {
        for (const auto& [n, p] : {std::pair<int64_t, int64_t>{1, 1},
                                   {8, 1},
                                   {100, 3},
                                   {1000, 10},
                                   {1000000, 10},
                                   {100000, 100},
                                   {20000, 500}})
            time_moments<double>(report, n, p, storage, "double");
        time_moments<float>(report, 1000000, 10, storage, "float");
        for (const auto& [n, p] : {std::pair<int64_t, int64_t>{1000000, 10}, {100000, 100}}) {
            time_variance<double>(report, n, p, storage);
            time_extremes<double>(report, n, p, storage);
        }
        for (const auto& [n, p] : {std::pair<int64_t, int64_t>{1000, 10}, {1000000, 10}, {100000, 100}, {20000, 500}})
            time_covariance(report, n, p, storage);
        for (const auto& [n, p] : {std::pair<int64_t, int64_t>{10000, 10}, {10000, 50}, {100000, 10}})
            time_robust(report, n, p, storage);
    }
    return report.finish();
}
