// Pow2o3: the square of the cube root. Levels and steps: third_root.h.
#include "vmath/power/third_root.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <bool High, int Terms>
using DoublePow2o3 = ThirdPower<Double, Third::RootSquared, High, Terms>;
template <bool High, int Terms>
using SinglePow2o3 = ThirdPower<Single, Third::RootSquared, High, Terms>;

alignas(64) constexpr DoublePow2o3<true, 8> double_ha = {
    {pow2o3_reciprocal, pow2o3_value}, {pow2o3_factor_high, pow2o3_factor_low}, pow2o3_double_ha};
alignas(64) constexpr DoublePow2o3<false, 8> double_la = {
    {pow2o3_reciprocal, pow2o3_value}, {pow2o3_factor}, pow2o3_double_ha};
alignas(64) constexpr DoublePow2o3<false, 4> double_ep = {
    {pow2o3_reciprocal, pow2o3_value}, {pow2o3_factor}, pow2o3_double_ep};
alignas(64) constexpr SinglePow2o3<true, 4> single_ha = {
    {pow2o3f_reciprocal, pow2o3f_value}, {pow2o3f_factor_high, pow2o3f_factor_low}, pow2o3_single_ha};
alignas(64) constexpr SinglePow2o3<false, 3> single_la = {
    {pow2o3f_reciprocal, pow2o3f_value}, {pow2o3f_factor}, pow2o3_single_la};
alignas(64) constexpr SinglePow2o3<false, 1> single_ep = {
    {pow2o3f_reciprocal, pow2o3f_value}, {pow2o3f_factor}, pow2o3_single_ep};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Pow2o3, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, Pow2o3, Z0LA, double_la)
NAX_UNARY_KERNEL(d, Pow2o3, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, Pow2o3, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, Pow2o3, Z0LA, single_la)
NAX_UNARY_KERNEL(s, Pow2o3, Z0EP, single_ep)
