// Scalar paths of Ln, Log2, Log10 and Log1p.
//
//     ln(2^e z) = e ln2 - ln(c) + ln(1 + r),   r = z c - 1,   z in [1, 2),   c a 14-bit reciprocal from 65 rows
//
// summed as a pair of doubles; another base multiplies the mantissa's part by 1/ln(base), so powers of two keep an
// exact log2. Within 0.52 ulp. The float functions go through the double ones.
#include "vmath/log/log_rare.h"

#include <cmath>

#include "vmath/log/log_tables.inc"
#include "vmath/scalar.h"

namespace nax::vmath {
namespace {

// log(2) = two_high + two_low and 1/ln(base) = factor_high + factor_low. two_high ends in zeros: its product with an
// exponent is exact.
struct Base {
    double two_high, two_low, factor_high, factor_low;
};
constexpr Base kBaseE = {0.6931471805598903, 5.497923018708371e-14, 1.0, 0.0};
constexpr Base kBaseTwo = {1.0, 0.0, 0x1.71547652b82fep+0, 0x1.777d0ffda0d24p-56};
constexpr Base kBaseTen = {0.30102999566224753, 1.7336659603752853e-12, 0x1.bcb7b1526e50ep-2, 0x1.95355baaafad3p-57};

// ln(1 + v) - v for |v| <= 10/1024.
double ln_rest(double v) {
    double p = -0.1250214602960357;
    p = 0.1428756883852146 + v * p;
    p = -0.1666666651884978 + v * p;
    p = 0.19999999911565072 + v * p;
    p = -0.25000000000003386 + v * p;
    p = 0.33333333333334386 + v * p;
    p = -0.5 + v * p;
    return v * v * p;
}

// e log(2) + (high + low)/ln(base).
double in_base(const Base& base, double e, DoubleWord ln) {
    const double high = ln.high * base.factor_high;
    const double low =
        std::fma(ln.high, base.factor_high, -high) + (ln.high * base.factor_low + ln.low * base.factor_high);
    const DoubleWord sum = fast_two_sum(e * base.two_high, high);
    return sum.high + (sum.low + (e * base.two_low + low));
}

// Logarithm of the normal number x + tail, tail within an ulp of x.
double log_reduced(const Base& base, double x, double tail, double exponent_offset) {
    // Next to 1 the polynomial alone.
    const double v = x - 1.0;
    if (std::fabs(v) <= 0.009765625) return in_base(base, 0.0, {v, ln_rest(v) + tail});
    const int32_t e = biased_exponent(x) - 1023;
    const double down = power_of_two(-e / 2), down_rest = power_of_two(-(e - e / 2));
    const double z = x * down * down_rest;
    // 2^46 + 1: the ulp of the sum is 1/64, so its low seven bits are round(64 (z - 1)).
    const auto row = std::bit_cast<uint64_t>(z + 70368744177665.0) & 127;
    const double c = log_rows_reciprocal[row];
    // A head of 32 bits, whose product with c is exact.
    const double head = (z + 2097152.0) - 2097152.0;
    const double r = head * c - 1.0;
    const double r_low = ((z - head) + tail * down * down_rest) * c;
    const DoubleWord high = fast_two_sum(log_rows_high[row], r);
    const double low = high.low + (log_rows_low[row] + (r_low + ln_rest(r + r_low)));
    return in_base(base, static_cast<double>(e) + exponent_offset, {high.high, low});
}

int32_t logarithm(const Base& base, double x, double* y) {
    // Not finite: -Inf is outside the domain, NaN is quieted, +Inf stays.
    if (biased_exponent(x) == 2047) {
        const bool minus_infinity = x == -HUGE_VAL;
        *y = minus_infinity ? hide(0.0) / 0.0 : x * x;
        return minus_infinity ? kDomain : kSuccess;
    }
    // Denormal: scaled by 2^60. With denormals taken as zero the product is 0.
    const bool denormal = biased_exponent(x) == 0;
    const double a = denormal ? x * 1152921504606846976.0 : x;
    if (a > 0.0) {
        *y = log_reduced(base, a, 0.0, denormal ? -60.0 : 0.0);
        return kSuccess;
    }
    // Zero: the pole.
    if (a == 0.0) {
        *y = -1.0 / hide(0.0);
        return kPole;
    }
    // Negative.
    *y = hide(0.0) / 0.0;
    return kDomain;
}

int32_t in_double(int32_t (*function)(const double*, double*), float x, float* y) {
    const double wide = static_cast<double>(x);
    double result;
    const int32_t status = function(&wide, &result);
    *y = static_cast<float>(result);
    return status;
}

}  // namespace

int32_t vdln_cout_rare(const double* x, double* y) { return logarithm(kBaseE, *x, y); }
int32_t vdlog2_cout_rare(const double* x, double* y) { return logarithm(kBaseTwo, *x, y); }
int32_t vdlog10_cout_rare(const double* x, double* y) { return logarithm(kBaseTen, *x, y); }

int32_t vdlog1p_cout_rare(const double* x, double* y) {
    const double a = *x;
    // Not finite: -Inf is outside the domain, NaN is quieted, +Inf stays.
    if (biased_exponent(a) == 2047) {
        const bool minus_infinity = a == -HUGE_VAL;
        *y = minus_infinity ? hide(0.0) / 0.0 : a * a;
        return minus_infinity ? kDomain : kSuccess;
    }
    // -1: the pole.
    if (a == -1.0) {
        *y = -1.0 / hide(0.0);
        return kPole;
    }
    // Below -1.
    if (a < -1.0) {
        *y = hide(0.0) / 0.0;
        return kDomain;
    }
    // |x| < 2^-54: the result rounds to x.
    if (biased_exponent(a) < 1023 - 54) {
        *y = a;
        return kSuccess;
    }
    if (std::fabs(a) <= 0.009765625) {
        *y = a + ln_rest(a);
        return kSuccess;
    }
    const DoubleWord sum = a < 1.0 ? fast_two_sum(1.0, a) : fast_two_sum(a, 1.0);
    *y = log_reduced(kBaseE, sum.high, sum.low, 0.0);
    return kSuccess;
}

int32_t vsln_cout_rare(const float* x, float* y) { return in_double(vdln_cout_rare, *x, y); }
int32_t vslog2_cout_rare(const float* x, float* y) { return in_double(vdlog2_cout_rare, *x, y); }
int32_t vslog10_cout_rare(const float* x, float* y) { return in_double(vdlog10_cout_rare, *x, y); }
int32_t vslog1p_cout_rare(const float* x, float* y) { return in_double(vdlog1p_cout_rare, *x, y); }

double ln1p_of_pair(double high, double low, double doublings) {
    if (high <= 0.009765625 && doublings == 0.0) return high + (low + ln_rest(high));
    const DoubleWord sum = high < 1.0 ? fast_two_sum(1.0, high) : fast_two_sum(high, 1.0);
    return log_reduced(kBaseE, sum.high, sum.low + low, doublings);
}

}  // namespace nax::vmath
