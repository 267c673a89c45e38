// SFMT19937: the block loop. A step needs the block made just before it, so the chain of 128-bit blocks is serial; its
// critical path is one shift and one exclusive or, all else is ready earlier.
#include <algorithm>

#include "rng/generator.h"
#include "rng/generators/sfmt19937.h"
#include "rng/generators/to_real.h"

namespace nax::rng {

namespace {

inline __m128i load_block(const uint32_t* x) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(x)); }

inline __m128i step(__m128i a, __m128i b, __m128i c, __m128i d) {
    const __m128i mask = load_block(kSfmtMask);
    __m128i early = _mm_xor_si128(_mm_xor_si128(a, _mm_slli_si128(a, 1)), _mm_and_si128(_mm_srli_epi32(b, 11), mask));
    early = _mm_xor_si128(early, _mm_srli_si128(c, 1));
    // The compiler would regroup the sum and put more of it behind d, which is ready last.
    __asm__("" : "+x"(early));
    return _mm_xor_si128(early, _mm_slli_epi32(d, 18));
}

// Replaces blocks first ... last - 1; block k takes its partner b from k + distance.
inline void run(uint32_t* x, int first, int last, int distance, __m128i& c, __m128i& d) {
    for (int k = first; k < last; ++k) {
        uint32_t* const a = x + k * kSfmtBlockWords;
        const __m128i r = step(load_block(a), load_block(a + distance * kSfmtBlockWords), c, d);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(a), r);
        c = d;
        d = r;
    }
}

[[gnu::noinline]] void refill(uint32_t* x) {
    __m128i c = load_block(x + (kSfmtBlocks - 2) * kSfmtBlockWords);
    __m128i d = load_block(x + (kSfmtBlocks - 1) * kSfmtBlockWords);
    run(x, 0, kSfmtBlocks - kSfmtMiddle, kSfmtMiddle, c, d);
    run(x, kSfmtBlocks - kSfmtMiddle, kSfmtBlocks, kSfmtMiddle - kSfmtBlocks, c, d);
}

template <class Map, class T>
void draw(SfmtState& state, int n, T* r, const Map& map) {
    if (state.spare_pos == state.spare_end && n % kSfmtBlockWords == 0 && n <= kSfmtWords - state.next) {
        map_words(state.x + state.next, n, r, map);
        state.next += n;
        return;
    }
    while (n > 0 && state.spare_pos < state.spare_end) {
        *r++ = map(state.spare[state.spare_pos++]);
        --n;
    }
    while (n > 0) {
        if (state.next == kSfmtWords) {
            refill(state.x);
            state.next = 0;
        }
        const int take = std::min(n, kSfmtWords - state.next);
        map_words(state.x + state.next, take, r, map);
        state.next += take;
        n -= take;
        r += take;
    }
    const int left = -state.next & (kSfmtBlockWords - 1);
    if (left == 0) return;
    for (int i = 0; i < left; ++i) state.spare[i] = state.x[state.next + i];
    state.next += left;
    state.spare_pos = 0;
    state.spare_end = left;
}

}  // namespace

void sfmt19937_step(uint32_t* a, const uint32_t* b, const uint32_t* c, const uint32_t* d) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(a), step(load_block(a), load_block(b), load_block(c), load_block(d)));
}

}  // namespace nax::rng

using namespace nax::rng;

NAX_WORD_OUTPUT(SFMT19937, SfmtState, MidpointScale)
