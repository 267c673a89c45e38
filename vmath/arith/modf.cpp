// whole = trunc(x), fraction = x - whole; the fraction of every integer is +0. Inf and NaN are rare.
#include "vmath/arith/arith_rare.h"
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::avx512 {
namespace {

template <class E>
struct Modf {
    using Precision = E;
    using Vector = typename E::Vector;
    using Mask = typename E::Mask;
    static constexpr int unroll = 4;
    static constexpr auto rare = by_precision<E>(vsmodf_cout_rare, vdmodf_cout_rare);
    static constexpr const char* name = by_precision<E>("vsModf", "vdModf");

    NAX_VEC Mask eval(Vector x, Vector& whole, Vector& fraction) const {
        whole = round_scale<0xB>(x);
        fraction = sub(x, whole);
        return is_class<kNan | kInf>(x);
    }
};

constexpr Modf<Single> vsmodf_data{};
constexpr Modf<Double> vdmodf_data{};

}  // namespace

NAX_TWO_RESULT_KERNEL(s, Modf, Z0HAynn, vsmodf_data)
NAX_TWO_RESULT_KERNEL(d, Modf, Z0HAynn, vdmodf_data)

}  // namespace nax::vmath::avx512
