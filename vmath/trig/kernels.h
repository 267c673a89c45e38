// The operations of the trigonometric functions: a core for arguments within the short reduction, and what becomes of
// the longer ones.
//
//     degrees, half turns    folded exactly, then the core
//     radians, HA and LA     the long reduction: in fixed point for double, in double lanes for float
//     radians, EP            the scalar path
//
// Only Inf and NaN are rare in the end.
#pragma once

#include "vmath/frame/kernel_exports.h"
#include "vmath/trig/cores.h"
#include "vmath/trig/long_reduction.h"
#include "vmath/trig/trig_rare.h"

namespace nax::vmath::NAX_ISA {

// Lanes of the mask by the scalar path, which needs no status for finite arguments.
template <auto Rare, class Vector, int NO>
NAX_VEC void scalar_values(uint32_t mask, Vector x, Vector (&y)[NO]) {
    using T = typename PrecisionOf<Vector>::Element;
    constexpr int lanes = PrecisionOf<Vector>::lanes;
    alignas(64) T arguments[lanes], results[NO][lanes];
    store(arguments, x);
    for (int k = 0; k < NO; ++k) store(results[k], y[k]);
    for (; mask != 0; mask &= mask - 1) {
        const int lane = __builtin_ctz(mask);
        if constexpr (NO == 2)
            Rare(arguments + lane, results[0] + lane, results[1] + lane);
        else
            Rare(arguments + lane, results[0] + lane);
    }
    for (int k = 0; k < NO; ++k) y[k] = load(results[k]);
}

template <Level L, class E, Function F, Unit U, auto Rare>
struct AllValues {
    using Vector = typename E::Vector;
    using Lanes = Core<L, E, F, U>;
    static constexpr int outputs = Lanes::outputs;
    static constexpr bool widened = !std::is_same_v<typename Lanes::E, E>;

    Lanes core = make_core<L, E, F, U>();

    // Arguments within the short reduction.
    NAX_VEC void short_values(Vector x, Vector (&y)[outputs]) const {
        in_lanes(
            x, y, [&](auto a, auto& b) __attribute__((always_inline)) {
                core.value(takes_magnitude(U, F) ? magnitude(a) : a, b);
                core.finish(a, b);
            });
    }
    // Beyond it; of Inf and NaN, anything.
    NAX_VEC void long_values(Vector x, Vector (&y)[outputs]) const {
        if constexpr (is_exact(U)) {
            folded_values(x, y);
        } else if constexpr (L == Level::EP) {
            scalar_values<Rare>(lane_bits(greater(E::row_of_bits(E::exponent_field), magnitude(x))), x, y);
        } else if constexpr (std::is_same_v<E, Double>) {
            NAX_ISA::long_values<F>(x, y);
        } else {
            static constexpr auto lanes = make_core<Level::HA, E, F, U>();
            double_lanes(
                x, y, [&](auto a, auto& b) __attribute__((always_inline)) { long_value_of_float(lanes, a, b); });
        }
    }

private:
    NAX_VEC void folded_values(Vector x, Vector (&y)[outputs]) const {
        const Vector folded = fold<E, U>(x);
        in_lanes(
            folded, y, [&](auto a, auto& b) __attribute__((always_inline)) { core.value(a, b); });
        if constexpr (is_exact(U) && !widened) {
            core.finish(x, y);
        } else {
            // what finish does, in float
            if constexpr (F != Function::Tangent) y[0] = without_minus_zero(y[0]);
            if constexpr (takes_magnitude(U, F)) y[0] = bit_xor(y[0], sign_of(x));
        }
    }
    // A float vector goes through a double core in halves.
    template <class Value>
    NAX_VEC void in_lanes(Vector x, Vector (&y)[outputs], Value value) const {
        if constexpr (widened)
            double_lanes(x, y, value);
        else
            value(x, y);
    }
    template <class Value>
    NAX_VEC static void double_lanes(Vector x, Vector (&y)[outputs], Value value) {
        Double::Vector low[outputs], high[outputs];
        value(widen_low(x), low);
        value(widen_high(x), high);
        for (int k = 0; k < outputs; ++k) y[k] = narrow(low[k], high[k]);
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
    NAX_VEC auto eval_wide_all(Vector x, Vector (&y)[outputs]) const {
        Vector beyond[outputs];
        values.short_values(x, y);
        for (int k = 0; k < outputs; ++k) beyond[k] = y[k];
        values.long_values(x, beyond);
        for (int k = 0; k < outputs; ++k) y[k] = choose(ordinary.exceeded(x), beyond[k], y[k]);
        return is_rare(x);
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
