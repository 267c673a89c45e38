// Abstract streams: ring, callback, mapping, refusals.
#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

#include "tests/lib/failing_service.h"
#include "tests/rng/test_stream.h"

namespace nax::testing {
namespace {

// A source of 0, 1, 2, ... behind the callbacks; `limit` bounds what one call places, `answer` overrides the return.
struct Source {
    uint32_t next = 0;
    int limit = 1 << 30;
    int answer = -999;
    int calls = 0;
    bool arguments_hold = true;
} source;

template <class T>
int feed(nax_stream*, int* n, T* buffer, int* wanted, int* free_slots, int* fill) {
    ++source.calls;
    source.arguments_hold = source.arguments_hold && *wanted >= 1 && *wanted <= *free_slots && *free_slots <= *n && *fill >= 0 && *fill < *n;
    if (source.answer != -999) return source.answer;
    const int placed = std::min(*free_slots, source.limit);
    for (int i = 0; i < placed; ++i) buffer[(*fill + i) % *n] = static_cast<T>(source.next++);
    return placed;
}

class Abstract : public ::testing::Test {
protected:
    void SetUp() override { source = Source{}; }
};

std::vector<uint32_t> counting(uint32_t from, int n) {
    std::vector<uint32_t> values(static_cast<size_t>(n));
    std::iota(values.begin(), values.end(), from);
    return values;
}

// All ring sizes, refill sizes and call sizes give the source's sequence without a gap.
TEST_F(Abstract, DeliversTheSourcesSequence) {
    for (int ring = 1; ring <= 7; ++ring) {
        for (int limit = 1; limit <= 8; ++limit) {
            for (const int size : {1, 2, 3, 5, 8, 20}) {
                source = Source{};
                source.limit = limit;
                std::vector<uint32_t> buffer(static_cast<size_t>(ring));
                nax_stream* raw = nullptr;
                ASSERT_EQ(__stoiNewAbstractStream(&raw, ring, buffer.data(), feed<uint32_t>), STO_STATUS_OK);
                const TestStream stream(raw);
                std::vector<uint32_t> drawn;
                for (int call = 0; call < 9; ++call) append(drawn, draw_words(stream, size));
                ASSERT_EQ(drawn, counting(0, 9 * size)) << ring << " slots, refills of " << limit << ", calls of " << size;
                ASSERT_TRUE(source.arguments_hold);
            }
        }
    }
}

TEST_F(Abstract, AsksForWhatIsNeededAndFree) {
    uint32_t buffer[10];
    nax_stream* raw = nullptr;
    ASSERT_EQ(__stoiNewAbstractStream(&raw, 10, buffer, [](nax_stream* stream, int* n, uint32_t* data, int* wanted, int* free_slots, int* fill) {
        EXPECT_EQ(__stoGetStreamStateBrng(stream), NAX_BRNG_IABSTRACT);
        static const int expected[][3] = {{4, 10, 0}, {6, 7, 3}};      // wanted, free, fill
        const int call = source.calls++;
        EXPECT_EQ(*n, 10);
        EXPECT_EQ(*wanted, expected[call][0]);
        EXPECT_EQ(*free_slots, expected[call][1]);
        EXPECT_EQ(*fill, expected[call][2]);
        const int placed = call == 0 ? 10 : 6;
        for (int i = 0; i < placed; ++i) data[(*fill + i) % 10] = source.next++;
        return placed;
    }), STO_STATUS_OK);
    const TestStream stream(raw);
    EXPECT_EQ(draw_words(stream, 4), counting(0, 4));
    EXPECT_EQ(draw_words(stream, 3), counting(4, 3));
    EXPECT_EQ(source.calls, 1);
    // Three are left; a copy shares the buffer, the position is its own.
    const TestStream copied = stream.copy();
    EXPECT_EQ(draw_words(copied, 3), counting(7, 3));
    source.calls = 2;
    EXPECT_EQ(draw_words(stream, 3), counting(7, 3));
}

TEST_F(Abstract, RealKindsMapTheirIntervalByOneFusedStep) {
    double doubles[5];
    float singles[5];
    nax_stream *d = nullptr, *s = nullptr;
    ASSERT_EQ(__stodNewAbstractStream(&d, 5, doubles, 0.0, 16.0, feed<double>), STO_STATUS_OK);
    ASSERT_EQ(__stosNewAbstractStream(&s, 5, singles, -1.0f, 30.0f, feed<float>), STO_STATUS_OK);
    const TestStream by_double(d), by_single(s);
    const auto reals = draw_doubles(by_double, 12, -0.3, 0.7);
    for (int i = 0; i < 12; ++i) EXPECT_EQ(reals[static_cast<size_t>(i)], std::fma((0.7 - -0.3) / 16.0, static_cast<double>(i), -0.3));
    source.next = 0;
    const auto floats = draw_singles(by_single, 12, 1.1f, 2.9f);
    for (int i = 0; i < 12; ++i) {
        EXPECT_EQ(floats[static_cast<size_t>(i)], std::fmaf((2.9f - 1.1f) / 31.0f, static_cast<float>(i) + 1.0f, 1.1f));
    }
}

TEST_F(Abstract, CallbackFaultsKeepThePosition) {
    uint32_t buffer[4];
    nax_stream* raw = nullptr;
    ASSERT_EQ(__stoiNewAbstractStream(&raw, 4, buffer, feed<uint32_t>), STO_STATUS_OK);
    const TestStream stream(raw);
    draw_words(stream, 3);
    const auto before = payload_bytes(stream);
    uint32_t r[9];
    const struct { int answer, status; } cases[] = {
        {0, STO_STATUS_CALLBACK_EMPTY}, {-1, STO_STATUS_CALLBACK_BAD_COUNT}, {5, STO_STATUS_CALLBACK_BAD_COUNT}};
    for (const auto& c : cases) {
        source.answer = c.answer;
        EXPECT_EQ(__stoiBRngiAbstract(stream, 9, r), c.status) << c.answer;
        EXPECT_EQ(payload_bytes(stream), before);
    }
    source.answer = -999;
    EXPECT_EQ(draw_words(stream, 9), counting(3, 9));
}

TEST_F(Abstract, EachKindOffersItsOwnTypeOnly) {
    uint32_t words[4];
    double doubles[4], r[4];
    float singles[4], f[4];
    nax_stream *i = nullptr, *d = nullptr, *s = nullptr;
    ASSERT_EQ(__stoiNewAbstractStream(&i, 4, words, feed<uint32_t>), STO_STATUS_OK);
    ASSERT_EQ(__stodNewAbstractStream(&d, 4, doubles, 0, 1, feed<double>), STO_STATUS_OK);
    ASSERT_EQ(__stosNewAbstractStream(&s, 4, singles, 0, 1, feed<float>), STO_STATUS_OK);
    const TestStream streams[] = {TestStream(i), TestStream(d), TestStream(s)};
    for (int kind = 0; kind < 3; ++kind) {
        nax_stream* const stream = streams[kind];
        const nax_brng_properties row = properties(stream);
        EXPECT_EQ(row.iBRng(stream, 1, words), kind == 0 ? STO_STATUS_OK : STO_STATUS_WRONG_ABSTRACT_KIND);
        EXPECT_EQ(row.dBRng(stream, 1, r, 0, 1), kind == 1 ? STO_STATUS_OK : STO_STATUS_WRONG_ABSTRACT_KIND);
        EXPECT_EQ(row.sBRng(stream, 1, f, 0, 1), kind == 2 ? STO_STATUS_OK : STO_STATUS_WRONG_ABSTRACT_KIND);
        const uint64_t one = 1;
        EXPECT_EQ(__stoLeapfrogStream(stream, 0, 2), STO_STATUS_NO_LEAPFROG);
        EXPECT_EQ(__stoSkipAheadStream(stream, 1), STO_STATUS_NO_SKIPAHEAD);
        EXPECT_EQ(__stoSkipAheadStreamEx(stream, 1, &one), STO_STATUS_NO_SKIPAHEADEX);
        EXPECT_EQ(row.InitStream(9, stream, 0, nullptr), STO_STATUS_BAD_METHOD);
    }
}

TEST_F(Abstract, ConstructorsCheckTheirArguments) {
    uint32_t words[4];
    double doubles[4];
    nax_stream* stream = nullptr;
    const long live = live_blocks();
    EXPECT_EQ(__stoiNewAbstractStream(&stream, 0, words, feed<uint32_t>), STO_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(__stoiNewAbstractStream(&stream, 4, nullptr, feed<uint32_t>), STO_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(__stoiNewAbstractStream(&stream, 4, words, nullptr), STO_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(__stodNewAbstractStream(&stream, 4, doubles, 1.0, 1.0, feed<double>), STO_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(__stodNewAbstractStream(&stream, 4, doubles, NAN, 1.0, feed<double>), STO_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(stream, nullptr);
    const FailAllocation fail(0);
    EXPECT_EQ(__stoiNewAbstractStream(&stream, 4, words, feed<uint32_t>), STO_STATUS_NO_MEMORY);
    EXPECT_EQ(stream, nullptr);
    EXPECT_EQ(live_blocks(), live);
}

TEST_F(Abstract, AMissingBufferIsANullPointer) {
    uint32_t words[4], r[2];
    nax_stream* raw = nullptr;
    ASSERT_EQ(__stoiNewAbstractStream(&raw, 4, words, feed<uint32_t>), STO_STATUS_OK);
    const TestStream stream(raw);
    void* const none = nullptr;
    std::memcpy(reinterpret_cast<unsigned char*>(raw) + 32, &none, sizeof(none));
    EXPECT_EQ(__stoiBRngiAbstract(stream, 1, r), STO_STATUS_NULL_POINTER);
}

}  // namespace
}  // namespace nax::testing
