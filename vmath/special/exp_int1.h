// The vector code of ExpInt1, in double lanes for both precisions.
//
//     E1(x) = exp(-x) F(x),   F(x) = F(x0) (1 + f_1 d + ... + f_n d^n),   exp(-x) = 2^N e^r
//
// x0 is x rounded to five significant bits, d the exact distance from it, at most 2^-5 x0; N a multiple of 1/16 and
// |r| <= ln2/32. Arguments below 2^-20, where the table ends, and those without a normal result go to the scalar path.
#pragma once

#include "vmath/exp/exp_tables.inc"
#include "vmath/frame/kernel_exports.h"
#include "vmath/special/exp_int_rows.inc"
#include "vmath/special/scalar_lanes.h"
#include "vmath/special/special_rare.h"

namespace nax::vmath::NAX_ISA {

// Orders: powers of d, even; ExpOrders: powers of r, from 2 to 4.
template <int Orders, int ExpOrders>
struct ExpIntCore {
    using Vector = Double::Vector;
    using Bits = Double::Bits;
    Vector low = Double::row(0x1p-20), high = Double::row(700.0), minus_log2_e = Double::row(-0x1.71547652b82fep+0);
    Vector shifter = Double::row(0x1.8p48);  // its ulp is 1/16
    Vector ln2 = Double::row(0x1.62e42fefa39efp-1);
    Bits half_step = Double::bits_row(1ll << 47), whole_steps = Double::bits_row(-(1ll << 48));
    Bits first = Double::bits_row((1023 - 20) << 4), sixteen = Double::bits_row(16);
    Table<Double, 16> powers = exp2_16;

    NAX_VEC Vector operator()(Vector x) const {
        // max and min return their second operand where one is NaN.
        const Vector limited = min(max(x, low), high);
        const Bits rounded = (bits(limited) + half_step) & whole_steps;
        const Vector d = sub(limited, from_bits(rounded));
        const Bits row = shift_right<48>(rounded) - first, pair = shift_left<3>(row) - row;
        const auto* const rows = reinterpret_cast<const double(*)[2]>(exp_int_rows);
        Vector value, ignored;
        look_up_pair(rows, pair, value, ignored);
        const Vector p = mul(d, series<1>(rows, pair, d, mul(d, d)));

        const Vector z = fma(limited, minus_log2_e, shifter), n = sub(z, shifter);
        const Vector r = fnma(n, ln2, sub(Double::row(0), limited));
        Vector e = Double::row(1);
        if constexpr (ExpOrders > 3) e = fma(r, Double::row(1.0 / 4), e);
        if constexpr (ExpOrders > 2) e = fma(mul(r, Double::row(1.0 / 3)), e, Double::row(1));
        e = fma(mul(r, Double::row(0.5)), e, Double::row(1));
        e = mul(r, e);

        const Vector f = fma(value, p, value), t = powers[bits(z)];
        return scale(mul(f, fma(t, e, t)), n, Fast{});
    }
    // f_(2 Pair - 1) + f_(2 Pair) d + ...
    template <int Pair>
    NAX_VEC static Vector series(const double (*rows)[2], Bits pair, Vector d, Vector d2) {
        Vector even, odd;
        look_up_pair(rows + Pair, pair, even, odd);
        const Vector two = fma(odd, d, even);
        if constexpr (2 * Pair >= Orders)
            return two;
        else
            return fma(series<Pair + 1>(rows, pair, d, d2), d2, two);
    }
};

template <int Orders, int ExpOrders>
struct ExpIntDouble {
    using Precision = Double;
    using Vector = Double::Vector;
    static constexpr int unroll = 1;
    static constexpr auto rare = vdexpint1_cout_rare;
    ExpIntCore<Orders, ExpOrders> core = {};
    NAX_VEC Double::Mask eval(Vector x, Vector& y) const {
        y = core(x);
        return ~(greater_equal(x, core.low) & less(x, core.high));
    }
    NAX_VEC Double::Mask eval_wide(Vector x, Vector& y) const {
        const auto suspect = eval(x, y);
        return settle_by_scalar<Double>(x, suspect, y, rare);
    }
};

template <int Orders, int ExpOrders>
struct ExpIntSingle {
    using Precision = Single;
    using Vector = Single::Vector;
    static constexpr int unroll = 1;
    static constexpr auto rare = vsexpint1_cout_rare;
    ExpIntCore<Orders, ExpOrders> core = {};
    Vector low = Single::row(0x1p-20f), high = Single::row(99.0f);
    NAX_VEC Single::Mask eval(Vector x, Vector& y) const {
        y = narrow(core(widen_low(x)), core(widen_high(x)));
        return ~(greater_equal(x, low) & less(x, high));
    }
    NAX_VEC Single::Mask eval_wide(Vector x, Vector& y) const {
        const auto suspect = eval(x, y);
        return settle_by_scalar<Single>(x, suspect, y, rare);
    }
};

}  // namespace nax::vmath::NAX_ISA
