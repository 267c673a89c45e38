// MT2203: the block loop. The recurrence runs as one straight line over a buffer of successive blocks: word p is made from
// words p - 69, p - 68 and p - 35, so a vector of new words never needs its own results. The buffer starts so that new
// vectors are aligned; old words are cut from two aligned neighbours, which the processor forwards from its store queue.
#include <algorithm>

#include "rng/generator.h"
#include "rng/generators/mt2203.h"
#include "rng/generators/to_real.h"

namespace nax::rng {

namespace {

constexpr int kWords = kMt2203Words;
constexpr int kBlocksAtOnce = 16;                                          // 16 blocks are a whole number of vectors
constexpr int kFirstNew = (kWords + kLanes32 - 1) / kLanes32 * kLanes32;   // where new words start
constexpr int kHome = kFirstNew - kWords;                                  // where the state stands
static_assert(kBlocksAtOnce * kWords % kLanes32 == 0);

struct Temper {
    uint32_t b, c;

    U32 operator()(U32 y) const {
        y ^= y >> 12;
        y = xor_and(y, y << 7, broadcast(b));
        y = xor_and(y, y << 15, broadcast(c));
        return y ^ (y >> 18);
    }
};

// Words at place + distance back, for a place on a vector boundary.
template <int back>
inline U32 words_before(const uint32_t* place) {
    constexpr int kShift = (kLanes32 - back % kLanes32) % kLanes32;
    constexpr int kStart = back + kShift;
    const U32 low = load<U32>(place - kStart);
    if constexpr (kShift == 0) return low;
    return join<kShift>(low, load<U32>(place - kStart + kLanes32));
}

// Writes new words from `to` on until at least count of them are there.
inline void extend(uint32_t* to, int count, uint32_t matrix_a) {
    for (const uint32_t* end = to + count; to < end; to += kLanes32) {
        const U32 y = select(broadcast(kMt2203LowerBits), words_before<kWords - 1>(to), words_before<kWords>(to));
        const U32 middle = words_before<kWords - kMt2203Middle>(to);
        store(to, xor_if_odd(middle ^ (y >> 1), y, broadcast(matrix_a)));
    }
}

template <class Map, class T>
void draw(Mt2203State& state, int n, T* r, const Map& map) {
    const Temper temper{state.temper_b, state.temper_c};
    const int unread = std::min(n, kWords - state.next);
    map_words(state.x + state.next, unread, r, temper, map);
    state.next += unread;
    n -= unread;
    r += unread;
    if (n == 0) return;

    alignas(64) uint32_t buffer[kFirstNew + kBlocksAtOnce * kWords + kLanes32];
    std::memcpy(buffer + kHome, state.x, sizeof(state.x));
    while (n > 0) {
        const int blocks = std::min(kBlocksAtOnce, (n + kWords - 1) / kWords);
        const int take = std::min(n, blocks * kWords);
        extend(buffer + kFirstNew, blocks * kWords, state.matrix_a);
        map_words(buffer + kFirstNew, take, r, temper, map);
        std::memmove(buffer + kHome, buffer + kHome + blocks * kWords, sizeof(state.x));
        state.next = take - (blocks - 1) * kWords;
        n -= take;
        r += take;
    }
    std::memcpy(state.x, buffer + kHome, sizeof(state.x));
}

}  // namespace

}  // namespace nax::rng

using namespace nax::rng;

NAX_WORD_OUTPUT(MT2203, Mt2203State, UnsignedScale)
