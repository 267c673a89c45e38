#include <random>
#include <sstream>

#include "rng/generators/mt19937.h"
#include "rng/generators/mt2203.h"
#include "rng/generators/sfmt19937.h"
#include "tests/rng/generator_fixture.h"

using namespace nax::test;
using namespace nax::rng;

namespace {

// std::mt19937 in the state of a fresh stream: the twister by the book, seeded our way.
std::mt19937 library_twin(TestStream& stream) {
    std::stringstream text;
    for (const uint32_t x : stream.state<Mt19937State>().x) text << x << ' ';
    text << 624;
    std::mt19937 twin;
    text >> twin;
    return twin;
}

template <class Engine>
Words take(Engine& engine, int n) {
    Words r;
    for (int i = 0; i < n; ++i) r.push_back(static_cast<uint32_t>(engine()));
    return r;
}

// MT2203 by its recurrence, one word at a time.
struct PlainMt2203 {
    explicit PlainMt2203(const Mt2203State& s) : x(s.x, s.x + 69), a(s.matrix_a), b(s.temper_b), c(s.temper_c) {}

    uint32_t raw() {
        const size_t n = x.size() - 69;
        const uint32_t y = (x[n] & ~31u) | (x[n + 1] & 31u);
        x.push_back(x[n + 34] ^ y >> 1 ^ (y % 2 != 0 ? a : 0u));
        return x.back();
    }
    uint32_t operator()() {
        uint32_t y = raw();
        y ^= y >> 12;
        y ^= y << 7 & b;
        y ^= y << 15 & c;
        return y ^ y >> 18;
    }
    std::vector<uint32_t> x;
    uint32_t a, b, c;
};

// SFMT19937 by its recurrence on numbers of 128 bits.
struct PlainSfmt {
    explicit PlainSfmt(const SfmtState& s) {
        for (int i = 0; i < 156; ++i) w.push_back(join(s.x + 4 * i));
    }
    using Wide = unsigned __int128;
    static Wide join(const uint32_t* x) {
        return Wide{x[3]} << 96 | Wide{x[2]} << 64 | Wide{x[1]} << 32 | Wide{x[0]};
    }
    static uint32_t part(Wide v, int i) { return static_cast<uint32_t>(v >> 32 * i); }
    uint32_t operator()() {
        if (unread == 0) {
            const size_t n = w.size() - 156;
            Wide r = w[n] ^ w[n] << 8 ^ w[n + 154] >> 8;
            for (int i = 0; i < 4; ++i) {
                r ^= Wide{part(w[n + 122], i) >> 11 & kSfmtMask[i]} << 32 * i;
                r ^= Wide{part(w[n + 155], i) << 18} << 32 * i;
            }
            w.push_back(r);
            unread = 4;
        }
        return part(w.back(), 4 - unread--);
    }
    std::vector<Wide> w;
    int unread = 0;
};

double unsigned_map(uint32_t y, double a, double b) { return std::fma((b - a) * 0x1p-32, static_cast<double>(y), a); }
float unsigned_map(uint32_t y, float a, float b) { return std::fmaf((b - a) * 2.3283064e-10f, static_cast<float>(y), a); }

// Published init_by_array outputs: http://www.math.sci.hiroshima-u.ac.jp/m-mat/MT/MT2002/CODES/mt19937ar.out.
TEST(Mt19937, PublishedFirstWords) {
    TestStream stream(NAX_BRNG_MT19937, {0x123, 0x234, 0x345, 0x456});
    EXPECT_EQ(stream.words(5), (Words{1067595299, 955945823, 477289528, 4107218783, 4228976476}));
    TestStream unseeded(NAX_BRNG_MT19937);
    EXPECT_EQ(unseeded.words(3), (Words{577090037, 2444712010, 3639700191}));
}

TEST(Mt19937, AgreesWithTheStandardLibrary) {
    TestStream stream(NAX_BRNG_MT19937, Words(700, 5));  // more seeds than words of state
    std::mt19937 twin = library_twin(stream);
    for (const int n : {1, 15, 16, 17, 624, 10000, 100001}) ASSERT_EQ(stream.words(n), take(twin, n)) << n;
}

TEST(Mt19937, AnyCutGivesTheSameWordsAndReals) {
    TestStream stream(NAX_BRNG_MT19937, {42});
    std::mt19937 twin = library_twin(stream);
    const Words expected = take(twin, 3000);
    expect_all_cuts(stream, expected, 626, 300);
    expect_reals<double>(stream, expected, -1.5, 7, [](uint32_t y) { return unsigned_map(y, -1.5, 7.0); });
    expect_reals<float>(stream, expected, -1.5f, 7, [](uint32_t y) { return unsigned_map(y, -1.5f, 7.0f); });
}

TEST(Mt19937, SkipIsDrawOnBothSidesOfThePolynomial) {
    const TestStream stream(NAX_BRNG_MT19937, {42});
    expect_skip_is_draw(stream, {0, 1, 5, 623, 624, 625, 1248, 5000});
    for (const int n : {0x7FFFFF, 0x800000, 0x800000 + 623, 624 * 14000}) {
        TestStream drawn(stream), skipped(stream);
        mt19937_discard(drawn.state<Mt19937State>(), static_cast<uint64_t>(n));
        ASSERT_EQ(skipped.skip(static_cast<uint64_t>(n)), 0);
        EXPECT_TRUE(drawn.same_bytes(skipped)) << n;
    }
    std::mt19937 twin = library_twin(const_cast<TestStream&>(stream));
    twin.discard(0x900001);
    TestStream skipped(stream);
    skipped.skip(0x900001);
    EXPECT_EQ(skipped.words(1000), take(twin, 1000));
}

TEST(Mt19937, SkipsAddUp) {
    TestStream stream(NAX_BRNG_MT19937, {7});
    stream.words(100);
    expect_skips_add_up(stream, {0, 3, 624, 0x800000, uint64_t{1} << 59, 0x123456789ABCDEF});
}

// The published generator's init_by_array outputs (SFMT 1.5, SFMT.19937.out.txt).
TEST(Sfmt19937, PublishedFirstWords) {
    TestStream stream(NAX_BRNG_SFMT19937, {0x1234, 0x5678, 0x9abc, 0xdef0});
    EXPECT_EQ(stream.words(10), (Words{2920711183, 3885745737, 3501893680, 856470934, 1421864068, 277361036, 1518638004,
                                       2328404353, 3355513634, 64329189}));
    TestStream unseeded(NAX_BRNG_SFMT19937);
    EXPECT_EQ(unseeded.words(6), (Words{3623314098, 983780865, 536092216, 372005, 121088028, 1418865450}));
}

TEST(Sfmt19937, AnyCutGivesTheSameWordsAndReals) {
    TestStream stream(NAX_BRNG_SFMT19937, Words(1000, 11));
    PlainSfmt twin(stream.state<SfmtState>());
    const Words expected = take(twin, 3000);
    expect_all_cuts(stream, expected, 626, 300);
    expect_reals<double>(stream, expected, -1, 3, [](uint32_t y) {
        return std::fma(4 * 0x1p-32, static_cast<double>(static_cast<int32_t>(y)), 1.0);
    });
    expect_reals<float>(stream, expected, -1, 3, [](uint32_t y) {
        return std::fmaf(4 * 0x1p-32f, static_cast<float>(static_cast<int32_t>(y)), 1.0f);
    });
}

TEST(Sfmt19937, SparesOfABrokenBlock) {
    TestStream stream(NAX_BRNG_SFMT19937, {1});
    stream.words(5);
    const SfmtState& state = stream.state<SfmtState>();
    EXPECT_EQ(state.spare_end - state.spare_pos, 3);
    stream.skip(2);
    EXPECT_EQ(state.spare_end - state.spare_pos, 1);
}

TEST(Sfmt19937, SkipIsDrawInAllThreeRanges) {
    const TestStream stream(NAX_BRNG_SFMT19937, {42});
    expect_skip_is_draw(stream, {0, 1, 2, 4, 5, 619, 623, 624, 625, 19967, 19968, 19969, 100003});
    for (const int n : {2000, 19967, 624 * 50, 624 * 50 - 1, 100001}) {
        TestStream drawn(stream), skipped(stream);
        drawn.words(n);
        skipped.skip(static_cast<uint64_t>(n));
        EXPECT_TRUE(drawn.same_bytes(skipped)) << n;
    }
}

TEST(Sfmt19937, SkipsAddUp) {
    TestStream stream(NAX_BRNG_SFMT19937, {7});
    stream.words(101);
    expect_skips_add_up(stream, {0, 3, 19967, 19970, uint64_t{1} << 59, 0x123456789ABCDEF});
}

TEST(Sfmt19937, PeriodIsCertified) {
    for (uint32_t seed = 0; seed < 64; ++seed) {
        TestStream stream(NAX_BRNG_SFMT19937, {seed});
        uint32_t inner = 0;
        for (int i = 0; i < 4; ++i) inner ^= stream.state<SfmtState>().x[i] & kSfmtParity[i];
        ASSERT_EQ(std::popcount(inner) % 2, 1) << seed;
    }
}

TEST(Mt2203, AnyCutGivesTheSameWordsAndReals) {
    for (const int offset : {0, 2, 4711, 6023}) {
        TestStream stream(NAX_BRNG_MT2203 + offset, {42, 43});
        ASSERT_EQ(stream.state<Mt2203State>().matrix_a, _sto_mt2203_table[offset][0]);
        PlainMt2203 twin(stream.state<Mt2203State>());
        const Words expected = take(twin, 2400);
        expect_all_cuts(stream, expected, 71, 300);
        expect_reals<double>(stream, expected, 0, 1, [](uint32_t y) { return unsigned_map(y, 0.0, 1.0); });
        expect_reals<float>(stream, expected, 2, 1, [](uint32_t y) { return unsigned_map(y, 2.0f, 1.0f); });
    }
}

// Of the twisters, the counters and the source without a sequence; 0 where the generator has the method.
TEST(Generators, LackedMethodsLeaveTheStreamAsItWas) {
    constexpr struct {
        int brng, skip, long_skip;
    } kGenerators[] = {{NAX_BRNG_MT19937, 0, STO_STATUS_NO_SKIPAHEADEX},
                       {NAX_BRNG_SFMT19937, 0, STO_STATUS_NO_SKIPAHEADEX},
                       {NAX_BRNG_MT2203 + 5, STO_STATUS_NO_SKIPAHEAD, STO_STATUS_NO_SKIPAHEADEX},
                       {NAX_BRNG_PHILOX4X32X10, 0, 0},
                       {NAX_BRNG_ARS5, 0, 0},
                       {NAX_BRNG_NONDETERM, STO_STATUS_NO_SKIPAHEAD, STO_STATUS_NO_SKIPAHEADEX}};
    for (const auto& generator : kGenerators) {
        SCOPED_TRACE(generator.brng);
        TestStream stream(generator.brng, {1, 2, 3});
        stream.words(2);
        expect_refusal(stream, NAX_INIT_LEAPFROG, STO_STATUS_NO_LEAPFROG);
        if (generator.skip != 0) expect_refusal(stream, NAX_INIT_SKIPAHEAD, generator.skip);
        if (generator.long_skip != 0) expect_refusal(stream, NAX_INIT_SKIPAHEADEX, generator.long_skip);
        for (const int method : {-1, 4, 9}) expect_refusal(stream, method, STO_STATUS_BAD_METHOD);
    }
}

}  // namespace
