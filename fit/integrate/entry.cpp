// The entries of integration: checks and the plan of a call.
#include "fit/integrate/block.h"
#include "fit/integrate/integral.h"
#include "nax/fitting_integration.h"

namespace nax::fit {
namespace {

constexpr bool is_integrable_cubic(int64_t type) {
    return type == kDefaultType || (type >= kNatural && type <= kAkima) || type == kHyman;
}
// A look-up has no integral.
constexpr int32_t integral_evaluator(int64_t order, int64_t type, bool all_callbacks) {
    if (order == 2) return kIntegrateLinear;
    if (order == 3 && type == kDefaultType) return kIntegrateQuadratic;
    if (order == 3 && type == kSubbotin) return kIntegrateSubbotin;
    if (order == 4 && is_integrable_cubic(type)) return kIntegrateCubic;
    if (order > 4) return kIntegrateArbitrary;
    if (order == 0 && type == kStepLeft) return kIntegrateStepLeft;
    if (order == 0 && type == kStepRight) return kIntegrateStepRight;
    if (order == 0 && type != kLookUp && all_callbacks) return kIntegrateArbitrary;
    return DfStatusBadType;
}

int32_t check_data(const Task& task, int32_t evaluator) {
    if (task.x == nullptr) return DfStatusBadX;
    if (reads_functions(evaluator)) {
        if (!has_functions(task, task.ny)) return DfStatusBadY;
    } else if (task.s_order > 0) {
        if (!is_possible_order(task)) return DfStatusBadOrder;
        if (!has_coefficients(task, task.ny)) return DfStatusBadCoeff;
    }
    return DfStatusOk;
}

// One side of a call as its arguments give it.
template <class T>
struct Side {
    const T* values;
    int64_t hint;
    const T* data_hint;
};
template <class T>
Limits<T> plan_side(const Task& task, const Side<T>& side, int64_t nlim, int32_t algorithm, SearchCallback<T> search,
                    void* parameters) {
    const bool uniform = side.hint == kUniformSites;
    return {side.values, uniform ? site_step(side.values, nlim) : T(0), uniform,
            plan_block_search(task, algorithm, side.data_hint, search, parameters)};
}

template <class T>
[[gnu::noinline]] int32_t integrate_entry(const Task* task, int64_t nlim, const Side<T>& left, const Side<T>& right,
                                          T* r, int64_t rhint, Integration<T>& call, SearchCallback<T> search,
                                          void* search_parameters, const Threaders* threaders) {
    if (task == nullptr) return DfStatusNullTask;
    const bool all_callbacks =
        call.callbacks[0] != nullptr && call.callbacks[1] != nullptr && call.callbacks[2] != nullptr;
    const int32_t evaluator = integral_evaluator(task->s_order, task->s_type, all_callbacks);
    if (evaluator < 0) return evaluator;
    const int32_t left_search = choose_search(*task, left.hint, left.data_hint, search != nullptr);
    if (left_search < 0) return left_search;
    const int32_t right_search = choose_search(*task, right.hint, right.data_hint, search != nullptr);
    if (right_search < 0) return right_search;
    const bool by_function = rhint == kRows || rhint == kFirstOnly;
    if (!by_function && rhint != kColumns && rhint != kDefaultStorage) return DfStatusBadIntegralHint;
    const int32_t status = check_data(*task, evaluator);
    if (status != DfStatusOk) return status;
    if (nlim <= 0 || task->ny <= 0) return DfStatusOk;
    if (left.values == nullptr || right.values == nullptr) return DfStatusBadSite;
    if (r == nullptr) return DfStatusNullOutput;

    call.task = task;
    call.evaluator = evaluator;
    call.nlim = nlim;
    call.ny = task->ny;
    call.r = r;
    call.limit_stride = by_function ? 1 : task->ny;
    call.function_stride = by_function ? nlim : 1;
    call.left = plan_side(*task, left, nlim, left_search, search, search_parameters);
    call.right = plan_side(*task, right, nlim, right_search, search, search_parameters);
    return _Integr1DKernel(call, threaders);
}

// A plain call of a few listed pairs: true when it was done. Whatever is amiss is left to the general way to tell.
template <class T>
bool integrate_short(const Task* task, int64_t nlim, const T* llim, const T* rlim, T* r, int64_t rhint) {
    if (task == nullptr || task->x == nullptr || llim == nullptr || rlim == nullptr || r == nullptr || task->ny < 1)
        return false;
    const int32_t evaluator = integral_evaluator(task->s_order, task->s_type, false);
    const bool by_function = rhint == kRows || rhint == kFirstOnly;
    if (evaluator < 0 || (!by_function && rhint != kColumns && rhint != kDefaultStorage)) return false;
    if (check_data(*task, evaluator) != DfStatusOk) return false;
    Integration<T> call;
    call.task = task;
    call.evaluator = evaluator;
    call.nlim = nlim;
    call.ny = task->ny;
    call.left.values = llim, call.right.values = rlim;
    call.r = r;
    call.limit_stride = by_function ? 1 : task->ny;
    call.function_stride = by_function ? nlim : 1;
    call.sums = nullptr;
    integrate_few(call);
    return true;
}

template <class T, class Callback>
Integration<T> call_of(Callback left, void* left_parameters, Callback right, void* right_parameters, Callback interior,
                       void* interior_parameters) {
    Integration<T> call{};
    call.callbacks[kLeftPart] = left, call.parameters[kLeftPart] = left_parameters;
    call.callbacks[kRightPart] = right, call.parameters[kRightPart] = right_parameters;
    call.callbacks[kInteriorPart] = interior, call.parameters[kInteriorPart] = interior_parameters;
    return call;
}

}  // namespace
}  // namespace nax::fit

#define NAX_DF_INTEGRATE(prefix, T)                                                                                   \
    int32_t nax_df_kernel_##prefix##DFIntegrate1D(                                                                    \
        const nax_df_task* task, int64_t, int64_t nlim, const T* llim, int64_t llimhint, const T* rlim,               \
        int64_t rlimhint, const T* left_hint, const T* right_hint, T* r, int64_t rhint,                               \
        nax_df_integration_callback_##prefix left, void* left_parameters, nax_df_integration_callback_##prefix right, \
        void* right_parameters, nax_df_integration_callback_##prefix interior, void* interior_parameters,             \
        nax_df_search_callback_##prefix search, void* search_parameters, const nax_threaders* threaders) {            \
        const bool plain = left == nullptr && right == nullptr && interior == nullptr && search == nullptr &&         \
                           left_hint == nullptr && right_hint == nullptr && llimhint != nax::fit::kUniformSites &&    \
                           rlimhint != nax::fit::kUniformSites;                                                       \
        if (plain && nlim > 0 && nlim <= nax::fit::kFewPairs &&                                                       \
            nax::fit::integrate_short(task, nlim, llim, rlim, r, rhint))                                              \
            return DfStatusOk;                                                                                        \
        auto call =                                                                                                   \
            nax::fit::call_of<T>(left, left_parameters, right, right_parameters, interior, interior_parameters);      \
        return nax::fit::integrate_entry<T>(task, nlim, {llim, llimhint, left_hint}, {rlim, rlimhint, right_hint}, r, \
                                            rhint, call, search, search_parameters, threaders);                       \
    }
NAX_DF_INTEGRATE(d, double)
NAX_DF_INTEGRATE(s, float)
