// Atan2:  the angle of the point (x, y), in [-pi, pi].
#include "vmath/invtrig/arctangent.h"

namespace nax::vmath::NAX_ISA {
namespace {

alignas(64) constexpr Atan2<Double, Unit::Radians, Level::High, 8> double_ha = {{atan2_16_high, atan2_16_low},
                                                                                {atan_double_ha}};
alignas(64) constexpr Atan2<Double, Unit::Radians, Level::Low, 8> double_la = {atan2_16_high, {atan_double_ha}};
alignas(64) constexpr Atan2Direct<Double, Unit::Radians, 10> double_ep = {atan2_16_high, {atan_direct_double_ep}};
alignas(64) constexpr Atan2<Single, Unit::Radians, Level::High, 4> single_ha = {{atan2_16f_high, atan2_16f_low},
                                                                                {atan_single_ha}};
alignas(64) constexpr Atan2Direct<Single, Unit::Radians, 8> single_la = {atan2_16f_high, {atan_direct_single_la}};
alignas(64) constexpr Atan2Direct<Single, Unit::Radians, 4> single_ep = {atan2_16f_high, {atan_direct_single_ep}};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_BINARY_KERNEL(d, Atan2, Z0HA, double_ha)
NAX_BINARY_KERNEL(d, Atan2, Z0LA, double_la)
NAX_BINARY_KERNEL(d, Atan2, Z0EP, double_ep)
NAX_BINARY_KERNEL(s, Atan2, Z0HA, single_ha)
NAX_BINARY_KERNEL(s, Atan2, Z0LA, single_la)
NAX_BINARY_KERNEL(s, Atan2, Z0EP, single_ep)
