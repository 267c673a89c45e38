// TGamma in single precision: one kernel for all levels, in double lanes. Steps: tgamma.h.
#include "vmath/special/tgamma.h"

namespace nax::vmath::NAX_ISA {
namespace {

struct TGamma {
    using Precision = Single;
    using Vector = Single::Vector;
    static constexpr int unroll = 1;
    static constexpr auto rare = vstgamma_cout_rare;
    GammaCore<6, false> core = {};
    Vector low = Single::row(0x1p-20f), high = Single::row(35.0f);

    NAX_VEC Single::Mask eval(Vector x, Vector& y) const {
        y = narrow(core(widen_low(x)), core(widen_high(x)));
        return ~(greater_equal(x, low) & less(x, high));
    }
    NAX_VEC Single::Mask eval_wide(Vector x, Vector& y) const {
        const auto suspect = eval(x, y);
        return settle_by_scalar<Single>(x, suspect, y, rare);
    }
};

alignas(64) constexpr TGamma single_ha = {};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(s, TGamma, Z0HA, single_ha)
