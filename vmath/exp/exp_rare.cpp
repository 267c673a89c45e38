// Scalar paths of Exp, Exp2, Exp10 and Expm1.
//
//     b^x = 2^k 2^(j/64) e^r,   64 k + j = N = nearest integer to 64 x log2(b),   |r| <= ln2/128
//
// with 2^(j/64) as a pair of doubles, so that the result is within 0.52 ulp. The float functions go through the double
// ones: 29 spare bits make their only error the last rounding, also of a denormal result.
#include "vmath/exp/exp_rare.h"

#include <cfloat>
#include <cmath>

#include "vmath/exp/exp_tables.inc"
#include "vmath/scalar.h"

namespace nax::vmath {
namespace {

constexpr double kRoundToInteger = 6755399441055744.0;  // 1.5 2^52: its ulp is 1

struct Reduced {
    int64_t k;
    unsigned j;
    double r, r_low;
};

Reduced split(double rounded, double r, double r_low = 0.0) {
    const auto n = static_cast<int64_t>(rounded);
    return {n >> 6, static_cast<unsigned>(n & 63), r, r_low};
}

Reduced reduce_e(double x) {
    const double n = (x * 92.33248261689366 + kRoundToInteger) - kRoundToInteger;  // 64/ln2
    // ln2/64 in two parts; the first ends in zeros, so its product with N is exact.
    const double difference = x - n * 0.010830424696223417, tail = n * 2.572804622327669e-14;
    const double r = difference - tail;
    return split(n, r, (difference - r) - tail);
}

Reduced reduce_2(double x) {
    const double n = (x * 64.0 + kRoundToInteger) - kRoundToInteger;
    return split(n, (x - n * 0x1p-6) * 0.6931471805599453);
}

Reduced reduce_10(double x) {
    const double n = (x * 212.60339807279118 + kRoundToInteger) - kRoundToInteger;  // 64 log2(10)
    // log10(2)/64: 35 bits and the rest.
    const double r = (x - n * 0x1.3441350ap-8) - n * -0x1.0c0219dc1da99p-45;
    return split(n, r * 2.302585092994046);
}

// e^r - 1 - r for |r| <= ln2/128; e^r - 1 has relative error 2^-70.
double expm1_rest(double r) {
    double p = 0.0013888870459233254;
    p = 0.008333341995140497 + r * p;
    p = 0.04166666666677052 + r * p;
    p = 0.1666666666665788 + r * p;
    p = 0.5 + r * p;
    return r * r * p;
}

// One base: results overflow above `largest`, vanish below `smallest`, are denormal below `normal`; b^x = 1 + slope x +
// ...
struct Base {
    double largest, smallest, normal, slope;
};

template <class Reduce>
int32_t exponential(double x, double* y, const Base& base, Reduce reduce) {
    const int32_t exponent = biased_exponent(x);
    // -Inf gives 0; NaN is quieted, +Inf stays.
    if (exponent == 2047) {
        *y = x == -HUGE_VAL ? 0.0 : x * x;
        return kSuccess;
    }
    // |x| < 2^-52: two terms.
    if (exponent < 971) {
        *y = 1.0 + x * base.slope;
        return kSuccess;
    }
    // Too large: +Inf with the overflow flag.
    if (x > base.largest) {
        *y = hide(DBL_MAX) * DBL_MAX;
        return kOverflow;
    }
    // Too small: 0 with the underflow flag.
    if (x < base.smallest) {
        *y = hide(DBL_MIN) * DBL_MIN;
        return kUnderflow;
    }
    const Reduced a = reduce(x);
    const double high = exp2_64[a.j];
    const double rest = exp2_64_absolute_low[a.j] + high * (a.r + expm1_rest(a.r));
    // Below the normal range: denormal or 0.
    if (x < base.normal) {
        *y = scale_below_normal(high, rest, a.k);
        return kUnderflow;
    }
    // 2^1024 is no double: half of it, doubled.
    *y = a.k > 1023 ? (high + rest) * power_of_two(a.k - 1) * 2.0 : (high + rest) * power_of_two(a.k);
    return kSuccess;
}

// A float function through its double one.
int32_t in_double(int32_t (*function)(const double*, double*), float x, float* y) {
    const double wide = static_cast<double>(x);
    double result;
    const int32_t status = function(&wide, &result);
    *y = static_cast<float>(result);
    if (status != kSuccess || biased_exponent(x) == 255) return status;
    if (std::fabs(*y) > FLT_MAX) return kOverflow;
    return result != 0.0 && std::fabs(result) < static_cast<double>(FLT_MIN) ? kUnderflow : kSuccess;
}

}  // namespace

int32_t vdexp_cout_rare(const double* x, double* y) {
    return exponential(*x, y, {709.782712893384, -745.1332191019411, -708.3964185322641, 1.0}, reduce_e);
}

int32_t vdexp2_cout_rare(const double* x, double* y) {
    return exponential(*x, y, {0x1.fffffffffffffp+9, -1075.0, -1022.0, 0.6931471805599453}, reduce_2);
}

int32_t vdexp10_cout_rare(const double* x, double* y) {
    return exponential(*x, y, {308.2547155599167, -323.60724533877976, -307.65265556858873, 2.302585092994046},
                       reduce_10);
}

int32_t vdexpm1_cout_rare(const double* x, double* y) {
    const double a = *x;
    const int32_t exponent = biased_exponent(a);
    // -Inf gives -1; NaN is quieted, +Inf stays.
    if (exponent == 2047) {
        *y = a == -HUGE_VAL ? -1.0 : a * a;
        return kSuccess;
    }
    // |x| < 2^-54: the result rounds to x; a denormal one underflows.
    if (exponent < 1023 - 54) {
        *y = a;
        return exponent == 0 && a != 0.0 ? kUnderflow : kSuccess;
    }
    // Too large: +Inf with the overflow flag.
    if (a > 709.782712893384) {
        *y = hide(DBL_MAX) * DBL_MAX;
        return kOverflow;
    }
    // Below -40 the result rounds to -1.
    if (a < -40.0) {
        *y = -1.0 + hide(DBL_MIN);
        return kSuccess;
    }
    // Half of the result, so that 2^1024 does no harm: (S - 1/2) + S r + ..., S = 2^(k-1+j/64). The first two terms may
    // cancel by half; their errors are kept.
    const Reduced b = reduce_e(a);
    const double half = power_of_two(b.k - 1);
    const double s = exp2_64[b.j] * half, s_low = exp2_64_absolute_low[b.j] * half;
    const DoubleWord difference = s > 0.5 ? fast_two_sum(s, -0.5) : fast_two_sum(-0.5, s);
    const double product = s * b.r;
    const DoubleWord sum = fast_two_sum(difference.high, product);
    const double errors = sum.low + difference.low + std::fma(s, b.r, -product) + (s_low + s_low * b.r);
    *y = (sum.high + (errors + s * (b.r_low + expm1_rest(b.r)))) * 2.0;
    return kSuccess;
}

int32_t vsexp_cout_rare(const float* x, float* y) { return in_double(vdexp_cout_rare, *x, y); }
int32_t vsexp2_cout_rare(const float* x, float* y) { return in_double(vdexp2_cout_rare, *x, y); }
int32_t vsexp10_cout_rare(const float* x, float* y) { return in_double(vdexp10_cout_rare, *x, y); }
int32_t vsexpm1_cout_rare(const float* x, float* y) { return in_double(vdexpm1_cout_rare, *x, y); }

}  // namespace nax::vmath
