// Exp:  e^x = 2^N e^r,  N = x log2(e) rounded down to a multiple of 2^-b,  r = x - N ln2 in [0, ln2 2^-b).
//
// The fraction of N indexes a table of powers of two, its whole part goes to the final scaling. HA carries the table in
// two parts and ln2 in two; LA leaves out the low part of the table; EP shortens the polynomial (double) or puts all of
// the fraction into tables (float). e^r - 1 never leaves the size of the table's step, so its rounding hardly counts.
#include "vmath/exp/exp_rare.h"
#include "vmath/exp/exp_tables.inc"
#include "vmath/exp/split.h"
#include "vmath/frame/kernel_exports.h"
#include "vmath/frame/polynomial.h"

namespace nax::vmath::NAX_ISA {
namespace {

namespace double_ha {
struct Exp {
    using Precision = Double;
    using Vector = Double::Vector;
    static constexpr int unroll = 2;
    static constexpr auto rare = vdexp_cout_rare;

    PairTable<Double, 16> powers;
    Vector log2_e;
    Vector shifter;
    Vector ln2_high, ln2_low;
    Vector below_two;
    Coefficients<Double, 6> polynomial;
    OrdinaryRange<Double> ordinary;

    NAX_VEC auto eval(Vector x, Vector& y, auto care) const {
        // N, and j in the low bits of z
        const Vector z = fma_down(x, log2_e, shifter);
        const Vector n = sub(z, shifter);
        // r, finite also for Inf and NaN
        const Vector r = bit_and(fnma(n, ln2_low, fnma(n, ln2_high, x)), below_two);
        // (e^r - 1)/r
        const Vector q = polynomial(r, mul(r, r));
        // 2^(j/16) e^r = T (1 + t) (1 + r q)
        Vector high, low;
        powers.look_up(bits(z), high, low);
        const Vector u = fma(r, q, low);
        y = scale_split<4, 1023>(fma(u, high, high), z, n, care);
        return ordinary.excess(x);
    }
    NAX_VEC auto is_rare(Vector x) const { return ordinary.exceeded(x); }
};

alignas(64) constexpr Exp exp = {
    {exp2_16, exp2_16_relative_low},
    Double::row(0x1.71547652b82fep+0),     // log2(e)
    Double::row(kSixteenthsShifter),       // leaves N in sixteenths
    Double::row(0x1.62e42fefa39efp-1),     // ln2; N has few bits, so the fused difference is exact
    Double::row(0x1.abc9e3b39803fp-56),    // ln2 less the former
    Double::row_of_bits(kBelowTwoDouble),  // all bits but the 62nd
    {{0.999999999999984, 0.5000000000059126, 0.1666666658485894, 0.0416667205488057, 0.008331512908898442,
      0.0014193283516881214}},  // least error on [0, ln2/16), 2^-56
    0x1.61da04cbafe44p+9,       // 1021 ln2: from here on overflow or a denormal result threatens
};
}  // namespace double_ha

namespace double_la {
struct Exp {
    using Precision = Double;
    using Vector = Double::Vector;
    static constexpr int unroll = 4;
    static constexpr auto rare = vdexp_cout_rare;

    Table<Double, 16> powers;
    Vector log2_e;
    Vector shifter;
    Vector ln2_high, ln2_low;
    Vector below_two;
    Coefficients<Double, 6> polynomial;
    OrdinaryRange<Double> ordinary;

