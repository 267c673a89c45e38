// Sums and products of two doubles, and the logarithm as such a sum, for the scalar paths of every instruction set.
//
// Without fused multiply-add a product is split (Dekker 1971); both ways give the same exact error where nothing
// overflows or underflows.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>

#include "simd/isa.h"
#include "vmath/log/log_tables.inc"

namespace nax::vmath::NAX_ISA {

struct Word {
    double high, low;
};

// a + b exactly: where |a| >= |b| or a is 0, and anywhere (Knuth).
[[gnu::always_inline]] inline Word fast_sum(double a, double b) {
    const double s = a + b;
    return {s, b - (s - a)};
}
[[gnu::always_inline]] inline Word sum(double a, double b) {
    const double s = a + b, t = s - a;
    return {s, (a - (s - t)) + (b - t)};
}

// The error of p, the rounded product of a and b.
[[gnu::always_inline]] inline double product_error(double a, double b, double p) {
#ifdef __FMA__
    return std::fma(a, b, -p);
#else
    constexpr double split = 134217729.0;  // 2^27 + 1
    const double as = a * split, bs = b * split;
    const double ah = as - (as - a), bh = bs - (bs - b);
    const double al = a - ah, bl = b - bh;
    return ((ah * bh - p) + ah * bl + al * bh) + al * bl;
#endif
}
[[gnu::always_inline]] inline Word product(double a, double b) {
    const double p = a * b;
    return {p, product_error(a, b, p)};
}
[[gnu::always_inline]] inline Word product(Word a, double b) {
    const Word p = product(a.high, b);
    return fast_sum(p.high, p.low + a.low * b);
}
[[gnu::always_inline]] inline Word product(Word a, Word b) {
    const Word p = product(a.high, b.high);
    return fast_sum(p.high, p.low + (a.high * b.low + a.low * b.high));
}
[[gnu::always_inline]] inline Word sum(Word a, Word b) {
    const Word s = sum(a.high, b.high);
    return fast_sum(s.high, s.low + (a.low + b.low));
}

// Horner's rule, coefficients from the lowest.
template <int N>
[[gnu::always_inline]] inline double polynomial(const double (&c)[N], double x) {
    double p = c[N - 1];
    for (int k = N - 2; k >= 0; --k) p = p * x + c[k];
    return p;
}

// ln(x), x positive and normal:  ln(2^e z) = e ln2 - ln(c) + ln(1 + r),  r = z c - 1,  |r| <= 2^-7 + 2^-13,  c one of
// 65 reciprocals of 14 bits. The series runs to r^10/10; the error is below 2^-66 where the logarithm is large, and
// below 2^-59 of it next to 1.
inline Word log_word(double x) {
    constexpr double ln2_high = 0.6931471805598903, ln2_low = 5.497923018708371e-14;  // the first in units of 2^-42
    const auto bits = std::bit_cast<int64_t>(x);
    const auto e = static_cast<double>((bits >> 52) - 1023);
    const double z = std::bit_cast<double>((bits & 0xFFFFFFFFFFFFF) | 0x3FF0000000000000);
    // 2^46 + 1: the ulp of the sum is 1/64, so its low seven bits are round(64 (z - 1)).
    const auto row = std::bit_cast<uint64_t>(z + 70368744177665.0) & 127;
    const Word p = product(z, log_rows_reciprocal[row]);
    const double r = p.high - 1.0, r2 = r * r, r4 = r2 * r2;
    const double tail = (1.0 / 3 - r * (1.0 / 4)) + r2 * (1.0 / 5 - r * (1.0 / 6)) +
                        r4 * ((1.0 / 7 - r * (1.0 / 8)) + r2 * (1.0 / 9 - r * (1.0 / 10)));
    const double rest = r * r2 * tail - 0.5 * r2;  // ln(1 + r) - r
    const Word lead = sum(e * ln2_high + log_rows_high[row], r);
    return fast_sum(lead.high, lead.low + ((e * ln2_low + log_rows_low[row]) + (p.low - r * p.low + rest)));
}

}  // namespace nax::vmath::NAX_ISA
