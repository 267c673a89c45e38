// CdfNorm:  probability that a normal variate is at most x, erfc(-x/sqrt(2))/2, to full relative accuracy down to the
// smallest denormal.
//
// Levels and steps: error_function.h. The table reaches from -38.49 to 8.5, where the result is 1. Rare: results below
// half the smallest denormal.
#include "vmath/special/error_function.h"

namespace nax::vmath::NAX_ISA {
namespace {

struct CdfNorm {
    static constexpr auto& rows = cdf_norm_rows;
    static constexpr int first = -4927, last = 1088;
    static constexpr bool normal = true, scaled = true;
};

// CdfNorm(x) = 2^-1075, 2^-150 at these.
template <class E>
struct Beyond {
    typename E::Vector limit = E::row(std::is_same_v<E, Double> ? typename E::Element(-38.485408335567335)
                                                                : typename E::Element(-0x1.c5722ap+3f));
    NAX_VEC auto operator()(typename E::Vector x) const { return less_equal(x, limit); }
};

using HighAccuracy = ErrorCore<CdfNorm, Lengths<12, 9, 6, 2>, true>;
using LowAccuracy = ErrorCore<CdfNorm, Lengths<11, 8, 5, 1>, false>;
using Performance = ErrorCore<CdfNorm, Lengths<6, 3>, false>;
using SingleHighAccuracy = ErrorCore<CdfNorm, Lengths<7, 4>, false>;
using SingleLowAccuracy = ErrorCore<CdfNorm, Lengths<6, 2>, false>;
using SinglePerformance = ErrorCore<CdfNorm, Lengths<4, 1>, false>;

constexpr auto rare_double = vdcdfnorm_cout_rare;
constexpr auto rare_single = vscdfnorm_cout_rare;
alignas(64) constexpr ErrorDouble<HighAccuracy, rare_double, Beyond<Double>> double_ha = {};
alignas(64) constexpr ErrorDouble<LowAccuracy, rare_double, Beyond<Double>> double_la = {};
alignas(64) constexpr ErrorDouble<Performance, rare_double, Beyond<Double>> double_ep = {};
alignas(64) constexpr ErrorSingle<SingleHighAccuracy, rare_single, Beyond<Single>> single_ha = {};
alignas(64) constexpr ErrorSingle<SingleLowAccuracy, rare_single, Beyond<Single>> single_la = {};
alignas(64) constexpr ErrorSingle<SinglePerformance, rare_single, Beyond<Single>> single_ep = {};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, CdfNorm, Z0HA, double_ha)
NAX_UNARY_KERNEL(d, CdfNorm, Z0LA, double_la)
NAX_UNARY_KERNEL(d, CdfNorm, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, CdfNorm, Z0HA, single_ha)
NAX_UNARY_KERNEL(s, CdfNorm, Z0LA, single_la)
NAX_UNARY_KERNEL(s, CdfNorm, Z0EP, single_ep)