    NAX_VEC auto eval(Vector x, Vector& y, auto care) const {
        // N, and j in the low bits of z
        const Vector z = fma_down(x, log2_e, shifter);
        const Vector n = sub(z, shifter);
        // r, finite also for Inf and NaN
        const Vector r = bit_and(fnma(n, ln2_low, fnma(n, ln2_high, x)), below_two);
        // e^r - 1
        const Vector p = mul(r, polynomial(r, mul(r, r)));
        // 2^(j/16) e^r
        const Vector t = powers[bits(z)];
        y = scale_split<4, 1023>(fma(t, p, t), z, n, care);
        return ordinary.excess(x);
    }
    NAX_VEC auto is_rare(Vector x) const { return ordinary.exceeded(x); }
};

alignas(64) constexpr Exp exp = {
    exp2_16,
    Double::row(0x1.71547652b82fep+0),     // log2(e)
    Double::row(kSixteenthsShifter),       // leaves N in sixteenths
    Double::row(0x1.62e42fefa39efp-1),     // ln2
    Double::row(0x1.abc9e3b39803fp-56),    // ln2 less the former
    Double::row_of_bits(kBelowTwoDouble),  // all bits but the 62nd
    {{0.999999999999984, 0.5000000000010838, 0.16666666637508337, 0.041666695348322125, 0.008332058899382488,
      0.0014149452874381984}},  // least error on [0, ln2/16), 2^-50.4
    0x1.61da04cbafe44p+9,       // 1021 ln2
};
}  // namespace double_la

namespace double_ep {
struct Exp {
    using Precision = Double;
    using Vector = Double::Vector;
    static constexpr int unroll = 4;
    static constexpr auto rare = vdexp_cout_rare;

    Table<Double, 16> powers;
    Vector log2_e;
    Vector shifter;
    Vector ln2;
    Vector below_two;
    Coefficients<Double, 3> polynomial;
    OrdinaryRange<Double> ordinary;

    NAX_VEC auto eval(Vector x, Vector& y, auto care) const {
        // N, and j in the low bits of z
        const Vector z = fma_down(x, log2_e, shifter);
        const Vector n = sub(z, shifter);
        // r, finite also for Inf and NaN
        const Vector r = bit_and(fnma(n, ln2, x), below_two);
        // 2^(j/16) e^r
        const Vector t = powers[bits(z)];
        const Vector q = fma(fma(polynomial.c[2], r, polynomial.c[1]), r, polynomial.c[0]);
        y = scale_split<4, 1023>(fma(q, mul(t, r), t), z, n, care);
        return ordinary.excess(x);
    }
    NAX_VEC auto is_rare(Vector x) const { return ordinary.exceeded(x); }
};

alignas(64) constexpr Exp exp = {
    exp2_16,
    Double::row(0x1.71547652b82fep+0),                               // log2(e)
    Double::row(kSixteenthsShifter),                                 // leaves N in sixteenths
    Double::row(0x1.62e42fefa39efp-1),                               // ln2
    Double::row_of_bits(kBelowTwoDouble),                            // all bits but the 62nd
    {{1.000000863624094, 0.4999005827986578, 0.17032218485319242}},  // least error on [0, ln2/16), 2^-28.7
    0x1.61da04cbafe44p+9,                                            // 1021 ln2
};
}  // namespace double_ep

namespace single_ha {
struct Exp {
    using Precision = Single;
    using Vector = Single::Vector;
    static constexpr int unroll = 2;
    static constexpr auto rare = vsexp_cout_rare;

    PairTable<Single, 32> powers;
    Vector log2_e;
    Vector shifter;
    Vector ln2_high, ln2_low;
    Vector below_two;
    Coefficients<Single, 2> polynomial;
    [[no_unique_address]] InfinityOf<Single> infinity_of;
    OrdinaryRange<Single> ordinary;

    NAX_VEC auto eval(Vector x, Vector& y, auto care) const {
        // N, and j in the low bits of z
        const Vector z = fma_down(x, log2_e, shifter);
        const Vector n = sub(z, shifter);
        // r, finite also for Inf and NaN
        const Vector r = bit_and(fnma(n, ln2_low, fnma(n, ln2_high, x)), below_two);
        // 2^(N + j/32)
        Vector high, low;
        powers.look_up(bits(z), high, low);
        const Vector s = scale_split<5, 0>(high, z, n, care);
        // t + e^r - 1
        const Vector u = fma(mul(r, r), fma(polynomial.c[1], r, polynomial.c[0]), add(low, r));
        // beside an infinite S the other term may be NaN
        y = infinity_of(fma(u, s, s), s, care);
        return ordinary.excess(x);
    }
    NAX_VEC auto is_rare(Vector x) const { return ordinary.exceeded(x); }
};

alignas(64) constexpr Exp exp = {
    {exp2_32f, exp2_32f_relative_low},
    Single::row(0x1.715476p+0f),                    // log2(e)
    Single::row(393216.0f),                         // 1.5 2^18: leaves N in 1/32
    Single::row(0x1.62e43p-1f),                     // ln2; N has few bits, so the fused difference is exact
    Single::row(-0x1.05c61p-29f),                   // ln2 less the former
    Single::row_of_bits(kBelowTwoSingle),           // all bits but the 30th
    {{0.5000146627426147f, 0.16667155921459198f}},  // least error on [0, ln2/32), 2^-28.7
    {},
    87.33654022216797f,  // 126 ln2
};
}  // namespace single_ha

namespace single_la {
struct Exp {
    using Precision = Single;
    using Vector = Single::Vector;
    static constexpr int unroll = 2;
    static constexpr auto rare = vsexp_cout_rare;

