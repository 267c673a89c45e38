// Monotone cubic spline by Hyman's filter (J. M. Hyman, SIAM J. Sci. Stat. Comput. 4 (1983) 645-654) on three-point slopes:
// a slope is zero where the chords beside it differ in sign, and elsewhere at most three times the smaller chord, so
// that the spline is monotone wherever its data are. The filter doesn't touch the two ends.
#include "fit/construct/local_cubic.h"
#include "fit/construct/three_point.h"
#include "nax/fitting_construction.h"

namespace nax::fit {
namespace {

struct Hyman : ThreePoint {
    static constexpr CubicRules kRules{.minimum_points = 4, .unset_ends = true, .checks_method = false, .needs_internal = false};

    // Signs are compared, not multiplied: the product of two small slopes would vanish.
    template <class E, class T>
    static E slope(const Window<T>& w, int64_t k) {
        const E left = load<E>(w.slope + k - 1), right = load<E>(w.slope + k), zero{};
        const E estimate = parabola<E>(w, k), size = abs(estimate);
        const E smaller_chord = abs(left) < abs(right) ? abs(left) : abs(right), limit = (zero + 3) * smaller_chord;
        const E filtered = copysign(size > limit ? limit : size, estimate);
        const auto turns = ((left <= zero) & (right >= zero)) | ((left >= zero) & (right <= zero));
        return turns ? zero : filtered;
    }
};

}  // namespace

#define NAX_DF_KERNEL(Y, G) _v1DCSHyman##Y##G,
const BoundaryKernel _DispatchHyman[] = {
#include "fit/construct/kernels.def"
};
#undef NAX_DF_KERNEL

}  // namespace nax::fit

using namespace nax::fit;

#define NAX_DF_KERNEL(Y, G)                                                                                       \
    void _v1DCSHymanThreader##Y##G(int64_t tile, int thread, int, void* context) {                                \
        local_tile<Hyman, Layout::Y, Grid::G>(tile, thread, *static_cast<const LocalContext*>(context));          \
    }                                                                                                             \
    int32_t _v1DCSHyman##Y##G(nax_df_task* task, int64_t boundary, const nax_threaders* threaders) {              \
        return local_cubic<Hyman, Layout::Y, Grid::G>(*task, boundary, threaders, _v1DCSHymanThreader##Y##G);     \
    }
#include "fit/construct/kernels.def"
#undef NAX_DF_KERNEL

int32_t nax_df_kernel_dDFHymanCubicSpline1D(nax_df_task* task, int64_t, int64_t method, const nax_threaders* threaders) {
    return local_entry(task, method, Hyman::kRules, _DispatchHyman, threaders);
}
int32_t nax_df_kernel_sDFHymanCubicSpline1D(nax_df_task* task, int64_t, int64_t method, const nax_threaders* threaders) {
    return local_entry(task, method, Hyman::kRules, _DispatchHyman, threaders);
}
