#include "stats/robust/ogk.h"

#include <algorithm>
#include <cmath>

#include "service/block.h"
#include "stats/linear_algebra.h"
#include "stats/matrix_storage.h"
#include "stats/missing/chi_square.h"
#include "stats/order/ranking.h"
#include "stats/private_task.h"
#include "stats/robust/loops.h"

namespace nax::stats::robust {
namespace {

// Share of the chi-square distribution within which observations are kept.
constexpr double kKept = 0.9;
// Observations that are turned to the eigenvectors at a time.
constexpr int64_t kBlock = 1024;

template <class T>
T median(const T* x, int64_t n, T* work) {
    const QuantilePlace<T> place = quantile_place(T(0.5), n);
    const int64_t ranks[2] = {place.k, place.upper};
    T values[2];
    const bool one = place.f == 0 || place.upper == place.k;
    select_reals(x, n, work, ranks, one ? 1 : 2, values);
    return one ? values[0] : quantile_of_selected(values[0], values[1], place.f);
}

// Median of |x - centre|; `deviations` and `work` have n reals.
template <class T>
T deviation(const T* x, int64_t n, T centre, T* deviations, T* work) {
    absolute_deviations(x, centre, n, deviations);
    return median(deviations, n, work);
}

template <class T>
struct Ogk {
    int64_t p, n;
    bool rows;
    const T* x;
    int threads;
    const Threaders* threaders;
    T* z;        // standardised observations, then their projections; n reals a variable
    T* scratch;  // 3 n reals a thread
    T *centre, *scale;
    T* packed;  // correlations, lower triangle by columns

