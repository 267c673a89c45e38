// SFMT19937, the SIMD-oriented fast Mersenne twister.
//
//   w(k+156) = w(k) ^ (w(k) <<128 8) ^ ((w(k+122) >>32 11) & mask) ^ (w(k+154) >>128 8) ^ (w(k+155) <<32 18)
//
// on words w of 128 bits. Period a multiple of 2^19937 - 1, certified at seeding. Output words are the four 32-bit words of
// each w, unchanged; reals are (a + b)/2 + (b - a) y / 2^32 with y taken as signed.
// M. Saito, M. Matsumoto, "SIMD-oriented fast Mersenne twister: a 128-bit pseudorandom number generator", Monte Carlo and
// Quasi-Monte Carlo Methods 2006, Springer (2008), 607-622.
#include "rng/generators/sfmt19937.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>

#include "rng/generator.h"
#include "rng/generators/state_words.h"

namespace nax::rng {

namespace {

constexpr int kWords = kSfmtWords;
constexpr uint64_t kSlidingWindowFrom = 19968;

uint32_t mix_add(uint32_t x) { return (x ^ x >> 27) * 1664525u; }
uint32_t mix_xor(uint32_t x) { return (x ^ x >> 27) * 1566083941u; }

// The state has full period if its inner product with the parity vector is odd; else one bit makes it so.
void certify_period(uint32_t* x) {
    uint32_t inner = 0;
    for (int i = 0; i < kSfmtBlockWords; ++i) inner ^= x[i] & kSfmtParity[i];
    if (std::popcount(inner) % 2 == 1) return;
    x[0] ^= 1;  // the lowest set bit of the parity vector
}

// init_by_array of the published generator.
void _InitStateVector(uint32_t* x, const uint32_t* seeds, int n) {
    constexpr int kMid = 306;
    constexpr int kLag = 11;
    std::fill_n(x, kWords, 0x8B8B8B8Bu);
    int i = 0;
    const auto at = [&](int distance) -> uint32_t& { return x[(i + distance) % kWords]; };

    uint32_t r = mix_add(x[0] ^ at(kMid) ^ at(kWords - 1));
    at(kMid) += r;
    r += static_cast<uint32_t>(n);
    at(kMid + kLag) += r;
    x[0] = r;
    const int rounds = std::max(n + 1, kWords) - 1;
    for (int count = 1; count <= rounds; ++count) {
        i = count % kWords;
        r = mix_add(x[i] ^ at(kMid) ^ at(kWords - 1));
        at(kMid) += r;
        r += static_cast<uint32_t>(i);
        if (count <= n) r += seeds[count - 1];
        at(kMid + kLag) += r;
        x[i] = r;
    }
    for (int count = 0; count < kWords; ++count) {
        i = (rounds + 1 + count) % kWords;
        r = mix_xor(x[i] + at(kMid) + at(kWords - 1));
        at(kMid) ^= r;
        r -= static_cast<uint32_t>(i);
        at(kMid + kLag) ^= r;
        x[i] = r;
    }
    certify_period(x);
}

}  // namespace

void sfmt19937_seed(SfmtState& state, const uint32_t* seeds, int n) {
    static constexpr uint32_t kDefaultSeed = 1;
    if (n < 1) {
        _InitStateVector(state.x, &kDefaultSeed, 1);
    } else {
        _InitStateVector(state.x, seeds, n);
    }
    state.next = kWords;
    std::fill_n(state.spare, std::size(state.spare), 0u);
    state.spare_pos = state.spare_end = 0;
}

namespace {

SfmtState& state_of(Stream* stream) { return payload<SfmtState>(stream); }
const SfmtState& state_of(const Stream* stream) { return payload<SfmtState>(stream); }

// The state as a ring of 128-bit blocks: the oldest is the one that the next step replaces.
int oldest(const SfmtState& state) { return state.next == kWords ? 0 : state.next; }

void _ZeroState(Stream* state) {
    SfmtState& s = state_of(state);
    std::memset(s.x, 0, sizeof(s.x));
    s.next = 0;
}

void _AddState(Stream* destination, const Stream* source) {
    xor_ring_624(state_of(destination).x, oldest(state_of(destination)), state_of(source).x, oldest(state_of(source)));
}

void _CopyState1(Stream* destination, const Stream* source) {
    std::memcpy(state_of(destination).x, state_of(source).x, sizeof(SfmtState::x));
    state_of(destination).next = state_of(source).next;
}

void _UpdateS(Stream* state) {
    SfmtState& s = state_of(state);
    const int k = oldest(s);
    const auto block = [&](int blocks_on) {
        const int place = k + blocks_on * kSfmtBlockWords;
        return s.x + (place < kWords ? place : place - kWords);
    };
    sfmt19937_step(s.x + k, block(kSfmtMiddle), block(kSfmtBlocks - 2), block(kSfmtBlocks - 1));
    s.next = k + kSfmtBlockWords;
}

// Words of a block broken into: the last `left` ones before `end`.
void keep_spare(SfmtState& s, int end, int left) {
    std::copy_n(s.x + end - left, left, s.spare);
    s.spare_pos = 0;
    s.spare_end = left;
}

// As plain generation leaves it, with `read` words delivered of its 624: the ring is turned until its oldest block follows
// them, and stepped to its end. A block that is only partly read leaves spare words.
void _CopyState2(Stream* stream, Stream* work, int read) {
    SfmtState& s = state_of(stream);
    const int passed = (read + kSfmtBlockWords - 1) / kSfmtBlockWords * kSfmtBlockWords;
    turn_ring_624(s.x, passed % kWords, state_of(work).x, oldest(state_of(work)));
    s.next = passed;
    if (passed == 0) s.next = kWords;
    while (s.next < kWords) _UpdateS(stream);
    if (passed > 0) s.next = passed;
    if (read < passed) keep_spare(s, passed, passed - read);
}

int _ProcessIdx(Stream* stream, uint64_t* nskip, int* read) {
    SfmtState& s = state_of(stream);
    const uint64_t spare = static_cast<uint64_t>(s.spare_end - s.spare_pos);
    if (*nskip <= spare) {
        s.spare_pos += static_cast<int32_t>(*nskip);
        return 0;
    }
    *nskip -= spare;
    s.spare_pos = s.spare_end;
    const uint64_t unread = static_cast<uint64_t>(kWords - s.next);
    if (*nskip <= unread) {
        const int end = s.next + static_cast<int32_t>(*nskip);
        s.next = (end + kSfmtBlockWords - 1) / kSfmtBlockWords * kSfmtBlockWords;
        if (end < s.next) keep_spare(s, s.next, s.next - end);
        return 0;
    }
    *nskip -= unread;
    s.next = kWords;
    *read = static_cast<int>(*nskip % kWords);
    *nskip = *nskip / kSfmtBlockWords + (*nskip % kSfmtBlockWords != 0 ? 1 : 0);
    return 1;
}

struct Sfmt19937 {
    static int seed(Stream* stream, int n, const uint32_t* seeds) {
        sfmt19937_seed(state_of(stream), seeds, n);
        return STO_STATUS_OK;
    }
    static int skip_ahead(Stream* stream, int, uint64_t nskip) {
        const nax_skip_parameters params = {_ProcessIdx, nskip, kWords, 19968, kStreamStateSize<SfmtState>,
                                            std::size(_sto_sfmt19937_poly), _sto_sfmt19937_poly};
        const auto skip = nskip < kSlidingWindowFrom ? __sto_SkipAheadHorner : __sto_SkipAheadSWin;
        return skip(stream, _ZeroState, _AddState, _CopyState1, _UpdateS, _CopyState2, &params);
    }
    static bool valid(const Stream* stream) {
        const SfmtState& s = state_of(stream);
        return s.next >= 0 && s.next <= kWords && s.next % kSfmtBlockWords == 0 && s.spare_pos >= 0 &&
               s.spare_pos <= s.spare_end && s.spare_end < kSfmtBlockWords;
    }
};

}  // namespace

}  // namespace nax::rng

NAX_GENERATOR(SFMT19937, nax::rng::Sfmt19937)
