// What the inverse trigonometric kernels share: the unit of angles, and quotients with their errors.
#pragma once

#include <type_traits>

#include "vmath/frame/kernel_exports.h"
#include "vmath/frame/polynomial.h"
#include "vmath/invtrig/invtrig_rare.h"
#include "vmath/invtrig/invtrig_tables.inc"

namespace nax::vmath::NAX_ISA {

enum class Unit { Radians, HalfTurns };
enum class Level { High, Low };  // Low serves LA and EP, which differ in the length of the series

// Stands for a row that a unit or level has no need of.
struct NoRow {
    template <class V>
    constexpr NoRow(const V&) {}
    constexpr NoRow() = default;
};
template <bool Present, class Vector>
using RowIf = std::conditional_t<Present, Vector, NoRow>;

// Rows of a constant in two parts.
template <class E>
constexpr auto first_part(const float (&single)[2], const double (&wide)[2]) {
    return E::row(by_precision<E>(single[0], wide[0]));
}
template <class E>
constexpr auto second_part(const float (&single)[2], const double (&wide)[2]) {
    return E::row(by_precision<E>(single[1], wide[1]));
}

// Leading term of an angle and the rest: z and z_low in the unit. `rest` adds the end of a series to z_low.
template <class E, Unit U>
struct Factor {
    using Vector = typename E::Vector;
    static constexpr bool present = U == Unit::HalfTurns;
    [[no_unique_address]] RowIf<present, Vector> high = first_part<E>(inverse_pi_partsf, inverse_pi_parts);
    [[no_unique_address]] RowIf<present, Vector> low = second_part<E>(inverse_pi_partsf, inverse_pi_parts);

    NAX_VEC void operator()(Vector& z, Vector& z_low) const {
        if constexpr (present) {
            const Vector lead = mul(z, high);
            z_low = fma(z_low, high, fma(z, low, fms(z, high, lead)));
            z = lead;
        }
    }
    // z + z^3 p, w = z^2
    NAX_VEC Vector single(Vector z, Vector w, Vector p) const {
        if constexpr (present)
            return mul(z, fma(w, p, high));
        else
            return fma(mul(z, w), p, z);
    }
    // base plus that
    NAX_VEC Vector single(Vector base, Vector z, Vector w, Vector p) const {
        if constexpr (present)
            return fma(z, fma(w, p, high), base);
        else
            return add(base, fma(mul(z, w), p, z));
    }
};

// Magnitudes below this, but 0: so near the denormals what HA carries on of a factor 1/pi would be lost.
template <class E>
struct TinyRange {
    using Vector = typename E::Vector;
    Vector smallest = E::row(by_precision<E>(0x1p-100f, 0x1p-960));
    // Negative there.
    NAX_VEC auto shortage(Vector a) const { return (bits(a) - bits(smallest)) & -bits(a); }
    NAX_VEC auto tiny(Vector a) const { return less(a, smallest) & greater(a, E::row(0)); }
};

// e/x for positive x, at most 1/64 too small in magnitude: an integer difference of the bits is within 1/8 of 1/x, one
// Newton step squares that. e is a rounding error whose first bits are enough. 0/0 is 0.
template <class E>
struct RoughQuotient {
    using Vector = typename E::Vector;
    typename E::Bits exponents = E::bits_row(typename E::Integer{2 * E::exponent_bias} << E::mantissa_bits);
    Vector two = E::row(2);
    NAX_VEC Vector operator()(Vector e, Vector x) const {
        const Vector estimate = from_bits(exponents - bits(x));
        return mul(mul(e, estimate), fnma(x, estimate, two));
    }
};

// a/(b + b_low) as q + q_low; `a_low`, if given, is added to a.
template <class Vector, class... Low>
NAX_VEC Vector divide(Vector a, Vector b, Vector b_low, Vector one, Vector& q_low, Low... a_low) {
    const Vector reciprocal = div(one, b);
    const Vector q = mul(a, reciprocal);
    Vector rest = fnma(q, b, a);
    ((rest = add(rest, a_low)), ...);
    q_low = mul(fnma(q, b_low, rest), reciprocal);
    return q;
}

// high + low where |high| >= |z| or high is 0: the sum of high and z, its error added to low.
template <class Vector>
NAX_VEC Vector fast_two_sum(Vector high, Vector z, Vector& low) {
    const Vector sum = add(high, z);
    low = add(low, sub(z, sub(sum, high)));
    return sum;
}

}  // namespace nax::vmath::NAX_ISA
