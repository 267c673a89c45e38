// Cleanup pairs run when the layer is unloaded: each once, latest first, also those registered meanwhile.
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>
#include <vector>

#include "tests/service/separate_layer.h"

namespace nax::testing {
namespace {

using Cleanup = void (*)(void*);
using Register = void(Cleanup, void*);

std::vector<int> order;
std::vector<int> numbers;
Register* register_pair = nullptr;

void note(void* number) { order.push_back(*static_cast<int*>(number)); }

void note_and_register(void* number) {
    note(number);
    register_pair(note, &numbers[0]);
}

class CleanupPairs : public ::testing::Test {
protected:
    CleanupPairs() {
        order.clear();
        numbers.resize(100);
        for (int i = 0; i < 100; ++i) numbers[static_cast<size_t>(i)] = i;
        register_pair = layer.function<Register>("nax_serv_core_register_cleanup");
    }
    SeparateLayer layer;
};

TEST_F(CleanupPairs, RunOnceEachLatestFirst) {
    for (int& number : numbers) register_pair(note, &number);
    register_pair(nullptr, nullptr);
    EXPECT_TRUE(order.empty());
    layer.unload();
    ASSERT_EQ(order.size(), 100u);
    for (size_t i = 0; i < order.size(); ++i) EXPECT_EQ(order[i], static_cast<int>(99 - i));
}

TEST_F(CleanupPairs, MayRegisterWhileTheyRun) {
    register_pair(note, &numbers[1]);
    register_pair(note_and_register, &numbers[2]);
    layer.unload();
    EXPECT_EQ(order, (std::vector<int>{2, 0, 1}));
}

TEST_F(CleanupPairs, AreKeptFromManyThreads) {
    std::vector<std::thread> threads;
    for (size_t t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            for (size_t i = t; i < numbers.size(); i += 4) register_pair(note, &numbers[i]);
        });
    for (std::thread& thread : threads) thread.join();
    layer.unload();
    std::vector<int> sorted = order;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(sorted, numbers);
}

}  // namespace
}  // namespace nax::testing
