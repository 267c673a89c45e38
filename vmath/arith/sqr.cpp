// r = x x.
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::avx512 {
namespace {

template <class E>
struct Sqr {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 64 / E::lanes;

    NAX_VEC void eval(Vector x, Vector& r) const { r = mul(x, x); }
};

constexpr Sqr<Single> vssqr_data{};
constexpr Sqr<Double> vdsqr_data{};

}  // namespace

NAX_UNARY_KERNEL(s, Sqr, Z0HAynn, vssqr_data)
NAX_UNARY_KERNEL(d, Sqr, Z0HAynn, vdsqr_data)

}  // namespace nax::vmath::avx512
