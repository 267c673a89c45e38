// The threading component: one OpenMP pool behind the pair fetched by name and behind the table of five slots.
//
// Items are dealt out in contiguous ranges fixed by count and number of threads, so that whatever a body keeps for its
// thread is the same in every run. The chunks of the pair have no thread of their own and go to whoever is free.
#include <omp.h>
#include <pthread.h>

#include "service/futex.h"
#include "service/service.h"
#include "service/threads/component.h"
#include "service/threads/callers_words.h"

namespace {

using nax::service::ControlWords;

// A forked child has none of the threads that its parent's pool had, and the runtime would wait for them: there everything
// runs on the calling thread.
bool in_forked_child = false;

__attribute__((constructor)) void watch_forks() {
    pthread_atfork(nullptr, nullptr, [] { in_forked_child = true; });
}

// Inside a parallel region the pool is busy already: the caller is one of its threads.
int threads_limit() { return in_forked_child || omp_in_parallel() ? 1 : omp_get_max_threads(); }

int clamp_threads(int wanted, int64_t work) {
    const int limit = omp_in_parallel() ? 1 : omp_get_thread_limit();
    int threads = wanted < 1 ? threads_limit() : wanted;
    if (threads > limit) threads = limit;
    return work < threads ? static_cast<int>(work) : threads;
}

// One parallel region. The runtime orders what the threads do with what stands before and after the region; the two
// counters say so once more, to tools that watch memory accesses without knowing the runtime.
struct Team {
    const ControlWords callers_words = ControlWords::current();
    void* context;
    nax_region_body body;
    int ready = 0;
    int done = 0;

    Team(void* body_context, nax_region_body region_body) : context(body_context), body(region_body) {
        __atomic_store_n(&ready, 1, __ATOMIC_RELEASE);
    }
    void run_on_this_thread() {
        while (__atomic_load_n(&ready, __ATOMIC_ACQUIRE) == 0) {
        }
        const ControlWords own_words = ControlWords::current();
        callers_words.load();
        body(omp_get_thread_num(), omp_get_num_threads(), context);
        own_words.load();
        __atomic_fetch_add(&done, 1, __ATOMIC_RELEASE);
    }
    int finished_threads() const { return __atomic_load_n(&done, __ATOMIC_ACQUIRE); }
};

// The hand-over of `team` itself is the runtime's, out of sight of such tools.
__attribute__((no_sanitize("thread"))) void run_team(int threads, Team* team) {
#pragma omp parallel num_threads(threads) default(none) firstprivate(team)
    team->run_on_this_thread();
}

void region(int threads, void* context, nax_region_body body) {
    if (in_forked_child) return body(0, 1, context);
    Team team(context, body);
    run_team(clamp_threads(threads, INT32_MAX), &team);
    (void)team.finished_threads();
}

struct ChunkLoop {
    int chunks;
    void* context;
    nax_serv_chunk_body body;
    int next = 0;
};

void run_free_chunks(int, int, void* loop_context) {
    ChunkLoop& loop = *static_cast<ChunkLoop*>(loop_context);
    for (int chunk; (chunk = __atomic_fetch_add(&loop.next, 1, __ATOMIC_RELAXED)) < loop.chunks;)
        loop.body(chunk, 0, 0, loop.context);
}

void chunk_loop(int chunks, int, void* context, nax_serv_chunk_body body) {
    if (chunks < 1) return;
    ChunkLoop loop = {chunks, context, body};
    region(clamp_threads(0, chunks), &loop, run_free_chunks);
}

// Range of items of one thread: the first count % threads threads have one item more.
struct Range {
    int64_t first, end;
};
Range range_of(int64_t count, int thread, int threads) {
    const int64_t share = count / threads, more = count % threads;
    const int64_t first = thread * share + (thread < more ? thread : more);
    return {first, first + share + (thread < more)};
}

struct Loop {
    int64_t count;
    void* context;
    nax_loop_body body;
};

void run_share(int thread, int threads, void* loop_context) {
    const Loop& loop = *static_cast<const Loop*>(loop_context);
    const Range range = range_of(loop.count, thread, threads);
    for (int64_t item = range.first; item < range.end; ++item) loop.body(item, thread, threads, loop.context);
}

void item_loop(int64_t count, int threads, void* context, nax_loop_body body) {
    if (count < 1) return;
    Loop loop = {count, context, body};
    region(clamp_threads(threads, count), &loop, run_share);
}

// Whose turn it is to run ordered bodies. A thread has the turn when all threads before it have done all their items.
struct Turn {
    int32_t thread = 0;

    void await(int self) {
        for (int32_t seen; (seen = __atomic_load_n(&thread, __ATOMIC_ACQUIRE)) != self;)
            nax::service::futex_wait(&thread, seen);
    }
    void pass_on(int self) {
        await(self);
        __atomic_store_n(&thread, self + 1, __ATOMIC_RELEASE);
        nax::service::futex_wake(&thread, INT32_MAX);
    }
};

struct OrderedLoop {
    Loop loop;
    Turn turn;
};

// The ordered loop that this thread works for; slot 3 gets no handle of it.
thread_local Turn* current_turn = nullptr;

void run_ordered_share(int thread, int threads, void* loop_context) {
    OrderedLoop& ordered = *static_cast<OrderedLoop*>(loop_context);
    Turn* const outer_turn = current_turn;
    current_turn = &ordered.turn;
    run_share(thread, threads, &ordered.loop);
    current_turn = outer_turn;
    ordered.turn.pass_on(thread);
}

void ordered_item_loop(int64_t count, int threads, void* context, nax_loop_body body) {
    if (count < 1) return;
    OrderedLoop ordered = {{count, context, body}, {}};
    region(clamp_threads(threads, count), &ordered, run_ordered_share);
}

void run_in_thread_order(int64_t item, int thread, int threads, void* context, nax_loop_body body) {
    if (current_turn != nullptr) current_turn->await(thread);
    body(item, thread, threads, context);
}

constexpr nax_threaders kTable = {item_loop, ordered_item_loop, region, run_in_thread_order, threads_limit};

}  // namespace

extern "C" int nax_sto_serv_threader_get_num_threads_limit() { return threads_limit(); }

extern "C" void nax_sto_serv_threader_for(int chunks, int zero, void* context, nax_serv_chunk_body body) {
    chunk_loop(chunks, zero, context, body);
}

extern "C" void nax_serv_threads_fill_table(nax_threaders* table) { *table = kTable; }
