// The blocks of a call: five to a thread's task, single ones for what is left, the last on the calling thread.
#include "fit/eval/evaluation.h"

namespace nax::fit {
namespace {

constexpr int64_t kSerialSites = 1024;
constexpr int64_t kTaskSites = 5 * kBlockSites;

template <class T>
int32_t evaluate_range(const Evaluation<T>& evaluation, int64_t first, int64_t count, int thread) {
    const bool callbacks = evaluation.has_callback();
    int64_t position = 0;
    for (int64_t i = 0; i < count; i += kBlockSites) {
        const int64_t n = count - i < kBlockSites ? count - i : kBlockSites;
        const int32_t status = callbacks ? evaluate_block_with_callbacks(evaluation, first + i, n, thread, position)
                                         : evaluate_block(evaluation, first + i, n, thread, position);
        if (status < 0) return status;
    }
    return DfStatusOk;
}

// Sites first + task * size .. first + (task + 1) * size - 1 for each task.
template <class T>
struct Stage {
    Evaluation<T>* evaluation;
    int64_t first;
    int64_t size;
};

template <class T>
void _v1DInterpThreader(int64_t item, int thread, int, void* context) {
    const Stage<T>& stage = *static_cast<const Stage<T>*>(context);
    const int32_t status = evaluate_range(*stage.evaluation, stage.first + item * stage.size, stage.size, thread);
    int32_t none = DfStatusOk;
    if (status < 0)
        __atomic_compare_exchange_n(&stage.evaluation->status, &none, status, false, __ATOMIC_RELAXED,
                                    __ATOMIC_RELAXED);
}

// Runs `tasks` tasks of `size` sites and returns the site behind them.
template <class T>
int64_t run_stage(Evaluation<T>& evaluation, const Threaders& threaders, int limit, int64_t first, int64_t tasks,
                  int64_t size) {
    Stage<T> stage{&evaluation, first, size};
    const int threads = tasks < limit ? static_cast<int>(tasks) : limit;
    threaders.parallel_for(tasks, threads, &stage, _v1DInterpThreader<T>);
    return first + tasks * size;
}

}  // namespace

template <class T>
int32_t evaluate_all(Evaluation<T>& evaluation, const Threaders* threaders, int limit) {
    const int64_t nsite = evaluation.nsite;
    int64_t done = 0;
    if (nsite > kSerialSites && limit > 1) {
        done = run_stage(evaluation, *threaders, limit, 0, nsite / kTaskSites, kTaskSites);
        if (evaluation.status < 0) return evaluation.status;
        const int64_t rest = nsite - done;
        if (rest > kBlockSites) done = run_stage(evaluation, *threaders, limit, done, rest / kBlockSites, kBlockSites);
        if (evaluation.status < 0) return evaluation.status;
    }
    return evaluate_range(evaluation, done, nsite - done, 0);
}

template int32_t evaluate_all(Evaluation<double>&, const Threaders*, int);
template int32_t evaluate_all(Evaluation<float>&, const Threaders*, int);

}  // namespace nax::fit
