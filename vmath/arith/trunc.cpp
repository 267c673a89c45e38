// r = x without its fraction, with the sign of x.
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct Trunc {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 64 / E::lanes;

    NAX_VEC void eval(Vector x, Vector& r) const { r = round_to_integer<kTowardZero>(x); }
};

constexpr Trunc<Single> vstrunc_data{};
constexpr Trunc<Double> vdtrunc_data{};

}  // namespace

NAX_UNARY_KERNEL(s, Trunc, Z0HA, vstrunc_data)
NAX_UNARY_KERNEL(d, Trunc, Z0HA, vdtrunc_data)

}  // namespace nax::vmath::NAX_ISA
