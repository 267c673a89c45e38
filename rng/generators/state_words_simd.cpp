// Addition and turning of states of 624 words as rings.
#include "rng/generators/state_words.h"

#include <algorithm>

#include "simd/integers.h"

namespace nax::rng {

using namespace simd;

namespace {

constexpr int kWords = 624;

void xor_run(uint32_t* to, const uint32_t* from, int n) {
    int i = 0;
    for (; i + kLanes32 <= n; i += kLanes32) store(to + i, load<U32>(to + i) ^ load<U32>(from + i));
    for (; i < n; ++i) to[i] ^= from[i];
}

// run(to place, from place, length) over the up to three stretches on which neither ring wraps.
template <class Run>
void over_rings(int to, int from, const Run& run) {
    for (int left = kWords; left > 0;) {
        const int length = std::min(left, kWords - std::max(to, from));
        run(to, from, length);
        to = (to + length) % kWords;
        from = (from + length) % kWords;
        left -= length;
    }
}

}  // namespace

void xor_ring_624(uint32_t* to, int to_start, const uint32_t* from, int from_start) {
    over_rings(to_start, from_start, [&](int t, int f, int length) { xor_run(to + t, from + f, length); });
}

void turn_ring_624(uint32_t* to, int to_start, const uint32_t* from, int from_start) {
    over_rings(to_start, from_start, [&](int t, int f, int length) { std::copy_n(from + f, length, to + t); });
}

}  // namespace nax::rng
