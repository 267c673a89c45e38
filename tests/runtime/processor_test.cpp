// Identification and caches, against tables of CPUID answers and against the running processor.
#include "nax/processor.h"

#include <gtest/gtest.h>

#include <fstream>
#include <limits>
#include <string>
#include <thread>

#include "runtime/processor_cache.h"

namespace nax::testing {
namespace {

using namespace nax::runtime;

constexpr Registers kVendor = {0, 0x756e6547, 0x6c65746e, 0x49656e69};

Registers vendor_with_leaves(uint32_t highest) { return {highest, kVendor.ebx, kVendor.ecx, kVendor.edx}; }

// A cache of leaf 4: type, ways, partitions, line bytes, sets.
Registers cache_leaf(uint32_t type, uint32_t ways, uint32_t partitions, uint32_t line, uint32_t sets) {
    return {type, (ways - 1) << 22 | (partitions - 1) << 12 | (line - 1), sets - 1, 0};
}

// A processor with four levels: 48 KiB data, 32 KiB instruction, 2 MiB and 1.25 x 24 MiB unified.
Registers with_leaf4(uint32_t leaf, uint32_t sub_leaf) {
    if (leaf == 0) return vendor_with_leaves(0x16);
    if (leaf == 2) return {0x00FEFF01, 0xF0, 0, 0};
    if (leaf != 4) return {};
    switch (sub_leaf) {
        case 0:
            return cache_leaf(1, 12, 1, 64, 64);
        case 1:
            return cache_leaf(2, 64, 1, 128, 1 << 20);  // largest of all, but for instructions
        case 2:
            return cache_leaf(3, 16, 1, 64, 2048);
        case 3:
            return cache_leaf(3, 12, 2, 64, 20480);
        default:
            return {};
    }
}

Registers with_leaf2_only(uint32_t leaf, uint32_t) {
    if (leaf == 0) return vendor_with_leaves(3);
    if (leaf != 2) return {};
    return {0x665B5001, 0x000000EC | 0x80000000, 0x00000000,
            0x007A7040};  // 8 KiB in EAX, 256 KiB in EDX, EBX not valid
}
// The count of queries in AL is no descriptor: 0xEC there would be 24 MiB.
Registers with_count_like_a_descriptor(uint32_t leaf, uint32_t) {
    if (leaf == 0) return vendor_with_leaves(2);
    return leaf == 2 ? Registers{0x000000EC, 0, 0x2C, 0} : Registers{};
}
Registers without_caches(uint32_t leaf, uint32_t) { return leaf == 0 ? vendor_with_leaves(0x16) : Registers{}; }
Registers with_leaf4_empty(uint32_t leaf, uint32_t) {
    if (leaf == 0) return vendor_with_leaves(0x16);
    return leaf == 2 ? Registers{1, 0, 0, 0x4D} : Registers{};
}
Registers of_another_maker(uint32_t leaf, uint32_t sub_leaf) {
    return leaf == 0 ? Registers{0x16, 1, 2, 3} : with_leaf4(leaf, sub_leaf);
}
Registers with_one_leaf(uint32_t leaf, uint32_t sub_leaf) {
    return leaf == 0 ? vendor_with_leaves(1) : with_leaf4(leaf, sub_leaf);
}

TEST(Cache, LargestDataOrUnifiedCacheIsFound) {
    const struct {
        CpuidSource source;
        int32_t status, size, line;
    } rows[] = {{with_leaf4, 0, 12 * 2 * 64 * 20480, 64},
                {with_leaf2_only, 0, 256 * 1024, 0},
                {with_count_like_a_descriptor, 0, 32 * 1024, 0},
                {with_leaf4_empty, 0, 16 << 20, 0},
                {without_caches, 37, 0, 0},
                {of_another_maker, 36, 0, 0},
                {with_one_leaf, 36, 0, 0}};
    for (const auto& row : rows) {
        const LargestCache found = find_largest_cache(row.source);
        EXPECT_EQ(found.status, row.status);
        EXPECT_EQ(found.size, row.size);
        EXPECT_EQ(found.line, row.line);
    }
}

Registers with_extended_leaves(uint32_t leaf, uint32_t sub_leaf) {
    if (leaf == 0) return {1, 1, 2, 3};
    if (leaf == 0x80000000) return {0x8000001D};
    return leaf == 0x8000001D ? with_leaf4(4, sub_leaf) : Registers{};
}

TEST(Cache, LastLevelIsFoundOnProcessorsOfAnyMaker) {
    EXPECT_EQ(find_last_level_cache(with_leaf4), 12 * 2 * 64 * 20480);
    EXPECT_EQ(find_last_level_cache(of_another_maker), 12 * 2 * 64 * 20480);
    EXPECT_EQ(find_last_level_cache(with_extended_leaves), 12 * 2 * 64 * 20480);
    EXPECT_EQ(find_last_level_cache(with_leaf2_only), 256 * 1024);
    EXPECT_EQ(find_last_level_cache(with_one_leaf), 0);
}

TEST(Cache, PublicCallsKeepWhatWasFound) {
    const int32_t old[] = {_szCacheMax, _szCacheLine, _ownStatus};
    int32_t size = -1, line = -1;
    _ownStatus = kCacheUnknown;
    const LargestCache expected = find_largest_cache(cpuid);
    EXPECT_EQ(nax_dft_opaGetMaxCacheSizeB(&size), expected.status);
    EXPECT_EQ(nax_dft_opa_get_cache_line_size(&line), expected.status);
    EXPECT_EQ(size, expected.size);
    EXPECT_EQ(line, expected.line);
    _szCacheMax = 12345;  // an answer that only a kept value can give
    _szCacheLine = 32;
    _ownStatus = 0;
    EXPECT_EQ(nax_dft_opaGetMaxCacheSizeB(&size), 0);
    EXPECT_EQ(nax_dft_opa_get_cache_line_size(&line), 0);
    EXPECT_EQ(size, 12345);
    EXPECT_EQ(line, 32);
    _ownStatus = 37;
    EXPECT_EQ(nax_dft_opaGetMaxCacheSizeB(&size), 37);
    EXPECT_EQ(nax_dft_opa_get_cache_line_size(&line), 37);
    EXPECT_EQ(size, 0);
    EXPECT_EQ(line, 0);
    EXPECT_EQ(nax_dft_opaGetMaxCacheSizeB(nullptr), -8);
    EXPECT_EQ(nax_dft_opa_get_cache_line_size(nullptr), -8);
    _szCacheMax = old[0], _szCacheLine = old[1], _ownStatus = old[2];
}

TEST(Cache, FirstCallsAtOnceAgree) {
    const int32_t old = _ownStatus;
    for (int round = 0; round < 50; ++round) {
        _ownStatus = kCacheUnknown;
        int32_t sizes[2] = {-1, -2};
        std::thread other([&] { nax_dft_opaGetMaxCacheSizeB(&sizes[0]); });
        nax_dft_opaGetMaxCacheSizeB(&sizes[1]);
        other.join();
        EXPECT_EQ(sizes[0], sizes[1]);
    }
    _ownStatus = old == kCacheUnknown ? _ownStatus : old;
}

// The first line of /proc/cpuinfo with a key, or an empty text.
std::string cpuinfo(const std::string& key) {
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);)
        if (line.rfind(key, 0) == 0) return line.substr(line.find(':') + 1) + " ";
    return "";
}

