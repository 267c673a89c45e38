// r = x rounded by the mode in MXCSR, which is to nearest even inside a kernel.
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::avx512 {
namespace {

template <class E>
struct Rint {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 64 / E::lanes;

    NAX_VEC void eval(Vector x, Vector& r) const { r = round_scale<0x4>(x); }
};

constexpr Rint<Single> vsrint_data{};
constexpr Rint<Double> vdrint_data{};

}  // namespace

NAX_UNARY_KERNEL(s, Rint, Z0HAynn, vsrint_data)
NAX_UNARY_KERNEL(d, Rint, Z0HAynn, vdrint_data)

}  // namespace nax::vmath::avx512
