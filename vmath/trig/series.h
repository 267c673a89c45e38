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

// Signs of exact zeros, and of x where values are those of its magnitude.
template <Function F, Unit U, class Vector, int NO>
NAX_VEC void finish_values(Vector x, Vector (&y)[NO]) {
    if constexpr (is_exact(U) && F != Function::Tangent) y[0] = without_minus_zero(y[0]);
    if constexpr (takes_magnitude(U, F)) y[0] = bit_xor(y[0], sign_of(x));
}

template <class E_, Function F, Unit U, int Parts, int Terms>
struct HalfTurnCore {
    using E = E_;
    using Vector = typename E::Vector;
    static constexpr Function function = F;
    static constexpr Unit unit = U;
    static constexpr int outputs = 1, steps = 1;

    Coefficients<E, Terms> polynomial;
    ShortReduction<E, U, steps, Parts> reduction = {};

    NAX_VEC void value(Vector x, Vector (&y)[1]) const {
        Vector z;
        sizes(reduction.less(x, reduction.template count_for<F>(x, z)), y);
        arrange(y, z);
    }
    // Of the remainder alone; and for its place on the circle.
    NAX_VEC void sizes(Vector r, Vector (&y)[1]) const { y[0] = mul(r, horner(polynomial, mul(r, r))); }
    template <class V>
    NAX_VEC static void arrange(V (&y)[1], V z) {
        y[0] = bit_xor(y[0], as_sign<0>(z));
    }
    NAX_VEC void finish(Vector x, Vector (&y)[1]) const { finish_values<F, U>(x, y); }
};

// tan(r) = r P/Q; in an odd quarter turn -Q/(r P).
template <class E_, Unit U, int Parts, int Top, int Bottom>
struct TangentCore {
    using E = E_;
    using Vector = typename E::Vector;
    static constexpr Function function = Function::Tangent;
    static constexpr Unit unit = U;
    static constexpr int outputs = 1, steps = 2;

    Coefficients<E, Top> numerator;
    Coefficients<E, Bottom> denominator;
    ShortReduction<E, U, steps, Parts> reduction = {};
    Vector one = E::row(1);

    NAX_VEC void value(Vector x, Vector (&y)[1]) const {
        Vector z;
        const Vector r = reduction(x, z);
        y[0] = of_remainder(r, z);
    }
    NAX_VEC Vector of_remainder(Vector r, Vector z) const {
        const Vector r2 = mul(r, r);
        const Vector p = mul(r, horner(numerator, r2)), q = fma(r2, horner(denominator, r2), one);
        const auto odd = sign_mask(as_sign<0>(z));
        const Vector y = div(choose(odd, q, p), choose(odd, p, q));
        if constexpr (!is_exact(U)) return bit_xor(y, as_sign<0>(z));
        // A zero has the sign of the cosine, a pole that of the sine: both change with every half turn.
        return bit_xor(y, choose(equal(r, E::row(0)), as_sign<1>(z), as_sign<0>(z)));
    }
    NAX_VEC void finish(Vector x, Vector (&y)[1]) const { finish_values<function, U>(x, y); }
};

// Sine and cosine, of radians only.
template <class E_, int Parts, int SineTerms, int CosineTerms>
struct SineCosineCore {
    using E = E_;
    using Vector = typename E::Vector;
    static constexpr Function function = Function::SineCosine;
    static constexpr Unit unit = Unit::Radian;
    static constexpr int outputs = 2, steps = 2;

    Coefficients<E, SineTerms> sine;      // sin(r) = r + r^3 P(r^2)
    Coefficients<E, CosineTerms> cosine;  // cos(r) = 1 + r^2 Q(r^2)
    ShortReduction<E, Unit::Radian, steps, Parts> reduction = {};
    Vector one = E::row(1);

    NAX_VEC void value(Vector x, Vector (&y)[2]) const {
        Vector z;
        sizes(reduction(x, z), y);
        arrange(y, z);
    }
    NAX_VEC void sizes(Vector r, Vector (&y)[2]) const {
        const Vector r2 = mul(r, r);
        y[0] = mul(r, fma(r2, horner(sine, r2), one));
        y[1] = fma(r2, horner(cosine, r2), one);
    }
    // In odd quarters sine and cosine change places; the sine is negative in quarters 2 and 3, the cosine in 1 and 2.
    template <class V>
    NAX_VEC static void arrange(V (&y)[2], V z) {
        const V s = y[0], c = y[1];
        const auto odd = sign_mask(as_sign<0>(z));
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
    if constexpr (Core::function == Function::Tangent) {
        y[0] = core.of_remainder(r, z);
    } else {
        core.sizes(r, y);
        core.arrange(y, z);
    }
}

// A float vector's values in the lanes of two double vectors.
template <int NO, class Value>
NAX_VEC void in_double_lanes(Single::Vector x, Single::Vector (&y)[NO], Value value) {
    Double::Vector low[NO], high[NO];
    value(widen_low(x), low);
    value(widen_high(x), high);
    for (int k = 0; k < NO; ++k) y[k] = narrow(low[k], high[k]);
}

// HA of float: the remainder and its series in a core of double lanes; n, what is exact, and the place on the circle in
// float. The tangent, a quotient of two sums, is in double lanes altogether.
template <class Lanes>
struct Widened {
    using E = Single;
    using Vector = E::Vector;
    static constexpr Function function = Lanes::function;
    static constexpr Unit unit = Lanes::unit;
    static constexpr int outputs = Lanes::outputs;

    Lanes lanes;
    ShortReduction<E, unit, Lanes::steps, 1> steps = {};

    NAX_VEC void value(Vector x, Vector (&y)[outputs]) const {
        if constexpr (function == Function::Tangent) {
            const auto value = [&](auto a, auto& b) __attribute__((always_inline)) { lanes.value(a, b); };
            return in_double_lanes(x, y, value);
        } else {
            Vector z;
            const Vector n = steps.template count_for<function>(x, z);
            Double::Vector low[outputs], high[outputs];
            // The cosine's remainders of small arguments have more bits than a float.
            if constexpr (is_exact(unit) && function != Function::Cosine) {
                const Vector r = steps.less(x, n);
                lanes.sizes(widen_low(r), low);
                lanes.sizes(widen_high(r), high);
            } else {
                lanes.sizes(lanes.reduction.less(widen_low(x), widen_low(n)), low);
                lanes.sizes(lanes.reduction.less(widen_high(x), widen_high(n)), high);
            }
            for (int k = 0; k < outputs; ++k) y[k] = narrow(low[k], high[k]);
            Lanes::arrange(y, z);
        }
    }
    NAX_VEC void finish(Vector x, Vector (&y)[outputs]) const { finish_values<function, unit>(x, y); }
};

}  // namespace nax::vmath::NAX_ISA
