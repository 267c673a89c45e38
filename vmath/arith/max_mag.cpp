// r = the argument of larger magnitude; of two with equal magnitude the larger one. A single NaN is ignored.
// NaN lanes are rare, for the sake of signalling NaNs; others are settled here too, which counts when reports are off.
#include "vmath/arith/arith_rare.h"
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct MaxMag {
    using Precision = E;
    using Vector = typename E::Vector;
    using Mask = typename E::Mask;
    static constexpr int unroll = 4;
    static constexpr auto rare = by_precision<E>(vsmaxmag_cout_rare, vdmaxmag_cout_rare);

    Vector sign = E::row_of_bits(E::sign_bit);

    NAX_VEC Mask eval(Vector a, Vector b, Vector& r) const {
        const Vector magnitude_a = and_not(sign, a), magnitude_b = and_not(sign, b);
        r = choose(greater(magnitude_a, magnitude_b) | unordered(b, b), a, max(a, b));
        r = choose(less(magnitude_a, magnitude_b), b, r);
        return unordered(a, b);
    }
};

constexpr MaxMag<Single> vsmaxmag_data{};
constexpr MaxMag<Double> vdmaxmag_data{};

}  // namespace

NAX_BINARY_KERNEL(s, MaxMag, Z0HA, vsmaxmag_data)
NAX_BINARY_KERNEL(d, MaxMag, Z0HA, vdmaxmag_data)

}  // namespace nax::vmath::NAX_ISA
