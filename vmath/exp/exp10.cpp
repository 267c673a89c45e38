// Exp10:  10^x = 2^N 10^r,  N = x log2(10) rounded down to a multiple of 2^-b,  r = x - N log10(2).
//
// The polynomial works in base 10, so the reduction is as exact as that of Exp. One kernel serves all levels.
#include "vmath/exp/exp10_coefficients.inc"
#include "vmath/exp/exp_rare.h"
#include "vmath/exp/exp_tables.inc"
#include "vmath/exp/split.h"
#include "vmath/frame/kernel_exports.h"
#include "vmath/frame/polynomial.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E, int Entries, int Terms>
struct Exp10 {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 2;
    static constexpr auto rare = by_precision<E>(vsexp10_cout_rare, vdexp10_cout_rare);

    PairTable<E, Entries> powers;
    Vector log2_10;
    Vector shifter;
    Vector log10_2_high, log10_2_low;
    Vector below_two;
    Coefficients<E, Terms> polynomial;
    [[no_unique_address]] InfinityOf<E> infinity_of;
    OrdinaryRange<E> ordinary;

    NAX_VEC auto eval(Vector x, Vector& y, auto care) const {
        // N, and j in the low bits of z
        const Vector z = fma_down(x, log2_10, shifter);
        const Vector n = sub(z, shifter);
        // r, finite also for Inf and NaN
        const Vector r = bit_and(fnma(n, log10_2_low, fnma(n, log10_2_high, x)), below_two);
        // (10^r - 1)/r
        const Vector q = polynomial(r, mul(r, r));
        // S = 2^N, and 10^x = S (1 + t) (1 + r q); beside an infinite S the other term may be NaN
        Vector high, low;
        powers.look_up(bits(z), high, low);
        const Vector scaled = scale_split<by_precision<E>(5, 4), by_precision<E>(0, 1023)>(high, z, n, care);
        const Vector u = fma(r, q, low);
        y = infinity_of(fma(u, scaled, scaled), scaled, care);
        return ordinary.excess(x);
    }
    NAX_VEC auto is_rare(Vector x) const { return ordinary.exceeded(x); }
};

alignas(64) constexpr Exp10<Double, 16, 6> exp10_double = {
    {exp2_16, exp2_16_relative_low},
    Double::row(3.321928094887362),        // log2(10)
    Double::row(kSixteenthsShifter),       // leaves N in sixteenths
    Double::row(0.3010299956639812),       // log10(2); N has few bits, so the fused difference is exact
    Double::row(-2.8037281277851704e-18),  // log10(2) less the former
    Double::row_of_bits(kBelowTwoDouble),  // all bits but the 62nd
    {{2.3025850929940086, 2.6509490552705466, 2.0346785823063307, 1.1712566635458537, 0.5392651004918929,
      0.2115324552507909}},  // least error on [0, log10(2)/16)
    {},
    307.6526555685887,  // 1022 log10(2)
};

alignas(64) constexpr Exp10<Single, 32, 3> exp10_single = {
    {exp2_32f, exp2_32f_relative_low},
    Single::row(0x1.a934fp+1f),            // log2(10)
    Single::row(393216.0f),                // 1.5 2^18: leaves N in 1/32
    Single::row(0x1.344136p-2f),           // log10(2)
    Single::row(-0x1.ec10cp-27f),          // log10(2) less the former
    Single::row_of_bits(kBelowTwoSingle),  // all bits but the 30th
    exp10_single_coefficients,
    {},
    37.929779052734375f,  // 126 log10(2)
};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Exp10, Z0HA, exp10_double)
NAX_UNARY_KERNEL(s, Exp10, Z0HA, exp10_single)
