// Tables, polynomials and quotients of the trigonometric functions, recomputed from their rules with MPFR and GMP by
// other ways than the generators'.
#include "vmath/trig/trig_tables.inc"

#include <gmp.h>
#include <gtest/gtest.h>
#include <mpfr.h>

#include <cmath>
#include <vector>

#include "vmath/trig/trig_coefficients.inc"
#include "vmath/trig/trig_series.inc"

namespace nax::vmath {
namespace {

struct Number {
    mpfr_t v;
    explicit Number(mpfr_prec_t precision = 300) { mpfr_init2(v, precision); }
    Number(const Number&) = delete;
    Number& operator=(const Number&) = delete;
    ~Number() { mpfr_clear(v); }
};

using OfHalfTurns = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);

// The pair is the function of pi j/steps: the nearest number and the nearest to the rest.
void expect_pair(OfHalfTurns function, int j, int steps, double high, double low) {
    Number x;
    mpfr_set_si(x.v, j, MPFR_RNDN);
    mpfr_div_si(x.v, x.v, steps, MPFR_RNDN);
    function(x.v, x.v, MPFR_RNDN);
    EXPECT_EQ(high, mpfr_get_d(x.v, MPFR_RNDN)) << j << "/" << steps;
    mpfr_sub_d(x.v, x.v, high, MPFR_RNDN);
    EXPECT_EQ(low, mpfr_get_d(x.v, MPFR_RNDN)) << j << "/" << steps;
}

TEST(TrigTables, BasePoints) {
    for (int j = 0; j < 16; ++j) {
        expect_pair(mpfr_sinpi, j, 16, sine_16_high[j], sine_16_low[j]);
        expect_pair(mpfr_cospi, j, 16, cosine_16_high[j], cosine_16_low[j]);
    }
    for (int j = 0; j < 8; ++j) expect_pair(mpfr_tanpi, j < 4 ? j : j - 8, 16, tangent_8_high[j], tangent_8_low[j]);
    for (int j = 0; j < 64; ++j) {
        expect_pair(mpfr_sinpi, j, 32, circle_64[j][0], circle_64[j][1]);
        expect_pair(mpfr_cospi, j, 32, circle_64[j][2], circle_64[j][3]);
    }
    for (int j = 0; j < 512; ++j) {
        expect_pair(mpfr_sinpi, j, 256, circle_512[j][0], circle_512[j][1]);
        expect_pair(mpfr_cospi, j, 256, circle_512[j][2], circle_512[j][3]);
    }
}

// 2^bits arctan(1/n) by its series in whole numbers.
void inverse_tangent(mpz_t sum, unsigned n, unsigned bits) {
    mpz_t power, term;
    mpz_inits(power, term, nullptr);
    mpz_set_ui(power, 1);
    mpz_mul_2exp(power, power, bits);
    mpz_fdiv_q_ui(power, power, n);
    mpz_set_ui(sum, 0);
    for (unsigned k = 1; mpz_sgn(power) != 0; k += 2) {
        mpz_fdiv_q_ui(term, power, k);
        (k & 2 ? mpz_sub : mpz_add)(sum, sum, term);
        mpz_fdiv_q_ui(power, power, n * n);
    }
    mpz_clears(power, term, nullptr);
}

// 2^bits/pi, good to some bits less, by Machin's formula.
constexpr unsigned kBits = 2400, kSpare = 100;
struct InversePi {
    mpz_t v;
    InversePi() {
        mpz_t fifth;
        mpz_inits(v, fifth, nullptr);
        inverse_tangent(fifth, 5, kBits + kSpare);
        inverse_tangent(v, 239, kBits + kSpare);
        mpz_mul_ui(fifth, fifth, 16);
        mpz_submul_ui(fifth, v, 4);  // pi = 16 arctan(1/5) - 4 arctan(1/239)
        mpz_set_ui(v, 1);
        mpz_mul_2exp(v, v, 2 * kBits + kSpare);
        mpz_fdiv_q(v, v, fifth);
        mpz_clear(fifth);
    }
    ~InversePi() { mpz_clear(v); }
    // floor(2^shift/pi)
    void scaled(mpz_t r, int shift) const {
        const int up = shift - static_cast<int>(kBits);
        up >= 0 ? mpz_mul_2exp(r, v, static_cast<unsigned>(up)) : mpz_fdiv_q_2exp(r, v, static_cast<unsigned>(-up));
    }
};

TEST(TrigTables, TurnsByExponent) {
    const InversePi inverse;
    mpz_t row;
    mpz_init(row);
    for (int e = 0; e < 2048; ++e) {
        inverse.scaled(row, e - 1075 + 192 - 1);
        for (int word = 2; word >= 0; --word) {
            unsigned long low = 0;
            mpz_t rest;
            mpz_init(rest);
            mpz_fdiv_r_2exp(rest, row, 64);
            if (mpz_sgn(rest) != 0) low = mpz_get_ui(rest);
            EXPECT_EQ(turns_by_exponent[e][word], low) << e << " " << word;
            mpz_fdiv_q_2exp(row, row, 64);
            mpz_clear(rest);
        }
    }
    mpz_clear(row);
}

// high + low is 1/pi mod 2^(151 - e), to 2^-106 of it.
TEST(TrigTables, HalfTurnsByExponent) {
    const InversePi inverse;
    mpz_t part;
    mpz_init(part);
    Number x(kBits);
    for (int e = 0; e < 256; ++e) {
        mpz_fdiv_r_2exp(part, inverse.v, static_cast<unsigned>(static_cast<int>(kBits) + 151 - e));
        mpfr_set_z_2exp(x.v, part, -static_cast<mpfr_exp_t>(kBits), MPFR_RNDN);
        const double high = half_turns_by_exponent[e][0], low = half_turns_by_exponent[e][1];
        EXPECT_EQ(high, mpfr_get_d(x.v, MPFR_RNDN)) << e;
        mpfr_sub_d(x.v, x.v, high, MPFR_RNDN);
        EXPECT_EQ(low, mpfr_get_d(x.v, MPFR_RNDN)) << e;
    }
    mpz_clear(part);
}

// Pieces of 25 bits, none negative, that leave less than one of the last one's bits.
TEST(TrigTables, PiecesOfTwoOverPi) {
    const InversePi inverse;
    Number rest(kBits);
    mpfr_set_z_2exp(rest.v, inverse.v, 1 - static_cast<mpfr_exp_t>(kBits), MPFR_RNDN);
    int k = 0;
    for (const double piece : two_over_pi_pieces) {
        const int place = 200 - 25 * ++k;  // of the piece's lowest bit
        const double bits = std::ldexp(piece, -place);
        EXPECT_TRUE(bits >= 0 && bits < 0x1p25 && bits == std::floor(bits)) << k;
        Number scaled;
        mpfr_set_d(scaled.v, piece, MPFR_RNDN);
        mpfr_mul_2si(scaled.v, scaled.v, -200, MPFR_RNDN);
        mpfr_sub(rest.v, rest.v, scaled.v, MPFR_RNDN);
        EXPECT_TRUE(mpfr_sgn(rest.v) > 0 && mpfr_get_exp(rest.v) <= -25 * k) << k;
    }
    EXPECT_GE(25 * k, 2046 - 1075 + 200);  // as far as the largest double needs
}

// All parts but the last make up a multiple of its unit, and the sum is as good as their bits.
template <class T, size_t N>
void expect_parts(const T (&parts)[N], unsigned divisor) {
    Number x;
    mpfr_const_pi(x.v, MPFR_RNDN);
    mpfr_div_ui(x.v, x.v, divisor, MPFR_RNDN);
    for (const T part : parts) {
        EXPECT_GT(part, 0);
        mpfr_sub_d(x.v, x.v, static_cast<double>(part), MPFR_RNDN);
        EXPECT_GE(mpfr_sgn(x.v), 0);
        EXPECT_LT(mpfr_get_d(x.v, MPFR_RNDN), static_cast<double>(std::nextafter(part, T(10)) - part));
    }
}
TEST(TrigTables, PartsOfPi) {
    expect_parts(pi_parts, 1);
    expect_parts(pi_partsf, 1);
    expect_parts(degree_parts, 180);
    const double& second = sixteenth_parts[1];
    EXPECT_EQ(sixteenth_parts[0], pi_parts[0] / 16);
    EXPECT_EQ(std::fmod(second, 0x1p-83), 0);
    EXPECT_EQ(second + sixteenth_parts[2], pi_parts[1] / 16 + pi_parts[2] / 16);
}

// Largest relative error, as a power of two, over (0, limit]. `value` is what the coefficients make of x^2.
template <class Value>
double error_bits(OfHalfTurns function, double half_turn, bool radians, double limit, Value value) {
    double largest = 0;
    for (int i = 1; i <= 500; ++i) {
        const double x = limit * i / 500;
        Number exact, sum;
        mpfr_set_d(exact.v, x, MPFR_RNDN);
        if (!radians) mpfr_div_d(exact.v, exact.v, half_turn, MPFR_RNDN);
        function(exact.v, exact.v, MPFR_RNDN);
        value(sum, x);
        mpfr_div(sum.v, sum.v, exact.v, MPFR_RNDN);
        mpfr_sub_ui(sum.v, sum.v, 1, MPFR_RNDN);
        largest = std::max(largest, std::fabs(mpfr_get_d(sum.v, MPFR_RNDN)));
    }
    return std::log2(largest);
}
template <class T, size_t N>
void polynomial(Number& sum, const T (&c)[N], double x) {
    mpfr_set_zero(sum.v, 1);
    for (size_t k = N; k-- > 0;) {
        mpfr_mul_d(sum.v, sum.v, x, MPFR_RNDN);
        mpfr_mul_d(sum.v, sum.v, x, MPFR_RNDN);
        mpfr_add_d(sum.v, sum.v, static_cast<double>(c[k]), MPFR_RNDN);
    }
}
template <class T, size_t N>
double series_bits(OfHalfTurns function, double half_turn, bool radians, double limit, const T (&c)[N]) {
    return error_bits(function, half_turn, radians, limit, [&](Number& sum, double x) {
        polynomial(sum, c, x);
        mpfr_mul_d(sum.v, sum.v, x, MPFR_RNDN);
    });
}
// lead + x^power P(x^2), lead x or 1
template <class T, size_t N>
double rest_bits(OfHalfTurns function, int power, double limit, const T (&c)[N]) {
    return error_bits(function, 0, true, limit, [&](Number& sum, double x) {
        polynomial(sum, c, x);
        for (int k = 0; k < power; ++k) mpfr_mul_d(sum.v, sum.v, x, MPFR_RNDN);
        mpfr_add_d(sum.v, sum.v, power == 2 ? 1.0 : x, MPFR_RNDN);
    });
}
template <class T, size_t P, size_t Q>
double quotient_bits(double half_turn, bool radians, double limit, const T (&top)[P], const T (&bottom)[Q]) {
    return error_bits(radians ? mpfr_tan : mpfr_tanpi, half_turn, radians, limit, [&](Number& sum, double x) {
        Number under;
        polynomial(sum, top, x);
        polynomial(under, bottom, x);
        mpfr_mul_d(sum.v, sum.v, x, MPFR_RNDN);
        mpfr_mul_d(under.v, under.v, x, MPFR_RNDN);
        mpfr_mul_d(under.v, under.v, x, MPFR_RNDN);
        mpfr_add_ui(under.v, under.v, 1, MPFR_RNDN);
        mpfr_div(sum.v, sum.v, under.v, MPFR_RNDN);
    });
}

TEST(TrigTables, SeriesMeetTheirBounds) {
    EXPECT_LE(series_bits(mpfr_sin, 0, true, M_PI_2, radian_cosine_double_la), -51.5);
    EXPECT_LE(series_bits(mpfr_sin, 0, true, M_PI_2, radian_cosine_single_la), -25.5);
    EXPECT_LE(series_bits(mpfr_sin, 0, true, M_PI_2, radian_cosine_single_ep), -12);
    EXPECT_LE(series_bits(mpfr_sinpi, 180, false, 90, degree_sine_double_la), -51.5);
    EXPECT_LE(series_bits(mpfr_sinpi, 180, false, 90, degree_sine_double_ep), -27);
    EXPECT_LE(series_bits(mpfr_sinpi, 180, false, 91, degree_sine_single_la), -25.5);
    EXPECT_LE(series_bits(mpfr_sinpi, 180, false, 91, degree_sine_single_ep), -12);
    EXPECT_LE(series_bits(mpfr_sinpi, 1, false, 0.5, half_turn_sine_double_la), -51.5);
    EXPECT_LE(series_bits(mpfr_sinpi, 1, false, 0.5, half_turn_sine_double_ep), -27);
    EXPECT_LE(series_bits(mpfr_sinpi, 1, false, 0.5, half_turn_sine_single_la), -24.5);
    EXPECT_LE(series_bits(mpfr_sinpi, 1, false, 0.5, half_turn_sine_single_ep), -12);
    EXPECT_LE(rest_bits(mpfr_tan, 3, M_PI / 32, tangent_of_rest), -58.5);
    EXPECT_LE(rest_bits(mpfr_sin, 3, M_PI_4, quarter_sine_double_la), -56.5);
    EXPECT_LE(rest_bits(mpfr_cos, 2, M_PI_4, quarter_cosine_double_la), -52.5);
    EXPECT_LE(rest_bits(mpfr_sin, 3, M_PI_4, quarter_sine_double_ep), -27);
    EXPECT_LE(rest_bits(mpfr_cos, 2, M_PI_4, quarter_cosine_double_ep), -32.5);
    EXPECT_LE(rest_bits(mpfr_sin, 3, M_PI_4, quarter_sine_single_la), -26.5);
    EXPECT_LE(rest_bits(mpfr_cos, 2, M_PI_4, quarter_cosine_single_la), -23.5);
    EXPECT_LE(rest_bits(mpfr_sin, 3, M_PI_4, quarter_sine_single_ep), -17.5);
    EXPECT_LE(rest_bits(mpfr_cos, 2, M_PI_4, quarter_cosine_single_ep), -15.5);
}

TEST(TrigTables, QuotientsMeetTheirBounds) {
#define QUOTIENT(name, half_turn, radians, limit)                                                                 \
    EXPECT_LE(quotient_bits(half_turn, radians, limit, name##_long_numerator, name##_long_denominator), -53);     \
    EXPECT_LE(quotient_bits(half_turn, radians, limit, name##_short_numerator, name##_short_denominator), -33.5); \
    EXPECT_LE(quotient_bits(half_turn, radians, limit, name##_single_la_numerator, name##_single_la_denominator), \
              -23.5);                                                                                             \
    EXPECT_LE(quotient_bits(half_turn, radians, limit, name##_single_ep_numerator, name##_single_ep_denominator), -16)
    QUOTIENT(tangent_radian, 0, true, M_PI_4);
    QUOTIENT(tangent_degree, 180, false, 45);
    QUOTIENT(tangent_half_turn, 1, false, 0.25);
#undef QUOTIENT
}

}  // namespace
}  // namespace nax::vmath
