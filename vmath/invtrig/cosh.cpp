// Cosh:  (e^x + e^-x)/2.
#include "vmath/invtrig/hyperbolic.h"

namespace nax::vmath::NAX_ISA {
namespace {

alignas(64) constexpr Cosh<Double, Lows::All, 3, 3> double_ha = {
    sinh_double_ha, cosh_double_ha, {{exp2_16, exp2_16_relative_low}}};
alignas(64) constexpr Cosh<Double, Lows::None, 3, 3> double_la = {sinh_double_ha, cosh_double_ha, {exp2_16}};
alignas(64) constexpr Cosh<Double, Lows::None, 1, 1> double_ep = {sinh_double_ep, cosh_double_ep, {exp2_16}};
alignas(64) constexpr Cosh<Single, Lows::All, 1, 1> single_ha = {
    sinh_single_ha, cosh_single_ha, {{exp2_16f, exp2_16f_relative_low}}};
alignas(64) constexpr Cosh<Single, Lows::None, 1, 1> single_la = {sinh_single_ha, cosh_single_ha, {exp2_16f}};
alignas(64) constexpr Cosh<Single, Lows::None, 1, 1> single_ep = {sinh_single_ha, cosh_single_ha, {exp2_16f}};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Cosh, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, Cosh, Z0LA, double_la)
NAX_UNARY_KERNEL(d, Cosh, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, Cosh, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, Cosh, Z0LA, single_la)
NAX_UNARY_KERNEL(s, Cosh, Z0EP, single_ep)
