// The kernels of Cbrt, InvCbrt and Pow2o3, x^a with a = 1/3, -1/3 and 2/3, once for function, precision and level.
//
//     x = 2^(3q + k) m,  k = -1, 0 or 1,  c near 1/m,  r = m c - 1:      x^a = 2^(3a q) 2^(a k) c^-a (1 + r)^a
//
// c^-a stands in an accurate table, as a number so short that its product with the leading bits of 2^(a k) is exact. HA
// adds the rest of 2^(a k); the other levels take one rounded factor and a shorter series. No lane is rare but the
// zeros of InvCbrt: others that the integer steps below don't suit are settled by eval_wide.
#pragma once

#include "vmath/frame/kernel_exports.h"
#include "vmath/frame/polynomial.h"
#include "vmath/power/newton.h"
#include "vmath/power/power_coefficients.inc"
#include "vmath/power/power_rare.h"
#include "vmath/power/power_tables.inc"

namespace nax::vmath::NAX_ISA {

enum class Third { Root, InverseRoot, RootSquared };

// Factors 2^(a k): high and low part, or one rounded number.
template <class E, bool InTwoParts>
using Factors = std::conditional_t<InTwoParts, PairTable<E, 8>, Table<E, 8>>;

// The scalar path, if any lane is rare.
template <class E, Third F>
inline constexpr auto kThirdRare = nullptr;
template <>
inline constexpr auto kThirdRare<Double, Third::InverseRoot> = vdinvcbrt_cout_rare;
template <>
inline constexpr auto kThirdRare<Single, Third::InverseRoot> = vsinvcbrt_cout_rare;

template <class E, Third F, bool High, int Terms>
struct ThirdPower {
    using Precision = E;
    using Vector = typename E::Vector;
    using Element = typename E::Element;
    using Integer = typename E::Integer;
    static constexpr int unroll = 4;
    static constexpr auto rare = kThirdRare<E, F>;

    PairTable<E, 16> entries;  // c, c^-a
    Factors<E, High> factors;
    Coefficients<E, Terms> series;
    Vector third = E::row(Element(1) / 3);
    Vector shifter = E::row(Element(3 * (Integer{1} << (E::mantissa_bits - 1))));  // leaves integers
    Vector three = E::row(3), one = E::row(1);
    typename E::Bits magnitude = E::bits_row(~E::sign_bit);
    Range<E> normal = kPositiveNormal<E>;

    // x^a of positive normal numbers, and the exponent of x.
    NAX_VEC Vector positive(Vector x, Vector& e) const {
        e = get_exponent(x, Fast{});
        const Vector m = get_mantissa(x, Fast{});
        // q = e/3 rounded to nearest, k = e - 3q
        const Vector z = fma(e, third, shifter);
        const Vector k = add(fnma(sub(z, shifter), three, e), shifter);
        Vector c, value;
        entries.look_up(shift_right<E::mantissa_bits - 4>(bits(m)), c, value);
        const Vector r = fms(m, c, one);
        Vector y;
        if constexpr (High) {
            Vector factor, rest;
            factors.look_up(bits(k), factor, rest);
            const Vector product = mul(value, factor);
            // (1 + rest)(1 + r P) - 1
            const Vector t = mul(r, series(r, mul(r, r)));
            y = fma(product, fma(t, rest, add(t, rest)), product);
        } else {
            const Vector product = mul(value, factors[bits(k)]);
            y = fma(mul(product, r), sum(r), product);
        }
        // times 2^(3a q)
        if constexpr (F == Third::Root) return from_bits(bits(y) + shift_left<E::mantissa_bits>(bits(z)));
        if constexpr (F == Third::InverseRoot) return from_bits(bits(y) - shift_left<E::mantissa_bits>(bits(z)));
        if constexpr (F == Third::RootSquared) return from_bits(bits(y) + shift_left<E::mantissa_bits + 1>(bits(z)));
    }
    NAX_VEC Vector sum(Vector r) const {
        if constexpr (Terms > 3) return series(r, mul(r, r));
        Vector p = series.c[Terms - 1];
        for (int i = Terms - 2; i >= 0; --i) p = fma(p, r, series.c[i]);
        return p;
    }
    NAX_VEC Vector size_of(Vector x) const { return from_bits(bits(x) & magnitude); }
    NAX_VEC Vector with_sign(Vector x, Vector y) const {
        if constexpr (F == Third::RootSquared)
            return y;
        else
            return bit_choose(from_bits(magnitude), y, x);
    }

    // The verdict is the exponent where that is infinite for zeros and infinities, NaN for NaN, and right for
    // denormals.
    NAX_VEC auto eval(Vector x, Vector& y) const {
        const Vector size = size_of(x);
        Vector e;
        y = with_sign(x, positive(size, e));
        if constexpr (kFastIsCareful)
            return e;
        else
            return normal.outside(size);
    }
    NAX_VEC auto eval_wide(Vector x, Vector& y) const {
        // A denormal is scaled by a power of two that leaves k alone.
        constexpr int up = (E::mantissa_bits + 3) / 3 * 3;
        constexpr int down = F == Third::Root ? -up / 3 : F == Third::InverseRoot ? up / 3 : -2 * up / 3;
        const auto small = is_class<kDenormal>(x);
        Vector e;
        const Vector scaled = mul_where(small, x, E::row(two_to<E>(up)));
        const Vector ordinary = mul_where(small, with_sign(x, positive(size_of(scaled), e)), E::row(two_to<E>(down)));
        // Zeros, infinities and NaN.
        Vector limit;
        if constexpr (F == Third::Root) limit = add(x, x);
        if constexpr (F == Third::InverseRoot) limit = div(one, x);
        if constexpr (F == Third::RootSquared) limit = mul(x, x);
        y = choose(is_class<kZero | kInf | kNan>(x), limit, ordinary);
        if constexpr (F == Third::InverseRoot)
            return is_class<kZero>(x);
        else
            return typename E::Mask{};
    }
};

}  // namespace nax::vmath::NAX_ISA
