// Acos:  acos(x), in [0, pi].
#include "vmath/invtrig/arcsine.h"

namespace nax::vmath::NAX_ISA {
namespace {

alignas(64) constexpr Acos<Double, Unit::Radians, Level::High, 13> double_ha = {{asin_double_ha}};
alignas(64) constexpr Acos<Double, Unit::Radians, Level::Low, 12> double_la = {{asin_double_la}};
alignas(64) constexpr Acos<Double, Unit::Radians, Level::Low, 5> double_ep = {{asin_double_ep}};
alignas(64) constexpr Acos<Single, Unit::Radians, Level::High, 5> single_ha = {{asin_single_ha}};
alignas(64) constexpr Acos<Single, Unit::Radians, Level::Low, 4> single_la = {{asin_single_la}};
alignas(64) constexpr Acos<Single, Unit::Radians, Level::Low, 2> single_ep = {{asin_single_ep}};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Acos, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, Acos, Z0LA, double_la)
NAX_UNARY_KERNEL(d, Acos, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, Acos, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, Acos, Z0LA, single_la)
NAX_UNARY_KERNEL(s, Acos, Z0EP, single_ep)
