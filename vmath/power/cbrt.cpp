// Cbrt: the cube root, of negative numbers too. Levels and steps: third_root.h.
#include "vmath/power/third_root.h"

namespace nax::vmath::NAX_ISA {
namespace {

// least error for abs(r) <= 1/16, 2^-59.6
constexpr double double_series[10] = {
    0.3333333333333334,   -0.11111111111111162, 0.06172839506120587,   -0.041152263373174666, 0.030178327221837806,
    -0.02347203297228489, 0.019000732549266777, -0.015833742709636108, 0.013599669412148277,  -0.011806930731698976};

template <bool High, int Terms>
using DoubleCbrt = ThirdPower<Double, Third::Root, High, Terms>;
template <bool High, int Terms>
using SingleCbrt = ThirdPower<Single, Third::Root, High, Terms>;

alignas(64) constexpr DoubleCbrt<true, 10> double_ha = {
    {cbrt_reciprocal, cbrt_value}, {cbrt_factor_high, cbrt_factor_low}, double_series};
alignas(64) constexpr DoubleCbrt<false, 8> double_la = {{cbrt_reciprocal, cbrt_value}, {cbrt_factor}, cbrt_double_la};
alignas(64) constexpr DoubleCbrt<false, 4> double_ep = {{cbrt_reciprocal, cbrt_value}, {cbrt_factor}, cbrt_double_ep};
alignas(64) constexpr SingleCbrt<true, 4> single_ha = {
    {cbrtf_reciprocal, cbrtf_value}, {cbrtf_factor_high, cbrtf_factor_low}, cbrt_single_ha};
alignas(64) constexpr SingleCbrt<false, 3> single_la = {
    {cbrtf_reciprocal, cbrtf_value}, {cbrtf_factor}, cbrt_single_la};
alignas(64) constexpr SingleCbrt<false, 1> single_ep = {
    {cbrtf_reciprocal, cbrtf_value}, {cbrtf_factor}, cbrt_single_ep};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Cbrt, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, Cbrt, Z0LA, double_la)
NAX_UNARY_KERNEL(d, Cbrt, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, Cbrt, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, Cbrt, Z0LA, single_la)
NAX_UNARY_KERNEL(s, Cbrt, Z0EP, single_ep)
