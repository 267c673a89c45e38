// The posterior step of data augmentation. With the sample mean y and the centred sums S of n completed rows:
//   tau' = tau + n, m' = m + n, centre = (n y + tau mu0)/tau', Psi' = Psi + S + (n tau/tau') (y - mu0)(y - mu0)'
// Sigma is inverse Wishart: with Psi' = C C' and a lower Bartlett triangle T, L = C T^-T gives Sigma = L L'
// (M. S. Bartlett 1933; W. B. Smith, R. R. Hocking, Appl. Statist. 21 (1972), AS 53).
#include <algorithm>
#include <cmath>

#include "stats/linear_algebra.h"
#include "stats/missing/normal_model.h"

namespace nax::stats::missing {
namespace {

// Normals whose squares are summed at a time.
constexpr int64_t kBatch = 1024;

// Sum of the squares of `count` standard normals.
int32_t draw_chi_square(nax_stream* stream, int64_t count, double& sum) {
    double normals[kBatch];
    sum = 0;
    for (int64_t done = 0; done < count; done += kBatch) {
        const int64_t batch = std::min(kBatch, count - done);
        if (const int32_t status = draw_normals(stream, batch, normals)) return status;
        for (int64_t k = 0; k < batch; ++k) sum += normals[k] * normals[k];
    }
    return SsStatusOk;
}

}  // namespace

// Centre and scale of the posterior; the scale's lower triangle by columns.
template <class T>
void NormalModel<T>::posterior(double* centre, double* scale) const {
    const int64_t p = data_.p, q = order();
    const double n = sums_[0], total = prior_.tau + n;
    for (int64_t j = 0; j < p; ++j) {
        const double mean = sums_[j + 1] / n;
        centre[j] = (n * mean + prior_.tau * prior_.mean[j]) / total;
        for (int64_t i = j; i < p; ++i) {
            const double other = sums_[i + 1] / n;
            scale[j * p + i] = prior_.scale[j * p + i] + sums_[(j + 1) * q + i + 1] - n * mean * other +
                               n * prior_.tau / total * (mean - prior_.mean[j]) * (other - prior_.mean[i]);
        }
    }
}

// Lower triangle by columns, zeros above.
template <class T>
int32_t NormalModel<T>::fill_bartlett(nax_stream* stream, double* triangle) const {
    const int64_t p = data_.p, freedom = prior_.m + data_.n;
    std::fill(triangle, triangle + p * p, 0.0);
    for (int64_t j = 0; j < p; ++j) {
        double square;
        if (const int32_t status = draw_chi_square(stream, freedom - j, square)) return status;
        triangle[j * p + j] = std::sqrt(square);
    }
    for (int64_t j = 0; j + 1 < p; ++j)
        if (const int32_t status = draw_normals(stream, p - 1 - j, triangle + j * p + j + 1)) return status;
    return SsStatusOk;
}

template <class T>
int32_t NormalModel<T>::draw_theta(nax_stream* stream) {
    const int64_t p = data_.p, q = order();
    const int size = static_cast<int>(p);
    double* const factor = work_;
    double* const triangle = factor + p * p;
    double* const covariance = triangle + p * p;
    double* const centre = covariance + p * p;
    double* const normals = centre + p;
    std::fill(factor, factor + p * p, 0.0);
    posterior(centre, factor);
    if (const int32_t status = fill_bartlett(stream, triangle)) return status;
    if (potrf('L', size, factor, size) != 0) return SsStatusDrawFactorFailed;
    if (trtri('L', 'N', size, triangle, size) != 0) return SsStatusDrawInverseFailed;
    trmm('R', 'L', 'T', 'N', size, size, 1.0, triangle, size, factor, size);
    syrk('L', 'N', size, size, 1.0, factor, size, 0.0, covariance, size);
    if (const int32_t status = draw_normals(stream, p, normals)) return status;
    const double scale = 1 / std::sqrt(prior_.tau + static_cast<double>(data_.n));
    gemv('N', size, size, scale, factor, size, normals, 1.0, centre);
    theta_[0] = -1;
    for (int64_t j = 0; j < p; ++j) {
        theta_[j + 1] = theta_[(j + 1) * q] = centre[j];
        for (int64_t i = j; i < p; ++i)
            theta_[(i + 1) * q + j + 1] = theta_[(j + 1) * q + i + 1] = covariance[j * p + i];
    }
    return SsStatusOk;
}

template int32_t NormalModel<double>::draw_theta(nax_stream*);
template int32_t NormalModel<float>::draw_theta(nax_stream*);

}  // namespace nax::stats::missing
