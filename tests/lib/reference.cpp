#include "tests/lib/reference.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "tests/lib/turns.h"
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
// Powers by thirds and halves. Two roundings at 160 bits don't show.
int exact_inverse(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t rounding) { return mpfr_ui_div(y, 1, x, rounding); }
int exact_inverse_cbrt(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t rounding) {
    mpfr_cbrt(y, x, rounding);
    return mpfr_ui_div(y, 1, y, rounding);
}
int exact_pow2o3(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t rounding) {
    mpfr_cbrt(y, x, rounding);
    return mpfr_sqr(y, y, rounding);
}
int exact_pow3o2(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t rounding) {
    mpfr_sqrt(y, x, rounding);
    return mpfr_mul(y, y, x, rounding);
}
template <class T>
T inverse(T x) {
    return 1 / x;
}
template <class T>
T inverse_sqrt(T x) {
    return 1 / std::sqrt(x);
}
template <class T>
T inverse_cbrt(T x) {
    return 1 / std::cbrt(x);
}
template <class T>
T pow2o3(T x) {
    return std::cbrt(x) * std::cbrt(x);
}
template <class T>
T pow3o2(T x) {
    return x * std::sqrt(x);
}

using enum TurnFunction;

constexpr Reference kReferences[] = {
    {"Exp", std::exp, std::exp, mpfr_exp},
    {"Exp2", std::exp2, std::exp2, mpfr_exp2},
    {"Exp10", exp10, exp10l, mpfr_exp10},
    {"Expm1", std::expm1, std::expm1, mpfr_expm1},
    {"Ln", std::log, std::log, mpfr_log},
    {"Log2", std::log2, std::log2, mpfr_log2},
    {"Log10", std::log10, std::log10, mpfr_log10},
    {"Log1p", std::log1p, std::log1p, mpfr_log1p},
    {"Logb", std::logb, std::logb, exact_logb},
    {"Sin", std::sin, std::sin, mpfr_sin},
    {"Cos", std::cos, std::cos, mpfr_cos},
    {"Tan", std::tan, std::tan, mpfr_tan},
    {"Sind", of_degrees<Sine>, of_degrees<Sine>, exact_of_degrees<mpfr_sinu>},
    {"Cosd", of_degrees<Cosine>, of_degrees<Cosine>, exact_of_degrees<mpfr_cosu>},
    {"Tand", of_degrees<Tangent>, of_degrees<Tangent>, exact_of_degrees<mpfr_tanu>},
    {"Sinpi", of_half_turns<Sine>, of_half_turns<Sine>, mpfr_sinpi},
    {"Cospi", of_half_turns<Cosine>, of_half_turns<Cosine>, mpfr_cospi},
    {"Tanpi", of_half_turns<Tangent>, of_half_turns<Tangent>, mpfr_tanpi},
    {"Asin", std::asin, std::asin, mpfr_asin},
    {"Acos", std::acos, std::acos, mpfr_acos},
    {"Atan", std::atan, std::atan, mpfr_atan},
    {"Asinpi", asinpi, asinpi, mpfr_asinpi},
    {"Acospi", acospi, acospi, mpfr_acospi},
    {"Atanpi", atanpi, atanpi, mpfr_atanpi},
    {"Sinh", std::sinh, std::sinh, mpfr_sinh},
    {"Cosh", std::cosh, std::cosh, mpfr_cosh},
    {"Tanh", std::tanh, std::tanh, mpfr_tanh},
    {"Asinh", std::asinh, std::asinh, mpfr_asinh},
    {"Acosh", std::acosh, std::acosh, mpfr_acosh},
    {"Atanh", std::atanh, std::atanh, mpfr_atanh},
    {"Sqrt", std::sqrt, std::sqrt, mpfr_sqrt},     {"InvSqrt", inverse_sqrt, inverse_sqrt, mpfr_rec_sqrt},
    {"Inv", inverse, inverse, exact_inverse},      {"Cbrt", std::cbrt, std::cbrt, mpfr_cbrt},
    {"InvCbrt", inverse_cbrt, inverse_cbrt, exact_inverse_cbrt},
    {"Pow2o3", pow2o3, pow2o3, exact_pow2o3},      {"Pow3o2", pow3o2, pow3o2, exact_pow3o2},
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

template <class T>
double exact_ulp_error(ExactBinary exact, T a, T b, T y) {
    mpfr_t first, second, value;
    mpfr_init2(first, 53);
    mpfr_init2(second, 53);
    mpfr_init2(value, 160);
    mpfr_set_d(first, static_cast<double>(a), MPFR_RNDN);
    mpfr_set_d(second, static_cast<double>(b), MPFR_RNDN);
    exact(value, first, second, MPFR_RNDN);
    double error;
    if (std::isfinite(y)) {
        error = ulp_distance(value, y);
    } else {
        // right where the exact value rounds to infinity
        const auto rounded = static_cast<T>(std::numeric_limits<T>::digits == 24 ? mpfr_get_flt(value, MPFR_RNDN)
                                                                                 : mpfr_get_d(value, MPFR_RNDN));
        error = rounded == y ? 0 : std::numeric_limits<double>::infinity();
    }
    mpfr_clear(first);
    mpfr_clear(second);
    mpfr_clear(value);
    return error;
}

template double exact_ulp_error(const Reference&, float, float);
template double exact_ulp_error(const Reference&, double, double);
template double exact_ulp_error(ExactBinary, float, float, float);
template double exact_ulp_error(ExactBinary, double, double, double);

}  // namespace nax::testing
