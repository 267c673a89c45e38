// The long reduction of doubles: |x| = B + r, B one of 512 points of the circle, from the bits of 1/(2 pi) that matter
// to the exponent of x. In fixed point, so whole turns fall away by themselves.
#pragma once

#include "vmath/trig/sixteenths.h"

namespace nax::vmath::NAX_ISA {

// A fraction of a turn: 128 bits behind the point.
struct TurnFraction {
    I64 high, low;
};

// M row mod 1 for x = M 2^(e - 1075): the mantissa in two halves times the row in six, by columns of 32 bits. The
// lowest column and the carry from it are left out: they lie below 2^-128.
NAX_VEC TurnFraction turn_fraction(Double::Vector x) {
    const I64 mantissa = (bits(x) & 0xFFFFFFFFFFFFF) | 0x10000000000000;
    const I64 lower = mantissa & 0xFFFFFFFF, upper = shift_right<32>(mantissa);
    I64 words[3];
    // Inf and NaN, which need no row, take that of an even exponent: the last row is out of reach.
    const I64 exponent = shift_right<52>(bits(magnitude(x)));
    look_up_row(turns_by_exponent, exponent - shift_right<11>(exponent + 1), words[0], words[1], words[2]);
    // Limb k has the weight 2^(32 k - 192).
    const I64 limb[6] = {words[2], shift_right<32>(words[2]), words[1], shift_right<32>(words[1]),
                         words[0], shift_right<32>(words[0])};
    I64 column[6], carry = {};
#pragma GCC unroll 8
    for (int k = 1; k < 6; ++k) {
        const I64 product = multiply_lower_halves(lower, limb[k]);
        const I64 sum = carry + (product & 0xFFFFFFFF) + multiply_lower_halves(upper, limb[k - 1]);
        column[k] = sum & 0xFFFFFFFF;
        carry = shift_right<32>(sum) + shift_right<32>(product);
    }
    return {shift_left<32>(column[5]) | column[4], shift_left<32>(column[3]) | column[2]};
}

// The nearest of the 512 points, and r in radians. Bits become doubles without conversions: at the place of the
// mantissa of a constant whose unit is their weight.
NAX_VEC Pair remainder_of_turn(TurnFraction t, I64& point) {
    using E = Double;
    const I64 half = E::bits_row(int64_t{1} << 54);
    point = shift_right<55>(t.high + half);
    const I64 rest = t.high - shift_left<55>(point);  // signed, in 2^-64
    const auto weigh = [](I64 pattern, double constant) __attribute__((always_inline)) {
        return sub(from_bits(pattern), E::row(constant));
    };
    // 47 bits and a sign, 48 bits, 24 bits
    const auto first = weigh((rest >> 8) + bits(E::row(0x1.8p-4)), 0x1.8p-4);
    const auto second = weigh(shift_left<40>(rest & 0xFF) | shift_right<24>(t.low) | bits(E::row(0x1p-52)), 0x1p-52);
    const auto third = weigh((t.low & 0xFFFFFF) | bits(E::row(0x1p-76)), 0x1p-76);
    const auto high = add(first, second), low = add(sub(second, sub(high, first)), third);
    // times 2 pi
    const auto turn = E::row(2 * pi_parts[0]), turn_low = E::row(2 * pi_parts[1]);
    const auto r = mul(high, turn);
    return {r, fma(low, turn, fma(high, turn_low, fms(high, turn, r)))};
}

// The functions of finite x, signs and all. Of x that is not finite, anything.
template <Function F, int NO>
NAX_VEC void long_values(Double::Vector x, Double::Vector (&y)[NO]) {
    using E = Double;
    using Vector = E::Vector;
    I64 point;
    const Pair r = remainder_of_turn(turn_fraction(x), point);
    Pair s, c;
    look_up_row(circle_512, point & 511, s.high, s.low, c.high, c.low);
    // Taylor's series for |r| <= pi/512
    const Vector r2 = mul(r.high, r.high);
    const Vector p = mul(r2, fma(r2, fma(r2, E::row(-1.0 / 5040), E::row(1.0 / 120)), E::row(-1.0 / 6)));
    const Vector q = mul(r2, fma(r2, fma(r2, E::row(-1.0 / 720), E::row(1.0 / 24)), E::row(-0.5)));
    const Vector minus = E::row_of_bits(E::sign_bit);
    const Pair sine = add_angle(s, c, r, p, q);
    const Pair cosine = add_angle(c, {bit_xor(s.high, minus), bit_xor(s.low, minus)}, r, p, q);
    if constexpr (F == Function::Tangent) {
        const auto normal = [](Pair a) __attribute__((always_inline)) {
            const auto sum = add(a.high, a.low);
            return Pair{sum, sub(a.low, sub(sum, a.high))};
        };
        y[0] = bit_xor(quotient(normal(sine), normal(cosine)), sign_of(x));
    } else {
        if constexpr (F != Function::Cosine) y[0] = bit_xor(add(sine.high, sine.low), sign_of(x));
        if constexpr (F != Function::Sine) y[NO - 1] = add(cosine.high, cosine.low);
    }
}

}  // namespace nax::vmath::NAX_ISA
