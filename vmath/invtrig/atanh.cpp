// Atanh:  ln((1 + x)/(1 - x))/2.
#include "vmath/invtrig/inverse_hyperbolic.h"

namespace nax::vmath::NAX_ISA {
namespace {

alignas(64) constexpr Atanh<Double, Level::High, 9> double_ha = {
    {ln1p_double_ha, reciprocal_16, {minus_ln_16_high, minus_ln_16_low}}};
alignas(64) constexpr Atanh<Double, Level::Low, 8> double_la = {{ln1p_double_la, reciprocal_16, minus_ln_16}};
alignas(64) constexpr Atanh<Double, Level::Low, 4> double_ep = {{ln1p_double_ep, reciprocal_16, minus_ln_16}};
alignas(64) constexpr Atanh<Single, Level::High, 4> single_ha = {
    {ln1p_single_ha, reciprocal_16f, {minus_ln_16f_high, minus_ln_16f_low}}};
alignas(64) constexpr Atanh<Single, Level::Low, 3> single_la = {{ln1p_single_la, reciprocal_16f, minus_ln_16f}};
alignas(64) constexpr Atanh<Single, Level::Low, 2> single_ep = {{ln1p_single_ep, reciprocal_16f, minus_ln_16f}};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Atanh, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, Atanh, Z0LA, double_la)
NAX_UNARY_KERNEL(d, Atanh, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, Atanh, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, Atanh, Z0LA, single_la)
NAX_UNARY_KERNEL(s, Atanh, Z0EP, single_ep)
