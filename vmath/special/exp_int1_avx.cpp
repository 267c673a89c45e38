// ExpInt1:  E1(x) = integral of exp(-t)/t from x to infinity, one element at a time.
//
//     x >= 2^-20   exp(-x) F(x), F from the Taylor row at the nearest point of a floating grid of 16 points a binade
//     below        -ln x - gamma + x - x^2/4
//
// exp(-x) = 2^k 2^(j/64) e^r, |r| <= ln2/128. The product 2^(j/64) F(x0) is exact in two parts, what multiplies it lies
// within 0.04 of 1. Within 0.55 ulp, in the denormals 0.25 more.
#include <cfloat>
#include <cmath>

#include "vmath/exp/exp_tables.inc"
#include "vmath/frame/scalar.h"
#include "vmath/special/double_word.h"
#include "vmath/special/exp_int_rows.inc"
#include "vmath/special/scalar_kernel.h"
#include "vmath/special/special_rare.h"

namespace nax::vmath {
namespace {

using namespace NAX_ISA;

constexpr Word kEuler = {0x1.2788cfc6fb619p-1, -0x1.6cb90701fbfabp-58};

double power_of_2(int64_t k) { return std::bit_cast<double>((k + 1023) << 52); }

double near_zero(double x) {
    const bool denormal = x < DBL_MIN;
    const Word ln = log_word(denormal ? x * 0x1p128 : x);
    // 128 ln2, or 0
    const Word shift = {denormal ? 0x1.62e42fefa39efp+6 : 0.0, denormal ? 0x1.abc9e3b39803fp-49 : 0.0};
    const Word s = sum(sum(shift, Word{-ln.high, -ln.low}), Word{-kEuler.high, -kEuler.low});
    return s.high + (s.low + (x - 0.25 * x * x));
}

// x from 2^-20 to 1000.
double from_rows(double x) {
    // F(x)/F(x0) - 1
    const auto rounded = (std::bit_cast<int64_t>(x) + (1ll << 47)) & -(1ll << 48);
    const auto& row = exp_int_rows[(rounded >> 48) - ((1023 - 20) << 4)];
    const double d = x - std::bit_cast<double>(rounded), d2 = d * d, d4 = d2 * d2;
    const double* const f = row + 2;
    const double low = (f[0] + f[1] * d) + d2 * (f[2] + f[3] * d), middle = (f[4] + f[5] * d) + d2 * (f[6] + f[7] * d),
                 high = (f[8] + f[9] * d) + d2 * (f[10] + f[11] * d);
    const double p = d * (low + d4 * (middle + d4 * high));

    // exp(-x)/(2^k 2^(j/64)) - 1
    const double shifter = 0x1.8p52, z = x * -92.33248261689366 + shifter, n = z - shifter;
    const auto whole = static_cast<int64_t>(n), j = whole & 63, k = whole >> 6;
    const double r = (-x - n * 0.010830424696223417) - n * 2.572804622327669e-14;
    const double q = r + r * r * ((0.5 + r * (1.0 / 6)) + r * r * ((1.0 / 24 + r * (1.0 / 120)) + r * r * (1.0 / 720)));

    const Word lead = product(exp2_64[j], row[0]);
    const double rest = lead.low + (exp2_64_absolute_low[j] * row[0] + exp2_64[j] * row[1]);
    const double y = lead.high + (rest + lead.high * (p + q + p * q));
    return k > -1000 ? y * power_of_2(k) : y * power_of_2(k + 128) * 0x1p-128;
}

}  // namespace

int32_t vdexpint1_cout_rare(const double* x, double* y) {
    const double a = *x;
    // NaN is quieted.
    if (a != a) {
        *y = a + a;
        return kSuccess;
    }
    // The pole, of either sign; negative.
    if (a == 0.0) {
        *y = 1.0 / std::fabs(hide(a));
        return kPole;
    }
    if (a < 0.0) {
        *y = hide(0.0) / 0.0;
        return kDomain;
    }
    // E1(738.527...) = 2^-1075; infinity gives 0 exactly.
    if (a >= 738.5272098491089) {
        const bool infinite = a > DBL_MAX;
        *y = infinite ? 0.0 : hide(DBL_MIN) * DBL_MIN;
        return infinite ? kSuccess : kUnderflow;
    }
    *y = a < 0x1p-20 ? near_zero(a) : from_rows(a);
    return kSuccess;
}

int32_t vsexpint1_cout_rare(const float* x, float* y) {
    const auto wide = static_cast<double>(*x);
    double result;
    const int32_t status = vdexpint1_cout_rare(&wide, &result);
    *y = static_cast<float>(result);
    return status == kSuccess && *y == 0.0f && *x <= FLT_MAX ? kUnderflow : status;
}

}  // namespace nax::vmath

NAX_SCALAR_KERNEL(double, d, ExpInt1, E9HAynn, nax::vmath::vdexpint1_cout_rare)
