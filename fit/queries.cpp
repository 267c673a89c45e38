// Queries of data-fitting tasks.
#include "fit/task.h"

namespace nax::fit {
namespace {

const void* first(const void* const* array) { return array == nullptr ? nullptr : array[0]; }
const void* first(void* const* array) { return array == nullptr ? nullptr : array[0]; }
const void* first(const void* pointer) { return pointer; }

template <class T>
int32_t query_pointer(const Task* task, int64_t attribute, T** result) {
    if (task == nullptr) return DfStatusNullTask;
    if (result == nullptr) return DfStatusNullOutput;
    if (task->dimension != 1) return DfStatusOk;
    switch (attribute) {
#define NAX_DF_POINTER(id, field, refused)                                   \
    case id:                                                                 \
        *result = const_cast<T*>(static_cast<const T*>(first(task->field))); \
        return DfStatusOk;
#include "fit/attributes.def"
#undef NAX_DF_POINTER
        default:
            return DfStatusBadAttribute;
    }
}

// An index equal to ny is let through and reads the null behind the last entry; the editor refuses it.
template <class T>
int32_t query_indexed_pointer(const Task* task, int64_t attribute, int64_t index, T** result) {
    if (task == nullptr) return DfStatusNullTask;
    if (result == nullptr) return DfStatusNullOutput;
    if (index < 0 || index > task->ny) return DfStatusBadIndex;
    if (task->dimension != 1) return DfStatusOk;
    if (attribute == NAX_DF_ATTRIBUTE_Y) {
        if (has_columns(*task)) return DfStatusBadYHint;
        const bool set = task->y != nullptr && index < task->y_entries;
        *result = set ? const_cast<T*>(static_cast<const T*>(task->y[index])) : nullptr;
        return DfStatusOk;
    }
    if (attribute == NAX_DF_ATTRIBUTE_SCOEFF) {
        *result = coefficients<T>(*task, index);
        return DfStatusOk;
    }
    return DfStatusBadAttribute;
}

int32_t query_value(const Task* task, int64_t attribute, void* result) {
    if (task == nullptr) return DfStatusNullTask;
    if (result == nullptr) return DfStatusNullOutput;
    if (task->dimension != 1) return DfStatusOk;
    int64_t value;
    switch (attribute) {
#define NAX_DF_VALUE(id, field, accepted, refused) \
    case id:                                       \
        value = task->field;                       \
        break;
#include "fit/attributes.def"
#undef NAX_DF_VALUE
        default:
            return DfStatusBadAttribute;
    }
    if (task->int_width == 0)
        *static_cast<int32_t*>(result) = static_cast<int32_t>(value);
    else
        *static_cast<int64_t*>(result) = value;
    return DfStatusOk;
}

}  // namespace
}  // namespace nax::fit

using nax::fit::Task;

extern "C" int32_t nax_df_kernel_dQueryPtr(const Task* task, int64_t attribute, double** pointer) {
    return nax::fit::query_pointer(task, attribute, pointer);
}
extern "C" int32_t nax_df_kernel_sQueryPtr(const Task* task, int64_t attribute, float** pointer) {
    return nax::fit::query_pointer(task, attribute, pointer);
}
extern "C" int32_t nax_df_kernel_dQueryIdxPtr(const Task* task, int64_t attribute, int64_t index, double** pointer) {
    return nax::fit::query_indexed_pointer(task, attribute, index, pointer);
}
extern "C" int32_t nax_df_kernel_sQueryIdxPtr(const Task* task, int64_t attribute, int64_t index, float** pointer) {
    return nax::fit::query_indexed_pointer(task, attribute, index, pointer);
}
extern "C" int32_t nax_df_kernel_iQueryVal(const Task* task, int64_t attribute, void* value) {
    return nax::fit::query_value(task, attribute, value);
}
