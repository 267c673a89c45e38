#include <gtest/gtest.h>

#include <cstdint>

#include "service/service.h"

namespace {

TEST(Memory, BlocksAreAlignedAndOversizeIsRefused) {
    for (const size_t size : {size_t{0}, size_t{1}, size_t{127}, size_t{4097}}) {
        void* block = nax_serv_allocate(size, 128);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 128, 0u);
        nax_serv_deallocate(block);
    }
    EXPECT_EQ(nax_serv_allocate(SIZE_MAX - 8, 128), nullptr);
}

}  // namespace
