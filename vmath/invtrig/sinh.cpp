// Sinh:  (e^x - e^-x)/2.
#include "vmath/invtrig/hyperbolic.h"

namespace nax::vmath::NAX_ISA {
namespace {

alignas(64) constexpr Sinh<Double, Lows::All, 3, 3> double_ha = {
    sinh_double_ha, cosh_double_ha, {{exp2_16, exp2_16_relative_low}}};
alignas(64) constexpr Sinh<Double, Lows::Some, 3, 3> double_la = {
    sinh_double_ha, cosh_double_ha, {{exp2_16, exp2_16_relative_low}}};
alignas(64) constexpr Sinh<Single, Lows::All, 1, 1> single_ha = {
    sinh_single_ha, cosh_single_ha, {{exp2_16f, exp2_16f_relative_low}}};
alignas(64) constexpr Sinh<Single, Lows::Some, 1, 1> single_la = {
    sinh_single_ha, cosh_single_ha, {{exp2_16f, exp2_16f_relative_low}}};
alignas(64) constexpr Sinh<Single, Lows::None, 1, 1> single_ep = {sinh_single_ha, cosh_single_ha, {exp2_16f}};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Sinh, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, Sinh, Z0LA, double_la)
NAX_UNARY_KERNEL(s, Sinh, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, Sinh, Z0LA, single_la)
NAX_UNARY_KERNEL(s, Sinh, Z0EP, single_ep)
