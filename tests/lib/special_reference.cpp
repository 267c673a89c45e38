#include "tests/lib/special_reference.h"

#include <cmath>
#include <limits>

namespace nax::testing {
namespace {

constexpr long double kTwoOverRootPi = 1.1283791670955125738961589031215452L;
constexpr long double kRootTwo = 1.4142135623730950488016887242096981L;
// sqrt(2) less its long double, and 1/sqrt(2).
constexpr long double kRootTwoLow = 0x1.65f626cdd52bp-65L;
constexpr long double kRootHalf = 0.7071067811865475244008443621048490L;

// erfc(y) = t for t in (0, 1/2], erf(y) = s for s in [-1/2, 1/2]: Newton's method on ln erfc, on erf.
long double invert_tail(long double t) {
    long double y = std::sqrt(-std::log(t * std::sqrt(-std::log(t) + 0.5L)));
    for (int i = 0; i < 40; ++i) {
        const long double value = erfcl(y), step = value * std::log(value / t) / (kTwoOverRootPi * std::exp(-y * y));
        y += step;
        if (std::fabs(step) < 0x1p-40L * y) break;
    }
    const long double value = erfcl(y);
    return y + (value - t) / (kTwoOverRootPi * std::exp(-y * y));
}
long double invert_middle(long double s) {
    if (std::fabs(s) < 0x1p-40L) return s / kTwoOverRootPi;
    long double y = s / kTwoOverRootPi;
    for (int i = 0; i < 7; ++i) y += (s - erfl(y)) / (kTwoOverRootPi * std::exp(-y * y));
    return y;
}

using Exact = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);

// One Newton step doubles the correct digits of the long double value: two reach 200 bits. `outer` times the argument
// is erf or erfc of y.
void refine(mpfr_ptr y, Exact function, bool falling, mpfr_srcptr target, long double start) {
    mpfr_t value, slope;
    mpfr_inits2(240, value, slope, nullptr);
    mpfr_set_ld(y, start, MPFR_RNDN);
    for (int i = 0; i < 2; ++i) {
        function(value, y, MPFR_RNDN);
        mpfr_sub(value, target, value, MPFR_RNDN);
        mpfr_sqr(slope, y, MPFR_RNDN);
        mpfr_exp(slope, slope, MPFR_RNDN);
        mpfr_mul(value, value, slope, MPFR_RNDN);
        mpfr_const_pi(slope, MPFR_RNDN);
        mpfr_sqrt(slope, slope, MPFR_RNDN);
        mpfr_mul(value, value, slope, MPFR_RNDN);
        mpfr_div_si(value, value, falling ? -2 : 2, MPFR_RNDN);
        mpfr_add(y, y, value, MPFR_RNDN);
    }
    mpfr_clears(value, slope, nullptr);
}

int outside(mpfr_ptr y) {
    mpfr_set_nan(y);
    return 0;
}

}  // namespace

