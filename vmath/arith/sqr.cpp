// r = x x.
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct Sqr {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 64 / E::lanes;

    NAX_VEC void eval(Vector x, Vector& r) const { r = mul(x, x); }
};

constexpr Sqr<Single> vssqr_data{};
constexpr Sqr<Double> vdsqr_data{};

}  // namespace

NAX_UNARY_KERNEL(s, Sqr, Z0HA, vssqr_data)
NAX_UNARY_KERNEL(d, Sqr, Z0HA, vdsqr_data)

}  // namespace nax::vmath::NAX_ISA
