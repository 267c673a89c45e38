// Robust mean and covariance: the translated biweight S-estimator, from an OGK start.
//
// With distances d_i from the current mean t and covariance S, scaled so that the mean of rho(d_i) is what the normal
// distribution gives, and w = psi(d)/d:
//   t = sum w x / sum w,   S = p sum w (x - t)(x - t)' / sum d psi(d)
#include <algorithm>
#include <cmath>

#include "nax/statistics_robust.h"
#include "service/block.h"
#include "stats/matrix_storage.h"
#include "stats/missing/chi_square.h"
#include "stats/order/ranking.h"
#include "stats/outliers/distances.h"
#include "stats/outliers/invertible.h"
#include "stats/private_task.h"
#include "stats/robust/ogk.h"
#include "stats/robust/translated_biweight.h"

namespace nax::stats::robust {
namespace {

constexpr int64_t kThreadedElements = 10000;

struct Parameters {
    double breakdown, rejection, criterion;
    int64_t iterations;
};

template <class T>
Parameters parameters(const Task& task, int64_t p, int64_t n) {
    const double most = 0.5 * static_cast<double>(n - p) / static_cast<double>(n);
    Parameters result{most, 0.001, 0.001, 100};
    const T* const given = reals<T>(task.robust_params);
    if (given == nullptr || integer_or(task, task.robust_param_count, 0) != 4) return result;
    if (given[0] > 0) result.breakdown = std::min(static_cast<double>(given[0]), most);
    if (given[1] > 0 && given[1] < 1) result.rejection = static_cast<double>(given[1]);
    if (given[2] > 0) result.criterion = static_cast<double>(given[2]);
    if (given[3] >= 0) result.iterations = static_cast<int64_t>(std::min(given[3], T(0x1p30)));
    return result;
}

template <class T>
struct Estimate {
    int64_t p, n, storage;
    const T* x;
    int threads;
    const Threaders* threaders;
    Parameters given;
    T *mean, *covariance;                         // results, full
    T *inverse, *work;                            // p by p, and for inversion
    T *distances, *weights, *before, *selection;  // n each
    T* lanes;                                     // work of the distances, for each thread