TEST(Processor, TestsAgreeWithTheKernelsFlags) {
    const std::string flags = cpuinfo("flags");
    if (flags.empty()) GTEST_SKIP() << "no /proc/cpuinfo";
    const struct {
        const char* flag;
        int (*test)();
    } rows[] = {{"tsc", nax_dft_opa_has_rdtsc},
                {"mmx", nax_dft_opa_is_mmx_extension},
                {"sse", nax_dft_opa_is_ssx_extension},
                {"sse2", nax_dft_opa_is_sse2_extension},
                {"pni", nax_dft_opa_is_sse3_extension},
                {"ssse3", nax_dft_opa_is_ssse3_extension},
                {"sse4_1", nax_dft_opa_is_sse41_extension},
                {"sse4_2", nax_dft_opa_is_sse42_extension},
                {"movbe", nax_dft_opa_is_movbe},
                {"lm", nax_dft_opa_is_wide64_extension},
                {"avx", nax_dft_opa_is_avx_extension},
                {"avx512f", nax_dft_opa_is_avx512_extension}};
    for (const auto& row : rows)
        EXPECT_EQ(row.test(), flags.find(std::string(" ") + row.flag + " ") != std::string::npos) << row.flag;
    EXPECT_EQ(nax_dft_opa_has_cpuid(), 1);
    EXPECT_GE(nax_dft_opa_get_cores_on_die(), 1);
}

