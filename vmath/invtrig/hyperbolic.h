// The kernels of Sinh, Cosh and Tanh.
//
//     |x| = N ln2 + r,   S, C = (2^N -+ 2^-N)/2,   N in sixteenths
//     sinh|x| = S cosh r + C sinh r,   cosh|x| = C cosh r + S sinh r,   tanh|x| = (S + C tanh r)/(C + S tanh r)
//
// N = 0 leaves S = 0 and C = 1, so small arguments keep all their bits; from there on the second term of sinh never
// cancels more than half of the first. The powers' low parts are relative. HA carries every rounding error on; LA keeps
// the low part of S, in which that of the powers shows where it is small.
#pragma once

#include "vmath/exp/exp_tables.inc"
#include "vmath/invtrig/hyperbolic_coefficients.inc"
#include "vmath/invtrig/unit.h"

namespace nax::vmath::NAX_ISA {

// S and C, r, and what HA knows beyond.
template <class E>
struct Hyperbola {
    typename E::Vector s, c, s_low, c_low, r, r_low;
};

// The low parts that a level needs: all of them HA, those of S and the rounding error of C LA, none EP.
enum class Lows { None, Some, All };

template <class E, Lows Kept>
struct HyperbolicReduction {
    using Vector = typename E::Vector;
    using Bits = typename E::Bits;
    static constexpr bool with_low = Kept != Lows::None;

    std::conditional_t<with_low, PairTable<E, 16>, Table<E, 16>> powers;
    Vector log2_e = E::row(by_precision<E>(0x1.715476p+0f, 0x1.71547652b82fep+0));
    // Leaves N in sixteenths, and in the low bits of the sum 16 (N - 1): that is 2^N/2.
    Vector shifter = E::row(by_precision<E>(0x1.8p19f - 1.0f, 0x1.8p48 - 1.0));
    Bits mirror = E::bits_row(-32);  // less those bits: 16 (-N - 1)
    Vector ln2 = E::row(by_precision<E>(0x1.62e43p-1f, 0x1.62e42fefa39efp-1));
    Vector ln2_low = E::row(by_precision<E>(-0x1.05c61p-29f, 0x1.abc9e3b39803fp-56));

    NAX_VEC Hyperbola<E> operator()(Vector a) const {
        Hyperbola<E> h;
        const Vector z = fma(a, log2_e, shifter), n = sub(z, shifter);
        const Bits up_index = bits(z), down_index = mirror - bits(z);
        // the first difference is exact
        const Vector difference = fnma(n, ln2, a);
        h.r = fnma(n, ln2_low, difference);
        Vector up, down, up_low, down_low;
        if constexpr (with_low) {
            powers.look_up(up_index, up, up_low);
            powers.look_up(down_index, down, down_low);
        } else {
            up = powers[up_index];
            down = powers[down_index];
        }
        up = scaled(up, up_index);
        down = scaled(down, down_index);
        h.s = sub(up, down);
        h.c = add(up, down);
        if constexpr (with_low) {
            h.s_low = fma(up, up_low, fnma(down, down_low, sub(sub(up, h.s), down)));
            h.c_low = add(sub(up, h.c), down);
        }
        if constexpr (Kept == Lows::All) {
            h.c_low = fma(up, up_low, fma(down, down_low, h.c_low));
            h.r_low = fnma(n, ln2_low, sub(difference, h.r));
        }
        return h;
    }

private:
    // 2^(whole part) times the power.
    NAX_VEC static Vector scaled(Vector power, Bits index) {
        return from_bits(bits(power) + shift_left<E::mantissa_bits>(shift_right<4>(index)));
    }
};

// Arguments beyond the limit, where 2^-N or the result could leave the normal range, go to the scalar path in every
// error mode.
template <class E>
struct HyperbolicRange {
    using Vector = typename E::Vector;
    Vector magnitude = E::row_of_bits(~E::sign_bit);
    Vector limit = E::row(by_precision<E>(85.0f, 669.7750254044716));
    NAX_VEC auto excess(Vector a) const { return bits(limit) - bits(a); }
    NAX_VEC auto exceeded(Vector x) const { return greater(bit_and(x, magnitude), limit); }
};

template <class E, Lows Kept, int SinhTerms, int CoshTerms>
struct Sinh {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 2;
    static constexpr auto rare = by_precision<E>(vssinh_cout_rare, vdsinh_cout_rare);
    static constexpr bool always_settled = true;

    Coefficients<E, SinhTerms> sinh_series;
    Coefficients<E, CoshTerms> cosh_series;
    HyperbolicReduction<E, Kept> reduction;
    HyperbolicRange<E> range = {};

