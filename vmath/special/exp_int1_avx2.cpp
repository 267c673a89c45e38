// ExpInt1 in single precision, HA and LA, of AVX2. Steps: exp_int1.h.
#include "vmath/special/exp_int1.h"

namespace nax::vmath::NAX_ISA {
namespace {
alignas(64) constexpr ExpIntSingle<6, 4> single_ha = {};
}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(s, ExpInt1, L9HA, single_ha)
