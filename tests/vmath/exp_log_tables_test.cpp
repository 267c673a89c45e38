// Tables and polynomials of the exponentials and logarithms, recomputed from their rules with MPFR.
#include <gtest/gtest.h>
#include <mpfr.h>

#include <cmath>
#include <functional>

#include "vmath/exp/exp10_coefficients.inc"
#include "vmath/exp/exp_tables.inc"
#include "vmath/exp/expm1_coefficients.inc"
#include "vmath/log/log_coefficients.inc"
#include "vmath/log/log_tables.inc"

namespace nax::vmath {
namespace {

using Function = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);

// A 256-bit number with the few operations the rules need.
struct Number {
    mpfr_t v;
    Number() { mpfr_init2(v, 256); }
    explicit Number(double x) : Number() { mpfr_set_d(v, x, MPFR_RNDN); }
    Number(const Number&) = delete;
    Number& operator=(const Number&) = delete;
    ~Number() { mpfr_clear(v); }
    double relative_to(double x) const {  // (this - x)/x
        Number r;
        mpfr_sub_d(r.v, v, x, MPFR_RNDN);
        mpfr_div_d(r.v, r.v, x, MPFR_RNDN);
        return mpfr_get_d(r.v, MPFR_RNDN);
    }
    double less(double x) const {
        Number r;
        mpfr_sub_d(r.v, v, x, MPFR_RNDN);
        return mpfr_get_d(r.v, MPFR_RNDN);
    }
};

// T to the nearest element, low parts to its precision.
template <class T, size_t N>
void check_powers(const T (&table)[N], int size, const T* relative_low, const T* absolute_low) {
    for (size_t j = 0; j < N; ++j) {
        Number power(static_cast<double>(j) / size);
        mpfr_exp2(power.v, power.v, MPFR_RNDN);
        const T nearest = sizeof(T) == 8 ? static_cast<T>(mpfr_get_d(power.v, MPFR_RNDN))
                                         : static_cast<T>(mpfr_get_flt(power.v, MPFR_RNDN));
        EXPECT_EQ(table[j], nearest) << j;
        const auto head = static_cast<double>(nearest);
        if (relative_low) {
            EXPECT_EQ(relative_low[j], static_cast<T>(power.relative_to(head))) << j;
        }
        if (absolute_low) {
            EXPECT_EQ(absolute_low[j], static_cast<T>(power.less(head))) << j;
        }
    }
}

TEST(ExpLogTables, PowersOfTwo) {
    check_powers(exp2_16, 16, exp2_16_relative_low, exp2_16_absolute_low);
    check_powers<double>(exp2_64, 64, nullptr, exp2_64_absolute_low);
    check_powers<float>(exp2_16f, 16, exp2_16f_relative_low, nullptr);
    check_powers<float>(exp2_32f, 32, exp2_32f_relative_low, nullptr);
    check_powers<float>(exp2_1024f, 1024, nullptr, nullptr);
    check_powers<float>(exp2_16384f, 16384, nullptr, nullptr);
}

// high + low is log(1/c) (of 1/(2c) below 3/4), and high has few enough bits for exact sums up to `largest`.
template <class T, size_t N>
void check_logs(Function log, const T (&high)[N], const T* low, double largest) {
    for (size_t j = 0; j < N; ++j) {
        const double c = 0.5 + 0.5 * static_cast<double>(j) / N;
        Number value(c < 0.75 ? 2 * c : c);
        log(value.v, value.v, MPFR_RNDN);
        mpfr_neg(value.v, value.v, MPFR_RNDN);
        const auto head = static_cast<double>(high[j]);
        const double rest = value.less(head);
        if (low == nullptr) {
            EXPECT_EQ(high[j], sizeof(T) == 8 ? static_cast<T>(mpfr_get_d(value.v, MPFR_RNDN))
                                              : static_cast<T>(mpfr_get_flt(value.v, MPFR_RNDN)))
                << j;
            continue;
        }
        EXPECT_EQ(low[j], static_cast<T>(rest)) << j;
        const double grid = largest * std::ldexp(1.0, sizeof(T) == 8 ? -53 : -24);
        EXPECT_EQ(std::fmod(head, grid), 0) << j;
    }
}

TEST(ExpLogTables, Logarithms) {
    check_logs(mpfr_log, ln_16_high, ln_16_low, 1024);
    check_logs(mpfr_log2, log2_16_high, log2_16_low, 2048);
    check_logs(mpfr_log10, log10_16_high, log10_16_low, 512);
    check_logs<double>(mpfr_log, ln_16, nullptr, 0);
    check_logs<double>(mpfr_log2, log2_16, nullptr, 0);
    check_logs<double>(mpfr_log10, log10_16, nullptr, 0);
    check_logs(mpfr_log, ln_32f_high, ln_32f_low, 128);
    check_logs(mpfr_log2, log2_32f_high, log2_32f_low, 256);
    check_logs(mpfr_log10, log10_32f_high, log10_32f_low, 64);
    check_logs<float>(mpfr_log, ln_16f, nullptr, 0);
    check_logs<float>(mpfr_log2, log2_16f, nullptr, 0);
    check_logs<float>(mpfr_log10, log10_16f, nullptr, 0);
}

TEST(ExpLogTables, RowsOfTheScalarLogarithm) {
    for (int j = 0; j <= 64; ++j) {
        const double c = log_rows_reciprocal[j];
        EXPECT_EQ(std::fmod(c, 0x1p-14), 0) << j;
        EXPECT_LE(std::fabs(c * (64 + j) / 64 - 1), 0x1p-13) << j;
        Number value(c);
        mpfr_log(value.v, value.v, MPFR_RNDN);
        mpfr_neg(value.v, value.v, MPFR_RNDN);
        EXPECT_EQ(std::fmod(log_rows_high[j], 0x1p-42), 0) << j;
        EXPECT_EQ(log_rows_low[j], value.less(log_rows_high[j])) << j;
    }
}

// Largest error of lead x + sum c_k x^(k + first) relative to the function, as a power of two.
template <class T, size_t N>
double relative_error_bits(const std::function<void(Number&)>& function, double lead, int first, const T (&c)[N],
                           double low, double high) {
    double largest = 0;
    for (int i = 0; i <= 400; ++i) {
        const double x = low + (high - low) * i / 400;
        if (x == 0) continue;
        Number exact(x), sum(0.0), term;
        function(exact);
        for (size_t k = N; k-- > 0;) {
            mpfr_mul_d(sum.v, sum.v, x, MPFR_RNDN);
            mpfr_add_d(sum.v, sum.v, static_cast<double>(c[k]), MPFR_RNDN);
        }
        for (int k = 0; k < first; ++k) mpfr_mul_d(sum.v, sum.v, x, MPFR_RNDN);
        mpfr_set_d(term.v, lead, MPFR_RNDN);
        mpfr_mul_d(term.v, term.v, x, MPFR_RNDN);
        mpfr_add(sum.v, sum.v, term.v, MPFR_RNDN);
        mpfr_div(sum.v, sum.v, exact.v, MPFR_RNDN);
        mpfr_sub_ui(sum.v, sum.v, 1, MPFR_RNDN);
        largest = std::max(largest, std::fabs(mpfr_get_d(sum.v, MPFR_RNDN)));
    }
    return std::log2(largest);
}

TEST(ExpLogTables, PolynomialsMeetTheirBounds) {
    const auto expm1 = [](Number& x) { mpfr_expm1(x.v, x.v, MPFR_RNDN); };
    const auto exp10_less_1 = [](Number& x) {
        mpfr_exp10(x.v, x.v, MPFR_RNDN);
        mpfr_sub_ui(x.v, x.v, 1, MPFR_RNDN);
    };
    const auto ln = [](Number& x) { mpfr_log1p(x.v, x.v, MPFR_RNDN); };
    const auto log_to = [](unsigned base) {
        return [base](Number& x) {
            Number b(base);
            mpfr_log(b.v, b.v, MPFR_RNDN);
            mpfr_log1p(x.v, x.v, MPFR_RNDN);
            mpfr_div(x.v, x.v, b.v, MPFR_RNDN);
        };
    };
    const double e = std::log(2.0) / 32, r = 0x1p-5 + 0x1p-13, s = 0x1p-6 + 0x1p-13;
    EXPECT_LE(relative_error_bits(expm1, 1, 2, expm1_double_ha, -e, e), -59);
    EXPECT_LE(relative_error_bits(expm1, 1, 2, expm1_double_ep, -e, e), -31);
    EXPECT_LE(relative_error_bits(expm1, 1, 2, expm1_single_ha, -e, e), -31);
    EXPECT_LE(relative_error_bits(expm1, 1, 2, expm1_single_la, -e, e), -23);
    EXPECT_LE(relative_error_bits(expm1, 1, 2, expm1_single_ep, -e, e), -13);
    EXPECT_LE(relative_error_bits(exp10_less_1, 0, 1, exp10_single_coefficients, 0, std::log10(2.0) / 32), -26);
    EXPECT_LE(relative_error_bits(ln, 1, 2, ln_single_la, -r, r), -24);
    EXPECT_LE(relative_error_bits(log_to(2), 0, 1, log2_double_la, -r, r), -55);
    EXPECT_LE(relative_error_bits(log_to(2), 0, 1, log2_double_ep, -r, r), -31);
    EXPECT_LE(relative_error_bits(log_to(2), 1 / std::log(2.0), 2, log2_single_ha, -s, s), -28);
    EXPECT_LE(relative_error_bits(log_to(2), 0, 1, log2_single_la, -r, r), -24);
    EXPECT_LE(relative_error_bits(log_to(2), 0, 1, log2_single_ep, -r, r), -12);
    EXPECT_LE(relative_error_bits(log_to(10), 0, 1, log10_double_la, -r, r), -54);
    EXPECT_LE(relative_error_bits(log_to(10), 0, 1, log10_double_ep, -r, r), -31);
    EXPECT_LE(relative_error_bits(log_to(10), 1 / std::log(10.0), 2, log10_single_ha, -s, s), -28);
    EXPECT_LE(relative_error_bits(log_to(10), 0, 1, log10_single_la, -r, r), -24);
    EXPECT_LE(relative_error_bits(log_to(10), 0, 1, log10_single_ep, -r, r), -12);
}

}  // namespace
}  // namespace nax::vmath
