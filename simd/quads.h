// Four elements side by side, 128 or 256 bits: what transposes and systems solved four at a time are made of, alike in
// both instruction sets.
#pragma once

#include <cstdint>
#include <cstring>

#include "simd/isa.h"

namespace nax::simd {
inline namespace NAX_ISA {

template <class T>
struct QuadOf {
    typedef T type __attribute__((vector_size(4 * sizeof(T))));
};
template <class T>
using Quad = typename QuadOf<T>::type;

// Exchanges rows and columns of four quads.
template <class V>
[[gnu::always_inline]] inline void transpose(V& a, V& b, V& c, V& d) {
    const V ab0 = __builtin_shufflevector(a, b, 0, 4, 2, 6), ab1 = __builtin_shufflevector(a, b, 1, 5, 3, 7);
    const V cd0 = __builtin_shufflevector(c, d, 0, 4, 2, 6), cd1 = __builtin_shufflevector(c, d, 1, 5, 3, 7);
    a = __builtin_shufflevector(ab0, cd0, 0, 1, 4, 5);
    b = __builtin_shufflevector(ab1, cd1, 0, 1, 4, 5);
    c = __builtin_shufflevector(ab0, cd0, 2, 3, 6, 7);
    d = __builtin_shufflevector(ab1, cd1, 2, 3, 6, 7);
}

// to[j * to_pitch + i] = from[i * from_pitch + j] for i, j < 4.
template <class T>
[[gnu::always_inline]] inline void transpose_tile(const T* from, int64_t from_pitch, T* to, int64_t to_pitch) {
    Quad<T> a, b, c, d;
    std::memcpy(&a, from, sizeof a);
    std::memcpy(&b, from + from_pitch, sizeof b);
    std::memcpy(&c, from + 2 * from_pitch, sizeof c);
    std::memcpy(&d, from + 3 * from_pitch, sizeof d);
    transpose(a, b, c, d);
    std::memcpy(to, &a, sizeof a);
    std::memcpy(to + to_pitch, &b, sizeof b);
    std::memcpy(to + 2 * to_pitch, &c, sizeof c);
    std::memcpy(to + 3 * to_pitch, &d, sizeof d);
}

}  // namespace NAX_ISA
}  // namespace nax::simd
