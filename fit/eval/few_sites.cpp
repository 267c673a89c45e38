#include "fit/eval/few_sites.h"

#include "fit/eval/layout.h"
#include "fit/eval/polynomial.h"
#include "fit/search/bounded.h"

namespace nax::fit {
namespace {
using namespace NAX_FIT_SIMD;

// Distances between results, and the slots of the orders 0 to 3: negative for one that isn't requested.
struct FewResults {
    int64_t site_stride, function_stride, order_stride;
    int64_t slot[4], nder;

    bool only_value() const { return nder == 1 && slot[0] == 0; }
    bool set(const Task& task, int64_t nsite, int64_t ndorder, const void* dorder, int64_t rhint) {
        nder = 0;
        for (int64_t k = 0; k < 4; ++k) slot[k] = -1;
        const int64_t flags = dorder == nullptr ? 0 : ndorder;
        if (flags > 4) return false;
        for (int64_t k = 0; k < flags; ++k) {
            const int64_t flag =
                task.int_width != 0 ? static_cast<const int64_t*>(dorder)[k] : static_cast<const int32_t*>(dorder)[k];
            if (flag != 0 && flag != 1) return false;
            if (flag == 1) slot[k] = nder++;
        }
        if (nder == 0) slot[0] = nder++;
        switch (rhint) {
            case 0: case kResultFunctions: case 128:
                site_stride = nder, function_stride = nsite * nder, order_stride = 1;
                return true;
            case kResultPlanes:
                site_stride = 1, function_stride = nsite * nder, order_stride = nsite;
                return true;
            case kResultSites:
                site_stride = task.ny * nder, function_stride = nder, order_stride = 1;
                return true;
            case kResultSiteOrders:
                site_stride = task.ny * nder, function_stride = 1, order_stride = task.ny;
                return true;
            default:
                return false;
        }
    }
};

template <int kOrder, class T>
void store_orders(const T* c, T t, const FewResults& results, T* r) {
    using P = Lane<T>;
    const auto put = [&](int64_t k, T value) {
        if (results.slot[k] >= 0) r[results.slot[k] * results.order_stride] = value;
    };
    put(0, derivative<P, kOrder, 0>(c, t));
    put(1, derivative<P, kOrder, 1>(c, t));
    put(2, derivative<P, kOrder, 2>(c, t));
    put(3, derivative<P, kOrder, 3>(c, t));
}

template <int kOrder, class T, class Cells>
[[gnu::always_inline]] inline void evaluate_sites(const Task& task, const Cells cells, int64_t nsite, const T* site,
                                                  const FewResults& results, T* r) {
    const T* const x = partition<T>(task);
    const bool only_value = results.only_value();
    const int64_t ny = task.ny, nx = task.nx;
    void* const* const rows = task.scoeff;
    const bool uniform = has_uniform_grid(task);
    const T step = uniform ? uniform_step<T>(task) : T(0), origin = x[0];
    for (int64_t i = 0; i < nsite; ++i) {
        const int64_t p = polynomial_index(cells.template find<Lane<T>>(site[i]), nx);
        const T t = site[i] - (uniform ? Lane<T>::fma(static_cast<T>(p), step, origin) : x[p]);
        T* to = r + i * results.site_stride;
        for (int64_t j = 0; j < ny; ++j, to += results.function_stride) {
            const T* const c = static_cast<const T*>(rows[j]) + p * kOrder;
            if (only_value)
                *to = derivative<Lane<T>, kOrder, 0>(c, t);
            else
                store_orders<kOrder>(c, t, results, to);
        }
    }
}

}  // namespace

template <class T>
bool evaluate_few(const Task* task, int64_t nsite, const T* site, int64_t sitehint, int64_t ndorder, const void* dorder,
                  T* r, int64_t rhint) {
    if (task == nullptr || task->x == nullptr || site == nullptr || r == nullptr || (sitehint & kUniformSites) != 0 ||
        task->ny < 1 || task->scoeff == nullptr || task->ny > task->scoeff_entries)
        return false;
    for (int64_t j = 0; j < task->ny; ++j)
        if (task->scoeff[j] == nullptr) return false;
    FewResults results;
    if (!results.set(*task, nsite, ndorder, dorder, rhint)) return false;
    const int32_t evaluator = evaluation_index(task->s_order, task->s_type, false);
    if (evaluator != kEvalLinear && evaluator != kEvalQuadratic && evaluator != kEvalCubic) return false;
    with_cell_finder<T>(*task, [&](const auto& cells) __attribute__((always_inline)) {
        if (evaluator == kEvalCubic)
            evaluate_sites<4>(*task, cells, nsite, site, results, r);
        else if (evaluator == kEvalLinear)
            evaluate_sites<2>(*task, cells, nsite, site, results, r);
        else
            evaluate_sites<3>(*task, cells, nsite, site, results, r);
    });
    return true;
}

template bool evaluate_few(const Task*, int64_t, const double*, int64_t, int64_t, const void*, double*, int64_t);
template bool evaluate_few(const Task*, int64_t, const float*, int64_t, int64_t, const void*, float*, int64_t);

}  // namespace nax::fit
