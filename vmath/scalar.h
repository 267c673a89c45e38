// What the scalar paths share: statuses, and arithmetic that the compiler must leave to run time because its exception
// flags are part of the result.
#pragma once

#include <bit>
#include <cstdint>

namespace nax::vmath {

constexpr int32_t kSuccess = 0;
constexpr int32_t kDomain = 1;
constexpr int32_t kSingularity = 2;
constexpr int32_t kOverflow = 3;
constexpr int32_t kUnderflow = 4;

// The value, hidden from constant folding.
template <class T>
[[gnu::always_inline]] inline T at_run_time(T x) {
    asm volatile("" : "+x"(x));
    return x;
}

inline int32_t biased_exponent(double x) { return static_cast<int32_t>(std::bit_cast<uint64_t>(x) >> 52) & 0x7FF; }

// 2^k for a k of the normal range.
inline double power_of_two(int64_t k) { return std::bit_cast<double>(static_cast<uint64_t>(k + 1023) << 52); }

// A sum of two doubles, the second below half an ulp of the first or nearly so.
struct DoubleWord {
    double high, low;
};

// Exact sum of a and b where |a| >= |b| or a is 0.
inline DoubleWord fast_two_sum(double a, double b) {
    const double sum = a + b;
    return {sum, b - (sum - a)};
}

}  // namespace nax::vmath
