// Scalar paths of Pow and Powr: the tables of special cases, and x^y in extended precision.
//
//     x = 2^e m,  c near 1/m,  r = m c - 1:   log2(x) = e - log2(c) + log2(1 + r),   x^y = 2^(y log2(x))
//
// with the accurate tables and series of the vector code, and the logarithm as a pair of doubles, good to 2^-68. Within
// 0.55 ulp. The float functions go through double: 29 spare bits leave the last rounding as the only error.
#include <cmath>
#include <limits>

#include "vmath/power/power_coefficients.inc"
#include "vmath/power/power_rare.h"
#include "vmath/power/power_tables.inc"
#include "vmath/scalar.h"

namespace nax::vmath {
namespace {

constexpr double kLargest = std::numeric_limits<double>::max(), kSmallest = std::numeric_limits<double>::min();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

enum class IntegerClass { None, Odd, Even };

IntegerClass integer_class(double x) {
    const uint64_t magnitude = bits_of(x) & ~(uint64_t{1} << 63);
    const auto exponent = static_cast<int>(magnitude >> 52);
    // below 1, infinite or NaN; even from 2^53 on
    if (exponent < 1023 || exponent == 2047) return IntegerClass::None;
    if (exponent > 1023 + 52) return IntegerClass::Even;
    // what is left of the fraction below the unit, and the unit on top
    const uint64_t from_unit = (magnitude | uint64_t{1} << 52) << (exponent - 1023 + 11);
    if ((from_unit & ~(uint64_t{1} << 63)) != 0) return IntegerClass::None;
    return from_unit != 0 ? IntegerClass::Odd : IntegerClass::Even;
}

// log2 of a positive finite number.
DoubleWord log2_extended(double x) {
    double offset = 0.0;
    if (x < kSmallest) {
        x *= 1.6069380442589903e60;  // 2^200
        offset = -200.0;
    }
    // m nearest to 1 + j/32; a carry raises the exponent
    const uint64_t rounded = bits_of(x) + (uint64_t{1} << 46);
    const auto j = static_cast<unsigned>(rounded >> 47) & 31;
    const double e = static_cast<double>(static_cast<int>(rounded >> 52) - 1023) + offset;
    const double m = from_bits<double>(bits_of(x) - (rounded & 0x7FF0000000000000) + 0x3FF0000000000000);
    // r + r_low = m c - 1
    const double c = pow_log2_32_reciprocal[j], product = m * c;
    const DoubleWord r = fast_two_sum(product - 1.0, std::fma(m, c, -product));
    // ln(1 + r + r_low) = r - r^2/2 + r^3 P(r) + r_low/(1 + r), the first two with their errors
    const double half = -0.5 * r.high, h = half * r.high;
    const DoubleWord s = fast_two_sum(r.high, h);
    double p = 0.0;
    for (int k = 7; k >= 0; --k) p = p * r.high + pow_log_tail[k];
    const double rest = s.low + std::fma(half, r.high, -h) + (r.low - r.low * r.high) + p * r.high * r.high * r.high;
    // over ln 2
    constexpr double factor = 0x1.71547652b82fep+0, factor_low = 0x1.777d0ffda0d24p-56;
    const double lead = s.high * factor;
    const double lead_low = std::fma(s.high, factor, -lead) + (s.high * factor_low + rest * factor);
    const double whole = e + pow_log2_32_value[j];
    const DoubleWord sum = fast_two_sum(whole, lead);
    return fast_two_sum(whole == 0.0 ? lead : sum.high, (whole == 0.0 ? 0.0 : sum.low) + lead_low);
}

// sign x^y for positive finite x and finite y.
int32_t power(double x, double y, double sign, double* r) {
    const DoubleWord log = log2_extended(x);
    const double t = y * log.high;
    // Certainly too large or too small: infinity or 0 with the flags.
    if (t > 1024.5 || t < -1080.0) {
        const double bound = t > 0.0 ? kLargest : kSmallest;
        *r = sign * (hide(bound) * bound);
        return t > 0.0 ? kOverflow : kUnderflow;
    }
    // Certainly 1.
    if (std::fabs(t) < 0x1p-60) {
        *r = sign * (1.0 + hide(t));
        return kSuccess;
    }
    const double t_low = std::fma(y, log.high, -t) + y * log.low;
    constexpr double shifter = 0x1.8p48;  // leaves sixteenths
    const double z = t + shifter, f = (t - (z - shifter)) + t_low;
    const auto n = static_cast<int64_t>((z - shifter) * 16.0);
    const auto j = static_cast<unsigned>(n & 15);
    const int64_t k = n >> 4;
    const double high = from_bits<double>(bits_of(pow_exp2_16[j]) + (uint64_t{j} << 48));
    double q = 0.0;
    for (int i = 5; i >= 0; --i) q = q * f + pow_exp2_six[i];
    const double rest = high * (f * q + pow_exp2_16_low[j]);
    if (k < -1021) {
        *r = sign * scale_below_normal(high, rest, k);
        return *r == 0.0 ? kUnderflow : kSuccess;
    }
    // 2^1024 is no double: half of it, doubled.
    const double result = k > 1022 ? (high + rest) * power_of_two(k - 1) * 2.0 : (high + rest) * power_of_two(k);
    *r = sign * result;
    return result > kLargest ? kOverflow : kSuccess;
}

int32_t outside_domain(double* r) {
    *r = hide(0.0) / 0.0;
    return kDomain;
}

// The rows of Pow's table from "x or y is NaN" on.
int32_t pow_from_nan(double x, double y, double* r) {
    if (x != x || y != y) {
        *r = x + y;
        return kSuccess;
    }
    const IntegerClass kind = integer_class(y);
    const double sign = std::signbit(x) && kind == IntegerClass::Odd ? -1.0 : 1.0;
    // Zero: 0 or, as a domain error, an infinity.
    if (x == 0.0) {
        if (y > 0.0) {
            *r = sign * 0.0;
            return kSuccess;
        }
        *r = sign / hide(0.0);
        return kDomain;
    }
    if (x == -1.0 && (kind != IntegerClass::None || std::fabs(y) == kInfinity)) {
        *r = sign;
        return kSuccess;
    }
    if (std::fabs(x) == kInfinity || std::fabs(y) == kInfinity) {
        const bool grows = std::fabs(x) >= 1.0 ? y > 0.0 : y < 0.0;
        *r = sign * (grows ? kInfinity : 0.0);
        return kSuccess;
    }
    // Negative, and the exponent no integer.
    if (x < 0.0 && kind == IntegerClass::None) return outside_domain(r);
    return power(std::fabs(x), y, sign, r);
}

// A float function through its double one: what its range ends is overflow or underflow, too.
int32_t in_double(int32_t (*function)(const double*, const double*, double*), float x, float y, float* r) {
    const double wide_x = static_cast<double>(x), wide_y = static_cast<double>(y);
    double result;
    const int32_t status = function(&wide_x, &wide_y, &result);
    *r = static_cast<float>(result);
    if (status != kSuccess) return status;
    if (std::isfinite(result) && !std::isfinite(*r)) return kOverflow;
    return result != 0.0 && *r == 0.0f ? kUnderflow : kSuccess;
}

}  // namespace

int32_t vdpow_cout_rare(const double* x, const double* y, double* r) {
    if (*x == 1.0 || *y == 0.0) {
        *r = 1.0;
        return kSuccess;
    }
    return pow_from_nan(*x, *y, r);
}

int32_t vdpowr_cout_rare(const double* x, const double* y, double* r) {
    const double a = *x, b = *y;
    const bool no_limit = a == 0.0   ? b == 0.0 || b != b
                          : a == 1.0 ? !std::isfinite(b)
                                     : a != a || (a == kInfinity && b == 0.0);
    if (no_limit) {
        *r = std::numeric_limits<double>::quiet_NaN();
        return kSuccess;
    }
    // Zero has no sign here and no status.
    if (a == 0.0) {
        *r = b > 0.0 ? 0.0 : kInfinity;
        return kSuccess;
    }
    if (a < 0.0) return outside_domain(r);
    if (a == 1.0 || b == 0.0) {
        *r = 1.0;
        return kSuccess;
    }
    return pow_from_nan(a, b, r);
}

int32_t vspow_cout_rare(const float* x, const float* y, float* r) { return in_double(vdpow_cout_rare, *x, *y, r); }
int32_t vspowr_cout_rare(const float* x, const float* y, float* r) { return in_double(vdpowr_cout_rare, *x, *y, r); }

}  // namespace nax::vmath
