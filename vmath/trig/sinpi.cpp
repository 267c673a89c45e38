// Sinpi:  sin(pi x). Its algorithms are told in series.h, sixteenths.h and long_reduction.h.
#include "vmath/trig/kernels.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <Level L, int Unroll>
using InDouble = Trig<L, Double, Function::Sine, Unit::HalfTurn, vdsinpi_cout_rare, Unroll>;
template <Level L, int Unroll>
using InSingle = Trig<L, Single, Function::Sine, Unit::HalfTurn, vssinpi_cout_rare, Unroll>;

alignas(64) constexpr InDouble<Level::HA, 2> double_ha;
alignas(64) constexpr InDouble<Level::LA, 4> double_la;
alignas(64) constexpr InDouble<Level::EP, 4> double_ep;
alignas(64) constexpr InSingle<Level::HA, 2> single_ha;
alignas(64) constexpr InSingle<Level::LA, 2> single_la;
alignas(64) constexpr InSingle<Level::EP, 2> single_ep;

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Sinpi, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, Sinpi, Z0LA, double_la)
NAX_UNARY_KERNEL(d, Sinpi, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, Sinpi, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, Sinpi, Z0LA, single_la)
NAX_UNARY_KERNEL(s, Sinpi, Z0EP, single_ep)
