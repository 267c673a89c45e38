// r = the number next to a in the direction of b: one added to the bits of a, or one taken away.
//
// Rare: a not a normal number, b NaN, and results that are not normal. So statuses for overflow and underflow, the step
// away from zero and the walk through the denormals are the scalar path's.
#include "vmath/arith/arith_rare.h"
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct NextAfter {
    using Precision = E;
    using Vector = typename E::Vector;
    using Mask = typename E::Mask;
    static constexpr int unroll = 4;
    static constexpr auto rare = by_precision<E>(vsnextafter_cout_rare, vdnextafter_cout_rare);

    using Bits = typename E::Bits;
    static constexpr typename E::Integer first = typename E::Integer{1} << E::mantissa_bits;

    Bits one = E::bits_row(1);
    Bits magnitude = E::bits_row(~E::sign_bit);
    Bits first_normal = E::bits_row(first);
    Bits normals = E::bits_row(E::exponent_field - first);

    // Unsigned wrap-around puts zeros and denormals above all normal numbers.
    NAX_VEC Mask is_normal(Bits x) const {
        return ~above_equal((x & magnitude) - first_normal, normals);
    }

    NAX_VEC Mask eval(Vector a, Vector b, Vector& r) const {
        const Bits bits_a = bits(a);
        const Bits away = choose(less(a, b) ^ sign_mask(a), one, -one);
        const Bits next = choose(equal(a, b), bits(b), bits_a + away);
        r = from_bits(next);
        const Mask normal = is_normal(bits_a) & is_normal(next);
        return ~normal | unordered(b, b);
    }
};

constexpr NextAfter<Single> vsnextafter_data{};
constexpr NextAfter<Double> vdnextafter_data{};

}  // namespace

NAX_BINARY_KERNEL(s, NextAfter, Z0HA, vsnextafter_data)
NAX_BINARY_KERNEL(d, NextAfter, Z0HA, vdnextafter_data)

}  // namespace nax::vmath::NAX_ISA