    Table<Single, 32> coarse, fine;
    Vector log2_e;
    Vector shifter;
    Vector ln2_high, ln2_low;
    Vector half;
    OrdinaryRange<Single> ordinary;

    NAX_VEC auto eval(Vector x, Vector& y, auto care) const {
        // N to nearest: r on both sides of 0 halves the error of the straight line below
        const Vector z = fma(x, log2_e, shifter);
        const Vector n = sub(z, shifter);
        // r, harmless also for Inf and NaN
        const Vector r = min_magnitude(fnma(n, ln2_low, fnma(n, ln2_high, x)), half);
        // 2^(j/1024)
        const Vector s = mul(fine[bits(z)], coarse[shift_right<5>(bits(z))]);
        // e^r = 1 + r, as r < 2^-11
        y = scale_split<10, 0>(fma(s, r, s), z, n, care);
        return ordinary.excess(x);
    }
    NAX_VEC auto is_rare(Vector x) const { return ordinary.exceeded(x); }
};

alignas(64) constexpr Exp exp = {
    exp2_32f,
    exp2_1024f,
    Single::row(0x1.715476p+0f),   // log2(e)
    Single::row(12288.0f),         // 1.5 2^13: leaves N in 1/1024
    Single::row(0x1.62e43p-1f),    // ln2
    Single::row(-0x1.05c61p-29f),  // ln2 less the former
    Single::row(0.5f),
    87.33654022216797f,  // 126 ln2
};
}  // namespace single_la

namespace single_ep {
struct Exp {
    using Precision = Single;
    using Vector = Single::Vector;
    static constexpr int unroll = 1;
    static constexpr auto rare = vsexp_cout_rare;

    Table<Single, 16> finest;
    Table<Single, 32> fine, coarse;
    Vector log2_e;
    Vector shifter;
    OrdinaryRange<Single> ordinary;

    NAX_VEC auto eval(Vector x, Vector& y, auto care) const {
        const Vector z = fma_down(x, log2_e, shifter);
        const Vector n = sub(z, shifter);
        // 2^(j/16384) from 4, 5 and 5 bits of j
        const auto j = bits(z);
        const Vector t = mul(mul(finest[j], fine[shift_right<4>(j)]), coarse[shift_right<9>(j)]);
        y = scale_split<14, 256>(t, z, n, care);
        return ordinary.excess(x);
    }
    NAX_VEC auto is_rare(Vector x) const { return ordinary.exceeded(x); }
};

alignas(64) constexpr Exp exp = {
    exp2_16384f,
    exp2_1024f,
    exp2_32f,
    Single::row(0x1.715476p+0f),  // log2(e)
    Single::row(768.0f),          // 1.5 2^9: leaves N in 1/16384
    87.33654022216797f,           // 126 ln2
};
}  // namespace single_ep

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Exp, Z0HA, double_ha::exp)
NAX_UNARY_KERNEL(d, Exp, Z0LA, double_la::exp)
NAX_UNARY_KERNEL(d, Exp, Z0EP, double_ep::exp)
NAX_UNARY_KERNEL(s, Exp, Z0HA, single_ha::exp)
NAX_UNARY_KERNEL(s, Exp, Z0LA, single_la::exp)
NAX_UNARY_KERNEL(s, Exp, Z0EP, single_ep::exp)
