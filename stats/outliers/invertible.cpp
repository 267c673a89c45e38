#include "stats/outliers/invertible.h"

#include <bit>
#include <type_traits>

#include "nax/statistics_robust.h"
#include "service/block.h"
#include "stats/linear_algebra.h"
#include "stats/matrix_storage.h"
#include "nax/status.h"

namespace nax::stats::outliers {
namespace {

// What counts as above zero: a thousand of the smallest denormals.
template <class T>
constexpr T least_positive() {
    using Bits = std::conditional_t<sizeof(T) == 8, uint64_t, uint32_t>;
    return std::bit_cast<T>(Bits{1000});
}
// Eigenvalues above this need no help.
constexpr double kSafeEigenvalue = 1e-15;
constexpr double kShareOfEigenvalue = 0.01;

template <class T>
int32_t make_invertible_one(T& variance) {
    if (variance > 0) return SsStatusOk;
    if (!(variance >= -least_positive<T>())) return SsStatusUnusableCovariance;
    variance = least_positive<T>();
    return SsStatusOk;
}

// The closed forms read one triangle, as the others do. Elements by columns: c(i, j), i >= j, at c[j * p + i].
template <class T>
void invert_two(T* c) {
    const T a = c[0], b = c[1], d = c[3];
    const T determinant = a * d - b * b;
    c[0] = d / determinant;
    c[1] = c[2] = -b / determinant;
    c[3] = a / determinant;
}
template <class T>
void invert_three(T* c) {
    const T c00 = c[0], c10 = c[1], c20 = c[2], c11 = c[4], c21 = c[5], c22 = c[8];
    const T k00 = c11 * c22 - c21 * c21, k10 = c20 * c21 - c10 * c22, k20 = c10 * c21 - c11 * c20;
    const T determinant = c00 * k00 + c10 * k10 + c20 * k20;
    c[0] = k00 / determinant;
    c[1] = c[3] = k10 / determinant;
    c[2] = c[6] = k20 / determinant;
    c[4] = (c00 * c22 - c20 * c20) / determinant;
    c[5] = c[7] = (c10 * c20 - c00 * c21) / determinant;
    c[8] = (c00 * c11 - c10 * c10) / determinant;
}

}  // namespace

template <class T>
int32_t make_invertible(int64_t p, T* covariance, T* work) {
    if (p == 1) return make_invertible_one(covariance[0]);
    T* const diagonal = work;
    T* const eigenvalues = work + p;
    for (int64_t j = 0; j < p; ++j) diagonal[j] = covariance[j * p + j];
    const int size = static_cast<int>(p);
    const int info = syev('N', 'U', size, covariance, size, eigenvalues, eigenvalues + p, static_cast<int>(4 * p));
    for (int64_t j = 0; j < p; ++j) covariance[j * p + j] = diagonal[j];
    if (info != 0) return SsStatusEigenvaluesFailed;
    if (eigenvalues[0] > static_cast<T>(kSafeEigenvalue)) return SsStatusOk;
    for (int64_t k = 0; k < p; ++k)
        if (eigenvalues[k] >= least_positive<T>()) {
            for (int64_t j = 0; j < p; ++j)
                covariance[j * p + j] += static_cast<T>(kShareOfEigenvalue) * eigenvalues[k];
            return SsStatusOk;
        }
    return SsStatusUnusableCovariance;
}
template int32_t make_invertible(int64_t, double*, double*);
template int32_t make_invertible(int64_t, float*, float*);

template <class T>
int32_t invert(int64_t p, T* covariance) {
    const int size = static_cast<int>(p);
    switch (p) {
        case 1:
            covariance[0] = 1 / covariance[0];
            return SsStatusOk;
        case 2:
            invert_two(covariance);
            return SsStatusOk;
        case 3:
            invert_three(covariance);
            return SsStatusOk;
        default:
            if (potrf('L', size, covariance, size) != 0) return SsStatusFactorFailed;
            if (potri('L', size, covariance, size) != 0) return SsStatusInverseFailed;
            mirror_upper_rows(p, covariance);
            return SsStatusOk;
    }
}
template int32_t invert(int64_t, double*);
template int32_t invert(int64_t, float*);

namespace {

template <class T>
int32_t test_rank(int64_t p, T* covariance) {
    if (p < 1) return SsStatusBadDimension;
    service::Block<T> work(invertible_work(p));
    return work ? make_invertible(p, covariance, work.get()) : int32_t{SsStatusMemory};
}

}  // namespace
}  // namespace nax::stats::outliers

extern "C" int32_t __stodTestCovRank(int64_t p, double* covariance) {
    return nax::stats::outliers::test_rank(p, covariance);
}
extern "C" int32_t __stosTestCovRank(int64_t p, float* covariance) {
    return nax::stats::outliers::test_rank(p, covariance);
}
extern "C" int32_t __stodInvCov(int64_t p, double* covariance) {
    return p < 1 ? int32_t{SsStatusBadDimension} : nax::stats::outliers::invert(p, covariance);
}
extern "C" int32_t __stosInvCov(int64_t p, float* covariance) {
    return p < 1 ? int32_t{SsStatusBadDimension} : nax::stats::outliers::invert(p, covariance);
}
