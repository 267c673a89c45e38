// r = |x|: the sign bit cleared, then 0.0 added. The addition quiets a signalling NaN and, when the mode word asks for
// it, flushes a denormal. The double EP kernel is the HA one under its own name.
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct Abs {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 64 / E::lanes;

    Vector sign = E::row_of_bits(E::sign_bit);
    Vector zero = E::row(0.0);

    NAX_VEC void eval(Vector x, Vector& r) const { r = add(and_not(sign, x), zero); }
};

constexpr Abs<Single> vsabs_data{};
constexpr Abs<Double> vdabs_data{};

}  // namespace

NAX_UNARY_KERNEL(s, Abs, Z0HA, vsabs_data)
NAX_UNARY_KERNEL(d, Abs, Z0HA, vdabs_data)
NAX_UNARY_KERNEL(d, Abs, Z0EP, vdabs_data)

}  // namespace nax::vmath::NAX_ISA
