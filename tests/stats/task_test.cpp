// The task record: creation, editors over the list of parameters, deletion with its cleanups.
#include "stats/task.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "nax/statistics.h"
#include "service/service.h"
#include "tests/lib/failing_service.h"

namespace nax::testing {
namespace {

// Rows of the parameter list, as a table.
struct Row {
    int32_t id;
    bool is_integer;
    int32_t null_status;
    void* (*read)(const nax_ss_task&);
};
const Row kRows[] = {
#define NAX_SS_INTEGERS(id, field, name, status, content) \
    {id, true, SsStatus##status, [](const nax_ss_task& t) { return const_cast<void*>(t.field); }},
#define NAX_SS_REALS(id, field, name, status, content) \
    {id, false, SsStatus##status, [](const nax_ss_task& t) { return t.field; }},
#define NAX_SS_PRIVATE(type, field)
#include "stats/parameters.def"
#undef NAX_SS_INTEGERS
#undef NAX_SS_REALS
#undef NAX_SS_PRIVATE
};

nax_ss_task* empty_task(bool is_double) {
    const int32_t p = 3;
    static int32_t keep;
    keep = p;
    nax_ss_task* task = nullptr;
    const int32_t status = is_double ? __stodSSNewTask(&task, &keep, nullptr, nullptr, nullptr, nullptr, nullptr, 0)
                                     : __stosSSNewTask(&task, &keep, nullptr, nullptr, nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(status, SsStatusOk);
    return task;
}

TEST(StatisticsTask, CreationReportsTheFirstBadArgumentAndStoresTheRest) {
    double x[6] = {}, w[2] = {};
    const int64_t p = 3, n = 2, zero = 0, rows = 0x10000, both = 0x30000, mask[3] = {1, 1, 1};
    nax_ss_task* task = nullptr;
    const auto create = [&](const void* pp, const void* pn, const void* ps, double* px) {
        return __stodSSNewTask(&task, pp, pn, ps, px, w, mask, 1);
    };
    EXPECT_EQ(__stodSSNewTask(nullptr, &p, &n, &rows, x, w, mask, 1), SsStatusNullTask);
    EXPECT_EQ(create(nullptr, nullptr, nullptr, x), SsStatusBadDimension);
    EXPECT_EQ(create(&zero, nullptr, nullptr, x), SsStatusBadDimension);
    EXPECT_EQ(create(&p, nullptr, nullptr, x), SsStatusNoStorage);
    EXPECT_EQ(create(&p, nullptr, &both, x), SsStatusBadStorage);
    EXPECT_EQ(create(&p, nullptr, &rows, x), SsStatusBadObservationCount);
    EXPECT_EQ(create(&p, &zero, &rows, x), SsStatusBadObservationCount);
    EXPECT_EQ(task, nullptr);
    const int failures = for_each_failing_allocation(
        [&] {
            task = reinterpret_cast<nax_ss_task*>(w);
            const int32_t status = create(&p, &n, &rows, x);
            if (status == SsStatusOk) return __stoSSDeleteTask(&task);
            EXPECT_EQ(task, nullptr);
            return status;
        },
        int32_t{SsStatusMemory}, int32_t{SsStatusOk});
    EXPECT_EQ(failures, 1);
    ASSERT_EQ(create(&p, &n, &rows, x), SsStatusOk);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(task) % 128, 0u);
    EXPECT_EQ(task->wide_integers, 1u);
    EXPECT_EQ(task->task_kind, 2u);
    EXPECT_EQ(task->is_double, 1u);
    EXPECT_EQ(task->dimension, &p);
    EXPECT_EQ(task->observation_count, &n);
    EXPECT_EQ(task->observation_storage, &rows);
    EXPECT_EQ(task->observations, x);
    EXPECT_EQ(task->weights, w);
    EXPECT_EQ(task->variable_mask, mask);
    for (const Row& row : kRows)
        if (row.id > 6) {
            EXPECT_EQ(row.read(*task), nullptr) << row.id;
        }
    EXPECT_EQ(__stoSSDeleteTask(&task), SsStatusOk);
    EXPECT_EQ(task, nullptr);
    EXPECT_EQ(__stoSSDeleteTask(nullptr), SsStatusNullTask);
}

template <class T>
struct Editors;
template <>
struct Editors<double> {
    static constexpr auto edit = __stodSSEditTask;
};
template <>
struct Editors<float> {
    static constexpr auto edit = __stosSSEditTask;
};

template <class T>
void check_single_editors() {
    nax_ss_task* task = empty_task(sizeof(T) == 8);
    char place[sizeof(T) * 100];
    bool seen[80] = {};
    for (const Row& row : kRows) {
        void* const value = place + sizeof(T) * static_cast<std::size_t>(row.id);
        seen[row.id] = true;
        const auto own = [&](void* v) {
            return row.is_integer ? __stoiSSEditTask(task, row.id, v)
                                  : Editors<T>::edit(task, row.id, static_cast<T*>(v));
        };
        const auto foreign = [&](void* v) {
            return row.is_integer ? Editors<T>::edit(task, row.id, static_cast<T*>(v))
                                  : __stoiSSEditTask(task, row.id, v);
        };
        EXPECT_EQ(foreign(value), SsStatusUnknownParameter) << row.id;
        EXPECT_NE(row.read(*task), value) << row.id;
        EXPECT_EQ(own(value), SsStatusOk) << row.id;
        EXPECT_EQ(row.read(*task), value) << row.id;
        EXPECT_EQ(own(nullptr), row.null_status) << row.id;
        EXPECT_EQ(row.read(*task), value) << "an editor never clears: " << row.id;
    }
    for (const int32_t id : {0, 80, -1})
        EXPECT_TRUE(Editors<T>::edit(task, id, nullptr) == SsStatusUnknownParameter &&
                    __stoiSSEditTask(task, id, place) == SsStatusUnknownParameter)
            << id;
    for (int id = 1; id < 80; ++id) EXPECT_TRUE(seen[id]) << id;
    EXPECT_EQ(Editors<T>::edit(nullptr, 0, nullptr), SsStatusNullTask);
    EXPECT_EQ(__stoiSSEditTask(nullptr, 0, nullptr), SsStatusNullTask);
    EXPECT_EQ(__stoSSDeleteTask(&task), SsStatusOk);
}

TEST(StatisticsTask, EditorsOfOneParameterKnowTheirIdsAndRefuseNull) {
    check_single_editors<double>();
    check_single_editors<float>();
}

// Each argument of a topic's editor lands in its own field, and a null leaves it: the fields are those of the ids.
template <class T, class... Arguments>
void check_topic(int32_t (*edit)(nax_ss_task*, Arguments...), std::initializer_list<int32_t> ids) {
    ASSERT_EQ(ids.size(), sizeof...(Arguments));
    nax_ss_task* task = empty_task(sizeof(T) == 8);
    T place[80] = {};
    std::size_t next = 0;
    const auto argument = [&]<class A>(A*) -> A* { return const_cast<T*>(place) + *(ids.begin() + next++); };
    // Braces evaluate from left to right.
    struct Call {
        int32_t status;
        Call(int32_t (*f)(nax_ss_task*, Arguments...), nax_ss_task* t, Arguments... a) : status(f(t, a...)) {}
    };
    EXPECT_EQ((Call{edit, task, argument(static_cast<Arguments>(nullptr))...}.status), SsStatusOk);
    for (const bool cleared : {false, true}) {
        if (cleared) {
            EXPECT_EQ(edit(task, static_cast<Arguments>(nullptr)...), SsStatusOk);
        }
        for (const Row& row : kRows) {
            const bool named = std::find(ids.begin(), ids.end(), row.id) != ids.end();
            if (row.id == 1 && !named) continue;  // creation sets it
            const void* const expected = named ? place + row.id : nullptr;
            EXPECT_EQ(row.read(*task), expected) << row.id;
        }
    }
    EXPECT_EQ(edit(nullptr, static_cast<Arguments>(nullptr)...), SsStatusNullTask);
    EXPECT_EQ(__stoSSDeleteTask(&task), SsStatusOk);
}

#define CHECK_TOPIC(topic, ...)                              \
    check_topic<double>(__stodSSEdit##topic, {__VA_ARGS__}); \
    check_topic<float>(__stosSSEdit##topic, {__VA_ARGS__})

TEST(StatisticsTask, EditorsOfATopicStoreTheirArgumentsInOrder) {
    CHECK_TOPIC(Moments, 7, 8, 9, 10, 11, 12, 13);
    CHECK_TOPIC(Sums, 67, 68, 69, 70, 71, 72, 73);
    CHECK_TOPIC(CovCor, 7, 19, 20, 21, 22);
    CHECK_TOPIC(CP, 7, 67, 74, 75);
    CHECK_TOPIC(PartialCovCor, 45, 19, 20, 21, 22, 46, 47, 48, 49);
    CHECK_TOPIC(Quantiles, 24, 25, 26, 27, 44);
    CHECK_TOPIC(StreamQuantiles, 64, 65, 66, 62, 63);
    CHECK_TOPIC(PooledCovariance, 28, 30, 31, 32, 33, 35);
    CHECK_TOPIC(MissingVals, 50, 51, 52, 53, 58, 59, 54, 55, 56, 57);
    CHECK_TOPIC(OutDetect, 41, 42, 43);
    CHECK_TOPIC(RCov, 36, 37, 38, 39, 40);
    CHECK_TOPIC(MtxParametrz, 21, 22, 60, 61);
}

int g_cleanups;
int32_t count_cleanup(nax_ss_task* task) {
    EXPECT_EQ(task->task_kind, 2u);
    ++g_cleanups;
    return 0;
}

TEST(StatisticsTask, DeletionRunsEveryCleanupAndFreesTheTaskItself) {
    g_cleanups = 0;
    const int failures = for_each_failing_allocation(
        [] {
            nax_ss_task* task = nullptr;
            static const int32_t p = 1;
            if (__stosSSNewTask(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr, 0) != SsStatusOk) return 1;
            bool all = true;
            for (int i = 0; i < 3 && all; ++i) all = stats::add_cleanup(*task, count_cleanup);
            task->work_vector = nax_serv_allocate(8, 128);
            all = all && task->work_vector != nullptr;
            const int before = g_cleanups, expected = task->cleanup_count;
            EXPECT_EQ(__stoSSDeleteTask(&task), SsStatusOk);
            EXPECT_EQ(g_cleanups - before, expected);
            return all ? 0 : 1;
        },
        1, 0);
    EXPECT_EQ(failures, 5);
}

}  // namespace
}  // namespace nax::testing
