// Erf:  erf(x) = 2/sqrt(pi) times the integral of exp(-t^2) from 0 to x, odd.
//
// Levels and steps: error_function.h, on |x| up to 5.99, where the result is 1. HA expands lanes below 3.5/128 around
// 0: there F(0) is 0 and the slope times d would be all of the result, rounded twice. It adds d to the slope less 1
// times d instead. Single LA and EP have polynomials of their own. No lane is rare.
#include "vmath/frame/polynomial.h"
#include "vmath/special/error_function.h"
#include "vmath/special/special_coefficients.inc"

namespace nax::vmath::NAX_ISA {
namespace {

struct Erf {
    static constexpr auto& rows = erf_rows;
    static constexpr int first = 0, last = 767;
    static constexpr bool normal = false, scaled = false;
};

// Odd functions by their magnitude.
template <class Core>
struct Odd {
    using Vector = Double::Vector;
    Core core = {};
    Vector sign_bit = Double::row_of_bits(Double::sign_bit);
    NAX_VEC Vector operator()(Vector x) const {
        const Vector sign = bit_and(x, sign_bit);
        return bit_xor(core(bit_xor(x, sign)), sign);
    }
};

struct HighAccuracy {
    using Vector = Double::Vector;
    Rows<Erf> rows = {};
    Vector near_zero = Double::row(3.5 / 128);
    // The slope at 0, 2/sqrt(pi), and the same less 1.
    Vector slope_at_zero = Double::row(0x1.20dd750429b6dp+0), slope_less_one = Double::row(0x1.06eba8214db69p-3);

    NAX_VEC Vector operator()(Vector a) const {
        Vector x0, d, value, slope, rest, ignored;
        const auto row = rows.find(a, x0, d);
        const auto* const pairs = reinterpret_cast<const double(*)[2]>(erf_rows);
        look_up_pair(pairs, row + row, value, slope);
        look_up_pair(pairs + 1, row + row, rest, ignored);
        // x0 = 0 near zero
        const auto small = less(a, near_zero);
        d = choose(small, a, d);
        x0 = zero_unless(~small, x0);
        rest = zero_unless(~small, rest);
        value = choose(small, d, value);
        const Vector full = choose(small, slope_at_zero, slope);
        const Vector lead = choose(small, slope_less_one, slope);

        const Vector x0_d = mul(x0, d);
        const Vector m = MeanSeries<Lengths<6, 4, 2, 1, 1>>::less_one(add(x0_d, x0_d), mul(d, d));
        return add(value, add(rest, fma(lead, d, mul(mul(full, d), m))));
    }
};

// Single precision without a table: x + x P(x^2) up to 1, beyond it 1 - 2^Q(x), Q = log2(erfc), which is 1 from 4 on.
template <int Near, int Far, int Power>
struct ErfPolynomial {
    using Precision = Single;
    using Vector = Single::Vector;
    static constexpr int unroll = 2;
    Vector sign_bit = Single::row_of_bits(Single::sign_bit), one = Single::row(1), four = Single::row(4);
    Vector shifter = Single::row(0x1.8p23f);  // its ulp is 1
    Coefficients<Single, Near> near;
    Coefficients<Single, Far> far;
    Coefficients<Single, Power> power;

    NAX_VEC void eval(Vector x, Vector& y) const {
        const Vector sign = bit_and(x, sign_bit), a = bit_xor(x, sign);
        const Vector a2 = mul(a, a), p = fma(a, near(a2, mul(a2, a2)), a);
        // min returns its second operand where that is NaN.
        const Vector t = min(four, a), q = far(t, mul(t, t));
        const Vector n = sub(add(q, shifter), shifter), f = sub(q, n);
        const Vector complement = scale(power(f, mul(f, f)), n, Fast{});
        y = bit_xor(choose(less(a, one), p, sub(one, complement)), sign);
    }
};

template <class Core>
struct ErfDouble {
    using Precision = Double;
    using Vector = Double::Vector;
    static constexpr int unroll = 2;
    Odd<Core> core = {};
    NAX_VEC void eval(Vector x, Vector& y) const { y = core(x); }
};
template <class Core>
struct ErfSingle {
    using Precision = Single;
    using Vector = Single::Vector;
    static constexpr int unroll = 1;
    Odd<Core> core = {};
    NAX_VEC void eval(Vector x, Vector& y) const { y = narrow(core(widen_low(x)), core(widen_high(x))); }
};

alignas(64) constexpr ErfDouble<HighAccuracy> double_ha = {};
alignas(64) constexpr ErfDouble<ErrorCore<Erf, Lengths<6, 4, 2, 1>, false>> double_la = {};
alignas(64) constexpr ErfDouble<ErrorCore<Erf, Lengths<3, 1>, false>> double_ep = {};
alignas(64) constexpr ErfSingle<ErrorCore<Erf, Lengths<3, 1>, false>> single_ha = {};
alignas(64) constexpr ErfPolynomial<7, 9, 6> single_la = {.near = erf_near_la, .far = erf_far_la, .power = exp2_la};
alignas(64) constexpr ErfPolynomial<4, 5, 4> single_ep = {.near = erf_near_ep, .far = erf_far_ep, .power = exp2_ep};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Erf, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, Erf, Z0LA, double_la)
NAX_UNARY_KERNEL(d, Erf, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, Erf, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, Erf, Z0LA, single_la)
NAX_UNARY_KERNEL(s, Erf, Z0EP, single_ep)
