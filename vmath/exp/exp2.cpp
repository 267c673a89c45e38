// Exp2:  2^x = 2^floor(x) 2^(j/16) 2^f,  f = x less x rounded down to a multiple of 1/16, exact.
//
// One kernel serves all levels: with no reduction to pay for, the table in two parts costs next to nothing.
#include "vmath/exp/exp_rare.h"
#include "vmath/exp/exp_tables.inc"
#include "vmath/exp/split.h"
#include "vmath/frame/kernel_exports.h"
#include "vmath/frame/polynomial.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E, int Terms>
struct Exp2 {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 4;
    static constexpr auto rare = by_precision<E>(vsexp2_cout_rare, vdexp2_cout_rare);

    PairTable<E, 16> powers;
    Vector shifter;
    Vector below_two;
    Coefficients<E, Terms> polynomial;
    OrdinaryRange<E> ordinary;

    NAX_VEC auto eval(Vector x, Vector& y, auto care) const {
        // j in the low bits of z
        const Vector z = add_down(x, shifter);
        // f, finite also for Inf and NaN; both differences are exact
        const Vector f = bit_and(sub(x, sub(z, shifter)), below_two);
        // (2^f - 1)/f
        const Vector q = polynomial(f, mul(f, f));
        // 2^(j/16) 2^f = T (1 + t) (1 + f q); the scaling takes the floor of x by itself
        Vector high, low;
        powers.look_up(bits(z), high, low);
        const Vector u = fma(f, q, low);
        y = scale_split<4, 0>(fma(u, high, high), z, x, care);
        return ordinary.excess(x);
    }
    NAX_VEC auto is_rare(Vector x) const { return ordinary.exceeded(x); }
};

alignas(64) constexpr Exp2<Double, 6> exp2_double = {
    {exp2_16, exp2_16_relative_low},
    Double::row(422212465065984.0),        // 1.5 2^48: leaves x in sixteenths
    Double::row_of_bits(kBelowTwoDouble),  // all bits but the 62nd
    {{0.6931471805599342, 0.24022650696194142, 0.055504108392381686, 0.009618141545517354, 0.0013330645418221986,
      0.00015741120530459663}},  // least error on [0, 1/16)
    1021.99951171875,            // 1022 - 2^-11
};

alignas(64) constexpr Exp2<Single, 4> exp2_single = {
    {exp2_16f, exp2_16f_relative_low},
    Single::row(786432.0f),                // 1.5 2^19: leaves x in sixteenths
    Single::row_of_bits(kBelowTwoSingle),  // all bits but the 30th
    {{0.6931471824645996f, 0.24022676050662994f, 0.05549252778291702f, 0.009829008020460606f}},
    126.0f,
};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Exp2, Z0HA, exp2_double)
NAX_UNARY_KERNEL(s, Exp2, Z0HA, exp2_single)
