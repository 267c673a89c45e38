// The kernels of Pow, Powr and Powx: x^y = 2^t, t = y log2(x), logarithm and exponential in one pass.
//
//     x = 2^e m, m around 1:  c near 1/m, r = m c - 1:      log2(x) = e - log2(c) + log2(1 + r)
//     t = N + f, N the nearest sixteenth:                   2^t = 2^N 2^f
//
// -log2(c) is a multiple of 2^-40 in an accurate table: its sum with e is exact and has no low part. Double HA carries
// the logarithm in two doubles to some 68 bits, since t times its relative error becomes that of the result; r and
// r^2/2 are exact pairs. LA leaves the smallest terms away. Double EP and the float functions, which work in double
// lanes in HA and LA, have it in one number.
#pragma once

#include "vmath/frame/kernel_exports.h"
#include "vmath/frame/polynomial.h"
#include "vmath/power/newton.h"
#include "vmath/power/power_coefficients.inc"
#include "vmath/power/power_rare.h"
#include "vmath/power/power_tables.inc"

namespace nax::vmath::NAX_ISA {

// x = 2^e m with m in [1 - 1/(2 Size), 2 - 1/(2 Size)): m nearest to 1 + index/Size. For positive normal x.
template <class E, int Size>
struct Split {
    using Vector = typename E::Vector;
    using Bits = typename E::Bits;
    using Integer = typename E::Integer;
    static constexpr int index_bits = Size == 32 ? 5 : 4, fraction_bits = E::mantissa_bits - index_bits;
    static_assert(Size == 1 << index_bits);

    Bits half_step = E::bits_row(Integer{1} << (fraction_bits - 1));
    Bits exponent_field = E::bits_row(E::exponent_field);
    Bits one = E::bits_row(std::bit_cast<Integer>(typename E::Element(1)));
    Vector exponent_unit = E::row(two_to<E>(E::mantissa_bits));
    Vector exponent_offset = E::row(two_to<E>(E::mantissa_bits) + E::exponent_bias);

    struct Parts {
        Vector e, m;
        Bits index;  // in the low bits
    };
    NAX_VEC Parts operator()(Vector x) const {
        // A carry out of the mantissa raises the exponent, and leaves index 0.
        const Bits rounded = bits(x) + half_step;
        const Vector e = sub(from_bits(shift_right<E::mantissa_bits>(rounded) | bits(exponent_unit)), exponent_offset);
        return {e, from_bits(bits(x) - (rounded & exponent_field) + one), shift_right<fraction_bits>(rounded)};
    }
};

// The series by Horner's rule, for short ones.
template <class E, int Terms>
NAX_VEC auto horner(const Coefficients<E, Terms>& series, typename E::Vector x) {
    auto p = series.c[Terms - 1];
    for (int i = Terms - 2; i >= 0; --i) p = fma(p, x, series.c[i]);
    return p;
}

// Exponents of two whose powers are normal numbers.
template <class E>
struct NormalPowers {
    using Vector = typename E::Vector;
    Vector magnitude = E::row_of_bits(~E::sign_bit);
    Vector limit = E::row(by_precision<E>(125.5f, 1021.5));

    NAX_VEC auto outside(Vector t) const { return not_less(bit_and(t, magnitude), limit); }
};

// Double HA and LA.
template <RareFunction<double>::TwoInputs Path, bool High, int LogTerms, int ExpTerms>
struct WidePow {
    using Precision = Double;
    using Vector = Double::Vector;
    static constexpr int unroll = 4;
    static constexpr auto rare = Path;
    static constexpr bool always_settled = true;

    PairTable<Double, 32> logs;    // c, -log2(c)
    PairTable<Double, 16> powers;  // 2^(j/16) and what it lacks, relative
    Coefficients<Double, LogTerms> log_series;
    Coefficients<Double, ExpTerms> exp_series;
    Split<Double, 32> split = {};
    Vector one = Double::row(1), minus_half = Double::row(-0.5);
    Vector log2_e = Double::row(0x1.71547652b82fep+0), log2_e_low = Double::row(0x1.777d0ffda0d24p-56);
    Vector shifter = Double::row(0x1.8p48);  // leaves sixteenths
    NormalPowers<Double> powers_of_two = {};
    Range<Double> normal = kPositiveNormal<Double>;

