// SOBOL: delivery of points.
#include "rng/quasi/sobol.h"

#include "rng/quasi/quasi_draw.h"

using namespace nax::rng;

// The bodies of single precision have names of their own; their work is that of all types.
extern "C" {

void __sto_sobol_s_default_kernel_aligned(int block, int64_t, int64_t, void* context) {
    kernel_aligned<QuasiScale<float>, float>(block, 0, 0, context);
}
void __sto_sobol_s_default_kernel_unaligned(int block, int64_t, int64_t, void* context) {
    kernel_unaligned<QuasiScale<float>, float>(block, 0, 0, context);
}
void __sto_sobol_s_user_kernel_aligned(int block, int64_t, int64_t, void* context) {
    kernel_aligned<QuasiScale<float>, float>(block, 0, 0, context);
}
void __sto_sobol_s_user_kernel_unaligned(int block, int64_t, int64_t, void* context) {
    kernel_unaligned<QuasiScale<float>, float>(block, 0, 0, context);
}

}  // extern "C"

namespace nax::rng {
inline namespace NAX_ISA {

template <>
inline ParallelBodies bodies_of<Sobol, float>(bool user) {
    if (user) return {__sto_sobol_s_user_kernel_aligned, __sto_sobol_s_user_kernel_unaligned};
    return {__sto_sobol_s_default_kernel_aligned, __sto_sobol_s_default_kernel_unaligned};
}

}  // namespace NAX_ISA
}  // namespace nax::rng

NAX_QUASI_OUTPUT(Sobol, nax::rng::Sobol)
