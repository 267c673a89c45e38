// HA of double: x = j pi/16 + r with the functions of j pi/16 in tables, high and low.
//
//     sin(B + r) = S + C sin(r) + S (cos(r) - 1)
//     tan(B + r) = (T + tan(r))/(1 - T tan(r)), or -1/that with T from the next odd multiple of pi/2
//
// The leading terms are summed with their rounding errors; these, the low parts and the rest of the series make up the
// low sum.
#pragma once

#include "vmath/trig/angle.h"
#include "vmath/trig/trig_coefficients.inc"

namespace nax::vmath::NAX_ISA {

struct Pair {
    Double::Vector high, low;
};

// n/d.
NAX_VEC Double::Vector quotient(Pair n, Pair d) {
    const auto inverse = div(Double::row(1), d.high);
    const auto q = mul(n.high, inverse);
    const auto rest = fnma(q, d.low, add(fnma(q, d.high, n.high), n.low));
    return fma(rest, inverse, q);
}

// s + c sin(r) + s (cos(r) - 1) for base points of high and low parts; `p` is sin(r)/r - 1 and `q` cos(r) - 1.
NAX_VEC Pair add_angle(Pair s, Pair c, Pair r, Double::Vector p, Double::Vector q) {
    const auto product = mul(c.high, r.high), high = add(s.high, product);
    auto low = add(fms(c.high, r.high, product), sub(product, sub(high, s.high)));
    low = add(low, fma(c.low, r.high, s.low));
    low = fma(c.high, fma(r.high, p, r.low), low);
    return {high, fma(s.high, q, low)};
}

// x = j sixteenths of a half turn + r radians, r high and low; j stands in the low bits of z.
template <Unit U>
struct SixteenthReduction {
    using E = Double;
    using Vector = E::Vector;

    ShortReduction<E, U, 16, 1> steps = {};
    Vector factor[2] = {U == Unit::Degree     ? E::row(degree_parts[0])
                        : U == Unit::HalfTurn ? E::row(pi_parts[0])
                                              : E::row(sixteenth_parts[1]),
                        U == Unit::Degree     ? E::row(degree_parts[1])
                        : U == Unit::HalfTurn ? E::row(pi_parts[1])
                                              : E::row(sixteenth_parts[2])};

    NAX_VEC Pair operator()(Vector x, Vector& z) const {
        const Vector f = steps(x, z);
        if constexpr (is_exact(U)) {
            const Vector r = mul(f, factor[0]);
            return {r, fma(f, factor[1], fms(f, factor[0], r))};
        } else {
            // f is exact but for the lower parts of pi/16, and so is f - r
            const Vector n = sub(z, steps.shifter), r = fnma(n, factor[0], f);
            return {r, fnma(n, factor[1], fnma(n, factor[0], sub(f, r)))};
        }
    }
};

// Series for |r| <= pi/32.
inline constexpr double sixteenth_sine[] = {-0.16666666666666666, 0.008333333333315813, -0.00019841269332253932,
                                            2.755128336430562e-06};
inline constexpr double sixteenth_cosine[] = {-0.4999999999999998, 0.04166666666647394, -0.0013888888328985587,
                                              2.4794947980863574e-05};

template <Function F, Unit U>
struct SixteenthCore {
    using E = Double;
    using Vector = E::Vector;
    static constexpr Function function = F;
    static constexpr Unit unit = U;
    static constexpr int outputs = F == Function::SineCosine ? 2 : 1;

    PairTable<E, 16> sine = {sine_16_high, sine_16_low};
    PairTable<E, 16> cosine = {cosine_16_high, cosine_16_low};
    SixteenthReduction<U> reduction = {};
    Coefficients<E, 4> sine_series = {sixteenth_sine};
    Coefficients<E, 4> cosine_series = {sixteenth_cosine};

