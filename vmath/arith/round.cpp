// r = the integer nearest to x, halfway cases away from zero: with a = |x| and t = a to nearest even,
//   r = sign(x) (t + 1) where a - t = 1/2, which is where a tie went down to even, else sign(x) t.
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct Round {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 64 / E::lanes;

    Vector sign = E::row_of_bits(E::sign_bit);
    Vector half = E::row(0.5);
    Vector one = E::row(1.0);

    NAX_VEC void eval(Vector x, Vector& r) const {
        const Vector a = and_not(sign, x);
        const Vector t = round_to_integer<kToNearest>(a);
        const Vector magnitude = add_where(equal(sub(a, t), half), t, one);
        r = bit_choose(sign, x, magnitude);
    }
};

constexpr Round<Single> vsround_data{};
constexpr Round<Double> vdround_data{};

}  // namespace

NAX_UNARY_KERNEL(s, Round, Z0HA, vsround_data)
NAX_UNARY_KERNEL(d, Round, Z0HA, vdround_data)

}  // namespace nax::vmath::NAX_ISA
