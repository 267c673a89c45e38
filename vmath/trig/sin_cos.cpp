// SinCos:  sin(x), cos(x). Its algorithms are told in series.h, sixteenths.h and long_reduction.h.
#include "vmath/trig/kernels.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <Level L, int Unroll>
using InDouble = TwoTrig<L, Double, Function::SineCosine, Unit::Radian, vdsincos_cout_rare, Unroll>;
template <Level L, int Unroll>
using InSingle = TwoTrig<L, Single, Function::SineCosine, Unit::Radian, vssincos_cout_rare, Unroll>;

alignas(64) constexpr InDouble<Level::HA, 2> double_ha;
alignas(64) constexpr InDouble<Level::LA, 4> double_la;
alignas(64) constexpr InDouble<Level::EP, 4> double_ep;
alignas(64) constexpr InSingle<Level::HA, 2> single_ha;
alignas(64) constexpr InSingle<Level::LA, 2> single_la;
alignas(64) constexpr InSingle<Level::EP, 2> single_ep;

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_TWO_RESULT_KERNEL(d, SinCos, Z0HA, double_ha)
NAX_TWO_RESULT_KERNEL(d, SinCos, Z0LA, double_la)
NAX_TWO_RESULT_KERNEL(d, SinCos, Z0EP, double_ep)
NAX_TWO_RESULT_KERNEL(s, SinCos, Z0HA, single_ha)
NAX_TWO_RESULT_KERNEL(s, SinCos, Z0LA, single_la)
NAX_TWO_RESULT_KERNEL(s, SinCos, Z0EP, single_ep)
