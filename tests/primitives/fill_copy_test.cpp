// Set, Zero and Copy of every type against byte-wise references: lengths around each switch of method, all alignments,
// unmapped pages on both sides, and fills past the caches.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "nax/primitives.h"
#include "primitives/member.h"
#include "runtime/processor_cache.h"
#include "tests/lib/guarded_buffer.h"

namespace nax::testing {
namespace {

constexpr uint8_t kUntouched = 0xA7;

// Bytes of one element, which are also those that a fill repeats.
using Pattern = std::vector<uint8_t>;

template <class... Parts>
Pattern pattern_of(Parts... parts) {
    Pattern bytes;
    const auto append = [&bytes](auto part) {
        const auto* first = reinterpret_cast<const uint8_t*>(&part);
        bytes.insert(bytes.end(), first, first + sizeof part);
    };
    (append(parts), ...);
    return bytes;
}

struct Fill {
    std::string name;
    Pattern pattern;
    std::function<int(void*, int32_t)> run;
};

#define SET_ROW(suffix, type, ...)                                                                \
    Fill {                                                                                        \
        "Set_" #suffix, pattern_of(__VA_ARGS__), [](void* array, int32_t length) {                \
            return nax_dft_avx2_opasSet_##suffix(__VA_ARGS__, static_cast<type*>(array), length); \
        }                                                                                         \
    }
#define ZERO_ROW(suffix, type, parts)                                                         \
    Fill{"Zero_" #suffix, Pattern(sizeof(type) * parts, 0), [](void* array, int32_t length) { \
             return nax_dft_avx2_opasZero_##suffix(static_cast<type*>(array), length);        \
         }},

const Fill kFills[] = {SET_ROW(8u, uint8_t, uint8_t{0x91}),
                       SET_ROW(16s, int16_t, int16_t{-12345}),
                       SET_ROW(16sc, int16_t, int16_t{-12345}, int16_t{321}),
                       SET_ROW(32s, int32_t, 0x12345678),
                       SET_ROW(32sc, int32_t, 0x12345678, -7),
                       SET_ROW(32f, float, -0.1f),
                       SET_ROW(32fc, float, -0.1f, 3e30f),
                       SET_ROW(64s, int64_t, int64_t{0x123456789ABCDEF0}),
                       SET_ROW(64sc, int64_t, int64_t{0x123456789ABCDEF0}, int64_t{-5}),
                       SET_ROW(64f, double, 0.1),
                       SET_ROW(64fc, double, 0.1, -1e300),
                       NAX_PRIMITIVE_TYPES(ZERO_ROW)};

struct Copy {
    std::string name;
    int element;
    std::function<int(const void*, void*, int32_t)> run;
};

#define COPY_ROW(suffix, type, parts)                                                                            \
    Copy{"Copy_" #suffix, int{sizeof(type)} * parts, [](const void* source, void* target, int32_t length) {      \
             return nax_dft_avx2_opasCopy_##suffix(static_cast<const type*>(source), static_cast<type*>(target), \
                                                   length);                                                      \
         }},

const Copy kCopies[] = {NAX_PRIMITIVE_TYPES(COPY_ROW)};

// Fills `length` elements `offset` bytes into a field of untouched bytes, and looks at all of it.
void check_fill(const Fill& fill, size_t offset, int32_t length) {
    const size_t element = fill.pattern.size(), bytes = element * static_cast<size_t>(length);
    std::vector<uint8_t> field(offset + bytes + 64, kUntouched), expected = field;
    uint8_t* const first = expected.data() + offset;
    for (size_t done = 0; done < bytes;) {  // the pattern once, then what is there already, doubling it
        const uint8_t* const from = done == 0 ? fill.pattern.data() : first;
        const size_t count = std::min(done == 0 ? element : done, bytes - done);
        std::memcpy(first + done, from, count);
        done += count;
    }
    ASSERT_EQ(fill.run(field.data() + offset, length), 0);
    ASSERT_TRUE(field == expected) << fill.name << " offset " << offset << " length " << length;
}

