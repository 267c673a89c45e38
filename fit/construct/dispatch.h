// The tables that the entries of construction pick their kernels from, and what the entries check.
#pragma once

#include "fit/construct/spline_data.h"
#include "nax/fitting_construction.h"

namespace nax::fit {

extern const Kernel _Dispatch[4], _Dispatch_Std[4], _Dispatch_Subb[56];
extern const Kernel _DispatchDefault[28], _DispatchNatural[28];
extern const BoundaryKernel _DispatchAkima[4], _DispatchBessel[4], _DispatchHyman[4], _DispatchHermite[4];

inline namespace NAX_ISA {

// What a cubic entry checks before it calls its kernel.
struct CubicRules {
    int64_t minimum_points;
    bool unset_ends;    // takes boundary type 0
    bool checks_method;
    bool needs_internal;  // reads ic
};

// Statuses of a cubic entry in the order of its checks; `boundary` becomes the index of the boundary type.
inline int32_t check_cubic(const Task* task, int64_t method, const CubicRules& rules, int& boundary) {
    if (task == nullptr) return DfStatusNullTask;
    if (rules.checks_method && method != 0) return DfStatusBadMethod;
    if (task->nx < rules.minimum_points) return DfStatusBadNx;
    if (!is_storage_hint(task->yhint)) return DfStatusBadYHint;
    boundary = boundary_index(task->bc_type);
    if (boundary < 0 || (boundary == int(Boundary::NotSet) && !rules.unset_ends)) return DfStatusBadBcType;
    const bool value_at_seam = boundary == int(Boundary::Periodic) &&
                               (task->s_type == kDefaultType || task->s_type == kHermite || rules.needs_internal);
    if (task->bc == nullptr && (reads_two_values(boundary) || value_at_seam)) return DfStatusBadBc;
    if (rules.needs_internal && task->ic == nullptr) return DfStatusBadIc;
    return check_arrays(*task);
}

// The entry of a family whose kernels take the boundary index.
inline int32_t local_entry(Task* task, int64_t method, const CubicRules& rules, const BoundaryKernel (&kernels)[4],
                           const Threaders* threaders) {
    int boundary = 0;
    const int32_t status = check_cubic(task, method, rules, boundary);
    return status != DfStatusOk ? status : kernels[layout_grid_index(*task)](task, boundary, threaders);
}

}  // namespace NAX_ISA
}  // namespace nax::fit
