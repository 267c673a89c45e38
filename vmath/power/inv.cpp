// Inv. HA, which is LA too, is the processor's quotient, correctly rounded. EP refines its estimate of the reciprocal;
// arguments whose reciprocal or estimate is not normal take the quotient there too.
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
    static constexpr auto rare = by_precision<E>(vsinv_cout_rare, vdinv_cout_rare);

    Vector one = E::row(1), zero = E::row(0);

    NAX_VEC auto eval(Vector x, Vector& y) const {
        y = div(one, x);
        return equal(x, zero);
    }
};

template <class E, int Steps>
struct Refined {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 4;
    static constexpr auto rare = by_precision<E>(vsinv_cout_rare, vdinv_cout_rare);

    Reciprocal<E, Steps> reciprocal = {};
    Range<E> ordinary = {two_to<E>(1 - E::exponent_bias), two_to<E>(E::exponent_bias - 3)};

    NAX_VEC auto eval(Vector x, Vector& y) const {
        y = reciprocal(x);
        return ordinary.magnitude_outside(x);
    }
    NAX_VEC auto eval_wide(Vector x, Vector& y) const {
        y = choose(ordinary.magnitude_outside(x), div(reciprocal.one, x), reciprocal(x));
        return equal(x, E::row(0));
    }
};

alignas(64) constexpr Exact<Double> double_ha = {};
alignas(64) constexpr std::conditional_t<kHasEstimates, Refined<Double, 1>, Exact<Double>> double_ep = {};
alignas(64) constexpr Exact<Single> single_ha = {};
alignas(64) constexpr std::conditional_t<kHasEstimates, Refined<Single, 0>, Exact<Single>> single_ep = {};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Inv, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, Inv, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, Inv, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, Inv, Z0EP, single_ep)
