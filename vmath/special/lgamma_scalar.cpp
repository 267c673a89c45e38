// LGamma:  ln|Gamma(x)|, one element at a time in 128-bit registers; in two doubles throughout.
//
//     x >= 1      Taylor row at the nearest multiple of 1/16, below 33; beyond it Stirling's series
//     0 < x < 1   ln Gamma(1 + x) - ln x
//     x < 0       -ln(a |sin(pi a)|/pi) - ln Gamma(a), a = -x; next to one of its zeros their Taylor series
//
// Both parts of the last line are good to 2^-59, and their sum to that; within 2^-8 of 0 the series around the zero
// keeps the relative error small. Every result is within 0.52 ulp, and 0.6 next to a zero.
#include <cfloat>
#include <cmath>
#include <limits>

#include "vmath/frame/scalar.h"
#include "vmath/special/gamma_parts.h"
#include "vmath/special/lgamma_rows.inc"
#include "vmath/special/scalar_kernel.h"
#include "vmath/special/special_rare.h"

namespace nax::vmath {
namespace {

using namespace NAX_ISA;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kHalfLogTwoPi = 0.9189385332046728;  // ln(2 pi)/2

Word negative(Word a) { return {-a.high, -a.low}; }

// ln x for positive x that may be denormal.
Word log_any(double x) {
    if (x >= DBL_MIN) return log_word(x);
    constexpr Word shift = {-0x1.62e42fefa39efp+6, -0x1.abc9e3b39803fp-49};  // -128 ln2
    return sum(shift, log_word(x * 0x1p128));
}

Word log_gamma_one_plus(double x) {  // |x| <= 1
    const Sixteenths s = sixteenths(x);
    return additive_row(lgamma_rows[s.count], s.d);
}

// Stirling's series: x ln x - x + (ln(2 pi) - ln x)/2 + 1/(12 x) - ..., x at least 33; the first two terms exactly. For
// the largest x those alone, `scale` times.
Word stirling(double x, double scale) {
    const double inverse = 1.0 / x, i2 = inverse * inverse;
    const double series = inverse * (1.0 / 12 - i2 * (1.0 / 360 - i2 * (1.0 / 1260 - i2 * (1.0 / 1680))));
    const Word ln = log_word(x), lead = product(ln.high, x * scale), s = sum(lead.high, -x * scale);
    const double low = s.low + (lead.low + ln.low * (x * scale));
    return {s.high, scale == 1.0 ? low + ((kHalfLogTwoPi - 0.5 * ln.high) + series) : low};
}

// To about 2^-60 of the largest term.
Word log_gamma_positive(double x) {
    if (x < 1.0) return sum(log_gamma_one_plus(x), negative(log_any(x)));
    if (x >= 33.0) return stirling(x, 1.0);
    const Sixteenths s = sixteenths(x);
    return additive_row(lgamma_rows[s.count - 16], s.d);
}

// Next to a zero left of -2, with the zero's row (zero and its two rests, half width, c_1, rest, c_2 ... c_12); else
// NaN.
double near_zero(double x) {
    const double whole = std::floor(-x);
    if (whole < 2 || whole > 17) return std::numeric_limits<double>::quiet_NaN();
    for (int side = 0; side < 2; ++side) {
        const auto& row = lgamma_zeros[2 * (static_cast<int>(whole) - 2) + side];
        const double distance = x - row[0];
        if (!(std::fabs(distance) <= row[3])) continue;
        const Word t = sum(distance, -row[1]), lead = product(row[4], t.high);
        double p = row[16];
        for (int k = 15; k >= 6; --k) p = p * t.high + row[k];
        return lead.high + (lead.low + row[5] * t.high + row[4] * (t.low - row[2]) + t.high * t.high * p);
    }
    return std::numeric_limits<double>::quiet_NaN();
}

// x below 0, no integer.
double log_gamma_negative(double x) {
    const double zero = near_zero(x);
    if (zero == zero) return zero;
    const double a = -x;
    if (a < 1.0 / 32) {
        const Word s = sum(additive_row(lgamma_rows[0], x), negative(log_any(a)));
        return s.high + s.low;
    }
    const Word sine = sin_pi_over_pi(a - std::nearbyint(a));
    const Word factor = product(sine.high < 0 ? negative(sine) : sine, a);
    Word ln = log_word(factor.high);
    ln.low += factor.low / factor.high;
    const Word s = sum(ln, log_gamma_positive(a));
    return -(s.high + s.low);
}

// Single precision in plain double arithmetic: the rows' values at 1 and 2 are exact, so that the zeros there do no
// harm.
double log_gamma_single(double x) {
    if (x >= 33.0) {
        const double inverse = 1.0 / x, ln = log_word(x).high;
        return (x - 0.5) * (ln - 1.0) +
               ((kHalfLogTwoPi - 0.5) + inverse * (1.0 / 12 - inverse * inverse * (1.0 / 360)));
    }
    const Sixteenths s = sixteenths(x);
    const auto& row = lgamma_rows[x < 1.0 ? s.count : s.count - 16];
    const double d2 = s.d * s.d;
    const double value = row[0] + (s.d * (row[2] + s.d * row[4]) + d2 * s.d * ((row[5] + s.d * row[6]) + d2 * (row[7] + s.d * row[8])));
    return x < 1.0 ? value - log_word(x).high : value;
}

int32_t pole(double* y) {
    *y = 1.0 / hide(0.0);
    return kPole;
}

}  // namespace

int32_t vdlgamma_cout_rare(const double* x, double* y) {
    const double a = *x;
    // NaN is quieted; both infinities give +Inf.
    if (!(std::fabs(a) <= DBL_MAX)) {
        *y = a * a;
        return kSuccess;
    }
    // Poles at 0 and the negative integers, which all large negative numbers are.
    if (a <= 0.0 && (a <= -0x1p52 || std::nearbyint(a) == a)) return pole(y);
    if (a < 0.0) {
        *y = log_gamma_negative(a);
        return kSuccess;
    }
    // Too large: +Inf with the overflow flag.
    if (a > 2.5599833278516383e+305) {
        *y = hide(DBL_MAX) * DBL_MAX;
        return kOverflow;
    }
    if (a >= 0x1p900) {
        const Word s = stirling(a, 0x1p-100);
        *y = (s.high + s.low) * 0x1p100;
        return kSuccess;
    }
    const Word s = log_gamma_positive(a);
    *y = s.high + s.low;
    return kSuccess;
}

int32_t vslgamma_cout_rare(const float* x, float* y) {
    if (*x >= 0x1p-5f && *x < 0x1p100f) {
        *y = static_cast<float>(log_gamma_single(static_cast<double>(*x)));
        return kSuccess;
    }
    const auto wide = static_cast<double>(*x);
    double result;
    const int32_t status = vdlgamma_cout_rare(&wide, &result);
    *y = static_cast<float>(result);
    // Finite in double, too large for single.
    return status == kSuccess && result <= DBL_MAX && result > static_cast<double>(0x1.ffffffp+127) ? kOverflow
                                                                                                    : status;
}

}  // namespace nax::vmath

NAX_SCALAR_KERNEL(double, d, LGamma, EXHAynn, nax::vmath::vdlgamma_cout_rare)
NAX_SCALAR_KERNEL(float, s, LGamma, EXHAynn, nax::vmath::vslgamma_cout_rare)
