// Arithmetic on sums of two doubles, for the scalar paths: relative errors of some 2^-100.
#pragma once

#include <cmath>

#include "vmath/scalar.h"

namespace nax::vmath {

inline DoubleWord two_sum(double a, double b) {
    const double sum = a + b, part = sum - a;
    return {sum, (a - (sum - part)) + (b - part)};
}

inline DoubleWord two_product(double a, double b) {
    const double product = a * b;
    return {product, std::fma(a, b, -product)};
}

inline DoubleWord operator-(DoubleWord a) { return {-a.high, -a.low}; }

inline DoubleWord operator+(DoubleWord a, DoubleWord b) {
    const DoubleWord high = two_sum(a.high, b.high);
    const DoubleWord low = two_sum(a.low, b.low);
    const DoubleWord sum = fast_two_sum(high.high, high.low + low.high);
    return fast_two_sum(sum.high, sum.low + low.low);
}

inline DoubleWord operator-(DoubleWord a, DoubleWord b) { return a + -b; }

inline DoubleWord operator*(DoubleWord a, DoubleWord b) {
    const DoubleWord product = two_product(a.high, b.high);
    return fast_two_sum(product.high, product.low + (a.high * b.low + a.low * b.high));
}

inline DoubleWord operator/(DoubleWord a, DoubleWord b) {
    const double q = a.high / b.high;
    const DoubleWord rest = a - b * DoubleWord{q, 0.0};
    return fast_two_sum(q, rest.high / b.high);
}

// a >= 0
inline DoubleWord sqrt(DoubleWord a) {
    const double root = std::sqrt(a.high);
    if (root == 0.0) return {root, 0.0};
    const DoubleWord rest = a - two_product(root, root);
    return fast_two_sum(root, rest.high / (2.0 * root));
}

}  // namespace nax::vmath