    NAX_VEC void value(Vector x, Vector (&y)[outputs]) const {
        Vector z;
        const Pair r = reduction(takes_magnitude(U, F) ? x : magnitude(x), z);
        const Vector r2 = mul(r.high, r.high);
        const Vector p = mul(r2, horner(sine_series, r2)), q = mul(r2, horner(cosine_series, r2));
        Pair s, c;
        sine.look_up(bits(z), s.high, s.low);
        cosine.look_up(bits(z), c.high, c.low);
        // The tables hold half a turn.
        const Vector sign = as_sign<4>(z);
        if constexpr (F != Function::Cosine) {
            const Pair sum = add_angle(s, c, r, p, q);
            y[0] = bit_xor(add(sum.high, sum.low), sign);
        }
        if constexpr (F != Function::Sine) {
            const Vector minus = E::row_of_bits(E::sign_bit);
            const Pair sum = add_angle(c, {bit_xor(s.high, minus), bit_xor(s.low, minus)}, r, p, q);
            y[outputs - 1] = bit_xor(add(sum.high, sum.low), sign);
        }
    }
    NAX_VEC void finish(Vector x, Vector (&y)[outputs]) const {
        if constexpr (is_exact(U)) y[0] = without_minus_zero(y[0]);
        if constexpr (F != Function::Cosine) y[0] = bit_xor(y[0], sign_of(x));
    }
};

template <Unit U>
struct SixteenthCore<Function::Tangent, U> {
    using E = Double;
    using Vector = E::Vector;
    static constexpr Function function = Function::Tangent;
    static constexpr Unit unit = U;
    static constexpr int outputs = 1;

    PairTable<E, 8> tangent = {tangent_8_high, tangent_8_low};
    SixteenthReduction<U> reduction = {};
    Coefficients<E, 5> series = {tangent_of_rest};
    Vector one = E::row(1);
    E::Bits four = E::bits_row(4);

    NAX_VEC void value(Vector x, Vector (&y)[1]) const {
        Vector z;
        const Pair r = reduction(is_exact(U) ? x : magnitude(x), z);
        const Vector r2 = mul(r.high, r.high);
        Pair b;
        tangent.look_up(bits(z), b.high, b.low);
        // t = tan(r); the pairs below must be of high and low parts, for a quotient knows but the high one's reciprocal
        const Vector rest = fma(mul(r.high, r2), horner(series, r2), r.low);
        const Vector t_high = add(r.high, rest), t_low = sub(rest, sub(t_high, r.high));
        // B + t, 1 - B t
        Pair over, under;
        over.high = add(b.high, t_high);
        over.low = add(sub(t_high, sub(over.high, b.high)), add(b.low, t_low));
        under.high = fnma(b.high, t_high, one);
        under.low = fnma(b.high, t_high, sub(one, under.high));
        under.low = fnma(b.low, t_high, fnma(b.high, t_low, under.low));
        // j from 4 to 11 belongs to an odd quarter turn
        const Vector odd_sign = as_sign<3>(from_bits(bits(z) + four));
        const auto odd = sign_mask(odd_sign);
        const Pair top = {choose(odd, under.high, over.high), choose(odd, under.low, over.low)};
        const Pair bottom = {choose(odd, over.high, under.high), choose(odd, over.low, under.low)};
        y[0] = bit_xor(quotient(top, bottom), odd_sign);
        if constexpr (is_exact(U)) {
            // A zero has the sign of the cosine, a pole that of the sine: both change with every half turn.
            const Vector infinity = E::row_of_bits(E::exponent_field), zero = E::row(0);
            const Vector size = choose(odd, infinity, zero);
            y[0] = choose(equal(over.high, zero), bit_xor(size, as_sign<4>(z)), y[0]);
        }
    }
    NAX_VEC void finish(Vector x, Vector (&y)[1]) const { y[0] = bit_xor(y[0], sign_of(x)); }
};

}  // namespace nax::vmath::NAX_ISA
