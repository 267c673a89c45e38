// Expm1:  e^x - 1 = (S - 1) + S (t + e^r - 1),  S (1 + t) = 2^N,  N = x log2(e) to the nearest multiple of 1/16.
//
// S - 1 is exact wherever it matters, and with N to nearest the second term never cancels more than half of the first.
// N = 0 leaves x + x^2/2 + ..., so small arguments keep all their bits. HA carries every rounding error on: of the
// remainder r, of S r, of both sums. LA keeps the table's low part alone, EP drops it and shortens the polynomial.
// Arguments below -128 ln2 (float: -64 ln2) are raised to that, where the result is -1.
#include "vmath/exp/exp_rare.h"
#include "vmath/exp/exp_tables.inc"
#include "vmath/exp/expm1_coefficients.inc"
#include "vmath/exp/split.h"
#include "vmath/frame/kernel_exports.h"
#include "vmath/frame/polynomial.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct Function {
    static constexpr int unroll = by_precision<E>(2, 4);
    static constexpr auto rare = by_precision<E>(vsexpm1_cout_rare, vdexpm1_cout_rare);
};

// What the shifter below adds to N.
template <class E>
constexpr int shift_bias = by_precision<E>(0, 1023);

// First rows and step of all levels.
template <class E>
struct Split {
    using Vector = typename E::Vector;
    Vector smallest = E::row(by_precision<E>(-0x1.62e43p+5f, -0x1.62e42fefa39efp+6));  // -64 ln2, -128 ln2
    Vector log2_e = E::row(by_precision<E>(0x1.715476p+0f, 0x1.71547652b82fep+0));
    Vector shifter = E::row(by_precision<E>(786432.0f, kSixteenthsShifter));  // leaves N in sixteenths
    Vector ln2 = E::row(by_precision<E>(0x1.62e43p-1f, 0x1.62e42fefa39efp-1));

    // x raised to the smallest argument, NaN kept; N; and j in the low bits of z
    NAX_VEC void operator()(Vector x, Vector& a, Vector& z, Vector& n) const {
        a = max(smallest, x);
        z = fma(a, log2_e, shifter);
        n = sub(z, shifter);
    }
};

template <class E>
constexpr auto ln2_rest = E::row(by_precision<E>(-0x1.05c61p-29f, 0x1.abc9e3b39803fp-56));

// Last rows and step of all levels.
template <class E>
struct Finish {
    using Vector = typename E::Vector;
    [[no_unique_address]] InfinityOf<E> infinity_of = {};
    Vector sign = E::row_of_bits(E::sign_bit);
    Vector limit = E::row(by_precision<E>(86.64339447021484f, 707.7032713517042));  // 125 ln2, 1021 ln2

    // An infinite S is the result: beside it the other terms are NaN. -0 keeps its sign. NaN is rare too.
    NAX_VEC auto operator()(Vector x, Vector s, Vector& y, auto care) const {
        y = infinity_of(y, s, care);
        y = bit_or(y, bit_and(x, sign));
        return not_less(x, limit);
    }
};

template <class E, int Terms>
struct Expm1High {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = Function<E>::unroll;
    static constexpr auto rare = Function<E>::rare;

    Coefficients<E, Terms> polynomial;
    PairTable<E, 16> powers;
    Split<E> split = {};
    Vector ln2_low = ln2_rest<E>;
    Vector one = E::row(1);
    Finish<E> finish = {};

    NAX_VEC auto eval(Vector x, Vector& y, auto care) const {
        Vector a, z, n;
        split(x, a, z, n);
        // r + r_low; the first difference is exact
        const Vector difference = fnma(n, split.ln2, a);
        const Vector r = fnma(n, ln2_low, difference);
        const Vector r_low = fnma(n, ln2_low, sub(difference, r));
        // S, and S - 1 with its error
        Vector power, t;
        powers.look_up(bits(z), power, t);
        const Vector s = scale_split<4, shift_bias<E>>(power, z, n, care);
        const Vector s1 = sub(s, one);
        const Vector back = sub(s1, s);
        const Vector s1_low = sub(sub(s, sub(s1, back)), add(one, back));
        // (S - 1) + S r with its errors
        const Vector sr = mul(s, r);
        const Vector sum = add(s1, sr);
        const Vector sum_low = add(sub(sr, sub(sum, s1)), add(s1_low, fms(s, r, sr)));
        // t (1 + r) + r_low + (e^r - 1 - r)
        const Vector r2 = mul(r, r);
        const Vector q = fma(r2, polynomial(r, r2), add(fma(t, r, t), r_low));
        y = add(sum, fma(s, q, sum_low));
        return finish(x, s, y, care);
    }
};

template <class E, int Terms>
struct Expm1Low {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = Function<E>::unroll;
    static constexpr auto rare = Function<E>::rare;

    Coefficients<E, Terms> polynomial;
    PairTable<E, 16> powers;
    Split<E> split = {};
    Vector ln2_low = ln2_rest<E>;
    Vector one = E::row(1);
    Finish<E> finish = {};

    NAX_VEC auto eval(Vector x, Vector& y, auto care) const {
        Vector a, z, n;
        split(x, a, z, n);
        const Vector r = fnma(n, ln2_low, fnma(n, split.ln2, a));
        Vector power, t;
        powers.look_up(bits(z), power, t);
        // t + e^r - 1
        const Vector r2 = mul(r, r);
        const Vector q = add(t, fma(r2, polynomial(r, r2), r));
        const Vector s = scale_split<4, shift_bias<E>>(power, z, n, care);
        y = fma(s, q, sub(s, one));
        return finish(x, s, y, care);
    }
};

template <class E, int Terms>
struct Expm1Fast {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = Function<E>::unroll;
    static constexpr auto rare = Function<E>::rare;

    Coefficients<E, Terms> polynomial;
    Table<E, 16> powers;
    Split<E> split = {};
    Vector one = E::row(1);
    Finish<E> finish = {};

    NAX_VEC auto eval(Vector x, Vector& y, auto care) const {
        Vector a, z, n;
        split(x, a, z, n);
        const Vector r = fnma(n, split.ln2, a);
        // e^r - 1
        const Vector r2 = mul(r, r);
        const Vector p = fma(r2, polynomial(r, r2), r);
        const Vector s = scale_split<4, shift_bias<E>>(powers[bits(z)], z, n, care);
        y = fma(s, p, sub(s, one));
        return finish(x, s, y, care);
    }
};

alignas(64) constexpr Expm1High<Double, 6> double_ha = {expm1_double_ha, {exp2_16, exp2_16_relative_low}};
alignas(64) constexpr Expm1Low<Double, 6> double_la = {expm1_double_ha, {exp2_16, exp2_16_relative_low}};
alignas(64) constexpr Expm1Fast<Double, 3> double_ep = {expm1_double_ep, exp2_16};
alignas(64) constexpr Expm1High<Single, 3> single_ha = {expm1_single_ha, {exp2_16f, exp2_16f_relative_low}};
alignas(64) constexpr Expm1Low<Single, 2> single_la = {expm1_single_la, {exp2_16f, exp2_16f_relative_low}};
alignas(64) constexpr Expm1Fast<Single, 1> single_ep = {expm1_single_ep, exp2_16f};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Expm1, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, Expm1, Z0LA, double_la)
NAX_UNARY_KERNEL(d, Expm1, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, Expm1, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, Expm1, Z0LA, single_la)
NAX_UNARY_KERNEL(s, Expm1, Z0EP, single_ep)
