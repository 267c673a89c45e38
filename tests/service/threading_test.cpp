// Both doors of the thread pool, and what stands in for it.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xmmintrin.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <mutex>
#include <set>
#include <tuple>
#include <vector>

#include "service/service.h"
#include "service/threaders.h"
#include "tests/service/separate_layer.h"

namespace nax::testing {
namespace {

constexpr char kLimit[] = "nax_sto_serv_threader_get_num_threads_limit";
constexpr char kFor[] = "nax_sto_serv_threader_for";

// Notes what the bodies of a loop are called with.
struct Calls {
    std::mutex mutex;
    std::vector<std::tuple<int64_t, int, int>> items;  // item, thread, threads

    void add(int64_t item, int thread, int threads) {
        const std::lock_guard<std::mutex> hold(mutex);
        items.emplace_back(item, thread, threads);
    }
    std::vector<std::tuple<int64_t, int, int>> sorted() const {
        auto copy = items;
        std::sort(copy.begin(), copy.end());
        return copy;
    }
};

void note_item(int64_t item, int thread, int threads, void* calls) {
    static_cast<Calls*>(calls)->add(item, thread, threads);
}
void note_thread(int thread, int threads, void* calls) { static_cast<Calls*>(calls)->add(0, thread, threads); }
void note_chunk(int chunk, int64_t, int64_t, void* calls) { static_cast<Calls*>(calls)->add(chunk, 0, 0); }

void expect_each_once(const Calls& calls, int64_t count, int threads_asked) {
    const auto sorted = calls.sorted();
    ASSERT_EQ(static_cast<int64_t>(sorted.size()), count);
    for (int64_t i = 0; i < count; ++i) {
        const auto [item, thread, threads] = sorted[static_cast<size_t>(i)];
        EXPECT_EQ(item, i);
        EXPECT_GE(thread, 0);
        EXPECT_LT(thread, threads);
        EXPECT_LE(threads, threads_asked);
        EXPECT_EQ(threads, std::get<2>(sorted[0]));
    }
}

nax_threaders pool() {
    nax_threaders table;
    EXPECT_EQ(nax_serv_fill_threaders(&table), 0);
    return table;
}

TEST(ThreadPool, ChunksRunOnceEach) {
    const auto parallel_for = reinterpret_cast<nax_serv_parallel_for_function>(nax_serv_load_thread_fun(kFor));
    const auto limit = reinterpret_cast<nax_serv_threads_limit_function>(nax_serv_load_thread_fun(kLimit));
    ASSERT_NE(parallel_for, nullptr);
    ASSERT_NE(limit, nullptr);
    EXPECT_GE(limit(), 1);
    for (const int chunks : {0, 1, 2, 33, 1000}) {
        Calls calls;
        parallel_for(chunks, 0, &calls, note_chunk);
        const auto sorted = calls.sorted();
        ASSERT_EQ(static_cast<int>(sorted.size()), chunks);
        for (int i = 0; i < chunks; ++i) EXPECT_EQ(std::get<0>(sorted[static_cast<size_t>(i)]), i);
    }
    EXPECT_EQ(nax_serv_load_thread_fun("nax_sto_serv_threader"), nullptr);
    EXPECT_EQ(nax_serv_load_thread_fun(nullptr), nullptr);
}

TEST(ThreadPool, LoopsRunEachItemOnceWithTheSameShares) {
    const nax_threaders table = pool();
    for (const auto loop : {table.parallel_for, table.parallel_for_ordered})
        for (const int threads : {1, 2, 3, 7})
            for (const int64_t count : {int64_t{0}, int64_t{1}, int64_t{2}, int64_t{10}, int64_t{1000}}) {
                Calls calls, again;
                loop(count, threads, &calls, note_item);
                expect_each_once(calls, count, threads);
                loop(count, threads, &again, note_item);
                EXPECT_EQ(calls.sorted(), again.sorted());
            }
}

TEST(ThreadPool, RegionRunsOnEachThreadOnce) {
    const nax_threaders table = pool();
    for (const int threads : {1, 2, 5}) {
        Calls calls;
        table.parallel_region(threads, &calls, note_thread);
        const auto sorted = calls.sorted();
        EXPECT_EQ(static_cast<int>(sorted.size()), threads);
        for (size_t i = 0; i < sorted.size(); ++i) EXPECT_EQ(std::get<1>(sorted[i]), static_cast<int>(i));
    }
}

struct Merge {
    nax_threaders table;
    bool (*takes_part)(int64_t);
    std::vector<std::pair<int, int64_t>> order;  // thread, item; written by one thread at a time
};

void merge_one(int64_t item, int thread, int, void* context) {
    static_cast<Merge*>(context)->order.emplace_back(thread, item);
}

void merge_body(int64_t item, int thread, int threads, void* context) {
    const Merge& merge = *static_cast<Merge*>(context);
    if (merge.takes_part(item)) merge.table.ordered(item, thread, threads, context, merge_one);
}

TEST(ThreadPool, OrderedBodiesRunInThreadOrder) {
    Merge merge = {pool(), nullptr, {}};
    for (const auto takes_part : {+[](int64_t) { return true; }, +[](int64_t item) { return item % 5 == 4; }})
        for (const int threads : {1, 2, 4})
            for (const int64_t count : {int64_t{1}, int64_t{4}, int64_t{23}}) {
                merge.order.clear();
                merge.takes_part = takes_part;
                merge.table.parallel_for_ordered(count, threads, &merge, merge_body);
                int64_t expected = 0;
                for (int64_t item = 0; item < count; ++item) expected += takes_part(item);
                EXPECT_EQ(static_cast<int64_t>(merge.order.size()), expected);
                EXPECT_TRUE(std::is_sorted(merge.order.begin(), merge.order.end()));
            }
}

struct Words {
    std::mutex mutex;
    std::set<unsigned> control;
};

void note_control_word(int, int, void* context) {
    Words& words = *static_cast<Words*>(context);
    const std::lock_guard<std::mutex> hold(words.mutex);
    words.control.insert(_mm_getcsr() & ~0x3Fu);
    _mm_setcsr(_mm_getcsr() | 0x20);
}

TEST(ThreadPool, BodiesRunWithTheCallersControlWordAndFlagsSurvive) {
    const nax_threaders table = pool();
    const unsigned before = _mm_getcsr();
    for (const unsigned control : {0x1F80u, 0x9FC0u, 0x5F80u}) {
        Words words;
        _mm_setcsr(control);
        table.parallel_region(4, &words, note_control_word);
        const unsigned after = _mm_getcsr();
        _mm_setcsr(before);
        EXPECT_EQ(words.control, std::set<unsigned>{control});
        EXPECT_EQ(after, control | 0x20);
    }
}

struct InnerLimit {
    nax_threaders table;
    std::atomic<int> sum;
};

void add_limit(int, int, void* context) {
    InnerLimit& inner = *static_cast<InnerLimit*>(context);
    inner.sum += inner.table.max_threads();
}

TEST(ThreadPool, InsideABodyTheLimitIsOne) {
    InnerLimit inner = {pool(), 0};
    inner.table.parallel_region(2, &inner, add_limit);
    EXPECT_EQ(inner.sum, 2);
}

// Loads the component in a process where it is not loaded yet, and leaves with the limit as exit code.
[[noreturn]] void exit_with_limit(const char* omp_num_threads) {
    setenv("OMP_NUM_THREADS", omp_num_threads, 1);
    const auto limit = reinterpret_cast<nax_serv_threads_limit_function>(nax_serv_load_thread_fun(kLimit));
    nax_threaders table;
    if (nax_serv_fill_threaders(&table) != 0 || table.max_threads() != limit()) _exit(99);
    _exit(limit());
}

TEST(ThreadPoolDeathTest, SizeFollowsTheEnvironment) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(exit_with_limit("1"), ::testing::ExitedWithCode(1), "");
    EXPECT_EXIT(exit_with_limit("5"), ::testing::ExitedWithCode(5), "");
}

// What runs in a child of a process whose pool has threads. A hang ends it with a signal.
void exit_after_every_entry(const nax_threaders& table) {
    alarm(20);
    EXPECT_EQ(table.max_threads(), 1);
    EXPECT_EQ(reinterpret_cast<nax_serv_threads_limit_function>(nax_serv_load_thread_fun(kLimit))(), 1);
    Calls chunks, items, ordered_items, threads;
    reinterpret_cast<nax_serv_parallel_for_function>(nax_serv_load_thread_fun(kFor))(7, 0, &chunks, note_chunk);
    EXPECT_EQ(chunks.items.size(), 7u);
    table.parallel_for(5, 3, &items, note_item);
    expect_each_once(items, 5, 1);
    table.parallel_for_ordered(5, 3, &ordered_items, note_item);
    expect_each_once(ordered_items, 5, 1);
    Merge merge = {table, [](int64_t) { return true; }, {}};
    table.parallel_for_ordered(4, 2, &merge, merge_body);
    EXPECT_EQ(merge.order.size(), 4u);
    table.parallel_region(3, &threads, note_thread);
    EXPECT_EQ(threads.sorted(), (std::vector<std::tuple<int64_t, int, int>>{{0, 0, 1}}));
    nax_threaders fresh;
    EXPECT_EQ(nax_serv_fill_threaders(&fresh), 0);
    EXPECT_EQ(fresh.max_threads(), 1);
    _exit(::testing::Test::HasFailure() ? 1 : 0);
}

TEST(ThreadPool, ForkedChildrenRunEverythingThemselves) {
    const nax_threaders table = pool();
    Calls before, after;
    table.parallel_for(10, 2, &before, note_item);
    for (int generation = 0; generation < 2; ++generation) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            if (generation == 0) exit_after_every_entry(table);
            // A grandchild, and the child beside it.
            const pid_t grandchild = fork();
            if (grandchild == 0) exit_after_every_entry(table);
            int status = 1;
            waitpid(grandchild, &status, 0);
            if (status != 0) _exit(2);
            exit_after_every_entry(table);
        }
        int status = 1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    table.parallel_for(10, 2, &after, note_item);
    EXPECT_EQ(before.sorted(), after.sorted());
}

