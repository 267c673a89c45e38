// Vectors of sites and cells for the hot loops of data fitting. Included by *_simd.cpp files only, whose instruction
// set it follows: the namespace carries its name, so that bodies of two sets never merge at link time.
//
// Pack<T> holds as many elements as a register: double goes with 64-bit cells, float with 32-bit cells. Lane<T> is the
// same interface on one element, for what is left of a block and for cells that don't fit 32 bits. Results don't depend
// on which of them computes an element.
#pragma once

// GCC 12 takes the ignored operand of its own unmasked AVX-512 intrinsics for an uninitialised variable.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif
#include <immintrin.h>

#include <cstdint>
#include <cstring>
#include <type_traits>

#if defined(__AVX512F__)
#define NAX_FIT_SIMD avx512
#else
#define NAX_FIT_SIMD avx2
#endif

namespace nax::fit::NAX_FIT_SIMD {

template <class T>
struct Lane {
    using Element = T;
    using F = T;
    using I = int64_t;
    using M = bool;
    static constexpr int kLanes = 1;

    static F set(T a) { return a; }
    static F load(const T* p) { return *p; }
    static void store(T* p, F a) { *p = a; }
    static F add(F a, F b) { return a + b; }
    static F sub(F a, F b) { return a - b; }
    static F mul(F a, F b) { return a * b; }
    static F fma(F a, F b, F c) {
        if constexpr (sizeof(T) == sizeof(double))
            return __builtin_fma(a, b, c);
        else
            return __builtin_fmaf(a, b, c);
    }
    // a limited to [0, top]; NaN becomes 0.
    static F clamp(F a, F top) { return a > 0 ? (a < top ? a : top) : T(0); }
    static M le(F a, F b) { return a <= b; }
    static M lt(F a, F b) { return a < b; }
    static M eq(F a, F b) { return a == b; }
    static bool any(M m) { return m; }
    static bool all(M m) { return m; }
    static M both(M a, M b) { return a && b; }
    static M either(M a, M b) { return a || b; }
    static M first_only(M a, M b) { return a && !b; }

    static I iset(int64_t a) { return a; }
    static I iota() { return 0; }
    static I iadd(I a, I b) { return a + b; }
    static I isub(I a, I b) { return a - b; }
    static I half(I a) { return a >> 1; }
    static M ilt(I a, I b) { return a < b; }
    static I imin(I a, I b) { return a < b ? a : b; }
    static I imax(I a, I b) { return a > b ? a : b; }
    static I select(M m, I a, I b) { return m ? a : b; }
    static F choose(M m, F a, F b) { return m ? a : b; }
    static I count(I a, M m) { return a + (m ? 1 : 0); }
    static I times(I a, int64_t k) { return a * k; }
    static I truncate(F a) { return static_cast<I>(a); }
    static F from_int(I a) { return static_cast<T>(a); }

    static F gather(const T* base, I i) { return base[i]; }
    // Entries i and i + 1 of a table of counts.
    static void gather_counts(const int32_t* table, I i, I& first, I& second) {
        first = table[i], second = table[i + 1];
    }
    static I gather_wide(const int64_t* table, I i) { return table[i]; }
    template <class Cell>
    static I load_cells(const Cell* p) {
        return static_cast<I>(*p);
    }
    template <class Cell>
    static void store_cells(Cell* p, I a) {
        *p = static_cast<Cell>(a);
    }
};

template <class T>
struct Pack;

#if defined(__AVX512F__)

template <>
struct Pack<double> {
    using Element = double;
    using F = __m512d;
    using I = __m512i;
    using M = __mmask8;
    static constexpr int kLanes = 8;

    static F set(double a) { return _mm512_set1_pd(a); }
    static F load(const double* p) { return _mm512_loadu_pd(p); }
    static void store(double* p, F a) { _mm512_storeu_pd(p, a); }
    static F add(F a, F b) { return _mm512_add_pd(a, b); }
    static F sub(F a, F b) { return _mm512_sub_pd(a, b); }
    static F mul(F a, F b) { return _mm512_mul_pd(a, b); }
    static F fma(F a, F b, F c) { return _mm512_fmadd_pd(a, b, c); }
    static F clamp(F a, F top) { return _mm512_min_pd(_mm512_max_pd(a, _mm512_setzero_pd()), top); }
    static M le(F a, F b) { return _mm512_cmp_pd_mask(a, b, _CMP_LE_OQ); }
    static M lt(F a, F b) { return _mm512_cmp_pd_mask(a, b, _CMP_LT_OQ); }
    static M eq(F a, F b) { return _mm512_cmp_pd_mask(a, b, _CMP_EQ_OQ); }
    static bool any(M m) { return m != 0; }
    static bool all(M m) { return m == 0xFF; }
    static M both(M a, M b) { return static_cast<M>(a & b); }
    static M either(M a, M b) { return static_cast<M>(a | b); }
    static M first_only(M a, M b) { return static_cast<M>(a & ~b); }

