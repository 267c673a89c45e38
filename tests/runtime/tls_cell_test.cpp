// Per-thread cells: first use, races for the key, memory, and the end of threads and keys.
#include "runtime/tls_cell.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cstdlib>
#include <thread>
#include <vector>

#include "nax/error.h"
#include "nax/mode.h"
#include "service/service.h"
#include "tests/lib/failing_service.h"
#include "tests/runtime/fresh_thread.h"

namespace nax::testing {
namespace {

using namespace nax::runtime;

nax_tls_key* const kRecords[] = {&Mode_key, &ErrStatus_key, &CallBack_key, &InputVecorPointer_key};

int32_t some_callback(arq_error_record*) { return 0; }

void touch_all_cells() {
    _arqSetMode(ARQ_LA);
    _arqSetErrStatus(7);
    _arqSetErrorCallBack(some_callback);
    _arqSetInterfInputVectorPointer(&kRecords);
}

// Takes a key away as the end of the service layer does; this thread's cell goes first, as nobody could find it later.
void destroy_key(nax_tls_key& record) {
    if (key_exists(record)) {
        nax_serv_free(pthread_getspecific(record.key));
        pthread_setspecific(record.key, nullptr);
    }
    nax_tls_destroy(&record);
}

TEST(ThreadCells, StartAtZeroAndAreFreedAtThreadEnd) {
    touch_all_cells();
    const long before = live_cells();
    on_fresh_thread([before] {
        EXPECT_EQ(_arqGetErrStatus(), 0);
        EXPECT_EQ(_arqGetErrorCallBack(), nullptr);
        EXPECT_EQ(input_vector_cell(), nullptr);
        touch_all_cells();
        EXPECT_EQ(live_cells(), before + 4);
        for (const nax_tls_key* record : kRecords)
            EXPECT_EQ(reinterpret_cast<uintptr_t>(pthread_getspecific(record->key)) % 64, 0u);
    });
    EXPECT_EQ(live_cells(), before);
}

TEST(ThreadCells, StatusAndCallbackAccessorsReturnThePreviousValue) {
    on_fresh_thread([] {
        EXPECT_EQ(_arqSetErrStatus(3), 0);
        EXPECT_EQ(nax_arq_kernel_SetErrStatus(-2), 3);
        EXPECT_EQ(nax_arq_kernel_GetErrStatus(), -2);
        EXPECT_EQ(_arqGetErrStatus(), -2);
        EXPECT_EQ(_arqClearErrStatus(), -2);
        EXPECT_EQ(nax_arq_kernel_ClearErrStatus(), 0);

        EXPECT_EQ(_arqSetErrorCallBack(some_callback), nullptr);
        EXPECT_EQ(nax_arq_kernel_GetErrorCallBack(), some_callback);
        EXPECT_EQ(nax_arq_kernel_SetErrorCallBack(nullptr), some_callback);
        EXPECT_EQ(nax_arq_kernel_SetErrorCallBack(some_callback), nullptr);
        EXPECT_EQ(nax_arq_kernel_ClearErrorCallBack(), some_callback);
        EXPECT_EQ(_arqClearErrorCallBack(), nullptr);
        EXPECT_EQ(_arqGetErrorCallBack(), nullptr);
    });
}

TEST(ThreadCells, ThreadsThatComeFirstAtOnceShareOneKey) {
    unsetenv("NAX_ARQ_MODE");
    for (int round = 0; round < 20; ++round) {
        for (nax_tls_key* record : kRecords) destroy_key(*record);
        std::atomic<int> waiting{0};
        std::vector<std::thread> threads;
        for (int t = 0; t < 6; ++t)
            threads.emplace_back([t, &waiting] {
                ++waiting;
                while (waiting < 6) std::this_thread::yield();
                EXPECT_EQ(_arqSetErrStatus(t), 0);
                EXPECT_EQ(_arqSetMode(ARQ_EP), ARQ_MODE_DEFAULT);
                EXPECT_EQ(_arqSetErrorCallBack(some_callback), nullptr);
                _arqSetInterfInputVectorPointer(&waiting);
                EXPECT_EQ(_arqGetErrStatus(), t);
                EXPECT_EQ(nax_arq_kernel_GetTTableIndex(), 2);
                EXPECT_EQ(_arqGetErrorCallBack(), some_callback);
                EXPECT_EQ(input_vector_cell(), &waiting);
            });
        for (std::thread& thread : threads) thread.join();
        for (const nax_tls_key* record : kRecords) {
            EXPECT_EQ(record->flags, kKeyExists);
            EXPECT_EQ(record->lock, 0);
        }
    }
}

TEST(ThreadCells, DestroyClearsTheFlagsAndCellsComeBackOnNextUse) {
    _arqSetErrStatus(5);
    EXPECT_EQ(ErrStatus_key.destructor, ErrStatus_cleanup);
    nax_serv_free(pthread_getspecific(ErrStatus_key.key));
    ErrStatus_key.flags |= 0x10;
    nax_tls_destroy(&ErrStatus_key);
    EXPECT_EQ(ErrStatus_key.flags, 0u);
    ErrStatus_key.flags = 0x10;
    nax_tls_destroy(&ErrStatus_key);
    EXPECT_EQ(ErrStatus_key.flags, 0x10u);
    ErrStatus_key.flags = 0;
    EXPECT_EQ(_arqGetErrStatus(), 0);
    EXPECT_TRUE(key_exists(ErrStatus_key));
}

void without_memory_for_cells(void (*use)()) {
    on_fresh_thread([use] {
        FailAllocation fail(0, Family::kCells);
        use();
    });
}

TEST(ThreadCellsDeathTest, NoMemoryForACellEndsTheProcessWithCode3) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto expected = ::testing::ExitedWithCode(3);
    EXPECT_EXIT(without_memory_for_cells([] { _arqGetMode(); }), expected, "");
    EXPECT_EXIT(without_memory_for_cells([] { _arqGetErrStatus(); }), expected, "");
    EXPECT_EXIT(without_memory_for_cells([] { _arqGetErrorCallBack(); }), expected, "");
    EXPECT_EXIT(without_memory_for_cells([] { _arqSetInterfInputVectorPointer(nullptr); }), expected, "");
}

// All keys of the process are taken: each access works on a cell of its own, and what is set is lost.
[[noreturn]] void exit_after_use_without_keys() {
    unsetenv("NAX_ARQ_MODE");
    pthread_key_t key;
    while (pthread_key_create(&key, nullptr) == 0) {
    }
    bool right = _arqSetMode(ARQ_EP) == ARQ_MODE_DEFAULT && _arqGetMode() == ARQ_MODE_DEFAULT;
    right = right && _arqSetErrStatus(4) == 0 && _arqGetErrStatus() == 0;
    right = right && Mode_key.flags == 0 && Mode_key.lock == 0;
    _exit(right ? 0 : 1);
}

TEST(ThreadCellsDeathTest, WithoutAKeyValuesAreLostAndNothingCrashes) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(exit_after_use_without_keys(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace nax::testing
