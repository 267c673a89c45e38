// The test helpers themselves: a failing allocation and a guarded buffer do what other tests rely on.
#include "tests/lib/failing_service.h"

#include <gtest/gtest.h>

#include "service/block.h"
#include "tests/lib/guarded_buffer.h"

namespace nax::testing {
namespace {

int three_blocks() {
    service::Block<double> first(4);
    if (!first) return -1;
    service::Block<char> second(100);
    if (!second) return -1;
    service::Block<int> third(7);
    return third ? 0 : -1;
}

TEST(FailingService, EachAllocationFailsInTurnAndNothingLeaks) {
    EXPECT_EQ(for_each_failing_allocation(three_blocks, -1, 0), 3);
}

TEST(FailingService, FailsOnceOrFromThereOn) {
    {
        FailAllocation fail(1);
        service::Block<int> a(1), b(1), c(1);
        EXPECT_TRUE(a);
        EXPECT_FALSE(b);
        EXPECT_TRUE(c);
        EXPECT_EQ(fail.requests(), 3);
    }
    FailAllocation fail(1, Family::kBlocks, true);
    service::Block<int> a(1), b(1), c(1);
    EXPECT_TRUE(a);
    EXPECT_FALSE(b);
    EXPECT_FALSE(c);
}

TEST(FailingService, CountsLiveBlocks) {
    const long before = live_blocks();
    service::Block<int> a(1);
    EXPECT_EQ(live_blocks(), before + 1);
    a.release();
    EXPECT_EQ(live_blocks(), before);
}

TEST(FailingServiceDeathTest, ReleasingThroughTheWrongFamilyEndsTheProgram) {
    void* const block = nax_serv_allocate(8, 128);
    EXPECT_DEATH(nax_serv_free(block), "nax_serv_free gets a block");
    nax_serv_deallocate(block);
}

TEST(GuardedBufferDeathTest, TouchingEitherNeighbourEndsTheProgram) {
    GuardedBuffer<double> after(5);
    GuardedBuffer<double> before(5, Guard::kBefore);
    for (double& value : after) value = 1;
    for (double& value : before) value = 1;
    volatile double* const end = after.data();
    volatile double* const start = before.data();
    EXPECT_DEATH(end[5] = 1, "");
    EXPECT_DEATH(start[-1] = 1, "");
}

}  // namespace
}  // namespace nax::testing
