// MT19937: the block loop. A block of 624 words is a whole number of vectors; each vector of new words is made from old
// words at k, k + 1 and k + 397, of which the last come from the new block once the index wraps.
#include <algorithm>

#include "rng/generator.h"
#include "rng/generators/mt19937.h"
#include "rng/generators/to_real.h"

namespace nax::rng {

namespace {

constexpr int kWords = kMt19937Words;
constexpr int kMiddle = kMt19937Middle;

inline uint32_t temper(uint32_t y) {
    y ^= y >> 11;
    y ^= (y << 7) & 0x9D2C5680u;
    y ^= (y << 15) & 0xEFC60000u;
    return y ^ (y >> 18);
}

inline U32 temper(U32 y) {
    y ^= y >> 11;
    y = xor_and(y, y << 7, broadcast(0x9D2C5680u));
    y = xor_and(y, y << 15, broadcast(0xEFC60000u));
    return y ^ (y >> 18);
}

struct Temper {
    template <class Words>
    Words operator()(Words y) const { return temper(y); }
};

// Replaces all words by the next block.
[[gnu::noinline]] void refill(uint32_t* x) {
    const auto advance = [x](int k, U32 following, U32 middle) __attribute__((always_inline)) {
        const U32 y = select(broadcast(kMt19937UpperBit), load<U32>(x + k), following);
        store(x + k, xor_if_odd(middle ^ (y >> 1), y, broadcast(kMt19937MatrixA)));
    };
    constexpr int kWrap = (kWords - kMiddle) / kLanes32 * kLanes32;  // its k + 397 straddles the end of the block
    constexpr int kLast = kWords - kLanes32;
    int k = 0;
    for (; k < kWrap; k += kLanes32) advance(k, load<U32>(x + k + 1), load<U32>(x + k + kMiddle));
    const U32 first = load<U32>(x);
    constexpr int kInside = kWrap + kMiddle - kLast;
    advance(k, load<U32>(x + k + 1), join<kInside>(load<U32>(x + kLast), first));
    for (k += kLanes32; k < kLast; k += kLanes32) advance(k, load<U32>(x + k + 1), load<U32>(x + k + kMiddle - kWords));
    advance(k, join<1>(load<U32>(x + k), first), load<U32>(x + k + kMiddle - kWords));
}

template <class Map, class T>
void draw(Mt19937State& state, int n, T* r, const Map& map) {
    for (;;) {
        const int take = std::min(n, kWords - state.next);
        map_words(state.x + state.next, take, r, Temper{}, map);
        state.next += take;
        n -= take;
        r += take;
        if (n == 0) return;
        refill(state.x);
        state.next = 0;
    }
}

}  // namespace

void mt19937_discard(Mt19937State& state, uint64_t n) {
    const uint64_t unread = static_cast<uint64_t>(kWords - state.next);
    if (n <= unread) {
        state.next += static_cast<int32_t>(n);
        return;
    }
    n -= unread;
    for (;; n -= kWords) {
        refill(state.x);
        if (n <= kWords) break;
    }
    state.next = static_cast<int32_t>(n);
}

}  // namespace nax::rng

using namespace nax::rng;

NAX_WORD_OUTPUT(MT19937, Mt19937State, UnsignedScale)
