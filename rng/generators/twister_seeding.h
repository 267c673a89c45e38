// Seeding by an array of words, shared by MT19937 and MT2203.
#pragma once

#include <cstdint>

namespace nax::rng {

// Fills the N words of a twister's state from n seeds; n below 1 stands for the single seed 1.
// M. Matsumoto, T. Nishimura, init_by_array of 2002-01-26 (http://www.math.sci.hiroshima-u.ac.jp/m-mat/MT/MT2002/emt19937ar.html).
template <int N>
void seed_twister(uint32_t (&x)[N], const uint32_t* seeds, int n) {
    static constexpr uint32_t kDefaultSeed = 1;
    if (n < 1) {
        seeds = &kDefaultSeed;
        n = 1;
    }
    x[0] = 19650218u;
    for (int i = 1; i < N; ++i) x[i] = (x[i - 1] ^ (x[i - 1] >> 30)) * 1812433253u + static_cast<uint32_t>(i);

    int i = 1;
    const auto advance = [&] {
        if (++i < N) return;
        x[0] = x[N - 1];
        i = 1;
    };
    for (int round = 0, j = 0; round < (N > n ? N : n); ++round) {
        x[i] = (x[i] ^ ((x[i - 1] ^ (x[i - 1] >> 30)) * 1664525u)) + seeds[j] + static_cast<uint32_t>(j);
        if (++j == n) j = 0;
        advance();
    }
    for (int round = 1; round < N; ++round) {
        x[i] = (x[i] ^ ((x[i - 1] ^ (x[i - 1] >> 30)) * 1566083941u)) - static_cast<uint32_t>(i);
        advance();
    }
    x[0] = 0x80000000u;  // the state is never all zero
}

}  // namespace nax::rng
