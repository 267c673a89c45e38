// ErfInv: the y with erf(y) = x.
//
//     erfinv(-x) = -erfinv(x); |x| below 1/2 stands for itself, above it 1 - |x| counts
//
// Levels and steps: inverse.h.
#include "vmath/special/inverse.h"

namespace nax::vmath::NAX_ISA {
namespace {

struct Fold {
    static constexpr double middle_end = 0.5, curvature = 2;
    static constexpr float single_smallest = 0x1p-35f, single_end = 1.0f;
    static constexpr bool signed_domain = true;
    static constexpr auto& points = erf_inv_points;
    NAX_VEC static Folded fold(Double::Vector x) {
        const auto sign = bit_and(x, Double::row_of_bits(Double::sign_bit));
        const auto a = bit_xor(x, sign);
        const auto tail = greater_equal(a, Double::row(0.5));
        return {choose(tail, sub(Double::row(1), a), a), tail, sign};
    }
};

constexpr auto rare_double = vderfinv_cout_rare;
constexpr auto rare_single = vserfinv_cout_rare;
alignas(64) constexpr InverseDouble<Fold, 6, true, rare_double> double_ha = {};
alignas(64) constexpr InverseDouble<Fold, 5, false, rare_double> double_la = {};
alignas(64) constexpr InverseDouble<Fold, 3, false, rare_double> double_ep = {};
alignas(64) constexpr InverseSingle<Fold, 3, rare_single> single_ha = {};
alignas(64) constexpr InverseSingle<Fold, 2, rare_single> single_la = {};
alignas(64) constexpr InverseSingle<Fold, 1, rare_single> single_ep = {};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, ErfInv, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, ErfInv, Z0LA, double_la)
NAX_UNARY_KERNEL(d, ErfInv, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, ErfInv, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, ErfInv, Z0LA, single_la)
NAX_UNARY_KERNEL(s, ErfInv, Z0EP, single_ep)
