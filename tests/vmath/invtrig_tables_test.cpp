// Tables and polynomials of the inverse trigonometric and hyperbolic functions, recomputed with MPFR by another route
// than the generators': angles as arguments of points, logarithms as differences, polynomials against their function.
#include "vmath/invtrig/invtrig_tables.inc"

#include <gtest/gtest.h>
#include <mpfr.h>

#include <cmath>

#include "vmath/invtrig/arcsine_coefficients.inc"
#include "vmath/invtrig/arctangent_coefficients.inc"
#include "vmath/invtrig/hyperbolic_coefficients.inc"
#include "vmath/invtrig/inverse_hyperbolic_coefficients.inc"

namespace nax::vmath {
namespace {

struct Number {
    mpfr_t v;
    Number() { mpfr_init2(v, 300); }
    explicit Number(double x) : Number() { mpfr_set_d(v, x, MPFR_RNDN); }
    Number(const Number&) = delete;
    Number& operator=(const Number&) = delete;
    ~Number() { mpfr_clear(v); }
};

template <class T>
T nearest(const Number& x) {
    if constexpr (sizeof(T) == 8)
        return mpfr_get_d(x.v, MPFR_RNDN);
    else
        return mpfr_get_flt(x.v, MPFR_RNDN);
}

// high is x to nearest, low the rest to nearest.
template <class T>
void expect_parts(Number& x, T high, T low, const char* what, size_t j) {
    EXPECT_EQ(high, nearest<T>(x)) << what << " " << j;
    mpfr_sub_d(x.v, x.v, static_cast<double>(high), MPFR_RNDN);
    EXPECT_EQ(low, nearest<T>(x)) << what << " " << j;
}

using Angle = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t);

template <class T>
void check_base_points(Angle angle, const T (&high)[16], const T (&low)[16], const char* what) {
    for (size_t j = 0; j < 16; ++j) {
        const Number y(static_cast<double>(j)), x(4.0);
        Number value;
        angle(value.v, y.v, x.v, MPFR_RNDN);
        expect_parts(value, high[j], low[j], what, j);
    }
}

// The direction of octant j >> 2 whose smaller magnitude is 0, 1/2 or 1 of the larger.
template <class T>
void check_octants(Angle angle, const T (&high)[16], const T (&low)[16], const char* what) {
    for (size_t j = 0; j < 16; ++j) {
        if ((j & 3) == 1) continue;  // no kernel makes this index
        const double small = (j & 3) == 0 ? 0.0 : (j & 3) == 2 ? 0.5 : 1.0;
        const bool steep = (j & 4) != 0, left = (j & 8) != 0;
        const Number y(steep ? 1.0 : small);
        const Number x((left ? -1.0 : 1.0) * (steep ? small : 1.0));
        Number value;
        angle(value.v, y.v, x.v, MPFR_RNDN);
        expect_parts(value, high[j], low[j], what, j);
    }
}

TEST(InvtrigTables, Angles) {
    check_base_points(mpfr_atan2, atan_16_high, atan_16_low, "atan");
    check_base_points(mpfr_atan2, atan_16f_high, atan_16f_low, "atan float");
    check_base_points(mpfr_atan2pi, atanpi_16_high, atanpi_16_low, "atanpi");
    check_base_points(mpfr_atan2pi, atanpi_16f_high, atanpi_16f_low, "atanpi float");
    check_octants(mpfr_atan2, atan2_16_high, atan2_16_low, "atan2");
    check_octants(mpfr_atan2, atan2_16f_high, atan2_16f_low, "atan2 float");
    check_octants(mpfr_atan2pi, atan2pi_16_high, atan2pi_16_low, "atan2pi");
    check_octants(mpfr_atan2pi, atan2pi_16f_high, atan2pi_16f_low, "atan2pi float");
}

TEST(InvtrigTables, Pi) {
    const auto check = [](auto set, const double(&wide)[2], const float(&single)[2], const char* what) {
        Number x, y;
        set(x);
        set(y);
        expect_parts(x, wide[0], wide[1], what, 0);
        expect_parts(y, single[0], single[1], what, 1);
    };
    const Number minus_one(-1.0);
    const auto pi = [&](Number& x) { mpfr_acos(x.v, minus_one.v, MPFR_RNDN); };
    check(pi, pi_parts, pi_partsf, "pi");
    check([&](Number& x) { pi(x), mpfr_div_ui(x.v, x.v, 2, MPFR_RNDN); }, half_pi_parts, half_pi_partsf, "pi/2");
    check([&](Number& x) { pi(x), mpfr_ui_div(x.v, 1, x.v, MPFR_RNDN); }, inverse_pi_parts, inverse_pi_partsf, "1/pi");
}

template <class T>
void check_logarithms(const T (&reciprocal)[16], const T (&minus_ln)[16], const T (&high)[16], const T (&low)[16],
                      const T (&ln2)[2], int grid) {
    for (int j = 0; j < 16; ++j) {
        const double c = static_cast<double>(reciprocal[j]);
        EXPECT_EQ(std::fmod(c, 1.0 / 64), 0) << j;
        // the remainders of the interval's ends
        EXPECT_GE((1 + j / 16.0) * c - 1, -5.0 / 512) << j;
        EXPECT_LE((1 + (j + 1) / 16.0) * c - 1, 1.0 / 16) << j;
        // 6 ln2 - ln(64 c)
        Number value(64 * c), six(64.0);
        mpfr_log(value.v, value.v, MPFR_RNDN);
        mpfr_log(six.v, six.v, MPFR_RNDN);
        mpfr_sub(value.v, six.v, value.v, MPFR_RNDN);
        EXPECT_EQ(minus_ln[j], nearest<T>(value)) << j;
        EXPECT_EQ(std::fmod(static_cast<double>(high[j]), std::ldexp(1.0, -grid)), 0) << j;
        mpfr_sub_d(value.v, value.v, static_cast<double>(high[j]), MPFR_RNDN);
        EXPECT_EQ(low[j], nearest<T>(value)) << j;
        EXPECT_LE(std::fabs(static_cast<double>(low[j])), std::ldexp(0.5, -grid)) << j;
    }
    EXPECT_EQ(std::fmod(static_cast<double>(ln2[0]), std::ldexp(1.0, 1 - grid)), 0);
    Number value;
    mpfr_const_log2(value.v, MPFR_RNDN);
    mpfr_sub_d(value.v, value.v, static_cast<double>(ln2[0]), MPFR_RNDN);
    EXPECT_EQ(ln2[1], nearest<T>(value));
}

TEST(InvtrigTables, Logarithms) {
    check_logarithms(reciprocal_16, minus_ln_16, minus_ln_16_high, minus_ln_16_low, ln2_parts, 43);
    check_logarithms(reciprocal_16f, minus_ln_16f, minus_ln_16f_high, minus_ln_16f_low, ln2_partsf, 17);
}

using Function = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);