    static I iset(int64_t a) { return _mm512_set1_epi64(a); }
    static I iota() { return _mm512_set_epi64(7, 6, 5, 4, 3, 2, 1, 0); }
    static I iadd(I a, I b) { return _mm512_add_epi64(a, b); }
    static I isub(I a, I b) { return _mm512_sub_epi64(a, b); }
    static I half(I a) { return _mm512_srli_epi64(a, 1); }
    static M ilt(I a, I b) { return _mm512_cmplt_epi64_mask(a, b); }
    static I imin(I a, I b) { return _mm512_min_epi64(a, b); }
    static I imax(I a, I b) { return _mm512_max_epi64(a, b); }
    static I select(M m, I a, I b) { return _mm512_mask_blend_epi64(m, b, a); }
    static F choose(M m, F a, F b) { return _mm512_mask_blend_pd(m, b, a); }
    static I count(I a, M m) { return _mm512_mask_add_epi64(a, m, a, _mm512_set1_epi64(1)); }
    static I times(I a, int64_t k) { return _mm512_mullo_epi64(a, _mm512_set1_epi64(k)); }
    static I truncate(F a) { return _mm512_cvttpd_epi64(a); }
    static F from_int(I a) { return _mm512_cvtepi64_pd(a); }

    static F gather(const double* base, I i) { return _mm512_mask_i64gather_pd(_mm512_setzero_pd(), 0xFF, i, base, 8); }
    static void gather_counts(const int32_t* table, I i, I& first, I& second) {
        const I both_counts = _mm512_mask_i64gather_epi64(_mm512_setzero_si512(), 0xFF, i, table, 4);
        first = _mm512_and_si512(both_counts, _mm512_set1_epi64(0xFFFFFFFF));
        second = _mm512_srli_epi64(both_counts, 32);
    }
    static I gather_wide(const int64_t* table, I i) {
        return _mm512_mask_i64gather_epi64(_mm512_setzero_si512(), 0xFF, i, table, 8);
    }
    static I load_cells(const int64_t* p) { return _mm512_loadu_si512(p); }
    static I load_cells(const int32_t* p) {
        return _mm512_cvtepi32_epi64(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)));
    }
    static void store_cells(int64_t* p, I a) { _mm512_storeu_si512(p, a); }
    static void store_cells(int32_t* p, I a) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_cvtepi64_epi32(a));
    }
};

template <>
struct Pack<float> {
    using Element = float;
    using F = __m512;
    using I = __m512i;
    using M = __mmask16;
    static constexpr int kLanes = 16;

    static F set(float a) { return _mm512_set1_ps(a); }
    static F load(const float* p) { return _mm512_loadu_ps(p); }
    static void store(float* p, F a) { _mm512_storeu_ps(p, a); }
    static F add(F a, F b) { return _mm512_add_ps(a, b); }
    static F sub(F a, F b) { return _mm512_sub_ps(a, b); }
    static F mul(F a, F b) { return _mm512_mul_ps(a, b); }
    static F fma(F a, F b, F c) { return _mm512_fmadd_ps(a, b, c); }
    static F clamp(F a, F top) { return _mm512_min_ps(_mm512_max_ps(a, _mm512_setzero_ps()), top); }
    static M le(F a, F b) { return _mm512_cmp_ps_mask(a, b, _CMP_LE_OQ); }
    static M lt(F a, F b) { return _mm512_cmp_ps_mask(a, b, _CMP_LT_OQ); }
    static M eq(F a, F b) { return _mm512_cmp_ps_mask(a, b, _CMP_EQ_OQ); }
    static bool any(M m) { return m != 0; }
    static bool all(M m) { return m == 0xFFFF; }
    static M both(M a, M b) { return static_cast<M>(a & b); }
    static M either(M a, M b) { return static_cast<M>(a | b); }
    static M first_only(M a, M b) { return static_cast<M>(a & ~b); }

