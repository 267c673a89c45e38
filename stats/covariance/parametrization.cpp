// The nearest usable correlation matrix: eigenvalues that are not positive are lifted, and the diagonal is made one
// again.
#include <cmath>

#include "nax/statistics_basic.h"
#include "service/block.h"
#include "stats/linear_algebra.h"
#include "stats/matrix_storage.h"
#include "stats/task.h"

namespace nax::stats::covariance {
namespace {

// Every eigenvalue is at least this.
constexpr double kLeastEigenvalue = 1e-14;

int32_t check(const Task& task, uint64_t method) {
    if (integer_or(task, task.dimension, 0) < 1) return SsStatusBadDimension;
    if (task.correlation == nullptr) return SsStatusNoCorrelation;
    if (task.correlation_storage == nullptr) return SsStatusNoStorage;
    const int64_t from = integer(task, task.correlation_storage);
    if (!is_matrix_storage(from)) return SsStatusBadStorage;
    if (task.parametrized_correlation == nullptr) return SsStatusNoParametrizedCorrelation;
    if (task.parametrized_correlation_storage == nullptr) return SsStatusNoStorage;
    const int64_t to = integer(task, task.parametrized_correlation_storage);
    if (!is_matrix_storage(to)) return SsStatusBadStorage;
    if (task.correlation == task.parametrized_correlation && from != to) return SsStatusBadStorage;
    return method == NAX_SS_METHOD_PARAMETRIZATION ? SsStatusOk : SsStatusBadMethod;
}

// Lifts the eigenvalues and counts those it lifted; -1 where one is no number.
template <class T>
int64_t lift(int64_t p, T* eigenvalues) {
    int64_t lifted = 0;
    for (int64_t j = 0; j < p; ++j) {
        if (std::isnan(eigenvalues[j])) return -1;
        if (eigenvalues[j] < static_cast<T>(kLeastEigenvalue)) {
            eigenvalues[j] = static_cast<T>(kLeastEigenvalue);
            ++lifted;
        }
    }
    return lifted;
}

// V diag(eigenvalues) V' into `matrix`, both triangles; the vectors are overwritten.
template <class T>
void rebuild(int64_t p, const T* eigenvalues, T* vectors, T* matrix) {
    for (int64_t j = 0; j < p; ++j) {
        const T root = std::sqrt(eigenvalues[j]);
        for (int64_t i = 0; i < p; ++i) vectors[j * p + i] *= root;
    }
    const int size = static_cast<int>(p);
    syrk('U', 'N', size, size, T(1), vectors, size, T(0), matrix, size);
    mirror_lower_rows(p, matrix);
    for (int64_t i = 0; i < p; ++i)
        for (int64_t j = 0; j < i; ++j)
            matrix[i * p + j] = matrix[j * p + i] =
                matrix[i * p + j] / std::sqrt(matrix[i * p + i] * matrix[j * p + j]);
    for (int64_t i = 0; i < p; ++i) matrix[i * p + i] = 1;
}

template <class T>
int32_t compute(Task* record, uint64_t method) {
    if (record == nullptr) return SsStatusNullTask;
    const Task& task = *record;
    if (const int32_t status = check(task, method)) return status;
    const int64_t p = integer(task, task.dimension);
    // The matrix, its eigenvectors, eigenvalues, and the work of the eigensolver, which likes 34 p or more.
    const int64_t work_size = 50 * p;
    service::Block<T> block(static_cast<std::size_t>(2 * p * p + p + work_size));
    if (!block) return SsStatusMemory;
    T* const matrix = block.get();
    T* const vectors = matrix + p * p;
    T* const eigenvalues = vectors + p * p;
    T* const work = eigenvalues + p;
    expand(decode_matrix_storage(integer(task, task.correlation_storage)), p, reals<T>(task.correlation), matrix);
    for (int64_t i = 0; i < p; ++i) matrix[i * p + i] = 1;
    for (int64_t e = 0; e < p * p; ++e) vectors[e] = matrix[e];
    const int size = static_cast<int>(p);
    if (syev('V', 'U', size, vectors, size, eigenvalues, work, static_cast<int>(work_size)) != 0)
        return SsStatusParametrizationFailed;
    const int64_t lifted = lift(p, eigenvalues);
    if (lifted < 0 || lifted == p) return SsStatusParametrizationFailed;
    if (lifted > 0) rebuild(p, eigenvalues, vectors, matrix);
    store_matrix(decode_matrix_storage(integer(task, task.parametrized_correlation_storage)), p, matrix,
                 reals<T>(task.parametrized_correlation));
    return SsStatusOk;
}

}  // namespace
}  // namespace nax::stats::covariance

extern "C" int32_t _stodSSCorParametrization(nax_ss_task* task, uint64_t, uint64_t method, const nax_threaders*) {
    return nax::stats::covariance::compute<double>(task, method);
}
extern "C" int32_t _stosSSCorParametrization(nax_ss_task* task, uint64_t, uint64_t method, const nax_threaders*) {
    return nax::stats::covariance::compute<float>(task, method);
}
