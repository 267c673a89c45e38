// Tables of the special functions, recomputed by other routes than their generators'.
#include <gtest/gtest.h>
#include <mpfr.h>

#include <bit>
#include <cmath>
#include <cstdint>

#include "vmath/special/error_rows.inc"
#include "vmath/special/exp_int_rows.inc"
#include "vmath/special/gamma_rows.inc"
#include "vmath/special/inverse_points.inc"
#include "vmath/special/lgamma_rows.inc"
#include "vmath/special/series.h"
#include "vmath/special/special_coefficients.inc"

namespace nax::vmath {
namespace {

// A 260-bit number.
struct Number {
    mpfr_t v;
    Number() { mpfr_init2(v, 260); }
    explicit Number(double x) : Number() { mpfr_set_d(v, x, MPFR_RNDN); }
    Number(const Number&) = delete;
    Number& operator=(const Number&) = delete;
    ~Number() { mpfr_clear(v); }
    double nearest() const { return mpfr_get_d(v, MPFR_RNDN); }
    double less(double x) const {
        Number r;
        mpfr_sub_d(r.v, v, x, MPFR_RNDN);
        return r.nearest();
    }
};

void expect_pair(const Number& exact, double high, double low, int at) {
    EXPECT_EQ(high, exact.nearest()) << at;
    EXPECT_EQ(low, exact.less(high)) << at;
}

// The density exp(-x^2/divisor) times factor/sqrt(pi), from its own series of operations.
void set_density(Number& y, double x, double divisor, double factor_squared) {
    Number root;
    mpfr_set_d(y.v, x, MPFR_RNDN);
    mpfr_sqr(y.v, y.v, MPFR_RNDN);
    mpfr_div_d(y.v, y.v, -divisor, MPFR_RNDN);
    mpfr_exp(y.v, y.v, MPFR_RNDN);
    mpfr_const_pi(root.v, MPFR_RNDN);
    mpfr_div_d(root.v, root.v, factor_squared, MPFR_RNDN);
    mpfr_rec_sqrt(root.v, root.v, MPFR_RNDN);
    mpfr_mul(y.v, y.v, root.v, MPFR_RNDN);
}

template <class Rows>
void check_error_rows(const Rows& rows, int first, bool normal, bool complement) {
    const int count = static_cast<int>(std::size(rows));
    for (int i = 0; i < count; i += i + 23 < count ? 23 : 1) {  // some, and the last
        const double x = (first + i) / 128.0;
        Number value(x), density;
        if (normal) {
            // erfc(-x/sqrt(2))/2
            Number root(0.5);
            mpfr_sqrt(root.v, root.v, MPFR_RNDN);
            mpfr_mul(value.v, value.v, root.v, MPFR_RNDN);
            mpfr_neg(value.v, value.v, MPFR_RNDN);
            mpfr_erfc(value.v, value.v, MPFR_RNDN);
            mpfr_div_2ui(value.v, value.v, 1, MPFR_RNDN);
        } else if (complement && x < 0) {
            // 1 + erf(-x): another route than erfc
            mpfr_erf(value.v, value.v, MPFR_RNDN);
            mpfr_ui_sub(value.v, 1, value.v, MPFR_RNDN);
        } else if (complement) {
            mpfr_erfc(value.v, value.v, MPFR_RNDN);
        } else {
            mpfr_erfc(value.v, value.v, MPFR_RNDN);
            mpfr_ui_sub(value.v, 1, value.v, MPFR_RNDN);
        }
        set_density(density, x, normal ? 2 : 1, normal ? 0.5 : 4);
        if (complement && !normal) mpfr_neg(density.v, density.v, MPFR_RNDN);
        if (complement) {
            mpfr_mul_2ui(value.v, value.v, 128, MPFR_RNDN);
            mpfr_mul_2ui(density.v, density.v, 128, MPFR_RNDN);
        }
        expect_pair(value, rows[i][0], rows[i][2], first + i);
        expect_pair(density, rows[i][1], rows[i][3], first + i);
    }
}

TEST(SpecialTables, ErrorRows) {
    check_error_rows(erf_rows, 0, false, false);
    check_error_rows(erfc_rows, -768, false, true);
    check_error_rows(cdf_norm_rows, -4927, true, true);
}

// A point's value with its rest, put through the function, must give the grid's argument back; its slope is the
// reciprocal of the density there.
template <class Points>
void check_inverse_points(const Points& points, bool norm) {
    const double top = norm ? 0.25 : 0.5;
    const int top_exponent = norm ? 2 : 1, middle = (35 - top_exponent) * 128 + 1, tail = (53 - top_exponent) * 128 + 1;
    ASSERT_EQ(std::size(points), static_cast<size_t>(1 + middle + tail));
    EXPECT_EQ(points[0][0], 0);
    for (int i = 1; i < 1 + middle + tail; i += 5) {
        const bool is_tail = i > middle;
        const int below_top = (is_tail ? middle + tail : middle) - i;
        const double argument =
            std::bit_cast<double>(std::bit_cast<int64_t>(top) - (static_cast<int64_t>(below_top) << 45));
        const double slope = points[i][1];
        const auto units = static_cast<double>((std::bit_cast<int64_t>(slope) & 31) - 16);
        Number y(points[i][0]), density, forward, root(2.0);
        Number rest(points[i][0] * units);
        mpfr_mul_2si(rest.v, rest.v, -57, MPFR_RNDN);
        mpfr_add(y.v, y.v, rest.v, MPFR_RNDN);
        // erf(y) or erfc(y), of y/sqrt(2) and halved for the normal distribution
        if (norm) {
            mpfr_sqrt(root.v, root.v, MPFR_RNDN);
            mpfr_div(forward.v, y.v, root.v, MPFR_RNDN);
        } else {
            mpfr_set(forward.v, y.v, MPFR_RNDN);
        }
        is_tail ? mpfr_erfc(forward.v, forward.v, MPFR_RNDN) : mpfr_erf(forward.v, forward.v, MPFR_RNDN);
        if (norm) mpfr_div_2ui(forward.v, forward.v, 1, MPFR_RNDN);
        // The argument's error over the slope is the point's error: half a unit of the rest, or what doesn't fit it.
        const double residual = forward.less(argument) * std::fabs(slope) / points[i][0];
        EXPECT_LE(std::fabs(residual), std::fabs(units) == 16 || units == 15 ? 0x1p-56 : 0x1.01p-58) << i;
        // The density at the point, rounded to the 48 bits that the rest leaves it; that of the value without its rest.
        set_density(density, points[i][0], norm ? 2 : 1, norm ? 0.5 : 4);
        const double expected = (is_tail ? -1 : 1) / density.nearest();
        EXPECT_LE(std::fabs(slope / expected - 1), 0x1p-46) << i;
    }
}

TEST(SpecialTables, InversePoints) {
    check_inverse_points(erf_inv_points, false);
    check_inverse_points(cdf_norm_inv_points, true);
}

// Rows reach their neighbours: the series of row i at the full step, in 260 bits, is the next row's value.
template <class Row>
void set_series(Number& sum, const Row& row, int first, int last, const Number& d) {
    mpfr_set_zero(sum.v, 1);
    for (int k = last; k >= first; --k) {
        mpfr_add_d(sum.v, sum.v, row[k], MPFR_RNDN);
        mpfr_mul(sum.v, sum.v, d.v, MPFR_RNDN);
    }
}

TEST(SpecialTables, GammaRows) {
    for (int i = 0; i < static_cast<int>(std::size(gamma_rows)); i += 5) {
        const double x = 1 + i / 16.0;
        Number value(x), psi(x);
        mpfr_gamma(value.v, value.v, MPFR_RNDN);
        mpfr_digamma(psi.v, psi.v, MPFR_RNDN);
        expect_pair(value, gamma_rows[i][0], gamma_rows[i][1], i);
        expect_pair(psi, gamma_rows[i][2], gamma_rows[i][3], i);
        // Half a step on, by the higher coefficients: Gamma(x + d)/Gamma(x) - 1 = c_1 d + ...
        Number d(0x1p-5), moved(x + 0x1p-5), rest;
        mpfr_gamma(moved.v, moved.v, MPFR_RNDN);
        mpfr_div(moved.v, moved.v, value.v, MPFR_RNDN);
        mpfr_sub_ui(moved.v, moved.v, 1, MPFR_RNDN);
        set_series(rest, gamma_rows[i], 4, 13, d);
        mpfr_mul(rest.v, rest.v, d.v, MPFR_RNDN);
        mpfr_mul(psi.v, psi.v, d.v, MPFR_RNDN);
        mpfr_add(rest.v, rest.v, psi.v, MPFR_RNDN);
        mpfr_sub(rest.v, rest.v, moved.v, MPFR_RNDN);
        EXPECT_LE(std::fabs(rest.nearest()), 0x1p-58) << i;
    }
}

TEST(SpecialTables, LogGammaRowsAndZeros) {
    for (int i = 0; i < static_cast<int>(std::size(lgamma_rows)); ++i) {
        const double x = 1 + i / 16.0;
        Number value(x), psi(x), d(-0x1p-5), moved(x - 0x1p-5), rest;
        mpfr_lngamma(value.v, value.v, MPFR_RNDN);
        mpfr_digamma(psi.v, psi.v, MPFR_RNDN);
        mpfr_lngamma(moved.v, moved.v, MPFR_RNDN);
        expect_pair(value, lgamma_rows[i][0], lgamma_rows[i][1], i);
        expect_pair(psi, lgamma_rows[i][2], lgamma_rows[i][3], i);
        set_series(rest, lgamma_rows[i], 4, 13, d);
        mpfr_mul(rest.v, rest.v, d.v, MPFR_RNDN);
        mpfr_mul(psi.v, psi.v, d.v, MPFR_RNDN);
        mpfr_add(rest.v, rest.v, psi.v, MPFR_RNDN);
        mpfr_add(rest.v, rest.v, value.v, MPFR_RNDN);
        mpfr_sub(rest.v, rest.v, moved.v, MPFR_RNDN);
        EXPECT_LE(std::fabs(rest.nearest()), 0x1p-62) << i;
    }
    for (int i = 0; i < static_cast<int>(std::size(lgamma_zeros)); ++i) {
        const auto& row = lgamma_zeros[i];
        EXPECT_EQ(std::floor(row[0] + row[1]), -3 - i / 2) << i;
        Number zero(row[0]), psi;
        mpfr_add_d(zero.v, zero.v, row[1], MPFR_RNDN);
        mpfr_add_d(zero.v, zero.v, row[2], MPFR_RNDN);
        mpfr_digamma(psi.v, zero.v, MPFR_RNDN);
        EXPECT_NEAR(psi.nearest() / row[4], 1, 0x1p-52) << i;
        int sign;
        mpfr_lgamma(zero.v, &sign, zero.v, MPFR_RNDN);
        // The error of the zero is that over the slope, relative to the zero's last part.
        EXPECT_LE(std::fabs(zero.nearest() / row[4]), 0x1p-150 * std::fabs(row[0])) << i;
    }
}

TEST(SpecialTables, ExponentialIntegralRows) {
    for (int i = 0; i < static_cast<int>(std::size(exp_int_rows)); ++i) {
        const double x = std::ldexp(1 + (i % 16) / 16.0, i / 16 - 20);
        const auto scaled = [](Number& y, double at) {  // exp(x) E1(x)
            Number power(at);
            mpfr_exp(power.v, power.v, MPFR_RNDN);
            mpfr_set_d(y.v, -at, MPFR_RNDN);
            mpfr_eint(y.v, y.v, MPFR_RNDN);
            mpfr_mul(y.v, y.v, power.v, MPFR_RNDN);
            mpfr_neg(y.v, y.v, MPFR_RNDN);
        };
        Number value, moved, sum, d(x / 32);
        scaled(value, x);
        expect_pair(value, exp_int_rows[i][0], exp_int_rows[i][1], i);
        scaled(moved, x + x / 32);
        mpfr_div(moved.v, moved.v, value.v, MPFR_RNDN);
        mpfr_sub_ui(moved.v, moved.v, 1, MPFR_RNDN);
        set_series(sum, exp_int_rows[i], 2, 13, d);
        mpfr_sub(sum.v, sum.v, moved.v, MPFR_RNDN);
        EXPECT_LE(std::fabs(sum.nearest()), 0x1p-57) << i;
    }
}

// erfc's asymptotic factor, between and at the ends of its interval.
TEST(SpecialTables, AsymptoticFactor) {
    for (int i = 0; i <= 200; ++i) {
        const double s = 1.0 / 745 + (1.0 / 34 - 1.0 / 745) * i / 200;
        Number y(s), exact, power, sum(0.0);
        mpfr_rec_sqrt(y.v, y.v, MPFR_RNDN);
        mpfr_erfc(exact.v, y.v, MPFR_RNDN);
        mpfr_sqr(power.v, y.v, MPFR_RNDN);
        mpfr_exp(power.v, power.v, MPFR_RNDN);
        mpfr_mul(exact.v, exact.v, power.v, MPFR_RNDN);
        mpfr_mul(exact.v, exact.v, y.v, MPFR_RNDN);
        mpfr_const_pi(power.v, MPFR_RNDN);
        mpfr_sqrt(power.v, power.v, MPFR_RNDN);
        mpfr_mul(exact.v, exact.v, power.v, MPFR_RNDN);
        for (int k = 11; k >= 0; --k) {
            mpfr_mul_d(sum.v, sum.v, s, MPFR_RNDN);
            mpfr_add_d(sum.v, sum.v, erfc_asymptotic[k], MPFR_RNDN);
        }
        mpfr_div(sum.v, sum.v, exact.v, MPFR_RNDN);
        EXPECT_LE(std::fabs(sum.less(1.0)), 0x1p-59) << s;
    }
}

// Against quadrature, and against derivatives known in closed form.
TEST(SpecialTables, SeriesCoefficients) {
    for (const double w : {-0.2, 0.05, 0.2})
        for (const double q : {1e-3, 1e-5}) {
            double series = 0, quadrature = 0;
            for (int j = 4; j >= 0; --j)
                for (int i = 12; i >= 0; --i) series += mean_coefficient(i, j) * std::pow(w, i) * std::pow(q, j);
            constexpr int n = 200;  // Simpson's rule
            for (int k = 0; k <= n; ++k) {
                const double s = static_cast<double>(k) / n;
                quadrature += (k == 0 || k == n ? 1 : k % 2 == 1 ? 4 : 2) * std::exp(-w * s - q * s * s) / (3.0 * n);
            }
            EXPECT_NEAR(series, quadrature, 1e-13);
        }
    EXPECT_EQ(inverse_coefficient(2, 2, 0), 1.0);      // y
    EXPECT_EQ(inverse_coefficient(2, 3, 0), 1.0 / 3);  // (2 + 8 y^2)/6
    EXPECT_EQ(inverse_coefficient(2, 3, 1), 4.0 / 3);
    EXPECT_EQ(inverse_coefficient(1, 4, 0), 7.0 / 24);  // (7 z + 6 z^3)/24
    EXPECT_EQ(inverse_coefficient(1, 4, 1), 6.0 / 24);
}

}  // namespace
}  // namespace nax::vmath