void expect_serial(SeparateLayer& layer) {
    nax_threaders table;
    EXPECT_EQ(layer.function<int(nax_threaders*)>("nax_serv_fill_threaders")(&table), 1);
    EXPECT_EQ(thread_limit(&table), 1);
    Calls items, threads, chunks;
    table.parallel_for(5, 3, &items, note_item);
    expect_each_once(items, 5, 1);
    table.parallel_region(3, &threads, note_thread);
    EXPECT_EQ(threads.items.size(), 1u);
    Merge merge = {table, [](int64_t) { return true; }, {}};
    table.parallel_for_ordered(4, 2, &merge, merge_body);
    EXPECT_EQ(merge.order.size(), 4u);
    const auto load = layer.function<void*(const char*)>("nax_serv_load_thread_fun");
    EXPECT_EQ(reinterpret_cast<nax_serv_threads_limit_function>(load(kLimit))(), 1);
    reinterpret_cast<nax_serv_parallel_for_function>(load(kFor))(3, 0, &chunks, note_chunk);
    EXPECT_EQ(chunks.items.size(), 3u);
}

// In a process of its own: where the component is loaded already, the loader finds it by its name wherever it stands.
void exit_after_serial_check(void (SeparateLayer::*prepare)()) {
    {
        SeparateLayer layer;
        if (prepare != nullptr) (layer.*prepare)();
        expect_serial(layer);
    }
    _exit(::testing::Test::HasFailure() ? 1 : 0);
}

