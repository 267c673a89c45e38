// Atanpi:  atan(x)/pi, in [-1/2, 1/2].
#include "vmath/invtrig/arctangent.h"

namespace nax::vmath::NAX_ISA {
namespace {

alignas(64) constexpr AtanpiHigh<Double, 8> double_ha = {{{atanpi_16_high, atanpi_16_low}, {atanpi_double_ha}}};
alignas(64) constexpr Atan<Double, Unit::HalfTurns, Level::Low, 8> double_la = {atanpi_16_high, {atanpi_double_ha}};
alignas(64) constexpr Atan<Double, Unit::HalfTurns, Level::Low, 4> double_ep = {atanpi_16_high, {atanpi_double_ep}};
alignas(64) constexpr AtanpiHigh<Single, 4> single_ha = {{{atanpi_16f_high, atanpi_16f_low}, {atanpi_single_ha}}};
alignas(64) constexpr Atan<Single, Unit::HalfTurns, Level::Low, 3> single_la = {atanpi_16f_high, {atanpi_single_la}};
alignas(64) constexpr Atan<Single, Unit::HalfTurns, Level::Low, 2> single_ep = {atanpi_16f_high, {atanpi_single_ep}};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Atanpi, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, Atanpi, Z0LA, double_la)
NAX_UNARY_KERNEL(d, Atanpi, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, Atanpi, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, Atanpi, Z0LA, single_la)
NAX_UNARY_KERNEL(s, Atanpi, Z0EP, single_ep)
