// What the logarithms share: x = 2^e m, a short reciprocal c of m, and the remainder r = m c - 1.
#pragma once

#include <type_traits>

#include "vmath/frame/memory.h"

namespace nax::vmath::NAX_ISA {

template <class E>
struct Reduced {
    typename E::Vector m, c, r;
    typename E::Vector exponent;  // that of x, or 1 more
    typename E::Bits index;
};

// c has `IndexBits` + 1 fraction bits, so |r| <= 2^-(IndexBits + 1) and m c - 1 is exact. The top mantissa bits of c
// index the table; a permute ignores those above them. Where c < 3/4 the exponent is raised by 1 and the table holds
// log(1/(2c)): arguments just below 1 then have exponent 0 and nothing cancels.
template <class E, int IndexBits>
struct Reduction {
    using Vector = typename E::Vector;
    Vector three_quarters = E::row(typename E::Element(0.75));
    Vector one = E::row(1);

    NAX_VEC Reduced<E> operator()(Vector x, auto care) const {
        // A denormal needs no care; a negative argument becomes NaN.
        const Vector m = get_mantissa(x, care);
        const Vector e = get_exponent(x, care);
        const Vector c = round_to_fraction<IndexBits + 1>(reciprocal14(m));
        // Integers compare like the positive numbers they stand for, on more of the processor's pipes.
        const auto raise = less(bits(c), bits(three_quarters));
        return {m, c, fms(m, c, one), add_where(raise, e, one), shift_right<E::mantissa_bits - IndexBits>(bits(c))};
    }
};

// Whether the forms that `Care` asks for are right for positive normal numbers only.
template <class Care>
inline constexpr bool kOrdinaryOnly = !kFastIsCareful && std::is_same_v<Care, Fast>;

// Negative in lanes that don't hold a positive normal number.
template <class E>
NAX_VEC auto not_ordinary(typename E::Vector x) {
    const auto smallest = E::bits_row(typename E::Integer{1} << E::mantissa_bits);
    const auto largest = E::bits_row(E::exponent_field - 1);
    return (bits(x) - smallest) | (largest - bits(x));
}

// Arguments without a logarithm among the numbers, and NaN. Denormals are ordinary, unless taken as zero.
template <class Vector>
NAX_VEC auto outside_domain(Vector x) {
    return is_class<kNan | kZero | kInf | kNegativeFinite>(x);
}

}  // namespace nax::vmath::NAX_ISA