// Base-2 logarithm of the largest relative error of lead x^p + sum c_k x^(first + step k).
struct Form {
    Function function;
    double low, high;
    int first, step;  // exponents of the coefficients
    int lead;         // that of the leading term
    bool over_pi = false;
};
template <class T, size_t N>
double error_bits(const Form& form, const T (&c)[N]) {
    double largest = 0;
    for (int i = 0; i <= 300; ++i) {
        const double at = form.low + (form.high - form.low) * i / 300;
        if (at == 0) continue;
        const Number x(at);
        Number exact, sum(0.0), power, pi;
        form.function(exact.v, x.v, MPFR_RNDN);
        mpfr_const_pi(pi.v, MPFR_RNDN);
        for (size_t k = 0; k < N; ++k) {
            mpfr_pow_ui(power.v, x.v, static_cast<unsigned long>(form.first + form.step * static_cast<int>(k)),
                        MPFR_RNDN);
            mpfr_mul_d(power.v, power.v, static_cast<double>(c[k]), MPFR_RNDN);
            mpfr_add(sum.v, sum.v, power.v, MPFR_RNDN);
        }
        if (form.over_pi) mpfr_mul(sum.v, sum.v, pi.v, MPFR_RNDN);
        mpfr_pow_ui(power.v, x.v, static_cast<unsigned long>(form.lead), MPFR_RNDN);
        mpfr_add(sum.v, sum.v, power.v, MPFR_RNDN);
        mpfr_div(sum.v, sum.v, exact.v, MPFR_RNDN);
        mpfr_sub_ui(sum.v, sum.v, 1, MPFR_RNDN);
        largest = std::max(largest, std::fabs(mpfr_get_d(sum.v, MPFR_RNDN)));
    }
    return std::log2(largest);
}

