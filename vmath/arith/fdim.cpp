// r = a - b where a > b, else +0. NaN lanes are rare; their vector result is NaN too, for callers that switched
// reporting off.
#include "vmath/arith/arith_rare.h"
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct Fdim {
    using Precision = E;
    using Vector = typename E::Vector;
    using Mask = typename E::Mask;
    static constexpr int unroll = 4;
    static constexpr auto rare = by_precision<E>(vsfdim_cout_rare, vdfdim_cout_rare);

    NAX_VEC Mask eval(Vector a, Vector b, Vector& r) const {
        r = zero_unless(not_less_equal(a, b), sub(a, b));
        return unordered(a, b);
    }
};

constexpr Fdim<Single> vsfdim_data{};
constexpr Fdim<Double> vdfdim_data{};

}  // namespace

NAX_BINARY_KERNEL(s, Fdim, Z0HA, vsfdim_data)
NAX_BINARY_KERNEL(d, Fdim, Z0HA, vdfdim_data)

}  // namespace nax::vmath::NAX_ISA
