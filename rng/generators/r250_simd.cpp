// Output of R250: short calls walk the ring, long ones run over a straight array of words.
#include "rng/generators/r250.h"

#include <algorithm>

#include "rng/generators/to_real.h"

using namespace nax::rng;

namespace {

// words[k] = words[k - 250] xor words[k - 147] for `count` words; both lags exceed the 64 words of a round.
void extend(uint32_t* words, long count) {
    constexpr int kRound = 4 * kLanes32;
    long k = 0;
    for (; k + kRound <= count; k += kRound) {
#pragma GCC unroll 16
        for (int part = 0; part < kRound; part += kLanes32) {
            const uint32_t* const at = words + k + part;
            store(words + k + part, load<U32>(at - kR250Lag) ^ load<U32>(at - kR250Short));
        }
    }
    for (; k < count; ++k) words[k] = words[k - kR250Lag] ^ words[k - kR250Short];
}

// The ring in the order of age, oldest first.
void straighten(const R250State& state, uint32_t* words) {
    const uint32_t to_end = kR250Lag - state.i;
    std::memcpy(words, state.x + state.i, 4 * to_end);
    std::memcpy(words + to_end, state.x, 4 * state.i);
}

void keep_last(R250State& state, const uint32_t* end) {
    std::memcpy(state.x, end - kR250Lag, sizeof(state.x));
    state.i = 0;
    state.j = kR250Start;
}

// The ring path: `put(k, word)` takes the words one by one.
template <class Put>
void walk_ring(R250State& state, int n, Put put) {
    for (int k = 0; k < n; ++k) {
        const uint32_t word = state.x[state.i] ^ state.x[state.j];
        state.x[state.i] = word;
        state.i = state.i + 1 == kR250Lag ? 0 : state.i + 1;
        state.j = state.j + 1 == kR250Lag ? 0 : state.j + 1;
        put(k, word);
    }
}

int generate_words(Stream* stream, int n, uint32_t* r) {
    R250State& state = payload<R250State>(stream);
    if (n < kR250Lag) {
        walk_ring(state, n, [r](int k, uint32_t word) { r[k] = word; });
        return STO_STATUS_OK;
    }
    uint32_t window[2 * kR250Lag];
    straighten(state, window);
    extend(window + kR250Lag, kR250Lag);
    std::memcpy(r, window + kR250Lag, 4 * kR250Lag);
    extend(r + kR250Lag, n - kR250Lag);
    keep_last(state, r + n);
    return STO_STATUS_OK;
}

// Words go through a window that stays in the first-level cache: the last 250, then a block of new ones.
template <class T>
int generate_real(Stream* stream, int n, T* r, T a, T b) {
    constexpr int kBlock = 2048;
    R250State& state = payload<R250State>(stream);
    const UnfusedScale<T> map(a, b, dbInv2P32M1[0]);
    if (n < kR250Lag) {
        uint32_t words[kR250Lag];
        walk_ring(state, n, [&words](int k, uint32_t word) { words[k] = word; });
        map_words(words, n, r, map);
        return STO_STATUS_OK;
    }
    alignas(64) uint32_t window[kR250Lag + kBlock];
    straighten(state, window);
    uint32_t* const fresh = window + kR250Lag;
    for (int done = 0; done < n;) {
        const int count = std::min(kBlock, n - done);
        extend(fresh, count);
        map_words(fresh, count, r + done, map);
        std::memmove(window, fresh + count - kR250Lag, 4 * kR250Lag);
        done += count;
    }
    keep_last(state, fresh);
    return STO_STATUS_OK;
}

}  // namespace

extern "C" {

int __stoiBRngR250(nax_stream* stream, int n, void* r) { return generate_words(stream, n, static_cast<uint32_t*>(r)); }

int __stodBRngR250(nax_stream* stream, int n, double* r, double a, double b) {
    return generate_real(stream, n, r, a, b);
}

int __stosBRngR250(nax_stream* stream, int n, float* r, float a, float b) { return generate_real(stream, n, r, a, b); }

}  // extern "C"
