// r = the larger of a and b; a single NaN is ignored. Of two zeros the second is taken, whatever the signs.
// NaN lanes are rare, for the sake of signalling NaNs; others are settled here too, which counts when reports are off.
#include "vmath/arith/arith_rare.h"
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct Fmax {
    using Precision = E;
    using Vector = typename E::Vector;
    using Mask = typename E::Mask;
    static constexpr int unroll = 4;
    static constexpr auto rare = by_precision<E>(vsfmax_cout_rare, vdfmax_cout_rare);

    NAX_VEC Mask eval(Vector a, Vector b, Vector& r) const {
        r = choose(unordered(b, b), a, max(a, b));
        return unordered(a, b);
    }
};

constexpr Fmax<Single> vsfmax_data{};
constexpr Fmax<Double> vdfmax_data{};

}  // namespace

NAX_BINARY_KERNEL(s, Fmax, Z0HA, vsfmax_data)
NAX_BINARY_KERNEL(d, Fmax, Z0HA, vdfmax_data)

}  // namespace nax::vmath::NAX_ISA
