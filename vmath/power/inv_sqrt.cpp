// InvSqrt:  1/sqrt(x) = y0 (1 - e)^(-1/2) = y0 + y0 e (1/2 + 3/8 e + 5/16 e^2),  e = 1 - x y0^2,  y0 the estimate.
//
// In HA y0 is cut to half the bits of the format, so that its square is exact and e has one rounding only. The other
// levels leave the cut away, and terms of the series with it.
#include "vmath/frame/kernel_exports.h"
#include "vmath/frame/polynomial.h"
#include "vmath/power/newton.h"
#include "vmath/power/power_rare.h"

namespace nax::vmath::NAX_ISA {
namespace {

enum class Square { Exact, Rounded };

template <class E, Square S, int Terms>
struct InvSqrt {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 4;
    static constexpr auto rare = by_precision<E>(vsinvsqrt_cout_rare, vdinvsqrt_cout_rare);

    Vector one = E::row(1);
    Vector leading_bits =
        E::row_of_bits(typename E::Integer(~((typename E::Integer{1} << (E::mantissa_bits + 2) / 2) - 1)));
    Coefficients<E, Terms> series;
    Range<E> ordinary = {two_to<E>(1 - E::exponent_bias), two_to<E>(E::exponent_bias - 3)};

    NAX_VEC Vector root(Vector x) const {
        Vector y0 = reciprocal_sqrt14(x), e;
        if constexpr (S == Square::Exact) {
            y0 = bit_and(y0, leading_bits);
            e = fnma(x, mul(y0, y0), one);
        } else {
            e = fnma(mul(x, y0), y0, one);
        }
        Vector p = series.c[Terms - 1];
        for (int k = Terms - 2; k >= 0; --k) p = fma(p, e, series.c[k]);
        return fma(mul(y0, e), p, y0);
    }

    // In HA rare wherever the square of y0 overflows or is denormal, else where the result tells it.
    NAX_VEC auto eval(Vector x, Vector& y) const {
        y = root(x);
        if constexpr (S == Square::Exact)
            return ordinary.outside(x);
        else
            return y;
    }
    NAX_VEC auto eval_wide(Vector x, Vector& y) const {
        if constexpr (S == Square::Exact) {
            // Scaled by an even power of two.
            constexpr int step = (E::mantissa_bits + 2) / 2 * 2;
            const Vector up = E::row(two_to<E>(step)), half_up = E::row(two_to<E>(step / 2));
            const Vector down = E::row(two_to<E>(-step)), half_down = E::row(two_to<E>(-step / 2));
            const auto outside = ordinary.outside(x), small = less(x, one) & outside, large = ~less(x, one) & outside;
            y = root(mul_where(large, mul_where(small, x, up), down));
            y = mul_where(large, mul_where(small, y, half_up), half_down);
        } else {
            y = root(x);
        }
        y = choose(is_class<kZero | kPlusInf | kNan>(x), div(one, sqrt(x)), y);
        return negative(x) | is_class<kZero>(x);
    }
};

alignas(64) constexpr InvSqrt<Double, Square::Exact, 3> double_ha = {
    .series = {{0.5, 0.3750000040745363, 0.312500005500624}}};  // least error on |e| <= 2^-13, 2^-55.9
alignas(64) constexpr InvSqrt<Double, Square::Rounded, 3> double_la = {
    .series = {{0.5, 0.3750000040745363, 0.312500005500624}}};
alignas(64) constexpr InvSqrt<Double, Square::Rounded, 1> double_ep = {.series = {{0.5}}};
alignas(64) constexpr InvSqrt<Single, Square::Exact, 2> single_ha = {.series = {{0.5f, 0.375f}}};
alignas(64) constexpr InvSqrt<Single, Square::Rounded, 1> single_la = {.series = {{0.5f}}};

// EP of floats: the estimate alone.
struct Estimate {
    using Precision = Single;
    using Vector = Single::Vector;
    static constexpr int unroll = 4;
    static constexpr auto rare = vsinvsqrt_cout_rare;

    NAX_VEC auto eval(Vector x, Vector& y) const {
        y = reciprocal_sqrt14(x);
        // zeros become infinite, negative numbers NaN
        return y;
    }
    NAX_VEC auto is_rare(Vector x) const { return negative(x) | is_class<kZero>(x); }
};
alignas(64) constexpr Estimate single_ep = {};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, InvSqrt, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, InvSqrt, Z0LA, double_la)
NAX_UNARY_KERNEL(d, InvSqrt, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, InvSqrt, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, InvSqrt, Z0LA, single_la)
NAX_UNARY_KERNEL(s, InvSqrt, Z0EP, single_ep)
