// Editors of data-fitting tasks. Each stores what it accepted before a failing test.
#include "fit/partition_index.h"
#include "fit/pointer_array.h"
#include "fit/task.h"

namespace nax::fit {
namespace {

// Boundary types that read no values, or that only some families give values to.
constexpr bool bc_may_be_null(int64_t bc_type) {
    return bc_type == kBcNone || bc_type == kBcNotAKnot || bc_type == kBcFreeEnd || bc_type == kBcPeriodic;
}

template <class T>
int32_t edit_coefficients(Task& task, T* scoeff, int64_t hint) {
    if (task.ny == 0) return DfStatusBadNy;
    return set_coefficients<T>(task, scoeff, hint) ? DfStatusOk : DfStatusMemory;
}

// Doesn't look at `dimension`, unlike the other editors.
template <class T>
int32_t edit_spline(Task* task, int64_t s_order, int64_t s_type, int64_t bc_type, const T* bc, int64_t ic_type,
                    const T* ic, T* scoeff, int64_t scoeffhint) {
    if (task == nullptr) return DfStatusNullTask;
    if (s_order < 0) return DfStatusBadOrder;
    if (s_type < 0) return DfStatusBadType;
    task->s_order = s_order;
    task->s_type = s_type;
    if (!bc_may_be_null(bc_type) && bc == nullptr) return DfStatusBadBc;
    task->bc_type = bc_type;
    task->bc = bc;
    if (ic_type == kNoInternal && ic != nullptr) return DfStatusBadIcType;
    if (ic_type != kNoInternal && ic == nullptr) return DfStatusBadIc;
    task->ic_type = ic_type;
    task->ic = ic;
    if (scoeff != nullptr)
        if (const int32_t status = edit_coefficients<T>(*task, scoeff, scoeffhint)) return status;
    task->scoeffhint = scoeffhint;
    return DfStatusOk;
}

template <class T>
int32_t store_pointer(Task& task, int64_t attribute, const T* pointer) {
    switch (attribute) {
        case NAX_DF_ATTRIBUTE_X:
            task.x = pointer;
            return DfStatusOk;
        case NAX_DF_ATTRIBUTE_IC:
            task.ic = pointer;
            return DfStatusOk;
        case NAX_DF_ATTRIBUTE_BC:
            task.bc = pointer;
            return DfStatusOk;
        case NAX_DF_ATTRIBUTE_Y:
            return set_functions<T>(task, pointer) ? DfStatusOk : DfStatusMemory;
        // The caller's coefficients are written by construction; the editor's one pointer type is const for inputs.
        default:
            return edit_coefficients<T>(task, const_cast<T*>(pointer), task.scoeffhint);
    }
}

template <class T>
int32_t edit_pointer(Task* task, int64_t attribute, const T* pointer) {
    if (task == nullptr) return DfStatusNullTask;
    if (task->dimension != 1) return DfStatusOk;
    switch (attribute) {
#define NAX_DF_POINTER(id, field, refused) \
    case id:                               \
        return pointer == nullptr ? refused : store_pointer<T>(*task, attribute, pointer);
#include "fit/attributes.def"
#undef NAX_DF_POINTER
        default:
            return DfStatusBadAttribute;
    }
}

template <class T>
int32_t edit_indexed_pointer(Task* task, int64_t attribute, int64_t index, const T* pointer) {
    if (task == nullptr) return DfStatusNullTask;
    if (task->dimension != 1) return DfStatusOk;
    if (attribute == NAX_DF_ATTRIBUTE_Y && has_columns(*task)) return DfStatusBadYHint;
    if (attribute != NAX_DF_ATTRIBUTE_Y && attribute != NAX_DF_ATTRIBUTE_SCOEFF) return DfStatusBadAttribute;
    if (index < 0 || index >= task->ny) return DfStatusBadIndex;
    if (attribute == NAX_DF_ATTRIBUTE_Y) {
        if (pointer == nullptr || task->y == nullptr) return DfStatusBadY;
        if (!grow_functions(*task)) return DfStatusMemory;
        task->y[index] = pointer;
    } else {
        if (pointer == nullptr || task->scoeff == nullptr) return DfStatusBadCoeff;
        if (!grow_coefficients(*task)) return DfStatusMemory;
        task->scoeff[index] = const_cast<T*>(pointer);
    }
    return DfStatusOk;
}

// Editing to 1 is the one way to index a new partition; the other hints leave the index as it is, even when there is
// none.
int32_t rebuild_index(Task& task, int64_t attribute, int64_t value) {
    if (attribute != NAX_DF_ATTRIBUTE_XHINT || value != kNonUniform) return DfStatusOk;
    return build_partition_index(task) ? DfStatusOk : DfStatusMemory;
}

int32_t edit_value(Task* task, int64_t attribute, int64_t v) {
    if (task == nullptr) return DfStatusNullTask;
    if (task->dimension != 1) return DfStatusOk;
    switch (attribute) {
#define NAX_DF_VALUE(id, field, accepted, refused) \
    case id:                                       \
        if (!(accepted)) return refused;           \
        task->field = v;                           \
        return rebuild_index(*task, attribute, v);
#include "fit/attributes.def"
#undef NAX_DF_VALUE
        default:
            return DfStatusBadAttribute;
    }
}

}  // namespace
}  // namespace nax::fit

using nax::fit::Task;

extern "C" int32_t nax_df_kernel_dEditPPSpline1D(Task* task, int64_t s_order, int64_t s_type, int64_t bc_type,
                                                 const double* bc, int64_t ic_type, const double* ic, double* scoeff,
                                                 int64_t scoeffhint) {
    return nax::fit::edit_spline(task, s_order, s_type, bc_type, bc, ic_type, ic, scoeff, scoeffhint);
}
extern "C" int32_t nax_df_kernel_sEditPPSpline1D(Task* task, int64_t s_order, int64_t s_type, int64_t bc_type,
                                                 const float* bc, int64_t ic_type, const float* ic, float* scoeff,
                                                 int64_t scoeffhint) {
    return nax::fit::edit_spline(task, s_order, s_type, bc_type, bc, ic_type, ic, scoeff, scoeffhint);
}

extern "C" int32_t nax_df_kernel_dEditPtr(Task* task, int64_t attribute, const double* pointer) {
    return nax::fit::edit_pointer(task, attribute, pointer);
}
extern "C" int32_t nax_df_kernel_sEditPtr(Task* task, int64_t attribute, const float* pointer) {
    return nax::fit::edit_pointer(task, attribute, pointer);
}

extern "C" int32_t nax_df_kernel_dEditIdxPtr(Task* task, int64_t attribute, int64_t index, const double* pointer) {
    return nax::fit::edit_indexed_pointer(task, attribute, index, pointer);
}
extern "C" int32_t nax_df_kernel_sEditIdxPtr(Task* task, int64_t attribute, int64_t index, const float* pointer) {
    return nax::fit::edit_indexed_pointer(task, attribute, index, pointer);
}

extern "C" int32_t nax_df_kernel_iEditVal(Task* task, int64_t attribute, int64_t value) {
    return nax::fit::edit_value(task, attribute, value);
}
