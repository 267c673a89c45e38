// Vectors of the construction loops: one native register of elements, with the few operations that the language's
// vector arithmetic lacks. The same code on scalars runs loop ends and single functions with the same bits.
//
// Included by *_simd.cpp files only: its inline functions belong to one instruction set.
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <cstring>

#include "simd/quads.h"

namespace nax::fit {

#ifdef __AVX512F__
inline constexpr int kRegisterBytes = 64;
#else
inline constexpr int kRegisterBytes = 32;
#endif

template <class T>
inline constexpr int kLanes = kRegisterBytes / static_cast<int>(sizeof(T));

template <class T>
struct VectorOf;
template <>
struct VectorOf<double> {
    typedef double type __attribute__((vector_size(kRegisterBytes)));
    typedef int64_t bits __attribute__((vector_size(kRegisterBytes)));
};
template <>
struct VectorOf<float> {
    typedef float type __attribute__((vector_size(kRegisterBytes)));
    typedef int32_t bits __attribute__((vector_size(kRegisterBytes)));
};
template <class T>
using Vector = typename VectorOf<T>::type;
using VectorD = Vector<double>;
using VectorF = Vector<float>;

template <class E, class T>
inline E load(const T* from) {
    E value;
    std::memcpy(&value, from, sizeof(E));
    return value;
}
template <class E, class T>
inline void store(T* to, E value) {
    std::memcpy(to, &value, sizeof(E));
}
// All lanes equal; for a scalar E the value itself.
template <class E, class T>
inline E splat(T value) {
    return value - E{};  // keeps the sign of a zero
}
template <>
inline double splat<double, double>(double value) {
    return value;
}
template <>
inline float splat<float, float>(float value) {
    return value;
}

using simd::Quad;  // four systems side by side

// a b + c with one rounding.
inline double fma(double a, double b, double c) { return __builtin_fma(a, b, c); }
inline float fma(float a, float b, float c) { return __builtin_fmaf(a, b, c); }
inline Quad<float> fma(Quad<float> a, Quad<float> b, Quad<float> c) {
    return (Quad<float>)_mm_fmadd_ps((__m128)a, (__m128)b, (__m128)c);
}
#ifdef __AVX512F__
inline Quad<double> fma(Quad<double> a, Quad<double> b, Quad<double> c) {
    return (Quad<double>)_mm256_fmadd_pd((__m256d)a, (__m256d)b, (__m256d)c);
}
inline VectorD fma(VectorD a, VectorD b, VectorD c) { return (VectorD)_mm512_fmadd_pd((__m512d)a, (__m512d)b, (__m512d)c); }
inline VectorF fma(VectorF a, VectorF b, VectorF c) { return (VectorF)_mm512_fmadd_ps((__m512)a, (__m512)b, (__m512)c); }
#else
inline VectorD fma(VectorD a, VectorD b, VectorD c) { return (VectorD)_mm256_fmadd_pd((__m256d)a, (__m256d)b, (__m256d)c); }
inline VectorF fma(VectorF a, VectorF b, VectorF c) { return (VectorF)_mm256_fmadd_ps((__m256)a, (__m256)b, (__m256)c); }
#endif

inline double abs(double a) { return __builtin_fabs(a); }
inline float abs(float a) { return __builtin_fabsf(a); }
inline VectorD abs(VectorD a) { return (VectorD)((VectorOf<double>::bits)a & INT64_MAX); }
inline VectorF abs(VectorF a) { return (VectorF)((VectorOf<float>::bits)a & INT32_MAX); }

// Magnitude of the first, sign of the second.
inline double copysign(double a, double sign) { return __builtin_copysign(a, sign); }
inline float copysign(float a, float sign) { return __builtin_copysignf(a, sign); }
inline VectorD copysign(VectorD a, VectorD sign) {
    using Bits = VectorOf<double>::bits;
    return (VectorD)(((Bits)a & INT64_MAX) | ((Bits)sign & INT64_MIN));
}
inline VectorF copysign(VectorF a, VectorF sign) {
    using Bits = VectorOf<float>::bits;
    return (VectorF)(((Bits)a & INT32_MAX) | ((Bits)sign & INT32_MIN));
}

// to[2k], to[2k+1] = a[k], b[k]: the coefficients of neighbouring linear cells.
inline void store_interleaved(double* to, VectorD a, VectorD b) {
#ifdef __AVX512F__
    store(to, __builtin_shufflevector(a, b, 0, 8, 1, 9, 2, 10, 3, 11));
    store(to + 8, __builtin_shufflevector(a, b, 4, 12, 5, 13, 6, 14, 7, 15));
#else
    const VectorD even = __builtin_shufflevector(a, b, 0, 4, 2, 6), odd = __builtin_shufflevector(a, b, 1, 5, 3, 7);
    store(to, __builtin_shufflevector(even, odd, 0, 1, 4, 5));
    store(to + 4, __builtin_shufflevector(even, odd, 2, 3, 6, 7));
#endif
}
inline void store_interleaved(float* to, VectorF a, VectorF b) {
#ifdef __AVX512F__
    store(to, __builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
    store(to + 16, __builtin_shufflevector(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31));
#else
    const VectorF low = __builtin_shufflevector(a, b, 0, 8, 1, 9, 4, 12, 5, 13);
    const VectorF high = __builtin_shufflevector(a, b, 2, 10, 3, 11, 6, 14, 7, 15);
    store(to, __builtin_shufflevector(low, high, 0, 1, 2, 3, 8, 9, 10, 11));
    store(to + 8, __builtin_shufflevector(low, high, 4, 5, 6, 7, 12, 13, 14, 15));
#endif
}

// to[4k .. 4k+3] = a[k], b[k], c[k], d[k]: the coefficients of neighbouring cubic cells.
inline void store_interleaved(double* to, VectorD a, VectorD b, VectorD c, VectorD d) {
#ifdef __AVX512F__
    const VectorD ab0 = __builtin_shufflevector(a, b, 0, 8, 1, 9, 2, 10, 3, 11);
    const VectorD ab1 = __builtin_shufflevector(a, b, 4, 12, 5, 13, 6, 14, 7, 15);
    const VectorD cd0 = __builtin_shufflevector(c, d, 0, 8, 1, 9, 2, 10, 3, 11);
    const VectorD cd1 = __builtin_shufflevector(c, d, 4, 12, 5, 13, 6, 14, 7, 15);
    store(to, __builtin_shufflevector(ab0, cd0, 0, 1, 8, 9, 2, 3, 10, 11));
    store(to + 8, __builtin_shufflevector(ab0, cd0, 4, 5, 12, 13, 6, 7, 14, 15));
    store(to + 16, __builtin_shufflevector(ab1, cd1, 0, 1, 8, 9, 2, 3, 10, 11));
    store(to + 24, __builtin_shufflevector(ab1, cd1, 4, 5, 12, 13, 6, 7, 14, 15));
#else
    const VectorD ab0 = __builtin_shufflevector(a, b, 0, 4, 2, 6), ab1 = __builtin_shufflevector(a, b, 1, 5, 3, 7);
    const VectorD cd0 = __builtin_shufflevector(c, d, 0, 4, 2, 6), cd1 = __builtin_shufflevector(c, d, 1, 5, 3, 7);
    store(to, __builtin_shufflevector(ab0, cd0, 0, 1, 4, 5));
    store(to + 4, __builtin_shufflevector(ab1, cd1, 0, 1, 4, 5));
    store(to + 8, __builtin_shufflevector(ab0, cd0, 2, 3, 6, 7));
    store(to + 12, __builtin_shufflevector(ab1, cd1, 2, 3, 6, 7));
#endif
}
inline void store_interleaved(float* to, VectorF a, VectorF b, VectorF c, VectorF d) {
#ifdef __AVX512F__
    const VectorF ab0 = __builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    const VectorF ab1 = __builtin_shufflevector(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    const VectorF cd0 = __builtin_shufflevector(c, d, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    const VectorF cd1 = __builtin_shufflevector(c, d, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    store(to, __builtin_shufflevector(ab0, cd0, 0, 1, 16, 17, 2, 3, 18, 19, 4, 5, 20, 21, 6, 7, 22, 23));
    store(to + 16, __builtin_shufflevector(ab0, cd0, 8, 9, 24, 25, 10, 11, 26, 27, 12, 13, 28, 29, 14, 15, 30, 31));
    store(to + 32, __builtin_shufflevector(ab1, cd1, 0, 1, 16, 17, 2, 3, 18, 19, 4, 5, 20, 21, 6, 7, 22, 23));
    store(to + 48, __builtin_shufflevector(ab1, cd1, 8, 9, 24, 25, 10, 11, 26, 27, 12, 13, 28, 29, 14, 15, 30, 31));
#else
    const VectorF ab0 = __builtin_shufflevector(a, b, 0, 8, 1, 9, 4, 12, 5, 13);
    const VectorF ab1 = __builtin_shufflevector(a, b, 2, 10, 3, 11, 6, 14, 7, 15);
    const VectorF cd0 = __builtin_shufflevector(c, d, 0, 8, 1, 9, 4, 12, 5, 13);
    const VectorF cd1 = __builtin_shufflevector(c, d, 2, 10, 3, 11, 6, 14, 7, 15);
    const VectorF cells04 = __builtin_shufflevector(ab0, cd0, 0, 1, 8, 9, 4, 5, 12, 13);
    const VectorF cells15 = __builtin_shufflevector(ab0, cd0, 2, 3, 10, 11, 6, 7, 14, 15);
    const VectorF cells26 = __builtin_shufflevector(ab1, cd1, 0, 1, 8, 9, 4, 5, 12, 13);
    const VectorF cells37 = __builtin_shufflevector(ab1, cd1, 2, 3, 10, 11, 6, 7, 14, 15);
    store(to, __builtin_shufflevector(cells04, cells15, 0, 1, 2, 3, 8, 9, 10, 11));
    store(to + 8, __builtin_shufflevector(cells26, cells37, 0, 1, 2, 3, 8, 9, 10, 11));
    store(to + 16, __builtin_shufflevector(cells04, cells15, 4, 5, 6, 7, 12, 13, 14, 15));
    store(to + 24, __builtin_shufflevector(cells26, cells37, 4, 5, 6, 7, 12, 13, 14, 15));
#endif
}
// The same for one cell.
template <class T>
inline void store_interleaved(T* to, T a, T b) {
    to[0] = a;
    to[1] = b;
}
template <class T>
inline void store_interleaved(T* to, T a, T b, T c, T d) {
    to[0] = a;
    to[1] = b;
    to[2] = c;
    to[3] = d;
}

}  // namespace nax::fit