    static I iset(int64_t a) { return _mm512_set1_epi32(static_cast<int32_t>(a)); }
    static I iota() { return _mm512_set_epi32(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0); }
    static I iadd(I a, I b) { return _mm512_add_epi32(a, b); }
    static I isub(I a, I b) { return _mm512_sub_epi32(a, b); }
    static I half(I a) { return _mm512_srli_epi32(a, 1); }
    static M ilt(I a, I b) { return _mm512_cmplt_epi32_mask(a, b); }
    static I imin(I a, I b) { return _mm512_min_epi32(a, b); }
    static I imax(I a, I b) { return _mm512_max_epi32(a, b); }
    static I select(M m, I a, I b) { return _mm512_mask_blend_epi32(m, b, a); }
    static F choose(M m, F a, F b) { return _mm512_mask_blend_ps(m, b, a); }
    static I count(I a, M m) { return _mm512_mask_add_epi32(a, m, a, _mm512_set1_epi32(1)); }
    static I times(I a, int64_t k) { return _mm512_mullo_epi32(a, iset(k)); }
    static I truncate(F a) { return _mm512_cvttps_epi32(a); }
    static F from_int(I a) { return _mm512_cvtepi32_ps(a); }

    static F gather(const float* base, I i) {
        return _mm512_mask_i32gather_ps(_mm512_setzero_ps(), 0xFFFF, i, base, 4);
    }
    static void gather_counts(const int32_t* table, I i, I& first, I& second) {
        first = _mm512_mask_i32gather_epi32(_mm512_setzero_si512(), 0xFFFF, i, table, 4);
        second = _mm512_mask_i32gather_epi32(_mm512_setzero_si512(), 0xFFFF, i, table + 1, 4);
    }
    // Low halves: entries of a wide table that fit 32 bits.
    static I gather_wide(const int64_t* table, I i) {
        return _mm512_mask_i32gather_epi32(_mm512_setzero_si512(), 0xFFFF, i, table, 8);
    }
    static I load_cells(const int64_t* p) {
        const __m256i low = _mm512_cvtepi64_epi32(_mm512_loadu_si512(p));
        return _mm512_inserti64x4(_mm512_castsi256_si512(low), _mm512_cvtepi64_epi32(_mm512_loadu_si512(p + 8)), 1);
    }
    static I load_cells(const int32_t* p) { return _mm512_loadu_si512(p); }
    static void store_cells(int64_t* p, I a) {
        _mm512_storeu_si512(p, _mm512_cvtepi32_epi64(_mm512_castsi512_si256(a)));
        _mm512_storeu_si512(p + 8, _mm512_cvtepi32_epi64(_mm512_extracti64x4_epi64(a, 1)));
    }
    static void store_cells(int32_t* p, I a) { _mm512_storeu_si512(p, a); }
};

#else

template <>
struct Pack<double> {
    using Element = double;
    using F = __m256d;
    using I = __m256i;
    using M = __m256i;  // all bits of a lane, or none
    static constexpr int kLanes = 4;

    static F set(double a) { return _mm256_set1_pd(a); }
    static F load(const double* p) { return _mm256_loadu_pd(p); }
    static void store(double* p, F a) { _mm256_storeu_pd(p, a); }
    static F add(F a, F b) { return _mm256_add_pd(a, b); }
    static F sub(F a, F b) { return _mm256_sub_pd(a, b); }
    static F mul(F a, F b) { return _mm256_mul_pd(a, b); }
    static F fma(F a, F b, F c) { return _mm256_fmadd_pd(a, b, c); }
    static F clamp(F a, F top) { return _mm256_min_pd(_mm256_max_pd(a, _mm256_setzero_pd()), top); }
    static M le(F a, F b) { return _mm256_castpd_si256(_mm256_cmp_pd(a, b, _CMP_LE_OQ)); }
    static M lt(F a, F b) { return _mm256_castpd_si256(_mm256_cmp_pd(a, b, _CMP_LT_OQ)); }
    static M eq(F a, F b) { return _mm256_castpd_si256(_mm256_cmp_pd(a, b, _CMP_EQ_OQ)); }
    static bool any(M m) { return _mm256_movemask_pd(_mm256_castsi256_pd(m)) != 0; }
    static bool all(M m) { return _mm256_movemask_pd(_mm256_castsi256_pd(m)) == 0xF; }
    static M both(M a, M b) { return _mm256_and_si256(a, b); }
    static M either(M a, M b) { return _mm256_or_si256(a, b); }
    static M first_only(M a, M b) { return _mm256_andnot_si256(b, a); }

