// LA and EP, and HA of float in double lanes: no tables.
//
//     sin x = +-r P(r^2)                     x less a multiple of half a turn
//     cos x = +-r P(r^2)                     x less an odd multiple of a quarter turn
//     tan x = r P(r^2)/Q(r^2) or -1/that     x less a multiple of a quarter turn
//     sin x, cos x = +-r P(r^2), +-Q(r^2)    or the other way round, likewise
//
// A core computes `value`s, where the short reduction serves, and puts signs on them in `finish`.
#pragma once

#include "vmath/trig/angle.h"

namespace nax::vmath::NAX_ISA {

template <class E_, Function F, Unit U, int Parts, int Terms>
struct HalfTurnCore {
    using E = E_;
    using Vector = typename E::Vector;
    static constexpr Function function = F;
    static constexpr Unit unit = U;
    static constexpr int outputs = 1;

    Coefficients<E, Terms> polynomial;
    ShortReduction<E, U, 1, Parts> reduction = {};

    NAX_VEC void value(Vector x, Vector (&y)[1]) const {
        Vector z;
        const Vector r = F == Function::Cosine ? reduction.to_half_odd(x, z) : reduction(x, z);
        y[0] = from_remainder(r, z);
    }
    NAX_VEC Vector from_remainder(Vector r, Vector z) const {
        return bit_xor(mul(r, horner(polynomial, mul(r, r))), as_sign<0>(z));
    }
    NAX_VEC void finish(Vector x, Vector (&y)[1]) const {
        if constexpr (is_exact(U)) y[0] = without_minus_zero(y[0]);
        if constexpr (takes_magnitude(U, F)) y[0] = bit_xor(y[0], sign_of(x));
    }
};

// tan(r) = r P/Q; in an odd quarter turn -Q/(r P).
template <class E_, Unit U, int Parts, int Top, int Bottom>
struct TangentCore {
    using E = E_;
    using Vector = typename E::Vector;
    static constexpr Function function = Function::Tangent;
    static constexpr Unit unit = U;
    static constexpr int outputs = 1;

    Coefficients<E, Top> numerator;
    Coefficients<E, Bottom> denominator;
    ShortReduction<E, U, 2, Parts> reduction = {};
    Vector one = E::row(1);

    NAX_VEC void value(Vector x, Vector (&y)[1]) const {
        Vector z;
        const Vector r = reduction(x, z);
        y[0] = from_remainder(r, z);
    }
    NAX_VEC Vector from_remainder(Vector r, Vector z) const {
        const Vector r2 = mul(r, r);
        const Vector p = mul(r, horner(numerator, r2)), q = fma(r2, horner(denominator, r2), one);
        const auto odd = sign_mask(as_sign<0>(z));
        const Vector y = div(choose(odd, q, p), choose(odd, p, q));
        if constexpr (!is_exact(U)) return bit_xor(y, as_sign<0>(z));
        // A zero has the sign of the cosine, a pole that of the sine: both change with every half turn.
        return bit_xor(y, choose(equal(r, E::row(0)), as_sign<1>(z), as_sign<0>(z)));
    }
    NAX_VEC void finish(Vector x, Vector (&y)[1]) const {
        if constexpr (takes_magnitude(U, function)) y[0] = bit_xor(y[0], sign_of(x));
    }
};

// Sine and cosine, of radians only.
template <class E_, int Parts, int SineTerms, int CosineTerms>
struct SineCosineCore {
    using E = E_;
    using Vector = typename E::Vector;
    static constexpr Function function = Function::SineCosine;
    static constexpr Unit unit = Unit::Radian;
    static constexpr int outputs = 2;

    Coefficients<E, SineTerms> sine;      // sin(r) = r + r^3 P(r^2)
    Coefficients<E, CosineTerms> cosine;  // cos(r) = 1 + r^2 Q(r^2)
    ShortReduction<E, Unit::Radian, 2, Parts> reduction = {};
    Vector one = E::row(1);

    NAX_VEC void value(Vector x, Vector (&y)[2]) const {
        Vector z;
        const Vector r = reduction(x, z);
        from_remainder(r, z, y);
    }
    NAX_VEC void from_remainder(Vector r, Vector z, Vector (&y)[2]) const {
        const Vector r2 = mul(r, r);
        const Vector s = mul(r, fma(r2, horner(sine, r2), one)), c = fma(r2, horner(cosine, r2), one);
        const auto odd = sign_mask(as_sign<0>(z));
        // The sine is negative in quarters 2 and 3, the cosine in 1 and 2.
        y[0] = bit_xor(choose(odd, c, s), as_sign<1>(z));
        y[1] = bit_xor(choose(odd, s, c), bit_xor(as_sign<1>(z), as_sign<0>(z)));
    }
    NAX_VEC void finish(Vector, Vector (&)[2]) const {}
};

// A radian argument of any size that came from a float, in the lanes of a double core: x/pi less whole turns with the
// row of 1/pi for the float's exponent, half or quarter turns taken off exactly, the rest back to radians.
template <class Core>
NAX_VEC void long_value_of_float(const Core& core, Double::Vector x, Double::Vector (&y)[Core::outputs]) {
    using Vector = Double::Vector;
    constexpr bool quarters = Core::function == Function::SineCosine || Core::function == Function::Tangent;
    const I64 exponent = shift_right<52>(bits(magnitude(x))) - (Double::exponent_bias - Single::exponent_bias);
    Vector high, low;
    look_up_pair(half_turns_by_exponent, exponent & 255, high, low);
    if constexpr (quarters) x = add(x, x);
    const Vector shifter = Double::row(0x1.8p+52), half = Double::row(0.5);
    Vector z = mul(x, high), n;
    if constexpr (Core::function == Function::Cosine) {
        z = add(add(z, half), shifter);
        n = sub(sub(z, shifter), half);
    } else {
        z = add(z, shifter);
        n = sub(z, shifter);
    }
    const Vector f = fma(x, low, fms(x, high, n));
    const Vector r = mul(f, Double::row(quarters ? pi_parts[0] / 2 : pi_parts[0]));
    if constexpr (Core::outputs == 2)
        core.from_remainder(r, z, y);
    else
        y[0] = core.from_remainder(r, z);
}

}  // namespace nax::vmath::NAX_ISA
