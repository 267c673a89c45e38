// Sqrt. HA is the processor's root, correctly rounded. LA and EP refine its estimate by as many Newton steps as the
// level needs; zeros, infinities and NaN, which the steps don't suit, take the processor's root there too.
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
    static constexpr auto rare = by_precision<E>(vssqrt_cout_rare, vdsqrt_cout_rare);

    NAX_VEC auto eval(Vector x, Vector& y) const {
        y = sqrt(x);
        return bits(x);
    }
    NAX_VEC auto is_rare(Vector x) const { return negative(x); }
};

template <class E, int Steps>
struct Refined {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 4;
    static constexpr auto rare = by_precision<E>(vssqrt_cout_rare, vdsqrt_cout_rare);

    Root<E, Steps> root = {};

    // NaN where the estimate is infinite or zero, and for negative numbers.
    NAX_VEC Vector eval(Vector x, Vector& y) const { return y = root(x); }
    NAX_VEC auto eval_wide(Vector x, Vector& y) const {
        y = choose(is_class<kZero | kPlusInf | kNan>(x), sqrt(x), root(x));
        return negative(x);
    }
};

template <class E, int Steps>
using BelowHA = std::conditional_t<kHasEstimates, Refined<E, Steps>, Exact<E>>;

alignas(64) constexpr Exact<Double> double_ha = {};
alignas(64) constexpr BelowHA<Double, 2> double_la = {};
alignas(64) constexpr BelowHA<Double, 1> double_ep = {};
alignas(64) constexpr Exact<Single> single_ha = {};
alignas(64) constexpr BelowHA<Single, 1> single_la = {};
alignas(64) constexpr BelowHA<Single, 0> single_ep = {};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Sqrt, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, Sqrt, Z0LA, double_la)
NAX_UNARY_KERNEL(d, Sqrt, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, Sqrt, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, Sqrt, Z0LA, single_la)
NAX_UNARY_KERNEL(s, Sqrt, Z0EP, single_ep)