    static I iset(int64_t a) { return _mm256_set1_epi64x(a); }
    static I iota() { return _mm256_set_epi64x(3, 2, 1, 0); }
    static I iadd(I a, I b) { return _mm256_add_epi64(a, b); }
    static I isub(I a, I b) { return _mm256_sub_epi64(a, b); }
    static I half(I a) { return _mm256_srli_epi64(a, 1); }
    static M ilt(I a, I b) { return _mm256_cmpgt_epi64(b, a); }
    static I imin(I a, I b) { return select(ilt(a, b), a, b); }
    static I imax(I a, I b) { return select(ilt(a, b), b, a); }
    static I select(M m, I a, I b) { return _mm256_blendv_epi8(b, a, m); }
    static F choose(M m, F a, F b) { return _mm256_blendv_pd(b, a, _mm256_castsi256_pd(m)); }
    static I count(I a, M m) { return _mm256_sub_epi64(a, m); }
    // Operands below 2^32.
    static I times(I a, int64_t k) { return _mm256_mul_epu32(a, _mm256_set1_epi64x(k)); }
    // Of 0 <= a < 2^52, by the bits of a + 2^52.
    static I truncate(F a) {
        const F magic = _mm256_set1_pd(0x1p52);
        const F shifted = _mm256_add_pd(_mm256_round_pd(a, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC), magic);
        return _mm256_xor_si256(_mm256_castpd_si256(shifted), _mm256_castpd_si256(magic));
    }
    static F from_int(I a) {
        const F magic = _mm256_set1_pd(0x1p52);
        return _mm256_sub_pd(_mm256_castsi256_pd(_mm256_or_si256(a, _mm256_castpd_si256(magic))), magic);
    }

    // Plain loads: the gather instructions of processors without AVX-512 cost more.
    static F gather(const double* base, I i) {
        const __m128i low = _mm256_castsi256_si128(i), high = _mm256_extracti128_si256(i, 1);
        const __m128d a = _mm_loadh_pd(_mm_load_sd(base + _mm_cvtsi128_si64(low)), base + _mm_extract_epi64(low, 1));
        const __m128d b = _mm_loadh_pd(_mm_load_sd(base + _mm_cvtsi128_si64(high)), base + _mm_extract_epi64(high, 1));
        return _mm256_insertf128_pd(_mm256_castpd128_pd256(a), b, 1);
    }
    static void gather_counts(const int32_t* table, I i, I& first, I& second) {
        const __m128i low = _mm256_castsi256_si128(i), high = _mm256_extracti128_si256(i, 1);
        const auto pair = [table](int64_t k) { return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(table + k)); };
        const __m128i a = _mm_unpacklo_epi64(pair(_mm_cvtsi128_si64(low)), pair(_mm_extract_epi64(low, 1)));
        const __m128i b = _mm_unpacklo_epi64(pair(_mm_cvtsi128_si64(high)), pair(_mm_extract_epi64(high, 1)));
        const I both_counts = _mm256_inserti128_si256(_mm256_castsi128_si256(a), b, 1);
        first = _mm256_and_si256(both_counts, _mm256_set1_epi64x(0xFFFFFFFF));
        second = _mm256_srli_epi64(both_counts, 32);
    }
    static I gather_wide(const int64_t* table, I i) {
        const I all_lanes = _mm256_set1_epi64x(-1);
        return _mm256_mask_i64gather_epi64(_mm256_setzero_si256(), reinterpret_cast<const long long*>(table), i,
                                           all_lanes, 8);
    }
    static I load_cells(const int64_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
    static I load_cells(const int32_t* p) {
        return _mm256_cvtepi32_epi64(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
    }
    static void store_cells(int64_t* p, I a) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), a); }
    static void store_cells(int32_t* p, I a) {
        const __m256i packed = _mm256_permutevar8x32_epi32(a, _mm256_set_epi32(7, 5, 3, 1, 6, 4, 2, 0));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(packed));
    }
};

template <>
struct Pack<float> {
    using Element = float;
    using F = __m256;
    using I = __m256i;
    using M = __m256i;
    static constexpr int kLanes = 8;