    struct Pair {
        Vector high, low;
    };
    NAX_VEC Pair log2(Vector x) const {
        const auto parts = split(x);
        Vector c, value;
        logs.look_up(parts.index, c, value);
        // r + r_low = m c - 1; one more division by 1 + r, nearly, turns r_low into its share of ln(1 + r + r_low)
        const Vector product = mul(parts.m, c), product_rest = fms(parts.m, c, product);
        const Vector difference = sub(product, one);
        const Vector r = add(difference, product_rest);
        const Vector r_low = add(sub(difference, r), product_rest);
        // h + h_low = -r^2/2; s + s_low = r + h
        const Vector half_r = mul(r, minus_half), h = mul(half_r, r);
        const Vector s = add(r, h);
        Vector s_low = add(sub(r, s), h);
        if constexpr (High) s_low = add(s_low, fms(half_r, r, h));
        s_low = add(s_low, fnma(r_low, r, r_low));
        // r^3 P(r), the series in r and h
        const Vector tail = fma(mul(r, h), log_series(r, h), s_low);
        // over ln 2
        const Vector lead = mul(s, log2_e);
        const Vector lead_low = fma(tail, log2_e, fma(s, log2_e_low, fms(s, log2_e, lead)));
        const Vector whole = add(parts.e, value);
        const Vector high = add(whole, lead);
        return {high, add(sub(lead, sub(high, whole)), lead_low)};
    }
    // The low part is not within the last place of the high one, as r^3 P(r) is part of it.
    NAX_VEC Vector exp2(Vector high, Vector low) const {
        const Vector z = add(add(high, low), shifter);
        const Vector f = add(sub(high, sub(z, shifter)), low);
        Vector power, rest;
        powers.look_up(bits(z), power, rest);
        power = from_bits(bits(power) + shift_left<48>(bits(z)));
        const Vector q = exp_series(f, mul(f, f));
        if constexpr (High)
            return fma(fma(f, q, rest), power, power);
        else
            return fma(mul(f, q), power, power);
    }
    // t's high part tells what is out of range, and NaN.
    NAX_VEC Vector product(Vector x, Vector y, Vector& low) const {
        const Pair l = log2(x);
        const Vector t = mul(y, l.high);
        low = fma(y, l.low, fms(y, l.high, t));
        return t;
    }
    NAX_VEC auto eval(Vector x, Vector y, Vector& r) const {
        Vector low;
        const Vector t = product(x, y, low);
        r = exp2(t, low);
        return normal.outside(x) | powers_of_two.outside(t);
    }
};

// A logarithm and an exponential in single doubles.
template <int LogTerms, int ExpTerms>
struct NarrowPow {
    using Vector = Double::Vector;
    PairTable<Double, 16> logs;
    Table<Double, 16> powers;
    Coefficients<Double, LogTerms> log_series;
    Coefficients<Double, ExpTerms> exp_series;
    Split<Double, 16> split = {};
    Vector one = Double::row(1);
    Vector shifter = Double::row(0x1.8p48);

    NAX_VEC Vector log2(Vector x) const {
        const auto parts = split(x);
        Vector c, value;
        logs.look_up(parts.index, c, value);
        const Vector r = fms(parts.m, c, one);
        return fma(r, log_series(r, mul(r, r)), add(parts.e, value));
    }
    NAX_VEC Vector exp2(Vector t) const {
        const Vector z = add(t, shifter);
        const Vector f = sub(t, sub(z, shifter));
        const Vector power = from_bits(bits(powers[bits(z)]) + shift_left<48>(bits(z)));
        return fma(mul(f, horner(exp_series, f)), power, power);
    }
};

// Double EP.
template <RareFunction<double>::TwoInputs Path, int LogTerms, int ExpTerms>
struct ShortPow {
    using Precision = Double;
    using Vector = Double::Vector;
    static constexpr int unroll = 4;
    static constexpr auto rare = Path;
    static constexpr bool always_settled = true;

    NarrowPow<LogTerms, ExpTerms> steps;
    NormalPowers<Double> powers_of_two = {};
    Range<Double> normal = kPositiveNormal<Double>;

    NAX_VEC auto eval(Vector x, Vector y, Vector& r) const {
        const Vector t = mul(y, steps.log2(x));
        r = steps.exp2(t);
        return normal.outside(x) | powers_of_two.outside(t);
    }
};

// Float HA and LA.
template <RareFunction<float>::TwoInputs Path, int LogTerms, int ExpTerms>
struct FloatPow {
    using Precision = Single;
    using Vector = Single::Vector;
    using Wide = Double::Vector;
    static constexpr int unroll = 2;
    static constexpr auto rare = Path;
    static constexpr bool always_settled = true;

    NarrowPow<LogTerms, ExpTerms> steps;
    Wide least = Double::row(-1000), most = Double::row(1000);
    Range<Single> normal = kPositiveNormal<Single>;

