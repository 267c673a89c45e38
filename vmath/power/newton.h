// Roots and reciprocals from the processor's 14-bit estimates, refined by Newton steps: what LA and EP are made of.
// Where there are no estimates the processor's own root and quotient stand in; they are as accurate at least.
#pragma once

#include <limits>

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

// Numbers, or their magnitudes, from `low` up to `high`. One signed comparison of integers tells all others, Inf and
// NaN: those below wrap around.
template <class E>
struct Range {
    using Vector = typename E::Vector;
    using Integer = typename E::Integer;
    using Element = typename E::Element;
    typename E::Bits offset, last;

    constexpr Range(Element low, Element high)
        : offset(E::bits_row(Integer(std::bit_cast<Integer>(low) ^ E::sign_bit))),
          last(E::bits_row(Integer((std::bit_cast<Integer>(high) - std::bit_cast<Integer>(low)) ^ E::sign_bit))) {}

    NAX_VEC typename E::Mask outside(Vector x) const { return greater(bits(x) - offset, last); }
    NAX_VEC typename E::Mask magnitude_outside(Vector x) const {
        return greater((bits(x) & E::bits_row(~E::sign_bit)) - offset, last);
    }
};

// The positive normal numbers.
template <class E>
constexpr Range<E> kPositiveNormal = {std::numeric_limits<typename E::Element>::min(),
                                      std::numeric_limits<typename E::Element>::max()};

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
