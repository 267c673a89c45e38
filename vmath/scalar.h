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

// 2^k (high + rest) where the result may lie below the normal range, in one rounding. The sum is built 60 binades up;
// where many of its bits survive, it comes down in a head that fits the denormal grid and a tail that is rounded to it.
inline double scale_below_normal(double high, double rest, int64_t k) {
    const double up = power_of_two(k + 60);
    const double wide = (high + rest) * up;
    if (k + 60 + 1023 <= 50) return wide * 0x1p-60;
    const double shifted = wide * 6442450944.0;
    const double head = (wide + shifted) - shifted;
    const double tail = (high * up - head) + rest * up;
    return head * 0x1p-60 + tail * 0x1p-60;
}

}  // namespace nax::vmath