TEST(Processor, IdentityAgreesWithTheKernel) {
    nax_processor_ident ident;
    ASSERT_EQ(nax_dft_opa_get_kestrel_ident(&ident), 0);
    EXPECT_EQ(nax_dft_opa_get_kestrel_ident(nullptr), -8);
    const uint32_t family = ident.family + (ident.family == 15 ? ident.extended_family : 0);
    const uint32_t model = ident.model + (ident.family == 15 || ident.family == 6 ? ident.extended_model << 4 : 0);
    if (const std::string text = cpuinfo("cpu family"); !text.empty()) {
        EXPECT_EQ(family, std::stoul(text));
        EXPECT_EQ(model, std::stoul(cpuinfo("model\t")));
        EXPECT_EQ(ident.stepping, std::stoul(cpuinfo("stepping")));
        EXPECT_EQ(nax_dft_opa_max_cpuid_input(), std::stoul(cpuinfo("cpuid level")));
    }
    EXPECT_EQ(ident.mmx_extension, static_cast<uint32_t>(nax_dft_opa_is_mmx_extension()));
    EXPECT_EQ(ident.sse42_extension, static_cast<uint32_t>(nax_dft_opa_is_sse42_extension()));
    EXPECT_EQ(ident.htt_extension, static_cast<uint32_t>(nax_dft_opa_is_htt_extension()));
    EXPECT_EQ(ident.extended[0][0], ident.max_extended_leaf);
    uint32_t leaf1[4], own[4];
    nax_dft_opa_get_cpuid(leaf1, 1, 0);
    nax_dft_ownGetReg(own, 1, 0);
    EXPECT_EQ(leaf1[0], own[0]);
    EXPECT_EQ(leaf1[3], ident.features_edx);
}

TEST(Processor, TimeStampsRise) {
    const uint64_t stamps[] = {nax_dft_opa_get_kestrel_counter(), nax_dft_opaStartTsc(), nax_dft_opaStopTsc(),
                               nax_dft_opaStartTscp(), nax_dft_opaStopTscp()};
    for (int i = 0; i < 4; ++i) EXPECT_LT(stamps[i], stamps[i + 1]);
}

TEST(FloatingPointValues, AreClassedByTheirBits) {
    using Limits = std::numeric_limits<double>;
    for (const double value : {0.0, -0.0, 1.0, Limits::denorm_min(), Limits::max(), -Limits::max()}) {
        EXPECT_EQ(nax_dft_opa_isnan(value), 0);
        EXPECT_EQ(nax_dft_opa_finite(value), 1);
    }
    for (const double value : {Limits::infinity(), -Limits::infinity()}) {
        EXPECT_EQ(nax_dft_opa_isnan(value), 0);
        EXPECT_EQ(nax_dft_opa_finite(value), 0);
    }
    for (const double value : {Limits::quiet_NaN(), -Limits::quiet_NaN(), Limits::signaling_NaN()}) {
        EXPECT_EQ(nax_dft_opa_isnan(value), 1);
        EXPECT_EQ(nax_dft_opa_finite(value), 0);
    }
}

}  // namespace
}  // namespace nax::testing
