// Vectors of unsigned integers, and the numbers that they become. Unlike the operations of simd.h, those on numbers round
// as the caller's control word says, like scalar code does: a number is the same bits from a vector or alone.
// Sums, differences, products, logic and shifts by one count for all lanes are the compiler's operators.
#pragma once

#include <cstring>

#include "simd/simd.h"

namespace nax::simd {
inline namespace NAX_ISA {

// Lanes of 32 and 64 bits in a vector.
inline constexpr int kLanes32 = kVectorBytes / 4;
inline constexpr int kLanes64 = kVectorBytes / 8;

using U32 = uint32_t __attribute__((vector_size(kVectorBytes)));
using U64 = uint64_t __attribute__((vector_size(kVectorBytes)));
using F32 = Single::Vector;
using F64 = Double::Vector;
using Quad = __m256d;  // four doubles, whatever the vectors' size
using HalfU32 = uint32_t __attribute__((vector_size(kVectorBytes / 2)));
using HalfF32 = float __attribute__((vector_size(kVectorBytes / 2)));
struct PairF64 {
    F64 low, high;
};

#ifdef __AVX512F__
using Register = __m512i;
NAX_VEC __mmask16 first_words(int count) { return static_cast<__mmask16>((1u << count) - 1); }
#else
using Register = __m256i;
NAX_VEC __m256i first_words(int count) { return (__m256i)Single::first_lanes(count).lanes; }
#endif

// --- memory ---
// Whole vectors go through the intrinsics: as copies of bytes the compiler may move them in pieces of 16.
template <class V>
NAX_VEC V load(const void* from) {
#ifdef __AVX512F__
    if constexpr (sizeof(V) == 64) return (V)_mm512_loadu_si512(from);
#endif
    if constexpr (sizeof(V) == 32) {
        return (V)_mm256_loadu_si256(static_cast<const __m256i*>(from));
    } else if constexpr (sizeof(V) < 32) {
        V v;
        std::memcpy(&v, from, sizeof(V));
        return v;
    }
}
template <class V>
NAX_VEC void store(void* to, V v) {
#ifdef __AVX512F__
    if constexpr (sizeof(V) == 64) _mm512_storeu_si512(to, (__m512i)v);
#endif
    if constexpr (sizeof(V) == 32) _mm256_storeu_si256(static_cast<__m256i*>(to), (__m256i)v);
    else if constexpr (sizeof(V) < 32) std::memcpy(to, &v, sizeof(V));
}
NAX_VEC U64 broadcast(uint64_t x) { return U64{} + x; }
NAX_VEC U32 broadcast(uint32_t x) { return U32{} + x; }
NAX_VEC F64 broadcast(double x) { return Double::row(x); }
NAX_VEC F32 broadcast(float x) { return Single::row(x); }
NAX_VEC HalfF32 broadcast_half(float x) { return HalfF32{} + x; }

// --- words and numbers to memory: all of a vector of 32-bit words, or those of its first `count` ---
NAX_VEC void put(uint32_t* to, U32 v) { store(to, v); }
NAX_VEC void put(float* to, F32 v) { store(to, v); }
NAX_VEC void put(double* to, PairF64 v) {
    store(to, v.low);
    store(to + kLanes64, v.high);
}
NAX_VEC void put(float* to, int count, F32 v) { store(to, count, v); }
NAX_VEC void put(uint32_t* to, int count, U32 v) { store(reinterpret_cast<float*>(to), count, (F32)v); }
NAX_VEC void put(double* to, int count, PairF64 v) {
    if (count > kLanes64) {
        store(to, v.low);
        return store(to + kLanes64, count - kLanes64, v.high);
    }
    store(to, count, v.low);
}
// The first `count` words; zero in the other lanes.
NAX_VEC U32 load_words(const uint32_t* from, int count) {
#ifdef __AVX512F__
    return (U32)_mm512_maskz_loadu_epi32(first_words(count), from);
#else
    return (U32)_mm256_maskload_epi32(reinterpret_cast<const int*>(from), first_words(count));
#endif
}

// --- lanes ---
// Lanes first ... first + kLanes32 - 1 of the concatenation (low, high).
template <int first>
NAX_VEC U32 join(U32 low, U32 high) {
#ifdef __AVX512F__
    return (U32)_mm512_alignr_epi32((__m512i)high, (__m512i)low, first);
#else
    const __m256i middle = _mm256_permute2x128_si256((__m256i)low, (__m256i)high, 0x21);
    if constexpr (first < 4) return (U32)_mm256_alignr_epi8(middle, (__m256i)low, 4 * first);
    else return (U32)_mm256_alignr_epi8((__m256i)high, middle, 4 * first - 16);
#endif
}
NAX_VEC U64 widen(HalfU32 a) {
#ifdef __AVX512F__
    return (U64)_mm512_cvtepu32_epi64((__m256i)a);
#else
    return (U64)_mm256_cvtepu32_epi64((__m128i)a);
#endif
}
NAX_VEC HalfU32 lower_half(U32 a) {
#ifdef __AVX512F__
    return (HalfU32)_mm512_castsi512_si256((__m512i)a);
#else
    return (HalfU32)_mm256_castsi256_si128((__m256i)a);
#endif
}
NAX_VEC HalfU32 upper_half(U32 a) {
#ifdef __AVX512F__
    return (HalfU32)_mm512_extracti64x4_epi64((__m512i)a, 1);
#else
    return (HalfU32)_mm256_extracti128_si256((__m256i)a, 1);
#endif
}
// The low words of 64-bit lanes side by side.
NAX_VEC HalfU32 low_halves(U64 a) {
#ifdef __AVX512F__
    return (HalfU32)_mm512_cvtepi64_epi32((__m512i)a);
#else
    const __m256i order = _mm256_setr_epi32(0, 2, 4, 6, 0, 2, 4, 6);
    return (HalfU32)_mm256_castsi256_si128(_mm256_permutevar8x32_epi32((__m256i)a, order));
#endif
}
// The low words of `even` in the even lanes, those of `odd` in the odd ones.
NAX_VEC U32 interleave_low_halves(U64 even, U64 odd) {
#ifdef __AVX512F__
    return (U32)_mm512_mask_blend_epi32(0xAAAA, (__m512i)even, (__m512i)(odd << 32));
#else
    return (U32)_mm256_blend_epi32((__m256i)even, (__m256i)(odd << 32), 0xAA);
#endif
}
// Lanes of 64 bits of both operands in turn, the lower half of them and the upper half.
NAX_VEC void interleave(U64 a, U64 b, U64& lower, U64& upper) {
#ifdef __AVX512F__
    const U64 first = {0, 8, 1, 9, 2, 10, 3, 11};
    lower = (U64)_mm512_permutex2var_epi64((__m512i)a, (__m512i)first, (__m512i)b);
    upper = (U64)_mm512_permutex2var_epi64((__m512i)a, (__m512i)(first + 4), (__m512i)b);
#else
    const __m256i even = _mm256_unpacklo_epi64((__m256i)a, (__m256i)b), odd = _mm256_unpackhi_epi64((__m256i)a, (__m256i)b);
    lower = (U64)_mm256_permute2x128_si256(even, odd, 0x20);
    upper = (U64)_mm256_permute2x128_si256(even, odd, 0x31);
#endif
}
NAX_VEC U64 lane_numbers() {
#ifdef __AVX512F__
    return U64{0, 1, 2, 3, 4, 5, 6, 7};
#else
    return U64{0, 1, 2, 3};
#endif
}

// --- logic and arithmetic ---
// a ^ b ^ c
NAX_VEC U32 xor3(U32 a, U32 b, U32 c) {
#ifdef __AVX512F__
    return (U32)_mm512_ternarylogic_epi32((__m512i)a, (__m512i)b, (__m512i)c, 0x96);
#else
    return a ^ b ^ c;
#endif
}
NAX_VEC U64 xor3(U64 a, U64 b, U64 c) { return (U64)xor3((U32)a, (U32)b, (U32)c); }
// a ^ (b & c)
NAX_VEC U32 xor_and(U32 a, U32 b, U32 c) {
#ifdef __AVX512F__
    return (U32)_mm512_ternarylogic_epi32((__m512i)a, (__m512i)b, (__m512i)c, 0x78);
#else
    return a ^ (b & c);
#endif
}
// Bits of a where mask is set, of b elsewhere.
NAX_VEC U32 select(U32 mask, U32 a, U32 b) {
#ifdef __AVX512F__
    return (U32)_mm512_ternarylogic_epi32((__m512i)mask, (__m512i)a, (__m512i)b, 0xCA);
#else
    return (mask & (a ^ b)) ^ b;
#endif
}
// a ^ pattern in the lanes where y is odd.
NAX_VEC U32 xor_if_odd(U32 a, U32 y, U32 pattern) {
#ifdef __AVX512F__
    const __mmask16 odd = _mm512_test_epi32_mask((__m512i)y, _mm512_set1_epi32(1));
    return (U32)_mm512_mask_xor_epi32((__m512i)a, odd, (__m512i)a, (__m512i)pattern);
#else
    return a ^ (-(y & broadcast(uint32_t{1})) & pattern);
#endif
}
// Product of the low 32 bits of each lane.
NAX_VEC U64 multiply_low_halves(U64 a, U64 b) {
#ifdef __AVX512F__
    return (U64)_mm512_mul_epu32((__m512i)a, (__m512i)b);
#else
    return (U64)_mm256_mul_epu32((__m256i)a, (__m256i)b);
#endif
}
// v - m where that is not negative, else v; v below 2^63.
NAX_VEC U64 subtract_once(U64 v, U64 m) {
#ifdef __AVX512F__
    return (U64)_mm512_min_epu64((__m512i)v, (__m512i)(v - m));
#else
    return (U64)_mm256_blendv_pd((__m256d)(v - m), (__m256d)v, (__m256d)(v - m));
#endif
}
// Shifts by a count for each lane. Counts of 64 give 0, unlike in C++.
NAX_VEC U64 shift_down(U64 a, U64 n) {
#ifdef __AVX512F__
    return (U64)_mm512_srlv_epi64((__m512i)a, (__m512i)n);
#else
    return (U64)_mm256_srlv_epi64((__m256i)a, (__m256i)n);
#endif
}
NAX_VEC U64 shift_up(U64 a, U64 n) {
#ifdef __AVX512F__
    return (U64)_mm512_sllv_epi64((__m512i)a, (__m512i)n);
#else
    return (U64)_mm256_sllv_epi64((__m256i)a, (__m256i)n);
#endif
}

// --- numbers ---
// a b + c in one rounding, the caller's.
NAX_VEC __m256d fused(__m256d a, __m256d b, __m256d c) { return _mm256_fmadd_pd(a, b, c); }
NAX_VEC __m256 fused(__m256 a, __m256 b, __m256 c) { return _mm256_fmadd_ps(a, b, c); }
NAX_VEC Quad truncate(Quad a) { return _mm256_round_pd(a, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC); }
#ifdef __AVX512F__
NAX_VEC F64 fused(F64 a, F64 b, F64 c) { return _mm512_fmadd_pd(a, b, c); }
NAX_VEC F32 fused(F32 a, F32 b, F32 c) { return _mm512_fmadd_ps(a, b, c); }
NAX_VEC F64 truncate(F64 a) { return _mm512_roundscale_pd(a, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC); }
NAX_VEC Quad fnma(Quad a, Quad b, Quad c) { return _mm256_fnmadd_pd(a, b, c); }

NAX_VEC F64 to_double(HalfU32 a) { return _mm512_cvtepu32_pd((__m256i)a); }
NAX_VEC F64 signed_to_double(HalfU32 a) { return _mm512_cvtepi32_pd((__m256i)a); }
NAX_VEC F32 to_float(U32 a) { return _mm512_cvtepu32_ps((__m512i)a); }
NAX_VEC F32 signed_to_float(U32 a) { return _mm512_cvtepi32_ps((__m512i)a); }
NAX_VEC F64 to_double(U64 a) { return _mm512_cvtepu64_pd((__m512i)a); }
NAX_VEC F64 small_to_double(U64 a) { return to_double(a); }
NAX_VEC HalfF32 narrow(F64 a) { return _mm512_cvtpd_ps(a); }
NAX_VEC F32 join_halves(HalfF32 low, HalfF32 high) { return _mm512_insertf32x8(_mm512_castps256_ps512(low), high, 1); }
#else
NAX_VEC HalfF32 fused(HalfF32 a, HalfF32 b, HalfF32 c) { return _mm_fmadd_ps(a, b, c); }
// For lanes below 2^52, which become the fraction of 2^52.
NAX_VEC F64 small_to_double(U64 a) { return (F64)(a | broadcast(uint64_t{0x4330000000000000})) - Double::row(0x1p52); }
NAX_VEC F64 to_double(HalfU32 a) { return small_to_double(widen(a)); }
NAX_VEC F64 signed_to_double(HalfU32 a) { return _mm256_cvtepi32_pd((__m128i)a); }
NAX_VEC F32 signed_to_float(U32 a) { return _mm256_cvtepi32_ps((__m256i)a); }
// 16 bits at a time are exact, so the sum rounds once.
NAX_VEC F32 to_float(U32 a) {
    const U32 low = (U32)_mm256_blend_epi16((__m256i)a, _mm256_setzero_si256(), 0xAA);
    return fused(signed_to_float(a >> 16), Single::row(65536.0f), signed_to_float(low));
}
// The halves are placed in the fractions of 2^84 and 2^52: their difference is exact and the one addition rounds once.
NAX_VEC F64 to_double(U64 a) {
    const U64 high = (a >> 32) | broadcast(uint64_t{0x4530000000000000});
    const U64 low = (a & broadcast(uint64_t{0xFFFFFFFF})) | broadcast(uint64_t{0x4330000000000000});
    return ((F64)high - Double::row(0x1.00000001p84)) + (F64)low;
}
NAX_VEC HalfF32 narrow(F64 a) { return _mm256_cvtpd_ps(a); }
NAX_VEC F32 join_halves(HalfF32 low, HalfF32 high) { return _mm256_set_m128(high, low); }
#endif
// All lanes as doubles.
NAX_VEC PairF64 to_doubles(U32 a) { return {to_double(lower_half(a)), to_double(upper_half(a))}; }
NAX_VEC PairF64 signed_to_doubles(U32 a) { return {signed_to_double(lower_half(a)), signed_to_double(upper_half(a))}; }
NAX_VEC PairF64 fused(PairF64 a, F64 b, F64 c) { return {fused(a.low, b, c), fused(a.high, b, c)}; }

}  // namespace NAX_ISA
}  // namespace nax::simd
