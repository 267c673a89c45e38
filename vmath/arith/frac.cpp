// r = x - trunc(x); +0 for every integer. Inf and NaN are rare.
#include "vmath/arith/arith_rare.h"
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::avx512 {
namespace {

template <class E>
struct Frac {
    using Precision = E;
    using Vector = typename E::Vector;
    using Mask = typename E::Mask;
    static constexpr int unroll = 4;
    static constexpr auto rare = by_precision<E>(vsfrac_cout_rare, vdfrac_cout_rare);
    static constexpr const char* name = by_precision<E>("vsFrac", "vdFrac");

    NAX_VEC Mask eval(Vector x, Vector& r) const {
        r = sub(x, round_scale<0xB>(x));
        return is_class<kNan | kInf>(x);
    }
};

constexpr Frac<Single> vsfrac_data{};
constexpr Frac<Double> vdfrac_data{};

}  // namespace

NAX_UNARY_KERNEL(s, Frac, Z0HAynn, vsfrac_data)
NAX_UNARY_KERNEL(d, Frac, Z0HAynn, vdfrac_data)

}  // namespace nax::vmath::avx512
