// r = x rounded by the mode in MXCSR, which is to nearest even inside a kernel; the control word itself asks for no
// inexact flag, where that of Rint leaves it to the exception suppression that both share.
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct NearbyInt {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 64 / E::lanes;

    NAX_VEC void eval(Vector x, Vector& r) const { r = round_to_integer<kToNearest>(x); }
};

constexpr NearbyInt<Single> vsnearbyint_data{};
constexpr NearbyInt<Double> vdnearbyint_data{};

}  // namespace

NAX_UNARY_KERNEL(s, NearbyInt, Z0HA, vsnearbyint_data)
NAX_UNARY_KERNEL(d, NearbyInt, Z0HA, vdnearbyint_data)

}  // namespace nax::vmath::NAX_ISA
