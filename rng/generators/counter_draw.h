// Drawing from a counter-based generator: what is left of the last block, then whole vectors of blocks, then a last vector
// of which a part is used.
#pragma once

#include <algorithm>

#include "rng/generators/counter128.h"
#include "rng/generators/to_real.h"

namespace nax::rng {
inline namespace NAX_ISA {

// True if the low 64 bits of the counter, which the lanes add to, wrap within that many blocks.
inline bool low_half_wraps(Wide counter, uint64_t blocks) {
    return static_cast<uint64_t>(counter) + blocks < static_cast<uint64_t>(counter);
}

// `generator.blocks(counter, rows)` fills an array of kManyRows or kFewRows vectors with successive blocks;
// evaluate(state, block) makes the one block of state.counter.
template <class State, class Map, class T, class Generator, class Evaluate>
inline void draw_counter(State& state, int n, T* r, const Map& map, const Generator& generator, const Evaluate& evaluate) {
    constexpr int kMany = Generator::kManyRows * kLanes32;
    constexpr int kFew = Generator::kFewRows * kLanes32;
    for (; n > 0 && state.left > 0; --n) *r++ = map(state.block[kCounterBlockWords - state.left--]);
    if (n <= 0) return;

    Wide counter = counter_value(state.counter);
    if (low_half_wraps(counter, static_cast<uint64_t>(n) / kCounterBlockWords + kMany)) {
        for (; n > 0; n -= kCounterBlockWords, r += kCounterBlockWords) {
            move_to_block(state, 0, static_cast<uint32_t>(std::max(kCounterBlockWords - n, 0)), evaluate);
            for (int i = 0; i < std::min(n, kCounterBlockWords); ++i) r[i] = map(state.block[i]);
        }
        return;
    }
    for (; n >= kMany; n -= kMany, r += kMany, counter += kMany / kCounterBlockWords) {
        U32 rows[Generator::kManyRows];
        generator.blocks(counter, rows);
        for (int i = 0; i < Generator::kManyRows; ++i) put(r + i * kLanes32, map(rows[i]));
    }
    set_counter(state.counter, counter);
    if (n == 0) return move_to_block(state, ~Wide{0}, 0, evaluate);
    for (;;) {
        U32 rows[Generator::kFewRows];
        generator.blocks(counter, rows);
        const int take = std::min(n, kFew);
        map_rows(rows, take, r, map);
        n -= take;
        r += take;
        const int used = (take + kCounterBlockWords - 1) / kCounterBlockWords;
        counter += static_cast<Wide>(used);
        if (n > 0) continue;
        set_counter(state.counter, counter);
        std::memcpy(state.block, reinterpret_cast<const uint32_t*>(rows) + (used - 1) * kCounterBlockWords,
                    sizeof(state.block));
        state.left = static_cast<uint32_t>(used * kCounterBlockWords - take);
        return;
    }
}

}  // namespace NAX_ISA
}  // namespace nax::rng
