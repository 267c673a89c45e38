// r = the magnitude of a with the sign of b. A move of bits: NaN payloads and denormals pass untouched.
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct CopySign {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 64 / E::lanes;

    Vector sign = E::row_of_bits(E::sign_bit);

    NAX_VEC void eval(Vector a, Vector b, Vector& r) const { r = bit_choose(sign, b, a); }
};

constexpr CopySign<Single> vscopysign_data{};
constexpr CopySign<Double> vdcopysign_data{};

}  // namespace

NAX_BINARY_KERNEL(s, CopySign, Z0HA, vscopysign_data)
NAX_BINARY_KERNEL(d, CopySign, Z0HA, vdcopysign_data)

}  // namespace nax::vmath::NAX_ISA
