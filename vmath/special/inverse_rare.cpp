// Scalar paths of ErfInv, ErfcInv and CdfNormInv.
//
// Like the kernels they fold the argument to h. On the grid of inverse_points.inc they sum the same series, one order
// more. Below it, in the middle, the function is a straight line: a product in two parts, rounded once. In the tail
// below 2^-53 the root of
//
//     y^2 + ln y + ln(sqrt(pi)) - ln G(1/y^2) = -ln t,   G = sqrt(pi) y exp(y^2) erfc(y)
//
// is found by Newton's method, the derivative is 2 y/G, from y^2 = L - ln(pi L)/2, L = -ln t, which is good to 2^-10;
// two steps in double precision reach 2^-40, the third stays a separate low part. Its residual needs L and y^2 in two
// parts only: an error of 2^-54 in the other terms is one of 2^-61 in y. All results are within 0.52 ulp.
#include <bit>
#include <cmath>
#include <limits>

#include "vmath/frame/scalar.h"
#include "vmath/special/double_word.h"
#include "vmath/special/inverse_points.inc"
#include "vmath/special/series.h"
#include "vmath/special/special_coefficients.inc"
#include "vmath/special/special_rare.h"

namespace nax::vmath {
namespace {

using namespace NAX_ISA;

constexpr double kInf = std::numeric_limits<double>::infinity();

// erfinv(x) = x sqrt(pi)/2 and CdfNorm's inverse sqrt(2 pi) (p - 1/2) next to the middle; sqrt(2).
constexpr Word kHalfRootPi = {0x1.c5bf891b4ef6bp-1, -0x1.618f13eb7ca89p-55};
constexpr Word kRootTwoPi = {0x1.40d931ff62706p+1, -0x1.a6a0d6f814637p-53};
constexpr Word kRootTwo = {0x1.6a09e667f3bcdp+0, -0x1.bdd3413b26456p-54};
constexpr double kLogRootPi = 0.5723649429247001;

// y at h on the grid of one half of the domain, which starts at 2^-start and ends at `end`; the grid's first entry is
// `first`.
template <class Points>
double on_grid(const Points& points, double curvature, double h, int start, int64_t first) {
    constexpr int shift = 45;
    const int64_t rounded = (std::bit_cast<int64_t>(h) + (1ll << (shift - 1))) & -(1ll << shift);
    const auto& point = points[first + (rounded >> shift) - ((1023ll - start) << 7)];
    const double y0 = point[0], slope = point[1], y2 = y0 * y0;
    const double rest = static_cast<double>((std::bit_cast<int64_t>(slope) & 31) - 16) * 0x1p-57;
    const double v = (h - std::bit_cast<double>(rounded)) * slope;
    double q = 0;
    for (int order = 7; order >= 2; --order) {
        double t = 0;
        for (int n = (order - 1) / 2; n >= 0; --n) t = t * y2 + inverse_coefficient(curvature, order, n);
        q = q * v + (order % 2 == 0 ? t * y0 : t);
    }
    return y0 + (v + v * v * q + y0 * rest);
}

// a b of a number of any size, rounded once, also to a denormal: computed 256 binades up, where the grid of the
// denormals is 2^-818.
double scaled_product(double a, Word b) {
    const double up = a * 0x1p256;
    const Word p = product(up, b.high);
    const double low = p.low + up * b.low;
    if (!(std::fabs(p.high) < 0x1p-766)) return (p.high + low) * 0x1p-256;
    // Sums in [2^-766, 2^-765) are multiples of 2^-818; the tail has either sign.
    const double grid = std::copysign(0x1p-766, p.high), tail_grid = 0x1.8p-766;
    const double head = (p.high + grid) - grid, tail = (p.high - head) + low;
    return (head + ((tail + tail_grid) - tail_grid)) * 0x1p-256;
}

// -ln t for a positive t that may be denormal.
Word minus_log(double t) {
    const bool denormal = t < 0x1p-1000;
    const Word l = log_word(denormal ? t * 0x1p128 : t);
    if (!denormal) return {-l.high, -l.low};
    constexpr Word shift = {0x1.62e42fefa39efp+6, 0x1.abc9e3b39803fp-49};  // 128 ln2
    return sum(shift, Word{-l.high, -l.low});
}

// y with erfc(y) = t, t below 2^-53, in two parts.
Word far_tail(double t) {
    const Word l = minus_log(t);
    double y = std::sqrt(l.high - 0.5 * log_word(3.141592653589793 * l.high).high);
    double step = 0;
    for (int i = 0; i < 3; ++i) {
        y += step;
        const Word square = product(y, y);
        const double g = polynomial(erfc_asymptotic, 1.0 / square.high);
        const Word ln = log_word(y);
        const double slow = ln.high + (ln.low + kLogRootPi) - log_word(g).high;
        step = ((l.high - square.high - slow) + (l.low - square.low)) * g / (2.0 * y);
    }
    return {y, step};
}

double inverse_erf_middle(double h) { return on_grid(erf_inv_points, 2, h, 35, 1); }
double inverse_erf_tail(double t) { return on_grid(erf_inv_points, 2, t, 53, 2 + (34 << 7)); }

// The single function goes through the double one; the only error left is the last rounding.
int32_t in_double(int32_t (*function)(const double*, double*), float x, float* y) {
    const auto wide = static_cast<double>(x);
    double result;
    const int32_t status = function(&wide, &result);
    *y = static_cast<float>(result);
    return status;
}

int32_t pole(double sign, double* y) {
    *y = sign / hide(0.0);
    return kPole;
}
int32_t outside_domain(double* y) {
    *y = hide(0.0) / 0.0;
    return kDomain;
}

}  // namespace

int32_t vderfinv_cout_rare(const double* x, double* y) {
    const double a = std::fabs(*x), sign = std::copysign(1.0, *x);
    // NaN is quieted.
    if (a != a) {
        *y = *x + *x;
        return kSuccess;
    }
    // Outside [-1, 1], its ends.
    if (a > 1.0) return outside_domain(y);
    if (a == 1.0) return pole(sign, y);
    // Zero, also a denormal that counts as one.
    if (a == 0.0)
        *y = *x + *x;
    else if (a < 0x1p-35)
        *y = scaled_product(*x, kHalfRootPi);
    else
        *y = sign * (a < 0.5 ? inverse_erf_middle(a) : inverse_erf_tail(1.0 - a));
    return kSuccess;
}

int32_t vderfcinv_cout_rare(const double* x, double* y) {
    const double a = *x;
    // NaN is quieted.
    if (a != a) {
        *y = a * a;
        return kSuccess;
    }
    // The ends of [0, 2], outside it.
    if (a == 0.0) return pole(1.0, y);
    if (a == 2.0) return pole(-1.0, y);
    if (!(a > 0.0 && a < 2.0)) return outside_domain(y);
    if (a >= 0.5 && a <= 1.5) {
        const double s = 1.0 - a, h = std::fabs(s);
        *y = h < 0x1p-35 ? scaled_product(s, kHalfRootPi) : std::copysign(inverse_erf_middle(h), s);
    } else if (a < 0x1p-53) {
        const Word tail = far_tail(a);
        *y = tail.high + tail.low;
    } else {
        *y = a < 1.0 ? inverse_erf_tail(a) : -inverse_erf_tail(2.0 - a);
    }
    return kSuccess;
}

int32_t vdcdfnorminv_cout_rare(const double* x, double* y) {
    const double p = *x;
    // NaN is quieted.
    if (p != p) {
        *y = p * p;
        return kSuccess;
    }
    // The ends of [0, 1], outside it.
    if (p == 0.0) return pole(-1.0, y);
    if (p == 1.0) return pole(1.0, y);
    if (!(p > 0.0 && p < 1.0)) return outside_domain(y);
    constexpr auto& points = cdf_norm_inv_points;
    if (p >= 0.25 && p <= 0.75) {
        const double s = p - 0.5, h = std::fabs(s);
        *y = h < 0x1p-35 ? scaled_product(s, kRootTwoPi) : std::copysign(on_grid(points, 1, h, 35, 1), s);
    } else if (p < 0x1p-53) {
        const Word tail = far_tail(2.0 * p);
        const Word scaled = product(tail.high, kRootTwo.high);
        *y = -(scaled.high + (scaled.low + (tail.high * kRootTwo.low + tail.low * kRootTwo.high)));
    } else {
        const double tail = on_grid(points, 1, p < 0.5 ? p : 1.0 - p, 53, 2 + (33 << 7));
        *y = p < 0.5 ? -tail : tail;
    }
    return kSuccess;
}

int32_t vserfinv_cout_rare(const float* x, float* y) { return in_double(vderfinv_cout_rare, *x, y); }
int32_t vserfcinv_cout_rare(const float* x, float* y) { return in_double(vderfcinv_cout_rare, *x, y); }
int32_t vscdfnorminv_cout_rare(const float* x, float* y) { return in_double(vdcdfnorminv_cout_rare, *x, y); }

}  // namespace nax::vmath
