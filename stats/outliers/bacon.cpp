// Outlier detection by BACON: N. Billor, A. S. Hadi, P. F. Velleman, BACON: blocked adaptive computationally efficient
// outlier nominators, Comput. Statist. Data Anal. 34 (2000) 279-298.
//
// From a small clean subset, mean and covariance of the subset give every observation a distance, and those nearer than
// a corrected chi-square threshold make the next subset, until its size settles. Unlike the publication the threshold
// takes the tail alpha, not alpha/n, and a small relative change of size is enough to stop.
#include <algorithm>
#include <cmath>

#include "nax/statistics_robust.h"
#include "service/block.h"
#include "service/threaders.h"
#include "stats/missing/chi_square.h"
#include "stats/outliers/distances.h"
#include "stats/outliers/invertible.h"
#include "stats/private_task.h"

namespace nax::stats::outliers {
namespace {

constexpr int64_t kSubsetFactor = 5;  // the first subset has 5 p observations
constexpr int64_t kLeastFactor = 4;   // one of no more than 4 p at the end has failed
constexpr int64_t kThreadedElements = 10000;
constexpr int64_t kDistanceBytes = 5000000;
constexpr int64_t kBlock = 2048;
// Small samples may go round in circles of subsets.
constexpr int kMostIterations = 100;

struct Parameters {
    bool from_mahalanobis;
    double alpha, beta;
};

template <class T>
Parameters parameters(const Task& task) {
    Parameters result{false, 0.05, 0.005};
    const T* const given = reals<T>(task.outlier_params);
    if (given == nullptr || integer_or(task, task.outlier_param_count, 0) != 3) return result;
    result.from_mahalanobis = given[0] >= 1 && given[0] < 2;
    if (given[1] >= 0 && given[1] <= 1) result.alpha = static_cast<double>(given[1]);
    if (given[2] > 0) result.beta = static_cast<double>(given[2]);
    return result;
}

// The m smallest distances so far. The largest of them gives way to a smaller one; of equals the first does.
template <class T>
struct Smallest {
    int64_t m, held;
    T* distances;
    int64_t* indices;
    int64_t largest;

    void add(int64_t index, T distance) {
        if (held < m) {
            distances[held] = distance;
            indices[held] = index;
            if (held == 0 || distance > distances[largest]) largest = held;
            ++held;
        } else if (distance < distances[largest]) {
            distances[largest] = distance;
            indices[largest] = index;
            largest = 0;
            for (int64_t k = 1; k < m; ++k)
                if (distances[k] > distances[largest]) largest = k;
        }
    }
};

template <class T>
struct Bacon {
    int64_t p, n, storage;
    const T* x;
    const T* weights;
    T* result;
    const Threaders* threaders;
    int threads;
    int64_t block;  // observations of a block of distances
    T threshold;
    T *mean, *covariance, *work;
    T* distances;     // block reals and the lanes' work, for each thread
    int64_t* counts;  // of observations kept, for each thread
    Smallest<T> smallest;

