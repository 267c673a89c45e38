// Copying memory: the workhorses, and the members by type that choose among them.
#include <immintrin.h>

#include <cstddef>
#include <cstring>

#include "nax/primitives.h"
#include "primitives/member.h"
#include "primitives/string_instructions.h"

using namespace nax::primitives;

namespace {

// String moves serve from here on.
constexpr int64_t kStringCopy = 32768;
// Byte counts of the workhorses have 32 bits: more goes in pieces, whole elements each.
constexpr int64_t kLongestCopy = 0x7FFFFFFF;
constexpr int64_t kPiece = 0x7FFFFFE0;

__m256i load32(const uint8_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
void store32(uint8_t* p, __m256i row) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), row); }

// Copies n bytes, Unit <= n <= 2 Unit, by two moves that may overlap.
template <class Unit>
inline int copy_by_two(const uint8_t* source, uint8_t* target, int64_t n) {
    Unit first, last;
    std::memcpy(&first, source, sizeof(Unit));
    std::memcpy(&last, source + n - sizeof(Unit), sizeof(Unit));
    std::memcpy(target, &first, sizeof(Unit));
    std::memcpy(target + n - sizeof(Unit), &last, sizeof(Unit));
    return success();
}

// The result is `none` for a length below 1.
inline int copy_below_32(const uint8_t* source, uint8_t* target, int64_t n, int none) {
    if (rather(n >= 16)) return copy_by_two<__m128i_u>(source, target, n);
    if (rather(n >= 8)) return copy_by_two<uint64_t>(source, target, n);
    if (rather(n >= 4)) return copy_by_two<uint32_t>(source, target, n);
    if (rather(n >= 2)) return copy_by_two<uint16_t>(source, target, n);
    if (n < 1) return none;
    *target = *source;
    return success();
}

// Copies n bytes, 32 Rows <= n <= 64 Rows, as rows from the start and rows up to the end. Written as a recursion so
// that all rows are registers and all loads come before the stores.
template <ptrdiff_t Rows>
inline void copy_from_both_ends(const uint8_t* source, uint8_t* target, int64_t n) {
    if constexpr (Rows > 0) {
        const __m256i first = load32(source + 32 * (Rows - 1));
        const __m256i last = load32(source + n - 32 * Rows);
        copy_from_both_ends<Rows - 1>(source, target, n);
        store32(target + 32 * (Rows - 1), first);
        store32(target + n - 32 * Rows, last);
    }
}

// Up to kShortCopy bytes; more are left to `longer`. A length below 1 is found last; its result is `none`.
constexpr int64_t kShortCopy = 256;
template <class Longer>
[[gnu::always_inline]] inline int copy_short_or(const uint8_t* source, uint8_t* target, int64_t n, int none,
                                                Longer longer) {
    if (rather(n <= 64)) {
        if (!rather(n >= 32)) return copy_below_32(source, target, n, none);
        copy_from_both_ends<1>(source, target, n);
        return success();
    }
    if (!rather(n <= kShortCopy)) return longer();
    if (rather(n <= 128)) {
        copy_from_both_ends<2>(source, target, n);
        return success();
    }
    copy_from_both_ends<4>(source, target, n);
    return success();
}

// More than 256 bytes: the first row, rounds of four rows to aligned targets, and the last four rows.
inline void copy_rounds(const uint8_t* source, uint8_t* target, int64_t n) {
    const uint8_t* const source_end = source + n;
    uint8_t* const end = target + n;
    const __m256i last0 = load32(source_end - 32), last1 = load32(source_end - 64);
    const __m256i last2 = load32(source_end - 96), last3 = load32(source_end - 128);
    store32(target, load32(source));
    const int64_t head = 32 - static_cast<int64_t>(reinterpret_cast<uintptr_t>(target) & 31);
    source += head;
    target += head;
    for (; end - target > 128; source += 128, target += 128) {
        const __m256i row0 = load32(source), row1 = load32(source + 32);
        const __m256i row2 = load32(source + 64), row3 = load32(source + 96);
        store32(target, row0);
        store32(target + 32, row1);
        store32(target + 64, row2);
        store32(target + 96, row3);
    }
    store32(end - 32, last0);
    store32(end - 64, last1);
    store32(end - 96, last2);
    store32(end - 128, last3);
}

