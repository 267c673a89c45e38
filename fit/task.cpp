// Creation and deletion of data-fitting tasks.
#include "fit/task.h"

#include "fit/partition_index.h"
#include "fit/pointer_array.h"
#include "service/service.h"

namespace nax::fit {
namespace {

int32_t check_new(int64_t nx, const void* x, int64_t xhint, int64_t ny, const void* y, int64_t yhint) {
    if (nx < 2) return DfStatusBadNx;
    if (x == nullptr) return DfStatusBadX;
    if (!is_partition_hint(xhint)) return DfStatusBadXHint;
    if (ny < 0) return DfStatusBadNy;
    if (ny != 0 && y == nullptr) return DfStatusBadY;
    if (ny == 0 && y != nullptr) return DfStatusBadNy;
    if (!is_storage_hint(yhint)) return DfStatusBadYHint;
    return DfStatusOk;
}

template <class T>
int32_t new_task(Task** result, int64_t nx, const T* x, int64_t xhint, int64_t ny, const T* y, int64_t yhint,
                 int64_t int_width) {
    if (result == nullptr) return DfStatusNullTask;
    if (const int32_t status = check_new(nx, x, xhint, ny, y, yhint)) return status;
    void* const block = nax_serv_allocate(sizeof(TaskBlock), 128);
    if (block == nullptr) return DfStatusMemory;
    Task& task = static_cast<TaskBlock*>(block)->task;
    task = Task{};
    *result = &task;
    task.nx = nx;
    task.x = x;
    task.xhint = xhint;
    // The remaining plain fields come before the first step that can fail, so that a task left behind by a failure
    // still answers editors and queries.
    task.yhint = yhint;
    task.ny = ny;
    task.int_width = static_cast<int32_t>(int_width);
    task.component = kComponentTag;
    task.precision = sizeof(T) == sizeof(double);
    task.dimension = 1;
    if (y != nullptr && !set_functions<T>(task, y)) return DfStatusMemory;
    if (xhint != kUniform && !build_partition_index(task)) return DfStatusMemory;
    return DfStatusOk;
}

}  // namespace
}  // namespace nax::fit

using nax::fit::Task;

extern "C" int32_t nax_df_kernel_dNewTask1D(Task** task, int64_t nx, const double* x, int64_t xhint, int64_t ny,
                                            const double* y, int64_t yhint, int64_t int_width) {
    return nax::fit::new_task(task, nx, x, xhint, ny, y, yhint, int_width);
}
extern "C" int32_t nax_df_kernel_sNewTask1D(Task** task, int64_t nx, const float* x, int64_t xhint, int64_t ny,
                                            const float* y, int64_t yhint, int64_t int_width) {
    return nax::fit::new_task(task, nx, x, xhint, ny, y, yhint, int_width);
}

extern "C" int32_t nax_df_kernel_DeleteTask(Task** task) {
    if (task == nullptr || *task == nullptr) return DfStatusNullTask;
    Task& record = **task;
    nax::fit::free_pointers(record);
    nax::fit::free_partition_index(record);
    nax_serv_deallocate(&record);
    *task = nullptr;
    return DfStatusOk;
}
