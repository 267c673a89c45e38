// Errors in units in the last place, and what a sweep over many arguments found.
#pragma once

#include <array>
#include <cstdint>
#include <functional>

#include "tests/lib/reference.h"

namespace nax::testing {

// |computed - exact| in ulp of the exact value's binade (of the denormal grid below the normal range). Infinite where
// one of them is infinite or NaN and the other isn't; `exact` beyond the largest number counts as infinite.
double ulp_error(float computed, double exact);
double ulp_error(double computed, long double exact);

struct ErrorStats {
    static constexpr int bins = 64;
    double max = 0;    // largest error
    double worst = 0;  // its argument
    double sum = 0;    // of all errors
    uint64_t count = 0;
    std::array<uint64_t, bins> histogram{};  // of errors in [0, 1), the last bin of larger ones too

    void add(double x, double error);
    double mean() const { return count == 0 ? 0 : sum / static_cast<double>(count); }
};

template <class T>
using Kernel = void (*)(int32_t n, const T* a, T* r);

// Called for each argument with its error, in the order of the points.
using Observer = std::function<void(double x, double error)>;

// Measures a kernel at the points. Double results are compared with a 64-bit reference first; whatever comes near the
// maximum is settled with MPFR.
template <class T>
void measure(Kernel<T> kernel, const Reference& reference, const T* points, int count, ErrorStats& stats,
             const Observer& observer = nullptr);

// The floats between `low` and `high` in ascending order, every `stride`-th from the `first`-th on, at most `count`;
// returns how many. Both zeros are met.
int enumerate_floats(float low, float high, uint64_t first, uint32_t stride, float* points, int count);
uint64_t floats_between(float low, float high);

// `count` points of [low, high]: a few next to both ends, then by turns uniform over the interval and uniform over its
// representable numbers. The same points for the same seed.
template <class T>
void sample(T low, T high, uint64_t seed, T* points, int count);

}  // namespace nax::testing