    int32_t iterate();
    int32_t reweight(const TranslatedBiweight& biweight, double target, bool& settled);
};

template <class T>
void measure_part(const Estimate<T>& e, int part) {
    const int64_t share = e.n / e.threads, first = part * share;
    const int64_t last = part + 1 == e.threads ? e.n : first + share;
    outliers::mahalanobis(basic::Slice<T>{e.x, nullptr, e.n, first, last, e.p}, !is_rows(e.storage, e.p), e.mean,
                          e.inverse, e.lanes + part * static_cast<int64_t>(outliers::distance_work<T>(e.p)),
                          e.distances + first);
}
template <class T>
void measure(int thread, int threads, void* context) {
    const Estimate<T>& e = *static_cast<const Estimate<T>*>(context);
    for (int part = thread; part < e.threads; part += threads) measure_part(e, part);
}

// A scale at which the distance in the middle is that of the model: the start for the scale equation.
template <class T>
double first_scale(const Estimate<T>& e) {
    const int64_t h = (e.n + e.p + 1) / 2, rank = h - 1;
    T distance;
    select_reals(e.distances, e.n, e.selection, &rank, 1, &distance);
    return static_cast<double>(distance) /
           std::sqrt(chi2_quantile(static_cast<double>(e.p), static_cast<double>(h) / static_cast<double>(e.n + 1)));
}

// New mean and covariance with weights by the distances. `settled` where the weights have hardly changed.
template <class T>
int32_t Estimate<T>::reweight(const TranslatedBiweight& biweight, double target, bool& settled) {
    const double scale = scale_of(biweight, distances, n, target, first_scale(*this));
    if (!(scale > 0)) return SsStatusNoConvergence;
    double total = 0, sum_v = 0, change = 0, largest = 0;
    for (int64_t i = 0; i < n; ++i) {
        const double d = static_cast<double>(distances[i]) / scale, w = biweight.weight(d);
        weights[i] = static_cast<T>(w);
        total += w;
        sum_v += w * d * d;
        change = std::max(change, std::fabs(w - static_cast<double>(before[i])));
        largest = std::max(largest, w);
    }
    if (!(total > 0) || !(sum_v > 0)) return SsStatusNoConvergence;
    T pair[2];
    PrivateTask<T> task(p, n, storage, x, weights);
    if (const int32_t status = task.covariance(NAX_SS_METHOD_ONE_PASS, mean, covariance, pair, threaders))
        return status;
    const double freedom = static_cast<double>(pair[0]) - static_cast<double>(pair[1]) / static_cast<double>(pair[0]);
    const T factor = static_cast<T>(freedom * static_cast<double>(p) / sum_v);
    for (int64_t e = 0; e < p * p; ++e) covariance[e] *= factor;
    settled = change <= given.criterion * largest;
    std::swap(weights, before);
    return SsStatusOk;
}

template <class T>
int32_t Estimate<T>::iterate() {
    if (given.iterations == 0) return SsStatusOk;
    const TranslatedBiweight biweight = biweight_for(static_cast<double>(p), given.breakdown, given.rejection);
    const double target = expected_rho(biweight, static_cast<double>(p));
    bool settled = false;
    for (int64_t iteration = 0; iteration < given.iterations && !settled; ++iteration) {
        std::copy(covariance, covariance + p * p, inverse);
        if (const int32_t status = outliers::usable_inverse(p, inverse, work)) return status;
        if (threads > 1)
            threaders->parallel_region(threads, this, measure<T>);
        else
            measure<T>(0, 1, this);
        if (const int32_t status = reweight(biweight, target, settled)) return status;
    }
    return SsStatusOk;
}

int32_t check(const Task& task, uint64_t method) {
    const int64_t p = integer_or(task, task.dimension, 0), n = integer_or(task, task.observation_count, 0);
    if (p < 1) return SsStatusBadDimension;
    if (n <= 2 * p) return SsStatusBadObservationCount;
    if (task.observation_storage == nullptr) return SsStatusNoStorage;
    if (!is_exact_storage(integer(task, task.observation_storage))) return SsStatusBadStorage;
    if (task.robust_covariance == nullptr) return SsStatusNoRobustCovariance;
    if (task.robust_mean == nullptr) return SsStatusNoRobustMean;
    if (task.robust_covariance_storage == nullptr) return SsStatusNoStorage;
    if (!is_matrix_storage(integer(task, task.robust_covariance_storage))) return SsStatusBadStorage;
    if (method != NAX_SS_METHOD_TBS) return SsStatusBadMethod;
    return task.observations == nullptr ? SsStatusNoObservations : SsStatusOk;
}

template <class T>
int32_t compute(Task* record, uint64_t method, const Threaders* threaders) {
    if (record == nullptr) return SsStatusNullTask;
    const Task& task = *record;
    if (const int32_t status = check(task, method)) return status;
    Estimate<T> e{};
    e.p = integer(task, task.dimension);
    e.n = integer(task, task.observation_count);
    e.storage = integer(task, task.observation_storage);
    e.x = reals<const T>(task.observations);
    e.threads = e.n * e.p < kThreadedElements ? 1 : thread_limit(threaders);
    e.threaders = threaders;
    e.given = parameters<T>(task, e.p, e.n);
    const int64_t p = e.p, lanes = static_cast<int64_t>(outliers::distance_work<T>(p));
    service::Block<T> block(static_cast<std::size_t>(4 * e.n + 2 * p * p + p + e.threads * lanes) +
                            outliers::invertible_work(p));
    if (!block) return SsStatusMemory;
    e.distances = block.get();
    e.weights = e.distances + e.n;
    e.before = e.weights + e.n;
    e.selection = e.before + e.n;
    e.covariance = e.selection + e.n;
    e.inverse = e.covariance + p * p;
    e.mean = e.inverse + p * p;
    e.lanes = e.mean + p;
    e.work = e.lanes + e.threads * lanes;
    if (const int32_t status = ogk(p, e.n, e.storage, e.x, e.threads, threaders, e.before, e.mean, e.covariance))
        return status;
    if (const int32_t status = e.iterate()) return status;
    std::copy(e.mean, e.mean + p, reals<T>(task.robust_mean));
    store_matrix(decode_matrix_storage(integer(task, task.robust_covariance_storage)), p, e.covariance,
                 reals<T>(task.robust_covariance));
    return SsStatusOk;
}

}  // namespace
}  // namespace nax::stats::robust

extern "C" int32_t _stodSSRobustCovariance(nax_ss_task* task, uint64_t, uint64_t method,
                                           const nax_threaders* threaders) {
    return nax::stats::robust::compute<double>(task, method, threaders);
}
extern "C" int32_t _stosSSRobustCovariance(nax_ss_task* task, uint64_t, uint64_t method,
                                           const nax_threaders* threaders) {
    return nax::stats::robust::compute<float>(task, method, threaders);
}
