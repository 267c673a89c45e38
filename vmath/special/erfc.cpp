// Erfc:  erfc(x) = 1 - erf(x), to full relative accuracy down to the smallest denormal.
//
// Levels and steps: error_function.h. The table reaches from -6, where the result is 2, to 27.24. Rare: results below
// half the smallest denormal.
#include "vmath/special/error_function.h"

namespace nax::vmath::NAX_ISA {
namespace {

struct Erfc {
    static constexpr auto& rows = erfc_rows;
    static constexpr int first = -768, last = 3487;
    static constexpr bool normal = false, scaled = true;
};

// erfc(x) = 2^-1075, 2^-150 at these.
template <class E>
struct Beyond {
    typename E::Vector limit = E::row(std::is_same_v<E, Double> ? typename E::Element(27.226017111108366)
                                                                : typename E::Element(0x1.41bbf8p+3f));
    NAX_VEC auto operator()(typename E::Vector x) const { return greater_equal(x, limit); }
};

using HighAccuracy = ErrorCore<Erfc, Lengths<12, 9, 6, 2>, true>;
using LowAccuracy = ErrorCore<Erfc, Lengths<11, 8, 5, 1>, false>;
using Performance = ErrorCore<Erfc, Lengths<6, 3>, false>;
using SingleHighAccuracy = ErrorCore<Erfc, Lengths<7, 4>, false>;
using SingleLowAccuracy = ErrorCore<Erfc, Lengths<6, 2>, false>;
using SinglePerformance = ErrorCore<Erfc, Lengths<4, 1>, false>;

constexpr auto rare_double = vderfc_cout_rare;
constexpr auto rare_single = vserfc_cout_rare;
alignas(64) constexpr ErrorDouble<HighAccuracy, rare_double, Beyond<Double>> double_ha = {};
alignas(64) constexpr ErrorDouble<LowAccuracy, rare_double, Beyond<Double>> double_la = {};
alignas(64) constexpr ErrorDouble<Performance, rare_double, Beyond<Double>> double_ep = {};
alignas(64) constexpr ErrorSingle<SingleHighAccuracy, rare_single, Beyond<Single>> single_ha = {};
alignas(64) constexpr ErrorSingle<SingleLowAccuracy, rare_single, Beyond<Single>> single_la = {};
alignas(64) constexpr ErrorSingle<SinglePerformance, rare_single, Beyond<Single>> single_ep = {};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Erfc, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, Erfc, Z0LA, double_la)
NAX_UNARY_KERNEL(d, Erfc, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, Erfc, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, Erfc, Z0LA, single_la)
NAX_UNARY_KERNEL(s, Erfc, Z0EP, single_ep)
