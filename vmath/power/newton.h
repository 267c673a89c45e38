// Roots and reciprocals from the processor's 14-bit estimates, refined by Newton steps: what LA and EP are made of.
// Where there are no estimates the processor's own root and quotient stand in; they are as accurate at least.
#pragma once

#include "vmath/frame/memory.h"

namespace nax::vmath::NAX_ISA {

inline constexpr bool kHasEstimates = sizeof(Double::Vector) == 64;

// sqrt(x) for positive finite x, also denormal. An estimate of relative error e leaves 3/2 e^2 after a step: 2^-27.
template <class E, int Steps>
struct Root {
    using Vector = typename E::Vector;
    Vector half = E::row(typename E::Element(0.5));

    NAX_VEC Vector operator()(Vector x) const {
        if constexpr (!kHasEstimates) {
            return sqrt(x);
        } else {
            // s near sqrt(x), h near 1/(2 sqrt(x))
            const Vector estimate = reciprocal_sqrt14(x);
            Vector s = mul(x, estimate);
            if constexpr (Steps == 0) return s;
            Vector h = mul(half, estimate);
            for (int step = 1;; ++step) {
                const Vector error = fnma(s, h, half);
                s = fma(s, error, s);
                if (step == Steps) return s;
                h = fma(h, error, h);
            }
        }
    }
};

// 1/x for normal x with a normal reciprocal. A step squares the estimate's error.
template <class E, int Steps>
struct Reciprocal {
    using Vector = typename E::Vector;
    Vector one = E::row(1);

    NAX_VEC Vector operator()(Vector x) const {
        if constexpr (!kHasEstimates) {
            return div(one, x);
        } else {
            Vector y = reciprocal14(x);
            for (int step = 0; step < Steps; ++step) y = fma(y, fnma(x, y, one), y);
            return y;
        }
    }
};

// Magnitudes from `smallest` up to `largest`.
template <class E>
struct MagnitudeRange {
    using Vector = typename E::Vector;
    using Integer = typename E::Integer;
    using Element = typename E::Element;
    typename E::Bits smallest, largest;

    constexpr MagnitudeRange(Element low, Element high)
        : smallest(E::bits_row(std::bit_cast<Integer>(low))), largest(E::bits_row(std::bit_cast<Integer>(high))) {}

    // Negative in lanes outside.
    NAX_VEC typename E::Bits excess(Vector x) const {
        const auto magnitude = bits(x) & E::bits_row(~E::sign_bit);
        return (magnitude - smallest) | (largest - magnitude);
    }
    NAX_VEC typename E::Mask outside(Vector x) const { return sign_mask(from_bits(excess(x))); }
};

// 2^n of the precision.
template <class E>
constexpr typename E::Element two_to(int n) {
    return std::bit_cast<typename E::Element>(typename E::Integer(n + E::exponent_bias) << E::mantissa_bits);
}

// Negative numbers, of which no root is real; -0 is none of them.
template <class Vector>
NAX_VEC auto negative(Vector x) {
    return is_class<kNegativeFinite | kMinusInf>(x);
}

}  // namespace nax::vmath::NAX_ISA
