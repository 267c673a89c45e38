// Covariance of some variables given others: Y - YZ Z^-1 YZ'.
#include <cmath>

#include "nax/statistics_basic.h"
#include "service/block.h"
#include "stats/linear_algebra.h"
#include "stats/matrix_storage.h"
#include "stats/task.h"

namespace nax::stats::covariance {
namespace {

int32_t check(const Task& task, uint64_t estimates, uint64_t method) {
    if (task.covariance == nullptr && task.correlation == nullptr) return SsStatusNoCovariance;
    if ((task.covariance != nullptr ? task.covariance_storage : task.correlation_storage) == nullptr)
        return SsStatusNoStorage;
    if (task.conditioning_indices == nullptr) return SsStatusNoConditioningIndices;
    if ((estimates & NAX_SS_ESTIMATE_PARTIAL_COVARIANCE) != 0) {
        if (task.partial_covariance == nullptr) return SsStatusNoPartialCovariance;
        if (task.partial_covariance_storage == nullptr) return SsStatusNoStorage;
    }
    if ((estimates & NAX_SS_ESTIMATE_PARTIAL_CORRELATION) != 0) {
        if (task.partial_correlation == nullptr) return SsStatusNoPartialCorrelation;
        if (task.partial_correlation_storage == nullptr) return SsStatusNoStorage;
    }
    if (method != NAX_SS_METHOD_FAST) return SsStatusBadMethod;
    return integer_or(task, task.dimension, 0) < 1 ? SsStatusBadDimension : SsStatusOk;
}

// Positions of the variables of the result and of the conditioning ones, and the three blocks, by columns.
template <class T>
struct Blocks {
    int64_t k, m;
    int64_t* result;        // k
    int64_t* conditioning;  // m
    T* y;                   // k by k
    T* yz;                  // k by m
    T* z;                   // m by m
    T* product;             // k by m
};

// Element of the covariance, which a correlation gives by the variances on its diagonal.
template <class T>
T element(const Task& task, int64_t p, int64_t i, int64_t j) {
    if (task.covariance != nullptr)
        return reals<T>(
            task.covariance)[matrix_index(decode_matrix_storage(integer(task, task.covariance_storage)), p, i, j)];
    const MatrixStorage storage = decode_matrix_storage(integer(task, task.correlation_storage));
    const T* const r = reals<T>(task.correlation);
    const T value = r[matrix_index(storage, p, i, j)];
    if (i == j) return value;
    return value * std::sqrt(r[matrix_index(storage, p, i, i)] * r[matrix_index(storage, p, j, j)]);
}

template <class T>
void decompose(const Task& task, int64_t p, const Blocks<T>& b) {
    for (int64_t i = 0; i < b.k; ++i) {
        for (int64_t j = 0; j < b.k; ++j) b.y[j * b.k + i] = element<T>(task, p, b.result[i], b.result[j]);
        for (int64_t j = 0; j < b.m; ++j) b.yz[j * b.k + i] = element<T>(task, p, b.result[i], b.conditioning[j]);
    }
    for (int64_t i = 0; i < b.m; ++i)
        for (int64_t j = 0; j < b.m; ++j) b.z[j * b.m + i] = element<T>(task, p, b.conditioning[i], b.conditioning[j]);
}

template <class T>
bool condition(const Blocks<T>& b) {
    const int k = static_cast<int>(b.k), m = static_cast<int>(b.m);
    if (potrf('L', m, b.z, m) != 0 || potri('L', m, b.z, m) != 0) return false;
    // The inverse comes in the lower triangle by columns, the upper one by rows.
    mirror_upper_rows(b.m, b.z);
    gemm('N', 'N', k, m, m, T(1), b.yz, k, b.z, m, T(0), b.product, k);
    gemm('N', 'T', k, k, m, T(-1), b.product, k, b.yz, k, T(1), b.y, k);
    return true;
}

template <class T>
void write(const Blocks<T>& b, int64_t p, bool correlation, MatrixStorage storage, T* matrix) {
    for (int64_t i = 0; i < b.k; ++i)
        for (int64_t j = i; j < b.k; ++j) {
            T value = b.y[j * b.k + i];
            if (correlation && i != j) value /= std::sqrt(b.y[i * b.k + i] * b.y[j * b.k + j]);
            matrix[matrix_index(storage, p, b.result[i], b.result[j])] = value;
            matrix[matrix_index(storage, p, b.result[j], b.result[i])] = value;
        }
}

template <class T>
int32_t compute(Task* record, uint64_t estimates, uint64_t method) {
    if (record == nullptr) return SsStatusNullTask;
    const Task& task = *record;
    if (const int32_t status = check(task, estimates, method)) return status;
    const int64_t p = integer(task, task.dimension);
    const Integers marks = integers(task, task.conditioning_indices);
    Blocks<T> b{};
    for (int64_t j = 0; j < p; ++j) {
        b.k += marks[j] == 1;
        b.m += marks[j] == -1;
    }
    if (b.k == 0 || b.m == 0) return SsStatusNoConditioning;
    service::Block<int64_t> places(static_cast<std::size_t>(b.k + b.m));
    service::Block<T> matrices(static_cast<std::size_t>(b.k * b.k + 2 * b.k * b.m + b.m * b.m));
    if (!places || !matrices) return SsStatusMemory;
    b.result = places.get();
    b.conditioning = b.result + b.k;
    b.y = matrices.get();
    b.yz = b.y + b.k * b.k;
    b.product = b.yz + b.k * b.m;
    b.z = b.product + b.k * b.m;
    int64_t k = 0, m = 0;
    for (int64_t j = 0; j < p; ++j) {
        if (marks[j] == 1) b.result[k++] = j;
        if (marks[j] == -1) b.conditioning[m++] = j;
    }
    decompose(task, p, b);
    if (!condition(b)) return SsStatusUnusableCovariance;
    const auto storage = [&](const void* code) { return decode_matrix_storage(integer(task, code)); };
    if ((estimates & NAX_SS_ESTIMATE_PARTIAL_COVARIANCE) != 0)
        write(b, p, false, storage(task.partial_covariance_storage), reals<T>(task.partial_covariance));
    if ((estimates & NAX_SS_ESTIMATE_PARTIAL_CORRELATION) != 0)
        write(b, p, true, storage(task.partial_correlation_storage), reals<T>(task.partial_correlation));
    return SsStatusOk;
}

}  // namespace
}  // namespace nax::stats::covariance

extern "C" int32_t _stodSSPartialCovariance(nax_ss_task* task, uint64_t estimates, uint64_t method,
                                            const nax_threaders*) {
    return nax::stats::covariance::compute<double>(task, estimates, method);
}
extern "C" int32_t _stosSSPartialCovariance(nax_ss_task* task, uint64_t estimates, uint64_t method,
                                            const nax_threaders*) {
    return nax::stats::covariance::compute<float>(task, estimates, method);
}
