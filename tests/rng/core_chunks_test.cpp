// Chunks, shared read-only data, copying of streams.
#include <gtest/gtest.h>

#include <thread>

#include "service/service.h"
#include "tests/lib/failing_service.h"
#include "tests/rng/test_stream.h"

namespace nax::testing {
namespace {

void* block_of(int value, int size = 16) {
    void* const block = nax_serv_allocate(static_cast<size_t>(size), 128);
    std::memset(block, value, static_cast<size_t>(size));
    return block;
}

int first_byte(const void* data) { return data == nullptr ? -1 : *static_cast<const unsigned char*>(data); }

// A stream without chunks, and a check that the test gave everything back.
class Chunks : public ::testing::Test {
protected:
    void SetUp() override {
        live_ = live_blocks();
        entries_ = _GlobRODataTableCount;
        ASSERT_EQ(__stoNewStreamEx(&stream_, NAX_BRNG_WH, 0, nullptr), STO_STATUS_OK);
    }
    void TearDown() override {
        __stoDeleteStream(&stream_);
        EXPECT_EQ(live_blocks(), live_);
        EXPECT_EQ(_GlobRODataTableCount, entries_);
    }
    std::vector<uint32_t> ids(const nax_stream* stream) const {
        std::vector<uint32_t> found;
        for (const nax_stream_chunk* node = stream->chunks; node != nullptr; node = node->Next) found.push_back(node->Id);
        return found;
    }
    nax_stream* stream_ = nullptr;
    long live_ = 0;
    int entries_ = 0;
};

TEST_F(Chunks, NewOnesGoInAtTheHeadAndTheFirstMatchIsFound) {
    EXPECT_EQ(__stoSearchChunk(stream_, 100), nullptr);
    for (const int value : {1, 2, 3}) ASSERT_EQ(__stoAddChunk(stream_, value % 2 == 0 ? 100u : 101u, nullptr, block_of(value), 16), 0);
    EXPECT_EQ(ids(stream_), (std::vector<uint32_t>{101, 100, 101}));
    EXPECT_EQ(first_byte(__stoSearchChunk(stream_, 101)), 3);
    EXPECT_EQ(__stoGetNumChunks(stream_), 3);
    EXPECT_EQ(__stoDeleteChunks(stream_), 0);
    EXPECT_EQ(__stoGetNumChunks(stream_), 0);
}

TEST_F(Chunks, DeletingByIdKeepsTheLastSurvivorOnly) {
    for (const int id : {1, 2, 3, 2, 4}) ASSERT_EQ(__stoAddChunk(stream_, static_cast<uint32_t>(id), nullptr, block_of(id), 16), 0);
    ASSERT_EQ(ids(stream_), (std::vector<uint32_t>{4, 2, 3, 2, 1}));
    const nax_stream_chunk* const head = __stoDeleteChunksById(stream_, 2);
    ASSERT_NE(head, nullptr);
    EXPECT_EQ(head, stream_->chunks);
    EXPECT_EQ(ids(stream_), std::vector<uint32_t>{1});
    EXPECT_EQ(__stoDeleteChunksById(stream_, 1), nullptr);
    EXPECT_EQ(__stoGetNumChunks(stream_), 0);
}

TEST_F(Chunks, AFailedNodeLeavesTheDataWithTheCaller) {
    void* const data = block_of(9);
    {
        const FailAllocation fail(0);
        EXPECT_EQ(__stoAddChunk(stream_, 9, nullptr, data, 16), STO_STATUS_NO_MEMORY);
    }
    EXPECT_EQ(__stoGetNumChunks(stream_), 0);
    nax_serv_deallocate(data);
}

TEST_F(Chunks, AnIdentityIsSharedAndLivesUntilItsLastChunk) {
    const uint64_t id[2] = {0xABCDEF, 77};
    nax_stream* other = nullptr;
    ASSERT_EQ(__stoNewStreamEx(&other, NAX_BRNG_WH, 0, nullptr), STO_STATUS_OK);
    void* const first = block_of(5);
    void* const second = block_of(6);
    ASSERT_EQ(__stoAddChunk(stream_, 9, id, first, 16), 0);
    ASSERT_EQ(__stoAddChunk(other, 9, id, second, 16), 0);
    EXPECT_EQ(__stoSearchChunk(other, 9), first);        // its own block is not used ...
    nax_serv_deallocate(second);                         // ... and stays the caller's
    nax_shared_data_entry* entry = nullptr;
    ASSERT_EQ(__stoFindGlobRODataTableEntry(&entry, id), STO_STATUS_OK);
    EXPECT_EQ(entry->RefCount, 2);
    nax_stream* copied = nullptr;
    ASSERT_EQ(__stoCopyStream(&copied, other), STO_STATUS_OK);
    EXPECT_EQ(__stoSearchChunk(copied, 9), first);
    EXPECT_EQ(entry->RefCount, 3);
    __stoDeleteChunks(stream_);
    __stoDeleteStream(&other);
    EXPECT_EQ(first_byte(__stoSearchChunk(copied, 9)), 5);
    __stoDeleteStream(&copied);
    EXPECT_EQ(__stoFindGlobRODataTableEntry(&entry, id), STO_STATUS_GLOB_NOT_FOUND);
}

TEST_F(Chunks, AZeroIdentityNeverTouchesTheTable) {
    const uint64_t none[2] = {0, 0};
    nax_shared_data_entry* entry = nullptr;
    ASSERT_EQ(__stoAddChunk(stream_, 9, none, block_of(5), 16), 0);
    EXPECT_EQ(_GlobRODataTableCount, entries_);
    EXPECT_EQ(__stoFindGlobRODataTableEntry(&entry, none), STO_STATUS_GLOB_NOT_FOUND);
    EXPECT_EQ(__stoFindGlobRODataTableEntry(&entry, nullptr), STO_STATUS_GLOB_NOT_FOUND);
}

// Chunks stop at 127 entries and stay private; the 128th is left to direct creation.
TEST_F(Chunks, AFullTableKeepsChunksPrivate) {
    const uint64_t wanted[2] = {1, 999};
    for (uint64_t i = 0; _GlobRODataTableCount < 127; ++i) {
        const uint64_t id[2] = {i, 1000};
        ASSERT_EQ(__stoAddChunk(stream_, 9, id, block_of(1), 16), 0);
    }
    ASSERT_EQ(__stoAddChunk(stream_, 10, wanted, block_of(2), 16), 0);
    EXPECT_EQ(stream_->chunks->GlobId[0], 0u);
    EXPECT_EQ(stream_->chunks->GlobId[1], 0u);
    EXPECT_EQ(first_byte(__stoSearchChunk(stream_, 10)), 2);
    nax_shared_data_entry* entry = nullptr;
    EXPECT_EQ(__stoFindGlobRODataTableEntry(&entry, wanted), STO_STATUS_GLOB_NOT_FOUND);
    ASSERT_EQ(__stoCreateGlobRODataTableEntry(&entry, wanted, block_of(3)), STO_STATUS_OK);
    void* const spare = block_of(4);
    const uint64_t extra[2] = {2, 999};
    nax_shared_data_entry* none = nullptr;
    EXPECT_EQ(__stoCreateGlobRODataTableEntry(&none, extra, spare), STO_STATUS_GLOB_FULL);
    nax_serv_deallocate(spare);
    // The private chunk is copied by value.
    nax_stream* copied = nullptr;
    ASSERT_EQ(__stoCopyStream(&copied, stream_), STO_STATUS_OK);
    EXPECT_EQ(first_byte(__stoSearchChunk(copied, 10)), 2);
    EXPECT_NE(__stoSearchChunk(copied, 10), __stoSearchChunk(stream_, 10));
    __stoDeleteStream(&copied);
    EXPECT_EQ(__stoUnregisterGlobRODataReference(wanted), STO_STATUS_OK);
}

TEST_F(Chunks, AnIdentityThatLeftTheTableReleasesItsOwnData) {
    const uint64_t id[2] = {31, 32};
    void* const data = block_of(1);
    ASSERT_EQ(__stoAddChunk(stream_, 9, id, data, 16), 0);
    // The entry goes, the node keeps its identity: as when another thread dropped it in between.
    nax_shared_data_entry* entry = nullptr;
    ASSERT_EQ(__stoFindGlobRODataTableEntry(&entry, id), STO_STATUS_OK);
    entry->Data = nullptr;
    ASSERT_EQ(__stoUnregisterGlobRODataReference(id), STO_STATUS_OK);
    nax_stream_chunk node = *stream_->chunks;
    EXPECT_EQ(__stoRegisterGlobRODataReference(&node, id), STO_STATUS_GLOB_NOT_FOUND);
    EXPECT_EQ(__stoDeleteChunks(stream_), 0);        // the fixture sees that the data went
}

TEST_F(Chunks, NewIdentitiesAreNotTaken) {
    uint64_t first[2] = {}, second[2] = {};
    ASSERT_EQ(__stoGenerateNewGlobalRODataTableEntryId(first, 123), 0);
    ASSERT_EQ(__stoAddChunk(stream_, 9, first, block_of(1), 16), 0);
    ASSERT_EQ(__stoGenerateNewGlobalRODataTableEntryId(second, 123), 0);
    EXPECT_EQ(first[1], 123u);
    EXPECT_NE(first[0], second[0]);
}

TEST_F(Chunks, CopiesReverseTheOrderAndOwnTheirData) {
    for (const int id : {1, 2, 3}) ASSERT_EQ(__stoAddChunk(stream_, static_cast<uint32_t>(id), nullptr, block_of(id, id), id), 0);
    nax_stream* copied = nullptr;
    ASSERT_EQ(__stoCopyStream(&copied, stream_), STO_STATUS_OK);
    EXPECT_EQ(ids(copied), (std::vector<uint32_t>{1, 2, 3}));
    for (const int id : {1, 2, 3}) {
        EXPECT_EQ(first_byte(__stoSearchChunk(copied, static_cast<uint32_t>(id))), id);
        EXPECT_NE(__stoSearchChunk(copied, static_cast<uint32_t>(id)), __stoSearchChunk(stream_, static_cast<uint32_t>(id)));
    }
    __stoDeleteStream(&copied);
}

TEST_F(Chunks, CopyingFailsWithoutLeaks) {
    const uint64_t id[2] = {5, 6};
    ASSERT_EQ(__stoAddChunk(stream_, 1, nullptr, block_of(1), 16), 0);
    ASSERT_EQ(__stoAddChunk(stream_, 9, id, block_of(9), 16), 0);
    const int failures = for_each_failing_allocation(
        [&] {
            nax_stream* copied = nullptr;
            const int status = __stoCopyStream(&copied, stream_);
            if (copied != nullptr) {
                EXPECT_EQ(__stoGetNumChunks(copied), status == STO_STATUS_OK ? 2 : 0);
                __stoDeleteStream(&copied);
            }
            return status;
        },
        int{STO_STATUS_NO_MEMORY}, int{STO_STATUS_OK});
    EXPECT_EQ(failures, 4);      // stream, two nodes, one block
}

TEST(SharedData, ManyThreadsShareAndReleaseOneBlock) {
    const long live = live_blocks();
    {
        const TestStream origin(NAX_BRNG_WH, {1});
        const uint64_t id[2] = {8, 9};
        ASSERT_EQ(__stoAddChunk(origin, 9, id, block_of(7), 16), 0);
        auto churn = [&origin] {
            for (int i = 0; i < 2000; ++i) {
                nax_stream* copied = nullptr;
                ASSERT_EQ(__stoCopyStream(&copied, origin), STO_STATUS_OK);
                ASSERT_EQ(first_byte(__stoSearchChunk(copied, 9)), 7);
                ASSERT_EQ(__stoDeleteStream(&copied), STO_STATUS_OK);
            }
        };
        std::thread first(churn), second(churn);
        first.join();
        second.join();
        nax_shared_data_entry* entry = nullptr;
        ASSERT_EQ(__stoFindGlobRODataTableEntry(&entry, id), STO_STATUS_OK);
        EXPECT_EQ(entry->RefCount, 1);
    }
    EXPECT_EQ(live_blocks(), live);
}

// ---- Copying streams and their states

TEST(CopyStream, ContinuesIdenticallyAtEveryOffset) {
    for (const Generator& generator : kLinear) {
        SCOPED_TRACE(generator.name);
        const TestStream stream(generator.brng, {11, 12});
        for (int offset = 0; offset < 40; ++offset) {
            const TestStream copied = stream.copy(), probe = stream.copy();
            ASSERT_EQ(draw_doubles(copied, 21), draw_doubles(probe, 21)) << offset;
            ASSERT_EQ(draw_words(copied, 21), draw_words(probe, 21)) << offset;
            draw_doubles(stream, 1);
        }
    }
}

TEST(CopyStream, CreationFailsWithoutLeaks) {
    for (const Generator& generator : kLinear) {
        const int failures = for_each_failing_allocation(
            [&] {
                nax_stream* stream = nullptr;
                const int status = __stoNewStreamEx(&stream, generator.brng, 0, nullptr);
                if (stream != nullptr) __stoDeleteStream(&stream);
                return status;
            },
            int{STO_STATUS_NO_MEMORY}, int{STO_STATUS_OK});
        EXPECT_EQ(failures, generator.brng == NAX_BRNG_MCG31 || generator.brng == NAX_BRNG_MCG59 ? 3 : 1) << generator.name;
    }
}

TEST(CopyStreamState, CarriesThePositionBetweenLikeStreams) {
    for (const Generator& generator : kLinear) {
        SCOPED_TRACE(generator.name);
        const TestStream source(generator.brng, {123, 4}), destination(generator.brng, {5});
        draw_doubles(source, 19);
        ASSERT_EQ(__stoCopyStreamState(destination, source), STO_STATUS_OK);
        EXPECT_EQ(payload_bytes(destination), payload_bytes(source));
        EXPECT_EQ(draw_doubles(destination, 50), draw_doubles(source, 50));
        const auto before = payload_bytes(source);
        EXPECT_EQ(__stoCopyStreamState(source, source), STO_STATUS_OK);
        EXPECT_EQ(payload_bytes(source), before);
    }
}

TEST(CopyStreamState, LeavesTheMultiplierOfALeapfroggedSource) {
    const TestStream source(NAX_BRNG_MCG31, {9}), destination(NAX_BRNG_MCG31, {10});
    ASSERT_EQ(__stoLeapfrogStream(source, 1, 3), STO_STATUS_OK);
    ASSERT_EQ(__stoCopyStreamState(destination, source), STO_STATUS_OK);
    uint32_t state[2];
    std::memcpy(state, payload_bytes(destination).data(), sizeof(state));
    EXPECT_EQ(state[1], 1132489760u);
    // Real output runs on the lanes, which did come along.
    EXPECT_EQ(draw_doubles(destination, 20), draw_doubles(source, 20));
}

}  // namespace
}  // namespace nax::testing
