// The operations of the trigonometric functions: a core for arguments within the short reduction, and what becomes of
// the longer ones.
//
//     degrees, half turns    folded exactly, then the core
//     radians of double      HA and LA the long reduction in fixed point, EP the scalar path
//     radians of float       the long reduction in double lanes
//
// Only Inf and NaN are rare in the end.
#pragma once

#include "vmath/frame/kernel_exports.h"
#include "vmath/trig/cores.h"
#include "vmath/trig/long_reduction.h"
#include "vmath/trig/trig_rare.h"

namespace nax::vmath::NAX_ISA {

// Lanes of the mask by the scalar path, which has no status for finite arguments; anything in the others.
template <auto Rare, class Vector, int NO>
NAX_VEC void scalar_values(uint32_t mask, Vector x, Vector (&y)[NO]) {
    using T = typename PrecisionOf<Vector>::Element;
    constexpr int lanes = PrecisionOf<Vector>::lanes;
    alignas(64) T arguments[lanes], results[NO][lanes];
    store(arguments, x);
    for (int k = 0; k < NO; ++k) store(results[k], x);
    // What its steps round is nobody's business: vector code raises nothing.
    const uint32_t words = platform::read_mxcsr();
    for (; mask != 0; mask &= mask - 1) {
        const int lane = __builtin_ctz(mask);
        if constexpr (NO == 2)
            Rare(arguments + lane, results[0] + lane, results[1] + lane);
        else
            Rare(arguments + lane, results[0] + lane);
    }
    platform::write_mxcsr(words);
    for (int k = 0; k < NO; ++k) y[k] = load(results[k]);
}

template <Level L, class E, Function F, Unit U, auto Rare>
struct AllValues {
    using Vector = typename E::Vector;
    using Core = decltype(make_core<L, E, F, U>());
    static constexpr int outputs = Core::outputs;

    Core core = make_core<L, E, F, U>();

    // Arguments within the short reduction.
    NAX_VEC void short_values(Vector x, Vector (&y)[outputs]) const {
        core.value(takes_magnitude(U, F) ? magnitude(x) : x, y);
        core.finish(x, y);
    }
    // Lanes beyond it; of Inf and NaN, anything.
    NAX_VEC void long_values(uint32_t beyond, Vector x, Vector (&y)[outputs]) const {
        if constexpr (is_exact(U)) {
            folded_values(x, y);
        } else if constexpr (L == Level::EP && std::is_same_v<E, Double>) {
            scalar_values<Rare>(beyond & ~lane_bits(is_class<kNan | kInf>(x)), x, y);
        } else if constexpr (std::is_same_v<E, Double>) {
            NAX_ISA::long_values<F>(x, y);
        } else {
            static constexpr auto lanes = make_lanes<F, U>();
            const auto value = [](auto a, auto& b) __attribute__((always_inline)) { long_value_of_float(lanes, a, b); };
            in_double_lanes(x, y, value);
        }
    }

private:
    NAX_VEC void folded_values(Vector x, Vector (&y)[outputs]) const {
        core.value(fold<E, U>(x), y);
        core.finish(x, y);
    }
};

template <Level L, class E, Function F, Unit U, auto Rare, int Unroll>
struct TrigBase {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = Unroll;
    static constexpr auto rare = Rare;
    static constexpr int outputs = F == Function::SineCosine ? 2 : 1;

    AllValues<L, E, F, U, Rare> values = {};
    OrdinaryRange<E> ordinary = {first_long<E>(U)};

    NAX_VEC auto is_rare(Vector x) const { return is_class<kNan | kInf>(x); }

protected:
    NAX_VEC auto eval_all(Vector x, Vector (&y)[outputs]) const {
        values.short_values(x, y);
        return ordinary.excess(x);
    }
    // Vectors all on one side of the limit pay for that one only.
    NAX_VEC auto eval_wide_all(Vector x, Vector (&y)[outputs]) const {
        const auto beyond = ordinary.exceeded(x);
        const uint32_t lanes = lane_bits(beyond);
        for (int k = 0; k < outputs; ++k) y[k] = x;
        if (lanes != (uint64_t{1} << E::lanes) - 1) values.short_values(x, y);
        if (lanes != 0) {
            Vector long_y[outputs];
            values.long_values(lanes, x, long_y);
            for (int k = 0; k < outputs; ++k) y[k] = choose(beyond, long_y[k], y[k]);
        }
        // Where no scalar path follows, rare lanes have NaN.
        const auto rare = is_rare(x);
        for (int k = 0; k < outputs; ++k) y[k] = choose(rare, sub(x, x), y[k]);
        return rare;
    }
};

// One result.
template <Level L, class E, Function F, Unit U, auto Rare, int Unroll>
struct Trig : TrigBase<L, E, F, U, Rare, Unroll> {
    using Vector = typename E::Vector;
    NAX_VEC auto eval(Vector x, Vector& y) const {
        Vector results[1];
        const auto verdict = this->eval_all(x, results);
        y = results[0];
        return verdict;
    }
    NAX_VEC auto eval_wide(Vector x, Vector& y) const {
        Vector results[1];
        const auto rare = this->eval_wide_all(x, results);
        y = results[0];
        return rare;
    }
};

// Sine and cosine.
template <Level L, class E, Function F, Unit U, auto Rare, int Unroll>
struct TwoTrig : TrigBase<L, E, F, U, Rare, Unroll> {
    using Vector = typename E::Vector;
    NAX_VEC auto eval(Vector x, Vector& s, Vector& c) const {
        Vector results[2];
        const auto verdict = this->eval_all(x, results);
        s = results[0];
        c = results[1];
        return verdict;
    }
    NAX_VEC auto eval_wide(Vector x, Vector& s, Vector& c) const {
        Vector results[2];
        const auto rare = this->eval_wide_all(x, results);
        s = results[0];
        c = results[1];
        return rare;
    }
};

}  // namespace nax::vmath::NAX_ISA
