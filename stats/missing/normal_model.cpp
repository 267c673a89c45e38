// Sweeps, and the steps that both EM and data augmentation take: regressions by pattern and sums over completed rows.
#include "stats/missing/normal_model.h"

#include <algorithm>
#include <cmath>

#include "stats/linear_algebra.h"
#include "stats/matrix_storage.h"

namespace nax::stats::missing {
namespace {

// Rows that are summed at a time.
constexpr int64_t kRows = 256;

}  // namespace

void sweep(int64_t order, double* matrix, int64_t pivot, int direction) {
    double* const row = matrix + pivot * order;
    const double h = -1 / row[pivot];
    for (int64_t i = 0; i < order; ++i) {
        if (i == pivot) continue;
        double* const other = matrix + i * order;
        const double factor = h * other[pivot];
        for (int64_t j = 0; j < order; ++j)
            if (j != pivot) other[j] += factor * row[j];
    }
    for (int64_t i = 0; i < order; ++i)
        if (i != pivot) row[i] = matrix[i * order + pivot] = -direction * h * row[i];
    row[pivot] = h;
}

template <class T>
int32_t NormalModel<T>::open() {
    const auto p = static_cast<std::size_t>(data_.p), q = p + 1;
    // work_ serves the residual covariance and its factor, and the matrices of the posterior.
    if (!block_.allocate(3 * q * q + static_cast<std::size_t>(kRows) * q + p + 4 * p * p + 4 * p + p + p * p) ||
        !indices_.allocate(2 * p))
        return SsStatusMemory;
    theta_ = block_.get();
    swept_ = theta_ + q * q;
    sums_ = swept_ + q * q;
    rows_ = sums_ + q * q;
    centre_ = rows_ + static_cast<std::size_t>(kRows) * q;
    prior_.mean = centre_ + p;
    prior_.scale = prior_.mean + p;
    work_ = prior_.scale + p * p;
    observed_ = indices_.get();
    missing_ = observed_ + p;
    prior_.tau = 0;
    prior_.m = data_.p;
    std::fill(prior_.mean, work_, 0.0);
    for (int64_t j = 0; j < data_.p; ++j) {
        double sum = 0, count = 0, first = 0;
        for (int64_t i = 0; i < data_.n; ++i) {
            const T value = data_.at(i, j);
            if (Observations<T>::is_missing(value)) continue;
            if (count == 0) first = static_cast<double>(value);
            sum += static_cast<double>(value) - first;
            count += 1;
        }
        centre_[j] = count > 0 ? first + sum / count : 0;
    }
    return SsStatusOk;
}

template <class T>
void NormalModel<T>::start_from_data() {
    const int64_t q = order();
    std::fill(theta_, theta_ + q * q, 0.0);
    theta_[0] = -1;
    for (int64_t j = 0; j < data_.p; ++j) {
        double sum = 0, squares = 0, count = 0;
        for (int64_t i = 0; i < data_.n; ++i) {
            const T value = data_.at(i, j);
            if (Observations<T>::is_missing(value)) continue;
            const double d = static_cast<double>(value) - centre_[j];
            sum += d;
            squares += d * d;
            count += 1;
        }
        const double mean = sum / count;
        theta_[j + 1] = theta_[(j + 1) * q] = mean;
        theta_[(j + 1) * q + j + 1] = squares / count - mean * mean;
    }
}

template <class T>
typename NormalModel<T>::Regression NormalModel<T>::regress(int64_t pattern) {
    const int64_t q = order();
    Regression regression{0, 0};
    std::copy(theta_, theta_ + q * q, swept_);
    for (int64_t j = 0; j < data_.p; ++j)
        (patterns_.is_observed(pattern, j) ? observed_[regression.observed_count++]
                                           : missing_[regression.missing_count++]) = j;
    // A complete row needs no regression.
    for (int64_t k = 0; regression.missing_count > 0 && k < regression.observed_count; ++k)
        sweep(q, swept_, observed_[k] + 1, 1);
    return regression;
}

// A row [1, x] about the centres, with predictions where entries are missing.
template <class T>
void NormalModel<T>::predict(const Regression& regression, int64_t observation, double* row) const {
    const int64_t q = order();
    row[0] = 1;
    for (int64_t k = 0; k < regression.observed_count; ++k) {
        const int64_t j = observed_[k];
        row[j + 1] = static_cast<double>(data_.at(observation, j)) - centre_[j];
    }
    for (int64_t k = 0; k < regression.missing_count; ++k) {
        const int64_t j = missing_[k];
        const double* const coefficients = swept_ + (j + 1) * q;
        double value = coefficients[0];
        for (int64_t o = 0; o < regression.observed_count; ++o)
            value += coefficients[observed_[o] + 1] * row[observed_[o] + 1];
        row[j + 1] = value;
    }
}

template <class T>
void NormalModel<T>::clear_sums() {
    std::fill(sums_, sums_ + order() * order(), 0.0);
    buffered_ = 0;
}
template <class T>
void NormalModel<T>::flush_rows() {
    const int q = static_cast<int>(order());
    if (buffered_ > 0) syrk('L', 'N', q, static_cast<int>(buffered_), 1.0, rows_, q, 1.0, sums_, q);
    buffered_ = 0;
}
template <class T>
void NormalModel<T>::add_row(const double* row) {
    if (row != rows_ + buffered_ * order()) std::copy(row, row + order(), rows_ + buffered_ * order());
    if (++buffered_ == kRows) flush_rows();
}

template <class T>
double NormalModel<T>::em_step() {
    const int64_t q = order();
    clear_sums();
    for (int64_t pattern = 0; pattern < patterns_.count(); ++pattern) {
        const Regression regression = regress(pattern);
        // Rows without any observed entry tell nothing.
        if (regression.observed_count == 0) continue;
        const int64_t begin = patterns_.begin(pattern), end = patterns_.begin(pattern + 1);
        for (int64_t k = begin; k < end; ++k) {
            double* const row = rows_ + buffered_ * q;
            predict(regression, patterns_.members()[k], row);
            add_row(row);
        }
        const double rows = static_cast<double>(end - begin);
        for (int64_t a = 0; a < regression.missing_count; ++a)
            for (int64_t b = a; b < regression.missing_count; ++b)
                sums_[(missing_[a] + 1) * q + missing_[b] + 1] +=
                    rows * swept_[(missing_[a] + 1) * q + missing_[b] + 1];
    }
    flush_rows();
    // The lower triangle by columns is the upper one by rows; element 0 counts the rows.
    const double count = sums_[0];
    double change = 0;
    for (int64_t i = 0; i < q; ++i)
        for (int64_t j = std::max<int64_t>(i, 1); j < q; ++j) {
            double value = sums_[i * q + j] / count;
            if (i > 0) value -= sums_[i] / count * (sums_[j] / count);
            const double moved = std::fabs(value - theta_[i * q + j]);
            if (!(moved <= change)) change = moved;
            theta_[i * q + j] = theta_[j * q + i] = value;
        }
    return change;
}

template <class T>
int32_t NormalModel<T>::draw_missing(nax_stream* stream, double* values) {
    const int64_t q = order();
    clear_sums();
    for (int64_t pattern = 0; pattern < patterns_.count(); ++pattern) {
        const Regression regression = regress(pattern);
        const int64_t count = regression.missing_count;
        double* const factor = work_;
        double* const normals = work_ + count * count;
        for (int64_t a = 0; a < count; ++a)
            for (int64_t b = 0; b < count; ++b) factor[a * count + b] = swept_[(missing_[a] + 1) * q + missing_[b] + 1];
        if (count > 0 && potrf('L', static_cast<int>(count), factor, static_cast<int>(count)) != 0)
            return SsStatusDrawFactorFailed;
        for (int64_t k = patterns_.begin(pattern); k < patterns_.begin(pattern + 1); ++k) {
            double* const row = rows_ + buffered_ * q;
            predict(regression, patterns_.members()[k], row);
            if (const int32_t status = draw_normals(stream, count, normals)) return status;
            for (int64_t a = 0; a < count; ++a) {
                for (int64_t b = 0; b <= a; ++b) row[missing_[a] + 1] += factor[b * count + a] * normals[b];
                *values++ = row[missing_[a] + 1] + centre_[missing_[a]];
            }
            add_row(row);
        }
    }
    flush_rows();
    return SsStatusOk;
}

template class NormalModel<double>;
template class NormalModel<float>;

}  // namespace nax::stats::missing
