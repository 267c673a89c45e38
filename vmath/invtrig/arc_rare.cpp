// Scalar paths of Asin, Acos, Atan, Atan2 and of their half-turn forms.
//
// All are the angle of a point (x, y): (sqrt(1 - a^2), a) for the arcsine, (1, a) for the arctangent. With s <= l the
// magnitudes of the coordinates and b the multiple of 1/4 next to s/l,
//
//     angle = atan b + atan t,   t = (s - b l)/(l + b s),   |t| <= 1/8
//
// in the first octant, as pairs of doubles; the other octants reflect it. A half-turn form multiplies the first
// octant's angle by 1/pi, so its multiples of 1/4 are exact. Below 0.51 ulp; the float functions go through the double
// ones.
#include <cmath>

#include "vmath/invtrig/arctangent_coefficients.inc"
#include "vmath/invtrig/double_word.h"
#include "vmath/invtrig/invtrig_rare.h"
#include "vmath/invtrig/invtrig_tables.inc"

namespace nax::vmath {
namespace {

struct Unit {
    DoubleWord full, half;  // half a turn and a quarter
    DoubleWord factor;      // of radians
    bool radians;
};
constexpr Unit kRadians = {{pi_parts[0], pi_parts[1]}, {half_pi_parts[0], half_pi_parts[1]}, {1.0, 0.0}, true};
constexpr Unit kHalfTurns = {{1.0, 0.0}, {0.5, 0.0}, {inverse_pi_parts[0], inverse_pi_parts[1]}, false};

DoubleWord first_octant(DoubleWord small, DoubleWord large) {
    const auto j = static_cast<int>(4.0 * (small.high / large.high) + 0.5);
    const DoubleWord b = {0.25 * j, 0.0};
    const DoubleWord t = (small - b * large) / (large + b * small);
    const double w = t.high * t.high;
    double p = 0.0;
    for (int k = 6; k >= 0; --k) p = atan_double_rare[k] + w * p;
    return DoubleWord{atan_16_high[j], atan_16_low[j]} + (t + DoubleWord{t.high * w * p, 0.0});
}

// Angle of the point in the upper half plane whose coordinates have these magnitudes.
double upper_angle(const Unit& unit, DoubleWord y, DoubleWord x, bool negative_x) {
    const bool steep = y.high > x.high;
    DoubleWord angle = steep ? first_octant(x, y) : first_octant(y, x);
    if (!unit.radians) angle = angle * unit.factor;
    if (steep) angle = unit.half - angle;
    if (negative_x) angle = unit.full - angle;
    return angle.high + angle.low;
}

// sqrt(1 - a^2)
DoubleWord cosine_of(double a) { return sqrt(two_sum(1.0, -a) * two_sum(1.0, a)); }

// q 2^-scale in the unit, where the angle is so small that it equals its tangent; the result may be denormal.
double tiny_angle(const Unit& unit, DoubleWord q, int scale) {
    const DoubleWord angle = q * unit.factor;
    double sum = angle.high + angle.low;
    for (; scale > 0; scale -= 600) sum *= 0x1p-600;
    return sum;
}

int32_t not_a_number(double x, double* r) {
    *r = x * x;
    return kSuccess;
}

int32_t outside_domain(double* r) {
    *r = hide(0.0) / 0.0;
    return kDomain;
}

int32_t arcsine(const Unit& unit, double x, double* r) {
    const double a = std::fabs(x);
    if (x != x) return not_a_number(x, r);
    if (a > 1.0) return outside_domain(r);
    // Up to 2^-28 the arcsine rounds to x.
    if (a < 0x1p-28) {
        *r = unit.radians || a == 0.0 ? x : std::copysign(tiny_angle(unit, {a * 0x1p600, 0.0}, 600), x);
        return kSuccess;
    }
    *r = std::copysign(upper_angle(unit, {a, 0.0}, cosine_of(a), false), x);
    return kSuccess;
}

int32_t arccosine(const Unit& unit, double x, double* r) {
    const double a = std::fabs(x);
    if (x != x) return not_a_number(x, r);
    if (a > 1.0) return outside_domain(r);
    if (a < 0x1p-60) {
        *r = unit.half.high;
        return kSuccess;
    }
    *r = a == 1.0 ? (x < 0.0 ? unit.full.high : 0.0) : upper_angle(unit, cosine_of(a), {a, 0.0}, x < 0.0);
    return kSuccess;
}

int32_t arctangent(const Unit& unit, double x, double* r) {
    const double a = std::fabs(x);
    if (x != x) return not_a_number(x, r);
    double angle;
    if (a >= 0x1p60)
        angle = unit.half.high;
    else if (a >= 0x1p-28)
        angle = upper_angle(unit, {a, 0.0}, {1.0, 0.0}, false);
    else
        angle = unit.radians || a == 0.0 ? a : tiny_angle(unit, {a * 0x1p600, 0.0}, 600);
    *r = std::copysign(angle, x);
    return kSuccess;
}

// Angle of (x, y) for y >= 0 where one coordinate is zero or infinite.
double angle_of_special(const Unit& unit, double y, double x) {
    const bool left = std::signbit(x);
    if (std::isinf(y)) {
        if (!std::isinf(x)) return unit.half.high;
        return left ? 0.75 * unit.full.high : 0.5 * unit.half.high;
    }
    if (y == 0.0 || std::isinf(x)) return left ? unit.full.high : 0.0;
    return unit.half.high;
}

// Angle of (x, y) for finite y > 0 and x not 0.
double angle_of_finite(const Unit& unit, double y, double x) {
    double a = std::fabs(x);
    if (y <= a * 0x1p-60 && x > 0.0) {
        if (unit.radians) return y / a;
        const bool low_y = y<0x1p-400, high_x = a> 0x1p400;
        const DoubleWord q = DoubleWord{low_y ? y * 0x1p600 : y, 0.0} / DoubleWord{high_x ? a * 0x1p-600 : a, 0.0};
        return tiny_angle(unit, q, (low_y ? 600 : 0) + (high_x ? 600 : 0));
    }
    // Both to a size where no product leaves the range; what is lost then is too small to matter.
    const double larger = std::fmax(y, a);
    const double factor = larger > 0x1p400 ? 0x1p-600 : larger < 0x1p-400 ? 0x1p600 : 1.0;
    y *= factor;
    a *= factor;
    if (y >= a * 0x1p100) return unit.half.high;
    if (y <= a * 0x1p-100) return unit.full.high;
    return upper_angle(unit, {y, 0.0}, {a, 0.0}, x < 0.0);
}

int32_t arctangent2(const Unit& unit, double y, double x, double* r) {
    if (y != y || x != x) {
        *r = y + x;
        return kSuccess;
    }
    const double height = std::fabs(y);
    const bool special = height == 0.0 || x == 0.0 || std::isinf(height) || std::isinf(x);
    *r = std::copysign(special ? angle_of_special(unit, height, x) : angle_of_finite(unit, height, x), y);
    return kSuccess;
}

int32_t in_double(int32_t (*function)(const double*, double*), float x, float* r) {
    const double wide = static_cast<double>(x);
    double result;
    const int32_t status = function(&wide, &result);
    *r = static_cast<float>(result);
    return status;
}

int32_t in_double(int32_t (*function)(const double*, const double*, double*), float y, float x, float* r) {
    const double wide_y = static_cast<double>(y), wide_x = static_cast<double>(x);
    double result;
    const int32_t status = function(&wide_y, &wide_x, &result);
    *r = static_cast<float>(result);
    return status;
}

}  // namespace

int32_t vdasin_cout_rare(const double* x, double* r) { return arcsine(kRadians, *x, r); }
int32_t vdasinpi_cout_rare(const double* x, double* r) { return arcsine(kHalfTurns, *x, r); }
int32_t vdacos_cout_rare(const double* x, double* r) { return arccosine(kRadians, *x, r); }
int32_t vdacospi_cout_rare(const double* x, double* r) { return arccosine(kHalfTurns, *x, r); }
int32_t vdatan_cout_rare(const double* x, double* r) { return arctangent(kRadians, *x, r); }
int32_t vdatanpi_cout_rare(const double* x, double* r) { return arctangent(kHalfTurns, *x, r); }
int32_t vdatan2_cout_rare(const double* y, const double* x, double* r) { return arctangent2(kRadians, *y, *x, r); }
int32_t vdatan2pi_cout_rare(const double* y, const double* x, double* r) { return arctangent2(kHalfTurns, *y, *x, r); }

int32_t vsasin_cout_rare(const float* x, float* r) { return in_double(vdasin_cout_rare, *x, r); }
int32_t vsasinpi_cout_rare(const float* x, float* r) { return in_double(vdasinpi_cout_rare, *x, r); }
int32_t vsacos_cout_rare(const float* x, float* r) { return in_double(vdacos_cout_rare, *x, r); }
int32_t vsacospi_cout_rare(const float* x, float* r) { return in_double(vdacospi_cout_rare, *x, r); }
int32_t vsatan_cout_rare(const float* x, float* r) { return in_double(vdatan_cout_rare, *x, r); }
int32_t vsatanpi_cout_rare(const float* x, float* r) { return in_double(vdatanpi_cout_rare, *x, r); }
int32_t vsatan2_cout_rare(const float* y, const float* x, float* r) { return in_double(vdatan2_cout_rare, *y, *x, r); }
int32_t vsatan2pi_cout_rare(const float* y, const float* x, float* r) {
    return in_double(vdatan2pi_cout_rare, *y, *x, r);
}

}  // namespace nax::vmath
