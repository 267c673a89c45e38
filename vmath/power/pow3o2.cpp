// Pow3o2:  x^(3/2) = x sqrt(x).
//
// HA adds what the root lacks, d = x - s^2, and the product's rounding error: x sqrt(x) = x s + s d/2, since x/s is s.
// Results near the ends of the range, whose errors would be denormal, are computed 2^(3k) times as large or small. An
// overflow is an infinity without report.
#include "vmath/frame/kernel_exports.h"
#include "vmath/power/newton.h"
#include "vmath/power/power_rare.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct High {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 4;
    static constexpr auto rare = by_precision<E>(vspow3o2_cout_rare, vdpow3o2_cout_rare);

    Vector half = E::row(typename E::Element(0.5));
    // The product's error is normal, and no infinity stands beside it.
    Range<E> ordinary = {two_to<E>(by_precision<E>(-66, -600)), two_to<E>(by_precision<E>(84, 682))};

    NAX_VEC Vector product(Vector x, Vector& high) const {
        const Vector s = sqrt(x), d = fnma(s, s, x);
        high = mul(x, s);
        return add(high, fma(mul(half, s), d, fms(x, s, high)));
    }
    NAX_VEC auto eval(Vector x, Vector& y) const {
        Vector high;
        y = product(x, high);
        return ordinary.outside(x);
    }
    NAX_VEC auto eval_wide(Vector x, Vector& y) const {
        // x 2^(2k), of which the power is 2^(3k) times as large, or the other way
        constexpr int k = by_precision<E>(32, 200);
        const auto small = less(x, half) & ordinary.outside(x), large = ~less(x, half) & ordinary.outside(x);
        Vector high;
        y = mul_where(small, x, E::row(two_to<E>(2 * k)));
        y = product(mul_where(large, y, E::row(two_to<E>(-2 * k))), high);
        // zeros, infinities, NaN; beside an infinite product its error is NaN
        y = choose(is_class<kZero | kInf | kNan>(high), high, y);
        y = mul_where(small, y, E::row(two_to<E>(-3 * k)));
        y = mul_where(large, y, E::row(two_to<E>(3 * k)));
        return negative(x);
    }
};

template <class E, int Steps>
struct Low {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 4;
    static constexpr auto rare = by_precision<E>(vspow3o2_cout_rare, vdpow3o2_cout_rare);

    Root<E, Steps> root = {};

    NAX_VEC Vector eval(Vector x, Vector& y) const {
        const Vector s = root(x);
        y = mul(x, s);
        return s;
    }
    NAX_VEC auto eval_wide(Vector x, Vector& y) const {
        y = mul(x, choose(is_class<kZero | kPlusInf | kNan>(x), sqrt(x), root(x)));
        return negative(x);
    }
};

alignas(64) constexpr High<Double> double_ha = {};
alignas(64) constexpr Low<Double, 2> double_la = {};
alignas(64) constexpr Low<Double, 1> double_ep = {};
alignas(64) constexpr High<Single> single_ha = {};
alignas(64) constexpr Low<Single, 1> single_la = {};
alignas(64) constexpr Low<Single, 0> single_ep = {};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Pow3o2, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, Pow3o2, Z0LA, double_la)
NAX_UNARY_KERNEL(d, Pow3o2, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, Pow3o2, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, Pow3o2, Z0LA, single_la)
NAX_UNARY_KERNEL(s, Pow3o2, Z0EP, single_ep)