    bool columns() const { return !is_rows(storage, p); }
    basic::Slice<T> slice(int64_t first, int64_t last) const { return {x, weights, n, first, last, p}; }
    int64_t distance_stride() const { return block + static_cast<int64_t>(distance_work<T>(p)); }
    T weight(int64_t i) const { return weights != nullptr ? weights[i] : T(1); }
    int32_t fit(const T* of_weights) {
        T pair[2];
        PrivateTask<T> task(p, n, storage, x, of_weights);
        const int32_t status = task.covariance(NAX_SS_METHOD_ONE_PASS, mean, covariance, pair, threaders);
        return status != 0 ? status : usable_inverse(p, covariance, work);
    }
    int32_t first_subset(bool from_mahalanobis);
    int32_t iterate(const Parameters& given);
};

template <class T>
int32_t Bacon<T>::first_subset(bool from_mahalanobis) {
    PrivateTask<T> task(p, n, storage, x, weights);
    if (const int32_t status = from_mahalanobis ? fit(weights) : task.medians(mean, threaders)) return status;
    for (int64_t first = 0; first < n; first += block) {
        const int64_t last = std::min(n, first + block);
        if (from_mahalanobis)
            mahalanobis(slice(first, last), columns(), mean, covariance, distances + block, distances);
        else
            euclidean(slice(first, last), columns(), mean, distances);
        for (int64_t i = first; i < last; ++i) smallest.add(i, distances[i - first]);
    }
    std::fill(result, result + n, T(0));
    for (int64_t k = 0; k < smallest.held; ++k) result[smallest.indices[k]] = weight(smallest.indices[k]);
    return SsStatusOk;
}

// Keeps the weights of the observations of a part that are nearer than the threshold.
template <class T>
void mark_part(const Bacon<T>& bacon, int part) {
    const int64_t share = bacon.n / bacon.threads;
    const int64_t end = part + 1 == bacon.threads ? bacon.n : (part + 1) * share;
    T* const distances = bacon.distances + part * bacon.distance_stride();
    int64_t kept = 0;
    for (int64_t first = part * share; first < end; first += bacon.block) {
        const int64_t last = std::min(end, first + bacon.block);
        mahalanobis(bacon.slice(first, last), bacon.columns(), bacon.mean, bacon.covariance, distances + bacon.block,
                    distances);
        for (int64_t i = first; i < last; ++i) {
            const bool keep = bacon.threshold > distances[i - first];
            bacon.result[i] = keep ? bacon.weight(i) : T(0);
            kept += keep;
        }
    }
    bacon.counts[part] = kept;
}
template <class T>
void mark(int thread, int threads, void* context) {
    const Bacon<T>& bacon = *static_cast<const Bacon<T>*>(context);
    for (int part = thread; part < bacon.threads; part += threads) mark_part(bacon, part);
}

template <class T>
int32_t Bacon<T>::iterate(const Parameters& given) {
    const double size = static_cast<double>(n), dimension = static_cast<double>(p);
    const double chi = std::sqrt(chi2_quantile(dimension, 1 - given.alpha));
    const double h = (size + dimension + 1) * 0.5;
    const double c_np = 1 + (dimension + 1) / (size - dimension) + 2 / (size - 1 - 3 * dimension);
    int64_t kept = smallest.held;
    for (int iteration = 0; iteration < kMostIterations; ++iteration) {
        if (const int32_t status = fit(result)) return status;
        const double r = static_cast<double>(kept);
        const double c_hr = std::max(0.0, (h - r) / (h + r));
        threshold = static_cast<T>((c_hr + c_np) * chi);
        if (threads > 1)
            threaders->parallel_region(threads, this, mark<T>);
        else
            mark<T>(0, 1, this);
        kept = 0;
        for (int part = 0; part < threads; ++part) kept += counts[part];
        // An empty subset has no mean and would come back for ever.
        if (kept >= n || kept == 0 || std::fabs(static_cast<double>(kept) - r) / r < given.beta) break;
    }
    return kept > kLeastFactor * p ? SsStatusOk : SsStatusNoConvergence;
}

template <class T>
int32_t run(const Task& task, Bacon<T>& bacon, const Threaders* threaders) {
    const int64_t p = bacon.p;
    bacon.threads = bacon.n * p < kThreadedElements ? 1 : thread_limit(threaders);
    const int64_t budget = kDistanceBytes / bacon.threads / static_cast<int64_t>(sizeof(T)) / p / 2;
    bacon.block = std::min(budget > 0 ? std::min(budget, kBlock) : kBlock, bacon.n);
    const int64_t m = kSubsetFactor * p;
    service::Block<T> block(static_cast<std::size_t>(m + p + p * p + bacon.threads * bacon.distance_stride()) +
                            invertible_work(p));
    service::Block<int64_t> whole(static_cast<std::size_t>(m + bacon.threads));
    if (!block || !whole) return SsStatusMemory;
    bacon.distances = block.get();
    bacon.mean = bacon.distances + bacon.threads * bacon.distance_stride();
    bacon.covariance = bacon.mean + p;
    bacon.work = bacon.covariance + p * p;
    bacon.smallest = {m, 0, bacon.work + invertible_work(p), whole.get(), 0};
    bacon.counts = whole.get() + m;
    const Parameters given = parameters<T>(task);
    if (const int32_t status = bacon.first_subset(given.from_mahalanobis)) return status;
    return bacon.iterate(given);
}

template <class T>
int32_t compute(Task* record, uint64_t method, const Threaders* threaders) {
    if (record == nullptr) return SsStatusNullTask;
    const Task& task = *record;
    Bacon<T> bacon{};
    bacon.p = integer_or(task, task.dimension, 0);
    bacon.n = integer_or(task, task.observation_count, 0);
    if (bacon.p < 1) return SsStatusBadDimension;
    if (bacon.n < kSubsetFactor * bacon.p) return SsStatusBadObservationCount;
    bacon.storage = integer_or(task, task.observation_storage, 0);
    if (!is_exact_storage(bacon.storage)) return SsStatusBadStorage;
    bacon.result = reals<T>(task.outlier_weights);
    if (bacon.result == nullptr) return SsStatusNoOutlierWeights;
    if (method != NAX_SS_METHOD_BACON) return SsStatusBadMethod;
    bacon.x = reals<const T>(task.observations);
    if (bacon.x == nullptr) return SsStatusNoObservations;
    bacon.weights = reals<const T>(task.weights);
    bacon.threaders = threaders;
    return run(task, bacon, threaders);
}

}  // namespace
}  // namespace nax::stats::outliers

extern "C" int32_t _stodSSOutliersDetection(nax_ss_task* task, uint64_t, uint64_t method,
                                            const nax_threaders* threaders) {
    return nax::stats::outliers::compute<double>(task, method, threaders);
}
extern "C" int32_t _stosSSOutliersDetection(nax_ss_task* task, uint64_t, uint64_t method,
                                            const nax_threaders* threaders) {
    return nax::stats::outliers::compute<float>(task, method, threaders);
}
