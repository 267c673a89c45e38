// Counters of 128 bits in four 32-bit words, least significant first, and the skip-ahead that the counter-based
// generators share. In the namespace of the instruction set that it is compiled for, like all bodies of files of both
// kinds.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

#include "nax/abi/streams.h"
#include "rng/generators/counter_state.h"
#include "rng/stream.h"
#include "simd/isa.h"

namespace nax::rng {
inline namespace NAX_ISA {

inline constexpr int kCounterBlockWords = 4;

using Wide = unsigned __int128;

inline Wide counter_value(const uint32_t (&counter)[4]) {
    Wide value;
    std::memcpy(&value, counter, sizeof(value));
    return value;
}
inline void set_counter(uint32_t (&counter)[4], Wide value) { std::memcpy(counter, &value, sizeof(value)); }

// A counter-based state has counter, block (the last output block) and left (its unread words); counter stands one past
// block. evaluate(state) makes the output block of state.counter.
template <class State, class Evaluate>
void move_to_block(State& state, Wide blocks, uint32_t left, const Evaluate& evaluate) {
    const Wide at = counter_value(state.counter) + blocks;
    set_counter(state.counter, at);
    state.left = left;
    evaluate(state, state.block);
    set_counter(state.counter, at + 1);
}

template <class State, class Evaluate>
void skip_counter(State& state, uint64_t nskip, const Evaluate& evaluate) {
    if (nskip <= state.left) {
        state.left -= static_cast<uint32_t>(nskip);
        return;
    }
    const uint64_t beyond = nskip - state.left;
    move_to_block(state, (beyond - 1) >> 2, static_cast<uint32_t>(0 - beyond) & 3, evaluate);
}

// The same for a count of up to three 64-bit words; more are ignored. A count of 2^130 or more comes round.
template <class State, class Evaluate>
void skip_counter(State& state, int n, const uint64_t* nskip, const Evaluate& evaluate) {
    uint64_t words[3] = {};
    std::copy_n(nskip, std::clamp(n, 0, 3), words);
    if (words[1] == 0 && words[2] == 0 && words[0] <= state.left) {
        state.left -= static_cast<uint32_t>(words[0]);
        return;
    }
    // words -= left + 1
    uint64_t borrow = uint64_t{state.left} + 1;
    for (uint64_t& word : words) {
        const uint64_t before = word;
        word -= borrow;
        borrow = word > before ? 1 : 0;
    }
    const Wide blocks = (Wide{words[2]} << 126) | (Wide{words[1]} << 62) | (words[0] >> 2);
    move_to_block(state, blocks, 3 - static_cast<uint32_t>(words[0] & 3), evaluate);
}

// Fills a row of seed words in order; the words not given are 0.
template <int n>
void take_seeds(uint32_t (&words)[n], const uint32_t* seeds, int first, int count) {
    for (int i = 0; i < n; ++i) words[i] = first + i < count ? seeds[first + i] : 0;
}

// Seeding: the words of the key, then those of the counter.
template <class State>
struct CounterSeeding {
    static int seed(Stream* stream, int n, const uint32_t* seeds) {
        State& state = payload<State>(stream);
        state = {};
        take_seeds(state.key, seeds, 0, n);
        take_seeds(state.counter, seeds, static_cast<int>(std::size(state.key)), n);
        return STO_STATUS_OK;
    }
    static bool valid(const Stream* stream) { return payload<State>(stream).left <= kCounterBlockWords; }
};

}  // namespace NAX_ISA
}  // namespace nax::rng
