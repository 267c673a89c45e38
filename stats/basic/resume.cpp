// From results back to accumulators, and from thread to thread.
#include <cmath>

#include "stats/basic/state.h"

namespace nax::stats::basic {
namespace {

// Raw moment of a power from the array of the moment, or of the sum.
template <class T>
T raw_moment(const T* moment, const T* sum, int64_t j, T weight) {
    if (moment != nullptr) return moment[j];
    return sum != nullptr ? sum[j] / weight : T(0);
}

template <class T>
void restore_variable(const Job<T>& job, Accumulators<T>& sums, int64_t j, int64_t slot) {
    const T weight = sums.weight;
    const T raw[4] = {raw_moment(mean_of(job), sum_of(job), j, weight),
                      raw_moment(raw_moment2_of(job), raw_sum2_of(job), j, weight),
                      raw_moment(raw_moment3_of(job), raw_sum3_of(job), j, weight),
                      raw_moment(raw_moment4_of(job), raw_sum4_of(job), j, weight)};
    const T* const central_sum[3] = {central_sum2_of(job), central_sum3_of(job), central_sum4_of(job)};
    const T* const central[3] = {central_moment2_of(job), central_moment3_of(job), central_moment4_of(job)};
    const T scale[3] = {weight - sums.weight2 / weight, weight, weight};
    const T m = raw[0];
    // What a request leaves out is rebuilt from raw moments. A third or fourth central sum alone has none: its lower
    // ones are lost between the runs.
    const T rebuilt[3] = {raw[1] - m * m, raw[2] - 3 * m * raw[1] + 2 * m * m * m,
                          raw[3] - 4 * m * raw[2] + 6 * m * m * raw[1] - 3 * (m * m) * (m * m)};
    const bool known[3] = {job.wants(kRawMoment2 | kRawSum2), job.wants(kRawMoment3 | kRawSum3),
                           job.wants(kRawMoment4 | kRawSum4)};
    const bool sums_of_powers = job.method != Method::kOnePass;
    for (int k = 0; k < 4; ++k)
        if (sums.power[k] != nullptr) sums.power[k][slot] = sums_of_powers ? raw[k] * weight : raw[k];
    for (int k = 0; k < 3; ++k) {
        T* const to = sums.power[central_index(k + 2)];
        if (to == nullptr) continue;
        if (central_sum[k] != nullptr)
            to[slot] = central_sum[k][j];
        else if (central[k] != nullptr)
            to[slot] = central[k][j] * scale[k];
        else
            to[slot] = known[k] ? rebuilt[k] * weight : T(0);
    }
}

template <class T>
void restore_cross_products(const Job<T>& job, Accumulators<T>& sums) {
    const int64_t p = job.blocks.p, ld = job.blocks.padded();
    const T* const product = cross_product_of(job);
    const T* const covariance = covariance_of(job);
    const T* const correlation = correlation_of(job);
    const T scale = sums.weight - sums.weight2 / sums.weight;
    const auto at = [&](const T* matrix, MatrixStorage storage, int64_t i, int64_t j) {
        return matrix[matrix_index(storage, p, i, j)];
    };
    const auto earlier = [&](int64_t i, int64_t j) {
        if (product != nullptr) return at(product, job.cross_product, i, j);
        if (covariance != nullptr) return at(covariance, job.covariance, i, j) * scale;
        const T c = at(correlation, job.correlation, i, j) * scale;
        if (i == j) return c;
        return c * std::sqrt(at(correlation, job.correlation, i, i) * at(correlation, job.correlation, j, j));
    };
    for (int64_t i = 0; i < p; ++i)
        for (int64_t j = i; j < p; ++j) sums.cross[i * ld + j] = earlier(i, j);
}

// Centred cross-products to raw ones, with the mean that centred them.
template <class T>
void decentre(const Job<T>& job, Accumulators<T>& sums) {
    const int64_t p = job.blocks.p, ld = job.blocks.padded();
    const T* const saved = reals<T>(job.task.work_vector);
    const auto mean = [&](int64_t j) {
        const int64_t slot = job.blocks.slot(j);
        if (job.method == Method::kFast) return sums.power[0][slot] / sums.weight;
        return saved != nullptr ? saved[j] : sums.mean[slot];
    };
    for (int64_t i = 0; i < p; ++i) {
        const T scaled = sums.weight * mean(i);
        for (int64_t j = i; j < p; ++j) sums.cross[i * ld + j] += scaled * mean(j);
    }
}

// P. Pebay (2008): central sums about the joint mean. `a` and `b` are the weights, `d` the second mean less the first.
template <class T>
void merge_central(Accumulators<T>& into, const Accumulators<T>& from, int64_t slot, T a, T b, T d, bool second,
                   bool higher) {
    const T r = 1 / (a + b);
    const auto sum = [slot](const Accumulators<T>& s, int power) -> T& { return s.power[central_index(power)][slot]; };
    if (higher) {
        const T m2a = sum(into, 2), m2b = sum(from, 2), m3a = sum(into, 3), m3b = sum(from, 3);
        const T dr = d * r;
        sum(into, 4) += sum(from, 4) + (a * r) * (b * r) * ((a * a - a * b + b * b) * r) * (d * d) * (d * d) +
                        6 * (a * a * m2b + b * b * m2a) * dr * dr + 4 * (a * m3b - b * m3a) * dr;
        sum(into, 3) += m3b + (a * r) * (b * r) * (a - b) * (d * d * d) + 3 * (a * m2b - b * m2a) * dr;
    }
    if (second) sum(into, 2) += sum(from, 2) + (a * r) * b * d * d;
}

}  // namespace

template <class T>
void restore(const Job<T>& job, Accumulators<T>& sums) {
    // Block by block, as some variables stand in two.
    for (int64_t b = 0; b < job.blocks.count(); ++b)
        for (int64_t l = 0; l < job.blocks.lanes && job.blocks.base(b) + l < job.blocks.p; ++l)
            restore_variable(job, sums, job.blocks.base(b) + l, b * job.blocks.lanes + l);
    if (sums.cross == nullptr) return;
    restore_cross_products(job, sums);
    if (job.method != Method::kOnePass) decentre(job, sums);
}
template void restore(const Job<double>&, Accumulators<double>&);
template void restore(const Job<float>&, Accumulators<float>&);

template <class T>
void merge(const Job<T>& job, Order order, Accumulators<T>& into, const Accumulators<T>& from) {
    const T a = into.weight, b = from.weight;
    if (b == 0) return;
    const int64_t padded = job.blocks.padded(), p = job.blocks.p;
    if (job.method != Method::kOnePass) {
        for (int k = 0; k < kPowers; ++k)
            for (int64_t s = 0; into.power[k] != nullptr && s < padded; ++s) into.power[k][s] += from.power[k][s];
        for (int64_t e = 0; into.cross != nullptr && e < padded * padded; ++e) into.cross[e] += from.cross[e];
    } else {
        const T share = b / (a + b);
        const auto difference = [&](int64_t slot) { return from.power[0][slot] - into.power[0][slot]; };
        for (int64_t i = 0; into.cross != nullptr && i < p; ++i) {
            const T d = a * share * difference(job.blocks.slot(i));
            for (int64_t j = i; j < p; ++j) {
                const int64_t e = i * padded + j;
                into.cross[e] += from.cross[e] + d * difference(job.blocks.slot(j));
            }
        }
        for (int64_t s = 0; s < padded; ++s) {
            merge_central(into, from, s, a, b, difference(s), order.central >= 2, order.central >= 4);
            for (int k = 0; k < order.raw; ++k) into.power[k][s] += share * (from.power[k][s] - into.power[k][s]);
        }
    }
    into.weight = a + b;
    into.weight2 += from.weight2;
}
template void merge(const Job<double>&, Order, Accumulators<double>&, const Accumulators<double>&);
template void merge(const Job<float>&, Order, Accumulators<float>&, const Accumulators<float>&);

}  // namespace nax::stats::basic