TEST(InvtrigTables, ArcPolynomialsMeetTheirBounds) {
    const Form asin = {mpfr_asin, 0, 0.5, 3, 2, 1}, asinpi = {mpfr_asin, 0, 0.5, 3, 2, 1, true};
    EXPECT_LE(error_bits(asin, asin_double_ha), -58);
    EXPECT_LE(error_bits(asin, asin_double_la), -54);
    EXPECT_LE(error_bits(asin, asin_double_ep), -26.5);
    EXPECT_LE(error_bits(asin, asin_single_ha), -26.5);
    EXPECT_LE(error_bits(asin, asin_single_la), -22.5);
    EXPECT_LE(error_bits(asin, asin_single_ep), -13.5);
    EXPECT_LE(error_bits(asinpi, asinpi_double_ha), -58);
    EXPECT_LE(error_bits(asinpi, asinpi_double_la), -54);
    EXPECT_LE(error_bits(asinpi, asinpi_double_ep), -26.5);
    EXPECT_LE(error_bits(asinpi, asinpi_single_ha), -26.5);
    EXPECT_LE(error_bits(asinpi, asinpi_single_ep), -13.5);
    const double end = 1 / 3.75;
    const Form atan = {mpfr_atan, 0, end, 3, 2, 1}, atanpi = {mpfr_atan, 0, end, 3, 2, 1, true};
    EXPECT_LE(error_bits(atan, atan_double_ha), -55);
    EXPECT_LE(error_bits(atan, atan_double_ep), -30);
    EXPECT_LE(error_bits(atan, atan_single_ha), -30);
    EXPECT_LE(error_bits(atan, atan_single_la), -24.5);
    EXPECT_LE(error_bits(atan, atan_single_ep), -18);
    EXPECT_LE(error_bits(atanpi, atanpi_double_ha), -55);
    EXPECT_LE(error_bits(atanpi, atanpi_double_ep), -30);
    EXPECT_LE(error_bits(atanpi, atanpi_single_ha), -30);
    EXPECT_LE(error_bits(atanpi, atanpi_single_la), -24.5);
    EXPECT_LE(error_bits(atanpi, atanpi_single_ep), -18);
    const Form direct = {mpfr_atan, 0, 1, 3, 2, 1}, directpi = {mpfr_atan, 0, 1, 3, 2, 1, true};
    EXPECT_LE(error_bits(direct, atan_direct_double_ep), -30);
    EXPECT_LE(error_bits(direct, atan_direct_single_la), -24.5);
    EXPECT_LE(error_bits(direct, atan_direct_single_ep), -13.5);
    EXPECT_LE(error_bits(directpi, atanpi_direct_double_ep), -30);
    EXPECT_LE(error_bits(directpi, atanpi_direct_single_la), -24.5);
    EXPECT_LE(error_bits(directpi, atanpi_direct_single_ep), -13.5);
    EXPECT_LE(error_bits({mpfr_atan, 0, 0.125, 3, 2, 1}, atan_double_rare), -62);
}

TEST(InvtrigTables, HyperbolicPolynomialsMeetTheirBounds) {
    const double r = std::log(2.0) / 32;
    const Form sinh = {mpfr_sinh, 0, r, 3, 2, 1}, cosh = {mpfr_cosh, 0, r, 2, 2, 0}, tanh = {mpfr_tanh, 0, r, 3, 2, 1};
    EXPECT_LE(error_bits(sinh, sinh_double_ha), -68);
    EXPECT_LE(error_bits(sinh, sinh_double_ep), -30);
    EXPECT_LE(error_bits(sinh, sinh_single_ha), -30);
    EXPECT_LE(error_bits(cosh, cosh_double_ha), -65);
    EXPECT_LE(error_bits(cosh, cosh_double_ep), -28);
    EXPECT_LE(error_bits(cosh, cosh_single_ha), -28);
    EXPECT_LE(error_bits(tanh, tanh_double_ha), -69);
    EXPECT_LE(error_bits(tanh, tanh_double_la), -55);
    EXPECT_LE(error_bits(tanh, tanh_double_ep), -26.5);
    EXPECT_LE(error_bits(tanh, tanh_single_ha), -38);
    EXPECT_LE(error_bits(tanh, tanh_single_ep), -26.5);
    const Form ln = {mpfr_log1p, -5.0 / 512, 1.0 / 16, 2, 1, 1};
    EXPECT_LE(error_bits(ln, ln1p_double_ha), -59);
    EXPECT_LE(error_bits(ln, ln1p_double_la), -53.5);
    EXPECT_LE(error_bits(ln, ln1p_double_ep), -29.5);
    EXPECT_LE(error_bits(ln, ln1p_single_ha), -29.5);
    EXPECT_LE(error_bits(ln, ln1p_single_la), -23.5);
    EXPECT_LE(error_bits(ln, ln1p_single_ep), -16.5);
}

}  // namespace
}  // namespace nax::vmath
