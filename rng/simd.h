// Vectors of the generators' block loops: 512 bits where the file is compiled for AVX-512, else 256. Everything stands in
// a namespace of its instruction set, so that the linker never merges bodies made for different processors.
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <cstring>

#ifdef __AVX512F__
#define NAX_RNG_ISA isa_avx512
#else
#define NAX_RNG_ISA isa_avx2
#endif

namespace nax::rng {
inline namespace NAX_RNG_ISA {

#ifdef __AVX512F__
inline constexpr int kVectorBytes = 64;
#else
inline constexpr int kVectorBytes = 32;
#endif

// Lanes of 32 and 64 bits in a vector.
inline constexpr int kLanes32 = kVectorBytes / 4;
inline constexpr int kLanes64 = kVectorBytes / 8;

using U32 = uint32_t __attribute__((vector_size(kVectorBytes)));
using U64 = uint64_t __attribute__((vector_size(kVectorBytes)));
using F32 = float __attribute__((vector_size(kVectorBytes)));
using F64 = double __attribute__((vector_size(kVectorBytes)));
using Quad = double __attribute__((vector_size(32)));      // four doubles, whatever the vectors' size
using HalfU32 = uint32_t __attribute__((vector_size(kVectorBytes / 2)));
using HalfF32 = float __attribute__((vector_size(kVectorBytes / 2)));

// Vectors go through the intrinsics: as copies of bytes the compiler may move them in pieces of 16.
template <class V>
inline V load(const void* from) {
#ifdef __AVX512F__
    if constexpr (sizeof(V) == 64) return reinterpret_cast<V>(_mm512_loadu_si512(from));
#endif
    if constexpr (sizeof(V) == 32) {
        return reinterpret_cast<V>(_mm256_loadu_si256(static_cast<const __m256i*>(from)));
    } else if constexpr (sizeof(V) < 32) {
        V v;
        std::memcpy(&v, from, sizeof(V));
        return v;
    }
}
template <class V>
inline void store(void* to, V v) {
#ifdef __AVX512F__
    if constexpr (sizeof(V) == 64) _mm512_storeu_si512(to, reinterpret_cast<__m512i>(v));
#endif
    if constexpr (sizeof(V) == 32) _mm256_storeu_si256(static_cast<__m256i*>(to), reinterpret_cast<__m256i>(v));
    else if constexpr (sizeof(V) < 32) std::memcpy(to, &v, sizeof(V));
}
inline U64 broadcast(uint64_t x) { return U64{} + x; }
inline U32 broadcast(uint32_t x) { return U32{} + x; }

#ifdef __AVX512F__

// The zero-masking forms with a full mask: the plain ones of this compiler's header draw false warnings of uninitialised
// values, and the code is the same.
inline constexpr unsigned char kAll8 = 0xFF;
inline constexpr unsigned short kAll16 = 0xFFFF;
inline __m512i bits(U32 a) { return reinterpret_cast<__m512i>(a); }
inline __m512i bits(U64 a) { return reinterpret_cast<__m512i>(a); }
inline __m256i bits(HalfU32 a) { return reinterpret_cast<__m256i>(a); }

inline F64 broadcast(double x) { return _mm512_set1_pd(x); }
inline F32 broadcast(float x) { return _mm512_set1_ps(x); }
inline HalfF32 broadcast_half(float x) { return _mm256_set1_ps(x); }

inline F64 fma(F64 a, F64 b, F64 c) { return _mm512_fmadd_pd(a, b, c); }
inline F32 fma(F32 a, F32 b, F32 c) { return _mm512_fmadd_ps(a, b, c); }
inline HalfF32 fma(HalfF32 a, HalfF32 b, HalfF32 c) { return _mm256_fmadd_ps(a, b, c); }
inline F64 fnma(F64 a, F64 b, F64 c) { return _mm512_fnmadd_pd(a, b, c); }  // c - a b
inline Quad fnma(Quad a, Quad b, Quad c) { return _mm256_fnmadd_pd(a, b, c); }
inline Quad truncate(Quad a) { return _mm256_round_pd(a, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC); }
inline F64 truncate(F64 a) { return _mm512_maskz_roundscale_pd(kAll8, a, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC); }

// Product of the low 32 bits of each lane.
inline U64 multiply_low_halves(U64 a, U64 b) {
    return reinterpret_cast<U64>(_mm512_maskz_mul_epu32(kAll8, bits(a), bits(b)));
}
// v - m where that is not negative, else v; v below 2^63.
inline U64 subtract_once(U64 v, U64 m) {
    return reinterpret_cast<U64>(_mm512_maskz_min_epu64(kAll8, bits(v), bits(v - m)));
}
inline F64 to_double(HalfU32 a) { return _mm512_maskz_cvtepu32_pd(kAll8, bits(a)); }
inline F64 signed_to_double(HalfU32 a) { return _mm512_maskz_cvtepi32_pd(kAll8, bits(a)); }
inline F32 to_float(U32 a) { return _mm512_maskz_cvtepu32_ps(kAll16, bits(a)); }
inline F32 signed_to_float(U32 a) { return _mm512_maskz_cvtepi32_ps(kAll16, bits(a)); }
inline F64 to_double(U64 a) { return _mm512_maskz_cvtepu64_pd(kAll8, bits(a)); }
inline F64 small_to_double(U64 a) { return to_double(a); }  // for lanes below 2^52
inline HalfF32 narrow(F64 a) { return _mm512_maskz_cvtpd_ps(kAll8, a); }
inline HalfU32 low_halves(U64 a) { return reinterpret_cast<HalfU32>(_mm512_maskz_cvtepi64_epi32(kAll8, bits(a))); }
// Lanes in 0 ... 2^31 - 1 to integers.
inline HalfU32 to_words(F64 a) { return reinterpret_cast<HalfU32>(_mm512_maskz_cvttpd_epi32(kAll8, a)); }
inline U64 widen(HalfU32 a) { return reinterpret_cast<U64>(_mm512_maskz_cvtepu32_epi64(kAll8, bits(a))); }
inline HalfU32 lower_half(U32 a) {
    return reinterpret_cast<HalfU32>(_mm512_maskz_extracti64x4_epi64(kAll8, bits(a), 0));
}
inline HalfU32 upper_half(U32 a) {
    return reinterpret_cast<HalfU32>(_mm512_maskz_extracti64x4_epi64(kAll8, bits(a), 1));
}

#else

inline F64 broadcast(double x) { return _mm256_set1_pd(x); }
inline F32 broadcast(float x) { return _mm256_set1_ps(x); }
inline HalfF32 broadcast_half(float x) { return _mm_set1_ps(x); }

inline F64 fma(F64 a, F64 b, F64 c) { return _mm256_fmadd_pd(a, b, c); }
inline F32 fma(F32 a, F32 b, F32 c) { return _mm256_fmadd_ps(a, b, c); }
inline HalfF32 fma(HalfF32 a, HalfF32 b, HalfF32 c) { return _mm_fmadd_ps(a, b, c); }
inline F64 fnma(F64 a, F64 b, F64 c) { return _mm256_fnmadd_pd(a, b, c); }  // c - a b
inline F64 truncate(F64 a) { return _mm256_round_pd(a, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC); }

// Product of the low 32 bits of each lane.
inline U64 multiply_low_halves(U64 a, U64 b) {
    return reinterpret_cast<U64>(_mm256_mul_epu32(reinterpret_cast<__m256i>(a), reinterpret_cast<__m256i>(b)));
}
// v - m where that is not negative, else v; v below 2^63.
inline U64 subtract_once(U64 v, U64 m) {
    const __m256d difference = reinterpret_cast<__m256d>(v - m);
    return reinterpret_cast<U64>(_mm256_blendv_pd(difference, reinterpret_cast<__m256d>(v), difference));
}
inline F64 signed_to_double(HalfU32 a) { return _mm256_cvtepi32_pd(reinterpret_cast<__m128i>(a)); }
inline F32 signed_to_float(U32 a) { return _mm256_cvtepi32_ps(reinterpret_cast<__m256i>(a)); }
// 16 bits at a time are exact, so the one addition rounds once, to nearest.
inline F32 to_float(U32 a) {
    return signed_to_float(a >> 16) * broadcast(65536.0f) + signed_to_float(a & broadcast(uint32_t{0xFFFF}));
}
// The halves are placed in the fractions of 2^84 and 2^52: their difference is exact and the one addition rounds once.
inline F64 to_double(U64 a) {
    const U64 high = (a >> 32) | broadcast(uint64_t{0x4530000000000000});
    const U64 low = (a & broadcast(uint64_t{0xFFFFFFFF})) | broadcast(uint64_t{0x4330000000000000});
    return (reinterpret_cast<F64>(high) - broadcast(0x1.00000001p84)) + reinterpret_cast<F64>(low);
}
inline U64 widen(HalfU32 a) { return reinterpret_cast<U64>(_mm256_cvtepu32_epi64(reinterpret_cast<__m128i>(a))); }
// For lanes below 2^52, which become the fraction of 2^52.
inline F64 small_to_double(U64 a) {
    return reinterpret_cast<F64>(a | broadcast(uint64_t{0x4330000000000000})) - broadcast(0x1p52);
}
inline F64 to_double(HalfU32 a) { return small_to_double(widen(a)); }
inline HalfF32 narrow(F64 a) { return _mm256_cvtpd_ps(a); }
// Lanes in 0 ... 2^31 - 1 to integers.
inline HalfU32 to_words(F64 a) { return reinterpret_cast<HalfU32>(_mm256_cvttpd_epi32(a)); }
inline HalfU32 low_halves(U64 a) {
    const __m256i order = _mm256_setr_epi32(0, 2, 4, 6, 0, 2, 4, 6);
    return reinterpret_cast<HalfU32>(
        _mm256_castsi256_si128(_mm256_permutevar8x32_epi32(reinterpret_cast<__m256i>(a), order)));
}
inline HalfU32 lower_half(U32 a) {
    return reinterpret_cast<HalfU32>(_mm256_castsi256_si128(reinterpret_cast<__m256i>(a)));
}
inline HalfU32 upper_half(U32 a) {
    return reinterpret_cast<HalfU32>(_mm256_extracti128_si256(reinterpret_cast<__m256i>(a), 1));
}

#endif

}  // namespace NAX_RNG_ISA
}  // namespace nax::rng
