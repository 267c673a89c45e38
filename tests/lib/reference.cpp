#include "tests/lib/reference.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "tests/lib/special_reference.h"
#include "tests/lib/ulp.h"

namespace nax::testing {
namespace {

int exact_logb(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t rounding) {
    return mpfr_set_si(y, mpfr_get_exp(x) - 1, rounding);  // MPFR's significand lies in [1/2, 1)
}

// Angles in half-turns.
template <class T>
T over_pi(T angle) {
    return angle / static_cast<T>(3.14159265358979323846264338327950288L);
}
#define HALF_TURNS(function)                                            \
    double function##pi(double x) { return over_pi(std::function(x)); } \
    long double function##pi(long double x) { return over_pi(std::function(x)); }
HALF_TURNS(asin)
HALF_TURNS(acos)
HALF_TURNS(atan)
#undef HALF_TURNS

constexpr Reference kReferences[] = {
    {"Exp", std::exp, std::exp, mpfr_exp},         {"Exp2", std::exp2, std::exp2, mpfr_exp2},
    {"Exp10", exp10, exp10l, mpfr_exp10},          {"Expm1", std::expm1, std::expm1, mpfr_expm1},
    {"Ln", std::log, std::log, mpfr_log},          {"Log2", std::log2, std::log2, mpfr_log2},
    {"Log10", std::log10, std::log10, mpfr_log10}, {"Log1p", std::log1p, std::log1p, mpfr_log1p},
    {"Logb", std::logb, std::logb, exact_logb},    {"Asin", std::asin, std::asin, mpfr_asin},
    {"Acos", std::acos, std::acos, mpfr_acos},     {"Atan", std::atan, std::atan, mpfr_atan},
    {"Asinpi", asinpi, asinpi, mpfr_asinpi},       {"Acospi", acospi, acospi, mpfr_acospi},
    {"Atanpi", atanpi, atanpi, mpfr_atanpi},       {"Sinh", std::sinh, std::sinh, mpfr_sinh},
    {"Cosh", std::cosh, std::cosh, mpfr_cosh},     {"Tanh", std::tanh, std::tanh, mpfr_tanh},
    {"Asinh", std::asinh, std::asinh, mpfr_asinh}, {"Acosh", std::acosh, std::acosh, mpfr_acosh},
    {"Atanh", std::atanh, std::atanh, mpfr_atanh},
    {"Erf", erf, erfl, mpfr_erf},
    {"Erfc", erfc, erfcl, mpfr_erfc},
    {"CdfNorm", reference_cdf_norm, reference_cdf_norm, exact_cdf_norm},
    {"ErfInv", reference_erfinv, reference_erfinv, exact_erfinv},
    {"ErfcInv", reference_erfcinv, reference_erfcinv, exact_erfcinv},
    {"ExpInt1", reference_exp_int1, reference_exp_int1, exact_exp_int1},
    {"TGamma", tgamma, tgammal, mpfr_gamma},
    {"LGamma", lgamma, lgammal, exact_lgamma},
    {"CdfNormInv", reference_cdf_norm_inv, reference_cdf_norm_inv, exact_cdf_norm_inv},
};

}  // namespace

const Reference* find_reference(const char* function) {
    for (const Reference& reference : kReferences)
        if (std::strcmp(reference.function, function) == 0) return &reference;
    return nullptr;
}

template <class T>
double ulp_distance(mpfr_ptr value, T y) {
    constexpr int precision = std::numeric_limits<T>::digits;
    constexpr long smallest = std::numeric_limits<T>::min_exponent - precision;
    // MPFR's significands lie in [1/2, 1).
    const long exponent = mpfr_zero_p(value) ? smallest : std::max(mpfr_get_exp(value) - precision, smallest);
    mpfr_sub_d(value, value, static_cast<double>(y), MPFR_RNDN);
    mpfr_mul_2si(value, value, -exponent, MPFR_RNDN);
    return std::fabs(mpfr_get_d(value, MPFR_RNDN));
}

template <class T>
double exact_ulp_error(const Reference& reference, T x, T y) {
    if (!std::isfinite(y)) {
        if constexpr (sizeof(T) == 4)
            return ulp_error(y, reference.in_double(static_cast<double>(x)));
        else
            return ulp_error(y, reference.in_long_double(static_cast<long double>(x)));
    }
    mpfr_t argument, value;
    mpfr_init2(argument, 53);
    mpfr_init2(value, 160);
    mpfr_set_d(argument, static_cast<double>(x), MPFR_RNDN);
    reference.exact(value, argument, MPFR_RNDN);
    const double error = ulp_distance(value, y);
    mpfr_clear(argument);
    mpfr_clear(value);
    return error;
}

template double ulp_distance(mpfr_ptr, float);
template double ulp_distance(mpfr_ptr, double);
template double exact_ulp_error(const Reference&, float, float);
template double exact_ulp_error(const Reference&, double, double);

}  // namespace nax::testing
