// Memory, locks, environment, messages, exit and processor generation of the service layer.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "service/block.h"
#include "service/service.h"

namespace nax::service {
namespace {

// What the layer answers before main, when constructors of libraries and programs run.
struct BeforeMain {
    int32_t lock = 0;
    bool allocated = false;
    char value[16] = "untouched";
    int length = -1;

    BeforeMain() {
        nax_serv_lock(&lock);
        const Block<double> block(3);
        allocated = block.get() != nullptr;
        length = nax_serv_getenv("NAX_TEST_NO_SUCH_VARIABLE", value, sizeof value);
        nax_serv_unlock(&lock);
    }
} before_main;

TEST(ServiceLayer, WorksBeforeMain) {
    EXPECT_TRUE(before_main.allocated);
    EXPECT_LT(before_main.length, 1);
    EXPECT_EQ(before_main.lock, 0);
}

TEST(Memory, BlocksAreAlignedAndOversizeIsRefused) {
    for (const size_t alignment : {size_t{1}, size_t{64}, size_t{128}, size_t{4096}})
        for (const size_t size : {size_t{0}, size_t{1}, size_t{127}, size_t{4097}}) {
            void* const block = nax_serv_allocate(size, alignment);
            ASSERT_NE(block, nullptr);
            EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % alignment, 0u);
            std::memset(block, 1, size);
            nax_serv_deallocate(block);
        }
    EXPECT_EQ(nax_serv_allocate(SIZE_MAX - 8, 128), nullptr);
    EXPECT_EQ(nax_serv_allocate(16, 48), nullptr);
    Block<double> block;
    EXPECT_FALSE(block.allocate(SIZE_MAX / 4));
    nax_serv_deallocate(nullptr);
}

TEST(Memory, AFailedAllocationLeavesErrnoAlone) {
    errno = 5;
    EXPECT_EQ(nax_serv_allocate(size_t{1} << 60, 128), nullptr);
    EXPECT_EQ(errno, 5);
}

TEST(Memory, BoundedCopy) {
    char target[4] = "abc";
    EXPECT_EQ(nax_serv_memcpy_s(target, 4, "xyz", 4), 0);
    EXPECT_STREQ(target, "xyz");
    EXPECT_NE(nax_serv_memcpy_s(target, 3, "uvw", 4), 0);
    EXPECT_STREQ(target, "xyz");
    EXPECT_NE(nax_serv_memcpy_s(nullptr, 4, "uvw", 4), 0);
    EXPECT_EQ(nax_serv_memcpy_s(nullptr, 0, nullptr, 0), 0);
}

TEST(Lock, ExcludesManyThreads) {
    constexpr int kThreads = 8, kRounds = 20000;
    static int32_t word = 0;
    long counter = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&counter] {
            for (int i = 0; i < kRounds; ++i) {
                nax_serv_lock(&word);
                ++counter;
                nax_serv_unlock(&word);
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(counter, long{kThreads} * kRounds);
    EXPECT_EQ(word, 0);
}

TEST(Environment, CopiesWholeValuesOrNothing) {
    char value[8];
    const auto read = [&] {
        std::strcpy(value, "old");
        return nax_serv_getenv("NAX_TEST_VARIABLE", value, sizeof value);
    };
    unsetenv("NAX_TEST_VARIABLE");
    EXPECT_LT(read(), 1);
    setenv("NAX_TEST_VARIABLE", "", 1);
    EXPECT_LT(read(), 1);
    setenv("NAX_TEST_VARIABLE", "1234567", 1);
    EXPECT_EQ(read(), 7);
    EXPECT_STREQ(value, "1234567");
    setenv("NAX_TEST_VARIABLE", "12345678", 1);
    EXPECT_LT(read(), 1);
    EXPECT_STREQ(value, "");
    EXPECT_LT(nax_serv_getenv(nullptr, value, sizeof value), 1);
    EXPECT_LT(nax_serv_getenv("NAX_TEST_VARIABLE", value, 0), 1);
    unsetenv("NAX_TEST_VARIABLE");
}

template <class... Values>
std::string printed(int channel, int number, Values... values) {
    testing::internal::CaptureStderr();
    nax_serv_print(channel, number, static_cast<int>(sizeof...(values)), values...);
    return testing::internal::GetCapturedStderr();
}

TEST(Messages, EachNumberPrintsItsValuesOnOneLine) {
    EXPECT_EQ(printed(1, 748, "vdExp", 12), "nax: vdExp: bad argument, index 12\n");
    std::vector<std::string> lines;
    for (int number = 749; number <= 754; ++number) {
        lines.push_back(printed(1, number, "vdExp"));
        EXPECT_EQ(lines.back().rfind("nax: vdExp: ", 0), 0u) << number;
    }
    for (int number = 755; number <= 766; ++number) {
        const std::string line = printed(1, number, 7, 0.1);
        EXPECT_NE(line.find("[7] = 0.10000000000000001\n"), std::string::npos) << number;
    }
    for (size_t i = 0; i + 1 < lines.size(); ++i) EXPECT_NE(lines[i], lines[i + 1]);
}

TEST(Messages, WrongCallsPrintTheBareNumberOrNothing) {
    EXPECT_EQ(printed(1, 9999), "nax: message 9999\n");
    EXPECT_EQ(printed(1, 755, 7), "nax: message 755\n");
    EXPECT_EQ(printed(0, 750, "vdExp"), "");
}

TEST(ExitDeathTest, EndsTheProcessWithTheCode) { EXPECT_EXIT(nax_serv_exit(3), testing::ExitedWithCode(3), ""); }

TEST(Generation, AgreesWithTheCompilersProcessorTest) {
    const bool avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512cd") &&
                        __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
                        __builtin_cpu_supports("avx512vl");
    EXPECT_EQ(nax_serv_cpuisqgd() != 0 || nax_serv_cpuisqfb() != 0, avx512);
    EXPECT_FALSE(nax_serv_cpuisqgd() != 0 && nax_serv_cpuisqfb() != 0);
    EXPECT_EQ(nax_serv_cpuisqgd() != 0, avx512 && __builtin_cpu_supports("vpclmulqdq"));
}

}  // namespace
}  // namespace nax::service
