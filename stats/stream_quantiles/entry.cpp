// Quantiles of data that arrive in blocks: the entry, and the state that the task keeps between calls.
#include <algorithm>
#include <cstring>

#include "nax/statistics_order.h"
#include "stats/order/variables.h"
#include "stats/stream_quantiles/summary.h"

namespace nax::stats {
namespace {

template <class T>
bool are_orders(const T* orders, int64_t m) {
    bool within = true;
    for (int64_t r = 0; r < m; ++r) within &= orders[r] >= 0 && orders[r] <= 1;
    return within;
}

template <class T>
int32_t check(const Task& task, uint64_t method) {
    const int64_t n = integer_or(task, task.observation_count, -1);
    if (n < 0) return SsStatusBadObservationCount;
    if (n > 0) {
        if (task.observations == nullptr) return SsStatusNoObservations;
        if (task.observation_storage == nullptr) return SsStatusNoStorage;
        if (!is_storage(integer(task, task.observation_storage))) return SsStatusBadStorage;
    }
    if (task.stream_quantiles == nullptr) return SsStatusNoStreamQuantiles;
    if (task.stream_orders == nullptr) return SsStatusNoStreamOrders;
    const int64_t m = integer_or(task, task.stream_order_count, -1);
    if (m < 0) return SsStatusBadStreamOrders;
    if (task.stream_param_count == nullptr) return SsStatusNoStreamParamCount;
    if (integer(task, task.stream_param_count) != 1) return SsStatusBadStreamParamCount;
    if (!are_orders(reals<T>(task.stream_orders), m)) return SsStatusBadStreamOrders;
    if (task.stream_params == nullptr) return SsStatusNoStreamParams;
    if ((method & (NAX_SS_METHOD_STREAM | NAX_SS_METHOD_STREAM_FAST)) == 0) return SsStatusBadMethod;
    const T epsilon = reals<T>(task.stream_params)[0];
    if (!(epsilon > 0 && epsilon <= 1)) return SsStatusBadStreamAccuracy;
    if (integer_or(task, task.dimension, 0) < 1) return SsStatusBadDimension;
    return SsStatusOk;
}

bool is_registered(const Task& task) {
    for (int32_t k = 0; k < task.cleanup_count; ++k)
        if (task.cleanup_callbacks[k] == __stoSQuantilesFreeBuffers) return true;
    return false;
}

// The state of a first call; null when memory is short.
StreamState* create_state(Task& task, int64_t p, double epsilon) {
    service::Block<StreamState> state(1);
    service::Block<StreamVariable> variables(static_cast<std::size_t>(p));
    if (!state || !variables) return nullptr;
    if (!is_registered(task) && !add_cleanup(task, __stoSQuantilesFreeBuffers)) return nullptr;
    std::memset(variables.get(), 0, static_cast<std::size_t>(p) * sizeof(StreamVariable));
    const VariableMask mask = variable_mask(task);
    for (int64_t j = 0; j < p; ++j) variables[static_cast<std::size_t>(j)].selected = mask[j] ? 1 : 0;
    StreamState* const result = state.detach();
    result->variable_count = p;
    plan_levels(*result, epsilon);
    result->variables = variables.detach();
    task.stream_state = result;
    return result;
}

// Whether the mask selects none of the variables that the summaries left out.
bool selection_matches(const Task& task, const StreamState& state) {
    const VariableMask mask = variable_mask(task);
    if (!mask) return true;
    for (int64_t j = 0; j < state.variable_count; ++j)
        if (mask[j] && state.variables[j].selected == 0) return false;
    return true;
}

template <class T>
struct FeedingJob {
    const Task& task;
    StreamState& state;
    int64_t n;
    bool rows;
    int32_t status;

    void run(int64_t j, int) {
        StreamVariable& summary = state.variables[j];
        if (summary.selected == 0) return;
        const Variable<T> x = variable(reals<T>(task.observations), rows, state.variable_count, n, j);
        if (!add_values(state, summary, x.base, x.stride, n))
            __atomic_store_n(&status, SsStatusMemory, __ATOMIC_RELAXED);
    }
};

template <class T>
int32_t feed(const Task& task, StreamState& state, int64_t n, const Threaders* threaders) {
    constexpr int64_t kWorthThreads = 1 << 14;  // values: the pool takes microseconds to start
    const int64_t p = state.variable_count;
    FeedingJob<T> job{task, state, n, is_rows(integer(task, task.observation_storage), p), SsStatusOk};
    const int64_t threads = p > 1 && n * p >= kWorthThreads ? std::min<int64_t>(thread_limit(threaders), p) : 1;
    for_each_variable(p, threads, threaders, job);
    return job.status;
}

template <class T>
int32_t read(const Task& task, StreamState& state) {
    const int64_t m = integer(task, task.stream_order_count);
    T* quantiles = reals<T>(task.stream_quantiles);
    for (int64_t j = 0; j < state.variable_count; ++j) {
        StreamVariable& summary = state.variables[j];
        if (summary.selected == 0) continue;
        if (summary.total > 0 && !read_quantiles(state, summary, reals<T>(task.stream_orders), m, quantiles))
            return SsStatusMemory;
        quantiles += m;
    }
    return SsStatusOk;
}

template <class T>
[[gnu::noinline]] int32_t feed_and_read(Task& task, uint64_t method, const Threaders* threaders) {
    auto* state = static_cast<StreamState*>(task.stream_state);
    if (state == nullptr) {
        const double epsilon = static_cast<double>(reals<T>(task.stream_params)[0]);
        state = create_state(task, integer(task, task.dimension), epsilon);
        if (state == nullptr) return SsStatusMemory;
    } else if (!selection_matches(task, *state)) {
        return SsStatusBadVariableMask;
    }
    const int64_t n = integer(task, task.observation_count);
    if (n > 0)
        if (const int32_t status = feed<T>(task, *state, n, threaders); status != SsStatusOk) return status;
    return (method & NAX_SS_METHOD_STREAM) != 0 ? read<T>(task, *state) : SsStatusOk;
}

// Observations that come singly, of one variable, go straight to its summary.
template <class T>
int32_t stream_quantiles(Task& task, uint64_t, uint64_t method, const Threaders* threaders) {
    if (const int32_t status = check<T>(task, method); status != SsStatusOk) return status;
    const auto* const state = static_cast<const StreamState*>(task.stream_state);
    if (state != nullptr && state->variable_count == 1 && task.variable_mask == nullptr &&
        (method & NAX_SS_METHOD_STREAM) == 0 && integer(task, task.observation_count) == 1 &&
        add_one(*state, state->variables[0], reals<T>(task.observations)[0]))
        return SsStatusOk;
    return feed_and_read<T>(task, method, threaders);
}

}  // namespace
}  // namespace nax::stats

NAX_SS_ENTRIES(SSStreamQuantiles, stream_quantiles)

extern "C" int32_t __stoSQuantilesFreeBuffers(nax_ss_task* task) {
    using namespace nax::stats;
    auto* const state = static_cast<StreamState*>(task->stream_state);
    if (state == nullptr) return SsStatusOk;
    for (int64_t j = 0; j < state->variable_count; ++j) release(state->variables[j]);
    nax_serv_deallocate(state->variables);
    nax_serv_deallocate(state);
    task->stream_state = nullptr;
    return SsStatusOk;
}
