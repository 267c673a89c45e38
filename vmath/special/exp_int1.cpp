// ExpInt1, EP. Steps: exp_int1.h.
#include "vmath/special/exp_int1.h"

namespace nax::vmath::NAX_ISA {
namespace {
alignas(64) constexpr ExpIntDouble<6, 4> double_ep = {};
alignas(64) constexpr ExpIntSingle<2, 2> single_ep = {};
}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_UNARY_KERNEL(d, ExpInt1, Z0EP, double_ep)
NAX_UNARY_KERNEL(s, ExpInt1, Z0EP, single_ep)
