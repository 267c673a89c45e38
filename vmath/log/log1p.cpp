// Log1p:  ln(1 + x) = ln(s + t),  s + t = 1 + x exactly: the steps of Ln on s, with t 2^-e c added to r.
//
// A small x has s = 1 or nearly so and lives on in t. HA keeps the rounding error of that addition as well. LA and
// EP leave t out where x >= 1/2: it is below an ulp of the result there.
#include "vmath/log/kernels.h"
#include "vmath/log/ln_constants.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct Log1pBase {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 4;
    static constexpr auto rare = by_precision<E>(vslog1p_cout_rare, vdlog1p_cout_rare);

    // The result has the sign of x; so -0 keeps it.
    NAX_VEC static Vector with_sign(Vector y, Vector x, Vector sign) { return bit_or(y, bit_and(x, sign)); }
};

// Each holds the kernel of the same level for base e.
template <class E, int IndexBits, int Terms>
struct Log1pHigh : Log1pBase<E> {
    using Vector = typename E::Vector;
    LogHigh<E, Base::E, IndexBits, Terms> ln;
    Vector large = E::row(typename E::Element(int64_t{1} << E::mantissa_bits));
    Vector sign = E::row_of_bits(E::sign_bit);

    NAX_VEC auto eval(Vector x, Vector& y, auto care) const {
        // Fast two-sum wants the larger term first, but is exact in this order too while 1 is a multiple of an ulp of
        // s. Beyond that, t is below 1/32 ulp of the result and left out.
        const Vector s = add(x, ln.reduction.one);
        const Vector t = sub(x, sub(s, ln.reduction.one));
        Reduced<E> a = ln.reduction(s, care);
        // 2^-e c in integers: s is 2^e m
        const Vector scaled = mul(t, from_bits(bits(a.c) - (bits(s) - bits(a.m))));
        const Vector tail = zero_unless(less(bits(x), bits(large)), scaled);
        const Vector exact = a.r;
        a.r = add(exact, tail);
        const Vector error = sub(tail, sub(a.r, exact));
        if constexpr (kOrdinaryOnly<decltype(care)>) {
            y = this->with_sign(ln.sum_up(a, Nowhere{}, error), x, sign);
            return not_ordinary<E>(s);
        } else {
            const auto outside = outside_domain(s);
            y = this->with_sign(ln.sum_up(a, outside, error), x, sign);
            return outside;
        }
    }
    NAX_VEC auto is_rare(Vector x) const { return outside_domain(add(x, ln.reduction.one)); }
};

template <class E, int Terms>
struct Log1pLow : Log1pBase<E> {
    using Vector = typename E::Vector;
    LogLow<E, Base::E, Terms> ln;
    Vector half = E::row(typename E::Element(0.5));
    Vector sign = E::row_of_bits(E::sign_bit);

    NAX_VEC auto eval(Vector x, Vector& y, auto care) const {
        // Below 1/2, t 2^-e c = t/(1 + x) is t nearly; below -1/2, t is 0. (Integers compare like the numbers.)
        const Vector s = add(x, ln.reduction.one);
        const Vector t = sub(x, sub(s, ln.reduction.one));
        Reduced<E> a = ln.reduction(s, care);
        a.r = add_where(less(bits(x), bits(half)), a.r, t);
        y = this->with_sign(ln.sum_up(a), x, sign);
        if constexpr (kOrdinaryOnly<decltype(care)>)
            return not_ordinary<E>(s);
        else
            return y;
    }
    NAX_VEC auto is_rare(Vector x) const { return outside_domain(add(x, ln.reduction.one)); }
};

alignas(64) constexpr Log1pHigh<Double, 4, 8> double_ha = {
    {}, {{ln_16_high, ln_16_low}, ln_double_full, {}, {}, Double::row(ln2_double_high), Double::row(ln2_double_low)}};
alignas(64) constexpr Log1pLow<Double, 8> double_la = {{}, {ln_16, ln_double_full, Double::row(ln2_double)}};
alignas(64) constexpr Log1pLow<Double, 4> double_ep = {{}, {ln_16, ln_double_ep, Double::row(ln2_double)}};
alignas(64) constexpr Log1pHigh<Single, 5, 3> single_ha = {
    {}, {{ln_32f_high, ln_32f_low}, ln_single_ha, {}, {}, Single::row(ln2_single_high), Single::row(ln2_single_low)}};
alignas(64) constexpr Log1pLow<Single, 3> single_la = {{}, {ln_16f, ln_single_la, Single::row(ln2_single)}};
alignas(64) constexpr Log1pLow<Single, 2> single_ep = {{}, {ln_16f, ln_single_ep, Single::row(ln2_single)}};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Log1p, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, Log1p, Z0LA, double_la)
NAX_UNARY_KERNEL(d, Log1p, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, Log1p, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, Log1p, Z0LA, single_la)
NAX_UNARY_KERNEL(s, Log1p, Z0EP, single_ep)
