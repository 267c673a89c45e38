// What the entries that rank share: the selected variables, one variable's values, and the loop over variables.
#pragma once

#include <cstdint>

#include "service/small_block.h"
#include "service/threaders.h"
#include "stats/task.h"

namespace nax::stats {

// Reals that an entry keeps on the stack: short data shouldn't wait for an allocator.
inline constexpr std::size_t kShortScratch = 512;

// The numbers of the selected variables in ascending order.
class SelectedVariables {
public:
    // False when memory is short.
    bool find(const Task& task, int64_t p) {
        count_ = 0;
        if (!list_.allocate(static_cast<std::size_t>(p > 0 ? p : 1))) return false;
        const VariableMask mask = variable_mask(task);
        for (int64_t j = 0; j < p; ++j)
            if (mask[j]) list_[static_cast<std::size_t>(count_++)] = j;
        return true;
    }
    int64_t count() const { return count_; }
    int64_t operator[](int64_t i) const { return list_[static_cast<std::size_t>(i)]; }

private:
    service::SmallBlock<int64_t, 32> list_;
    int64_t count_ = 0;
};

// One variable of an observation matrix.
template <class T>
struct Variable {
    T* base;
    int64_t stride;
    bool is_contiguous() const { return stride == 1; }
    void copy_to(T* target, int64_t n) const {
        for (int64_t i = 0; i < n; ++i) target[i] = base[i * stride];
    }
};
template <class T>
Variable<T> variable(T* matrix, bool rows, int64_t p, int64_t n, int64_t j) {
    return rows ? Variable<T>{matrix + j * n, 1} : Variable<T>{matrix + j, p};
}

// Scratch of all threads together stays about a gibibyte.
inline int64_t threads_within_memory(int64_t limit, int64_t bytes_per_thread) {
    const int64_t fitting = (int64_t{1} << 30) / (bytes_per_thread > 0 ? bytes_per_thread : 1);
    const int64_t most = fitting > 1 ? fitting : 1;
    return most < limit ? most : limit;
}

// Calls job.run(i, thread) for i below count, on up to `threads` threads.
template <class Job>
void for_each_variable(int64_t count, int64_t threads, const Threaders* threaders, Job& job) {
    if (threads <= 1 || count <= 1) {
        for (int64_t i = 0; i < count; ++i) job.run(i, 0);
        return;
    }
    threaders->parallel_for(count, static_cast<int>(threads), &job, [](int64_t i, int thread, int, void* context) {
        static_cast<Job*>(context)->run(i, thread);
    });
}

// Both precisions of an entry, under one name.
#define NAX_SS_ENTRIES(name, function)                                                                                 \
    extern "C" int32_t _stod##name(nax_ss_task* task, uint64_t estimates, uint64_t method,                             \
                                   const nax_threaders* threaders) {                                                   \
        return task == nullptr ? SsStatusNullTask : nax::stats::function<double>(*task, estimates, method, threaders); \
    }                                                                                                                  \
    extern "C" int32_t _stos##name(nax_ss_task* task, uint64_t estimates, uint64_t method,                             \
                                   const nax_threaders* threaders) {                                                   \
        return task == nullptr ? SsStatusNullTask : nax::stats::function<float>(*task, estimates, method, threaders);  \
    }

}  // namespace nax::stats
