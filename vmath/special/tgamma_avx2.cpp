// TGamma in double precision: one kernel for all levels, of AVX2. Steps: tgamma.h.
#include "vmath/special/tgamma.h"

namespace nax::vmath::NAX_ISA {
namespace {

struct TGamma {
    using Precision = Double;
    using Vector = Double::Vector;
    static constexpr int unroll = 1;
    static constexpr auto rare = vdtgamma_cout_rare;
    GammaCore<11, true> core = {};

    NAX_VEC Double::Mask eval(Vector x, Vector& y) const {
        y = core(x);
        return ~(greater_equal(x, core.low) & less(x, core.high));
    }
    NAX_VEC Double::Mask eval_wide(Vector x, Vector& y) const {
        const auto suspect = eval(x, y);
        return settle_by_scalar<Double>(x, suspect, y, rare);
    }
};

alignas(64) constexpr TGamma double_ha = {};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, TGamma, L9HA, double_ha)
