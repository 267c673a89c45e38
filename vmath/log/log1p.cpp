// Log1p:  ln(1 + x) = ln(s + t),  s + t = 1 + x exactly: the steps of Ln on s, with t 2^-e c added to r.
//
// A small x has s = 1 or nearly so and lives on in t. HA keeps the rounding error of that addition as well; LA and EP
// leave t out where abs(x) >= 1/2, where it is below an ulp of the result.
#include "vmath/log/kernels.h"
#include "vmath/log/ln_constants.h"

namespace nax::vmath::avx512 {
namespace {

// Ln is the kernel of the same level for base e.
template <class Ln>
struct Log1p {
    using Precision = typename Ln::Precision;
    using E = Precision;
    using Vector = typename E::Vector;
    static constexpr int unroll = 4;
    static constexpr char name[] = {'v', by_precision<E>('s', 'd'), 'L', 'o', 'g', '1', 'p', '\0'};
    static constexpr auto rare = by_precision<E>(vslog1p_cout_rare, vdlog1p_cout_rare);

    // HA keeps all of t; the others take t alone, and only where it counts: t 2^-e c = t/(1 + x) nearly.
    static constexpr bool keeps_tail = requires(const Ln& ln) { ln.low; };

    Ln ln;
    Vector sign = E::row_of_bits(E::sign_bit);
    Vector half = E::row(typename E::Element(0.5));

    NAX_VEC auto eval(Vector x, Vector& y) const {
        // s and t, from the larger term and the smaller. s is zero, negative, Inf or NaN where x is outside the domain.
        const Vector large = max(ln.reduction.one, x), small = min(ln.reduction.one, x);
        const Vector s = add(large, small);
        const Vector t = sub(small, sub(s, large));
        const auto outside = outside_domain(s);
        Reduced<E> a = ln.reduction(s);
        if constexpr (keeps_tail) {
            const Vector scaled = mul(scale(t, bit_xor(a.raw_exponent, sign)), a.reciprocal);
            const Vector tail = zero_unless(static_cast<typename E::Mask>(~outside), scaled);
            const Vector exact = a.r;
            a.r = add(exact, tail);
            y = ln.sum_up(a, outside, sub(tail, sub(a.r, exact)));
        } else {
            a.r = add_where(less(and_not(sign, x), half), a.r, t);
            y = ln.sum_up(a);
        }
        // -0 keeps its sign
        y = bit_or(y, bit_and(x, sign));
        return outside;
    }
};

alignas(64) constexpr Log1p<LogHigh<Double, Base::E, 4, 8>> double_ha = {
    {ln_16_high, ln_16_low, ln_double_full, {}, {}, Double::row(ln2_double_high), Double::row(ln2_double_low)}};
alignas(64) constexpr Log1p<LogLow<Double, Base::E, 8>> double_la = {{ln_16, ln_double_full, Double::row(ln2_double)}};
alignas(64) constexpr Log1p<LogLow<Double, Base::E, 4>> double_ep = {{ln_16, ln_double_ep, Double::row(ln2_double)}};
alignas(64) constexpr Log1p<LogHigh<Single, Base::E, 5, 3>> single_ha = {
    {ln_32f_high, ln_32f_low, ln_single_ha, {}, {}, Single::row(ln2_single_high), Single::row(ln2_single_low)}};
alignas(64) constexpr Log1p<LogLow<Single, Base::E, 3>> single_la = {{ln_16f, ln_single_la, Single::row(ln2_single)}};
alignas(64) constexpr Log1p<LogLow<Single, Base::E, 2>> single_ep = {{ln_16f, ln_single_ep, Single::row(ln2_single)}};

}  // namespace
}  // namespace nax::vmath::avx512

using namespace nax::vmath::avx512;
NAX_UNARY_KERNEL(d, Log1p, Z0HAynn, double_ha)
NAX_UNARY_KERNEL(d, Log1p, Z0LAynn, double_la)
NAX_UNARY_KERNEL(d, Log1p, Z0EPnnn, double_ep)
NAX_UNARY_KERNEL(s, Log1p, Z0HAynn, single_ha)
NAX_UNARY_KERNEL(s, Log1p, Z0LAynn, single_la)
NAX_UNARY_KERNEL(s, Log1p, Z0EPnnn, single_ep)
