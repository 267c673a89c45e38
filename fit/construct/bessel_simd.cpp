// Bessel's cubic spline (C. de Boor, A Practical Guide to Splines, Springer 1978, chapter IV): the slope at a point is that
// of the parabola through the point and its two neighbours,
//   d(i) = (m(i) h(i-1) + m(i-1) h(i)) / (h(i-1) + h(i)).
#include "fit/construct/local_cubic.h"
#include "fit/construct/three_point.h"
#include "nax/fitting_construction.h"

namespace nax::fit {
namespace {

struct Bessel : ThreePoint {
    static constexpr CubicRules kRules{.minimum_points = 4, .unset_ends = true, .checks_method = false, .needs_internal = false};

    template <class E, class T>
    static E slope(const Window<T>& w, int64_t k) {
        return parabola<E>(w, k);
    }
};

}  // namespace

#define NAX_DF_KERNEL(Y, G) _v1DCSBessel##Y##G,
const BoundaryKernel _DispatchBessel[] = {
#include "fit/construct/kernels.def"
};
#undef NAX_DF_KERNEL

}  // namespace nax::fit

using namespace nax::fit;

#define NAX_DF_KERNEL(Y, G)                                                                                       \
    void _v1DCSBesselThreader##Y##G(int64_t tile, int thread, int, void* context) {                                \
        local_tile<Bessel, Layout::Y, Grid::G>(tile, thread, *static_cast<const LocalContext*>(context));          \
    }                                                                                                             \
    int32_t _v1DCSBessel##Y##G(nax_df_task* task, int64_t boundary, const nax_threaders* threaders) {              \
        return local_cubic<Bessel, Layout::Y, Grid::G>(*task, boundary, threaders, _v1DCSBesselThreader##Y##G);     \
    }
#include "fit/construct/kernels.def"
#undef NAX_DF_KERNEL

int32_t nax_df_kernel_dDFBesselCubicSpline1D(nax_df_task* task, int64_t, int64_t method, const nax_threaders* threaders) {
    return local_entry(task, method, Bessel::kRules, _DispatchBessel, threaders);
}
int32_t nax_df_kernel_sDFBesselCubicSpline1D(nax_df_task* task, int64_t, int64_t method, const nax_threaders* threaders) {
    return local_entry(task, method, Bessel::kRules, _DispatchBessel, threaders);
}
