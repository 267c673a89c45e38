// Missing values by multiple imputation: EM to the mode, then data augmentation for each imputation.
#include <algorithm>
#include <cmath>

#include "nax/statistics_robust.h"
#include "stats/matrix_storage.h"
#include "stats/missing/normal_model.h"
#include "stats/task.h"

namespace nax::stats::missing {
namespace {

// A fixed start of the private stream: equal input gives equal draws.
constexpr uint32_t kSeed[2] = {0, 0x40000};

struct Parameters {
    int64_t em_iterations, iterations, imputations, missing_entries;
    double tolerance;
};

// Truncated; NaN and what no integer holds count as 0.
template <class T>
int64_t whole(T value) {
    return value > T(-0x1p62) && value < T(0x1p62) ? static_cast<int64_t>(value) : 0;
}

template <class T>
Parameters parameters(const T* given) {
    Parameters result{whole(given[0]), whole(given[1]), whole(given[3]), whole(given[4]),
                      static_cast<double>(given[2])};
    if (result.em_iterations <= 0) result.em_iterations = 50;
    if (result.iterations <= 0) result.iterations = 30;
    if (!(result.tolerance > 0)) result.tolerance = 0.001;
    return result;
}

int32_t check(const Task& task, uint64_t method) {
    if (integer_or(task, task.dimension, 0) < 1) return SsStatusBadDimension;
    if (!is_exact_storage(integer_or(task, task.observation_storage, 0))) return SsStatusBadStorage;
    if (task.missing_params == nullptr) return SsStatusNoMissingParams;
    if (task.missing_param_count == nullptr) return SsStatusNoMissingParamCount;
    if (integer(task, task.missing_param_count) != 5) return SsStatusBadMissingParamCount;
    if (task.simulated_values != nullptr && task.simulated_count == nullptr) return SsStatusNoSimulatedCount;
    if (task.simulated_values == nullptr && task.simulated_count != nullptr) return SsStatusNoSimulatedValues;
    const bool estimates = task.estimates != nullptr && task.estimate_count != nullptr;
    if (!estimates && task.simulated_values == nullptr) return SsStatusNothingRequested;
    if (method != NAX_SS_METHOD_IMPUTATION) return SsStatusBadMethod;
    if (integer_or(task, task.observation_count, 0) < 1) return SsStatusBadObservationCount;
    return task.observations == nullptr ? SsStatusNoObservations : SsStatusOk;
}

class PrivateStream {
public:
    PrivateStream() = default;
    PrivateStream(const PrivateStream&) = delete;
    PrivateStream& operator=(const PrivateStream&) = delete;
    ~PrivateStream() {
        if (stream_ != nullptr) __stoDeleteStream(&stream_);
    }
    // A stream that came with a failure is deleted like any other.
    int32_t open() { return __stoNewStreamEx(&stream_, NAX_BRNG_MCG59, 2, kSeed); }
    nax_stream* get() const { return stream_; }

private:
    nax_stream* stream_ = nullptr;
};

constexpr int64_t estimate_size(int64_t p) { return p * (p + 3) / 2; }

// Mean and packed lower covariance by rows, in the caller's units.
template <class T>
void read_estimate(const T* from, int64_t p, const NormalModel<T>& model) {
    const int64_t q = p + 1;
    double* const theta = model.theta();
    theta[0] = -1;
    for (int64_t i = 0; i < p; ++i) {
        theta[i + 1] = theta[(i + 1) * q] = static_cast<double>(from[i]) - model.centre()[i];
        for (int64_t j = 0; j <= i; ++j)
            theta[(i + 1) * q + j + 1] = theta[(j + 1) * q + i + 1] =
                static_cast<double>(from[p + matrix_index(MatrixStorage::kLower, p, i, j)]);
    }
}
template <class T>
void write_estimate(const NormalModel<T>& model, int64_t p, T* to) {
    const int64_t q = p + 1;
    for (int64_t i = 0; i < p; ++i) {
        to[i] = static_cast<T>(model.theta()[i + 1] + model.centre()[i]);
        for (int64_t j = 0; j <= i; ++j)
            to[p + matrix_index(MatrixStorage::kLower, p, i, j)] = static_cast<T>(model.theta()[(i + 1) * q + j + 1]);
    }
}
template <class T>
void read_prior(const Task& task, int64_t p, NormalModel<T>& model) {
    const T* const from = reals<T>(task.prior);
    if (from == nullptr || integer_or(task, task.prior_count, 0) < estimate_size(p) + 2) return;
    Prior& prior = model.prior();
    for (int64_t i = 0; i < p; ++i) {
        prior.mean[i] = static_cast<double>(from[i]) - model.centre()[i];
        for (int64_t j = 0; j < p; ++j)
            prior.scale[i * p + j] = static_cast<double>(from[p + matrix_index(MatrixStorage::kLower, p, i, j)]);
    }
    prior.tau = std::max(0.0, static_cast<double>(from[estimate_size(p)]));
    prior.m = std::max(p, whole(from[estimate_size(p) + 1]));
}

template <class T>
struct Outputs {
    T* simulated;  // null where not asked for
    T* estimates;
};

// The chains: from the EM estimate, an imputation and a posterior draw in turn.
template <class T>
int32_t augment(NormalModel<T>& model, int64_t p, const Parameters& given, nax_stream* stream, double* mode,
                double* values, const Outputs<T>& out) {
    const int64_t elements = (p + 1) * (p + 1), k = given.missing_entries;
    std::copy(model.theta(), model.theta() + elements, mode);
    for (int64_t m = 0; m < given.imputations; ++m) {
        std::copy(mode, mode + elements, model.theta());
        for (int64_t t = 0; t < given.iterations; ++t) {
            if (const int32_t status = model.draw_missing(stream, values)) return status;
            if (const int32_t status = model.draw_theta(stream)) return status;
            if (out.estimates != nullptr)
                write_estimate(model, p, out.estimates + (m * given.iterations + t) * estimate_size(p));
        }
        for (int64_t i = 0; out.simulated != nullptr && i < k; ++i)
            out.simulated[m * k + i] = static_cast<T>(values[i]);
    }
    return SsStatusOk;
}

// Whether a count is the product of the other numbers.
bool is_product(int64_t count, int64_t a, int64_t b, int64_t c) {
    int64_t ab, abc;
    return !__builtin_mul_overflow(a, b, &ab) && !__builtin_mul_overflow(ab, c, &abc) && count == abc;
}

template <class T>
int32_t impute(const Task& task, const Observations<T>& data) {
    const int64_t p = data.p;
    const Parameters given = parameters(reals<T>(task.missing_params));
    Patterns patterns;
    if (const int32_t status = patterns.find(data)) return status;
    if (patterns.missing_entries() != given.missing_entries) return SsStatusBadMissingCount;
    if (given.imputations <= 0 || given.missing_entries <= 0) return SsStatusBadImputationCount;
    const bool simulated = task.simulated_values != nullptr;
    const bool estimates = task.estimates != nullptr && task.estimate_count != nullptr;
    if (simulated && !is_product(integer(task, task.simulated_count), given.imputations, given.missing_entries, 1))
        return SsStatusBadSimulatedCount;
    if (estimates &&
        !is_product(integer(task, task.estimate_count), given.imputations, given.iterations, estimate_size(p)))
        return SsStatusBadEstimateCount;
    PrivateStream stream;
    if (const int32_t status = stream.open(); status < 0)
        return status == STO_STATUS_NO_MEMORY ? int32_t{SsStatusMemory} : status;
    NormalModel<T> model(data, patterns);
    if (const int32_t status = model.open()) return status;
    service::Block<double> block(static_cast<std::size_t>((p + 1) * (p + 1) + given.missing_entries));
    if (!block) return SsStatusMemory;
    if (task.initial_estimates != nullptr && integer_or(task, task.initial_estimate_count, 0) == estimate_size(p))
        read_estimate(reals<const T>(task.initial_estimates), p, model);
    else
        model.start_from_data();
    read_prior(task, p, model);
    for (int64_t iteration = 0; iteration < given.em_iterations; ++iteration)
        if (model.em_step() < given.tolerance) break;
    const Outputs<T> out{simulated ? reals<T>(task.simulated_values) : nullptr,
                         estimates ? reals<T>(task.estimates) : nullptr};
    return augment(model, p, given, stream.get(), block.get(), block.get() + (p + 1) * (p + 1), out);
}

template <class T>
int32_t compute(Task* record, uint64_t method) {
    if (record == nullptr) return SsStatusNullTask;
    const Task& task = *record;
    if (const int32_t status = check(task, method)) return status;
    const int64_t p = integer(task, task.dimension);
    return impute(task, Observations<T>{reals<const T>(task.observations), p, integer(task, task.observation_count),
                                        is_rows(integer(task, task.observation_storage), p)});
}

}  // namespace
}  // namespace nax::stats::missing

extern "C" int32_t _stodSSMissingValues(nax_ss_task* task, uint64_t, uint64_t method, const nax_threaders*) {
    return nax::stats::missing::compute<double>(task, method);
}
extern "C" int32_t _stosSSMissingValues(nax_ss_task* task, uint64_t, uint64_t method, const nax_threaders*) {
    return nax::stats::missing::compute<float>(task, method);
}
