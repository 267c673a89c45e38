// MT19937: the block loop. A block of 624 words is a whole number of vectors; each vector of new words is made from old
// words at k, k + 1 and k + 397, of which the last come from the new block once the index wraps.
#include <algorithm>

#include "rng/generator.h"
#include "rng/generators/words.h"
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

// A working copy of the block on a vector boundary, written back at the end: the payload's 16-byte alignment would make
// every wide access cross a cache line.
class WorkingBlock {
public:
    explicit WorkingBlock(uint32_t* home) : home_(home) { std::memcpy(x_, home, sizeof(x_)); }
    ~WorkingBlock() { std::memcpy(home_, x_, sizeof(x_)); }
    WorkingBlock(const WorkingBlock&) = delete;
    WorkingBlock& operator=(const WorkingBlock&) = delete;

    const uint32_t* words() const { return x_; }

    // Replaces all words by the next block and hands each new vector to emit(k, words).
    template <class Emit>
    void refill(const Emit& emit) {
        constexpr int kWrap = (kWords - kMiddle) / kLanes32 * kLanes32;  // its k + 397 straddles the end of the block
        constexpr int kLast = kWords - kLanes32;
        int k = 0;
        for (; k < kWrap; k += kLanes32) advance(k, load<U32>(x_ + k + 1), load<U32>(x_ + k + kMiddle), emit);
        const U32 first = load<U32>(x_);
        constexpr int kInside = kWrap + kMiddle - kLast;
        advance(k, load<U32>(x_ + k + 1), join<kInside>(load<U32>(x_ + kLast), first), emit);
        for (k += kLanes32; k < kLast; k += kLanes32) {
            advance(k, load<U32>(x_ + k + 1), load<U32>(x_ + k + kMiddle - kWords), emit);
        }
        advance(k, join<1>(load<U32>(x_ + k), first), load<U32>(x_ + k + kMiddle - kWords), emit);
    }

private:
    template <class Emit>
    void advance(int k, U32 following, U32 middle, const Emit& emit) {
        const U32 y = select(broadcast(kMt19937UpperBit), load<U32>(x_ + k), following);
        const U32 words = xor_if_odd(middle ^ (y >> 1), y, broadcast(kMt19937MatrixA));
        store(x_ + k, words);
        emit(k, words);
    }

    alignas(64) uint32_t x_[kWords];
    uint32_t* home_;
};

constexpr auto kSilent = [](int, U32) {};

template <class Map, class T>
void draw(Mt19937State& state, int n, T* r, const Map& map) {
    const int unread = std::min(n, kWords - state.next);
    map_words(state.x + state.next, unread, r, Temper{}, map);
    state.next += unread;
    n -= unread;
    r += unread;
    if (n == 0) return;

    WorkingBlock block(state.x);
    for (; n >= kWords; n -= kWords, r += kWords) {
        block.refill([&](int k, U32 words) { map.store_block(r + k, temper(words)); });
    }
    if (n == 0) return;
    block.refill(kSilent);
    map_words(block.words(), n, r, Temper{}, map);
    state.next = n;
}

}  // namespace

void mt19937_discard(Mt19937State& state, uint64_t n) {
    const uint64_t unread = static_cast<uint64_t>(kWords - state.next);
    if (n <= unread) {
        state.next += static_cast<int32_t>(n);
        return;
    }
    n -= unread;
    WorkingBlock block(state.x);
    for (;; n -= kWords) {
        block.refill(kSilent);
        if (n <= kWords) break;
    }
    state.next = static_cast<int32_t>(n);
}

}  // namespace nax::rng

using namespace nax::rng;

NAX_WORD_OUTPUT(MT19937, Mt19937State, UnsignedScale)
