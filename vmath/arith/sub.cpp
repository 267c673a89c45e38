// r = a - b.
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct Sub {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 64 / E::lanes;

    NAX_VEC void eval(Vector a, Vector b, Vector& r) const { r = sub(a, b); }
};

constexpr Sub<Single> vssub_data{};
constexpr Sub<Double> vdsub_data{};

}  // namespace

NAX_BINARY_KERNEL(s, Sub, Z0HA, vssub_data)
NAX_BINARY_KERNEL(d, Sub, Z0HA, vdsub_data)

}  // namespace nax::vmath::NAX_ISA