// The widest unit that both pointers are multiples of.
int common_alignment(const uint8_t* source, const uint8_t* target) {
    const auto bits = reinterpret_cast<uintptr_t>(source) | reinterpret_cast<uintptr_t>(target);
    return (bits & 7) == 0 ? 8 : (bits & 3) == 0 ? 4 : (bits & 1) == 0 ? 2 : 1;
}

template <int Unit>
void move_by(const uint8_t* source, uint8_t* target, uint64_t bytes) {
    string_move<Unit>(source, target, bytes / Unit);
    if (Unit != 1 && bytes % Unit != 0) string_move<1>(source, target, bytes % Unit);
}

[[gnu::noinline]] int copy_long(const uint8_t* source, uint8_t* target, int64_t bytes) {
    for (; bytes > kLongestCopy; bytes -= kPiece, source += kPiece, target += kPiece)
        nax_dft_avx2_ownsCopy_8u_repE9(source, target, kPiece);
    return nax_dft_avx2_ownsCopy_8u_repE9(source, target, static_cast<int32_t>(bytes));
}

// Short arrays are copied here: a call more would take as long as the copy.
[[gnu::always_inline]] inline int copy_member(const void* source_array, void* target_array, int64_t element,
                                              int32_t length) {
    if (source_array == nullptr || target_array == nullptr) return NAX_PRIMITIVES_NULL;
    const auto source = static_cast<const uint8_t*>(source_array);
    const auto target = static_cast<uint8_t*>(target_array);
    const int64_t bytes = element * length;
    return copy_short_or(source, target, bytes, NAX_PRIMITIVES_SIZE, [=] {
        return bytes < kStringCopy ? nax_dft_avx2_ownsCopy_8u_AVX(source, target, static_cast<int32_t>(bytes))
                                   : copy_long(source, target, bytes);
    });
}

}  // namespace

extern "C" {

int nax_dft_avx2_ownsCopy_8u_AVX(const uint8_t* source, uint8_t* target, int32_t bytes) {
    return copy_short_or(source, target, bytes, 0, [=] {
        copy_rounds(source, target, bytes);
        return 0;
    });
}

int nax_dft_avx2_ownsCopy_8u_repE9(const uint8_t* source, uint8_t* target, int32_t bytes) {
    const UpwardDirection upward;
    const auto count = static_cast<uint64_t>(bytes);
    switch (common_alignment(source, target)) {
        case 8:
            move_by<8>(source, target, count);
            break;
        case 4:
            move_by<4>(source, target, count);
            break;
        case 2:
            move_by<2>(source, target, count);
            break;
        default:
            move_by<1>(source, target, count);
            break;
    }
    return 0;
}

int nax_dft_avx2_ownsCopy_8u(const uint8_t* source, uint8_t* target, int32_t bytes) {
    for (; bytes >= 16; bytes -= 16, source += 16, target += 16) std::memcpy(target, source, 16);
    return copy_below_32(source, target, bytes, 0);
}

int nax_dft_avx2_ownsCopy_8u_E9(const uint8_t* source, uint8_t* target, int32_t bytes) {
    for (; bytes >= 32; bytes -= 32, source += 32, target += 32) store32(target, load32(source));
    return copy_below_32(source, target, bytes, 0);
}

#define COPY_MEMBER(suffix, type, parts)                                                                    \
    NAX_SHORT_MEMBER int nax_dft_avx2_opasCopy_##suffix(const type* source, type* target, int32_t length) { \
        return copy_member(source, target, sizeof(type) * parts, length);                                   \
    }
NAX_PRIMITIVE_TYPES(COPY_MEMBER)
#undef COPY_MEMBER

}  // extern "C"