    // Limits keep 2^t a normal double; NaN becomes one of them.
    NAX_VEC Wide half(Wide x, Wide y) const { return steps.exp2(min(max(mul(y, steps.log2(x)), least), most)); }
    // Results outside the normal floats are rare.
    NAX_VEC auto eval(Vector x, Vector y, Vector& r) const {
        r = narrow(half(widen_low(x), widen_low(y)), half(widen_high(x), widen_high(y)));
        return normal.outside(x) | normal.outside(r);
    }
};

// Float EP, in float lanes: the logarithm's 2^-20 and the product's rounding leave 12 bits of the largest powers.
template <RareFunction<float>::TwoInputs Path, int LogTerms, int ExpTerms>
struct ShortFloatPow {
    using Precision = Single;
    using Vector = Single::Vector;
    static constexpr int unroll = 4;
    static constexpr auto rare = Path;
    static constexpr bool always_settled = true;

    PairTable<Single, 16> logs;
    Table<Single, 16> powers;
    Coefficients<Single, LogTerms> log_series;
    Coefficients<Single, ExpTerms> exp_series;
    Split<Single, 16> split = {};
    Vector one = Single::row(1);
    Vector shifter = Single::row(0x1.8p19f);  // leaves sixteenths
    NormalPowers<Single> powers_of_two = {};
    Range<Single> normal = kPositiveNormal<Single>;

    NAX_VEC auto eval(Vector x, Vector y, Vector& r) const {
        const auto parts = split(x);
        Vector c, value;
        logs.look_up(parts.index, c, value);
        const Vector rest = fms(parts.m, c, one);
        const Vector t = mul(y, fma(rest, horner(log_series, rest), add(parts.e, value)));
        const Vector z = add(t, shifter);
        const Vector f = sub(t, sub(z, shifter));
        const Vector power = from_bits(bits(powers[bits(z)]) + shift_left<19>(bits(z)));
        r = fma(mul(f, horner(exp_series, f)), power, power);
        return normal.outside(x) | powers_of_two.outside(t);
    }
};

// Least error of log2(1 + r)/r on [-1/32, 1/32], 2^-44.
inline constexpr double pow_log2_seven[7] = {1.4426950408889612,  -0.7213475204630959, 0.48089834702210205,
                                             -0.3606736083540536, 0.2885387573943004,  -0.24075888383571067,
                                             0.20645333095336202};

// The logarithm's tail as a series in r and h = -r^2/2 that is multiplied by r h.
inline constexpr double pow_log_tail_in_h[8] = {-2 * pow_log_tail[0], -2 * pow_log_tail[1], 4 * pow_log_tail[2],
                                                4 * pow_log_tail[3],  -8 * pow_log_tail[4], -8 * pow_log_tail[5],
                                                16 * pow_log_tail[6], 16 * pow_log_tail[7]};

// The data blocks of one function, whose scalar paths are the arguments.
template <RareFunction<double>::TwoInputs DoublePath, RareFunction<float>::TwoInputs SinglePath>
struct PowData {
    static constexpr WidePow<DoublePath, true, 8, 6> double_ha = {
        {pow_log2_32_reciprocal, pow_log2_32_value}, {pow_exp2_16, pow_exp2_16_low}, pow_log_tail_in_h, pow_exp2_six};
    static constexpr WidePow<DoublePath, false, 8, 6> double_la = {
        {pow_log2_32_reciprocal, pow_log2_32_value}, {pow_exp2_16, pow_exp2_16_low}, pow_log_tail_in_h, pow_exp2_six};
    static constexpr ShortPow<DoublePath, 7, 3> double_ep = {
        {{pow_log2_16_reciprocal, pow_log2_16_value}, pow_exp2_16, pow_log2_seven, pow_exp2_three}};
    static constexpr FloatPow<SinglePath, 6, 3> single_ha = {
        {{pow_log2_16_reciprocal, pow_log2_16_value}, pow_exp2_16, pow_log2_six, pow_exp2_three}};
    static constexpr FloatPow<SinglePath, 5, 3> single_la = {
        {{pow_log2_16_reciprocal, pow_log2_16_value}, pow_exp2_16, pow_log2_five, pow_exp2_three}};
    static constexpr ShortFloatPow<SinglePath, 3, 2> single_ep = {
        {pow_log2_16f_reciprocal, pow_log2_16f_value}, pow_exp2_16f, pow_log2_three, pow_exp2_two};
};

}  // namespace nax::vmath::NAX_ISA
