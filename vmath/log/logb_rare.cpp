// Scalar paths of Logb: the exponent of a denormal, and the arguments that have none.
#include <cmath>

#include "vmath/log/log_rare.h"
#include "vmath/scalar.h"

namespace nax::vmath {
namespace {

// `scaled` is x times 2^`shift`, a normal number where x is denormal.
template <class T>
int32_t logb_element(T x, int32_t biased, int32_t special, int32_t bias, int32_t biased_scaled, int32_t shift, T* y) {
    // Zero. The status is that of the domain, not of a pole.
    if (x == T(0)) {
        *y = T(-1) / hide(T(0));
        return kDomain;
    }
    // Inf of either sign gives +Inf, NaN stays NaN.
    if (biased == special) {
        *y = std::fabs(x);
        return kSuccess;
    }
    *y = static_cast<T>(biased == 0 ? biased_scaled - shift - bias : biased - bias);
    return kSuccess;
}

}  // namespace

// The product with 1 quiets a NaN, and is 0 for a denormal where these are taken as zero.
int32_t vdlogb_cout_rare(const double* x, double* y) {
    const double a = *x * hide(1.0);
    return logb_element(a, biased_exponent(a), 2047, 1023, biased_exponent(a * 18014398509481984.0), 54, y);
}

int32_t vslogb_cout_rare(const float* x, float* y) {
    const float a = *x * hide(1.0f);
    return logb_element(a, biased_exponent(a), 255, 127, biased_exponent(a * 33554432.0f), 25, y);
}

}  // namespace nax::vmath
