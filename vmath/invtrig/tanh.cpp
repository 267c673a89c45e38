// Tanh:  (e^x - e^-x)/(e^x + e^-x).
#include "vmath/invtrig/hyperbolic.h"

namespace nax::vmath::NAX_ISA {
namespace {

alignas(64) constexpr Tanh<Double, Lows::All, 4> double_ha = {tanh_double_ha, {{exp2_16, exp2_16_relative_low}}};
alignas(64) constexpr Tanh<Double, Lows::Some, 3> double_la = {tanh_double_la, {{exp2_16, exp2_16_relative_low}}};
alignas(64) constexpr Tanh<Double, Lows::None, 1> double_ep = {tanh_double_ep, {exp2_16}};
alignas(64) constexpr Tanh<Single, Lows::All, 2> single_ha = {tanh_single_ha, {{exp2_16f, exp2_16f_relative_low}}};
alignas(64) constexpr Tanh<Single, Lows::Some, 1> single_la = {tanh_single_ep, {{exp2_16f, exp2_16f_relative_low}}};
alignas(64) constexpr Tanh<Single, Lows::None, 1> single_ep = {tanh_single_ep, {exp2_16f}};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Tanh, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, Tanh, Z0LA, double_la)
NAX_UNARY_KERNEL(d, Tanh, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, Tanh, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, Tanh, Z0LA, single_la)
NAX_UNARY_KERNEL(s, Tanh, Z0EP, single_ep)
