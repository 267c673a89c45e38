// The kernels of Asin and Acos in both units.
//
//     a = |x| < 1/2:   asin(a)                          z = a,          w = a^2
//     a >= 1/2:        pi/2 - asin(a) = 2 asin(root)    z = 2 root,     w = root^2 = (1 - a)/2, exact
//
// Both are z + z w P(w), and w is the smaller of the two in every lane. HA carries the error of the root, of 1/pi, of
// pi/2 and of the difference from it.
#pragma once

#include "vmath/invtrig/arcsine_coefficients.inc"
#include "vmath/invtrig/unit.h"

namespace nax::vmath::NAX_ISA {

template <class E, Unit U, Level L, int Terms>
struct ArcsineSeries {
    using Vector = typename E::Vector;
    static constexpr bool high = L == Level::High;

    Coefficients<E, Terms> polynomial;
    Vector magnitude = E::row_of_bits(~E::sign_bit);
    Vector half = E::row(typename E::Element(0.5));
    [[no_unique_address]] Factor<E, U> factor = {};
    [[no_unique_address]] RowIf<high, RoughQuotient<E>> rough_quotient = {};

    // The result is z + tail, z alone in Low; `upper` tells a >= 1/2.
    NAX_VEC Vector operator()(Vector a, Vector& tail, typename E::Mask& upper) const {
        const Vector s = fnma(a, half, half);
        const Vector w = min(mul(a, a), s);
        upper = greater_equal(bits(a), bits(half));
        const Vector root = sqrt(s);
        Vector z = choose(upper, add(root, root), a);
        const Vector p = polynomial(w, mul(w, w));
        if constexpr (high) {
            const Vector zwp = mul(mul(z, w), p);
            tail = zero_unless(upper, rough_quotient(fnma(root, root, s), root));
            factor(z, tail);
            tail = add(tail, zwp);
            return z;
        } else {
            return factor.single(z, w, p);
        }
    }
};

// Negative in lanes above 1 and of NaN.
template <class E>
NAX_VEC auto beyond_one(typename E::Vector a) {
    return bits(E::row(1)) - bits(a);
}

template <class E, Unit U, Level L, int Terms>
struct Asin {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 2;
    static constexpr bool tiny_is_rare = U == Unit::HalfTurns && L == Level::High;
    static constexpr bool always_settled = tiny_is_rare;
    static constexpr auto rare = U == Unit::Radians ? by_precision<E>(vsasin_cout_rare, vdasin_cout_rare)
                                                    : by_precision<E>(vsasinpi_cout_rare, vdasinpi_cout_rare);

    ArcsineSeries<E, U, L, Terms> series;
    Vector quarter = U == Unit::Radians ? first_part<E>(half_pi_partsf, half_pi_parts) : series.half;
    Vector quarter_low = U == Unit::Radians ? second_part<E>(half_pi_partsf, half_pi_parts) : E::row(0);
    [[no_unique_address]] RowIf<tiny_is_rare, TinyRange<E>> range = {};

    NAX_VEC auto eval(Vector x, Vector& y) const {
        const Vector a = bit_and(x, series.magnitude);
        Vector tail;
        typename E::Mask upper;
        const Vector z = series(a, tail, upper);
        Vector lower_result = z, upper_result = sub(quarter, z);
        if constexpr (L == Level::High) {
            const Vector error = sub(sub(quarter, upper_result), z);
            upper_result = add(upper_result, sub(add(error, quarter_low), tail));
            lower_result = add(z, tail);
        }
        // the result has the sign of x
        y = bit_choose(series.magnitude, choose(upper, upper_result, lower_result), x);
        if constexpr (tiny_is_rare)
            return beyond_one<E>(a) | range.shortage(a);
        else
            return beyond_one<E>(a);
    }
    NAX_VEC auto is_rare(Vector x) const {
        const Vector a = bit_and(x, series.magnitude);
        const auto beyond = greater(a, E::row(1));
        if constexpr (tiny_is_rare)
            return beyond | range.tiny(a);
        else
            return beyond;
    }
};

template <class E, Unit U, Level L, int Terms>
struct Acos {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 2;
    static constexpr auto rare = U == Unit::Radians ? by_precision<E>(vsacos_cout_rare, vdacos_cout_rare)
                                                    : by_precision<E>(vsacospi_cout_rare, vdacospi_cout_rare);

    ArcsineSeries<E, U, L, Terms> series;
    Vector quarter = U == Unit::Radians ? first_part<E>(half_pi_partsf, half_pi_parts) : series.half;
    Vector quarter_low = U == Unit::Radians ? second_part<E>(half_pi_partsf, half_pi_parts) : E::row(0);

    NAX_VEC auto eval(Vector x, Vector& y) const {
        const Vector a = bit_and(x, series.magnitude);
        Vector tail;
        typename E::Mask upper;
        Vector z = series(a, tail, upper);
        // pi/2 -+ z below 1/2; from there on z, or pi - z for negative x
        const auto negative = sign_mask(x);
        const auto twice = [&](Vector c) __attribute__((always_inline)) {
            return choose(upper, zero_unless(negative, add(c, c)), c);
        };
        const Vector sign = and_not(series.magnitude, x);
        const Vector flip = choose(upper, sign, and_not(sign, E::row_of_bits(E::sign_bit)));
        z = bit_xor(z, flip);
        const Vector base = twice(quarter);
        if constexpr (L == Level::High) {
            Vector low = add(twice(quarter_low), bit_xor(tail, flip));
            const Vector sum = fast_two_sum(base, z, low);
            y = add(sum, low);
        } else {
            y = add(base, z);
        }
        return beyond_one<E>(a);
    }
    NAX_VEC auto is_rare(Vector x) const { return greater(bit_and(x, series.magnitude), E::row(1)); }
};

}  // namespace nax::vmath::NAX_ISA
