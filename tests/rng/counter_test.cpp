#if __has_include(<Random123/philox.h>)
#include <Random123/philox.h>
#define NAX_HAVE_RANDOM123
#endif

#include <array>
#include <bit>
#include <cmath>
#include <set>

#include "rng/generators/ars5.h"
#include "rng/generators/nondeterm.h"
#include "rng/generators/philox4x32x10.h"
#include "tests/rng/generator_fixture.h"

using namespace nax::test;
using namespace nax::rng;

namespace {

using Block = std::array<uint32_t, 4>;

// n words of a block function on a 128-bit counter that counts up.
template <class Function>
Words counted_words(const Function& function, const Words& start, int n) {
    Block counter = {start[0], start[1], start[2], start[3]};
    Words r;
    while (static_cast<int>(r.size()) < n) {
        const Block block = function(counter);
        r.insert(r.end(), block.begin(), block.end());
        for (size_t i = 0; i < 4 && ++counter[i] == 0; ++i) {}
    }
    return r;
}

// Philox as its paper defines it.
Block philox(Block c, uint32_t k0, uint32_t k1) {
    for (int round = 0; round < 10; ++round, k0 += 0x9E3779B9u, k1 += 0xBB67AE85u) {
        const uint64_t p0 = 0xD2511F53ull * c[0], p1 = 0xCD9E8D57ull * c[2];
        c = {static_cast<uint32_t>(p1 >> 32) ^ c[1] ^ k0, static_cast<uint32_t>(p1),
             static_cast<uint32_t>(p0 >> 32) ^ c[3] ^ k1, static_cast<uint32_t>(p0)};
    }
    return c;
}

// AES as FIPS 197 defines it, on 16 bytes in columns.
using Bytes = std::array<uint8_t, 16>;

uint8_t doubled(uint8_t x) { return static_cast<uint8_t>(x << 1 ^ (x >> 7) * 0x1B); }

uint8_t field_product(uint8_t x, uint8_t y) {
    uint8_t r = 0;
    for (; y != 0; y = static_cast<uint8_t>(y >> 1), x = doubled(x)) r = static_cast<uint8_t>(r ^ (y & 1) * x);
    return r;
}

uint8_t s_box(uint8_t x) {
    uint8_t inverse = 1;
    for (int i = 0; i < 254; ++i) inverse = field_product(inverse, x);
    uint8_t r = 0x63;
    for (int turn = 0; turn < 5; ++turn) r = static_cast<uint8_t>(r ^ std::rotl(inverse, turn));
    return r;
}

Bytes aes_round(const Bytes& state, const Bytes& key, bool mix) {
    static const std::array<uint8_t, 256> table = [] {
        std::array<uint8_t, 256> t{};
        for (size_t i = 0; i < 256; ++i) t[i] = s_box(static_cast<uint8_t>(i));
        return t;
    }();
    Bytes shifted{}, r{};
    for (size_t i = 0; i < 16; ++i) shifted[i] = table[state[(i + 4 * (i % 4)) % 16]];
    for (size_t i = 0; i < 16; ++i) {
        const size_t column = i / 4 * 4;
        const auto at = [&](size_t row) { return shifted[column + (i + row) % 4]; };
        r[i] = mix ? static_cast<uint8_t>(doubled(at(0)) ^ doubled(at(1)) ^ at(1) ^ at(2) ^ at(3)) : shifted[i];
        r[i] = static_cast<uint8_t>(r[i] ^ key[i]);
    }
    return r;
}

Block ars5(Block counter, const Words& key) {
    uint64_t half[2] = {uint64_t{key[1]} << 32 | key[0], uint64_t{key[3]} << 32 | key[2]};
    Bytes s = std::bit_cast<Bytes>(counter);
    const auto round_key = [&] { return std::bit_cast<Bytes>(std::array<uint64_t, 2>{half[0], half[1]}); };
    const Bytes first = round_key();
    for (size_t i = 0; i < 16; ++i) s[i] = static_cast<uint8_t>(s[i] ^ first[i]);
    for (int round = 1; round <= 5; ++round) {
        half[0] += 0x9E3779B97F4A7C15u;
        half[1] += 0xBB67AE8584CAA73Bu;
        s = aes_round(s, round_key(), round < 5);
    }
    return std::bit_cast<Block>(s);
}

Words philox_words(uint32_t k0, uint32_t k1, const Words& counter, int n) {
    return counted_words([&](const Block& c) { return philox(c, k0, k1); }, counter, n);
}
Words ars_words(const Words& key, const Words& counter, int n) {
    return counted_words([&](const Block& c) { return ars5(c, key); }, counter, n);
}

#ifdef NAX_HAVE_RANDOM123
TEST(Philox, AgreesWithTheAuthorsLibrary) {
    TestStream stream(NAX_BRNG_PHILOX4X32X10, {3, 4, 5});
    using Peer = r123::Philox4x32_R<10>;
    EXPECT_EQ(stream.words(10000), counted_words([](const Block& c) {
                  const auto r = Peer()({{c[0], c[1], c[2], c[3]}}, {{3, 4}});
                  return Block{r[0], r[1], r[2], r[3]};
              }, {5, 0, 0, 0}, 10000));
}
#endif

// Known answers of the library that the authors publish (Random123 1.14, kat_vectors), and the same with five AES rounds.
TEST(Philox, PublishedFirstWords) {
    EXPECT_EQ(TestStream(NAX_BRNG_PHILOX4X32X10, {0}).words(4), (Words{0x6627e8d5, 0xe169c58d, 0xbc57ac4c, 0x9b00dbd8}));
    EXPECT_EQ(TestStream(NAX_BRNG_PHILOX4X32X10, Words(6, 0xffffffff)).words(4),
              (Words{0x408f276d, 0x41c83b0e, 0xa20bc7c6, 0x6d5451fd}));
    EXPECT_EQ(TestStream(NAX_BRNG_PHILOX4X32X10, {0xa4093822, 0x299f31d0, 0x243f6a88, 0x85a308d3, 0x13198a2e, 0x03707344})
                  .words(4),
              (Words{0xd16cfe09, 0x94fdcceb, 0x5001e420, 0x24126ea1}));
}

TEST(Ars5, FirstWords) {
    EXPECT_EQ(TestStream(NAX_BRNG_ARS5).words(4), (Words{0x7ecce06f, 0x7cdc3bca, 0x15513c87, 0x29d24c9b}));
}

double midpoint(uint32_t y, double a, double b) {
    return std::fma((b - a) * 0x1p-32, static_cast<double>(static_cast<int32_t>(y)), (a + b) / 2);
}
float midpoint(uint32_t y, float a, float b) {
    return std::fmaf((b - a) * 0x1p-32f, static_cast<float>(static_cast<int32_t>(y)), (a + b) / 2);
}

void expect_all_forms(const TestStream& stream, const Words& expected) {
    expect_all_cuts(stream, expected, 70, 300);
    expect_reals<double>(stream, expected, -1.5, 7, [](uint32_t y) { return midpoint(y, -1.5, 7.0); });
    expect_reals<float>(stream, expected, -1.5f, 7, [](uint32_t y) { return midpoint(y, -1.5f, 7.0f); });
}

// Counters in the middle, about to carry into the second word, and into the upper half.
const std::vector<Words> kCounters = {{5, 6, 7, 8}, {0xFFFFFFF0, 0, 0, 0}, {0xFFFFFFD0, 0xFFFFFFFF, 3, 0},
                                      {0xFFFFFFFA, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF}};

TEST(Philox, AnyCutGivesTheSameWordsAndReals) {
    for (const Words& c : kCounters) {
        const TestStream stream(NAX_BRNG_PHILOX4X32X10, {11, 12, c[0], c[1], c[2], c[3]});
        expect_all_forms(stream, philox_words(11, 12, c, 2100));
    }
}

TEST(Ars5, AnyCutGivesTheSameWordsAndReals) {
    for (const Words& c : kCounters) {
        const TestStream stream(NAX_BRNG_ARS5, {11, 12, 13, 0xFFFFFFFF, c[0], c[1], c[2], c[3], 99});
        expect_all_forms(stream, ars_words({11, 12, 13, 0xFFFFFFFF}, c, 2100));
    }
}

class CounterSkip : public ::testing::TestWithParam<int> {
protected:
    TestStream fresh() const { return TestStream(GetParam(), {1, 2, 3, 4, 0xFFFFFFFF, 0xFFFFFFFF, 7, 8}); }
};

TEST_P(CounterSkip, IsDrawByteForByte) {
    for (const int before : {0, 1, 4, 6}) {
        TestStream at(fresh());
        at.words(before);
        for (int n = 0; n < 200; ++n) {
            TestStream drawn(at), skipped(at), skipped_long(at);
            drawn.words(n);
            skipped.skip(static_cast<uint64_t>(n));
            skipped_long.skip(std::vector<uint64_t>{static_cast<uint64_t>(n), 0, 0});
            ASSERT_TRUE(drawn.same_bytes(skipped)) << before << " " << n;
            ASSERT_TRUE(drawn.same_bytes(skipped_long)) << before << " " << n;
        }
    }
}

TEST_P(CounterSkip, AddsUp) {
    expect_skips_add_up(fresh(), {0, 1, 4, 0xFFFFFFFF, uint64_t{1} << 62, 0x7123456789ABCDEF});
}

// Long skips are numbers of 192 bits: two of 2^127 - 3 and 6 more are one of 2^128, and words beyond the third don't count.
TEST_P(CounterSkip, LongCountsAddUp) {
    const uint64_t low = 0 - uint64_t{3}, high = ~uint64_t{0} >> 1;
    TestStream pieces(fresh()), whole(fresh()), unread(fresh());
    pieces.words(3);
    pieces.skip(std::vector<uint64_t>{low, high});
    pieces.skip(std::vector<uint64_t>{low, high});
    pieces.skip(3);
    whole.skip(std::vector<uint64_t>{0, 0, 1});
    unread.skip(std::vector<uint64_t>{0, 0, 1, 77});
    EXPECT_TRUE(pieces.same_bytes(whole));
    EXPECT_TRUE(unread.same_bytes(whole));
    TestStream period(fresh());
    period.skip(std::vector<uint64_t>{0, 0, 4});
    EXPECT_EQ(period.words(8), fresh().words(8));
}

INSTANTIATE_TEST_SUITE_P(Generators, CounterSkip, ::testing::Values(NAX_BRNG_PHILOX4X32X10, NAX_BRNG_ARS5));

TEST(Philox, BodyOfTheSkip) {
    for (const uint64_t n : {uint64_t{0}, uint64_t{1}, uint64_t{3}, uint64_t{4}, uint64_t{4096}, ~uint64_t{0}}) {
        TestStream by_method(NAX_BRNG_PHILOX4X32X10, {1, 2, 0xFFFFFFFF}), by_name(by_method);
        by_method.words(2);
        by_name.words(2);
        by_method.skip(n);
        EXPECT_EQ(PHILOX4X32X10SkipAhead(by_name.get(), n), 0);
        EXPECT_TRUE(by_method.same_bytes(by_name)) << n;
    }
}

TEST(Philox, StateOfABrokenBlock) {
    TestStream stream(NAX_BRNG_PHILOX4X32X10, {1});
    stream.words(5);
    EXPECT_EQ(stream.state<PhiloxState>().left, 3u);
    const uint32_t counter = stream.state<PhiloxState>().counter[0];
    stream.skip(3);
    EXPECT_EQ(stream.state<PhiloxState>().left, 0u);
    EXPECT_EQ(stream.state<PhiloxState>().counter[0], counter);
}

TEST(Nondeterm, Seeds) {
    EXPECT_EQ(TestStream(NAX_BRNG_NONDETERM).state<NondetermState>().retries, 10u);
    EXPECT_EQ(TestStream(NAX_BRNG_NONDETERM, {5}).state<NondetermState>().retries, 10u);
    EXPECT_EQ(TestStream(NAX_BRNG_NONDETERM, {5, 0}).state<NondetermState>().retries, 10u);
    EXPECT_EQ(TestStream(NAX_BRNG_NONDETERM, {5, 3}).state<NondetermState>().retries, 3u);
}

// Nothing is known of the numbers, so only what no working source breaks: 2,000 words, all different but for a chance of
// 2^-11 that two collide, means within 5 standard deviations (a false alarm in 2 million runs).
TEST(Nondeterm, DeliversNumbers) {
    if (__stoCPUisRDRAND() == 0) GTEST_SKIP() << "no RDRAND";
    TestStream stream(NAX_BRNG_NONDETERM, {0, 1000});
    const Words words = stream.words(2001);
    ASSERT_EQ(stream.status, 0);
    EXPECT_GE(std::set<uint32_t>(words.begin(), words.end()).size(), 1999u);
    const auto mean_is_central = [](const auto& values, double a, double b) {
        double sum = 0;
        for (const double v : values) {
            EXPECT_GE(v, a);
            EXPECT_LE(v, b);
            sum += v;
        }
        const double n = static_cast<double>(values.size());
        EXPECT_NEAR(sum / n, (a + b) / 2, 5 * (b - a) / std::sqrt(12 * n));
    };
    mean_is_central(stream.reals<double>(2001, -2, 6), -2, 6);
    mean_is_central(stream.reals<float>(2001, -2, 6), -2, 6);
    EXPECT_EQ(stream.words(0).size(), 0u);
    EXPECT_EQ(stream.status, 0);
}

}  // namespace
