// Vector types and operations of the AVX-512 kernels: thin wrappers that give both precisions one spelling, round to
// nearest unless told otherwise, and never raise an exception flag. Function files use these and no intrinsics.
#pragma once

#pragma GCC diagnostic push
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"  // false alarm on the undefined pass-through operands
#endif
#include <immintrin.h>
#pragma GCC diagnostic pop

#include <bit>
#include <cstdint>

#define NAX_VEC [[gnu::always_inline]] inline

namespace nax::vmath::avx512 {

using I64 = long long __attribute__((vector_size(64), may_alias));  // eight 64-bit integers
using I32 = int __attribute__((vector_size(64), may_alias));        // sixteen 32-bit integers

// The two precisions. Vector, Bits and Mask are one register each; a row is a vector with one value in all lanes.
struct Double {
    using Element = double;
    using Vector = __m512d;
    using Bits = I64;
    using Mask = __mmask8;
    using Integer = int64_t;
    static constexpr int lanes = 8;
    static constexpr int mantissa_bits = 52;
    static constexpr int exponent_bias = 1023;
    static constexpr Integer sign_bit = INT64_MIN;
    static constexpr Integer exponent_field = 0x7FF0000000000000;
    static constexpr Integer quiet_bit = 0x0008000000000000;
    static constexpr Vector row(double x) { return Vector{x, x, x, x, x, x, x, x}; }
    static constexpr Bits bits_row(Integer x) { return Bits{x, x, x, x, x, x, x, x}; }
    static constexpr Vector row_of_bits(Integer x) { return row(std::bit_cast<double>(x)); }
};

struct Single {
    using Element = float;
    using Vector = __m512;
    using Bits = I32;
    using Mask = __mmask16;
    using Integer = int32_t;
    static constexpr int lanes = 16;
    static constexpr int mantissa_bits = 23;
    static constexpr int exponent_bias = 127;
    static constexpr Integer sign_bit = INT32_MIN;
    static constexpr Integer exponent_field = 0x7F800000;
    static constexpr Integer quiet_bit = 0x00400000;
    static constexpr Vector row(float x) { return Vector{x, x, x, x, x, x, x, x, x, x, x, x, x, x, x, x}; }
    static constexpr Bits bits_row(Integer x) { return Bits{x, x, x, x, x, x, x, x, x, x, x, x, x, x, x, x}; }
    static constexpr Vector row_of_bits(Integer x) { return row(std::bit_cast<float>(x)); }
};

enum Rounding : int {
    kNearest = _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC,
    kDown = _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC,
    kUp = _MM_FROUND_TO_POS_INF | _MM_FROUND_NO_EXC,
    kTowardZero = _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC,
};

// --- arithmetic ---
template <Rounding R = kNearest> NAX_VEC __m512d add(__m512d a, __m512d b) { return _mm512_add_round_pd(a, b, R); }
template <Rounding R = kNearest> NAX_VEC __m512 add(__m512 a, __m512 b) { return _mm512_add_round_ps(a, b, R); }
template <Rounding R = kNearest> NAX_VEC __m512d sub(__m512d a, __m512d b) { return _mm512_sub_round_pd(a, b, R); }
template <Rounding R = kNearest> NAX_VEC __m512 sub(__m512 a, __m512 b) { return _mm512_sub_round_ps(a, b, R); }
template <Rounding R = kNearest> NAX_VEC __m512d mul(__m512d a, __m512d b) { return _mm512_mul_round_pd(a, b, R); }
template <Rounding R = kNearest> NAX_VEC __m512 mul(__m512 a, __m512 b) { return _mm512_mul_round_ps(a, b, R); }
template <Rounding R = kNearest> NAX_VEC __m512d div(__m512d a, __m512d b) { return _mm512_div_round_pd(a, b, R); }
template <Rounding R = kNearest> NAX_VEC __m512 div(__m512 a, __m512 b) { return _mm512_div_round_ps(a, b, R); }
template <Rounding R = kNearest> NAX_VEC __m512d sqrt(__m512d a) { return _mm512_sqrt_round_pd(a, R); }
template <Rounding R = kNearest> NAX_VEC __m512 sqrt(__m512 a) { return _mm512_sqrt_round_ps(a, R); }

// fma a b + c, fms a b - c, fnma c - a b, fnms -a b - c, in one rounding.
template <Rounding R = kNearest>
NAX_VEC __m512d fma(__m512d a, __m512d b, __m512d c) { return _mm512_fmadd_round_pd(a, b, c, R); }
template <Rounding R = kNearest>
NAX_VEC __m512 fma(__m512 a, __m512 b, __m512 c) { return _mm512_fmadd_round_ps(a, b, c, R); }
template <Rounding R = kNearest>
NAX_VEC __m512d fms(__m512d a, __m512d b, __m512d c) { return _mm512_fmsub_round_pd(a, b, c, R); }
template <Rounding R = kNearest>
NAX_VEC __m512 fms(__m512 a, __m512 b, __m512 c) { return _mm512_fmsub_round_ps(a, b, c, R); }
template <Rounding R = kNearest>
NAX_VEC __m512d fnma(__m512d a, __m512d b, __m512d c) { return _mm512_fnmadd_round_pd(a, b, c, R); }
template <Rounding R = kNearest>
NAX_VEC __m512 fnma(__m512 a, __m512 b, __m512 c) { return _mm512_fnmadd_round_ps(a, b, c, R); }
template <Rounding R = kNearest>
NAX_VEC __m512d fnms(__m512d a, __m512d b, __m512d c) { return _mm512_fnmsub_round_pd(a, b, c, R); }
template <Rounding R = kNearest>
NAX_VEC __m512 fnms(__m512 a, __m512 b, __m512 c) { return _mm512_fnmsub_round_ps(a, b, c, R); }

// The processor's maximum and minimum: the second operand where either is NaN or both are zeros.
NAX_VEC __m512d max(__m512d a, __m512d b) { return _mm512_max_round_pd(a, b, _MM_FROUND_NO_EXC); }
NAX_VEC __m512 max(__m512 a, __m512 b) { return _mm512_max_round_ps(a, b, _MM_FROUND_NO_EXC); }
NAX_VEC __m512d min(__m512d a, __m512d b) { return _mm512_min_round_pd(a, b, _MM_FROUND_NO_EXC); }
NAX_VEC __m512 min(__m512 a, __m512 b) { return _mm512_min_round_ps(a, b, _MM_FROUND_NO_EXC); }

// --- exponent and rounding to a multiple of a power of two ---
// x times 2 to the floor of n; overflow and gradual underflow as of one multiplication.
template <Rounding R = kNearest>
NAX_VEC __m512d scale(__m512d x, __m512d n) { return _mm512_scalef_round_pd(x, n, R); }
template <Rounding R = kNearest>
NAX_VEC __m512 scale(__m512 x, __m512 n) { return _mm512_scalef_round_ps(x, n, R); }
// Control: upper four bits the number of fraction bits kept, bit 3 no inexact, bit 2 the MXCSR mode, else bits 0-1.
template <int Control>
NAX_VEC __m512d round_scale(__m512d x) { return _mm512_roundscale_round_pd(x, Control, _MM_FROUND_NO_EXC); }
template <int Control>
NAX_VEC __m512 round_scale(__m512 x) { return _mm512_roundscale_round_ps(x, Control, _MM_FROUND_NO_EXC); }
// x less x rounded by the same control word.
template <int Control>
NAX_VEC __m512d reduce(__m512d x) { return _mm512_reduce_round_pd(x, Control, _MM_FROUND_NO_EXC); }
template <int Control>
NAX_VEC __m512 reduce(__m512 x) { return _mm512_reduce_round_ps(x, Control, _MM_FROUND_NO_EXC); }
NAX_VEC __m512d get_exponent(__m512d x) { return _mm512_getexp_round_pd(x, _MM_FROUND_NO_EXC); }
NAX_VEC __m512 get_exponent(__m512 x) { return _mm512_getexp_round_ps(x, _MM_FROUND_NO_EXC); }
template <_MM_MANTISSA_NORM_ENUM Interval = _MM_MANT_NORM_1_2, _MM_MANTISSA_SIGN_ENUM Sign = _MM_MANT_SIGN_src>
NAX_VEC __m512d get_mantissa(__m512d x) { return _mm512_getmant_round_pd(x, Interval, Sign, _MM_FROUND_NO_EXC); }
template <_MM_MANTISSA_NORM_ENUM Interval = _MM_MANT_NORM_1_2, _MM_MANTISSA_SIGN_ENUM Sign = _MM_MANT_SIGN_src>
NAX_VEC __m512 get_mantissa(__m512 x) { return _mm512_getmant_round_ps(x, Interval, Sign, _MM_FROUND_NO_EXC); }
// Relative error below 2 to the -14; the low bits differ between makers of processors.
NAX_VEC __m512d reciprocal14(__m512d x) { return _mm512_rcp14_pd(x); }
NAX_VEC __m512 reciprocal14(__m512 x) { return _mm512_rcp14_ps(x); }
NAX_VEC __m512d reciprocal_sqrt14(__m512d x) { return _mm512_rsqrt14_pd(x); }
NAX_VEC __m512 reciprocal_sqrt14(__m512 x) { return _mm512_rsqrt14_ps(x); }

// x, or what `table` says of the class of `special`: a response of four bits for each class, 0 leaves x.
NAX_VEC __m512d fix_up(__m512d x, __m512d special, I64 table) {
    return _mm512_fixupimm_round_pd(x, special, (__m512i)table, 0, _MM_FROUND_NO_EXC);
}
NAX_VEC __m512 fix_up(__m512 x, __m512 special, I32 table) {
    return _mm512_fixupimm_round_ps(x, special, (__m512i)table, 0, _MM_FROUND_NO_EXC);
}
inline constexpr int kInfWherePlusInf = 5 << 20;  // +Inf for +Inf, x for the other classes

// --- bit patterns ---
NAX_VEC I64 bits(__m512d x) { return (I64)x; }
NAX_VEC I32 bits(__m512 x) { return (I32)x; }
NAX_VEC __m512d from_bits(I64 x) { return (__m512d)x; }
NAX_VEC __m512 from_bits(I32 x) { return (__m512)x; }
NAX_VEC __m512d bit_and(__m512d a, __m512d b) { return from_bits(bits(a) & bits(b)); }
NAX_VEC __m512 bit_and(__m512 a, __m512 b) { return from_bits(bits(a) & bits(b)); }
NAX_VEC __m512d bit_or(__m512d a, __m512d b) { return from_bits(bits(a) | bits(b)); }
NAX_VEC __m512 bit_or(__m512 a, __m512 b) { return from_bits(bits(a) | bits(b)); }
NAX_VEC __m512d bit_xor(__m512d a, __m512d b) { return from_bits(bits(a) ^ bits(b)); }
NAX_VEC __m512 bit_xor(__m512 a, __m512 b) { return from_bits(bits(a) ^ bits(b)); }
// b with the bits that are set in a cleared.
NAX_VEC __m512d and_not(__m512d a, __m512d b) { return from_bits(~bits(a) & bits(b)); }
NAX_VEC __m512 and_not(__m512 a, __m512 b) { return from_bits(~bits(a) & bits(b)); }
// Bits of `yes` where `chooser` has ones, else of `no`.
NAX_VEC __m512d bit_choose(__m512d chooser, __m512d yes, __m512d no) {
    return from_bits(_mm512_ternarylogic_epi64(bits(chooser), bits(yes), bits(no), 0xCA));
}
NAX_VEC __m512 bit_choose(__m512 chooser, __m512 yes, __m512 no) {
    return (__m512)_mm512_ternarylogic_epi32((__m512i)chooser, (__m512i)yes, (__m512i)no, 0xCA);
}
// Logical shifts right and left by a constant (vector operators >> and << shift arithmetically).
template <int Count> NAX_VEC I64 shift_right(I64 x) { return _mm512_srli_epi64(x, Count); }
template <int Count> NAX_VEC I32 shift_right(I32 x) { return (I32)_mm512_srli_epi32((__m512i)x, Count); }
template <int Count> NAX_VEC I64 shift_left(I64 x) { return _mm512_slli_epi64(x, Count); }
template <int Count> NAX_VEC I32 shift_left(I32 x) { return (I32)_mm512_slli_epi32((__m512i)x, Count); }

// --- comparisons and choice by lane ---
// Quiet comparisons; those named not_ are true for NaN.
template <int Predicate>
NAX_VEC __mmask8 compare(__m512d a, __m512d b) {
    return _mm512_cmp_round_pd_mask(a, b, Predicate, _MM_FROUND_NO_EXC);
}
template <int Predicate>
NAX_VEC __mmask16 compare(__m512 a, __m512 b) {
    return _mm512_cmp_round_ps_mask(a, b, Predicate, _MM_FROUND_NO_EXC);
}
template <class V> NAX_VEC auto equal(V a, V b) { return compare<_CMP_EQ_OQ>(a, b); }
template <class V> NAX_VEC auto less(V a, V b) { return compare<_CMP_LT_OQ>(a, b); }
template <class V> NAX_VEC auto less_equal(V a, V b) { return compare<_CMP_LE_OQ>(a, b); }
template <class V> NAX_VEC auto greater(V a, V b) { return compare<_CMP_GT_OQ>(a, b); }
template <class V> NAX_VEC auto greater_equal(V a, V b) { return compare<_CMP_GE_OQ>(a, b); }
template <class V> NAX_VEC auto not_less(V a, V b) { return compare<_CMP_NLT_UQ>(a, b); }
template <class V> NAX_VEC auto not_less_equal(V a, V b) { return compare<_CMP_NLE_UQ>(a, b); }
template <class V> NAX_VEC auto not_greater(V a, V b) { return compare<_CMP_NGT_UQ>(a, b); }
template <class V> NAX_VEC auto not_greater_equal(V a, V b) { return compare<_CMP_NGE_UQ>(a, b); }
template <class V> NAX_VEC auto not_equal(V a, V b) { return compare<_CMP_NEQ_UQ>(a, b); }
template <class V> NAX_VEC auto unordered(V a, V b) { return compare<_CMP_UNORD_Q>(a, b); }

// Signed comparisons of integers.
NAX_VEC __mmask8 equal(I64 a, I64 b) { return _mm512_cmpeq_epi64_mask(a, b); }
NAX_VEC __mmask16 equal(I32 a, I32 b) { return _mm512_cmpeq_epi32_mask((__m512i)a, (__m512i)b); }
NAX_VEC __mmask8 less(I64 a, I64 b) { return _mm512_cmplt_epi64_mask(a, b); }
NAX_VEC __mmask16 less(I32 a, I32 b) { return _mm512_cmplt_epi32_mask((__m512i)a, (__m512i)b); }
NAX_VEC __mmask8 greater(I64 a, I64 b) { return _mm512_cmpgt_epi64_mask(a, b); }
NAX_VEC __mmask16 greater(I32 a, I32 b) { return _mm512_cmpgt_epi32_mask((__m512i)a, (__m512i)b); }
NAX_VEC __mmask8 greater_equal(I64 a, I64 b) { return _mm512_cmpge_epi64_mask(a, b); }
NAX_VEC __mmask16 greater_equal(I32 a, I32 b) { return _mm512_cmpge_epi32_mask((__m512i)a, (__m512i)b); }
// Unsigned: true where a >= b.
NAX_VEC __mmask8 above_equal(I64 a, I64 b) { return _mm512_cmpge_epu64_mask(a, b); }
NAX_VEC __mmask16 above_equal(I32 a, I32 b) { return _mm512_cmpge_epu32_mask((__m512i)a, (__m512i)b); }
// Lanes in which a and b share a set bit.
NAX_VEC __mmask8 test(I64 a, I64 b) { return _mm512_test_epi64_mask(a, b); }
NAX_VEC __mmask16 test(I32 a, I32 b) { return _mm512_test_epi32_mask((__m512i)a, (__m512i)b); }
NAX_VEC __mmask8 sign_mask(__m512d x) { return _mm512_movepi64_mask(bits(x)); }
NAX_VEC __mmask16 sign_mask(__m512 x) { return _mm512_movepi32_mask((__m512i)x); }

enum Class : int {
    kQuietNan = 0x01, kPlusZero = 0x02, kMinusZero = 0x04, kPlusInf = 0x08,
    kMinusInf = 0x10, kDenormal = 0x20, kNegativeFinite = 0x40, kSignallingNan = 0x80,
    kNan = kQuietNan | kSignallingNan, kInf = kPlusInf | kMinusInf, kZero = kPlusZero | kMinusZero,
};
template <int Classes> NAX_VEC __mmask8 is_class(__m512d x) { return _mm512_fpclass_pd_mask(x, Classes); }
template <int Classes> NAX_VEC __mmask16 is_class(__m512 x) { return _mm512_fpclass_ps_mask(x, Classes); }

// `yes` in the lanes of the mask, `no` elsewhere.
NAX_VEC __m512d choose(__mmask8 m, __m512d yes, __m512d no) { return _mm512_mask_mov_pd(no, m, yes); }
NAX_VEC __m512 choose(__mmask16 m, __m512 yes, __m512 no) { return _mm512_mask_mov_ps(no, m, yes); }
NAX_VEC I64 choose(__mmask8 m, I64 yes, I64 no) { return _mm512_mask_mov_epi64(no, m, yes); }
NAX_VEC I32 choose(__mmask16 m, I32 yes, I32 no) {
    return (I32)_mm512_mask_mov_epi32((__m512i)no, m, (__m512i)yes);
}
NAX_VEC __m512d zero_unless(__mmask8 m, __m512d x) { return _mm512_maskz_mov_pd(m, x); }
NAX_VEC __m512 zero_unless(__mmask16 m, __m512 x) { return _mm512_maskz_mov_ps(m, x); }
// a + b, a - b, a b in the lanes of the mask, a elsewhere.
NAX_VEC __m512d add_where(__mmask8 m, __m512d a, __m512d b) {
    return _mm512_mask_add_round_pd(a, m, a, b, kNearest);
}
NAX_VEC __m512 add_where(__mmask16 m, __m512 a, __m512 b) { return _mm512_mask_add_round_ps(a, m, a, b, kNearest); }
NAX_VEC __m512d sub_where(__mmask8 m, __m512d a, __m512d b) {
    return _mm512_mask_sub_round_pd(a, m, a, b, kNearest);
}
NAX_VEC __m512 sub_where(__mmask16 m, __m512 a, __m512 b) { return _mm512_mask_sub_round_ps(a, m, a, b, kNearest); }
NAX_VEC __m512d mul_where(__mmask8 m, __m512d a, __m512d b) {
    return _mm512_mask_mul_round_pd(a, m, a, b, kNearest);
}
NAX_VEC __m512 mul_where(__mmask16 m, __m512 a, __m512 b) { return _mm512_mask_mul_round_ps(a, m, a, b, kNearest); }

// --- tables in registers: the low bits of each index lane choose an entry ---
NAX_VEC __m512d permute(I64 index, __m512d table) { return _mm512_permutexvar_pd(index, table); }
NAX_VEC __m512 permute(I32 index, __m512 table) { return _mm512_permutexvar_ps((__m512i)index, table); }
// Two rows, the second one behind the first.
NAX_VEC __m512d permute(I64 index, __m512d low, __m512d high) { return _mm512_permutex2var_pd(low, index, high); }
NAX_VEC __m512 permute(I32 index, __m512 low, __m512 high) {
    return _mm512_permutex2var_ps(low, (__m512i)index, high);
}

// --- conversions ---
NAX_VEC I64 to_integer(__m512d x) { return _mm512_cvt_roundpd_epi64(x, kNearest); }
NAX_VEC I32 to_integer(__m512 x) { return (I32)_mm512_cvt_roundps_epi32(x, kNearest); }
NAX_VEC __m512d to_real(I64 x) { return _mm512_cvt_roundepi64_pd(x, kNearest); }
NAX_VEC __m512 to_real(I32 x) { return _mm512_cvt_roundepi32_ps((__m512i)x, kNearest); }
// The low and high eight lanes of a float vector as doubles, and back.
NAX_VEC __m512d widen_low(__m512 x) { return _mm512_cvt_roundps_pd(_mm512_castps512_ps256(x), _MM_FROUND_NO_EXC); }
NAX_VEC __m512d widen_high(__m512 x) {
    return _mm512_cvt_roundps_pd(_mm512_extractf32x8_ps(x, 1), _MM_FROUND_NO_EXC);
}
NAX_VEC __m512 narrow(__m512d low, __m512d high) {
    return _mm512_insertf32x8(_mm512_castps256_ps512(_mm512_cvt_roundpd_ps(low, kNearest)),
                              _mm512_cvt_roundpd_ps(high, kNearest), 1);
}

}  // namespace nax::vmath::avx512
