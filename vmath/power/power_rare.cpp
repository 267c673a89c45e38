// Scalar paths of roots and quotients.
#include "vmath/power/power_rare.h"

#include <cmath>

#include "vmath/scalar.h"

namespace nax::vmath {
namespace {

// 0/0: NaN with the invalid flag.
template <class T>
int32_t outside_domain(T* y) {
    *y = hide(T{0}) / T{0};
    return kDomain;
}

// 1/x of a zero, which may be a denormal taken for one.
template <class T>
int32_t pole(T x, T* y) {
    *y = 1 / hide(x);
    return kPole;
}

template <class T>
int32_t square_root(T x, T* y) {
    if (x < 0) return outside_domain(y);
    *y = std::sqrt(x);
    return kSuccess;
}

// x s and what it lacks: the root's error d, times s/2, and the product's own.
template <class T>
int32_t three_halves(T x, T* y) {
    if (x < 0) return outside_domain(y);
    const T s = std::sqrt(x), product = x * s;
    *y = product;
    if (std::isfinite(product)) *y += std::fma(T(0.5) * s, std::fma(-s, s, x), std::fma(x, s, -product));
    return kSuccess;
}

// Signed infinities for zeros. Elsewhere y0 = 1/sqrt(x) and its correction y0 (1 - x y0^2)/2.
template <class T>
int32_t inverse_square_root(T x, T* y) {
    if (x < 0) return outside_domain(y);
    if (x == 0) return pole(x, y);
    const T y0 = 1 / std::sqrt(x);
    *y = y0;
    if (!std::isfinite(x)) return kSuccess;
    const T product = x * y0, rest = std::fma(x, y0, -product);
    const T error = std::fma(-rest, y0, std::fma(-product, y0, T(1)));
    *y = std::fma(T(0.5) * y0, error, y0);
    return kSuccess;
}

// Signed infinities for zeros. Elsewhere y0 = 1/cbrt(x) and its correction y0 (1 - x y0^3)/3.
template <class T>
int32_t inverse_cube_root(T x, T* y) {
    if (x == 0) return pole(x, y);
    const T y0 = 1 / std::cbrt(x);
    *y = y0;
    if (!std::isfinite(x)) return kSuccess;
    const T product = x * y0, product_rest = std::fma(x, y0, -product);
    const T square = y0 * y0, square_rest = std::fma(y0, y0, -square);
    const T error = std::fma(-product, square, T(1)) - (product_rest * square + product * square_rest);
    *y = std::fma(y0 / 3, error, y0);
    return kSuccess;
}

template <class T>
int32_t quotient(T a, T b, T* y) {
    *y = hide(a) / b;
    return b == 0 ? kPole : kSuccess;
}

}  // namespace

int32_t vdsqrt_cout_rare(const double* x, double* y) { return square_root(*x, y); }
int32_t vssqrt_cout_rare(const float* x, float* y) { return square_root(*x, y); }
int32_t vdpow3o2_cout_rare(const double* x, double* y) { return three_halves(*x, y); }
int32_t vspow3o2_cout_rare(const float* x, float* y) { return three_halves(*x, y); }
int32_t vdinvsqrt_cout_rare(const double* x, double* y) { return inverse_square_root(*x, y); }
int32_t vsinvsqrt_cout_rare(const float* x, float* y) { return inverse_square_root(*x, y); }
int32_t vdinvcbrt_cout_rare(const double* x, double* y) { return inverse_cube_root(*x, y); }
int32_t vsinvcbrt_cout_rare(const float* x, float* y) { return inverse_cube_root(*x, y); }
int32_t vdinv_cout_rare(const double* x, double* y) { return quotient(1.0, *x, y); }
int32_t vsinv_cout_rare(const float* x, float* y) { return quotient(1.0f, *x, y); }
int32_t vddiv_cout_rare(const double* a, const double* b, double* y) { return quotient(*a, *b, y); }
int32_t vsdiv_cout_rare(const float* a, const float* b, float* y) { return quotient(*a, *b, y); }

}  // namespace nax::vmath
