// Scalar paths of the trigonometric functions.
//
//     |x| = i pi/32 + r,   sin(i pi/32 + r) = S + C sin(r) + S (cos(r) - 1),   S, C from 64 rows
//
// summed as a pair of doubles. Within 0.51 ulp; the tangent, a quotient of two such sums, as well. The float functions
// go through the double ones.
#include "vmath/trig/trig_rare.h"

#include <cmath>

#include "vmath/trig/reduce_pio2.h"
#include "vmath/trig/trig_tables.inc"

namespace nax::vmath {
namespace {

constexpr double kShifter = 0x1.8p+52;  // added and taken off again, it leaves the nearest integer

// index pi/32 + rest.
struct Angle {
    uint64_t index;
    DoubleWord rest;
};

// An angle of |x| radians.
Angle radians(double x) {
    DoubleWord r = {std::fabs(x), 0.0};
    uint64_t quadrant = 0;
    if (biased_exponent(x) >= 1040) quadrant = static_cast<uint64_t>(__internal_reduce_pio2d(&r, std::fabs(x)));
    const double t = r.high * 10.185916357881302 + kShifter;  // 32/pi
    const DoubleWord rest = less_multiple_of_pi(r.high, t - kShifter, 1.0 / 32);
    return {16 * quadrant + bits_of(t), fast_two_sum(rest.high, rest.low + r.low)};
}

// An angle of x `unit`s in 32nds of half a turn of `half_turn` units; x less a multiple of those is exact.
Angle exact_angle(double x, double half_turn, const double (&unit)[2]) {
    const double step = half_turn / 32, t = x / step + kShifter;
    const double f = std::fma(kShifter - t, step, x);
    const double high = f * unit[0];
    return {bits_of(t), {high, std::fma(f, unit[0], -high) + f * unit[1]}};
}

// |x| degrees. 2^12 = 1 modulo 45, so from 2^56 on, where the unit is a multiple of 8, the exponent counts modulo 12
// only.
Angle degrees(double x) {
    uint64_t bits = bits_of(std::fabs(x));
    const int excess = biased_exponent(x) - (1023 + 56);
    if (excess > 0) bits -= static_cast<uint64_t>(excess / 12 * 12) << 52;
    double y = from_bits<double>(bits);
    // Below 2^68: the first quotient may be off by its own rounding, up to 2^7.
    for (int step = 0; step < 2; ++step) y = std::fma(-360.0, std::rint(y / 360.0), y);
    return exact_angle(y, 180.0, degree_parts);
}

// |x| half turns.
Angle half_turns(double x) {
    const double a = std::fabs(x), unit[2] = {pi_parts[0], pi_parts[1]};
    return exact_angle(a - 2.0 * std::rint(0.5 * a), 1.0, unit);
}

DoubleWord sine(const Angle& angle, uint64_t quarter_turns = 0) {
    const double* const row = circle_64[(angle.index + 16 * quarter_turns) & 63];
    const double s = row[0], c = row[2], r = angle.rest.high, r2 = r * r;
    // sin(r)/r - 1 and cos(r) - 1, Taylor's series
    const double p = r2 * (-1.0 / 6 + r2 * (1.0 / 120 + r2 * (-1.0 / 5040 + r2 * (1.0 / 362880))));
    const double q = r2 * (-0.5 + r2 * (1.0 / 24 + r2 * (-1.0 / 720 + r2 * (1.0 / 40320))));
    const double product = c * r;
    const DoubleWord sum = fast_two_sum(s, product);
    double low = std::fma(c, r, -product) + sum.low;
    low += row[1] + row[3] * r;
    low += s * q + c * (r * p + angle.rest.low);
    return fast_two_sum(sum.high, low);
}

double sine_of(const Angle& angle) { return sine(angle).high; }
double cosine_of(const Angle& angle) { return sine(angle, 1).high; }
// An exact zero of the cosine makes an infinity of the sine's sign, one of the sine a zero of the cosine's.
double tangent_of(const Angle& angle) {
    const DoubleWord s = sine(angle), c = sine(angle, 1);
    const double q = s.high / c.high;
    if (c.high == 0.0 || s.high == 0.0) return q;
    return q + (std::fma(-q, c.high, s.high) + (s.low - q * c.low)) / c.high;
}

// Infinities have no sine, NaN is quieted. True where one of them is answered.
bool not_finite(double x, double* y, int32_t* status) {
    if (biased_exponent(x) != 2047) return false;
    *status = std::isinf(x) ? kDomain : kSuccess;
    *y = std::isinf(x) ? hide(x) * 0.0 : x * x;
    return true;
}

// x for |x| < 2^-252, inexact and underflowing as the true value: `sign` of the next term.
double nearly_itself(double x, double sign) {
    return x == 0.0 ? x : (x * 36028797018963968.0 + sign * x) * 2.7755575615628914e-17;  // 2^55, 2^-55
}
bool is_tiny(double x) { return biased_exponent(x) < 771; }

enum class Parity { Even, Odd };

// A function of |x| that is even or odd.
template <Parity P>
int32_t evaluate(double x, double* y, Angle (*angle)(double), double (*function)(const Angle&)) {
    int32_t status;
    if (not_finite(x, y, &status)) return status;
    const double value = function(angle(x));
    *y = P == Parity::Odd && std::signbit(x) ? -value : value;
    return kSuccess;
}

template <int32_t (*function)(const double*, double*)>
int32_t in_double(float x, float* y) {
    const double wide = static_cast<double>(x);
    double result;
    const int32_t status = function(&wide, &result);
    *y = static_cast<float>(result);
    return status;
}

}  // namespace

int32_t vdsin_cout_rare(const double* x, double* y) {
    if (is_tiny(*x)) {
        *y = nearly_itself(*x, -1.0);
        return kSuccess;
    }
    return evaluate<Parity::Odd>(*x, y, radians, sine_of);
}
int32_t vdcos_cout_rare(const double* x, double* y) { return evaluate<Parity::Even>(*x, y, radians, cosine_of); }
int32_t vdsincos_cout_rare(const double* x, double* sine, double* cosine) {
    const double a = *x;  // the results may lie over the argument
    vdcos_cout_rare(&a, cosine);
    return vdsin_cout_rare(&a, sine);
}
int32_t vdtan_cout_rare(const double* x, double* y) {
    if (is_tiny(*x)) {
        *y = nearly_itself(*x, 1.0);
        return kSuccess;
    }
    return evaluate<Parity::Odd>(*x, y, radians, tangent_of);
}
int32_t vdsind_cout_rare(const double* x, double* y) { return evaluate<Parity::Odd>(*x, y, degrees, sine_of); }
int32_t vdcosd_cout_rare(const double* x, double* y) { return evaluate<Parity::Even>(*x, y, degrees, cosine_of); }
int32_t vdtand_cout_rare(const double* x, double* y) { return evaluate<Parity::Odd>(*x, y, degrees, tangent_of); }
int32_t vdsinpi_cout_rare(const double* x, double* y) { return evaluate<Parity::Odd>(*x, y, half_turns, sine_of); }
int32_t vdcospi_cout_rare(const double* x, double* y) { return evaluate<Parity::Even>(*x, y, half_turns, cosine_of); }
int32_t vdtanpi_cout_rare(const double* x, double* y) { return evaluate<Parity::Odd>(*x, y, half_turns, tangent_of); }

int32_t vssin_cout_rare(const float* x, float* y) { return in_double<vdsin_cout_rare>(*x, y); }
int32_t vscos_cout_rare(const float* x, float* y) { return in_double<vdcos_cout_rare>(*x, y); }
int32_t vssincos_cout_rare(const float* x, float* sine, float* cosine) {
    const float a = *x;
    vscos_cout_rare(&a, cosine);
    return vssin_cout_rare(&a, sine);
}
int32_t vstan_cout_rare(const float* x, float* y) { return in_double<vdtan_cout_rare>(*x, y); }
int32_t vssind_cout_rare(const float* x, float* y) { return in_double<vdsind_cout_rare>(*x, y); }
int32_t vscosd_cout_rare(const float* x, float* y) { return in_double<vdcosd_cout_rare>(*x, y); }
int32_t vstand_cout_rare(const float* x, float* y) { return in_double<vdtand_cout_rare>(*x, y); }
int32_t vssinpi_cout_rare(const float* x, float* y) { return in_double<vdsinpi_cout_rare>(*x, y); }
int32_t vscospi_cout_rare(const float* x, float* y) { return in_double<vdcospi_cout_rare>(*x, y); }
int32_t vstanpi_cout_rare(const float* x, float* y) { return in_double<vdtanpi_cout_rare>(*x, y); }

}  // namespace nax::vmath
