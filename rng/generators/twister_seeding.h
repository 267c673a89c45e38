// Seeding by an array of words, shared by MT19937 and MT2203.
#pragma once

#include <cstdint>

namespace nax::rng {

// What the filling starts from, whatever the seeds.
template <int N>
struct FirstFill {
    uint32_t x[N];
    constexpr FirstFill() : x() {
        x[0] = 19650218u;
        for (int i = 1; i < N; ++i) x[i] = (x[i - 1] ^ (x[i - 1] >> 30)) * 1812433253u + static_cast<uint32_t>(i);
    }
};

// Fills the N words of a twister's state from n seeds; n below 1 stands for the single seed 1.
// M. Matsumoto, T. Nishimura, init_by_array of 2002-01-26 (http://www.math.sci.hiroshima-u.ac.jp/m-mat/MT/MT2002/emt19937ar.html).
template <int N>
void seed_twister(uint32_t (&x)[N], const uint32_t* seeds, int n) {
    static constexpr uint32_t kDefaultSeed = 1;
    if (n < 1) {
        seeds = &kDefaultSeed;
        n = 1;
    }
    static constexpr FirstFill<N> kFill;
    // Each word needs the one before it, the first one the last: the running value. Word 0 takes no part but to start it.
    uint32_t word = kFill.x[0];
    const auto pass = [&](int from, int to, uint32_t multiplier, const auto& next) __attribute__((always_inline)) {
        for (int i = from; i < to; ++i) x[i] = word = next(i, (word ^ (word >> 30)) * multiplier);
    };
    int j = 0;
    const auto with_seed = [&](uint32_t old, uint32_t mixed) __attribute__((always_inline)) {
        uint32_t added = seeds[j] + static_cast<uint32_t>(j);
        // The compiler would regroup the sum and put both additions behind the word that is waited for.
        __asm__("" : "+r"(added));
        if (++j == n) j = 0;
        return (old ^ mixed) + added;
    };
    // The first round of the words meets the fill, the others what stands there.
    pass(1, N, 1664525u, [&](int i, uint32_t mixed) { return with_seed(kFill.x[i], mixed); });
    int left = (N > n ? N : n) - (N - 1);
    for (; left >= N - 1; left -= N - 1) {
        pass(1, N, 1664525u, [&](int i, uint32_t mixed) { return with_seed(x[i], mixed); });
    }
    pass(1, 1 + left, 1664525u, [&](int i, uint32_t mixed) { return with_seed(x[i], mixed); });
    const auto without_seed = [&](int i, uint32_t mixed) { return (x[i] ^ mixed) - static_cast<uint32_t>(i); };
    pass(1 + left, N, 1566083941u, without_seed);
    pass(1, 1 + left, 1566083941u, without_seed);
    x[0] = 0x80000000u;  // the state is never all zero
}

}  // namespace nax::rng
