// Cubic Hermite spline: the caller gives the slopes at the interior points, one set for all functions.
#include "fit/construct/local_cubic.h"
#include "nax/fitting_construction.h"

namespace nax::fit {
namespace {

struct Hermite {
    static constexpr CubicRules kRules{.minimum_points = 3, .unset_ends = true, .checks_method = false, .needs_internal = true};
    static constexpr int64_t kMargin = 1;

    template <class E, class T>
    static E slope(const Window<T>& w, int64_t k) {
        return load<E>(w.given + k);
    }
    // The caller's value is the slope at the seam.
    template <class T>
    static T periodic_left(const End<T>& e) {
        return e.value;
    }
    template <class T>
    static T periodic_right(const End<T>& e) {
        return e.value;
    }
};

}  // namespace

#define NAX_DF_KERNEL(Y, G) _v1DCSHermite##Y##G,
const BoundaryKernel _DispatchHermite[] = {
#include "fit/construct/kernels.def"
};
#undef NAX_DF_KERNEL

}  // namespace nax::fit

using namespace nax::fit;

#define NAX_DF_KERNEL(Y, G)                                                                                       \
    void _v1DCSHermiteThreader##Y##G(int64_t tile, int thread, int, void* context) {                                \
        local_tile<Hermite, Layout::Y, Grid::G>(tile, thread, *static_cast<const LocalContext*>(context));          \
    }                                                                                                             \
    int32_t _v1DCSHermite##Y##G(nax_df_task* task, int64_t boundary, const nax_threaders* threaders) {              \
        return local_cubic<Hermite, Layout::Y, Grid::G>(*task, boundary, threaders, _v1DCSHermiteThreader##Y##G);     \
    }
#include "fit/construct/kernels.def"
#undef NAX_DF_KERNEL

int32_t nax_df_kernel_dDFHermiteCubicSpline1D(nax_df_task* task, int64_t, int64_t method, const nax_threaders* threaders) {
    return local_entry(task, method, Hermite::kRules, _DispatchHermite, threaders);
}
int32_t nax_df_kernel_sDFHermiteCubicSpline1D(nax_df_task* task, int64_t, int64_t method, const nax_threaders* threaders) {
    return local_entry(task, method, Hermite::kRules, _DispatchHermite, threaders);
}
