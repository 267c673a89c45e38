#include "runtime/processor_cache.h"

#include "nax/processor.h"

namespace nax::runtime {

int32_t _szCacheMax = -1;
int32_t _szCacheLine = -1;
int32_t _ownStatus = kCacheUnknown;

namespace {

constexpr uint32_t KiB = 1024;
constexpr uint32_t MiB = 1024 * KiB;

}  // namespace

// Data and unified caches among the descriptors of leaf 2 (processor maker's manual, CPUID, "Encoding of CPUID Leaf 2
// Descriptors"), by falling size and falling descriptor, so that the first one met is the largest there is. Descriptor
// 0x49 is 4 MiB in both its meanings.
constexpr CacheDescriptor _tableCache[] = {
    {0xEC, 24 * MiB},  {0xEB, 18 * MiB},   {0x4D, 16 * MiB},  {0xEA, 12 * MiB},  {0x4C, 12 * MiB},  {0xE4, 8 * MiB},
    {0x4B, 8 * MiB},   {0x47, 8 * MiB},    {0xDE, 6 * MiB},   {0x4E, 6 * MiB},   {0x4A, 6 * MiB},   {0xE3, 4 * MiB},
    {0xD8, 4 * MiB},   {0x49, 4 * MiB},    {0x46, 4 * MiB},   {0x29, 4 * MiB},   {0xDD, 3 * MiB},   {0x48, 3 * MiB},
    {0xE2, 2 * MiB},   {0xD7, 2 * MiB},    {0xD2, 2 * MiB},   {0x85, 2 * MiB},   {0x7D, 2 * MiB},   {0x45, 2 * MiB},
    {0x25, 2 * MiB},   {0xDC, 1536 * KiB}, {0xD6, 1 * MiB},   {0xD1, 1 * MiB},   {0x87, 1 * MiB},   {0x84, 1 * MiB},
    {0x7C, 1 * MiB},   {0x78, 1 * MiB},    {0x44, 1 * MiB},   {0x24, 1 * MiB},   {0x23, 1 * MiB},   {0xD0, 512 * KiB},
    {0x86, 512 * KiB}, {0x83, 512 * KiB},  {0x80, 512 * KiB}, {0x7F, 512 * KiB}, {0x7B, 512 * KiB}, {0x43, 512 * KiB},
    {0x22, 512 * KiB}, {0x82, 256 * KiB},  {0x7A, 256 * KiB}, {0x42, 256 * KiB}, {0x21, 256 * KiB}, {0x79, 128 * KiB},
    {0x41, 128 * KiB}, {0x1D, 128 * KiB},  {0x68, 32 * KiB},  {0x2C, 32 * KiB},  {0x0E, 24 * KiB},  {0x67, 16 * KiB},
    {0x60, 16 * KiB},  {0x0D, 16 * KiB},   {0x0C, 16 * KiB},  {0x66, 8 * KiB},   {0x0A, 8 * KiB},   {0, 0},
};

namespace {

constexpr bool table_is_sorted() {
    for (const CacheDescriptor* row = _tableCache; row[1].size != 0; ++row) {
        const bool falls =
            row[0].size > row[1].size || (row[0].size == row[1].size && row[0].descriptor > row[1].descriptor);
        if (!falls) return false;
    }
    return true;
}
static_assert(table_is_sorted());

// The bytes of one register; none of them counts when its highest bit is set.
bool has_descriptor(uint32_t word, uint32_t descriptor) {
    if ((word >> 31) != 0) return false;
    for (int byte = 0; byte < 4; ++byte)
        if (((word >> (8 * byte)) & 0xFF) == descriptor) return true;
    return false;
}

// Leaf 4 and its twin of another maker, one sub-leaf a cache. Type 0 ends the list; instruction caches (type 2) don't
// hold data.
LargestCache largest_enumerated_cache(CpuidSource source, uint32_t leaf) {
    constexpr uint32_t kSubLeaves = 32, kEnd = 0, kInstruction = 2;
    LargestCache largest = {kCacheNoInformation, 0, 0};
    for (uint32_t sub_leaf = 0; sub_leaf < kSubLeaves; ++sub_leaf) {
        const Registers cache = source(leaf, sub_leaf);
        const uint32_t type = cache.eax & 0x1F;
        if (type == kEnd) break;
        if (type == kInstruction) continue;
        const uint32_t ways = (cache.ebx >> 22) + 1, partitions = ((cache.ebx >> 12) & 0x3FF) + 1;
        const uint32_t sets = cache.ecx + 1, line = (cache.ebx & 0xFFF) + 1;
        const auto size = static_cast<int32_t>(ways * partitions * sets * line);
        if (size > largest.size) largest = {0, size, static_cast<int32_t>(line)};
    }
    return largest;
}

}  // namespace

int32_t largest_described_cache(CpuidSource source) {
    const Registers leaf2 = source(2, 0);
    const uint32_t words[] = {leaf2.eax & ~0xFFu, leaf2.ebx, leaf2.ecx,
                              leaf2.edx};  // AL is a count of queries, always 1
    for (const CacheDescriptor* row = _tableCache; row->size != 0; ++row)
        for (const uint32_t word : words)
            if (has_descriptor(word, row->descriptor)) return static_cast<int32_t>(row->size);
    return -1;
}

LargestCache find_largest_cache(CpuidSource source) {
    const Registers leaf0 = source(0, 0);
    if (leaf0.eax < 2 || !made_by_vendor(leaf0)) return {kCacheNoIdentification, 0, 0};
    if (leaf0.eax >= 4) {
        const LargestCache found = largest_enumerated_cache(source, 4);
        if (found.status == 0) return found;
    }
    const int32_t size = largest_described_cache(source);
    if (size < 0) return {kCacheNoInformation, 0, 0};
    return {0, size, 0};
}

namespace {

// The status is stored last and read first: who sees it set sees the sizes.
LargestCache largest_cache() {
    const int32_t status = __atomic_load_n(&_ownStatus, __ATOMIC_ACQUIRE);
    if (status != kCacheUnknown)
        return {status, __atomic_load_n(&_szCacheMax, __ATOMIC_RELAXED),
                __atomic_load_n(&_szCacheLine, __ATOMIC_RELAXED)};
    const LargestCache found = find_largest_cache(cpuid);
    __atomic_store_n(&_szCacheLine, found.line, __ATOMIC_RELAXED);
    __atomic_store_n(&_szCacheMax, found.size, __ATOMIC_RELAXED);
    __atomic_store_n(&_ownStatus, found.status, __ATOMIC_RELEASE);
    return found;
}

}  // namespace

int64_t find_last_level_cache(CpuidSource source) {
    constexpr uint32_t kExtended = 0x80000000, kExtendedCaches = 0x8000001D;
    if (const LargestCache found = find_largest_cache(source); found.status == 0) return found.size;
    if (source(0, 0).eax >= 4)
        if (const LargestCache found = largest_enumerated_cache(source, 4); found.status == 0) return found.size;
    if (source(kExtended, 0).eax < kExtendedCaches) return 0;
    return largest_enumerated_cache(source, kExtendedCaches).size;
}

int64_t last_level_cache() {
    if (const LargestCache found = largest_cache(); found.status == 0) return found.size;
    static int64_t kept = -1;
    int64_t size = __atomic_load_n(&kept, __ATOMIC_RELAXED);
    if (size < 0) __atomic_store_n(&kept, size = find_last_level_cache(cpuid), __ATOMIC_RELAXED);
    return size;
}

}  // namespace nax::runtime

using namespace nax::runtime;

extern "C" {

int32_t nax_dft_ownGetCacheSize() { return largest_described_cache(cpuid); }

int nax_dft_opaGetMaxCacheSizeB(int32_t* size) {
    if (size == nullptr) return -8;
    const LargestCache cache = largest_cache();
    *size = cache.status == 0 ? cache.size : 0;
    return cache.status;
}

int nax_dft_opa_get_cache_line_size(int32_t* size) {
    if (size == nullptr) return -8;
    const LargestCache cache = largest_cache();
    *size = cache.status == 0 ? cache.line : 0;
    return cache.status;
}

}  // extern "C"
