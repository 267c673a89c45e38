// Double-precision pieces of the scalar paths.
#pragma once

#include "vmath/frame/scalar.h"

namespace nax::vmath {

inline int32_t biased_exponent(double x) { return static_cast<int32_t>(bits_of(x) >> 52) & 0x7FF; }
inline int32_t biased_exponent(float x) { return static_cast<int32_t>(bits_of(x) >> 23) & 0xFF; }

// 2^k for a k of the normal range.
inline double power_of_two(int64_t k) { return from_bits<double>(static_cast<uint64_t>(k + 1023) << 52); }

// A sum of two doubles, the second no more than half an ulp of the first, or nearly so.
struct DoubleWord {
    double high, low;
};

// Exact sum of a and b where |a| >= |b| or a is 0.
inline DoubleWord fast_two_sum(double a, double b) {
    const double sum = a + b;
    return {sum, b - (sum - a)};
}

}  // namespace nax::vmath
