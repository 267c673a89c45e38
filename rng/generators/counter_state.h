// The state of a counter-based generator with a key of so many words.
#pragma once

#include <cstdint>

namespace nax::rng {

template <int KeyWords>
struct CounterState {
    uint32_t key[KeyWords];
    uint32_t counter[4];  // least significant word first; one past the block below
    uint32_t left;        // unread words of the last block
    uint32_t block[4];
    uint32_t unused;
};

}  // namespace nax::rng