TEST(ThreadingComponentDeathTest, MissingOrBrokenGivesTheSerialPair) {
#if defined(__clang__) && NAX_INSTRUMENTED
    GTEST_SKIP() << "the sanitizer's dlopen searches on behalf of the program, which finds the built component";
#endif
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto passed = ::testing::ExitedWithCode(0);
    EXPECT_EXIT(exit_after_serial_check(nullptr), passed, "");
    EXPECT_EXIT(exit_after_serial_check(&SeparateLayer::put_broken_component), passed, "");
    EXPECT_EXIT(exit_after_serial_check(&SeparateLayer::put_component_without_functions), passed, "");
}

TEST(ThreadingComponent, IsFoundNextToTheLayer) {
    // Its pool's threads outlive the copy's files, as they outlive every call; the copy is not unloaded in between.
    static SeparateLayer layer;
    layer.put_threads_component();
    nax_threaders table;
    EXPECT_EQ(layer.function<int(nax_threaders*)>("nax_serv_fill_threaders")(&table), 0);
    Calls calls;
    table.parallel_for(10, 2, &calls, note_item);
    expect_each_once(calls, 10, 2);
}

TEST(Threaders, LimitOfATableThatIsNotThereIsOne) {
    EXPECT_EQ(thread_limit(nullptr), 1);
    const nax_threaders empty = {};
    EXPECT_EQ(thread_limit(&empty), 1);
    EXPECT_EQ(nax_serv_fill_threaders(nullptr), -1);
}

}  // namespace
}  // namespace nax::testing
