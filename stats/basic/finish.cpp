// From accumulators to results.
#include <cmath>

#include "stats/basic/state.h"

namespace nax::stats::basic {
namespace {

template <class T>
T root(T x) {
    return std::sqrt(x);
}

template <class T>
void put(T* array, int64_t j, T value) {
    if (array != nullptr) array[j] = value;
}

// Everything of one variable: raw moments, central sums, and the central moments.
template <class T>
struct Moments {
    T raw[4];
    T raw_sum[4];
    T central_sum[3];
    T central[3];
};

template <class T>
T kept(const Accumulators<T>& sums, int index, int64_t slot) {
    return sums.power[index] != nullptr ? sums.power[index][slot] : T(0);
}

template <class T>
Moments<T> one_pass_moments(const Accumulators<T>& sums, int64_t slot) {
    Moments<T> m;
    for (int k = 0; k < 4; ++k) {
        m.raw[k] = kept(sums, k, slot);
        m.raw_sum[k] = m.raw[k] * sums.weight;
    }
    for (int k = 0; k < 3; ++k) m.central_sum[k] = kept(sums, central_index(k + 2), slot);
    const T inverse = sums.weight > 0 ? 1 / sums.weight : T(1);
    m.central[0] = m.central_sum[0] * unbiased_factor(sums.weight, sums.weight2);
    m.central[1] = m.central_sum[1] * inverse;
    m.central[2] = m.central_sum[2] * inverse;
    return m;
}

// Central moments with divisor W, by the binomials of the raw ones.
template <class T>
void central_from_raw(const T* raw, T* central) {
    const T m = raw[0];
    central[0] = raw[1] - m * m;
    central[1] = raw[2] - 3 * m * raw[1] + 2 * m * m * m;
    central[2] = raw[3] - 4 * m * raw[2] + 6 * m * m * raw[1] - 3 * (m * m) * (m * m);
}

template <class T>
Moments<T> power_sum_moments(const Job<T>& job, const Accumulators<T>& sums, int64_t slot) {
    const T weight = sums.weight > 0 ? sums.weight : T(1);
    Moments<T> m;
    for (int k = 0; k < 4; ++k) {
        m.raw_sum[k] = kept(sums, k, slot);
        m.raw[k] = m.raw_sum[k] / weight;
    }
    if (job.method == Method::kUserMean) {
        m.raw[0] = sums.mean[slot];
        m.raw_sum[0] = m.raw[0] * sums.weight;
        for (int k = 0; k < 3; ++k) {
            m.central_sum[k] = kept(sums, central_index(k + 2), slot);
            m.central[k] = m.central_sum[k] / weight;
        }
    } else {
        central_from_raw(m.raw, m.central);
        for (int k = 0; k < 3; ++k) m.central_sum[k] = m.central[k] * sums.weight;
    }
    if (sums.weight > 0) m.central[0] *= sums.weight * unbiased_factor(sums.weight, sums.weight2);
    return m;
}

template <class T>
void finish_variable(const Job<T>& job, const Moments<T>& m, int64_t j) {
    if (job.method != Method::kUserMean) put(mean_of(job), j, m.raw[0]);
    put(raw_moment2_of(job), j, m.raw[1]);
    put(raw_moment3_of(job), j, m.raw[2]);
    put(raw_moment4_of(job), j, m.raw[3]);
    put(sum_of(job), j, m.raw_sum[0]);
    put(raw_sum2_of(job), j, m.raw_sum[1]);
    put(raw_sum3_of(job), j, m.raw_sum[2]);
    put(raw_sum4_of(job), j, m.raw_sum[3]);
    put(central_moment2_of(job), j, m.central[0]);
    put(central_moment3_of(job), j, m.central[1]);
    put(central_moment4_of(job), j, m.central[2]);
    put(central_sum2_of(job), j, m.central_sum[0]);
    put(central_sum3_of(job), j, m.central_sum[1]);
    put(central_sum4_of(job), j, m.central_sum[2]);
    finish_derived(job, j, m.raw[0], m.central[0], m.central[1], m.central[2]);
}

// Fast and caller's-mean runs add up raw cross-products; W m m' centres them.
template <class T>
void centre(const Job<T>& job, Accumulators<T>& sums) {
    const int64_t p = job.blocks.p, ld = job.blocks.padded();
    const T weight = sums.weight > 0 ? sums.weight : T(1);
    const auto mean = [&](int64_t j) {
        const int64_t slot = job.blocks.slot(j);
        return job.method == Method::kUserMean ? sums.mean[slot] : sums.power[0][slot] / weight;
    };
    for (int64_t i = 0; i < p; ++i) {
        const T scaled = sums.weight * mean(i);
        for (int64_t j = i; j < p; ++j) sums.cross[i * ld + j] -= scaled * mean(j);
    }
}

}  // namespace

template <class T>
void finish_derived(const Job<T>& job, int64_t j, T mean, T c2, T c3, T c4) {
    put(kurtosis_of(job), j, c4 / (c2 * c2) - 3);
    put(skewness_of(job), j, c3 / root(c2 * c2 * c2));
    put(variation_of(job), j, root(c2) / mean);
}
template void finish_derived(const Job<double>&, int64_t, double, double, double, double);
template void finish_derived(const Job<float>&, int64_t, float, float, float, float);

template <class T, class Cross>
void finish_matrices(const Job<T>& job, T factor, Cross cross) {
    const int64_t p = job.blocks.p;
    T* const covariance = covariance_of(job);
    T* const correlation = correlation_of(job);
    T* const product = job.method == Method::kConversion ? nullptr : cross_product_of(job);
    const auto write = [&](T* matrix, MatrixStorage storage, int64_t i, int64_t j, T value) {
        if (matrix == nullptr) return;
        matrix[matrix_index(storage, p, i, j)] = value;
        if (storage == MatrixStorage::kFull) matrix[j * p + i] = value;
    };
    for (int64_t i = 0; i < p; ++i) {
        if (!job.mask[i]) continue;
        for (int64_t j = i; j < p; ++j) {
            if (!job.mask[j]) continue;
            const T c = cross(i, j);
            write(product, job.cross_product, i, j, c);
            write(covariance, job.covariance, i, j, c * factor);
            // The diagonal of a correlation holds the variances, from which a later run goes on.
            if (correlation != nullptr)
                write(correlation, job.correlation, i, j, i == j ? c * factor : c / root(cross(i, i) * cross(j, j)));
        }
    }
}

template <class T>
void finish(const Job<T>& job, Accumulators<T>& sums) {
    for (int64_t j = 0; j < job.blocks.p; ++j) {
        if (!job.mask[j]) continue;
        const int64_t slot = job.blocks.slot(j);
        const Moments<T> moments =
            job.method == Method::kOnePass ? one_pass_moments(sums, slot) : power_sum_moments(job, sums, slot);
        finish_variable(job, moments, j);
    }
    if (sums.cross == nullptr) return;
    if (job.method != Method::kOnePass) centre(job, sums);
    finish_matrices(job, unbiased_factor(sums.weight, sums.weight2),
                    [&](int64_t i, int64_t j) { return sums.cross[i * job.blocks.padded() + j]; });
}
template void finish(const Job<double>&, Accumulators<double>&);
template void finish(const Job<float>&, Accumulators<float>&);

template <class T>
int32_t convert(const Job<T>& job, T weight, T weight2) {
    const T inverse = weight > 0 ? 1 / weight : T(1);
    const T factor = unbiased_factor(weight, weight2);
    // A moment comes from its sum where the request has the sum; else it stands as it is.
    const auto moment = [](const T* sum, T* array, int64_t j, T scale) {
        if (array == nullptr) return T(0);
        if (sum != nullptr) array[j] = sum[j] * scale;
        return array[j];
    };
    for (int64_t j = 0; j < job.blocks.p; ++j) {
        if (!job.mask[j]) continue;
        const T mean = moment(sum_of(job), mean_of(job), j, inverse);
        moment(raw_sum2_of(job), raw_moment2_of(job), j, inverse);
        moment(raw_sum3_of(job), raw_moment3_of(job), j, inverse);
        moment(raw_sum4_of(job), raw_moment4_of(job), j, inverse);
        const T c2 = moment(central_sum2_of(job), central_moment2_of(job), j, factor);
        const T c3 = moment(central_sum3_of(job), central_moment3_of(job), j, inverse);
        const T c4 = moment(central_sum4_of(job), central_moment4_of(job), j, inverse);
        finish_derived(job, j, mean, c2, c3, c4);
    }
    if (!job.wants(kCovariance | kCorrelation)) return SsStatusOk;
    // The results may overwrite the cross-products, which may be packed otherwise.
    const int64_t p = job.blocks.p;
    service::Block<T> full(static_cast<std::size_t>(p) * static_cast<std::size_t>(p));
    if (!full) return SsStatusMemory;
    expand(job.cross_product, p, cross_product_of(job), full.get());
    finish_matrices(job, factor, [&](int64_t i, int64_t j) { return full.get()[i * p + j]; });
    return SsStatusOk;
}
template int32_t convert(const Job<double>&, double, double);
template int32_t convert(const Job<float>&, float, float);

}  // namespace nax::stats::basic
