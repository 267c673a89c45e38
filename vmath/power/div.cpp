// Div. HA and LA are the processor's quotient, correctly rounded: to take mantissas and exponents apart and refine an
// estimate costs more. EP multiplies by a refined reciprocal where neither it nor the result is near the ends of the
// range, and divides elsewhere.
#include "vmath/frame/kernel_exports.h"
#include "vmath/power/newton.h"
#include "vmath/power/power_rare.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct Exact {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 4;
    static constexpr auto rare = by_precision<E>(vsdiv_cout_rare, vddiv_cout_rare);

    Vector zero = E::row(0);

    NAX_VEC auto eval(Vector a, Vector b, Vector& y) const {
        y = div(a, b);
        return equal(b, zero);
    }
};

template <class E, int Steps>
struct Refined {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 4;
    static constexpr auto rare = by_precision<E>(vsdiv_cout_rare, vddiv_cout_rare);

    Reciprocal<E, Steps> reciprocal = {};
    Range<E> divisors = {two_to<E>(1 - E::exponent_bias), two_to<E>(E::exponent_bias - 3)};
    Range<E> quotients = {typename E::Element(0), two_to<E>(E::exponent_bias - 1)};

    NAX_VEC auto eval(Vector a, Vector b, Vector& y) const {
        y = mul(a, reciprocal(b));
        return divisors.magnitude_outside(b) | quotients.magnitude_outside(y);
    }
    NAX_VEC auto eval_wide(Vector a, Vector b, Vector& y) const {
        const Vector product = mul(a, reciprocal(b));
        y = choose(divisors.magnitude_outside(b) | quotients.magnitude_outside(product), div(a, b), product);
        return equal(b, E::row(0));
    }
};

alignas(64) constexpr Exact<Double> double_ha = {};
alignas(64) constexpr std::conditional_t<kHasEstimates, Refined<Double, 1>, Exact<Double>> double_ep = {};
alignas(64) constexpr Exact<Single> single_ha = {};
alignas(64) constexpr std::conditional_t<kHasEstimates, Refined<Single, 0>, Exact<Single>> single_ep = {};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_BINARY_KERNEL(d, Div, Z0HA, double_ha)
NAX_BINARY_KERNEL(d, Div, Z0LA, double_ha)
NAX_BINARY_KERNEL(d, Div, Z0EP, double_ep)
NAX_BINARY_KERNEL(s, Div, Z0HA, single_ha)
NAX_BINARY_KERNEL(s, Div, Z0LA, single_ha)
NAX_BINARY_KERNEL(s, Div, Z0EP, single_ep)
