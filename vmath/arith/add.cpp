// r = a + b.
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct Add {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 64 / E::lanes;

    NAX_VEC void eval(Vector a, Vector b, Vector& r) const { r = add(a, b); }
};

constexpr Add<Single> vsadd_data{};
constexpr Add<Double> vdadd_data{};

}  // namespace

NAX_BINARY_KERNEL(s, Add, Z0HA, vsadd_data)
NAX_BINARY_KERNEL(d, Add, Z0HA, vdadd_data)

}  // namespace nax::vmath::NAX_ISA