    static F set(float a) { return _mm256_set1_ps(a); }
    static F load(const float* p) { return _mm256_loadu_ps(p); }
    static void store(float* p, F a) { _mm256_storeu_ps(p, a); }
    static F add(F a, F b) { return _mm256_add_ps(a, b); }
    static F sub(F a, F b) { return _mm256_sub_ps(a, b); }
    static F mul(F a, F b) { return _mm256_mul_ps(a, b); }
    static F fma(F a, F b, F c) { return _mm256_fmadd_ps(a, b, c); }
    static F clamp(F a, F top) { return _mm256_min_ps(_mm256_max_ps(a, _mm256_setzero_ps()), top); }
    static M le(F a, F b) { return _mm256_castps_si256(_mm256_cmp_ps(a, b, _CMP_LE_OQ)); }
    static M lt(F a, F b) { return _mm256_castps_si256(_mm256_cmp_ps(a, b, _CMP_LT_OQ)); }
    static M eq(F a, F b) { return _mm256_castps_si256(_mm256_cmp_ps(a, b, _CMP_EQ_OQ)); }
    static bool any(M m) { return _mm256_movemask_ps(_mm256_castsi256_ps(m)) != 0; }
    static bool all(M m) { return _mm256_movemask_ps(_mm256_castsi256_ps(m)) == 0xFF; }
    static M both(M a, M b) { return _mm256_and_si256(a, b); }
    static M either(M a, M b) { return _mm256_or_si256(a, b); }
    static M first_only(M a, M b) { return _mm256_andnot_si256(b, a); }

    static I iset(int64_t a) { return _mm256_set1_epi32(static_cast<int32_t>(a)); }
    static I iota() { return _mm256_set_epi32(7, 6, 5, 4, 3, 2, 1, 0); }
    static I iadd(I a, I b) { return _mm256_add_epi32(a, b); }
    static I isub(I a, I b) { return _mm256_sub_epi32(a, b); }
    static I half(I a) { return _mm256_srli_epi32(a, 1); }
    static M ilt(I a, I b) { return _mm256_cmpgt_epi32(b, a); }
    static I imin(I a, I b) { return _mm256_min_epi32(a, b); }
    static I imax(I a, I b) { return _mm256_max_epi32(a, b); }
    static I select(M m, I a, I b) { return _mm256_blendv_epi8(b, a, m); }
    static F choose(M m, F a, F b) { return _mm256_blendv_ps(b, a, _mm256_castsi256_ps(m)); }
    static I count(I a, M m) { return _mm256_sub_epi32(a, m); }
    static I times(I a, int64_t k) { return _mm256_mullo_epi32(a, iset(k)); }
    static I truncate(F a) { return _mm256_cvttps_epi32(a); }
    static F from_int(I a) { return _mm256_cvtepi32_ps(a); }

    static F gather(const float* base, I i) {
        return _mm256_mask_i32gather_ps(_mm256_setzero_ps(), base, i, _mm256_castsi256_ps(_mm256_set1_epi32(-1)), 4);
    }
    static void gather_counts(const int32_t* table, I i, I& first, I& second) {
        const I all_lanes = _mm256_set1_epi32(-1);
        first = _mm256_mask_i32gather_epi32(_mm256_setzero_si256(), table, i, all_lanes, 4);
        second = _mm256_mask_i32gather_epi32(_mm256_setzero_si256(), table + 1, i, all_lanes, 4);
    }
    static I gather_wide(const int64_t* table, I i) {
        const I all_lanes = _mm256_set1_epi32(-1);
        return _mm256_mask_i32gather_epi32(_mm256_setzero_si256(), reinterpret_cast<const int*>(table), i, all_lanes,
                                           8);
    }
    static I load_cells(const int64_t* p) {
        const I even = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
        const I odd = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 4));
        const __m256 low =
            _mm256_shuffle_ps(_mm256_castsi256_ps(even), _mm256_castsi256_ps(odd), _MM_SHUFFLE(2, 0, 2, 0));
        return _mm256_permute4x64_epi64(_mm256_castps_si256(low), _MM_SHUFFLE(3, 1, 2, 0));
    }
    static I load_cells(const int32_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
    static void store_cells(int64_t* p, I a) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm256_cvtepi32_epi64(_mm256_castsi256_si128(a)));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + 4), _mm256_cvtepi32_epi64(_mm256_extracti128_si256(a, 1)));
    }
    static void store_cells(int32_t* p, I a) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), a); }
};

#endif

// The vectors that serve a cell width: 64-bit cells of single precision go one by one.
template <class T, bool kWide>
using PackFor = std::conditional_t<kWide && sizeof(T) == sizeof(float), Lane<T>, Pack<T>>;

}  // namespace nax::fit::NAX_FIT_SIMD
