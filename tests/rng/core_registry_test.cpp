// Generator ids, registry tables, registration.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/lib/failing_service.h"
#include "tests/rng/test_stream.h"

namespace nax::testing {
namespace {

// StreamStateSize, NSeeds, IncludesZero, WordSize, NBits, sub-streams: the sizes are the file format.
const int kRows[16][6] = {
    {24, 1, 0, 4, 31, 1},        {1024, 252, 1, 4, 32, 1},     {40, 6, 1, 4, 32, 1},          {32, 1, 0, 8, 59, 1},
    {48, 4, 1, 16, 24, 273},     {11712, 2604, 0, 4, 32, 1},   {84288, 10498, 0, 4, 32, 1},   {2520, 625, 1, 4, 32, 1},
    {312, 70, 1, 4, 32, 6024},   {48, 0, 1, 4, 32, 1},         {64, 0, 1, 4, 32, 1},          {56, 0, 1, 4, 32, 1},
    {2536, 625, 1, 4, 32, 1},    {24, 1, 1, 4, 32, 1},         {72, 8, 1, 4, 32, 1},          {64, 8, 1, 4, 32, 1},
};

// The row behind an id of the older numbering, as a row of the current one.
int current_row(int old_id) {
    if (old_id < 4) return old_id;
    return old_id <= 276 ? 4 : old_id - 277 + 5;
}

TEST(Registry, RowsHoldTheSizesOfTheFileFormat) {
    for (int row = 0; row < 16; ++row) {
        nax_brng_properties p{};
        ASSERT_EQ(__stoGetBrngProperties((row + 1) << 20, &p), STO_STATUS_OK);
        const int found[6] = {p.StreamStateSize, p.NSeeds, p.IncludesZero, p.WordSize, p.NBits, NumOffsets[row]};
        EXPECT_TRUE(std::equal(found, found + 6, kRows[row])) << row;
        for (int old_id = 0; old_id < 279; ++old_id) {
            if (current_row(old_id) != row) continue;
            nax_brng_properties old{};
            ASSERT_EQ(__stoGetBrngProperties(old_id, &old), STO_STATUS_OK);
            EXPECT_EQ(std::memcmp(&old, &p, sizeof(p)), 0) << old_id;
        }
    }
}

TEST(Registry, IdsDecodeToTableRowAndOffset) {
    const struct { int id; bool is_new; int row, offset; } cases[] = {
        {0, false, 0, 0},       {3, false, 3, 0},        {4, false, 4, 0},          {276, false, 4, 272},
        {277, false, 277, 0},   {-5, false, -5, 0},      {0xFFFFF, false, 0xFFFFF, 0}, {0x100000, true, 0, 0},
        {0x500000 + 272, true, 4, 272}, {0x900000 + 6023, true, 8, 6023}, {0x1100000, true, 16, 0}};
    for (const auto& c : cases) {
        int row = 99, offset = 99;
        EXPECT_EQ(__stoGetBrngBaseOffset(c.id, &row, &offset), c.is_new ? __RegBrngsNew : __RegBrngs) << c.id;
        EXPECT_EQ(row, c.row) << c.id;
        EXPECT_EQ(offset, c.offset) << c.id;
    }
}

TEST(Registry, ValidityHasItsHistoricalBounds) {
    EXPECT_EQ(__stoIsBrngValid(__RegBrngs, 279, 0), STO_STATUS_OK);
    EXPECT_EQ(__stoIsBrngValid(__RegBrngs, 280, 5000), STO_STATUS_OK);
    EXPECT_EQ(__stoIsBrngValid(__RegBrngs, 281, 0), STO_STATUS_BAD_BRNG);
    EXPECT_EQ(__stoIsBrngValid(__RegBrngs, -1, 0), STO_STATUS_OK);
    EXPECT_EQ(__stoIsBrngValid(__RegBrngsNew, 8, 6023), STO_STATUS_OK);
    EXPECT_EQ(__stoIsBrngValid(__RegBrngsNew, 8, 6024), STO_STATUS_BAD_BRNG);
    EXPECT_EQ(__stoIsBrngValid(__RegBrngsNew, NRegBrngsNew, 0), STO_STATUS_BAD_BRNG);
}

TEST(Registry, IdsWithoutAGeneratorMakeNoStream) {
    const long before = live_blocks();
    for (const int id : {281, 0xFFFFF, 0x100001, 0x500000 + 273, 0x900000 + 6024, 0x7F00000, -1, -0x100000, 0xA00000, 0xB00000,
                         0xC00000}) {
        nax_stream* stream = nullptr;
        EXPECT_EQ(__stoNewStreamEx(&stream, id, 0, nullptr), STO_STATUS_BAD_BRNG) << id;
        EXPECT_EQ(stream, nullptr);
    }
    for (const int id : {279, 280}) {      // valid by the table's bound, yet empty
        nax_stream* stream = nullptr;
        EXPECT_EQ(__stoNewStreamEx(&stream, id, 0, nullptr), STO_STATUS_NULL_POINTER);
        EXPECT_EQ(stream, nullptr);
    }
    EXPECT_EQ(live_blocks(), before);
}

TEST(Registry, BothNumberingsGiveTheSameSequence) {
    const struct { int old_id, id; } pairs[] = {{0, 0x100000}, {1, 0x200000}, {2, 0x300000}, {3, 0x400000}, {4, 0x500000}, {276, 0x500110}};
    for (const auto& pair : pairs) {
        const TestStream old_stream(pair.old_id, {42}), stream(pair.id, {42});
        EXPECT_EQ(__stoGetStreamStateBrng(old_stream), pair.old_id);
        EXPECT_EQ(draw_words(old_stream, 300), draw_words(stream, 300)) << pair.old_id;
    }
}

// ---- A generator of the user's: counts from its seed.

struct CounterState {
    uint32_t next, step;
};
int counter_init(int method, nax_stream* stream, int n, const void* params) {
    auto& state = rng::payload<CounterState>(stream);
    if (method == NAX_INIT_STANDARD) {
        if (n == 2) return -77;
        state = {n > 0 ? *static_cast<const uint32_t*>(params) : 0, 1};
    } else if (method == NAX_INIT_LEAPFROG) {
        state.next += *static_cast<const uint32_t*>(params) * state.step;
        state.step *= static_cast<uint32_t>(n);
    } else if (method == NAX_INIT_SKIPAHEAD) {
        state.next += static_cast<uint32_t>(*static_cast<const uint64_t*>(params)) * state.step;
    } else {
        return STO_STATUS_NO_SKIPAHEADEX;
    }
    return STO_STATUS_OK;
}
int counter_words(nax_stream* stream, int n, void* r) {
    auto& state = rng::payload<CounterState>(stream);
    for (int i = 0; i < n; ++i, state.next += state.step) static_cast<uint32_t*>(r)[i] = state.next;
    return STO_STATUS_OK;
}
int counter_doubles(nax_stream*, int, double*, double, double) { return STO_STATUS_OK; }
int counter_singles(nax_stream*, int, float*, float, float) { return STO_STATUS_OK; }

const nax_brng_properties kCounter = {24, 2, 1, 4, 32, counter_init, counter_singles, counter_doubles, counter_words};

// Registrations are for the process; each test takes its own back.
class Registration : public ::testing::Test {
protected:
    void TearDown() override { NRegBrngsNew = count_; }
    const int count_ = NRegBrngsNew;
};

TEST_F(Registration, RowsAreCheckedInOrder) {
    nax_brng_properties row{};
    row.StreamStateSize = -1;
    EXPECT_EQ(__stoRegisterBrng(&row), STO_STATUS_BAD_STATE_SIZE);
    row.StreamStateSize = 0;
    for (const int size : {0, 2, 12, 32}) {
        row.WordSize = size;
        EXPECT_EQ(__stoRegisterBrng(&row), STO_STATUS_BAD_WORD_SIZE);
    }
    row.WordSize = 16;
    EXPECT_EQ(__stoRegisterBrng(&row), STO_STATUS_BAD_NSEEDS);
    row.NSeeds = 1;
    EXPECT_EQ(__stoRegisterBrng(&row), STO_STATUS_BAD_NBITS);
    for (int missing = 0; missing < 4; ++missing) {
        nax_brng_properties partial = kCounter;
        if (missing == 0) partial.InitStream = nullptr;
        if (missing == 1) partial.sBRng = nullptr;
        if (missing == 2) partial.dBRng = nullptr;
        if (missing == 3) partial.iBRng = nullptr;
        EXPECT_EQ(__stoRegisterBrng(&partial), STO_STATUS_NULL_POINTER);
    }
    EXPECT_EQ(__stoGetNumRegBrngs(), count_);
}

TEST_F(Registration, ARegisteredGeneratorLivesLikeABuiltInOne) {
    ASSERT_EQ(count_, 16);
    const int id = __stoRegisterBrng(&kCounter);
    ASSERT_EQ(id, 0x1100000);
    EXPECT_EQ(__stoGetNumRegBrngs(), 17);
    const TestStream stream(id, {100});
    EXPECT_EQ(draw_words(stream, 2), (std::vector<uint32_t>{100, 101}));
    ASSERT_EQ(__stoSkipAheadStream(stream, 8), STO_STATUS_OK);
    ASSERT_EQ(__stoLeapfrogStream(stream, 1, 10), STO_STATUS_OK);
    const TestStream copied = stream.copy();
    EXPECT_EQ(draw_words(copied, 2), (std::vector<uint32_t>{111, 121}));
    std::vector<unsigned char> image(static_cast<size_t>(__stoGetStreamSize(stream)));
    ASSERT_EQ(__stoSaveStreamM(stream, image.data()), STO_STATUS_OK);
    nax_stream* loaded = nullptr;
    ASSERT_EQ(__stoLoadStreamM(&loaded, image.data()), STO_STATUS_OK);
    EXPECT_EQ(draw_words(TestStream(loaded), 1), std::vector<uint32_t>{111});
    // A process without the registration doesn't know the image.
    NRegBrngsNew = count_;
    EXPECT_EQ(__stoLoadStreamM(&loaded, image.data()), STO_STATUS_BAD_IMAGE);
    EXPECT_EQ(loaded, nullptr);
    NRegBrngsNew = count_ + 1;
    EXPECT_EQ(__stoNewStreamEx(&loaded, id + 1, 0, nullptr), STO_STATUS_BAD_BRNG);
}

TEST_F(Registration, AStreamWhoseInitialisationFailsIsTheCallersToDelete) {
    const int id = __stoRegisterBrng(&kCounter);
    const long before = live_blocks();
    nax_stream* stream = nullptr;
    const uint32_t seeds[2] = {};
    EXPECT_EQ(__stoNewStreamEx(&stream, id, 2, seeds), -77);
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(__stoDeleteStream(&stream), STO_STATUS_OK);
    EXPECT_EQ(stream, nullptr);
    EXPECT_EQ(__stoDeleteStream(&stream), STO_STATUS_OK);      // once more does no harm
    EXPECT_EQ(live_blocks(), before);
}

TEST_F(Registration, TheTableHoldsFiveHundredAndTwelve) {
    int id = 0;
    while (NRegBrngsNew < 512) {
        id = __stoRegisterBrng(&kCounter);
        ASSERT_GT(id, 0);
    }
    EXPECT_EQ(id, 512 << 20);
    const TestStream last(id, {5});
    EXPECT_EQ(draw_words(last, 1), std::vector<uint32_t>{5});
    EXPECT_EQ(__stoRegisterBrng(&kCounter), STO_STATUS_NO_MEMORY);
}

}  // namespace
}  // namespace nax::testing
