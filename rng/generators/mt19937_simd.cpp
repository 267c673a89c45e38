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

struct Temper {
    U32 operator()(U32 y) const {
        y ^= y >> 11;
        y = xor_and(y, y << 7, broadcast(0x9D2C5680u));
        y = xor_and(y, y << 15, broadcast(0xEFC60000u));
        return y ^ (y >> 18);
    }
};

// The words that follow x(k), given with the words after them and those 397 places on.
inline U32 twist(U32 words, U32 following, U32 middle) {
    const U32 y = select(broadcast(kMt19937UpperBit), words, following);
    return xor_if_odd(middle ^ (y >> 1), y, broadcast(kMt19937MatrixA));
}

// Replaces all words by the next block. The state stands 16 bytes behind a boundary of the stream's memory: from word kHead
// on vectors are aligned, and four words remain at the end.
[[gnu::noinline]] void refill(uint32_t* x) {
    constexpr int kHead = kLanes32 - 4, kBack = kWords - kMiddle, kTail = kWords - 4;
    constexpr int kWrap = kHead + (kBack - kHead) / kLanes32 * kLanes32;  // its k + 397 straddles the end of the block
    put(x, kHead, twist(load<U32>(x), load<U32>(x + 1), load<U32>(x + kMiddle)));
    int k = kHead;
#pragma GCC unroll 4
    for (; k < kWrap; k += kLanes32) store(x + k, twist(load<U32>(x + k), load<U32>(x + k + 1), load<U32>(x + k + kMiddle)));
    const U32 straddling = join<kWrap + kMiddle - (kWords - kLanes32)>(load<U32>(x + kWords - kLanes32), load<U32>(x));
    store(x + kWrap, twist(load<U32>(x + kWrap), load<U32>(x + kWrap + 1), straddling));
    k += kLanes32;
#pragma GCC unroll 4
    for (; k < kTail; k += kLanes32) store(x + k, twist(load<U32>(x + k), load<U32>(x + k + 1), load<U32>(x + k - kBack)));
    const U32 last = load_words(x + kTail, 4);
    const U32 following = join<1>(last, U32{}) | join<kLanes32 - 3>(U32{}, broadcast(x[0]));
    put(x + kTail, 4, twist(last, following, load<U32>(x + kTail - kBack)));
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
