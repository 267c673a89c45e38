// SFMT19937: state and block operations.
#pragma once

#include "rng/stream.h"

namespace nax::rng {

inline constexpr int kSfmtWords = 624;
inline constexpr int kSfmtBlockWords = 4;
inline constexpr int kSfmtBlocks = kSfmtWords / kSfmtBlockWords;
inline constexpr int kSfmtMiddle = 122;  // blocks
inline constexpr uint32_t kSfmtMask[kSfmtBlockWords] = {0xDFFFFFEFu, 0xDDFECB7Fu, 0xBFFAFFFFu, 0xBFFFFFF6u};
inline constexpr uint32_t kSfmtParity[kSfmtBlockWords] = {1u, 0u, 0u, 0x13C9E684u};

struct SfmtState {
    uint32_t x[kSfmtWords];
    int32_t next;                        // word to deliver next, a multiple of 4; 624: new blocks are due
    uint32_t spare[kSfmtBlockWords - 1]; // words of a 128-bit block that an earlier call broke into
    int32_t spare_pos, spare_end;        // unread ones of them
};
static_assert(kStreamStateSize<SfmtState> == 2536 && offsetof(SfmtState, next) == 2496 &&
              offsetof(SfmtState, spare_pos) == 2512);

// One step of the recurrence: block a is replaced; b is 122 blocks on, c and d are the two blocks made before.
void sfmt19937_step(uint32_t* a, const uint32_t* b, const uint32_t* c, const uint32_t* d);

// Seeds all words and certifies the period.
void sfmt19937_seed(SfmtState& state, const uint32_t* seeds, int n);

}  // namespace nax::rng
