// CdfNormInv: the x that a normal variate stays below with probability p.
//
//     odd about p = 1/2; between 1/4 and 3/4 the distance p - 1/2 counts, elsewhere p or 1 - p
//
// Levels and steps: inverse.h.
#include "vmath/special/inverse.h"

namespace nax::vmath::NAX_ISA {
namespace {

struct Fold {
    static constexpr double middle_end = 0.25, curvature = 1;
    static constexpr float single_smallest = 0x1p-53f, single_end = 1.0f;
    static constexpr bool signed_domain = false;
    static constexpr auto& points = cdf_norm_inv_points;
    NAX_VEC static Folded fold(Double::Vector p) {
        const auto s = sub(p, Double::row(0.5));
        const auto sign = bit_and(s, Double::row_of_bits(Double::sign_bit));
        const auto a = bit_xor(s, sign);
        const auto tail = greater_equal(a, Double::row(0.25));
        const auto end = choose(sign_mask(s), p, sub(Double::row(1), p));
        return {choose(tail, end, a), tail, sign};
    }
};

constexpr auto rare_double = vdcdfnorminv_cout_rare;
constexpr auto rare_single = vscdfnorminv_cout_rare;
alignas(64) constexpr InverseDouble<Fold, 6, true, rare_double> double_ha = {};
alignas(64) constexpr InverseDouble<Fold, 5, false, rare_double> double_la = {};
alignas(64) constexpr InverseDouble<Fold, 3, false, rare_double> double_ep = {};
alignas(64) constexpr InverseSingle<Fold, 3, rare_single> single_ha = {};
alignas(64) constexpr InverseSingle<Fold, 2, rare_single> single_la = {};
alignas(64) constexpr InverseSingle<Fold, 1, rare_single> single_ep = {};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, CdfNormInv, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, CdfNormInv, Z0LA, double_la)
NAX_UNARY_KERNEL(d, CdfNormInv, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, CdfNormInv, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, CdfNormInv, Z0LA, single_la)
NAX_UNARY_KERNEL(s, CdfNormInv, Z0EP, single_ep)
