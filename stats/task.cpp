// Creation and deletion of statistics tasks.
#include "stats/task.h"

#include <cstring>

#include "service/block.h"

namespace nax::stats {
namespace {

int32_t check_new(const Integers& p, const Integers& n, const Integers& storage, const void* x) {
    if (!p || p[0] < 1) return SsStatusBadDimension;
    if (x == nullptr) return SsStatusOk;
    if (!storage) return SsStatusNoStorage;
    if (!is_exact_storage(storage[0])) return SsStatusBadStorage;
    if (!n || n[0] < 1) return SsStatusBadObservationCount;
    return SsStatusOk;
}

template <class T>
int32_t new_task(Task** result, const void* p, const void* n, const void* storage, T* x, T* weights, const void* mask,
                 uint32_t wide) {
    if (result == nullptr) return SsStatusNullTask;
    const auto view = [wide](const void* base) { return Integers{base, wide != 0}; };
    if (const int32_t status = check_new(view(p), view(n), view(storage), x)) return status;
    *result = nullptr;
    service::Block<unsigned char> block(kRecordBytes);
    if (!block) return SsStatusMemory;
    std::memset(block.get(), 0, kRecordBytes);
    Task& task = *reinterpret_cast<Task*>(block.detach());
    task.wide_integers = wide;
    task.task_kind = kTaskKind;
    task.is_double = sizeof(T) == sizeof(double);
    task.dimension = p;
    task.observation_count = n;
    task.observation_storage = storage;
    task.observations = x;
    task.weights = weights;
    task.variable_mask = mask;
    *result = &task;
    return SsStatusOk;
}

}  // namespace

bool add_cleanup(Task& task, nax_ss_cleanup callback) {
    const auto count = static_cast<std::size_t>(task.cleanup_count);
    service::Block<nax_ss_cleanup> table(count + 1);
    if (!table) return false;
    if (count > 0) std::memcpy(table.get(), task.cleanup_callbacks, count * sizeof(nax_ss_cleanup));
    table[count] = callback;
    if (task.cleanup_callbacks != nullptr) nax_serv_deallocate(task.cleanup_callbacks);
    task.cleanup_callbacks = table.detach();
    ++task.cleanup_count;
    return true;
}

}  // namespace nax::stats

using nax::stats::Task;

extern "C" int32_t __stodSSNewTask(Task** task, const void* p, const void* n, const void* x_storage, double* x,
                                   double* weights, const void* indices, uint32_t wide_integers) {
    return nax::stats::new_task(task, p, n, x_storage, x, weights, indices, wide_integers);
}
extern "C" int32_t __stosSSNewTask(Task** task, const void* p, const void* n, const void* x_storage, float* x,
                                   float* weights, const void* indices, uint32_t wide_integers) {
    return nax::stats::new_task(task, p, n, x_storage, x, weights, indices, wide_integers);
}

extern "C" int32_t __stoSSDeleteTask(Task** task) {
    if (task == nullptr) return SsStatusNullTask;
    Task& record = **task;
    if (record.work_vector != nullptr) nax_serv_deallocate(record.work_vector);
    for (int32_t i = 0; i < record.cleanup_count; ++i) record.cleanup_callbacks[i](&record);
    if (record.cleanup_callbacks != nullptr) nax_serv_deallocate(record.cleanup_callbacks);
    nax_serv_deallocate(&record);
    *task = nullptr;
    return SsStatusOk;
}