std::vector<uint8_t> noise(size_t bytes) {
    std::vector<uint8_t> values(bytes);
    uint32_t state = 1;
    for (uint8_t& value : values) value = static_cast<uint8_t>((state = state * 1664525 + 1013904223) >> 24);
    return values;
}

void check_copy(const Copy& copy, size_t source_offset, size_t target_offset, int32_t length) {
    const size_t bytes = static_cast<size_t>(copy.element) * static_cast<size_t>(length);
    const std::vector<uint8_t> source = noise(source_offset + bytes);
    std::vector<uint8_t> target(target_offset + bytes + 64, kUntouched), expected = target;
    std::memcpy(expected.data() + target_offset, source.data() + source_offset, bytes);
    ASSERT_EQ(copy.run(source.data() + source_offset, target.data() + target_offset, length), 0);
    ASSERT_TRUE(target == expected) << copy.name << " offsets " << source_offset << ' ' << target_offset << " length "
                                    << length;
}

// Lengths on both sides of a number of bytes.
std::vector<int32_t> around(size_t bytes, size_t element) {
    const auto length = static_cast<int32_t>(bytes / element);
    return {length - 1, length, length + 1};
}

TEST(SetAndZero, EveryShortLengthAtEveryAlignment) {
    for (const Fill& fill : kFills)
        for (size_t offset = 0; offset < 34; ++offset)
            for (int32_t length = 1; length <= static_cast<int32_t>(600 / fill.pattern.size()) + 2; ++length)
                check_fill(fill, offset, length);
}

TEST(SetAndZero, LengthsAroundTheSwitches) {
    for (const Fill& fill : kFills)
        for (const size_t offset : {0, 1, 8, 16, 40})
            for (const size_t bytes : {32768, 33000, 0x200000})
                for (const int32_t length : around(bytes, fill.pattern.size())) check_fill(fill, offset, length);
}

// Pretends that the largest cache has `size` bytes.
class PretendedCache {
public:
    explicit PretendedCache(int32_t size) : size_(runtime::_szCacheMax), status_(runtime::_ownStatus) {
        runtime::_szCacheMax = size;
        runtime::_ownStatus = 0;
    }
    ~PretendedCache() {
        runtime::_szCacheMax = size_;
        runtime::_ownStatus = status_;
    }

private:
    int32_t size_, status_;
};

TEST(SetAndZero, FillsPastTheCaches) {
    const PretendedCache cache(0x200010);
    for (const Fill& fill : kFills)
        for (const size_t offset : {0, 1, 8, 48, 56})
            for (const int32_t length : around(0x2001F8, fill.pattern.size())) check_fill(fill, offset, length);
}

TEST(Copy, EveryShortLengthAtEveryAlignment) {
    for (const Copy& copy : kCopies)
        for (size_t source_offset = 0; source_offset < 34; source_offset += 3)
            for (size_t target_offset = 0; target_offset < 34; ++target_offset)
                for (int32_t length = 1; length <= 600 / copy.element; length += 1 + length / 40)
                    check_copy(copy, source_offset, target_offset, length);
}

TEST(Copy, LengthsAroundTheSwitchInAllUnits) {
    for (const Copy& copy : kCopies)
        for (const size_t source_offset : {0, 1, 2, 4, 8})
            for (const size_t target_offset : {0, 1, 2, 4, 8})
                for (const size_t bytes : {1000, 32768, 40000})
                    for (const int32_t length : around(bytes, static_cast<size_t>(copy.element)))
                        check_copy(copy, source_offset, target_offset, length);
}

TEST(SetZeroAndCopy, StayInsideTheirArrays) {
    for (const Guard guard : {Guard::kBefore, Guard::kAfter})
        for (const size_t bytes : {16, 48, 80, 272, 4096 + 16, 32768 + 16, 40000}) {
            GuardedBuffer<uint8_t> target(bytes, guard), source(bytes, guard);
            for (const Fill& fill : kFills)
                EXPECT_EQ(fill.run(target.data(), static_cast<int32_t>(bytes / fill.pattern.size())), 0);
            for (const Copy& copy : kCopies)
                EXPECT_EQ(copy.run(source.data(), target.data(), static_cast<int32_t>(bytes) / copy.element), 0);
        }
}

