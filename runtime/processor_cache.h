// Geometry of the largest cache, as CPUID tells it.
#pragma once

#include <cstdint>

#include "platform/cpuid.h"

namespace nax::runtime {

using platform::cpuid;
using platform::Registers;
using platform::made_by_vendor;

// Asks for a leaf and sub-leaf: the instruction, or a table in tests.
using CpuidSource = Registers (*)(uint32_t leaf, uint32_t sub_leaf);

struct LargestCache {
    int32_t status;
    int32_t size;
    int32_t line;
};

inline constexpr int32_t kCacheUnknown = 1;  // nobody has asked yet
inline constexpr int32_t kCacheNoIdentification = 36;
inline constexpr int32_t kCacheNoInformation = 37;

[[gnu::visibility("hidden")]] LargestCache find_largest_cache(CpuidSource source);

// Size of the largest cache on processors of any maker, 0 where nothing tells it; and the same asked once.
[[gnu::visibility("hidden")]] int64_t find_last_level_cache(CpuidSource source);
[[gnu::visibility("hidden")]] int64_t last_level_cache();

// Size of the largest cache among the descriptors of leaf 2, or -1.
[[gnu::visibility("hidden")]] int32_t largest_described_cache(CpuidSource source);

// What was found; threads that come first at once store the same values.
[[gnu::visibility("hidden")]] extern int32_t _szCacheMax;
[[gnu::visibility("hidden")]] extern int32_t _szCacheLine;
[[gnu::visibility("hidden")]] extern int32_t _ownStatus;

struct CacheDescriptor {
    uint32_t descriptor;
    uint32_t size;
};
[[gnu::visibility("hidden")]] extern const CacheDescriptor _tableCache[];

}  // namespace nax::runtime
