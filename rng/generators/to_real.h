// From 32-bit words to real numbers on [a, b): every generator with such words uses one of these maps, in registers or
// over a buffer. A value depends on its word alone: the vector and the scalar form give the same bits.
#pragma once

#include <cmath>
#include <cstdint>

#include "rng/simd.h"

namespace nax::rng {
inline namespace NAX_RNG_ISA {

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
    void store_block(double* r, U32 words) const {
        const F64 s = broadcast(scale), o = broadcast(origin);
        store(r, fma(to_double(lower_half(words)), s, o));
        store(r + kLanes64, fma(to_double(upper_half(words)), s, o));
    }
};

template <>
struct UnsignedScale<float> {
    float origin, scale;

    UnsignedScale(float a, float b) : origin(a), scale((b - a) * 0x1p-32f) {}
    // s in double, then rounded.
    UnsignedScale(float a, float b, double unit)
        : origin(a), scale(static_cast<float>((static_cast<double>(b) - static_cast<double>(a)) * unit)) {}

    float operator()(uint32_t word) const { return __builtin_fmaf(static_cast<float>(word), scale, origin); }
    void store_block(float* r, U32 words) const {
        store(r, fma(to_float(words), broadcast(scale), broadcast(origin)));
    }
};

template <>
struct MidpointScale<double> {
    double origin, scale;

    MidpointScale(double a, double b) : origin((a + b) * 0.5), scale((b - a) * 0x1p-32) {}

    double operator()(uint32_t word) const {
        return __builtin_fma(static_cast<double>(static_cast<int32_t>(word)), scale, origin);
    }
    void store_block(double* r, U32 words) const {
        const F64 s = broadcast(scale), o = broadcast(origin);
        store(r, fma(signed_to_double(lower_half(words)), s, o));
        store(r + kLanes64, fma(signed_to_double(upper_half(words)), s, o));
    }
};

template <>
struct MidpointScale<float> {
    float origin, scale;

    MidpointScale(float a, float b) : origin((a + b) * 0.5f), scale((b - a) * 0x1p-32f) {}

    float operator()(uint32_t word) const {
        return __builtin_fmaf(static_cast<float>(static_cast<int32_t>(word)), scale, origin);
    }
    void store_block(float* r, U32 words) const {
        store(r, fma(signed_to_float(words), broadcast(scale), broadcast(origin)));
    }
};

// a + y ((b - a) unit), rounded after the product and after the sum; singles are computed in double and rounded once more.
template <class T>
struct UnfusedScale {
    double origin, scale;

    UnfusedScale(T a, T b, double unit)
        : origin(static_cast<double>(a)), scale((static_cast<double>(b) - static_cast<double>(a)) * unit) {}

    T operator()(uint32_t word) const { return static_cast<T>(origin + static_cast<double>(word) * scale); }
    void store_block(T* r, U32 words) const {
        const F64 s = broadcast(scale), o = broadcast(origin);
        const F64 low = o + to_double(lower_half(words)) * s;
        const F64 high = o + to_double(upper_half(words)) * s;
        if constexpr (sizeof(T) == sizeof(float)) {
            store(r, narrow(low));
            store(r + kLanes64, narrow(high));
        } else {
            store(r, low);
            store(r + kLanes64, high);
        }
    }
};

// The words as they are.
struct RawWords {
    uint32_t operator()(uint32_t word) const { return word; }
    void store_block(uint32_t* r, U32 words) const { store(r, words); }
};

// n words to n numbers. For singles r may be the words' own memory.
template <class Map, class T>
inline void convert_words(Map map, const void* words, T* r, int n) {
    const unsigned char* from = static_cast<const unsigned char*>(words);
    int i = 0;
#pragma GCC unroll 2
    for (; i + kLanes32 <= n; i += kLanes32) map.store_block(r + i, load<U32>(from + 4 * static_cast<long>(i)));
    for (; i < n; ++i) r[i] = map(load<uint32_t>(from + 4 * static_cast<long>(i)));
}

}  // namespace NAX_RNG_ISA
}  // namespace nax::rng