    T* of_thread(int thread) const { return scratch + static_cast<int64_t>(thread) * 3 * n; }
    void loop(int64_t count, nax_loop_body body) {
        if (threads > 1)
            threaders->parallel_for(count, threads, this, body);
        else
            for (int64_t i = 0; i < count; ++i) body(i, 0, 1, this);
    }
};

// Median and deviation of a projected variable.
template <class T>
void measure(int64_t j, int thread, int, void* context) {
    const Ogk<T>& ogk = *static_cast<const Ogk<T>*>(context);
    T* const work = ogk.of_thread(thread);
    ogk.centre[j] = median(ogk.z + j * ogk.n, ogk.n, work);
    ogk.scale[j] = deviation(ogk.z + j * ogk.n, ogk.n, ogk.centre[j], work + ogk.n, work);
}

// Copies a variable, measures it, and standardises it.
template <class T>
void standardise(int64_t j, int thread, int threads, void* context) {
    const Ogk<T>& ogk = *static_cast<const Ogk<T>*>(context);
    T* const z = ogk.z + j * ogk.n;
    if (ogk.rows)
        std::copy(ogk.x + j * ogk.n, ogk.x + (j + 1) * ogk.n, z);
    else
        for (int64_t i = 0; i < ogk.n; ++i) z[i] = ogk.x[i * ogk.p + j];
    measure<T>(j, thread, threads, context);
    const T centre = ogk.centre[j], scale = ogk.scale[j];
    for (int64_t i = 0; i < ogk.n; ++i) z[i] = (z[i] - centre) / scale;
}

// Robust correlation of a pair: (s(z_i + z_j)^2 - s(z_i - z_j)^2)/4. Pairs count along the rows of the upper triangle.
template <class T>
void correlate(int64_t pair, int thread, int, void* context) {
    const Ogk<T>& ogk = *static_cast<const Ogk<T>*>(context);
    int64_t i = 0;
    while (pair >= ogk.p - 1 - i) pair -= ogk.p - 1 - i++;
    const int64_t j = i + 1 + pair, n = ogk.n;
    const T* const a = ogk.z + i * n;
    const T* const b = ogk.z + j * n;
    T* const work = ogk.of_thread(thread);
    T* const joined = work + n;
    T* const deviations = work + 2 * n;
    const auto scale = [&](T sign) {
        add_scaled(a, sign, b, n, joined);
        return deviation(joined, n, median(joined, n, work), deviations, work);
    };
    const T sum = scale(1), difference = scale(-1);
    ogk.packed[matrix_index(MatrixStorage::kUpper, ogk.p, i, j)] = (sum * sum - difference * difference) / 4;
}

template <class T>
bool has_spread(const Ogk<T>& ogk) {
    for (int64_t j = 0; j < ogk.p; ++j)
        if (!(ogk.scale[j] > 0) || !std::isfinite(ogk.scale[j])) return false;
    return true;
}

// Eigenvectors of the correlations, and the observations in their directions.
template <class T>
int32_t project(Ogk<T>& ogk) {
    const int64_t p = ogk.p, n = ogk.n;
    const int size = static_cast<int>(p);
    const int work_size = 1 + size * (6 + size), integers_size = 3 + 5 * size;
    service::Block<T> block(static_cast<std::size_t>(p * p + p + work_size + kBlock * p));
    service::Block<int> integers(static_cast<std::size_t>(integers_size));
    if (!block || !integers) return SsStatusMemory;
    T* const vectors = block.get();
    T* const eigenvalues = vectors + p * p;
    T* const work = eigenvalues + p;
    T* const rows = work + work_size;
    for (int64_t j = 0; j < p; ++j) ogk.packed[matrix_index(MatrixStorage::kUpper, p, j, j)] = 1;
    if (spevd('V', 'L', size, ogk.packed, eigenvalues, vectors, size, work, work_size, integers.get(), integers_size) !=
        0)
        return SsStatusEigenvaluesFailed;
    for (int64_t first = 0; first < n; first += kBlock) {
        const int64_t count = std::min(kBlock, n - first);
        for (int64_t j = 0; j < p; ++j)
            std::copy(ogk.z + j * n + first, ogk.z + j * n + first + count, rows + j * count);
        for (int64_t j = 0; j < p; ++j) {
            T* const to = ogk.z + j * n + first;
            std::fill(to, to + count, T(0));
            for (int64_t k = 0; k < p; ++k) add_scaled(to, vectors[j * p + k], rows + k * count, count, to);
        }
    }
    return SsStatusOk;
}

// Weight 1 for observations nearer to the centre than the cut, 0 for the others.
template <class T>
void select_near(Ogk<T>& ogk, T* weights) {
    const int64_t n = ogk.n;
    T* const work = ogk.of_thread(0);
    std::fill(weights, weights + n, T(0));
    for (int64_t j = 0; j < ogk.p; ++j) add_squares(ogk.z + j * n, ogk.centre[j], 1 / ogk.scale[j], n, weights);
    const double p = static_cast<double>(ogk.p);
    const T cut =
        static_cast<T>(chi2_quantile(p, kKept) * static_cast<double>(median(weights, n, work)) / chi2_quantile(p, 0.5));
    for (int64_t i = 0; i < n; ++i) weights[i] = weights[i] < cut ? T(1) : T(0);
}

}  // namespace

template <class T>
int32_t ogk(int64_t p, int64_t n, int64_t storage, const T* x, int threads, const Threaders* threaders, T* weights,
            T* mean, T* covariance) {
    service::Block<T> block(static_cast<std::size_t>(n * p + 3 * n * threads + 2 * p + packed_size(p)));
    if (!block) return SsStatusMemory;
    Ogk<T> ogk{p, n, is_rows(storage, p), x, threads, threaders, block.get(), nullptr, nullptr, nullptr, nullptr};
    ogk.scratch = ogk.z + n * p;
    ogk.centre = ogk.scratch + 3 * n * threads;
    ogk.scale = ogk.centre + p;
    ogk.packed = ogk.scale + p;
    ogk.loop(p, standardise<T>);
    if (!has_spread(ogk)) return SsStatusEigenvaluesFailed;
    if (p > 1) {
        ogk.loop(p * (p - 1) / 2, correlate<T>);
        if (const int32_t status = project(ogk)) return status;
    }
    ogk.loop(p, measure<T>);
    if (!has_spread(ogk)) return SsStatusEigenvaluesFailed;
    select_near(ogk, weights);
    T pair[2];
    PrivateTask<T> task(p, n, storage, x, weights);
    return task.covariance(NAX_SS_METHOD_ONE_PASS, mean, covariance, pair, threaders);
}
template int32_t ogk(int64_t, int64_t, int64_t, const double*, int, const Threaders*, double*, double*, double*);
template int32_t ogk(int64_t, int64_t, int64_t, const float*, int, const Threaders*, float*, float*, float*);

}  // namespace nax::stats::robust
