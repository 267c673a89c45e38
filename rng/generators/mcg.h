// The two multiplicative generators as traits: state, modulus arithmetic, default multiplier.
#pragma once

#include "rng/generators/mcg_lanes.h"
#include "rng/generators/modular_power.h"

namespace nax::rng {

// x(n+1) = a x(n) mod 2^31 - 1, a a primitive root.
struct Mcg31 {
    using State = Mcg31State;
    using Word = uint32_t;
    static constexpr uint32_t kEngine = 0;
    static constexpr uint64_t kMultiplier = 1132489760;
    static constexpr uint64_t multiply(uint64_t a, uint64_t b) {
        return multiply_mod_mersenne31(static_cast<uint32_t>(a), static_cast<uint32_t>(b));
    }
    static uint64_t power(uint64_t a, uint64_t n) { return __stoiPowMod2P31M1(static_cast<uint32_t>(a), n); }
    // The state's words: multiplicative inverses exist for all but 0, so a product of the two is never 0.
    static constexpr uint64_t reduce(uint64_t x) { return x; }
};

// x(n+1) = a x(n) mod 2^59, a = 13^13. Powers of a are kept modulo 2^64: only products are masked.
struct Mcg59 {
    using State = Mcg59State;
    using Word = uint64_t;
    static constexpr uint32_t kEngine = 1;
    static constexpr uint64_t kMultiplier = 302875106592253;
    static constexpr uint64_t multiply(uint64_t a, uint64_t b) { return a * b; }
    static uint64_t power(uint64_t a, uint64_t n) { return __stoiPowMod2P59(a, n); }
    static constexpr uint64_t reduce(uint64_t x) { return x & kMask59; }
};

template <class Mcg>
inline constexpr Powers kDefaultPowers = powers_of(Mcg::kMultiplier, Mcg::multiply);

// Powers of a stream's multiplier. A multiplier of 0 (only a damaged image has one) counts as the default one.
template <class Mcg>
Powers powers_for(uint64_t a) {
    return a == Mcg::kMultiplier || a == 0 ? kDefaultPowers<Mcg> : powers_of(a, Mcg::multiply);
}

template <class Mcg>
void build_lanes(LaneBlock& block, uint64_t x, uint64_t a, bool with_steps) {
    const Powers powers = powers_for<Mcg>(a);
    for (int i = 0; i < kLaneCount; ++i) block.lanes[i] = Mcg::reduce(Mcg::multiply(x, powers.first[i]));
    if (!with_steps) return;
    for (int step = 0; step < 4; ++step) {
        for (uint64_t& lane : block.steps[step]) lane = powers.steps[step];
    }
}

// What both generators do alike; First makes the first output from the seeds.
template <class Mcg, uint64_t (*First)(int n, const uint32_t* seeds)>
struct Multiplicative {
    using Word = typename Mcg::Word;

    static int seed(Stream* stream, int n, const uint32_t* seeds) {
        const uint64_t first = First(n, seeds);
        payload<typename Mcg::State>(stream) = {static_cast<Word>(first != 0 ? first : 1), static_cast<Word>(Mcg::kMultiplier)};
        LaneBlock* block = find_lanes(stream);
        if (block == nullptr) block = add_lanes(stream, Mcg::kEngine);
        return rebuild(stream, block, true);
    }
    // Stream k of n: every n-th term from the k-th on.
    static int leapfrog(Stream* stream, uint32_t k, int n) {
        auto& state = payload<typename Mcg::State>(stream);
        return on_lanes(stream, true, [&] {
            move(state, k);
            state.a = static_cast<Word>(Mcg::power(state.a, static_cast<uint64_t>(n)));
        });
    }
    static int skip_ahead(Stream* stream, int, uint64_t count) {
        return on_lanes(stream, false, [&] { move(payload<typename Mcg::State>(stream), count); });
    }

private:
    static void move(typename Mcg::State& state, uint64_t count) {
        state.x = static_cast<Word>(Mcg::reduce(Mcg::multiply(state.x, Mcg::power(state.a, count))));
    }
    // Changes the state of a stream that has its lanes, and brings them up to it.
    template <class Change>
    static int on_lanes(Stream* stream, bool with_steps, const Change& change) {
        LaneBlock* const block = find_lanes(stream);
        if (block != nullptr) change();
        return rebuild(stream, block, with_steps);
    }
    static int rebuild(Stream* stream, LaneBlock* block, bool with_steps) {
        if (block == nullptr) return STO_STATUS_NO_MEMORY;
        const auto& state = payload<typename Mcg::State>(stream);
        build_lanes<Mcg>(*block, state.x, state.a, with_steps);
        return STO_STATUS_OK;
    }
};

}  // namespace nax::rng
