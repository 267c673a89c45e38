// Powr: x^y as e^(y ln x), for x >= 0: no limit that depends on the path has a value. Levels and steps: pow_kernels.h.
#include "vmath/power/pow_kernels.h"

namespace nax::vmath::NAX_ISA {
namespace {

using Data = PowData<vdpowr_cout_rare, vspowr_cout_rare>;

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_BINARY_KERNEL(d, Powr, Z0HA, Data::double_ha)
NAX_BINARY_KERNEL(d, Powr, Z0LA, Data::double_la)
NAX_BINARY_KERNEL(d, Powr, Z0EP, Data::double_ep)
NAX_BINARY_KERNEL(s, Powr, Z0HA, Data::single_ha)
NAX_BINARY_KERNEL(s, Powr, Z0LA, Data::single_la)
NAX_BINARY_KERNEL(s, Powr, Z0EP, Data::single_ep)
