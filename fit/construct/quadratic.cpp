// The entry of the quadratic splines.
#include "fit/construct/quadratic.h"

#include "nax/fitting_construction.h"

namespace nax::fit {
namespace {

int32_t quadratic_entry(Task* task, const Threaders* threaders) {
    if (task == nullptr) return DfStatusNullTask;
    if (!is_storage_hint(task->yhint)) return DfStatusBadYHint;
    if (task->nx < 2) return DfStatusBadNx;
    if (task->s_type == kDefaultType) return standard_quadratic(task, threaders);
    if (task->s_type == kSubbotin) return subbotin_quadratic(task, threaders);
    return DfStatusBadMethod;
}

}  // namespace
}  // namespace nax::fit

int32_t nax_df_kernel_dDFQuadraticSpline1D(nax_df_task* task, int64_t, int64_t, const nax_threaders* threaders) {
    return nax::fit::quadratic_entry(task, threaders);
}
int32_t nax_df_kernel_sDFQuadraticSpline1D(nax_df_task* task, int64_t, int64_t, const nax_threaders* threaders) {
    return nax::fit::quadratic_entry(task, threaders);
}
