// r = the smaller of a and b; a single NaN is ignored. Of two zeros the second is taken, whatever the signs.
// NaN lanes are rare, for the sake of signalling NaNs; others are settled here too, which counts when reports are off.
#include "vmath/arith/arith_rare.h"
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct Fmin {
    using Precision = E;
    using Vector = typename E::Vector;
    using Mask = typename E::Mask;
    static constexpr int unroll = 4;
    static constexpr auto rare = by_precision<E>(vsfmin_cout_rare, vdfmin_cout_rare);

    NAX_VEC Mask eval(Vector a, Vector b, Vector& r) const {
        r = choose(unordered(b, b), a, min(a, b));
        return unordered(a, b);
    }
};

constexpr Fmin<Single> vsfmin_data{};
constexpr Fmin<Double> vdfmin_data{};

}  // namespace

NAX_BINARY_KERNEL(s, Fmin, Z0HA, vsfmin_data)
NAX_BINARY_KERNEL(d, Fmin, Z0HA, vdfmin_data)

}  // namespace nax::vmath::NAX_ISA
