// Akima's cubic spline (H. Akima, J. ACM 17 (1970) 589-602): the slope at a point is the mean of the two chords beside it,
// each weighted by how much the slope changes on the other side,
//   d(i) = (A m(i-1) + B m(i)) / (A + B),   A = |m(i+1) - m(i)|,  B = |m(i-1) - m(i-2)|.
#include "fit/construct/local_cubic.h"
#include "nax/fitting_construction.h"

namespace nax::fit {
namespace {

struct Akima {
    static constexpr CubicRules kRules{.minimum_points = 5, .unset_ends = true, .checks_method = false, .needs_internal = false};
    static constexpr int64_t kMargin = 2;

    // Below this sum of weights the neighbourhood counts as straight. The limit is absolute: functions of tiny values take
    // the plain mean everywhere.
    template <class T>
    static constexpr T kStraight = T(1e-10);

    template <class E, class T>
    static E weighted(E right_change, E left_change, E left, E right, T straight) {
        const E sum = right_change + left_change;
        const E mean = (left + right) / (E{} + 2), akima = (right_change * left + left_change * right) / sum;
        return straight > sum ? mean : akima;
    }
    template <class E, class T>
    static E slope(const Window<T>& w, int64_t k) {
        const T* const m = w.slope + k;
        const E left = load<E>(m - 1), right = load<E>(m);
        return weighted(abs(load<E>(m + 1) - right), abs(left - load<E>(m - 2)), left, right, kStraight<T>);
    }
    // One point from an end only one change of slope is known on that side; the chords beside the point give the other.
    template <class T>
    static T near_left(const T* m) {
        return weighted(abs(m[2] - m[1]), abs(m[1] - m[0]), m[0], m[1], kStraight<T>);
    }
    template <class T>
    static T near_right(const T* m) {
        return weighted(abs(m[0] - m[-1]), abs(m[-1] - m[-2]), m[-1], m[0], kStraight<T>);
    }
    template <class T>
    static T periodic_left(const End<T>& e) {
        return weighted(abs(e.m[1] - e.m[0]), abs(e.wrapped_m[0] - e.wrapped_m[1]), e.wrapped_m[0], e.m[0], kStraight<T>);
    }
    template <class T>
    static T periodic_right(const End<T>& e) {
        return periodic_left(e);
    }
};

}  // namespace

#define NAX_DF_KERNEL(Y, G) _v1DCSAkima##Y##G,
const BoundaryKernel _DispatchAkima[] = {
#include "fit/construct/kernels.def"
};
#undef NAX_DF_KERNEL

}  // namespace nax::fit

using namespace nax::fit;

#define NAX_DF_KERNEL(Y, G)                                                                                       \
    void _v1DCSAkimaThreader##Y##G(int64_t tile, int thread, int, void* context) {                                \
        local_tile<Akima, Layout::Y, Grid::G>(tile, thread, *static_cast<const LocalContext*>(context));          \
    }                                                                                                             \
    int32_t _v1DCSAkima##Y##G(nax_df_task* task, int64_t boundary, const nax_threaders* threaders) {              \
        return local_cubic<Akima, Layout::Y, Grid::G>(*task, boundary, threaders, _v1DCSAkimaThreader##Y##G);     \
    }
#include "fit/construct/kernels.def"
#undef NAX_DF_KERNEL

int32_t nax_df_kernel_dDFAkimaCubicSpline1D(nax_df_task* task, int64_t, int64_t method, const nax_threaders* threaders) {
    return local_entry(task, method, Akima::kRules, _DispatchAkima, threaders);
}
int32_t nax_df_kernel_sDFAkimaCubicSpline1D(nax_df_task* task, int64_t, int64_t method, const nax_threaders* threaders) {
    return local_entry(task, method, Akima::kRules, _DispatchAkima, threaders);
}
