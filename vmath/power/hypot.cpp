// Hypot:  sqrt(a^2 + b^2).
//
// HA orders the arguments by size, h >= l, and carries the errors of h^2 and of the sum to the last step of the root:
// s + low = h^2 + l^2 to twice the format's bits. Sums whose errors could underflow, or that overflow, are computed
// anew from arguments scaled by a power of two. An infinity beats NaN.
#include "vmath/frame/kernel_exports.h"
#include "vmath/power/newton.h"

namespace nax::vmath::NAX_ISA {
namespace {

// Sums of squares for which the steps below hold.
template <class E>
constexpr Range<E> kOrdinarySums = {two_to<E>(by_precision<E>(-90, -900)), two_to<E>(E::exponent_bias - 1)};

template <class Op, class Vector>
NAX_VEC Vector settle(const Op& op, Vector a, Vector b);

template <class E>
struct High {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 2;
    static constexpr auto rare = nullptr;

    Vector sign = E::row_of_bits(E::sign_bit);
    Vector half = E::row(typename E::Element(0.5));
    Range<E> ordinary_sums = kOrdinarySums<E>;

    NAX_VEC Vector ordinary(Vector a, Vector b, Vector& s) const {
        a = and_not(sign, a);
        b = and_not(sign, b);
        // NaN in one of them is in one of these, too
        const Vector h = max(a, b), l = min(b, a);
        const Vector square = mul(h, h);
        s = fma(l, l, square);
        const Vector low = add(fma(l, l, sub(square, s)), fms(h, h, square));
        if constexpr (kHasEstimates) {
            const Vector estimate = reciprocal_sqrt14(s);
            Vector root = mul(s, estimate), inverse = mul(half, estimate);
            const Vector error = fnma(root, inverse, half);
            root = fma(root, error, root);
            inverse = fma(inverse, error, inverse);
            return fma(inverse, add(fnma(root, root, s), low), root);
        } else {
            const Vector root = sqrt(s);
            return add(root, div(add(fnma(root, root, s), low), add(root, root)));
        }
    }
    NAX_VEC auto eval(Vector a, Vector b, Vector& y) const {
        Vector s;
        y = ordinary(a, b, s);
        return ordinary_sums.outside(s);
    }
    NAX_VEC auto eval_wide(Vector a, Vector b, Vector& y) const {
        y = settle(*this, a, b);
        return typename E::Mask{};
    }
};

// All lanes of an operation; those outside by a scaling and the steps of HA, which never turn the largest number into
// an infinity.
template <class Op, class Vector>
NAX_VEC Vector settle(const Op& op, Vector a, Vector b) {
    using E = typename Op::Precision;
    constexpr int shift = by_precision<E>(100, 700);
    const Vector zero = E::row(0), inf = E::row_of_bits(E::exponent_field), sign = E::row_of_bits(E::sign_bit);
    Vector s;
    const Vector y = op.ordinary(a, b, s);
    const auto small = less(s, E::row(two_to<E>(by_precision<E>(-90, -900))));
    const Vector up = choose(small, E::row(two_to<E>(shift)), E::row(two_to<E>(-shift)));
    const Vector down = choose(small, E::row(two_to<E>(-shift)), E::row(two_to<E>(shift)));
    Vector scaled_s;
    Vector scaled = mul(High<E>{}.ordinary(mul(a, up), mul(b, up), scaled_s), down);
    scaled = choose(equal(scaled_s, zero), zero, scaled);
    scaled = choose(equal(and_not(sign, a), inf) | equal(and_not(sign, b), inf), inf, scaled);
    return choose(kOrdinarySums<E>.outside(s), scaled, y);
}

template <class E, int Steps>
struct Low {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 4;
    static constexpr auto rare = nullptr;

    Root<E, Steps> root = {};
    Range<E> ordinary_sums = kOrdinarySums<E>;

    NAX_VEC Vector ordinary(Vector a, Vector b, Vector& s) const {
        s = fma(a, a, mul(b, b));
        return root(s);
    }
    NAX_VEC auto eval(Vector a, Vector b, Vector& y) const {
        Vector s;
        y = ordinary(a, b, s);
        return ordinary_sums.outside(s);
    }
    NAX_VEC auto eval_wide(Vector a, Vector b, Vector& y) const {
        y = settle(*this, a, b);
        return typename E::Mask{};
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
NAX_BINARY_KERNEL(d, Hypot, Z0HA, double_ha)
NAX_BINARY_KERNEL(d, Hypot, Z0LA, double_la)
NAX_BINARY_KERNEL(d, Hypot, Z0EP, double_ep)
NAX_BINARY_KERNEL(s, Hypot, Z0HA, single_ha)
NAX_BINARY_KERNEL(s, Hypot, Z0LA, single_la)
NAX_BINARY_KERNEL(s, Hypot, Z0EP, single_ep)
