// Pow: x^y by the table of special cases that C has, statuses for what is no number. Levels and steps: pow_kernels.h.
#include "vmath/power/pow_kernels.h"

namespace nax::vmath::NAX_ISA {
namespace {

using Data = PowData<vdpow_cout_rare, vspow_cout_rare>;

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;
NAX_BINARY_KERNEL(d, Pow, Z0HA, Data::double_ha)
NAX_BINARY_KERNEL(d, Pow, Z0LA, Data::double_la)
NAX_BINARY_KERNEL(d, Pow, Z0EP, Data::double_ep)
NAX_BINARY_KERNEL(s, Pow, Z0HA, Data::single_ha)
NAX_BINARY_KERNEL(s, Pow, Z0LA, Data::single_la)
NAX_BINARY_KERNEL(s, Pow, Z0EP, Data::single_ep)
