// Atan2pi:  the angle of the point (x, y) over pi, in [-1, 1].
#include "vmath/invtrig/arctangent.h"

namespace nax::vmath::NAX_ISA {
namespace {

alignas(64) constexpr Atan2<Double, Unit::HalfTurns, Level::High, 8> double_ha = {{atan2pi_16_high, atan2pi_16_low},
                                                                                  {atanpi_double_ha}};
alignas(64) constexpr Atan2<Double, Unit::HalfTurns, Level::Low, 8> double_la = {atan2pi_16_high, {atanpi_double_ha}};
alignas(64) constexpr Atan2Direct<Double, Unit::HalfTurns, 10> double_ep = {atan2pi_16_high, {atanpi_direct_double_ep}};
alignas(64) constexpr Atan2<Single, Unit::HalfTurns, Level::High, 4> single_ha = {{atan2pi_16f_high, atan2pi_16f_low},
                                                                                  {atanpi_single_ha}};
alignas(64) constexpr Atan2Direct<Single, Unit::HalfTurns, 8> single_la = {atan2pi_16f_high, {atanpi_direct_single_la}};
alignas(64) constexpr Atan2Direct<Single, Unit::HalfTurns, 4> single_ep = {atan2pi_16f_high, {atanpi_direct_single_ep}};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_BINARY_KERNEL(d, Atan2pi, Z0HA, double_ha)
NAX_BINARY_KERNEL(d, Atan2pi, Z0LA, double_la)
NAX_BINARY_KERNEL(d, Atan2pi, Z0EP, double_ep)
NAX_BINARY_KERNEL(s, Atan2pi, Z0HA, single_ha)
NAX_BINARY_KERNEL(s, Atan2pi, Z0LA, single_la)
NAX_BINARY_KERNEL(s, Atan2pi, Z0EP, single_ep)
