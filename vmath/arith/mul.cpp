// r = a b.
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct Mul {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 64 / E::lanes;

    NAX_VEC void eval(Vector a, Vector b, Vector& r) const { r = mul(a, b); }
};

constexpr Mul<Single> vsmul_data{};
constexpr Mul<Double> vdmul_data{};

}  // namespace

NAX_BINARY_KERNEL(s, Mul, Z0HA, vsmul_data)
NAX_BINARY_KERNEL(d, Mul, Z0HA, vdmul_data)

}  // namespace nax::vmath::NAX_ISA
