// Acospi:  acos(x)/pi, in [0, 1].
#include "vmath/invtrig/arcsine.h"

namespace nax::vmath::NAX_ISA {
namespace {

alignas(64) constexpr Acos<Double, Unit::HalfTurns, Level::High, 13> double_ha = {{asinpi_double_ha}};
alignas(64) constexpr Acos<Double, Unit::HalfTurns, Level::Low, 12> double_la = {{asinpi_double_la}};
alignas(64) constexpr Acos<Double, Unit::HalfTurns, Level::Low, 5> double_ep = {{asinpi_double_ep}};
alignas(64) constexpr Acos<Single, Unit::HalfTurns, Level::High, 5> single_ha = {{asinpi_single_ha}};
alignas(64) constexpr Acos<Single, Unit::HalfTurns, Level::Low, 5> single_la = {{asinpi_single_ha}};
alignas(64) constexpr Acos<Single, Unit::HalfTurns, Level::Low, 2> single_ep = {{asinpi_single_ep}};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Acospi, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, Acospi, Z0LA, double_la)
NAX_UNARY_KERNEL(d, Acospi, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, Acospi, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, Acospi, Z0LA, single_la)
NAX_UNARY_KERNEL(s, Acospi, Z0EP, single_ep)
