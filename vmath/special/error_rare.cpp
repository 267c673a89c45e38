// Scalar paths of Erf, Erfc and CdfNorm: the kernels' rows and series at full length (error_function.h), for any
// argument; Erf expands tiny arguments, whose results may be denormal, in a product of two parts that is rounded once.
#include <cfloat>
#include <cmath>

#include "vmath/frame/scalar.h"
#include "vmath/special/double_word.h"
#include "vmath/special/error_rows.inc"
#include "vmath/special/series.h"
#include "vmath/special/special_rare.h"

namespace nax::vmath {
namespace {

using namespace NAX_ISA;

// 2/sqrt(pi) less 1.
constexpr Word kSlopeLessOne = {0x1.06eba8214db69p-3, -0x1.ca38add6025p-57};

// The mean of exp(-w s - q s^2) over s in [0, 1], less 1.
double mean_less_one(double w, double q) {
    constexpr int powers[] = {13, 10, 7, 4, 2};
    double sum = 0;
    for (int j = 4; j >= 0; --j) {
        double t = 0;
        for (int i = powers[j]; i >= (j == 0 ? 1 : 0); --i) t = t * w + mean_coefficient(i, j);
        sum = sum * q + (j == 0 ? t * w : t);
    }
    return sum;
}

// F(x) for x within the rows that start at first/128.
template <class Rows>
double from_rows(const Rows& rows, int first, bool normal, double x) {
    const double nearest = std::nearbyint(x * 128.0), x0 = nearest / 128.0, d = x - x0;
    const auto& row = rows[static_cast<int>(nearest) - first];
    const double factor = normal ? 1.0 : 2.0, m = mean_less_one(factor * x0 * d, 0.5 * factor * d * d);
    const Word step = product(row[1], d);
    return row[0] + (step.high + (step.high * m + (step.low + row[3] * d + row[2])));
}

int32_t underflow(double* y) {
    *y = hide(DBL_MIN) * DBL_MIN;
    return kUnderflow;
}

int32_t in_double(int32_t (*function)(const double*, double*), float x, float* y) {
    const auto wide = static_cast<double>(x);
    double result;
    const int32_t status = function(&wide, &result);
    *y = static_cast<float>(result);
    // The double function's result may vanish among the floats.
    return status == kSuccess && result != 0 && *y == 0 && result < DBL_MAX && std::fabs(result) < 0x1p-140 ? kUnderflow
                                                                                                            : status;
}

}  // namespace

int32_t vderf_cout_rare(const double* x, double* y) {
    const double a = std::fabs(*x);
    // NaN is quieted.
    if (a != a) {
        *y = *x + *x;
    } else if (a >= 767.0 / 128) {
        // 1 - erf(5.99) is below 2^-54.
        *y = std::copysign(1.0, *x);
    } else if (a < 0x1p-30) {
        // x + 0.128... x: a sum that is exact on the grid of the denormals. Zero keeps its sign.
        *y = *x + std::fma(*x, kSlopeLessOne.high, *x * kSlopeLessOne.low);
    } else if (a < 3.5 / 128) {
        const double m = mean_less_one(0.0, a * a);
        *y = std::copysign(a + (kSlopeLessOne.high * a + (1.0 + kSlopeLessOne.high) * a * m), *x);
    } else {
        *y = std::copysign(from_rows(erf_rows, 0, false, a), *x);
    }
    return kSuccess;
}

int32_t vderfc_cout_rare(const double* x, double* y) {
    const double a = *x;
    // NaN is quieted.
    if (a != a) {
        *y = a * a;
        return kSuccess;
    }
    // At infinity exactly 0; past 2^-1075 an underflow.
    if (a >= 27.226017111108366) {
        if (a <= DBL_MAX) return underflow(y);
        *y = 0.0;
        return kSuccess;
    }
    // erfc(-6) rounds to 2.
    *y = a <= -6.0 ? 2.0 : from_rows(erfc_rows, -768, false, a) * 0x1p-128;
    return kSuccess;
}

int32_t vdcdfnorm_cout_rare(const double* x, double* y) {
    const double a = *x;
    // NaN is quieted.
    if (a != a) {
        *y = a * a;
        return kSuccess;
    }
    // At minus infinity exactly 0; past 2^-1075 an underflow.
    if (a <= -38.485408335567335) {
        if (a >= -DBL_MAX) return underflow(y);
        *y = 0.0;
        return kSuccess;
    }
    // 1 - CdfNorm(8.5) is below 2^-54.
    *y = a >= 8.5 ? 1.0 : from_rows(cdf_norm_rows, -4927, true, a) * 0x1p-128;
    return kSuccess;
}

int32_t vserf_cout_rare(const float* x, float* y) { return in_double(vderf_cout_rare, *x, y); }
int32_t vserfc_cout_rare(const float* x, float* y) { return in_double(vderfc_cout_rare, *x, y); }
int32_t vscdfnorm_cout_rare(const float* x, float* y) { return in_double(vdcdfnorm_cout_rare, *x, y); }

}  // namespace nax::vmath
