// Arithmetic that is written once for a vector and for a single element: E is either. The same code on elements runs
// the ends of loops, with the same bits.
#pragma once

#include <cstring>

#include "simd/pack.h"
#include "simd/quads.h"

namespace nax::simd {
inline namespace NAX_ISA {

template <class T>
inline constexpr int kLanes = Pack<T>::kLanes;
template <class T>
using Vector = typename Pack<T>::F;

template <class E, class T>
NAX_VEC E load(const T* from) {
    E value;
    std::memcpy(&value, from, sizeof(E));
    return value;
}
template <class E, class T>
NAX_VEC void store(T* to, E value) {
    std::memcpy(to, &value, sizeof(E));
}
// All lanes equal; for a scalar E the value itself.
template <class E, class T>
NAX_VEC E splat(T value) {
    if constexpr (sizeof(E) == sizeof(T))
        return value;
    else
        return value - E{};  // keeps the sign of a zero
}

// a b + c with one rounding.
NAX_VEC double fma(double a, double b, double c) { return __builtin_fma(a, b, c); }
NAX_VEC float fma(float a, float b, float c) { return __builtin_fmaf(a, b, c); }
NAX_VEC Quad<float> fma(Quad<float> a, Quad<float> b, Quad<float> c) {
    return (Quad<float>)_mm_fmadd_ps((__m128)a, (__m128)b, (__m128)c);
}
#ifdef __AVX512F__  // else it is a vector of its own
NAX_VEC Quad<double> fma(Quad<double> a, Quad<double> b, Quad<double> c) {
    return (Quad<double>)_mm256_fmadd_pd((__m256d)a, (__m256d)b, (__m256d)c);
}
#endif

NAX_VEC double abs(double a) { return __builtin_fabs(a); }
NAX_VEC float abs(float a) { return __builtin_fabsf(a); }
template <class V>
using TypeOf = typename Pack<std::remove_cvref_t<decltype(std::declval<V>()[0])>>::E;
template <class V>
NAX_VEC V abs(V a) {
    return and_not(TypeOf<V>::row_of_bits(TypeOf<V>::sign_bit), a);
}
// Magnitude of the first, sign of the second.
NAX_VEC double copysign(double a, double sign) { return __builtin_copysign(a, sign); }
NAX_VEC float copysign(float a, float sign) { return __builtin_copysignf(a, sign); }
template <class V>
NAX_VEC V copysign(V a, V sign) {
    return bit_choose(TypeOf<V>::row_of_bits(TypeOf<V>::sign_bit), sign, a);
}

// One cell's share of the interleaved stores.
template <class T, class... Rest>
requires(std::is_floating_point_v<T>) NAX_VEC void store_interleaved(T* to, T first, Rest... rest) {
    const T all[] = {first, rest...};
    for (std::size_t k = 0; k < sizeof...(rest) + 1; ++k) to[k] = all[k];
}

}  // namespace NAX_ISA
}  // namespace nax::simd
