// r = x - trunc(x); +0 for every integer. Inf and NaN are rare.
#include "vmath/arith/arith_rare.h"
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct Frac {
    using Precision = E;
    using Vector = typename E::Vector;
    using Mask = typename E::Mask;
    static constexpr int unroll = 4;
    static constexpr auto rare = by_precision<E>(vsfrac_cout_rare, vdfrac_cout_rare);

    NAX_VEC Mask eval(Vector x, Vector& r) const {
        r = sub(x, round_to_integer<kTowardZero>(x));
        return is_class<kNan | kInf>(x);
    }
};

constexpr Frac<Single> vsfrac_data{};
constexpr Frac<Double> vdfrac_data{};

}  // namespace

NAX_UNARY_KERNEL(s, Frac, Z0HA, vsfrac_data)
NAX_UNARY_KERNEL(d, Frac, Z0HA, vdfrac_data)

}  // namespace nax::vmath::NAX_ISA
