// Cos:  cos(x). Its algorithms are told in series.h, sixteenths.h and long_reduction.h.
#include "vmath/trig/kernels.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <Level L, int Unroll>
using InDouble = Trig<L, Double, Function::Cosine, Unit::Radian, vdcos_cout_rare, Unroll>;
template <Level L, int Unroll>
using InSingle = Trig<L, Single, Function::Cosine, Unit::Radian, vscos_cout_rare, Unroll>;

alignas(64) constexpr InDouble<Level::HA, 2> double_ha;
alignas(64) constexpr InDouble<Level::LA, 4> double_la;
alignas(64) constexpr InSingle<Level::HA, 2> single_ha;
alignas(64) constexpr InSingle<Level::LA, 2> single_la;
alignas(64) constexpr InSingle<Level::EP, 2> single_ep;

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Cos, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, Cos, Z0LA, double_la)
NAX_UNARY_KERNEL(s, Cos, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, Cos, Z0LA, single_la)
NAX_UNARY_KERNEL(s, Cos, Z0EP, single_ep)
