// r = the largest integer not above x.
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct Floor {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 64 / E::lanes;

    NAX_VEC void eval(Vector x, Vector& r) const { r = round_to_integer<kDownward>(x); }
};

constexpr Floor<Single> vsfloor_data{};
constexpr Floor<Double> vdfloor_data{};

}  // namespace

NAX_UNARY_KERNEL(s, Floor, Z0HA, vsfloor_data)
NAX_UNARY_KERNEL(d, Floor, Z0HA, vdfloor_data)

}  // namespace nax::vmath::NAX_ISA
