// The kernels of Asinh, Acosh and Atanh, by the logarithm of 1 + w, w >= 0:
//
//     asinh a = ln(1 + a + a^2/(1 + sqrt(a^2 + 1)))
//     acosh x = ln(1 + v + sqrt(v^2 + 2 v)),   v = x - 1
//     atanh a = ln(1 + 2 a/(1 - a))/2
//
// None of them cancels, so small arguments need no series of their own. HA makes w a pair; where a^2 could overflow,
// ln(2 a) serves long since.
#pragma once

#include "vmath/invtrig/inverse_hyperbolic_coefficients.inc"
#include "vmath/invtrig/unit.h"

namespace nax::vmath::NAX_ISA {

template <class E, Level L>
using LogarithmTable = std::conditional_t<L == Level::High, PairTable<E, 16>, Table<E, 16>>;

// ln u for u = 1 + w:  u = 2^k m, m in [1 + j/16, 1 + (j + 1)/16),  ln u = k ln2 - ln c + ln(1 + r),  r = m c - 1, c a
// short reciprocal of 1 + j/16. The sum of the first two terms in high parts is exact, and so is m c - 1, but for 2^-59
// where that hardly shows; what 1 + w drops is added to r. As u >= 1, nothing cancels.
template <class E, Level L, int Terms>
struct Logarithm {
    using Vector = typename E::Vector;
    using Bits = typename E::Bits;
    using Integer = typename E::Integer;
    static constexpr bool high = L == Level::High;
    static constexpr Integer unit_bits = Integer{E::exponent_bias} << E::mantissa_bits;
    static constexpr auto two_to_mantissa = typename E::Element(Integer{1} << E::mantissa_bits);

    Coefficients<E, Terms> polynomial;
    Table<E, 16> reciprocals;
    LogarithmTable<E, L> logarithms;
    Vector one = E::row(1);
    Bits exponent_field = E::bits_row(E::exponent_field);
    Vector ln2 =
        high ? first_part<E>(ln2_partsf, ln2_parts) : E::row(by_precision<E>(0x1.62e43p-1f, 0x1.62e42fefa39efp-1));
    [[no_unique_address]] RowIf<high, Vector> ln2_low = second_part<E>(ln2_partsf, ln2_parts);

    // ln(1 + w + w_low); Low has no w_low.
    template <class... WLow>
    NAX_VEC Vector operator()(Vector w, WLow... w_low) const {
        Vector u_low;
        const Vector u = one_plus(w, u_low, w_low...);
        return of_sum(u, u_low, E::row(two_to_mantissa + E::exponent_bias));
    }
    // The same, or ln(2 a) where `large`.
    template <class... WLow>
    NAX_VEC Vector or_of_double(typename E::Mask large, Vector a, Vector w, WLow... w_low) const {
        Vector u_low;
        const Vector u = one_plus(w, u_low, w_low...);
        const Vector offset =
            choose(large, E::row(two_to_mantissa + (E::exponent_bias - 1)), E::row(two_to_mantissa + E::exponent_bias));
        return of_sum(choose(large, a, u), zero_unless(~large, u_low), offset);
    }

private:
    // Exact in this order while 1 is a multiple of an ulp of w; beyond that u_low doesn't show in the result.
    template <class... WLow>
    NAX_VEC Vector one_plus(Vector w, Vector& u_low, WLow... w_low) const {
        const Vector u = add(one, w);
        u_low = sub(w, sub(u, one));
        ((u_low = add(u_low, w_low)), ...);
        return u;
    }

    // offset less bias and 2^mantissa bits is what k is lowered by
    NAX_VEC Vector of_sum(Vector u, Vector u_low, Vector offset) const {
        const Vector k = sub(from_bits(shift_right<E::mantissa_bits>(bits(u)) | bits(E::row(two_to_mantissa))), offset);
        const Bits binade = (bits(u) & exponent_field) - E::bits_row(unit_bits);
        const Vector m = from_bits(bits(u) - binade), down = from_bits(E::bits_row(unit_bits) - binade);
        const Bits j = shift_right<E::mantissa_bits - 4>(bits(u));
        const Vector c = reciprocals[j];
        const Vector r_high = fms(m, c, one), r_low = mul(mul(u_low, down), c);
        const Vector r = add(r_high, r_low), r2 = mul(r, r);
        if constexpr (high) {
            Vector sum, low;
            logarithms.look_up(j, sum, low);
            low = add(fma(k, ln2_low, low), sub(r_low, sub(r, r_high)));
            const Vector total = fast_two_sum(fma(k, ln2, sum), r, low);
            return add(total, fma(r2, polynomial(r, r2), low));
        } else {
            return add(fma(k, ln2, logarithms[j]), fma(r2, polynomial(r, r2), r));
        }
    }
};

// Arguments of the vector code lie below this: then u has an exponent to spare.
template <class E>
constexpr auto below_last_binade = E::row(by_precision<E>(0x1p+127f, 0x1p+1023));
// From here on ln(2 a) is the result: 1/(4 a^2) is far below an ulp of it.
template <class E>
constexpr auto large_argument = E::row(by_precision<E>(0x1p+14f, 0x1p+30));

template <class E, Level L, int Terms>
struct Asinh {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 1;
    static constexpr auto rare = by_precision<E>(vsasinh_cout_rare, vdasinh_cout_rare);
    static constexpr bool always_settled = true;

