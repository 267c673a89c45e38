// The tables of the power family, recomputed: an accurate table is right if its short value is the function of its
// argument to far more bits than either holds.
#include "vmath/power/power_tables.inc"

#include <gtest/gtest.h>
#include <mpfr.h>

#include <bit>
#include <cmath>
#include <cstdint>

namespace nax::vmath {
namespace {

// log2 of the relative error of `found` as x^(numerator/3).
double error_of_root(double x, int numerator, double found) {
    mpfr_t r, f;
    mpfr_init2(r, 250);
    mpfr_init2(f, 250);
    // found^3 against x^numerator: three times the error
    mpfr_set_d(r, x, MPFR_RNDN);
    mpfr_pow_si(r, r, numerator, MPFR_RNDN);
    mpfr_set_d(f, found, MPFR_RNDN);
    mpfr_pow_ui(f, f, 3, MPFR_RNDN);
    mpfr_div(r, f, r, MPFR_RNDN);
    mpfr_sub_ui(r, r, 1, MPFR_RNDN);
    const double error = std::fabs(mpfr_get_d(r, MPFR_RNDN)) / 3;
    mpfr_clear(r);
    mpfr_clear(f);
    return error == 0 ? -300 : std::log2(error);
}

// x is a multiple of 2^-bits of its binade.
bool is_short(double x, int bits) {
    int exponent;
    const double scaled = std::ldexp(std::frexp(x, &exponent), bits);
    return scaled == std::nearbyint(scaled);
}

template <class T>
void check_root(const T (&reciprocal)[16], const T (&value)[16], const T (&factor)[8], const T (&high)[8],
                const T (&low)[8], int numerator) {
    constexpr bool single = sizeof(T) == 4;
    for (int j = 0; j < 16; ++j) {
        // c^-a, so that c takes -a
        EXPECT_LT(error_of_root(reciprocal[j], -numerator, value[j]), single ? -26.5 : -60) << j;
        EXPECT_TRUE(is_short(value[j], single ? 12 : 20)) << j;
        // the kernels' series reach to 18/512 in float, 17/512 in double
        for (const double m : {1 + j / 16.0, 1 + (j + 1) / 16.0})
            EXPECT_LE(std::fabs(m * static_cast<double>(reciprocal[j]) - 1), single ? 18.0 / 512 : 17.0 / 512) << j;
    }
    for (const int k : {-1, 0, 1}) {
        const int index = k & 7;
        EXPECT_LE(error_of_root(std::exp2(k), numerator, factor[index]), single ? -24 : -53);
        EXPECT_TRUE(is_short(high[index], single ? 12 : 33));
        const long double sum = static_cast<long double>(high[index]) * (1 + static_cast<long double>(low[index]));
        EXPECT_LE(std::fabs(static_cast<double>(sum / std::exp2(static_cast<long double>(k * numerator) / 3) - 1)),
                  single ? 0x1p-35 : 0x1p-62);
    }
}
TEST(PowerTables, Roots) {
    check_root(cbrt_reciprocal, cbrt_value, cbrt_factor, cbrt_factor_high, cbrt_factor_low, 1);
    check_root(inv_cbrt_reciprocal, inv_cbrt_value, inv_cbrt_factor, inv_cbrt_factor_high, inv_cbrt_factor_low, -1);
    check_root(pow2o3_reciprocal, pow2o3_value, pow2o3_factor, pow2o3_factor_high, pow2o3_factor_low, 2);
    check_root(cbrtf_reciprocal, cbrtf_value, cbrtf_factor, cbrtf_factor_high, cbrtf_factor_low, 1);
    check_root(inv_cbrtf_reciprocal, inv_cbrtf_value, inv_cbrtf_factor, inv_cbrtf_factor_high, inv_cbrtf_factor_low,
               -1);
    check_root(pow2o3f_reciprocal, pow2o3f_value, pow2o3f_factor, pow2o3f_factor_high, pow2o3f_factor_low, 2);
}

double error_of_log(double c, double value) {
    mpfr_t r;
    mpfr_init2(r, 250);
    mpfr_set_d(r, c, MPFR_RNDN);
    mpfr_log2(r, r, MPFR_RNDN);
    mpfr_add_d(r, r, value, MPFR_RNDN);
    const double error = std::fabs(mpfr_get_d(r, MPFR_RNDN));
    mpfr_clear(r);
    return error;
}

template <int Size>
void check_log(const double (&reciprocal)[Size], const double (&value)[Size]) {
    EXPECT_EQ(reciprocal[0], 1.0);
    EXPECT_EQ(value[0], 0.0);
    for (int j = 0; j < Size; ++j) {
        EXPECT_LT(error_of_log(reciprocal[j], value[j]), 0x1p-70) << j;
        EXPECT_EQ(std::ldexp(value[j], 40), std::nearbyint(std::ldexp(value[j], 40))) << j;
        EXPECT_NEAR(reciprocal[j] * (1 + static_cast<double>(j) / Size), 1, 0x1p-20) << j;
    }
}
TEST(PowerTables, Logarithms) {
    check_log(pow_log2_32_reciprocal, pow_log2_32_value);
    check_log(pow_log2_16_reciprocal, pow_log2_16_value);
    for (int j = 0; j < 16; ++j) {
        EXPECT_EQ(pow_log2_16f_reciprocal[j], 16.0f / static_cast<float>(16 + j));
        EXPECT_LE(error_of_log(pow_log2_16f_reciprocal[j], pow_log2_16f_value[j]), 0x1p-25) << j;
    }
}

TEST(PowerTables, Exponentials) {
    for (int64_t j = 0; j < 16; ++j) {
        const double high = std::bit_cast<double>(std::bit_cast<int64_t>(pow_exp2_16[j]) + (j << 48));
        const long double exact = std::exp2(static_cast<long double>(j) / 16);
        EXPECT_EQ(high, static_cast<double>(exact));
        EXPECT_NEAR(pow_exp2_16_low[j], static_cast<double>((exact - high) / high), 0x1p-62);
        const float single =
            std::bit_cast<float>(std::bit_cast<int32_t>(pow_exp2_16f[j]) + static_cast<int32_t>(j << 19));
        EXPECT_EQ(single, static_cast<float>(exact));
    }
}

}  // namespace
}  // namespace nax::vmath