TEST(SetZeroAndCopy, NullPointersComeBeforeBadLengths) {
    std::vector<uint8_t> array(32, kUntouched);
    const std::vector<uint8_t> before = array;
    for (const int32_t length : {0, -1, INT32_MIN}) {
        for (const Fill& fill : kFills) {
            EXPECT_EQ(fill.run(array.data(), length), NAX_PRIMITIVES_SIZE) << fill.name;
            EXPECT_EQ(fill.run(nullptr, length), NAX_PRIMITIVES_NULL) << fill.name;
        }
        for (const Copy& copy : kCopies) {
            EXPECT_EQ(copy.run(array.data(), array.data(), length), NAX_PRIMITIVES_SIZE) << copy.name;
            EXPECT_EQ(copy.run(nullptr, array.data(), length), NAX_PRIMITIVES_NULL) << copy.name;
            EXPECT_EQ(copy.run(array.data(), nullptr, length), NAX_PRIMITIVES_NULL) << copy.name;
        }
    }
    EXPECT_EQ(array, before);
}

// The workhorses that no member of these lengths calls.
TEST(Workhorses, OlderCopiesAndStringStore) {
    for (const auto copy : {nax_dft_avx2_ownsCopy_8u, nax_dft_avx2_ownsCopy_8u_E9, nax_dft_avx2_ownsCopy_8u_repE9})
        for (int32_t bytes = 0; bytes < 300; ++bytes) {
            const Copy row = {"workhorse", 1, [copy](const void* source, void* target, int32_t length) {
                                  copy(static_cast<const uint8_t*>(source), static_cast<uint8_t*>(target), length);
                                  return 0;
                              }};
            check_copy(row, 0, static_cast<size_t>(bytes % 9), bytes);
        }
    const Fill zero = {"Zero_8u_repE9", {0}, [](void* array, int32_t length) {
                           nax_dft_avx2_ownsZero_8u_repE9(static_cast<uint8_t*>(array), length);
                           return 0;
                       }};
    for (size_t offset = 0; offset < 9; ++offset)
        for (int32_t bytes = 0; bytes < 300; ++bytes) check_fill(zero, offset, bytes);
}

TEST(Workhorses, StringInstructionsRestoreTheDirectionFlag) {
    uint8_t source[100] = {1, 2, 3}, target[100] = {};
    uint64_t flags;
    __asm__ volatile("std");
    nax_dft_avx2_ownsCopy_8u_repE9(source, target, 100);
    flags = __builtin_ia32_readeflags_u64();
    __asm__ volatile("cld");
    EXPECT_NE(flags & 0x400, 0u);
    EXPECT_EQ(std::memcmp(source, target, 100), 0);
    nax_dft_avx2_ownsZero_8u_repE9(target, 100);
    EXPECT_EQ(__builtin_ia32_readeflags_u64() & 0x400, 0u);
    EXPECT_EQ(target[0], 0);
}

// More bytes than 32 bits count: the source is all zero pages but for a few marks, the target takes real memory.
TEST(CopyNightly, MoreThanTwoGigabytesGoInPieces) {
    constexpr size_t kBytes = size_t{0x80000000} + 4096;
    const auto map = [] {
        void* const memory =
            mmap(nullptr, kBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        return memory == MAP_FAILED ? nullptr : static_cast<uint8_t*>(memory);
    };
    uint8_t *const source = map(), *const target = map();
    if (source == nullptr || target == nullptr) GTEST_SKIP() << "no address space";
    const size_t marks[] = {0, 0x7FFFFFDF, 0x7FFFFFE0, 0x7FFFFFFF, 0x80000000, kBytes - 1};
    for (const size_t mark : marks) source[mark] = static_cast<uint8_t>(1 + mark % 251);
    EXPECT_EQ(nax_dft_avx2_opasCopy_16s(reinterpret_cast<int16_t*>(source), reinterpret_cast<int16_t*>(target),
                                        static_cast<int32_t>(kBytes / 2)),
              0);
    EXPECT_EQ(std::memcmp(source, target, kBytes), 0);
    munmap(source, kBytes);
    munmap(target, kBytes);
}

}  // namespace
}  // namespace nax::testing
