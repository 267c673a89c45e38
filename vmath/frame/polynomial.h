// Polynomials of a kernel: a block of coefficient rows, summed by pairs.
#pragma once

#include <utility>

#include "vmath/frame/memory.h"

namespace nax::vmath::NAX_ISA {

template <class E, int N>
struct Coefficients {
    using Vector = typename E::Vector;
    using Element = typename E::Element;
    Vector c[N];

    constexpr Coefficients(const Element (&values)[N]) : Coefficients(values, std::make_integer_sequence<int, N>{}) {}

    // c0 + c1 x + c2 x^2 + ...: pairs c + c' x first, then a chain in x^2. As many operations as Horner's rule, half
    // the depth.
    NAX_VEC Vector operator()(Vector x, Vector x2) const { return sum(x, x2); }

    // The same as one chain, Horner's rule: no square is needed, for kernels with work enough beside it.
    NAX_VEC Vector chain(Vector x) const {
        Vector sum = c[N - 1];
#pragma GCC unroll 16
        for (int k = N - 2; k >= 0; --k) sum = fma(sum, x, c[k]);
        return sum;
    }

private:
    template <int... I>
    constexpr Coefficients(const Element (&values)[N], std::integer_sequence<int, I...>) : c{E::row(values[I])...} {}

    // c[First] + c[First + 1] x + ...
    template <int First = 0>
    NAX_VEC Vector sum(Vector x, Vector x2) const {
        if constexpr (First + 2 < N)
            return fma(sum<First + 2>(x, x2), x2, fma(c[First + 1], x, c[First]));
        else if constexpr (First + 1 < N)
            return fma(c[First + 1], x, c[First]);
        else
            return c[First];
    }
};

}  // namespace nax::vmath::NAX_ISA
