// Atan:  atan(x), in [-pi/2, pi/2].
#include "vmath/invtrig/arctangent.h"

namespace nax::vmath::NAX_ISA {
namespace {

alignas(64) constexpr Atan<Double, Unit::Radians, Level::High, 8> double_ha = {{atan_16_high, atan_16_low},
                                                                               {atan_double_ha}};
alignas(64) constexpr Atan<Double, Unit::Radians, Level::Low, 8> double_la = {atan_16_high, {atan_double_ha}};
alignas(64) constexpr Atan<Double, Unit::Radians, Level::Low, 4> double_ep = {atan_16_high, {atan_double_ep}};
alignas(64) constexpr Atan<Single, Unit::Radians, Level::High, 4> single_ha = {{atan_16f_high, atan_16f_low},
                                                                               {atan_single_ha}};
alignas(64) constexpr Atan<Single, Unit::Radians, Level::Low, 3> single_la = {atan_16f_high, {atan_single_la}};
alignas(64) constexpr Atan<Single, Unit::Radians, Level::Low, 2> single_ep = {atan_16f_high, {atan_single_ep}};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Atan, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, Atan, Z0LA, double_la)
NAX_UNARY_KERNEL(d, Atan, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, Atan, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, Atan, Z0LA, single_la)
NAX_UNARY_KERNEL(s, Atan, Z0EP, single_ep)
