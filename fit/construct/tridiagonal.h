// Tridiagonal systems without pivoting, by elimination from both ends towards the middle row ("burn at both ends"):
// the two chains of dependent divisions run side by side, which halves the time of a long system.
//
// With m = n/2 the factorisation is A = L D U, where rows above m are eliminated downwards and rows below it upwards.
// Stored in place: the diagonal holds 1/D; above m the sub-diagonal holds the multipliers of L and the super-diagonal
// those of U, below m the other way round. Hence A' x = b is solved by the same code with the off-diagonals exchanged.
//
// For diagonally dominant rows no pivot is small and the elimination is backward stable (N. J. Higham, Accuracy and
// Stability of Numerical Algorithms, 2nd ed., SIAM 2002, section 9.5).
#pragma once

#include <cstdint>

#include "simd/element.h"

namespace nax::fit {

inline namespace NAX_ISA {
using namespace simd;

// Factors in place and, where a right-hand side is given, carries it along. Returns 0, or the row (from 1) of a zero pivot.
template <class T, bool kWithRhs>
int64_t eliminate(int64_t n, T* sub, T* diagonal, T* super, T* rhs) {
    const int64_t middle = n / 2;
    const auto down = [&](int64_t k, T pivot) {
        const T inverse = T(1) / pivot, multiplier = sub[k] * inverse;
        const T next = fma(-(sub[k] * super[k]), inverse, diagonal[k + 1]);
        diagonal[k] = inverse;
        sub[k] = multiplier;
        super[k] *= inverse;
        if constexpr (kWithRhs) rhs[k + 1] = fma(-multiplier, rhs[k], rhs[k + 1]);
        return next;
    };
    const auto up = [&](int64_t k, T pivot) {
        const T inverse = T(1) / pivot, multiplier = super[k - 1] * inverse;
        const T next = fma(-(sub[k - 1] * super[k - 1]), inverse, diagonal[k - 1]);
        diagonal[k] = inverse;
        super[k - 1] = multiplier;
        sub[k - 1] *= inverse;
        if constexpr (kWithRhs) rhs[k - 1] = fma(-multiplier, rhs[k], rhs[k - 1]);
        return next;
    };
    const int64_t below = n - 1 - middle;  // middle - 1 or middle rows
    T top = diagonal[0], bottom = diagonal[n - 1];
    for (int64_t k = 0; k + 1 < below; ++k) {
        if (top == 0) return k + 1;
        if (bottom == 0) return n - k;
        top = down(k, top);
        bottom = up(n - 1 - k, bottom);
    }
    // The last step of each chain meets in the middle row, so it runs alone.
    for (int64_t k = below > 1 ? below - 1 : 0; k < middle; ++k) {
        if (top == 0) return k + 1;
        diagonal[k + 1] = top = down(k, top);
    }
    if (below > 0) {
        if (bottom == 0) return middle + 2;
        diagonal[middle] = top = up(middle + 1, bottom);
    }
    if (top == 0) return middle + 1;
    diagonal[middle] = T(1) / top;
    return 0;
}

// The steps of the right-hand side that `eliminate` does when it has one; E is a scalar or a vector of systems.
template <class T, class E>
void forward(int64_t n, const T* sub, const T* super, E* rhs) {
    const int64_t middle = n / 2, below = n - 1 - middle;
    for (int64_t k = 0; k + 1 < below; ++k) {
        rhs[k + 1] = fma(splat<E>(-sub[k]), rhs[k], rhs[k + 1]);
        const int64_t last = n - 1 - k;
        rhs[last - 1] = fma(splat<E>(-super[last - 1]), rhs[last], rhs[last - 1]);
    }
    for (int64_t k = below > 1 ? below - 1 : 0; k < middle; ++k) rhs[k + 1] = fma(splat<E>(-sub[k]), rhs[k], rhs[k + 1]);
    if (below > 0) rhs[middle] = fma(splat<E>(-super[middle]), rhs[middle + 1], rhs[middle]);
}

// From the middle row outwards; the right-hand side becomes the solution.
template <class T, class E>
void backward(int64_t n, const T* sub, const T* inverse, const T* super, E* rhs) {
    const int64_t middle = n / 2, below = n - 1 - middle;
    E up = rhs[middle] * splat<E>(inverse[middle]), down = up;
    rhs[middle] = up;
    for (int64_t k = 1; k <= below; ++k) {
        const int64_t above = middle - k, under = middle + k;
        rhs[above] = up = fma(splat<E>(-super[above]), up, rhs[above] * splat<E>(inverse[above]));
        rhs[under] = down = fma(splat<E>(-sub[under - 1]), down, rhs[under] * splat<E>(inverse[under]));
    }
    if (middle > below) rhs[0] = fma(splat<E>(-super[0]), up, rhs[0] * splat<E>(inverse[0]));
}

template <class T, class E>
void solve_factored(int64_t n, const T* sub, const T* inverse, const T* super, E* rhs) {
    forward(n, sub, super, rhs);
    backward(n, sub, inverse, super, rhs);
}

}  // namespace NAX_ISA
}  // namespace nax::fit
