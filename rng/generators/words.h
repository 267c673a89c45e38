// Word operations of the twisters and the quasi-random generators on top of rng/simd.h: three-operand logic, vectors cut
// from two neighbours, and stores of less than a vector.
#pragma once

#include "rng/simd.h"

namespace nax::rng {
inline namespace NAX_RNG_ISA {

#ifdef __AVX512F__

inline U32 words_of(__m512i a) { return reinterpret_cast<U32>(a); }

// a ^ b ^ c
inline U32 xor3(U32 a, U32 b, U32 c) { return words_of(_mm512_ternarylogic_epi32(bits(a), bits(b), bits(c), 0x96)); }
// a ^ (b & c)
inline U32 xor_and(U32 a, U32 b, U32 c) {
    return words_of(_mm512_ternarylogic_epi32(bits(a), bits(b), bits(c), 0x78));
}
// Bits of a where mask is set, of b elsewhere.
inline U32 select(U32 mask, U32 a, U32 b) {
    return words_of(_mm512_ternarylogic_epi32(bits(mask), bits(a), bits(b), 0xCA));
}
// a ^ pattern in the lanes where y is odd.
inline U32 xor_if_odd(U32 a, U32 y, U32 pattern) {
    const __mmask16 odd = _mm512_test_epi32_mask(bits(y), _mm512_set1_epi32(1));
    return words_of(_mm512_mask_xor_epi32(bits(a), odd, bits(a), bits(pattern)));
}
// Lanes first ... first + 15 of the concatenation (low, high).
template <int first>
inline U32 join(U32 low, U32 high) {
    return words_of(_mm512_maskz_alignr_epi32(kAll16, bits(high), bits(low), first));
}
// The first count lanes, 0 to 16.
inline void store_first(void* to, U32 v, int count) {
    _mm512_mask_storeu_epi32(to, static_cast<__mmask16>((1u << count) - 1), bits(v));
}

#else

inline U32 xor3(U32 a, U32 b, U32 c) { return a ^ b ^ c; }
inline U32 xor_and(U32 a, U32 b, U32 c) { return a ^ (b & c); }
inline U32 select(U32 mask, U32 a, U32 b) { return (mask & (a ^ b)) ^ b; }
inline U32 xor_if_odd(U32 a, U32 y, U32 pattern) { return a ^ (-(y & broadcast(uint32_t{1})) & pattern); }
template <int first>
inline U32 join(U32 low, U32 high) {
    return __builtin_shufflevector(low, high, first, first + 1, first + 2, first + 3, first + 4, first + 5, first + 6,
                                   first + 7);
}
inline void store_first(void* to, U32 v, int count) {
    uint32_t lanes[kLanes32];
    store(lanes, v);
    std::memcpy(to, lanes, static_cast<std::size_t>(count) * sizeof(uint32_t));
}

#endif

// Turns n words into numbers r by operation and map. The last vector overlaps its neighbour; r must not overlap words.
template <class Operation, class Map, class T>
inline void map_words(const uint32_t* words, int n, T* r, const Operation& operation, const Map& map) {
    int i = 0;
    for (; i + kLanes32 <= n; i += kLanes32) map.store_block(r + i, operation(load<U32>(words + i)));
    if (i == n) return;
    if (n >= kLanes32) {
        i = n - kLanes32;
        map.store_block(r + i, operation(load<U32>(words + i)));
        return;
    }
    for (; i < n; ++i) r[i] = map(operation(words[i]));
}

}  // namespace NAX_RNG_ISA
}  // namespace nax::rng