    NAX_VEC auto eval(Vector x, Vector& y) const {
        const Vector a = bit_and(x, range.magnitude);
        const Hyperbola<E> h = reduction(a);
        const Vector r2 = mul(h.r, h.r), r4 = mul(r2, r2);
        // cosh r - 1, and sinh r or its difference from r
        const Vector cosh_rest = mul(r2, cosh_series(r2, r4));
        const Vector r3 = mul(h.r, r2), p = sinh_series(r2, r4);
        if constexpr (Kept == Lows::All) {
            // S + C r with its errors, then the small terms
            const Vector product = mul(h.c, h.r);
            Vector low = fma(h.c_low, h.r, add(h.s_low, fms(h.c, h.r, product)));
            const Vector sum = fast_two_sum(h.s, product, low);
            low = fma(h.s, cosh_rest, fma(h.c, fma(r3, p, h.r_low), low));
            y = add(sum, low);
        } else {
            Vector low = mul(h.s, cosh_rest);
            if constexpr (Kept == Lows::Some) low = fma(h.s, cosh_rest, h.s_low);
            y = add(h.s, fma(h.c, fma(r3, p, h.r), low));
        }
        y = bit_choose(range.magnitude, y, x);
        return range.excess(a);
    }
    NAX_VEC auto is_rare(Vector x) const { return range.exceeded(x); }
};

template <class E, Lows Kept, int SinhTerms, int CoshTerms>
struct Cosh {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 2;
    static constexpr auto rare = by_precision<E>(vscosh_cout_rare, vdcosh_cout_rare);
    static constexpr bool always_settled = true;

    Coefficients<E, SinhTerms> sinh_series;
    Coefficients<E, CoshTerms> cosh_series;
    HyperbolicReduction<E, Kept> reduction;
    HyperbolicRange<E> range = {};

    NAX_VEC auto eval(Vector x, Vector& y) const {
        const Vector a = bit_and(x, range.magnitude);
        const Hyperbola<E> h = reduction(a);
        const Vector r2 = mul(h.r, h.r), r4 = mul(r2, r2);
        const Vector cosh_rest = mul(r2, cosh_series(r2, r4));
        const Vector sinh_r = fma(mul(h.r, r2), sinh_series(r2, r4), h.r);
        // All behind C is so small against it that its own rounding hardly counts.
        Vector low = mul(h.s, sinh_r);
        if constexpr (Kept == Lows::All) low = fma(h.s, sinh_r, h.c_low);
        y = add(h.c, fma(h.c, cosh_rest, low));
        return range.excess(a);
    }
    NAX_VEC auto is_rare(Vector x) const { return range.exceeded(x); }
};

template <class E, Lows Kept, int Terms>
struct Tanh {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 2;

    Coefficients<E, Terms> series;
    HyperbolicReduction<E, Kept> reduction;
    Vector magnitude = E::row_of_bits(~E::sign_bit);
    Vector largest = E::row(by_precision<E>(10.0f, 22.0));  // from here on the result rounds to 1
    Vector one = E::row(1);

    NAX_VEC void eval(Vector x, Vector& y) const {
        // NaN passes through
        const Vector a = min(largest, bit_and(x, magnitude));
        const Hyperbola<E> h = reduction(a);
        const Vector r2 = mul(h.r, h.r), r3 = mul(h.r, r2), p = series(r2, mul(r2, r2));
        const Vector tanh_r = fma(r3, p, h.r);
        const Vector denominator = fma(h.s, tanh_r, h.c);
        Vector quotient;
        if constexpr (Kept == Lows::All) {
            const Vector product = mul(h.c, h.r);
            Vector low = fma(h.c_low, h.r, add(h.s_low, fms(h.c, h.r, product)));
            const Vector numerator = fast_two_sum(h.s, product, low);
            low = fma(h.c, fma(r3, p, h.r_low), low);
            const Vector denominator_low = add(fma(h.s, tanh_r, sub(h.c, denominator)), h.c_low);
            Vector quotient_low;
            quotient = divide(numerator, denominator, denominator_low, one, quotient_low, low);
            quotient = add(quotient, quotient_low);
        } else if constexpr (Kept == Lows::Some) {
            quotient = div(add(h.s, fma(h.c, tanh_r, h.s_low)), add(h.c, fma(h.s, tanh_r, h.c_low)));
        } else {
            quotient = div(fma(h.c, tanh_r, h.s), denominator);
        }
        y = bit_choose(magnitude, quotient, x);
    }
};

}  // namespace nax::vmath::NAX_ISA
