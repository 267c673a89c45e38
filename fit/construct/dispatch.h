// The kernels of construction under their exported names, and the tables that the entries pick them from.
// A kernel serves both precisions: it reads the task's.
#pragma once

#include "fit/construct/spline_data.h"

extern "C" {

#define NAX_DF_KERNEL(Y, G)                                                           \
    int32_t _v1DLSLinear##Y##G(nax_df_task* task, const nax_threaders* threaders);    \
    void _v1DLinearThreader##Y##G(int64_t tile, int thread, int threads, void* context); \
    int32_t _v1DQSStd##Y##G(nax_df_task* task, const nax_threaders* threaders);
#define NAX_DF_BOUNDARY_KERNEL(Y, G, B, boundary)                                           \
    int32_t _v1DCSDefault##Y##G##B(nax_df_task* task, const nax_threaders* threaders);      \
    int32_t _v1DCSNatural##Y##G##B(nax_df_task* task, const nax_threaders* threaders);      \
    void _v1DCSNaturalThreader##Y##G##B(int64_t group, int thread, int threads, void* context);
#define NAX_DF_SUBGRID_KERNEL(S, Y, G, B, boundary) \
    int32_t _v1DQSSubb##S##Y##G##B(nax_df_task* task, const nax_threaders* threaders);
#define NAX_DF_NO_KERNEL
#include "fit/construct/kernels.def"
#undef NAX_DF_KERNEL
#undef NAX_DF_BOUNDARY_KERNEL
#undef NAX_DF_SUBGRID_KERNEL
#undef NAX_DF_NO_KERNEL

#define NAX_DF_LOCAL(Family, Y, G)                                                                          \
    int32_t _v1DCS##Family##Y##G(nax_df_task* task, int64_t boundary, const nax_threaders* threaders); \
    void _v1DCS##Family##Threader##Y##G(int64_t tile, int thread, int threads, void* context);
#define NAX_DF_KERNEL(Y, G)      \
    NAX_DF_LOCAL(Akima, Y, G)    \
    NAX_DF_LOCAL(Bessel, Y, G)   \
    NAX_DF_LOCAL(Hyman, Y, G)    \
    NAX_DF_LOCAL(Hermite, Y, G)
#include "fit/construct/kernels.def"
#undef NAX_DF_KERNEL
#undef NAX_DF_LOCAL

}  // extern "C"

namespace nax::fit {

extern const Kernel _Dispatch[4], _Dispatch_Std[4], _Dispatch_Subb[56];
extern const Kernel _DispatchDefault[28], _DispatchNatural[28];
extern const BoundaryKernel _DispatchAkima[4], _DispatchBessel[4], _DispatchHyman[4], _DispatchHermite[4];

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

}  // namespace nax::fit
