// whole = trunc(x), fraction = x - whole; the fraction of every integer is +0. Inf and NaN are rare.
#include "vmath/arith/arith_rare.h"
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct Modf {
    using Precision = E;
    using Vector = typename E::Vector;
    using Mask = typename E::Mask;
    static constexpr int unroll = 4;
    static constexpr auto rare = by_precision<E>(vsmodf_cout_rare, vdmodf_cout_rare);

    NAX_VEC Mask eval(Vector x, Vector& whole, Vector& fraction) const {
        whole = round_to_integer<kTowardZero>(x);
        fraction = sub(x, whole);
        return is_class<kNan | kInf>(x);
    }
};

constexpr Modf<Single> vsmodf_data{};
constexpr Modf<Double> vdmodf_data{};

}  // namespace

NAX_TWO_RESULT_KERNEL(s, Modf, Z0HA, vsmodf_data)
NAX_TWO_RESULT_KERNEL(d, Modf, Z0HA, vdmodf_data)

}  // namespace nax::vmath::NAX_ISA
