// InvCbrt: one over the cube root, with the sign of its argument. Levels and steps: third_root.h.
#include "vmath/power/third_root.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <bool High, int Terms>
using DoubleInvCbrt = ThirdPower<Double, Third::InverseRoot, High, Terms>;
template <bool High, int Terms>
using SingleInvCbrt = ThirdPower<Single, Third::InverseRoot, High, Terms>;

alignas(64) constexpr DoubleInvCbrt<true, 9> double_ha = {
    {inv_cbrt_reciprocal, inv_cbrt_value}, {inv_cbrt_factor_high, inv_cbrt_factor_low}, inv_cbrt_double_ha};
alignas(64) constexpr DoubleInvCbrt<false, 8> double_la = {
    {inv_cbrt_reciprocal, inv_cbrt_value}, {inv_cbrt_factor}, inv_cbrt_double_la};
alignas(64) constexpr DoubleInvCbrt<false, 4> double_ep = {
    {inv_cbrt_reciprocal, inv_cbrt_value}, {inv_cbrt_factor}, inv_cbrt_double_ep};
alignas(64) constexpr SingleInvCbrt<true, 4> single_ha = {
    {inv_cbrtf_reciprocal, inv_cbrtf_value}, {inv_cbrtf_factor_high, inv_cbrtf_factor_low}, inv_cbrt_single_ha};
alignas(64) constexpr SingleInvCbrt<false, 3> single_la = {
    {inv_cbrtf_reciprocal, inv_cbrtf_value}, {inv_cbrtf_factor}, inv_cbrt_single_la};
alignas(64) constexpr SingleInvCbrt<false, 1> single_ep = {
    {inv_cbrtf_reciprocal, inv_cbrtf_value}, {inv_cbrtf_factor}, inv_cbrt_single_ep};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, InvCbrt, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, InvCbrt, Z0LA, double_la)
NAX_UNARY_KERNEL(d, InvCbrt, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, InvCbrt, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, InvCbrt, Z0LA, single_la)
NAX_UNARY_KERNEL(s, InvCbrt, Z0EP, single_ep)
