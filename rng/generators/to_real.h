// From 32-bit words to real numbers on [a, b): every generator with such words uses one of these maps, in registers or
// over a buffer. A value depends on its word alone: the vector and the scalar form give the same bits.
#pragma once

#include <cmath>
#include <cstdint>

#include "simd/integers.h"

namespace nax::rng {

using namespace simd;

inline namespace NAX_ISA {

// a + s y, s = (b - a) 2^-32, the word y taken as unsigned, one fused multiply-add.
template <class T>
struct UnsignedScale;

// (a + b)/2 + s y, s = (b - a) 2^-32, the word y taken as signed, one fused multiply-add. The interval's middle is the
// origin, so that the rounding errors are symmetric.
template <class T>
struct MidpointScale;

template <>
struct UnsignedScale<double> {
    double origin, scale;

    UnsignedScale(double a, double b) : origin(a), scale((b - a) * 0x1p-32) {}
    UnsignedScale(double a, double b, double unit) : origin(a), scale((b - a) * unit) {}

    double operator()(uint32_t word) const { return __builtin_fma(static_cast<double>(word), scale, origin); }
    PairF64 operator()(U32 words) const { return fused(to_doubles(words), broadcast(scale), broadcast(origin)); }
};

template <>
struct UnsignedScale<float> {
    float origin, scale;

    UnsignedScale(float a, float b) : origin(a), scale((b - a) * 0x1p-32f) {}
    // s in double, then rounded.
    UnsignedScale(float a, float b, double unit)
        : origin(a), scale(static_cast<float>((static_cast<double>(b) - static_cast<double>(a)) * unit)) {}

    float operator()(uint32_t word) const { return __builtin_fmaf(static_cast<float>(word), scale, origin); }
    F32 operator()(U32 words) const { return fused(to_float(words), broadcast(scale), broadcast(origin)); }
};

template <>
struct MidpointScale<double> {
    double origin, scale;

    MidpointScale(double a, double b) : origin((a + b) * 0.5), scale((b - a) * 0x1p-32) {}

    double operator()(uint32_t word) const {
        return __builtin_fma(static_cast<double>(static_cast<int32_t>(word)), scale, origin);
    }
    PairF64 operator()(U32 words) const { return fused(signed_to_doubles(words), broadcast(scale), broadcast(origin)); }
};

template <>
struct MidpointScale<float> {
    float origin, scale;

    MidpointScale(float a, float b) : origin((a + b) * 0.5f), scale((b - a) * 0x1p-32f) {}

    float operator()(uint32_t word) const {
        return __builtin_fmaf(static_cast<float>(static_cast<int32_t>(word)), scale, origin);
    }
    F32 operator()(U32 words) const { return fused(signed_to_float(words), broadcast(scale), broadcast(origin)); }
};

// a + y ((b - a) unit), rounded after the product and after the sum; singles are computed in double and rounded once more.
template <class T>
struct UnfusedScale {
    double origin, scale;

    UnfusedScale(T a, T b, double unit)
        : origin(static_cast<double>(a)), scale((static_cast<double>(b) - static_cast<double>(a)) * unit) {}

    T operator()(uint32_t word) const { return static_cast<T>(origin + static_cast<double>(word) * scale); }
    auto operator()(U32 words) const {
        const F64 s = broadcast(scale), o = broadcast(origin);
        PairF64 y = to_doubles(words);
        y = {o + y.low * s, o + y.high * s};
        if constexpr (sizeof(T) == sizeof(float)) return join_halves(narrow(y.low), narrow(y.high));
        else return y;
    }
};

// The words as they are.
struct RawWords {
    template <class Words>
    Words operator()(Words words) const { return words; }
};

// Turns n words into numbers r by operation and map. For words and singles r may be the words' own memory.
template <class Operation, class Map, class T>
NAX_VEC void map_words(const uint32_t* words, int n, T* r, const Operation& operation, const Map& map) {
#pragma GCC unroll 2
    for (; n >= kLanes32; n -= kLanes32, words += kLanes32, r += kLanes32) put(r, map(operation(load<U32>(words))));
    if (n > 0) put(r, n, map(operation(load_words(words, n))));
}
template <class Map, class T>
NAX_VEC void map_words(const uint32_t* words, int n, T* r, const Map& map) {
    map_words(words, n, r, RawWords{}, map);
}
// The same with words in registers; n at most their number.
template <int rows, class Map, class T>
NAX_VEC void map_rows(const U32 (&words)[rows], int n, T* r, const Map& map) {
#pragma GCC unroll 8
    for (int i = 0; i < rows; ++i, n -= kLanes32, r += kLanes32) {
        if (n < kLanes32) return n > 0 ? put(r, n, map(words[i])) : void();
        put(r, map(words[i]));
    }
}

}  // namespace NAX_ISA
}  // namespace nax::rng
