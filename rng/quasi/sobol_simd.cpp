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

int sobol_draw(QuasiPlace& place, const PointSet& points, int n, uint32_t* r) {
    return draw_points(place, points, n, r, QuasiScale<uint32_t>(0, 0));
}
int sobol_draw(QuasiPlace& place, const PointSet& points, int n, double* r, double a, double b) {
    return draw_points(place, points, n, r, QuasiScale<double>(a, b));
}
int sobol_draw(QuasiPlace& place, const PointSet& points, int n, float* r, float a, float b, bool user) {
    static constexpr ParallelBodies kDefault = {__sto_sobol_s_default_kernel_aligned, __sto_sobol_s_default_kernel_unaligned};
    static constexpr ParallelBodies kUser = {__sto_sobol_s_user_kernel_aligned, __sto_sobol_s_user_kernel_unaligned};
    return draw_points(place, points, n, r, QuasiScale<float>(a, b), user ? kUser : kDefault);
}

}  // namespace nax::rng
