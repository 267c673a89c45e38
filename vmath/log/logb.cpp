// Logb:  the exponent of x as a number. The exponent field less its bias; what has no such exponent is rare.
#include "vmath/frame/kernel_exports.h"
#include "vmath/log/log_rare.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct Logb {
    using Precision = E;
    using Vector = typename E::Vector;
    using Bits = typename E::Bits;
    static constexpr int unroll = 64 / E::lanes;
    static constexpr auto rare = by_precision<E>(vslogb_cout_rare, vdlogb_cout_rare);

    Bits field = E::bits_row(E::exponent_field);
    Bits bias = E::bits_row(E::exponent_bias);

    NAX_VEC auto eval(Vector x, Vector& y) const {
        y = to_real(shift_right<E::mantissa_bits>(bits(x) & field) - bias);
        return is_class<kNan | kInf | kZero | kDenormal>(x);
    }
};

alignas(64) constexpr Logb<Double> logb_double = {};
alignas(64) constexpr Logb<Single> logb_single = {};

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, Logb, Z0HA, logb_double)
NAX_UNARY_KERNEL(s, Logb, Z0HA, logb_single)
