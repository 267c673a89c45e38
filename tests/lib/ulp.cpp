#include "tests/lib/ulp.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace nax::testing {
namespace {

template <class T, class Wide>
double error_in_ulps(T computed, Wide exact, Wide overflow) {
    constexpr int precision = std::numeric_limits<T>::digits;
    constexpr double infinity = std::numeric_limits<double>::infinity();
    if (std::isnan(exact)) return std::isnan(computed) ? 0 : infinity;
    if (std::isinf(computed))
        return std::fabs(exact) >= overflow && std::signbit(computed) == std::signbit(exact) ? 0 : infinity;
    if (std::isnan(computed) || std::isinf(exact)) return infinity;
    if (exact == 0) return computed == 0 ? 0 : infinity;
    const int exponent = std::max(std::ilogb(exact) + 1 - precision, std::numeric_limits<T>::min_exponent - precision);
    return static_cast<double>(std::scalbn(std::fabs(static_cast<Wide>(computed) - exact), -exponent));
}

// Monotone map of all finite numbers to integers, -0 next to +0.
int64_t ordinal(double x) {
    const auto b = std::bit_cast<int64_t>(x);
    return b >= 0 ? b : INT64_MIN - b - 1;
}
int64_t ordinal(float x) {
    const auto b = std::bit_cast<int32_t>(x);
    return b >= 0 ? b : int64_t{INT32_MIN} - b - 1;
}
void from_ordinal(int64_t i, double& x) { x = std::bit_cast<double>(i >= 0 ? i : INT64_MIN - (i + 1)); }
void from_ordinal(int64_t i, float& x) {
    x = std::bit_cast<float>(static_cast<int32_t>(i >= 0 ? i : int64_t{INT32_MIN} - (i + 1)));
}

}  // namespace

double ulp_error(float computed, double exact) {
    // The common case without library calls.
    const auto field = std::bit_cast<uint64_t>(exact) >> 52 & 0x7FF;
    if (field > 1023 - 126 && field < 1023 + 127 && std::isfinite(computed))
        return std::fabs(static_cast<double>(computed) - exact) * std::bit_cast<double>((2 * 1023 + 23 - field) << 52);
    return error_in_ulps<float, double>(computed, exact, 0x1.ffffffp+127);
}

double ulp_error(double computed, long double exact) {
    return error_in_ulps<double, long double>(computed, exact, 0x1.fffffffffffff8p+1023L);
}

void ErrorStats::add(double x, double error) {
    if (error > max) {
        max = error;
        worst = x;
    }
    sum += error;
    ++count;
    ++histogram[static_cast<size_t>(std::min(error * bins, bins - 1.0))];
}

template <>
void measure(Kernel<float> kernel, const Reference& reference, const float* points, int count, ErrorStats& stats,
             const Observer& observer) {
    std::vector<float> results(static_cast<size_t>(count));
    kernel(count, points, results.data());
    for (int i = 0; i < count; ++i) {
        const double x = static_cast<double>(points[i]);
        const double error = ulp_error(results[static_cast<size_t>(i)], reference.in_double(x));
        stats.add(x, error);
        if (observer) observer(x, error);
    }
}

template <>
void measure(Kernel<double> kernel, const Reference& reference, const double* points, int count, ErrorStats& stats,
             const Observer& observer) {
    std::vector<double> results(static_cast<size_t>(count));
    kernel(count, points, results.data());
    for (int i = 0; i < count; ++i) {
        const double x = points[i], y = results[static_cast<size_t>(i)];
        double error = ulp_error(y, reference.in_long_double(static_cast<long double>(x)));
        if (error > 0.99 * stats.max) error = exact_ulp_error(reference, x, y);
        stats.add(x, error);
        if (observer) observer(x, error);
    }
}

uint64_t floats_between(float low, float high) { return static_cast<uint64_t>(ordinal(high) - ordinal(low)) + 1; }

int enumerate_floats(float low, float high, uint64_t first, uint32_t stride, float* points, int count) {
    const int64_t start = ordinal(low), end = ordinal(high);
    int found = 0;
    for (int64_t i = start + static_cast<int64_t>(first * stride); i <= end && found < count; i += stride)
        from_ordinal(i, points[found++]);
    return found;
}

template <class T>
void sample(T low, T high, uint64_t seed, T* points, int count) {
    constexpr int near_ends = 8;
    const int64_t start = ordinal(low), end = ordinal(high);
    std::mt19937_64 random(seed);
    std::uniform_int_distribution<int64_t> number(start, end);
    // Halves, so that the width of no interval overflows.
    std::uniform_real_distribution<double> fraction(0.0, 1.0);
    const double half_low = 0.5 * static_cast<double>(low), half_width = 0.5 * static_cast<double>(high) - half_low;
    for (int i = 0; i < count; ++i) {
        if (i < 2 * near_ends && end - start >= near_ends)
            from_ordinal(i % 2 == 0 ? start + i / 2 : end - i / 2, points[i]);
        else if (i % 2 == 0)
            from_ordinal(number(random), points[i]);
        else
            points[i] = std::clamp(static_cast<T>(2 * (half_low + fraction(random) * half_width)), low, high);
    }
}

template void sample(float, float, uint64_t, float*, int);
template void sample(double, double, uint64_t, double*, int);

}  // namespace nax::testing
