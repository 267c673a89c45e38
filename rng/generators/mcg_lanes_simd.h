// Block loops of MCG31 and MCG59 over eight lanes: 32 outputs take four independent products, a fifth carries the lanes on.
#pragma once

#include "rng/generators/mcg.h"
#include "simd/integers.h"

namespace nax::rng {

using namespace simd;

inline namespace NAX_ISA {

inline constexpr int kParts = kLaneCount / kLanes64;

// Eight lanes in one or two registers.
struct Lanes {
    U64 part[kParts];
};

inline Lanes load_lanes(const uint64_t* from) {
    Lanes lanes;
#pragma GCC unroll 16
    for (int i = 0; i < kParts; ++i) lanes.part[i] = load<U64>(from + i * kLanes64);
    return lanes;
}
inline void store_lanes(uint64_t* to, const Lanes& lanes) {
#pragma GCC unroll 16
    for (int i = 0; i < kParts; ++i) store(to + i * kLanes64, lanes.part[i]);
}

// Two folds bring a product of 62 bits to 1 ... 2^31 - 2: after the first it is below 2^32, after the second at most 2^31,
// and both 2^31 - 1 and 2^31 would need a factor of 0 or of the modulus.
inline U64 multiply_lanes(Mcg31, U64 a, U64 b) {
    const U64 mask = broadcast(uint64_t{kMersenne31});
    U64 t = multiply_low_halves(a, b);
    t = (t & mask) + (t >> 31);
    return (t & mask) + (t >> 31);
}
inline U64 multiply_lanes(Mcg59, U64 a, U64 b) { return (a * b) & broadcast(kMask59); }

inline F64 lane_to_double(Mcg31, U64 a) { return small_to_double(a); }
inline F64 lane_to_double(Mcg59, U64 a) { return to_double(a); }

template <class Mcg>
Lanes advance(const Lanes& lanes, uint64_t step) {
    Lanes result;
#pragma GCC unroll 16
    for (int i = 0; i < kParts; ++i) result.part[i] = multiply_lanes(Mcg{}, lanes.part[i], broadcast(step));
    return result;
}

// Where eight lanes go: numbers a + s x, s = (b - a) scale, by one fused multiply-add, or the words themselves.
template <class Mcg>
struct DoubleOutput {
    using Value = double;
    double origin, scale;
    DoubleOutput(double a, double b)
        : origin(a), scale((b - a) * nax_sto_sub_kernel_vrng_coreavx512_engine_property[Mcg::kEngine].double_scale[0]) {}
    void put(double* r, const Lanes& lanes) const {
#pragma GCC unroll 16
        for (int i = 0; i < kParts; ++i) {
            store(r + i * kLanes64, fused(lane_to_double(Mcg{}, lanes.part[i]), broadcast(scale), broadcast(origin)));
        }
    }
};

// The lane goes to double, then to single.
template <class Mcg>
struct SingleOutput {
    using Value = float;
    float origin, scale;
    SingleOutput(float a, float b)
        : origin(a), scale((b - a) * nax_sto_sub_kernel_vrng_coreavx512_engine_property[Mcg::kEngine].single_scale[0]) {}
    void put(float* r, const Lanes& lanes) const {
#pragma GCC unroll 16
        for (int i = 0; i < kParts; ++i) {
            const HalfF32 x = narrow(lane_to_double(Mcg{}, lanes.part[i]));
            store(r + i * kLanes64, fused(x, broadcast_half(scale), broadcast_half(origin)));
        }
    }
};

template <class Mcg>
struct WordOutput;
template <>
struct WordOutput<Mcg31> {
    using Value = uint32_t;
    void put(uint32_t* r, const Lanes& lanes) const {
#pragma GCC unroll 16
        for (int i = 0; i < kParts; ++i) store(r + i * kLanes64, low_halves(lanes.part[i]));
    }
};
template <>
struct WordOutput<Mcg59> {
    using Value = uint64_t;
    void put(uint64_t* r, const Lanes& lanes) const { store_lanes(r, lanes); }
};

// The next `Count` outputs, 8, 16 or 32; the lanes move on by as many.
template <class Mcg, int Count, class Output>
void emit(Lanes& lanes, const uint64_t* steps, const Output& output, typename Output::Value* r) {
    output.put(r, lanes);
    for (int i = 8; i < Count; i += 8) output.put(r + i, advance<Mcg>(lanes, steps[i / 8 - 1]));
    lanes = advance<Mcg>(lanes, steps[Count / 8 - 1]);
}

// The next 1 to 7 outputs: of the sixteen that the lanes and their successors make, the first are written and the eight
// behind them stay.
template <class Mcg, class Output>
void emit_few(Lanes& lanes, int count, const uint64_t* steps, const Output& output, typename Output::Value* r) {
    alignas(64) uint64_t window[2 * kLaneCount];
    alignas(64) typename Output::Value values[kLaneCount];
    store_lanes(window, lanes);
    store_lanes(window + kLaneCount, advance<Mcg>(lanes, steps[0]));
    output.put(values, lanes);
    std::memcpy(r, values, static_cast<unsigned>(count) * sizeof(values[0]));
    lanes = load_lanes(window + count);
}

template <class Mcg, class Output>
void generate(Lanes& lanes, const uint64_t* steps, int n, Output output, typename Output::Value* r) {
    for (; n >= 32; n -= 32, r += 32) emit<Mcg, 32>(lanes, steps, output, r);
    if (n & 16) emit<Mcg, 16>(lanes, steps, output, r);
    r += n & 16;
    if (n & 8) emit<Mcg, 8>(lanes, steps, output, r);
    r += n & 8;
    if (n & 7) emit_few<Mcg>(lanes, n & 7, steps, output, r);
}

// Real output: on the lanes of chunk 14; the payload then is lane 0.
template <class Mcg, class Output>
int generate_real(Stream* stream, int n, const Output& output, typename Output::Value* r) {
    LaneBlock* const block = find_lanes(stream);
    if (block == nullptr) return STO_STATUS_NO_MEMORY;
    if (n <= 0) return STO_STATUS_OK;
    const uint64_t steps[4] = {block->steps[0][0], block->steps[1][0], block->steps[2][0], block->steps[3][0]};
    Lanes lanes = load_lanes(block->lanes);
    generate<Mcg>(lanes, steps, n, output, r);
    store_lanes(block->lanes, lanes);
    payload<typename Mcg::State>(stream).x = static_cast<typename Mcg::Word>(block->lanes[0]);
    return STO_STATUS_OK;
}

// Integer output: on the payload, with lanes that last for the call.
template <class Mcg>
int generate_words(Stream* stream, int n, typename Mcg::Word* r) {
    if (n <= 0) return STO_STATUS_OK;
    auto& state = payload<typename Mcg::State>(stream);
    Powers computed;
    const Powers* powers = &kDefaultPowers<Mcg>;
    if (state.a != Mcg::kMultiplier) {
        computed = powers_of(state.a, Mcg::multiply);
        powers = &computed;
    }
    Lanes lanes = load_lanes(powers->first);
    for (U64& part : lanes.part) part = multiply_lanes(Mcg{}, part, broadcast(uint64_t{state.x}));
    // In short calls the state moves on by itself, so that the next call need not wait for the lanes.
    uint64_t next = 0;
    if (n < 32) {
        const uint64_t whole = n < 8 ? 1 : powers->steps[n / 8 - 1];
        next = Mcg::reduce(Mcg::multiply(state.x, Mcg::multiply(whole, powers->first[n & 7])));
    }
    generate<Mcg>(lanes, powers->steps, n, WordOutput<Mcg>{}, r);
    state.x = static_cast<typename Mcg::Word>(n < 32 ? next : lanes.part[0][0]);
    return STO_STATUS_OK;
}

// One step of `Count` outputs as an entry of its own.
template <class Mcg, int Count, class Output>
void engine(LaneBlock* block, const Output& output, typename Output::Value* r) {
    const uint64_t steps[4] = {block->steps[0][0], block->steps[1][0], block->steps[2][0], block->steps[3][0]};
    Lanes lanes = load_lanes(block->lanes);
    if constexpr (Count >= 8) emit<Mcg, Count>(lanes, steps, output, r);
    else emit_few<Mcg>(lanes, Count, steps, output, r);
    store_lanes(block->lanes, lanes);
}

}  // namespace NAX_ISA
}  // namespace nax::rng

// Spells the entries of one generator's steps: the lane block (chunk 14), the interval and the output.
#define NAX_ENGINE(name, Mcg, count)                                                                                     \
    extern "C" void nax_sto_sub_kernel_vrng_coreavx512_##name##_engine##count##_double(void* lanes, double a, double b,  \
                                                                                       double* r) {                     \
        engine<Mcg, count>(static_cast<LaneBlock*>(lanes), DoubleOutput<Mcg>(a, b), r);                                  \
    }                                                                                                                    \
    extern "C" void nax_sto_sub_kernel_vrng_coreavx512_##name##_engine##count##_float(void* lanes, float a, float b,     \
                                                                                      float* r) {                       \
        engine<Mcg, count>(static_cast<LaneBlock*>(lanes), SingleOutput<Mcg>(a, b), r);                                  \
    }
#define NAX_ENGINES(name, Mcg) \
    NAX_ENGINE(name, Mcg, 1)   \
    NAX_ENGINE(name, Mcg, 2)   \
    NAX_ENGINE(name, Mcg, 4)   \
    NAX_ENGINE(name, Mcg, 8)   \
    NAX_ENGINE(name, Mcg, 16)  \
    NAX_ENGINE(name, Mcg, 32)