    Logarithm<E, L, Terms> logarithm;
    Vector magnitude = E::row_of_bits(~E::sign_bit);
    Vector limit = below_last_binade<E>, large = large_argument<E>;

    NAX_VEC auto eval(Vector x, Vector& y) const {
        const Vector a = bit_and(x, magnitude), one = logarithm.one;
        const Vector square = mul(a, a), sum = add(one, square), root = sqrt(sum), denominator = add(one, root);
        const auto is_large = greater_equal(bits(a), bits(large));
        Vector result;
        if constexpr (L == Level::High) {
            // the root's own error adds at most 1/6 ulp
            const Vector denominator_low = sub(root, sub(denominator, one));
            Vector w_low;
            const Vector q = divide(square, denominator, denominator_low, one, w_low, fms(a, a, square));
            const Vector w = fast_two_sum(a, q, w_low);
            result = logarithm.or_of_double(is_large, a, w, w_low);
        } else {
            result = logarithm.or_of_double(is_large, a, add(a, div(square, denominator)));
        }
        y = bit_choose(magnitude, result, x);
        return bits(limit) - bits(a);
    }
    NAX_VEC auto is_rare(Vector x) const { return greater(bits(bit_and(x, magnitude)), bits(limit)); }
};

template <class E, Level L, int Terms>
struct Acosh {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 1;
    static constexpr auto rare = by_precision<E>(vsacosh_cout_rare, vdacosh_cout_rare);
    static constexpr bool always_settled = true;

    Logarithm<E, L, Terms> logarithm;
    Vector limit = below_last_binade<E>, large = large_argument<E>;
    [[no_unique_address]] RowIf<L == Level::High, RoughQuotient<E>> rough_quotient = {};
    [[no_unique_address]] RowIf<L == Level::High, Vector> half = E::row(typename E::Element(0.5));

    NAX_VEC auto eval(Vector x, Vector& y) const {
        const Vector v = sub(x, logarithm.one), twice = add(v, v);
        const Vector s = fma(v, v, twice), root = sqrt(s);
        const auto is_large = greater_equal(bits(x), bits(large));
        if constexpr (L == Level::High) {
            const Vector s_low = fma(v, v, sub(twice, s));
            const Vector root_error = mul(half, add(fnma(root, root, s), s_low));
            Vector w_low = rough_quotient(root_error, root);
            const Vector w = fast_two_sum(root, v, w_low);
            y = logarithm.or_of_double(is_large, x, w, w_low);
        } else {
            y = logarithm.or_of_double(is_large, x, add(v, root));
        }
        return (bits(x) - bits(logarithm.one)) | (bits(limit) - bits(x)) | bits(x);
    }
    NAX_VEC auto is_rare(Vector x) const { return not_greater_equal(x, logarithm.one) | greater(x, limit); }
};

template <class E, Level L, int Terms>
struct Atanh {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 1;
    static constexpr auto rare = by_precision<E>(vsatanh_cout_rare, vdatanh_cout_rare);
    static constexpr bool always_settled = true;

    Logarithm<E, L, Terms> logarithm;
    Vector magnitude = E::row_of_bits(~E::sign_bit);
    Vector half = E::row(typename E::Element(0.5));

    NAX_VEC auto eval(Vector x, Vector& y) const {
        const Vector a = bit_and(x, magnitude), one = logarithm.one;
        const Vector numerator = add(a, a), denominator = sub(one, a);
        Vector result;
        if constexpr (L == Level::High) {
            Vector w_low;
            const Vector w = divide(numerator, denominator, sub(sub(one, denominator), a), one, w_low);
            result = logarithm(w, w_low);
        } else {
            result = logarithm(div(numerator, denominator));
        }
        y = bit_choose(magnitude, mul(half, result), x);
        return bits(one) - bits(a) - 1;
    }
    NAX_VEC auto is_rare(Vector x) const { return greater_equal(bits(bit_and(x, magnitude)), bits(logarithm.one)); }
};

}  // namespace nax::vmath::NAX_ISA
