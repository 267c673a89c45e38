// The two multiplicative generators as traits: state, modulus arithmetic, default multiplier.
#pragma once

#include "rng/generators/lanes.h"
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

// Seeding is done; gives the stream its lanes.
template <class Mcg>
int attach_lanes(Stream* stream) {
    LaneBlock* block = find_lanes(stream);
    if (block == nullptr) block = add_lanes(stream, Mcg::kEngine);
    if (block == nullptr) return STO_STATUS_NO_MEMORY;
    const auto& state = payload<typename Mcg::State>(stream);
    build_lanes<Mcg>(*block, state.x, state.a, true);
    return STO_STATUS_OK;
}

// Stream k of n: every n-th term from the k-th on.
template <class Mcg>
int leapfrog(Stream* stream, uint32_t k, int n) {
    LaneBlock* const block = find_lanes(stream);
    if (block == nullptr) return STO_STATUS_NO_MEMORY;
    auto& state = payload<typename Mcg::State>(stream);
    using Word = typename Mcg::Word;
    state.x = static_cast<Word>(Mcg::reduce(Mcg::multiply(state.x, Mcg::power(state.a, k))));
    state.a = static_cast<Word>(Mcg::power(state.a, static_cast<uint64_t>(n)));
    build_lanes<Mcg>(*block, state.x, state.a, true);
    return STO_STATUS_OK;
}

template <class Mcg>
int skip_ahead(Stream* stream, uint64_t count) {
    LaneBlock* const block = find_lanes(stream);
    if (block == nullptr) return STO_STATUS_NO_MEMORY;
    auto& state = payload<typename Mcg::State>(stream);
    state.x = static_cast<typename Mcg::Word>(Mcg::reduce(Mcg::multiply(state.x, Mcg::power(state.a, count))));
    build_lanes<Mcg>(*block, state.x, state.a, false);
    return STO_STATUS_OK;
}

// Everything of InitStream but the seeding.
template <class Mcg>
int split(int method, Stream* stream, int n, const void* params) {
    switch (method) {
        case NAX_INIT_LEAPFROG: return leapfrog<Mcg>(stream, *static_cast<const uint32_t*>(params), n);
        case NAX_INIT_SKIPAHEAD: return skip_ahead<Mcg>(stream, *static_cast<const uint64_t*>(params));
        case NAX_INIT_SKIPAHEADEX: return STO_STATUS_NO_SKIPAHEADEX;
        default: return STO_STATUS_BAD_METHOD;
    }
}

}  // namespace nax::rng
