// Known answers, seeding rules, leapfrog and skip-ahead of the linear generators.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

#include "rng/generators/mcg_lanes.h"
#include "tests/lib/failing_service.h"
#include "tests/rng/test_stream.h"

namespace nax::testing {
namespace {

// ---- Known answers

// The first numbers of the author's implementation from six seeds of 12345 (L'Ecuyer 1999), which scales by 1/(m1 + 1).
TEST(LinearKnownAnswers, Mrg32k3aPublishedStream) {
    const TestStream stream(NAX_BRNG_MRG32K3A, std::vector<uint32_t>(6, 12345));
    const auto words = draw_words(stream, 2);
    EXPECT_NEAR(words[0] / 4294967088.0, 0.1270111, 5e-8);
    EXPECT_NEAR(words[1] / 4294967088.0, 0.3185276, 5e-8);
}

template <class Engine, class Word>
void compare_with_engine(int brng, Engine engine) {
    const TestStream stream(brng, {1});
    std::vector<Word> words(100000);
    ASSERT_EQ(properties(stream).iBRng(stream, static_cast<int>(words.size()), words.data()), STO_STATUS_OK);
    EXPECT_EQ(words[0], 1u);
    for (size_t i = 1; i < words.size(); ++i) ASSERT_EQ(words[i], engine()) << i;
}

// The standard library's congruential engine with the same parameters delivers the state after each step.
TEST(LinearKnownAnswers, MultiplicativeGeneratorsAgreeWithTheStandardLibrary) {
    compare_with_engine<std::linear_congruential_engine<uint64_t, 1132489760, 0, 2147483647>, uint32_t>(NAX_BRNG_MCG31, {});
    compare_with_engine<std::linear_congruential_engine<uint64_t, 302875106592253, 0, (uint64_t{1} << 59)>, uint64_t>(
        NAX_BRNG_MCG59, {});
}

// x^250 + x^103 + 1 read backward in time: x(n-250) = x(n) + x(n-147).
TEST(LinearKnownAnswers, R250SatisfiesItsTrinomial) {
    const TestStream stream(NAX_BRNG_R250, {7});
    const auto words = draw_words(stream, 2000);
    for (size_t n = 250; n < words.size(); ++n) ASSERT_EQ(words[n - 250], words[n] ^ words[n - 147]) << n;
}

// ---- Seeding

std::vector<uint32_t> seeded(int brng, const std::vector<uint32_t>& seeds, size_t words) {
    const TestStream stream(brng, seeds);
    EXPECT_EQ(stream.status(), STO_STATUS_OK);
    const auto bytes = payload_bytes(stream);
    std::vector<uint32_t> state(words);
    std::memcpy(state.data(), bytes.data(), 4 * words);
    return state;
}
using Words = std::vector<uint32_t>;

TEST(LinearSeeding, CongruentialSeedsAreReducedAndNeverZero) {
    for (const Words& seeds : {Words{}, Words{0}, Words{0x7FFFFFFF}, Words{1}}) EXPECT_EQ(seeded(NAX_BRNG_MCG31, seeds, 1), Words{1});
    EXPECT_EQ(seeded(NAX_BRNG_MCG31, {0xFFFFFFFF}, 2), (Words{1, 1132489760}));
    EXPECT_EQ(seeded(NAX_BRNG_MCG31, {0x80000005, 99}, 1), Words{6});
    EXPECT_EQ(seeded(NAX_BRNG_MCG59, {}, 2), (Words{1, 0}));
    EXPECT_EQ(seeded(NAX_BRNG_MCG59, {0, 0x08000000}, 2), (Words{1, 0}));
    EXPECT_EQ(seeded(NAX_BRNG_MCG59, {5}, 2), (Words{5, 0}));
    EXPECT_EQ(seeded(NAX_BRNG_MCG59, {5, 0xFFFFFFFF, 3}, 2), (Words{5, 0x07FFFFFF}));
}

TEST(LinearSeeding, Mrg32k3aReducesOnceAndAvoidsTheZeroState) {
    EXPECT_EQ(seeded(NAX_BRNG_MRG32K3A, {}, 6), (Words{1, 1, 1, 1, 1, 1}));
    EXPECT_EQ(seeded(NAX_BRNG_MRG32K3A, {7, 8}, 6), (Words{7, 8, 1, 1, 1, 1}));
    EXPECT_EQ(seeded(NAX_BRNG_MRG32K3A, {4294967087, 4294967087, 4294967087, 4294944443, 4294944443, 4294944443, 5}, 6),
              (Words{1, 0, 0, 1, 0, 0}));
    EXPECT_EQ(seeded(NAX_BRNG_MRG32K3A, {4294967295, 0, 0, 4294967295, 0, 0}, 6), (Words{208, 0, 0, 22852, 0, 0}));
}

TEST(LinearSeeding, WhFillsMissingWordsWithOne) {
    EXPECT_EQ(seeded(NAX_BRNG_WH + 272, {16766363, 16766360}, 8), (Words{1, 1, 1, 1, 126, 127, 125, 124}));
    EXPECT_EQ(seeded(NAX_BRNG_WH, {}, 8), (Words{1, 1, 1, 1, 125, 117, 127, 126}));
    // A negative count reads all four seeds.
    const uint32_t seeds[4] = {3, 4, 5, 6};
    nax_stream* raw = nullptr;
    ASSERT_EQ(__stoNewStreamEx(&raw, 4 + 1, -1, seeds), STO_STATUS_OK);
    const TestStream stream(raw);
    EXPECT_EQ(draw_words(stream, 1), (Words{3, 4, 5, 6}));
    EXPECT_EQ(TestStream(NAX_BRNG_WH + 273, {}).status(), STO_STATUS_BAD_BRNG);
}

TEST(LinearSeeding, R250SpreadsOneSeedOverAMatrixOfFullRank) {
    const Words state = seeded(NAX_BRNG_R250, {0}, 252);
    EXPECT_EQ(state, seeded(NAX_BRNG_R250, Words(249, 1), 252));
    EXPECT_EQ(state[250], 0u);
    EXPECT_EQ(state[251], 103u);
    EXPECT_EQ(state[0], 69069u);
    EXPECT_EQ(state[1], 475559465u * 1u);
    for (uint32_t k = 0; k < 32; ++k) EXPECT_EQ(state[3 + 7 * k] >> (31 - k), 1u) << k;
    Words given(250);
    std::iota(given.begin(), given.end(), 100u);
    Words expected = given;
    append(expected, {0, 103});
    EXPECT_EQ(seeded(NAX_BRNG_R250, given, 252), expected);
}

// ---- Skip-ahead

TEST(LinearSkip, SkippingAndDrawingCommute) {
    for (const Generator& generator : kLinear) {
        if (!generator.skips) continue;
        SCOPED_TRACE(generator.name);
        for (int n = 0; n < 70; ++n) {
            const TestStream skipped(generator.brng, {17, 4}), drawn(generator.brng, {17, 4});
            draw_words(drawn, n + 29);
            draw_words(skipped, 29);
            ASSERT_EQ(__stoSkipAheadStream(skipped, static_cast<uint64_t>(n)), STO_STATUS_OK);
            ASSERT_EQ(payload_bytes(skipped), payload_bytes(drawn)) << n;
        }
        const TestStream skipped(generator.brng, {17, 4}), drawn(generator.brng, {17, 4});
        draw_doubles(drawn, 100000);
        ASSERT_EQ(__stoSkipAheadStream(skipped, 100000), STO_STATUS_OK);
        EXPECT_EQ(draw_doubles(skipped, 77), draw_doubles(drawn, 77));
    }
}

TEST(LinearSkip, SkipsAddUp) {
    const uint64_t counts[] = {0, 1, 0x7FFFFFFE, 0x123456789ABCDEF, uint64_t{1} << 62, (uint64_t{1} << 63) - 1};
    for (const Generator& generator : kLinear) {
        if (!generator.skips) continue;
        SCOPED_TRACE(generator.name);
        for (const uint64_t a : counts) {
            for (const uint64_t b : counts) {
                const TestStream twice(generator.brng, {5, 6, 7}), once(generator.brng, {5, 6, 7});
                ASSERT_EQ(__stoSkipAheadStream(twice, a), STO_STATUS_OK);
                ASSERT_EQ(__stoSkipAheadStream(twice, b), STO_STATUS_OK);
                ASSERT_EQ(__stoSkipAheadStream(once, a + b), STO_STATUS_OK);
                ASSERT_EQ(payload_bytes(twice), payload_bytes(once)) << a << " + " << b;
                ASSERT_EQ(draw_doubles(twice, 9), draw_doubles(once, 9));
            }
        }
    }
}

TEST(LinearSkip, APeriodIsTheIdentity) {
    const struct { int brng; uint64_t period; } cases[] = {{NAX_BRNG_MCG31, 0x7FFFFFFE}, {NAX_BRNG_MCG59, uint64_t{1} << 57}};
    for (const auto& c : cases) {
        const TestStream stream(c.brng, {12345});
        const auto start = payload_bytes(stream);
        ASSERT_EQ(__stoSkipAheadStream(stream, c.period), STO_STATUS_OK);
        EXPECT_EQ(payload_bytes(stream), start);
        ASSERT_EQ(__stoSkipAheadStream(stream, c.period / 2), STO_STATUS_OK);
        EXPECT_NE(payload_bytes(stream), start);
    }
}

int skip_far(nax_stream* stream, const std::vector<uint64_t>& count) {
    return __stoSkipAheadStreamEx(stream, static_cast<int>(count.size()), count.data());
}

// A^(m^3 - 1) is the identity of a component: its recurrence has maximal period.
TEST(LinearSkip, Mrg32k3aComponentsHaveTheirPeriods) {
    const unsigned __int128 m1 = 4294967087u, m2 = 4294944443u;
    const unsigned __int128 periods[2] = {m1 * m1 * m1 - 1, m2 * m2 * m2 - 1};
    for (int component = 0; component < 2; ++component) {
        const TestStream stream(NAX_BRNG_MRG32K3A, {1, 2, 3, 4, 5, 6});
        const auto before = payload_bytes(stream);
        const unsigned __int128 period = periods[component];
        ASSERT_EQ(skip_far(stream, {static_cast<uint64_t>(period), static_cast<uint64_t>(period >> 64)}), STO_STATUS_OK);
        const auto after = payload_bytes(stream);
        const long at = 12 * component, other = 12 - at;
        EXPECT_TRUE(std::equal(after.begin() + at, after.begin() + at + 12, before.begin() + at));
        EXPECT_FALSE(std::equal(after.begin() + other, after.begin() + other + 12, before.begin() + other));
    }
}

// Table and generic path meet at bit 193; both agree with doubling the count step by step.
TEST(LinearSkip, Mrg32k3aLongSkipsAgreeAcrossBothPaths) {
    const TestStream start(NAX_BRNG_MRG32K3A, {99, 98, 97, 96, 95, 94});
    for (const int bit : {0, 31, 32, 63, 64, 127, 180, 191, 192, 193, 194, 255, 256, 640, 700}) {
        std::vector<uint64_t> half(12, 0), whole(12, 0);
        whole[static_cast<size_t>(bit / 64)] = uint64_t{1} << (bit % 64);
        const TestStream once = start.copy(), twice = start.copy();
        ASSERT_EQ(skip_far(once, whole), STO_STATUS_OK);
        if (bit > 0) half[static_cast<size_t>((bit - 1) / 64)] = uint64_t{1} << ((bit - 1) % 64);
        ASSERT_EQ(skip_far(twice, half), STO_STATUS_OK);
        ASSERT_EQ(bit > 0 ? skip_far(twice, half) : __stoSkipAheadStream(twice, 1), STO_STATUS_OK);
        EXPECT_EQ(payload_bytes(once), payload_bytes(twice)) << bit;
    }
    const TestStream empty = start.copy(), zero = start.copy();
    EXPECT_EQ(__stoSkipAheadStreamEx(empty, 0, nullptr), STO_STATUS_OK);
    EXPECT_EQ(skip_far(zero, std::vector<uint64_t>(11, 0)), STO_STATUS_OK);
    EXPECT_EQ(payload_bytes(empty), payload_bytes(start));
    EXPECT_EQ(payload_bytes(zero), payload_bytes(start));
}

TEST(LinearSkip, Mrg32k3aLongSkipWithoutMemoryLeavesTheStream) {
    const TestStream stream(NAX_BRNG_MRG32K3A, {1, 2, 3});
    const std::vector<uint64_t> far(11, 1);
    const auto before = payload_bytes(stream);
    for (int n = 0; n < 2; ++n) {
        const FailAllocation fail(n);
        EXPECT_EQ(skip_far(stream, far), STO_STATUS_NO_MEMORY);
        EXPECT_EQ(payload_bytes(stream), before);
    }
    EXPECT_EQ(skip_far(stream, far), STO_STATUS_OK);
}

// The tabulated powers and binary exponentiation of the recurrence come to the same state, for any pattern of bits.
TEST(LinearSkip, Mrg32k3aTableAgreesWithExponentiation) {
    const uint32_t row_x[3] = {0, 1403580, 4294156359}, row_y[3] = {527612, 0, 4293573854};
    for (const uint64_t n : {uint64_t{0}, uint64_t{1} << 40, uint64_t{0x8000000000000001}, uint64_t{0x0123456789ABCDEF}, ~uint64_t{0}}) {
        const TestStream stream(NAX_BRNG_MRG32K3A, {1, 2, 3, 4294967086, 5, 4294944442});
        uint32_t state[6];
        std::memcpy(state, payload_bytes(stream).data(), sizeof(state));
        __stoiVect3PowMod(state, row_x, 4294967087, n);
        __stoiVect3PowMod(state + 3, row_y, 4294944443, n);
        ASSERT_EQ(__stoSkipAheadStream(stream, n), STO_STATUS_OK);
        EXPECT_EQ(std::memcmp(state, payload_bytes(stream).data(), sizeof(state)), 0) << n;
    }
}

// The row goes from the newest term's coefficient to the oldest's, the state from the oldest term to the newest.
TEST(LinearSkip, PowersStepTheRecurrence) {
    constexpr uint32_t m = 1000003, row[3] = {3, 50000, 999999};
    uint32_t term[60] = {5, 17, 1000002};
    for (int k = 3; k < 60; ++k) {
        const uint64_t sum = uint64_t{row[0]} * term[k - 1] + uint64_t{row[1]} * term[k - 2] + uint64_t{row[2]} * term[k - 3];
        term[k] = static_cast<uint32_t>(sum % m);
    }
    for (uint64_t n = 0; n < 57; ++n) {
        uint32_t once[3] = {5, 17, 1000002}, far[3] = {5, 17, 1000002};
        __stoiVect3PowMod(once, row, m, n);
        std::vector<uint64_t> words(n < 30 ? 1 : 12, 0);  // the long counts take another buffer
        words[0] = n;
        ASSERT_EQ(__stoiVect3PowArrayMod(far, row, m, static_cast<int>(words.size()), words.data()), STO_STATUS_OK);
        for (uint64_t i = 0; i < 3; ++i) {
            EXPECT_EQ(once[i], term[n + i]) << n;
            EXPECT_EQ(far[i], term[n + i]) << n;
        }
    }
}

TEST(LinearSkip, TabulatedMatricesFollowTheRecurrence) {
    const uint32_t* const x = _sto_mrg32k3a_skipahead_table;
    const uint32_t* const y = x + 193 * 9;
    EXPECT_EQ(Words(x, x + 9), (Words{0, 1, 0, 0, 0, 1, 4294156359, 1403580, 0}));
    EXPECT_EQ(Words(y, y + 9), (Words{0, 1, 0, 0, 0, 1, 4293573854, 0, 527612}));
    // Matrix k maps unit vectors like 2^k steps of the recurrence.
    const uint32_t row_y[3] = {527612, 0, 4293573854};
    for (const int k : {1, 5, 40, 63}) {
        for (uint32_t column = 0; column < 3; ++column) {
            uint32_t v[3] = {column == 0, column == 1, column == 2};
            __stoiVect3PowMod(v, row_y, 4294944443, uint64_t{1} << k);
            for (uint32_t i = 0; i < 3; ++i) EXPECT_EQ(y[9 * k + static_cast<int>(3 * i + column)], v[i]) << k;
        }
    }
}

TEST(LinearSkip, ModularPowers) {
    EXPECT_EQ(__stoiPowMod(5, 0, 7), 1u);
    EXPECT_EQ(__stoiPowMod(3, 5, 7), 5u);
    EXPECT_EQ(__stoiPowMod(16766362, 2, 16766363), 1u);
    EXPECT_EQ(__stoiPowMod2P31M1(1132489760, 8), 1286028348u);
    EXPECT_EQ(__stoiPowMod2P31M1(1132489760, 0x7FFFFFFE), 1u);
    EXPECT_EQ(__stoiPowMod2P59(302875106592253, 8), 0x8971CF606D8C09A1 & ((uint64_t{1} << 59) - 1));
    EXPECT_EQ(__stoiPowMod2P59(302875106592253, 0), 1u);
}

// ---- Leapfrog

template <class T>
void check_interleaving(const Generator& generator, int streams, int drawn_before) {
    constexpr int kEach = 75;
    const TestStream start(generator.brng, {1234567, 89});
    draw<T>(start, drawn_before);
    const TestStream parent = start.copy();
    const auto whole = draw<T>(parent, kEach * streams);
    const size_t width = whole.size() / static_cast<size_t>(kEach * streams);
    for (int k = 0; k < streams; ++k) {
        const TestStream stream = start.copy();
        ASSERT_EQ(__stoLeapfrogStream(stream, k, streams), STO_STATUS_OK);
        auto mine = draw<T>(stream, 33);
        append(mine, draw<T>(stream, kEach - 33));
        for (size_t i = 0; i < kEach; ++i) {
            const size_t at = (i * static_cast<size_t>(streams) + static_cast<size_t>(k)) * width;
            ASSERT_TRUE(std::equal(whole.begin() + static_cast<long>(at), whole.begin() + static_cast<long>(at + width),
                                   mine.begin() + static_cast<long>(i * width)))
                << streams << " streams, number " << k << ", term " << i;
        }
    }
}

TEST(LinearLeapfrog, StreamsInterleaveToTheirParent) {
    for (const Generator& generator : kLinear) {
        if (!generator.leapfrogs) continue;
        SCOPED_TRACE(generator.name);
        for (const int streams : {1, 2, 3, 7, 16}) {
            check_interleaving<uint32_t>(generator, streams, 0);
            check_interleaving<double>(generator, streams, 11);
            check_interleaving<float>(generator, streams, 40);
        }
    }
}

TEST(LinearLeapfrog, LeapfrogsNestAndSkipInTheirOwnUnits) {
    for (const Generator& generator : kLinear) {
        if (!generator.leapfrogs) continue;
        const TestStream nested(generator.brng, {8}), direct(generator.brng, {8});
        ASSERT_EQ(__stoLeapfrogStream(nested, 1, 3), STO_STATUS_OK);
        ASSERT_EQ(__stoLeapfrogStream(nested, 2, 5), STO_STATUS_OK);
        ASSERT_EQ(__stoLeapfrogStream(direct, 1 + 3 * 2, 15), STO_STATUS_OK);
        ASSERT_EQ(__stoSkipAheadStream(nested, 10), STO_STATUS_OK);
        draw_doubles(direct, 10);
        EXPECT_EQ(draw_doubles(nested, 50), draw_doubles(direct, 50)) << generator.name;
    }
}

TEST(LinearLeapfrog, DegenerateCounts) {
    const TestStream stream(NAX_BRNG_MCG31, {77});
    EXPECT_EQ(__stoLeapfrogStream(stream, 0, -1), STO_STATUS_BAD_NSTREAMS);
    ASSERT_EQ(__stoLeapfrogStream(stream, 0, 0), STO_STATUS_OK);
    EXPECT_EQ(draw_words(stream, 40), Words(40, 77));     // a^0: the multiplier is 1
}

TEST(LinearLeapfrog, RefusalsLeaveTheStreamUntouched) {
    const uint64_t one = 1;
    for (const Generator& generator : kLinear) {
        SCOPED_TRACE(generator.name);
        const TestStream stream(generator.brng, {3});
        const auto before = payload_bytes(stream);
        if (!generator.leapfrogs) {
            EXPECT_EQ(__stoLeapfrogStream(stream, 0, 2), STO_STATUS_NO_LEAPFROG);
        }
        if (!generator.skips) {
            EXPECT_EQ(__stoSkipAheadStream(stream, 1), STO_STATUS_NO_SKIPAHEAD);
        }
        if (!generator.skips_far) {
            EXPECT_EQ(__stoSkipAheadStreamEx(stream, 1, &one), STO_STATUS_NO_SKIPAHEADEX);
        }
        for (const int method : {-1, 4}) EXPECT_EQ(properties(stream).InitStream(method, stream, 1, &one), STO_STATUS_BAD_METHOD);
        EXPECT_EQ(payload_bytes(stream), before);
    }
}

// ---- Lanes

TEST(LinearLanes, AMissingChunkIsReported) {
    for (const int brng : {NAX_BRNG_MCG31, NAX_BRNG_MCG59}) {
        const TestStream stream(brng, {3});
        ASSERT_EQ(__stoDeleteChunks(stream), 0);
        double d = 42;
        float s = 42;
        EXPECT_EQ(properties(stream).dBRng(stream, 1, &d, 0, 1), STO_STATUS_NO_MEMORY);
        EXPECT_EQ(properties(stream).sBRng(stream, 1, &s, 0, 1), STO_STATUS_NO_MEMORY);
        EXPECT_EQ(__stoLeapfrogStream(stream, 0, 2), STO_STATUS_NO_MEMORY);
        EXPECT_EQ(__stoSkipAheadStream(stream, 2), STO_STATUS_NO_MEMORY);
        EXPECT_EQ(d, 42.0);
        EXPECT_EQ(draw_words(stream, 3).size(), brng == NAX_BRNG_MCG31 ? 3u : 6u);    // integers need no chunk
    }
}

using EngineEntry = void (*)(void*, double, double, double*);

TEST(LinearLanes, EngineStepsContinueOneAnother) {
    const EngineEntry entries[] = {
        nax_sto_sub_kernel_vrng_coreavx512_mcg31m1_engine1_double,  nax_sto_sub_kernel_vrng_coreavx512_mcg31m1_engine2_double,
        nax_sto_sub_kernel_vrng_coreavx512_mcg31m1_engine4_double,  nax_sto_sub_kernel_vrng_coreavx512_mcg31m1_engine8_double,
        nax_sto_sub_kernel_vrng_coreavx512_mcg31m1_engine16_double, nax_sto_sub_kernel_vrng_coreavx512_mcg31m1_engine32_double};
    const TestStream stream(NAX_BRNG_MCG31, {31}), reference(NAX_BRNG_MCG31, {31});
    void* const lanes = __stoSearchChunk(stream, 14);
    std::vector<double> made(200, -1.0);
    int at = 0;
    for (const int step : {5, 0, 3, 1, 4, 2, 2, 0, 5, 1, 3}) {
        entries[step](lanes, 2.0, 5.0, &made[static_cast<size_t>(at)]);
        at += 1 << step;
        ASSERT_EQ(made[static_cast<size_t>(at)], -1.0);      // no more than its count
    }
    const auto expected = draw_doubles(reference, at, 2.0, 5.0);
    made.resize(static_cast<size_t>(at));
    EXPECT_EQ(made, expected);
    const nax::rng::EngineProperty* const rows = nax_sto_sub_kernel_vrng_coreavx512_engine_property;
    EXPECT_EQ(rows[1].index[0], 1u);
    EXPECT_EQ(rows[0].double_scale[7], 1.0 / 2147483647.0);
    EXPECT_EQ(rows[0].single_scale[15], 0x1p-31f);
}

// ---- WH's table

bool is_prime(uint32_t n) {
    for (uint32_t p = 2; p * p <= n; ++p) {
        if (n % p == 0) return false;
    }
    return n > 1;
}

bool is_primitive_root(uint32_t a, uint32_t m) {
    uint32_t rest = m - 1;
    for (uint32_t p = 2; rest > 1; ++p) {
        if (rest % p != 0) continue;
        if (__stoiPowMod(a, (m - 1) / p, m) == 1) return false;
        while (rest % p == 0) rest /= p;
    }
    return true;
}

TEST(WhTable, RowsSatisfyTheirConditions) {
    std::vector<uint32_t> moduli;
    for (int row = 0; row < 273; ++row) {
        const uint32_t* const m = _sto_WH_M[row];
        for (int j = 0; j < 4; ++j) {
            moduli.push_back(m[j]);
            ASSERT_LT(m[j], 1u << 24);
            ASSERT_LT(_sto_WH_A[row][j], 128);
            if (j > 0) {
                ASSERT_LT(m[j], m[j - 1]) << row;
            }
            for (int i = 0; i < j; ++i) ASSERT_EQ(std::gcd((m[i] - 1) / 2, (m[j] - 1) / 2), 1u) << row;
            ASSERT_EQ(_stodWH_IM_Tab[row][j], 1.0 / m[j]);
            if (row % 9 == 0 || row == 272) {
                ASSERT_TRUE(is_prime(m[j])) << row;
                ASSERT_TRUE(is_primitive_root(_sto_WH_A[row][j], m[j])) << row;
            }
        }
    }
    std::sort(moduli.begin(), moduli.end());
    EXPECT_EQ(std::adjacent_find(moduli.begin(), moduli.end()), moduli.end());
}

}  // namespace
}  // namespace nax::testing
