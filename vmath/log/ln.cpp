// Ln:  ln(x) = e ln2 + ln(1/c) + r + r^2 P(r).
//
// Levels and steps: kernels.h. A float HA table has 32 entries, c six fraction bits: the short series needs |r| <=
// 1/64.
#include "vmath/log/kernels.h"
#include "vmath/log/ln_constants.h"

namespace nax::vmath::NAX_ISA {
namespace {

alignas(64) constexpr LogHigh<Double, Base::E, 4, 8> double_ha = {
    {ln_16_high, ln_16_low}, ln_double_full, {}, {}, Double::row(ln2_double_high), Double::row(ln2_double_low)};
alignas(64) constexpr LogLow<Double, Base::E, 8> double_la = {ln_16, ln_double_full, Double::row(ln2_double)};
alignas(64) constexpr LogLow<Double, Base::E, 4> double_ep = {ln_16, ln_double_ep, Double::row(ln2_double)};

alignas(64) constexpr LogHigh<Single, Base::E, 5, 3> single_ha = {
    {ln_32f_high, ln_32f_low}, ln_single_ha, {}, {}, Single::row(ln2_single_high), Single::row(ln2_single_low)};
alignas(64) constexpr LogLow<Single, Base::E, 3> single_la = {ln_16f, ln_single_la, Single::row(ln2_single)};
alignas(64) constexpr LogLow<Single, Base::E, 2> single_ep = {ln_16f, ln_single_ep, Single::row(ln2_single)};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Ln, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, Ln, Z0LA, double_la)
NAX_UNARY_KERNEL(d, Ln, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, Ln, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, Ln, Z0LA, single_la)
NAX_UNARY_KERNEL(s, Ln, Z0EP, single_ep)
