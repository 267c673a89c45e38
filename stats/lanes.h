// Sixty-four bytes of lanes, whatever the register: one 512-bit register or a pair of 256-bit ones, with the same bits
// from both. Everything stands in a namespace of its instruction set, so that the linker never merges bodies made for
// different processors. The operations exist for plain numbers too: one kernel body serves lanes and single elements.
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <cstring>

#include "simd/isa.h"

namespace nax::stats {
inline namespace NAX_ISA {

#ifdef __AVX512F__
inline constexpr int kRegisterBytes = 64;
#else
inline constexpr int kRegisterBytes = 32;
#endif
inline constexpr int kLaneBytes = 64;
inline constexpr int kParts = kLaneBytes / kRegisterBytes;
template <class T>
inline constexpr int kLanes = kLaneBytes / static_cast<int>(sizeof(T));

template <class T>
struct RegisterOf;
template <>
struct RegisterOf<double> {
    using Type = double __attribute__((vector_size(kRegisterBytes)));
};
template <>
struct RegisterOf<float> {
    using Type = float __attribute__((vector_size(kRegisterBytes)));
};

template <class T>
struct Lanes {
    typename RegisterOf<T>::Type part[kParts];
};

// f(0), and f(1) where there are two parts.
template <class T, class F>
[[gnu::always_inline]] inline Lanes<T> each(F f) {
    if constexpr (kParts == 1)
        return {{f(0)}};
    else
        return {{f(0), f(1)}};
}

template <class V>
struct ElementOf {
    using Type = V;
};
template <class T>
struct ElementOf<Lanes<T>> {
    using Type = T;
};
template <class V>
using Element = typename ElementOf<V>::Type;

#ifdef __AVX512F__
[[gnu::always_inline]] inline __m512d fused(__m512d a, __m512d b, __m512d c) { return _mm512_fmadd_pd(a, b, c); }
[[gnu::always_inline]] inline __m512 fused(__m512 a, __m512 b, __m512 c) { return _mm512_fmadd_ps(a, b, c); }
[[gnu::always_inline]] inline __m512d negated(__m512d a, __m512d b, __m512d c) { return _mm512_fnmadd_pd(a, b, c); }
[[gnu::always_inline]] inline __m512 negated(__m512 a, __m512 b, __m512 c) { return _mm512_fnmadd_ps(a, b, c); }
[[gnu::always_inline]] inline __m512d load_register(const double* p) { return _mm512_loadu_pd(p); }
[[gnu::always_inline]] inline __m512 load_register(const float* p) { return _mm512_loadu_ps(p); }
[[gnu::always_inline]] inline void store_register(double* p, __m512d v) { _mm512_storeu_pd(p, v); }
[[gnu::always_inline]] inline void store_register(float* p, __m512 v) { _mm512_storeu_ps(p, v); }
[[gnu::always_inline]] inline __m512d splat_register(double x) { return _mm512_set1_pd(x); }
[[gnu::always_inline]] inline __m512 splat_register(float x) { return _mm512_set1_ps(x); }
#else
[[gnu::always_inline]] inline __m256d fused(__m256d a, __m256d b, __m256d c) { return _mm256_fmadd_pd(a, b, c); }
[[gnu::always_inline]] inline __m256 fused(__m256 a, __m256 b, __m256 c) { return _mm256_fmadd_ps(a, b, c); }
[[gnu::always_inline]] inline __m256d negated(__m256d a, __m256d b, __m256d c) { return _mm256_fnmadd_pd(a, b, c); }
[[gnu::always_inline]] inline __m256 negated(__m256 a, __m256 b, __m256 c) { return _mm256_fnmadd_ps(a, b, c); }
[[gnu::always_inline]] inline __m256d load_register(const double* p) { return _mm256_loadu_pd(p); }
[[gnu::always_inline]] inline __m256 load_register(const float* p) { return _mm256_loadu_ps(p); }
[[gnu::always_inline]] inline void store_register(double* p, __m256d v) { _mm256_storeu_pd(p, v); }
[[gnu::always_inline]] inline void store_register(float* p, __m256 v) { _mm256_storeu_ps(p, v); }
[[gnu::always_inline]] inline __m256d splat_register(double x) { return _mm256_set1_pd(x); }
[[gnu::always_inline]] inline __m256 splat_register(float x) { return _mm256_set1_ps(x); }
#endif

template <class T>
inline constexpr int kPerRegister = kRegisterBytes / static_cast<int>(sizeof(T));

// Loads and stores of unaligned memory, by the kind of value wanted.
template <class V>
[[gnu::always_inline]] inline V load(const Element<V>* from) {
    using T = Element<V>;
    if constexpr (sizeof(V) == sizeof(T))
        return *from;
    else
        return each<T>([&](int i) { return load_register(from + i * kPerRegister<T>); });
}
template <class T>
[[gnu::always_inline]] inline void store(T* to, Lanes<T> v) {
    store_register(to, v.part[0]);
    if constexpr (kParts == 2) store_register(to + kPerRegister<T>, v.part[1]);
}
[[gnu::always_inline]] inline void store(double* to, double v) { *to = v; }
[[gnu::always_inline]] inline void store(float* to, float v) { *to = v; }
template <class V>
[[gnu::always_inline]] inline V splat(Element<V> x) {
    using T = Element<V>;
    if constexpr (sizeof(V) == sizeof(T))
        return x;
    else
        return each<T>([&](int) { return splat_register(x); });
}

template <class T>
[[gnu::always_inline]] inline Lanes<T> operator+(Lanes<T> a, Lanes<T> b) {
    return each<T>([&](int i) { return a.part[i] + b.part[i]; });
}
template <class T>
[[gnu::always_inline]] inline Lanes<T> operator-(Lanes<T> a, Lanes<T> b) {
    return each<T>([&](int i) { return a.part[i] - b.part[i]; });
}
template <class T>
[[gnu::always_inline]] inline Lanes<T> operator*(Lanes<T> a, Lanes<T> b) {
    return each<T>([&](int i) { return a.part[i] * b.part[i]; });
}
// a b + c and c - a b, rounded once.
template <class T>
[[gnu::always_inline]] inline Lanes<T> fma(Lanes<T> a, Lanes<T> b, Lanes<T> c) {
    return each<T>([&](int i) { return fused(a.part[i], b.part[i], c.part[i]); });
}
template <class T>
[[gnu::always_inline]] inline Lanes<T> fnma(Lanes<T> a, Lanes<T> b, Lanes<T> c) {
    return each<T>([&](int i) { return negated(a.part[i], b.part[i], c.part[i]); });
}
[[gnu::always_inline]] inline double fma(double a, double b, double c) { return __builtin_fma(a, b, c); }
[[gnu::always_inline]] inline float fma(float a, float b, float c) { return __builtin_fmaf(a, b, c); }
[[gnu::always_inline]] inline double fnma(double a, double b, double c) { return __builtin_fma(-a, b, c); }
[[gnu::always_inline]] inline float fnma(float a, float b, float c) { return __builtin_fmaf(-a, b, c); }

// The processor's minimum and maximum: the second operand where one is NaN.
template <class V>
[[gnu::always_inline]] inline V lesser(V a, V b) {
    if constexpr (sizeof(V) == sizeof(Element<V>))
        return a < b ? a : b;
    else
        return each<Element<V>>([&](int i) { return a.part[i] < b.part[i] ? a.part[i] : b.part[i]; });
}
template <class V>
[[gnu::always_inline]] inline V greater(V a, V b) {
    if constexpr (sizeof(V) == sizeof(Element<V>))
        return a > b ? a : b;
    else
        return each<Element<V>>([&](int i) { return a.part[i] > b.part[i] ? a.part[i] : b.part[i]; });
}

// Sum of the lanes by halves: the same tree for both register widths.
template <class T>
inline T fold(Lanes<T> v) {
    T lane[kLanes<T>];
    store(lane, v);
#pragma GCC unroll 4
    for (int half = kLanes<T> / 2; half > 0; half /= 2)
#pragma GCC unroll 8
        for (int i = 0; i < half; ++i) lane[i] = lane[i] + lane[i + half];
    return lane[0];
}

}  // namespace NAX_ISA
}  // namespace nax::stats
