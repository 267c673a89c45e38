// The edges of the machine: faults that masks suppress, register halves, opmasks, threads, misaligned addresses.
#include "tests/emulator_check/machine.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <numeric>
#include <thread>
#include <vector>

#include "tests/lib/guarded_buffer.h"

namespace nax::emulator_check {
namespace {

using nax::testing::Guard;
using nax::testing::GuardedBuffer;

Vector filled(std::uint64_t seed) {
    Vector v;
    for (unsigned i = 0; i < 8; ++i) v.set<std::uint64_t>(i, (seed + i + 1) * 0x9E3779B97F4A7C15u);
    return v;
}
Vector doubles(double first) {
    Vector v;
    for (unsigned i = 0; i < 8; ++i) v.set<double>(i, first + i);
    return v;
}

TEST(EmulatorMemory, MaskedLoadsStopAtUnmappedPages) {
    for (unsigned n = 0; n <= 8; ++n) {
        GuardedBuffer<double> after(n), before(n, Guard::kBefore);
        std::iota(after.begin(), after.end(), 1.0);
        std::iota(before.begin(), before.end(), 1.0);
        Vector r = doubles(100);
        masked_load_pd(r, after.data(), (1u << n) - 1);
        for (unsigned i = 0; i < 8; ++i) ASSERT_EQ(r.lane<double>(i), i < n ? 1.0 + i : 100.0 + i) << n;
        r = doubles(100);
        masked_load_pd(r, before.data() - (8 - n), 0xFFu << (8 - n));
        for (unsigned i = 0; i < 8; ++i) ASSERT_EQ(r.lane<double>(i), i < 8 - n ? 100.0 + i : 1.0 + i - (8 - n)) << n;
        masked_add_from_memory(r = doubles(0), doubles(10), after.data(), (1u << n) - 1);
        for (unsigned i = 0; i < 8; ++i) ASSERT_EQ(r.lane<double>(i), 10.0 + i + (i < n ? 1.0 + i : 0)) << n;
    }
    GuardedBuffer<double> none(0);
    Vector r = doubles(0);
    masked_broadcast_add(r, doubles(3), none.data(), 0);
    EXPECT_EQ(r.lane<double>(7), 10.0);
    GuardedBuffer<char> bytes(37);
    for (unsigned i = 0; i < 37; ++i) bytes[i] = static_cast<char>(i);
    masked_load_epi8(r, bytes.data(), (1ull << 37) - 1);
    for (unsigned i = 0; i < 64; ++i) ASSERT_EQ(r.bytes[i], i < 37 ? i : 0u);
}

TEST(EmulatorMemory, MaskedStoresTouchTheirElementsOnly) {
    for (unsigned n = 0; n <= 8; ++n) {
        GuardedBuffer<double> after(n);
        masked_store_pd(after.data(), doubles(5), (1u << n) - 1);
        for (unsigned i = 0; i < n; ++i) ASSERT_EQ(after[i], 5.0 + i);
        GuardedBuffer<std::int32_t> narrow(n);
        narrow_store(narrow.data(), filled(n), (1u << n) - 1);
        for (unsigned i = 0; i < n; ++i) ASSERT_EQ(narrow[i], static_cast<std::int32_t>(filled(n).lane<std::uint64_t>(i)));
    }
    GuardedBuffer<std::uint16_t> words(20);
    masked_store_epi16(words.data(), filled(1), 0x000AAAAA);
    for (unsigned i = 0; i < 20; ++i) ASSERT_EQ(words[i], i % 2 ? filled(1).lane<std::uint16_t>(i) : 0);
}

TEST(EmulatorMemory, CompressionAndExpansionTouchAsManyElementsAsBits) {
    for (const unsigned mask : {0u, 0x8001u, 0x5A5Au, 0xFFFFu}) {
        const unsigned n = static_cast<unsigned>(std::popcount(mask));
        GuardedBuffer<float> out(n);
        const Vector a = filled(3);
        compress_store_ps(out.data(), a, mask);
        GuardedBuffer<std::uint32_t> in(n);
        std::iota(in.begin(), in.end(), 7u);
        Vector r = filled(4);
        expand_load_epi32(r, in.data(), mask);
        unsigned next = 0;
        for (unsigned i = 0; i < 16; ++i) {
            if (!(mask >> i & 1)) {
                ASSERT_EQ(r.lane<std::uint32_t>(i), filled(4).lane<std::uint32_t>(i));
                continue;
            }
            ASSERT_EQ(std::memcmp(&out[next], a.bytes + 4 * i, 4), 0);
            ASSERT_EQ(r.lane<std::uint32_t>(i), 7 + next);
            ++next;
        }
    }
}

TEST(EmulatorMemory, GathersAndScattersFollowTheirMask) {
    GuardedBuffer<double> table(32);
    std::iota(table.begin(), table.end(), 0.5);
    Vector index;
    for (unsigned i = 0; i < 8; ++i) index.set<std::int64_t>(i, i % 2 ? std::int64_t{1} << 40 : (7 * i) % 32);
    Vector r = doubles(100);
    gather_pd(r, table.data(), index, 0x55);
    for (unsigned i = 0; i < 8; ++i) ASSERT_EQ(r.lane<double>(i), i % 2 ? 100.0 + i : (7 * i) % 32 + 0.5);
    scatter_pd(table.data(), index, doubles(1000), 0x55);
    for (unsigned i = 0; i < 8; i += 2) ASSERT_EQ(table[(7 * i) % 32], 1000.0 + i);

    GuardedBuffer<float> singles(16);
    std::iota(singles.begin(), singles.end(), 0.25f);
    for (unsigned i = 0; i < 16; ++i) index.set<std::int32_t>(i, static_cast<std::int32_t>(i % 3) - 2);
    gather_ps(r, singles.data() + 2, index, 0xFFFF);
    for (unsigned i = 0; i < 16; ++i) ASSERT_EQ(r.lane<float>(i), static_cast<float>(i % 3) + 0.25f);
    GuardedBuffer<std::uint32_t> words(16);
    for (unsigned i = 0; i < 16; ++i) index.set<std::int32_t>(i, i < 8 ? 3 : static_cast<std::int32_t>(i));
    scatter_epi32(words.data(), index, filled(9), 0xFFFF);
    EXPECT_EQ(words[3], filled(9).lane<std::uint32_t>(7)) << "of several elements for one place the last one stays";
    EXPECT_EQ(words[15], filled(9).lane<std::uint32_t>(15));
    EXPECT_EQ(words[0], 0u);
}

TEST(EmulatorMemoryDeathTest, AlignedMovesRefuseOtherAddresses) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    alignas(64) static char data[128];
    Vector r;
    aligned_load(r, data);
    EXPECT_DEATH(aligned_load(r, data + 8), "");
}

// What stays of a register above an instruction's vector length.
TEST(EmulatorRegisters, EncodingsDecideAboutUpperHalves) {
    const Vector before = filled(1), a = filled(2);
    Vector sum{}, r;
    for (unsigned i = 0; i < 16; ++i) sum.set<std::uint32_t>(i, before.lane<std::uint32_t>(i) + a.lane<std::uint32_t>(i));
    const auto check = [&](const char* what, unsigned result_bytes, unsigned kept_until, unsigned mask = ~0u) {
        for (unsigned i = 0; i < 16; ++i) {
            const std::uint32_t expected = 4 * i < result_bytes ? (mask >> i & 1 ? sum : before).lane<std::uint32_t>(i)
                                           : 4 * i < kept_until ? before.lane<std::uint32_t>(i) : 0;
            ASSERT_EQ(r.lane<std::uint32_t>(i), expected) << what << " " << i;
        }
    };
    after_evex_xmm(r, before, a);
    check("EVEX xmm", 16, 0);
    after_evex_ymm(r, before, a);
    check("EVEX ymm", 32, 0, 0x55);
    after_vex_xmm(r, before, a);
    check("VEX xmm", 16, 0);
    after_legacy_sse(r, before, a);
    check("legacy", 16, 64);
    after_vzeroupper(r, before);
    check("vzeroupper", 0, 16);
}

TEST(EmulatorRegisters, SurviveCodeThatTheHostRuns) {
    const Vector before = filled(1), a = filled(2);
    Vector r;
    after_native_pause(r, before);
    ASSERT_EQ(std::memcmp(&r, &before, sizeof r), 0);
    after_native_move(r, before, a);
    for (unsigned i = 0; i < 8; ++i) ASSERT_EQ(r.lane<std::uint64_t>(i), i < 4 ? a.lane<std::uint64_t>(i) : 0) << i;
}

TEST(EmulatorMasks, Arithmetic) {
    const std::uint64_t values[] = {0, ~0ull, 1, 0x8000000000000000, 0x0123456789ABCDEF, 0xFFFFFFFF, 0xFEDCBA9876543210};
    for (const std::uint64_t a : values) {
        for (const std::uint64_t b : values) {
            const MaskResults r = mask_arithmetic(a, b);
            EXPECT_EQ(r.conjunction, a & b);
            EXPECT_EQ(r.exclusive, (a ^ b) & 0xFFFFFFFF);
            EXPECT_EQ(r.complement, ~a & 0xFFFF);
            EXPECT_EQ(r.shifted, (a >> 13) ^ (b << 40));
            EXPECT_EQ(r.unpacked, a << 32 | (b & 0xFFFFFFFF));
            EXPECT_EQ(r.sum, a + b);
            EXPECT_EQ(r.all_zero, (a | b) == 0);
            EXPECT_EQ(r.all_ones, (a | b) == ~0ull);
        }
    }
}

TEST(EmulatorThreads, EachHasItsOwnRegisters) {
    std::vector<double> results(4), expected(4);
    std::vector<std::vector<double>> data(4, std::vector<double>(4096));
    for (unsigned t = 0; t < 4; ++t) {
        for (unsigned i = 0; i < 4096; ++i) data[t][i] = t * 10000.0 + i;
        expected[t] = std::accumulate(data[t].begin(), data[t].end(), 0.0);
    }
    for (int round = 0; round < 20; ++round) {
        std::vector<std::thread> threads;
        for (unsigned t = 0; t < 4; ++t) threads.emplace_back([&, t] { for (int k = 0; k < 5; ++k) results[t] = long_sum(data[t].data(), 4096); });
        for (std::thread& t : threads) t.join();
        ASSERT_EQ(results, expected);
    }
}

// The carry-less product of one AES round, against the 128-bit forms.
__attribute__((target("aes,pclmul"))) Vector aes_and_product_by_lanes(const Vector& a, const Vector& b) {
    Vector r;
    for (unsigned i = 0; i < 4; ++i) {
        typedef long long Lane __attribute__((vector_size(16)));
        const Lane round = __builtin_ia32_aesenc128(a.lane<Lane>(i), b.lane<Lane>(i));
        r.set<Lane>(i, __builtin_ia32_pclmulqdq128(round, b.lane<Lane>(i), 0x01));
    }
    return r;
}
TEST(EmulatorCrypto, WideRoundsAreFourNarrowOnes) {
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
        const Vector a = filled(seed), b = filled(seed + 100);
        Vector r;
        if (!aes_and_product(r, a, b)) GTEST_SKIP() << "built without the wide forms";
        const Vector expected = aes_and_product_by_lanes(a, b);
        ASSERT_EQ(std::memcmp(&r, &expected, sizeof r), 0) << seed;
    }
}

}  // namespace
}  // namespace nax::emulator_check
