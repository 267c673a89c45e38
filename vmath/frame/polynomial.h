// Polynomials of a kernel: a block of coefficient rows, summed by pairs.
#pragma once

#include <utility>

#include "vmath/frame/vec.h"

namespace nax::vmath::avx512 {

template <class E, int N>
struct Coefficients {
    using Vector = typename E::Vector;
    using Element = typename E::Element;
    Vector c[N];

    constexpr Coefficients(const Element (&values)[N]) : Coefficients(values, std::make_integer_sequence<int, N>{}) {}

    // c0 + c1 x + c2 x^2 + ...: pairs c + c' x first, then a chain in x^2. As many operations as Horner's rule, half
    // the depth.
    NAX_VEC Vector operator()(Vector x, Vector x2) const {
        constexpr int last = (N - 1) / 2 * 2;
        Vector sum = pair<last>(x);
        for_pairs<last>(sum, x, x2);
        return sum;
    }

private:
    template <int... I>
    constexpr Coefficients(const Element (&values)[N], std::integer_sequence<int, I...>) : c{E::row(values[I])...} {}

    template <int First>
    NAX_VEC Vector pair(Vector x) const {
        if constexpr (First + 1 < N)
            return fma(c[First + 1], x, c[First]);
        else
            return c[First];
    }
    template <int Above>
    NAX_VEC void for_pairs(Vector& sum, Vector x, Vector x2) const {
        if constexpr (Above >= 2) {
            sum = fma(sum, x2, pair<Above - 2>(x));
            for_pairs<Above - 2>(sum, x, x2);
        }
    }
};

}  // namespace nax::vmath::avx512
