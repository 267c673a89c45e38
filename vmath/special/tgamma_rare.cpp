// Scalar path of TGamma:
//
//     1 <= x < 171.5   Taylor row at the nearest multiple of 1/16
//     0 < x < 1        Gamma(1 + x)/x
//     x >= 171.5       (x - 1) Gamma(x - 1), ten binades down
//     x < 0            -1/(a Gamma(a) sin(pi x)/pi), a = -x
//
// in two doubles, each factor good to 2^-59. Within 0.52 ulp, in the denormals 0.25 more.
#include <cfloat>
#include <cmath>

#include "vmath/frame/scalar.h"
#include "vmath/special/gamma_parts.h"
#include "vmath/special/gamma_rows.inc"
#include "vmath/special/special_rare.h"

namespace nax::vmath {
namespace {

using namespace NAX_ISA;

Word gamma_one_plus(double x) {  // 0 <= x <= 1
    const Sixteenths s = sixteenths(x);
    return relative_row(gamma_rows[s.count], s.d);
}
Word gamma_from_one(double x) {
    const Sixteenths s = sixteenths(x);
    return relative_row(gamma_rows[s.count - 16], s.d);
}

double quotient(Word a, double b) {
    const double q = a.high / b;
    return std::fabs(q) <= DBL_MAX ? q + (std::fma(-q, b, a.high) + a.low) / b : q;
}

// x below 0, no integer, above -184.
double gamma_negative(double x) {
    const double a = -x, whole = std::nearbyint(a);
    Word w = sin_pi_over_pi(a - whole);
    double unscale = 1.0;
    if (a < 1.0) {
        w = product(w, gamma_one_plus(a));
    } else if (a < 171.0) {
        w = product(product(w, a), 0x1p-60);
        w = product(w, gamma_from_one(a));
        unscale = 0x1p-60;
    } else {
        // a (a - 1) ... down to an argument of the rows.
        w = product(w, 0x1p-300);
        unscale = 0x1p-300;
        double factor = a;
        for (; factor >= 171.0; factor -= 1.0) w = product(w, factor);
        w = product(product(w, factor), gamma_from_one(factor));
    }
    const double q = 1.0 / w.high;
    const double result = (q + q * (std::fma(-q, w.high, 1.0) - q * w.low)) * unscale;
    // The sine's sign in (-1)^whole.
    return std::fmod(whole, 2.0) == 0.0 ? -result : result;
}

int32_t overflow(double sign, double* y) {
    *y = hide(DBL_MAX) * std::copysign(DBL_MAX, sign);
    return kOverflow;
}

}  // namespace

int32_t vdtgamma_cout_rare(const double* x, double* y) {
    const double a = *x;
    // NaN is quieted, +Inf stays.
    if (a != a || a > DBL_MAX) {
        *y = a + a;
        return kSuccess;
    }
    // The pole at 0, of either sign.
    if (a == 0.0) {
        *y = 1.0 / hide(a);
        return kPole;
    }
    // -Inf and the negative integers.
    if (a < 0.0 && std::nearbyint(a) == a) {
        *y = hide(0.0) / 0.0;
        return kDomain;
    }
    // Next to 0 and beyond 171.62 too large.
    if (std::fabs(a) < 0x1p-1024 || a > 171.6243769563027) return overflow(a, y);
    if (a < 0.0) {
        // Below -184 even next to the integers too small.
        const double whole = std::nearbyint(std::floor(a));
        *y = a <= -184.0 ? 0.0 : a > -0x1p-60 ? 1.0 / a : gamma_negative(a);
        if (*y != 0.0) return std::fabs(*y) <= DBL_MAX ? kSuccess : overflow(a, y);
        *y = hide(DBL_MIN) * (std::fmod(whole, 2.0) == 0.0 ? DBL_MIN : -DBL_MIN);
        return kUnderflow;
    }
    if (a < 0x1p-60) {
        *y = 1.0 / a;
        return *y <= DBL_MAX ? kSuccess : overflow(a, y);
    }
    if (a < 1.0) {
        *y = quotient(gamma_one_plus(a), a);
    } else if (a < 171.5) {
        const Word g = gamma_from_one(a);
        *y = g.high + g.low;
    } else {
        const Word g = product(product(gamma_from_one(a - 1.0), 0x1p-10), a - 1.0);
        *y = (g.high + g.low) * 0x1p10;
        if (!(*y <= DBL_MAX)) return overflow(a, y);
    }
    return kSuccess;
}

int32_t vstgamma_cout_rare(const float* x, float* y) {
    const auto wide = static_cast<double>(*x);
    double result;
    const int32_t status = vdtgamma_cout_rare(&wide, &result);
    *y = static_cast<float>(result);
    if (status != kSuccess || !(std::fabs(result) <= DBL_MAX)) return status;
    // Finite in double, too large or too small for single.
    if (std::fabs(*y) > FLT_MAX) return kOverflow;
    return *y == 0.0f ? kUnderflow : kSuccess;
}

}  // namespace nax::vmath
