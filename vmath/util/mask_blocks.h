// Mask vectors of the caller as bits, a block at a time, and the moves of elements under such bits.
//
// A block is turned into bits first. Its number of elements is then known, so that all but the last few stores of
// packed elements can be whole vectors: they never reach behind the block's last element.
#pragma once

#include <cstdint>

#include "vmath/frame/memory.h"

namespace nax::vmath::NAX_ISA {

struct MaskBlock {
    static constexpr int capacity = 512;

    uint64_t words[capacity / 64];
    int64_t selected;  // number of bits set

    // Reads min(count, capacity) masks; bits behind them are zero.
    template <class Integer>
    NAX_VEC MaskBlock(const Integer* mask, int64_t count) : selected(0) {
        constexpr int lanes = static_cast<int>(kVectorBytes / sizeof(Integer));
        for (int64_t first = 0; first < capacity; first += 64) {
            uint64_t bits = 0;
#pragma GCC unroll 16
            for (int k = 0; k < 64; k += lanes) {
                const int64_t left = count - first - k;
                const int active = left >= lanes ? lanes : left <= 0 ? 0 : static_cast<int>(left);
                bits |= uint64_t{nonzero_lanes(mask + first + k, active)} << k;
            }
            words[first / 64] = bits;
            selected += __builtin_popcountll(bits);
        }
    }
};

// One vector of elements of type T under bits that stand for elements.
template <class T>
struct ElementVector : Moves<sizeof(T)> {
    static constexpr int lanes = static_cast<int>(kVectorBytes / sizeof(T));

    NAX_VEC static uint32_t bits_at(const MaskBlock& block, int element) {
        return static_cast<uint32_t>(block.words[element / 64] >> (element % 64)) & ((1u << lanes) - 1);
    }
};

}  // namespace nax::vmath::NAX_ISA