long double reference_erfinv(long double x) {
    const long double a = std::fabs(x);
    if (a > 1) return std::numeric_limits<long double>::quiet_NaN();
    if (a == 1) return std::copysign(std::numeric_limits<long double>::infinity(), x);
    return a <= 0.5L ? invert_middle(x) : std::copysign(invert_tail(1 - a), x);
}
long double reference_erfcinv(long double x) {
    if (x < 0 || x > 2) return std::numeric_limits<long double>::quiet_NaN();
    if (x == 0 || x == 2) return (1 - x) * std::numeric_limits<long double>::infinity();
    if (x >= 0.5L && x <= 1.5L) return invert_middle(1 - x);
    return x < 1 ? invert_tail(x) : -invert_tail(2 - x);
}
long double reference_cdf_norm_inv(long double x) {
    if (x < 0 || x > 1) return std::numeric_limits<long double>::quiet_NaN();
    return -kRootTwo * reference_erfcinv(2 * x);
}
long double reference_cdf_norm(long double x) {
    const long double z = -x * kRootHalf;
    // -x = sqrt(2) (z + rest)
    const long double rest = (std::fma(-kRootTwo, z, -x) - kRootTwoLow * z) * kRootHalf;
    return 0.5L * (erfcl(z) - (std::fabs(z) < 100 ? kTwoOverRootPi * std::exp(-z * z) * rest : 0));
}
// The series up to 2; beyond, Lentz's continued fraction 1/(x + 1 - 1/(x + 3 - 4/(x + 5 - ...))) times exp(-x).
long double reference_exp_int1(long double x) {
    if (!(x >= 0)) return std::numeric_limits<long double>::quiet_NaN();
    if (x == 0) return std::numeric_limits<long double>::infinity();
    if (x < 2) {
        constexpr long double euler = 0.57721566490153286060651209008240243L;
        long double sum = 0, term = -1;
        for (int k = 1; k < 60; ++k) {
            term *= -x / k;
            sum += term / k;
        }
        return sum - euler - std::log(x);
    }
    long double b = x + 1, c = 1e4000L, d = 1 / b, f = d;
    for (int k = 1; k < 500; ++k) {
        const long double a = -static_cast<long double>(k) * k;
        b += 2;
        d = 1 / (a * d + b);
        c = b + a / c;
        f *= c * d;
        if (std::fabs(c * d - 1) < 0x1p-64L) break;
    }
    return f * std::exp(-x);
}
double reference_exp_int1(double x) { return static_cast<double>(reference_exp_int1(static_cast<long double>(x))); }
double reference_erfinv(double x) { return static_cast<double>(reference_erfinv(static_cast<long double>(x))); }
double reference_erfcinv(double x) { return static_cast<double>(reference_erfcinv(static_cast<long double>(x))); }
double reference_cdf_norm(double x) { return static_cast<double>(reference_cdf_norm(static_cast<long double>(x))); }
double reference_cdf_norm_inv(double x) {
    return static_cast<double>(reference_cdf_norm_inv(static_cast<long double>(x)));
}

int exact_exp_int1(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t rounding) {
    mpfr_t minus;
    mpfr_init2(minus, 64);
    mpfr_neg(minus, x, MPFR_RNDN);
    mpfr_eint(y, minus, rounding);  // -E1(x)
    mpfr_clear(minus);
    return mpfr_neg(y, y, rounding);
}
int exact_lgamma(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t rounding) {
    int sign;
    return mpfr_lgamma(y, &sign, x, rounding);
}

int exact_erfinv(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t) {
    const long double start = reference_erfinv(mpfr_get_ld(x, MPFR_RNDN));
    if (!std::isfinite(start)) return outside(y);
    refine(y, mpfr_erf, false, x, start);
    return 0;
}
int exact_erfcinv(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t) {
    const long double start = reference_erfcinv(mpfr_get_ld(x, MPFR_RNDN));
    if (!std::isfinite(start)) return outside(y);
    if (start == 0) return mpfr_set_zero(y, 1), 0;
    refine(y, mpfr_erfc, true, x, start);
    return 0;
}
int exact_cdf_norm_inv(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t rounding) {
    mpfr_t twice;
    mpfr_init2(twice, 240);
    mpfr_mul_ui(twice, x, 2, MPFR_RNDN);
    exact_erfcinv(y, twice, rounding);
    mpfr_sqrt_ui(twice, 2, MPFR_RNDN);
    mpfr_mul(y, y, twice, MPFR_RNDN);
    mpfr_neg(y, y, MPFR_RNDN);
    mpfr_clear(twice);
    return 0;
}
int exact_cdf_norm(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t rounding) {
    mpfr_t z;
    mpfr_init2(z, 240);
    mpfr_sqrt_ui(z, 2, MPFR_RNDN);
    mpfr_div(z, x, z, MPFR_RNDN);
    mpfr_neg(z, z, MPFR_RNDN);
    mpfr_erfc(y, z, rounding);
    mpfr_div_ui(y, y, 2, rounding);
    mpfr_clear(z);
    return 0;
}

}  // namespace nax::testing
