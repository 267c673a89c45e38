#include "tests/emulator_check/forms_avx512.h"

namespace nax::emulator_check {
namespace {

inline __m256d pd4(const Vector& v) { return _mm256_load_pd(reinterpret_cast<const double*>(v.bytes)); }
inline __m256 ps8(const Vector& v) { return _mm256_load_ps(reinterpret_cast<const float*>(v.bytes)); }
inline __m256i si4(const Vector& v) { return _mm256_load_si256(reinterpret_cast<const __m256i*>(v.bytes)); }
inline __m128i si2(const Vector& v) { return _mm_load_si128(reinterpret_cast<const __m128i*>(v.bytes)); }

constexpr Instruction conversions[] = {
    FORMS("pd to ps", cvtpd_ps, ps8, __mmask8, pd(io.a)), FORMS("ps to pd", cvtps_pd, pd, __mmask8, ps8(io.a)),
    FORMS("pd to i32", cvtpd_epi32, si4, __mmask8, pd(io.a)), FORMS("pd to i32 truncated", cvttpd_epi32, si4, __mmask8, pd(io.a)),
    FORMS("pd to u32", cvtpd_epu32, si4, __mmask8, pd(io.a)), FORMS("pd to u32 truncated", cvttpd_epu32, si4, __mmask8, pd(io.a)),
    FORMS("pd to i64", cvtpd_epi64, si, __mmask8, pd(io.a)), FORMS("pd to i64 truncated", cvttpd_epi64, si, __mmask8, pd(io.a)),
    FORMS("pd to u64", cvtpd_epu64, si, __mmask8, pd(io.a)), FORMS("pd to u64 truncated", cvttpd_epu64, si, __mmask8, pd(io.a)),
    FORMS("ps to i32", cvtps_epi32, si, __mmask16, ps(io.a)), FORMS("ps to i32 truncated", cvttps_epi32, si, __mmask16, ps(io.a)),
    FORMS("ps to u32", cvtps_epu32, si, __mmask16, ps(io.a)), FORMS("ps to u32 truncated", cvttps_epu32, si, __mmask16, ps(io.a)),
    FORMS("ps to i64", cvtps_epi64, si, __mmask8, ps8(io.a)), FORMS("ps to u64 truncated", cvttps_epu64, si, __mmask8, ps8(io.a)),
    FORMS("i32 to pd", cvtepi32_pd, pd, __mmask8, si4(io.a)), FORMS("u32 to pd", cvtepu32_pd, pd, __mmask8, si4(io.a)),
    FORMS("i64 to pd", cvtepi64_pd, pd, __mmask8, si(io.a)), FORMS("u64 to pd", cvtepu64_pd, pd, __mmask8, si(io.a)),
    FORMS("i32 to ps", cvtepi32_ps, ps, __mmask16, si(io.a)), FORMS("u32 to ps", cvtepu32_ps, ps, __mmask16, si(io.a)),
    FORMS("i64 to ps", cvtepi64_ps, ps8, __mmask8, si(io.a)), FORMS("u64 to ps", cvtepu64_ps, ps8, __mmask8, si(io.a)),
    FORMS("u64 to pd toward zero", cvt_roundepu64_pd, pd, __mmask8, si(io.a), _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC),
    FORMS("pd to ps upward", cvt_roundpd_ps, ps8, __mmask8, pd(io.a), _MM_FROUND_TO_POS_INF | _MM_FROUND_NO_EXC),
    FORMS("pd to i64 downward", cvt_roundpd_epi64, si, __mmask8, pd(io.a), _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC),
    FORMS("ph to ps", cvtph_ps, ps, __mmask16, si4(io.a)),
    FORMS("i64 to i8", cvtepi64_epi8, si2, __mmask8, si(io.a)), FORMS("i64 to i16 saturated", cvtsepi64_epi16, si2, __mmask8, si(io.a)),
    FORMS("u64 to u32 saturated", cvtusepi64_epi32, si4, __mmask8, si(io.a)), FORMS("i32 to i16", cvtepi32_epi16, si4, __mmask16, si(io.a)),
    FORMS("i32 to i8 saturated", cvtsepi32_epi8, si2, __mmask16, si(io.a)), FORMS("u16 to u8 saturated", cvtusepi16_epi8, si4, __mmask32, si(io.a)),
    FORMS("i8 to i16", cvtepi8_epi16, si, __mmask32, si4(io.a)), FORMS("i8 to i64", cvtepi8_epi64, si, __mmask8, si2(io.a)),
    FORMS("u8 to u32", cvtepu8_epi32, si, __mmask16, si2(io.a)), FORMS("i16 to i32", cvtepi16_epi32, si, __mmask16, si4(io.a)),
    FORMS("u16 to u64", cvtepu16_epi64, si, __mmask8, si2(io.a)), FORMS("i32 to i64", cvtepi32_epi64, si, __mmask8, si4(io.a)),
    FORMS("u32 to u64", cvtepu32_epi64, si, __mmask8, si4(io.a)),
};

}  // namespace

std::span<const Instruction> conversion_instructions() { return conversions; }

}  // namespace nax::emulator_check
