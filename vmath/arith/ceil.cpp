// r = the smallest integer not below x; -0 for -1 < x <= -0.
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct Ceil {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 64 / E::lanes;

    NAX_VEC void eval(Vector x, Vector& r) const { r = round_to_integer<kUpward>(x); }
};

constexpr Ceil<Single> vsceil_data{};
constexpr Ceil<Double> vdceil_data{};

}  // namespace

NAX_UNARY_KERNEL(s, Ceil, Z0HA, vsceil_data)
NAX_UNARY_KERNEL(d, Ceil, Z0HA, vdceil_data)

}  // namespace nax::vmath::NAX_ISA
