// Scalar paths of Sinh, Cosh, Tanh and their inverses, below 0.52 ulp. The float functions go through the double ones.
//
//     a = N ln2/64 + r,  S, C = (2^(N/64) -+ 2^(-N/64))/2,
//     sinh a = S cosh r + C sinh r,  cosh a = C cosh r + S sinh r
//
// as pairs of doubles. The inverses are logarithms of 1 + w, w a pair.
#include <cfloat>
#include <cmath>

#include "vmath/exp/exp_tables.inc"
#include "vmath/invtrig/double_word.h"
#include "vmath/invtrig/invtrig_rare.h"
#include "vmath/log/log_rare.h"

namespace nax::vmath {
namespace {

constexpr double kLargest = 0x1.633ce8fb9f87dp+9;  // sinh and cosh of more overflow
constexpr double kRoundToInteger = 6755399441055744.0;

struct Reduced {
    int64_t n;
    DoubleWord r;  // |r| <= ln2/128
};

Reduced reduce(double a) {
    const double n = (a * 92.33248261689366 + kRoundToInteger) - kRoundToInteger;  // 64/ln2
    // ln2/64 in two parts; the first ends in zeros, so its product with N is exact.
    return {static_cast<int64_t>(n),
            DoubleWord{a - n * 0.010830424696223417, 0.0} - two_product(n, 2.572804622327669e-14)};
}

// 2^(n/64 + shift)
DoubleWord power(int64_t n, int64_t shift) {
    const double scale = power_of_two((n >> 6) + shift);
    return {exp2_64[n & 63] * scale, exp2_64_absolute_low[n & 63] * scale};
}

struct SinhCosh {
    DoubleWord sinh, cosh;
};

// For 0 <= a <= 40.
SinhCosh sinh_cosh(double a) {
    const Reduced b = reduce(a);
    const DoubleWord up = power(b.n, -1), down = power(-b.n, -1);
    const DoubleWord s = up - down, c = up + down;
    const double w = b.r.high * b.r.high;
    const DoubleWord sinh_r = b.r + DoubleWord{b.r.high * w * (1.0 / 6 + w * (1.0 / 120 + w * (1.0 / 5040))), 0.0};
    const DoubleWord square = two_product(b.r.high, b.r.high);
    const double rest = b.r.high * b.r.low + w * w * (1.0 / 24 + w * (1.0 / 720 + w * (1.0 / 40320)));
    const DoubleWord cosh_r =
        DoubleWord{1.0, 0.0} + (DoubleWord{0.5 * square.high, 0.5 * square.low} + DoubleWord{rest, 0.0});
    return {s * cosh_r + c * sinh_r, c * cosh_r + s * sinh_r};
}

// e^a/2 for 40 < a <= kLargest.
double half_exponential(double a) {
    const Reduced b = reduce(a);
    const double r = b.r.high;
    const double m = r + (b.r.low + r * r * (0.5 + r * (1.0 / 6 + r * (1.0 / 24 + r * (1.0 / 120 + r * (1.0 / 720))))));
    const DoubleWord half = power(b.n, -2);
    return (half.high + (half.low + half.high * m)) * 2.0;
}

// What Sinh and Cosh share: NaN is quieted and an infinity stays; overflow; large arguments.
bool settled(double x, double* r, int32_t* status) {
    const double a = std::fabs(x);
    *status = kSuccess;
    if (biased_exponent(x) == 2047) {
        *r = x * a;
    } else if (a > kLargest) {
        *r = hide(DBL_MAX) * std::copysign(DBL_MAX, x);
        *status = kOverflow;
    } else if (a > 40.0) {
        *r = std::copysign(half_exponential(a), x);
    } else {
        return false;
    }
    return true;
}

double rounded(DoubleWord a) { return a.high + a.low; }

// a + sqrt(a^2 -+ 1) for the logarithm: large arguments are doubled instead.
constexpr double kLargeForRoot = 0x1p30;
double ln_of_double(double a) { return ln1p_of_pair(a - 1.0, 0.0, 1.0); }

int32_t in_double(int32_t (*function)(const double*, double*), float x, float* r) {
    const double wide = static_cast<double>(x);
    double result;
    const int32_t status = function(&wide, &result);
    *r = static_cast<float>(result);
    const bool overflow = status == kSuccess && biased_exponent(x) != 255 && std::fabs(*r) > FLT_MAX;
    return overflow ? static_cast<int32_t>(kOverflow) : status;
}

}  // namespace

int32_t vdsinh_cout_rare(const double* x, double* r) {
    int32_t status;
    if (settled(*x, r, &status)) return status;
    // Below 2^-28 the result rounds to x.
    const double a = std::fabs(*x);
    *r = a < 0x1p-28 ? *x : std::copysign(rounded(sinh_cosh(a).sinh), *x);
    return kSuccess;
}

int32_t vdcosh_cout_rare(const double* x, double* r) {
    int32_t status;
    if (settled(*x, r, &status))
        *r = std::fabs(*r);
    else
        *r = rounded(sinh_cosh(std::fabs(*x)).cosh);
    return status;
}

int32_t vdtanh_cout_rare(const double* x, double* r) {
    const double a = std::fabs(*x);
    if (*x != *x) {
        *r = *x * *x;
    } else if (a < 0x1p-28) {
        *r = *x;
    } else if (a > 22.0) {
        *r = std::copysign(1.0, *x);
    } else {
        const SinhCosh b = sinh_cosh(a);
        *r = std::copysign(rounded(b.sinh / b.cosh), *x);
    }
    return kSuccess;
}

int32_t vdasinh_cout_rare(const double* x, double* r) {
    const double a = std::fabs(*x);
    double result;
    if (biased_exponent(*x) == 2047) {
        *r = *x * a;
        return kSuccess;
    }
    if (a < 0x1p-28) {
        result = a;
    } else if (a >= kLargeForRoot) {
        result = ln_of_double(a);
    } else {
        // a + sqrt(a^2 + 1) = 1 + a + a^2/(1 + sqrt(a^2 + 1))
        const DoubleWord square = two_product(a, a), one = {1.0, 0.0};
        const DoubleWord w = DoubleWord{a, 0.0} + square / (one + sqrt(one + square));
        result = ln1p_of_pair(w.high, w.low);
    }
    *r = std::copysign(result, *x);
    return kSuccess;
}

int32_t vdacosh_cout_rare(const double* x, double* r) {
    const double a = *x;
    // NaN is quieted and +Inf stays; -Inf is outside the domain as all below 1 are.
    if (biased_exponent(a) == 2047 && a != -HUGE_VAL) {
        *r = a * a;
        return kSuccess;
    }
    if (a < 1.0) {
        *r = hide(0.0) / 0.0;
        return kDomain;
    }
    if (a >= kLargeForRoot) {
        *r = ln_of_double(a);
    } else {
        // With v = a - 1: a + sqrt(a^2 - 1) = 1 + v + sqrt(v^2 + 2 v).
        const double v = a - 1.0;
        const DoubleWord w = DoubleWord{v, 0.0} + sqrt(two_product(v, v) + DoubleWord{2.0 * v, 0.0});
        *r = ln1p_of_pair(w.high, w.low);
    }
    return kSuccess;
}

int32_t vdatanh_cout_rare(const double* x, double* r) {
    const double a = std::fabs(*x);
    if (*x != *x) {
        *r = *x * *x;
        return kSuccess;
    }
    if (a > 1.0) {
        *r = hide(0.0) / 0.0;
        return kDomain;
    }
    if (a == 1.0) {
        *r = std::copysign(1.0, *x) / hide(0.0);
        return kPole;
    }
    if (a < 0x1p-28) {
        *r = *x;
        return kSuccess;
    }
    // (1 + a)/(1 - a) = 1 + 2 a/(1 - a)
    const DoubleWord w = DoubleWord{2.0 * a, 0.0} / two_sum(1.0, -a);
    *r = std::copysign(0.5 * ln1p_of_pair(w.high, w.low), *x);
    return kSuccess;
}

int32_t vssinh_cout_rare(const float* x, float* r) { return in_double(vdsinh_cout_rare, *x, r); }
int32_t vscosh_cout_rare(const float* x, float* r) { return in_double(vdcosh_cout_rare, *x, r); }
int32_t vstanh_cout_rare(const float* x, float* r) { return in_double(vdtanh_cout_rare, *x, r); }
int32_t vsasinh_cout_rare(const float* x, float* r) { return in_double(vdasinh_cout_rare, *x, r); }
int32_t vsacosh_cout_rare(const float* x, float* r) { return in_double(vdacosh_cout_rare, *x, r); }
int32_t vsatanh_cout_rare(const float* x, float* r) { return in_double(vdatanh_cout_rare, *x, r); }

}  // namespace nax::vmath
