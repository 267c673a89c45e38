// Mahalanobis distance of the observations first ... last - 1:
//
//     d_i = sqrt((x_i - mean)' A (x_i - mean)),   A the inverse covariance, a full symmetric matrix
//
// The root is always taken. With work space for the whole range twice the products with A are one symmetric
// matrix product; else they are formed observation by observation.
#include <cmath>

#include "nax/statistics_order.h"
#include "stats/linear_algebra.h"
#include "stats/order/variables.h"

namespace nax::stats {
namespace {

inline double root(double x) { return __builtin_sqrt(x); }
inline float root(float x) { return __builtin_sqrtf(x); }

template <class T>
struct Range {
    const T* x;
    int64_t p, n, first, last;
    bool rows;
    const T *mean, *inverse;
    T* result;  // that of observation i at i

    T centred(int64_t i, int64_t j) const { return (rows ? x[j * n + i] : x[i * p + j]) - mean[j]; }
    void centre(int64_t i, T* d) const {
        for (int64_t j = 0; j < p; ++j) d[j] = centred(i, j);
    }
};

template <class T>
T dot(const T* a, const T* b, int64_t p) {
    T part[4] = {};
    int64_t j = 0;
    for (; j + 4 <= p; j += 4)
        for (int k = 0; k < 4; ++k) part[k] += a[j + k] * b[j + k];
    for (; j < p; ++j) part[0] += a[j] * b[j];
    return (part[0] + part[2]) + (part[1] + part[3]);
}

template <class T>
void blocked(const Range<T>& r, T* work) {
    const int64_t count = r.last - r.first;
    T *const centred = work, *const product = work + count * r.p;
    if (r.rows) {  // variable by variable, as the matrix stands
        for (int64_t j = 0; j < r.p; ++j)
            for (int64_t i = 0; i < count; ++i) centred[i * r.p + j] = r.centred(r.first + i, j);
    } else {
        for (int64_t i = 0; i < count; ++i) r.centre(r.first + i, centred + i * r.p);
    }
    const int p = static_cast<int>(r.p);
    symm('L', 'L', p, static_cast<int>(count), T(1), r.inverse, p, centred, p, T(0), product, p);
    for (int64_t i = 0; i < count; ++i) r.result[r.first + i] = root(dot(centred + i * r.p, product + i * r.p, r.p));
}

template <class T>
void single(const Range<T>& r, T* d) {
    for (int64_t i = r.first; i < r.last; ++i) {
        r.centre(i, d);
        T form = 0;
        for (int64_t j = 0; j < r.p; ++j) form += d[j] * dot(r.inverse + j * r.p, d, r.p);
        r.result[i] = root(form);
    }
}

template <class T>
int32_t distances(const Task& task, uint64_t, uint64_t, const Threaders*) {
    if (task.dimension == nullptr) return SsStatusBadDimension;
    if (task.observation_count == nullptr || task.distance_first == nullptr || task.distance_last == nullptr)
        return SsStatusBadObservationCount;
    if (task.observation_storage == nullptr) return SsStatusNoStorage;
    const int64_t p = integer(task, task.dimension);
    const Range<T> range{reals<T>(task.observations),           p,
                         integer(task, task.observation_count), integer(task, task.distance_first),
                         integer(task, task.distance_last),     is_rows(integer(task, task.observation_storage), p),
                         reals<T>(task.distance_mean),          reals<T>(task.distance_inverse),
                         reals<T>(task.distance_result)};
    const int64_t count = range.last - range.first;
    if (count <= 0) return SsStatusOk;
    if (p == 1) {
        for (int64_t i = range.first; i < range.last; ++i) {
            const T d = range.x[i] - range.mean[0];
            range.result[i] = root(d * range.inverse[0] * d);
        }
        return SsStatusOk;
    }
    constexpr int64_t kMost = INT32_MAX;  // of the matrix product's sizes
    const int64_t room = task.distance_work == nullptr ? 0 : integer_or(task, task.distance_work_size, 0);
    if (room / 2 / p >= count && count <= kMost && p <= kMost) {
        blocked(range, reals<T>(task.distance_work));
        return SsStatusOk;
    }
    constexpr int64_t kOnStack = 1024;
    if (p <= kOnStack) {
        T centred[kOnStack];
        single(range, centred);
        return SsStatusOk;
    }
    service::Block<T> centred(static_cast<std::size_t>(p));
    if (!centred) return SsStatusMemory;
    single(range, centred.get());
    return SsStatusOk;
}

}  // namespace
}  // namespace nax::stats

NAX_SS_ENTRIES(SSMahDistance, distances)
