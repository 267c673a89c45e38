#include "fit/eval/few_sites.h"

#include "fit/eval/layout.h"
#include "fit/eval/polynomial.h"
#include "fit/search/bounded.h"

namespace nax::fit {
namespace {

// Distances between results, and the slots of the orders 0 to 3: negative for one that isn't requested.
struct FewResults {
    int64_t site_stride, function_stride, order_stride;
    int64_t slot[4], nder;

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
            case 0:
            case kResultFunctions:
            case 128:
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

// Calls body(i, where the coefficients of the piece start in a row, local coordinate) for each site.
template <int kOrder, class T, class Cells, class Body>
[[gnu::always_inline]] inline void for_each_piece(const Task& task, const Cells& cells, int64_t nsite, const T* site,
                                                  const Body& body) {
    const T* const x = partition<T>(task);
    const bool uniform = has_uniform_grid(task);
    const T step = uniform ? uniform_step<T>(task) : T(0), origin = x[0];
    const int64_t nx = task.nx;
    for (int64_t i = 0; i < nsite; ++i) {
        const int64_t p = polynomial_index(cells.template find<Lane<T>>(site[i]), nx);
        body(i, p * kOrder, site[i] - (uniform ? Lane<T>::fma(static_cast<T>(p), step, origin) : x[p]));
    }
}

template <int kOrder, class T>
void evaluate_orders(const Task& task, int64_t nsite, const T* site, const FewResults& results, T* r) {
    using P = Lane<T>;
    with_cell_finder<T>(task, [&](const auto& cells) {
        for_each_piece<kOrder>(task, cells, nsite, site, [&](int64_t i, int64_t at, T t) {
            for (int64_t j = 0; j < task.ny; ++j) {
                const T* const c = static_cast<const T*>(task.scoeff[j]) + at;
                T* const to = r + i * results.site_stride + j * results.function_stride;
                const T value[] = {derivative<P, kOrder, 0>(c, t), derivative<P, kOrder, 1>(c, t),
                                   derivative<P, kOrder, 2>(c, t), derivative<P, kOrder, 3>(c, t)};
                for (int64_t k = 0; k < 4; ++k)
                    if (results.slot[k] >= 0) to[results.slot[k] * results.order_stride] = value[k];
            }
        });
    });
}

template <int kOrder, class T>
[[gnu::noinline]] bool evaluate_order(const Task& task, int64_t nsite, const T* site, int64_t ndorder,
                                      const void* dorder, T* r, int64_t rhint) {
    const bool wide = task.int_width != 0;
    const auto flag = [&] {
        return wide ? *static_cast<const int64_t*>(dorder) : *static_cast<const int32_t*>(dorder);
    };
    const bool only_value = ndorder <= 0 || dorder == nullptr || (ndorder == 1 && (flag() == 0 || flag() == 1));
    const bool by_function = rhint == kResultFunctions || rhint == kResultPlanes || rhint == 0 || rhint == 128;
    if (only_value && (by_function || rhint == kResultSites || rhint == kResultSiteOrders)) [[likely]] {
        const int64_t ny = task.ny, site_stride = by_function ? 1 : ny, function_stride = by_function ? nsite : 1;
        void* const* const rows = task.scoeff;
        with_cell_finder<T>(
            task, [&](const auto& cells) __attribute__((always_inline)) {
                for_each_piece<kOrder>(
                    task, cells, nsite, site, [&](int64_t i, int64_t at, T t) __attribute__((always_inline)) {
                        T* to = r + i * site_stride;
                        for (int64_t j = 0; j < ny; ++j, to += function_stride)
                            *to = derivative<Lane<T>, kOrder, 0>(static_cast<const T*>(rows[j]) + at, t);
                    });
            });
        return true;
    }
    FewResults results;
    if (!results.set(task, nsite, ndorder, dorder, rhint)) return false;
    evaluate_orders<kOrder>(task, nsite, site, results, r);
    return true;
}

}  // namespace

template <class T>
bool evaluate_few(const Task* task, int64_t nsite, const T* site, int64_t sitehint, int64_t ndorder, const void* dorder,
                  T* r, int64_t rhint) {
    if (task == nullptr || task->x == nullptr || site == nullptr || r == nullptr || (sitehint & kUniformSites) != 0 ||
        task->ny < 1 || !has_coefficients(*task, task->ny))
        return false;
    const int64_t order = task->s_order, type = task->s_type;
    if (order == 4 && type != kSubbotin && is_constructed_type(type))
        return evaluate_order<4>(*task, nsite, site, ndorder, dorder, r, rhint);
    if (order == 2) return evaluate_order<2>(*task, nsite, site, ndorder, dorder, r, rhint);
    if (order == 3 && type == kDefaultType) return evaluate_order<3>(*task, nsite, site, ndorder, dorder, r, rhint);
    return false;
}

template bool evaluate_few(const Task*, int64_t, const double*, int64_t, int64_t, const void*, double*, int64_t);
template bool evaluate_few(const Task*, int64_t, const float*, int64_t, int64_t, const void*, float*, int64_t);

}  // namespace nax::fit
