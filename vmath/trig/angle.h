// Angles: their units, the short reduction to a fraction of a half turn, and the exact reduction of degrees and half
// turns of any size.
#pragma once

#include "vmath/exp/split.h"
#include "vmath/frame/polynomial.h"
#include "vmath/trig/trig_tables.inc"

namespace nax::vmath::NAX_ISA {

enum class Unit { Radian, Degree, HalfTurn };
enum class Function { Sine, Cosine, SineCosine, Tangent };

// Degrees and half turns are reduced without error, so zeros and poles are met exactly.
constexpr bool is_exact(Unit unit) { return unit != Unit::Radian; }
// Odd functions of exact units work on |x| and take the sign of x in the end: their zeros have it.
constexpr bool takes_magnitude(Unit unit, Function function) { return is_exact(unit) && function != Function::Cosine; }

template <class T>
constexpr T half_turn(Unit unit) {
    return unit == Unit::Radian ? T(pi_parts[0]) : unit == Unit::Degree ? T(180) : T(1);
}

// The largest magnitude for the short reduction, as an OrdinaryRange has it: the first one that is too large.
template <class E>
constexpr typename E::Element first_long(Unit unit) {
    using T = typename E::Element;
    using Integer = typename E::Integer;
    const T limit = unit == Unit::Radian   ? by_precision<E>(10000.0f, 0x1p+24)
                    : unit == Unit::Degree ? T(0x1p+24)
                                           : by_precision<E>(0x1p+20f, 0x1p+46);
    return std::bit_cast<T>(std::bit_cast<Integer>(limit) + 1);
}

template <class Vector>
NAX_VEC Vector magnitude(Vector x) {
    using E = PrecisionOf<Vector>;
    return bit_and(x, E::row_of_bits(~E::sign_bit));
}
template <class Vector>
NAX_VEC Vector sign_of(Vector x) {
    using E = PrecisionOf<Vector>;
    return bit_and(x, E::row_of_bits(E::sign_bit));
}
// Bit `Bit` of each lane where the sign stands, and nothing else.
template <int Bit, class Vector>
NAX_VEC Vector as_sign(Vector z) {
    using E = PrecisionOf<Vector>;
    return sign_of(from_bits(shift_left<8 * int(sizeof(typename E::Element)) - 1 - Bit>(bits(z))));
}
// +0 where x is a zero.
template <class Vector>
NAX_VEC Vector without_minus_zero(Vector x) {
    return add(x, from_bits(bits(x) ^ bits(x)));
}

template <class E, int N>
NAX_VEC typename E::Vector horner(const Coefficients<E, N>& polynomial, typename E::Vector x) {
    auto sum = polynomial.c[N - 1];
#pragma GCC unroll 16
    for (int k = N - 2; k >= 0; --k) sum = fma(sum, x, polynomial.c[k]);
    return sum;
}

// x = n + r in steps of a half turn over `Steps`. Radians lose `Parts` parts of the
// step one by one: the first difference is exact. Of degrees the difference is exact altogether, and half turns need
// but the shifter.
template <class E, Unit U, int Steps, int Parts>
struct ShortReduction {
    using Vector = typename E::Vector;
    using T = typename E::Element;
    static constexpr int kParts = U == Unit::Radian ? Parts : U == Unit::Degree ? 1 : 0;

    Vector inverse = E::row(T(Steps / half_turn<double>(U)));
    // 1.5 2^52 or 1.5 2^23 has 1 as unit.
    Vector shifter = E::row(by_precision<E>(0x1.8p+23f, 0x1.8p+52) / T(U == Unit::HalfTurn ? Steps : 1));
    Vector step[kParts + 1] = {};

    constexpr ShortReduction() {
        for (int k = 0; k < kParts; ++k) step[k] = E::row(U == Unit::Degree ? T(180.0 / Steps) : part(k) / T(Steps));
    }
    // The last of two float parts is rounded, not cut off: nothing follows.
    static constexpr T part(int k) {
        if (std::is_same_v<E, Single> && Parts == 2 && k == 1) return T(pi_parts[0] - double(pi_partsf[0]));
        return by_precision<E>(pi_partsf[k], pi_parts[k]);
    }

    NAX_VEC Vector operator()(Vector x, Vector& z) const { return less(x, count(x, z)); }
    // n; the low bits of z count the same.
    NAX_VEC Vector count(Vector x, Vector& z) const {
        z = U == Unit::HalfTurn ? add(x, shifter) : fma(x, inverse, shifter);
        return sub(z, shifter);
    }
    // The same, but for the cosine n is -1/2, 1/2, 3/2 ... of a half turn where z counts 0, 1, 2 ...
    template <Function F>
    NAX_VEC Vector count_for(Vector x, Vector& z) const {
        if constexpr (F != Function::Cosine) return count(x, z);
        const Vector half = E::row(T(0.5));
        z = add(U == Unit::HalfTurn ? add(x, half) : fma(x, inverse, half), shifter);
        return sub(sub(z, shifter), half);
    }
    // x - n steps.
    NAX_VEC Vector less(Vector x, Vector n) const {
        if constexpr (U == Unit::HalfTurn) return sub(x, n);
        Vector r = x;
#pragma GCC unroll 4
        for (int k = 0; k < kParts; ++k) r = fnma(n, step[k], r);
        return r;
    }
};

// |x| degrees of any size as -180 to 180 degrees, a little beyond for large ones. 2^12 is 1 modulo 45, so from where
// the unit of the format is a multiple of 8 the exponent counts modulo 12 only. The second step makes up for the
// rounding of the first one's quotient.
template <class E>
NAX_VEC typename E::Vector fold_degrees(typename E::Vector x) {
    using Vector = typename E::Vector;
    using Bits = typename E::Bits;
    using Integer = typename E::Integer;
    const Bits magnitude_bits = bits(magnitude(x));
    const Bits excess = shift_right<E::mantissa_bits>(magnitude_bits) - (E::exponent_bias + E::mantissa_bits + 4);
    const Bits dozens = shift_right<19>(excess * Integer{43691});  // excess/12
    const Bits folded = magnitude_bits - shift_left<E::mantissa_bits>(dozens * Integer{12});
    Vector y = from_bits(choose(greater(excess, excess ^ excess), folded, magnitude_bits));
    const Vector inverse = E::row(typename E::Element(1.0 / 360)), turn = E::row(360);
    y = fnma(round_to_integer<kToNearest>(mul(y, inverse)), turn, y);
    return fnma(round_to_integer<kToNearest>(mul(y, inverse)), turn, y);
}

// |x| half turns of any size as -1 to 1.
template <class E>
NAX_VEC typename E::Vector fold_half_turns(typename E::Vector x) {
    const auto a = magnitude(x);
    return fnma(round_to_integer<kToNearest>(mul(a, E::row(typename E::Element(0.5)))), E::row(2), a);
}

template <class E, Unit U>
NAX_VEC typename E::Vector fold(typename E::Vector x) {
    static_assert(is_exact(U));
    if constexpr (U == Unit::Degree)
        return fold_degrees<E>(x);
    else
        return fold_half_turns<E>(x);
}

}  // namespace nax::vmath::NAX_ISA
