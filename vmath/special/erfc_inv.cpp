// ErfcInv: the y with erfc(y) = x.
//
//     erfcinv(2 - x) = -erfcinv(x); between 1/2 and 3/2 it is erfinv(1 - x), elsewhere x or 2 - x counts
//
// Levels and steps: inverse.h. The points are those of ErfInv.
#include "vmath/special/inverse.h"

namespace nax::vmath::NAX_ISA {
namespace {

// The middle is 1, where the function falls.
struct Fold {
    static constexpr double middle_end = 0.5, curvature = 2;
    static constexpr float single_smallest = 0x1p-53f, single_end = 2.0f;
    static constexpr bool signed_domain = false;
    static constexpr auto& points = erf_inv_points;
    NAX_VEC static Folded fold(Double::Vector x) {
        const auto s = sub(Double::row(1), x);
        const auto sign = bit_and(s, Double::row_of_bits(Double::sign_bit));
        const auto a = bit_xor(s, sign);
        const auto tail = greater_equal(a, Double::row(0.5));
        const auto end = choose(sign_mask(s), sub(Double::row(2), x), x);
        return {choose(tail, end, a), tail, sign};
    }
};

constexpr auto rare_double = vderfcinv_cout_rare;
constexpr auto rare_single = vserfcinv_cout_rare;
alignas(64) constexpr InverseDouble<Fold, 6, true, rare_double> double_ha = {};
alignas(64) constexpr InverseDouble<Fold, 5, false, rare_double> double_la = {};
alignas(64) constexpr InverseDouble<Fold, 3, false, rare_double> double_ep = {};
alignas(64) constexpr InverseSingle<Fold, 3, rare_single> single_ha = {};
alignas(64) constexpr InverseSingle<Fold, 2, rare_single> single_la = {};
alignas(64) constexpr InverseSingle<Fold, 1, rare_single> single_ep = {};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, ErfcInv, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, ErfcInv, Z0LA, double_la)
NAX_UNARY_KERNEL(d, ErfcInv, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, ErfcInv, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, ErfcInv, Z0LA, single_la)
NAX_UNARY_KERNEL(s, ErfcInv, Z0EP, single_ep)
