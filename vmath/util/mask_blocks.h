// Mask vectors of the caller as bits, a block at a time, and the moves of elements under such bits.
//
// A block is turned into bits first. Its number of elements is then known, so that all but the last few stores of
// packed elements can be whole vectors: they never reach behind the block's last element.
#pragma once

#include <cstdint>
#include <type_traits>

#include "vmath/frame/vec.h"

namespace nax::vmath::avx512 {

NAX_VEC uint64_t nonzero_lanes(const int32_t* mask, __mmask16 lanes) {
    const __m512i x = _mm512_maskz_loadu_epi32(lanes, mask);
    return _mm512_test_epi32_mask(x, x);
}
NAX_VEC uint64_t nonzero_lanes(const int64_t* mask, __mmask8 lanes) {
    const __m512i x = _mm512_maskz_loadu_epi64(lanes, mask);
    return _mm512_test_epi64_mask(x, x);
}

struct MaskBlock {
    static constexpr int capacity = 512;

    uint64_t words[capacity / 64];
    int64_t selected;  // number of bits set

    // Reads min(count, capacity) masks; bits behind them are zero.
    template <class Integer>
    NAX_VEC MaskBlock(const Integer* mask, int64_t count) : selected(0) {
        constexpr int lanes = static_cast<int>(64 / sizeof(Integer));
        for (int64_t first = 0; first < capacity; first += 64) {
            uint64_t bits = 0;
#pragma GCC unroll 8
            for (int k = 0; k < 64; k += lanes) {
                const int64_t left = count - first - k;
                const uint32_t active = left >= lanes ? ~0u : left <= 0 ? 0u : ~0u >> (32 - left);
                bits |= nonzero_lanes(mask + first + k, static_cast<decltype(lane_mask_of(mask))>(active)) << k;
            }
            words[first / 64] = bits;
            selected += __builtin_popcountll(bits);
        }
    }

private:
    static __mmask16 lane_mask_of(const int32_t*);
    static __mmask8 lane_mask_of(const int64_t*);
};

// One vector of elements of type T under bits that stand for elements.
template <class T>
struct ElementVector {
    static constexpr int lanes = static_cast<int>(64 / sizeof(T));
    static constexpr bool narrow = sizeof(T) == 4;
    using Mask = std::conditional_t<narrow, __mmask16, __mmask8>;

    NAX_VEC static uint32_t bits_at(const MaskBlock& block, int element) {
        return static_cast<uint32_t>(block.words[element / 64] >> (element % 64)) & ((1u << lanes) - 1);
    }
    // A pair of doubles takes two lanes.
    NAX_VEC static Mask mask(uint32_t bits) {
        return static_cast<Mask>(sizeof(T) == 16 ? _pdep_u32(bits, 0x55) * 3 : bits);
    }
    NAX_VEC static __m512i load(const T* p) { return _mm512_loadu_si512(p); }
    NAX_VEC static void store(T* p, __m512i x) { _mm512_storeu_si512(p, x); }
    NAX_VEC static __m512i load(Mask m, const T* p) {
        if constexpr (narrow)
            return _mm512_maskz_loadu_epi32(m, p);
        else
            return _mm512_maskz_loadu_epi64(m, p);
    }
    NAX_VEC static void store(T* p, Mask m, __m512i x) {
        if constexpr (narrow)
            _mm512_mask_storeu_epi32(p, m, x);
        else
            _mm512_mask_storeu_epi64(p, m, x);
    }
    NAX_VEC static __m512i compress(Mask m, __m512i x) {
        if constexpr (narrow)
            return _mm512_maskz_compress_epi32(m, x);
        else
            return _mm512_maskz_compress_epi64(m, x);
    }
    NAX_VEC static __m512i expand(Mask m, __m512i x) {
        if constexpr (narrow)
            return _mm512_maskz_expand_epi32(m, x);
        else
            return _mm512_maskz_expand_epi64(m, x);
    }
};

}  // namespace nax::vmath::avx512
