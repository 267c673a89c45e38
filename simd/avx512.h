// The vocabulary of vectors in AVX-512: 512-bit registers, mask registers, rounding and suppressed exceptions in each
// instruction. Nothing here raises an exception flag.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "simd/classes.h"
#include "simd/intrinsics.h"

namespace nax::simd {
inline namespace avx512 {

using I64 = long long __attribute__((vector_size(64), may_alias));  // eight 64-bit integers
using I32 = int __attribute__((vector_size(64), may_alias));        // sixteen 32-bit integers

// Lanes as bits of a mask register.
template <class Register>
struct LaneMask {
    Register lanes;
};
using Mask8 = LaneMask<__mmask8>;
using Mask16 = LaneMask<__mmask16>;
template <class R> NAX_VEC LaneMask<R> operator&(LaneMask<R> a, LaneMask<R> b) { return {R(a.lanes & b.lanes)}; }
template <class R> NAX_VEC LaneMask<R> operator|(LaneMask<R> a, LaneMask<R> b) { return {R(a.lanes | b.lanes)}; }
template <class R> NAX_VEC LaneMask<R> operator^(LaneMask<R> a, LaneMask<R> b) { return {R(a.lanes ^ b.lanes)}; }
template <class R> NAX_VEC LaneMask<R> operator~(LaneMask<R> a) { return {R(~a.lanes)}; }
template <class R> NAX_VEC bool any(LaneMask<R> m) { return m.lanes != 0; }
// Bit k for lane k.
template <class R> NAX_VEC uint32_t lane_bits(LaneMask<R> m) { return m.lanes; }

// The two precisions. Vector, Bits and Mask are one register each; a row is a vector with one value in all lanes.
struct Double {
    using Element = double;
    using Vector = __m512d;
    using Bits = I64;
    using Mask = Mask8;
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
    NAX_VEC static Mask first_lanes(int count) { return {__mmask8(0xFFu >> (lanes - count))}; }
};

struct Single {
    using Element = float;
    using Vector = __m512;
    using Bits = I32;
    using Mask = Mask16;
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
    NAX_VEC static Mask first_lanes(int count) { return {__mmask16(0xFFFFu >> (lanes - count))}; }
};

// Every lane is right in the fast forms too, exceptions are suppressed by the instructions.
// The precision of a vector.
NAX_VEC Double precision_of(__m512d) { return {}; }
NAX_VEC Single precision_of(__m512) { return {}; }
template <class Vector>
using PrecisionOf = decltype(precision_of(std::declval<Vector>()));

inline constexpr bool kFastIsCareful = true, kSuppressesExceptions = true;

inline constexpr int kNearest = _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC;

// --- arithmetic ---
NAX_VEC __m512d add(__m512d a, __m512d b) { return _mm512_add_round_pd(a, b, kNearest); }
NAX_VEC __m512 add(__m512 a, __m512 b) { return _mm512_add_round_ps(a, b, kNearest); }
NAX_VEC __m512d sub(__m512d a, __m512d b) { return _mm512_sub_round_pd(a, b, kNearest); }
NAX_VEC __m512 sub(__m512 a, __m512 b) { return _mm512_sub_round_ps(a, b, kNearest); }
NAX_VEC __m512d mul(__m512d a, __m512d b) { return _mm512_mul_round_pd(a, b, kNearest); }
NAX_VEC __m512 mul(__m512 a, __m512 b) { return _mm512_mul_round_ps(a, b, kNearest); }
NAX_VEC __m512d div(__m512d a, __m512d b) { return _mm512_div_round_pd(a, b, kNearest); }
NAX_VEC __m512 div(__m512 a, __m512 b) { return _mm512_div_round_ps(a, b, kNearest); }
NAX_VEC __m512d sqrt(__m512d a) { return _mm512_sqrt_round_pd(a, kNearest); }
NAX_VEC __m512 sqrt(__m512 a) { return _mm512_sqrt_round_ps(a, kNearest); }

// fma a b + c, fms a b - c, fnma c - a b, fnms -a b - c, in one rounding.
NAX_VEC __m512d fma(__m512d a, __m512d b, __m512d c) { return _mm512_fmadd_round_pd(a, b, c, kNearest); }
NAX_VEC __m512 fma(__m512 a, __m512 b, __m512 c) { return _mm512_fmadd_round_ps(a, b, c, kNearest); }
NAX_VEC __m512d fms(__m512d a, __m512d b, __m512d c) { return _mm512_fmsub_round_pd(a, b, c, kNearest); }
NAX_VEC __m512 fms(__m512 a, __m512 b, __m512 c) { return _mm512_fmsub_round_ps(a, b, c, kNearest); }
NAX_VEC __m512d fnma(__m512d a, __m512d b, __m512d c) { return _mm512_fnmadd_round_pd(a, b, c, kNearest); }
NAX_VEC __m512 fnma(__m512 a, __m512 b, __m512 c) { return _mm512_fnmadd_round_ps(a, b, c, kNearest); }
NAX_VEC __m512d fnms(__m512d a, __m512d b, __m512d c) { return _mm512_fnmsub_round_pd(a, b, c, kNearest); }
NAX_VEC __m512 fnms(__m512 a, __m512 b, __m512 c) { return _mm512_fnmsub_round_ps(a, b, c, kNearest); }

// The processor's maximum and minimum: the second operand where either is NaN or both are zeros.
NAX_VEC __m512d max(__m512d a, __m512d b) { return _mm512_max_round_pd(a, b, _MM_FROUND_NO_EXC); }
NAX_VEC __m512 max(__m512 a, __m512 b) { return _mm512_max_round_ps(a, b, _MM_FROUND_NO_EXC); }
NAX_VEC __m512d min(__m512d a, __m512d b) { return _mm512_min_round_pd(a, b, _MM_FROUND_NO_EXC); }
NAX_VEC __m512 min(__m512 a, __m512 b) { return _mm512_min_round_ps(a, b, _MM_FROUND_NO_EXC); }

// --- sums with a shifter ---
// The shifter is 1.5 times a power of two so large that the sum is a multiple of the step wanted; x is far smaller.
// fma_down and add_down round towards minus infinity, so that the sum less the shifter is x c or x rounded down.
NAX_VEC __m512d fma_down(__m512d x, __m512d c, __m512d shifter) {
    return _mm512_fmadd_round_pd(x, c, shifter, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
}
NAX_VEC __m512 fma_down(__m512 x, __m512 c, __m512 shifter) {
    return _mm512_fmadd_round_ps(x, c, shifter, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
}
NAX_VEC __m512d add_down(__m512d x, __m512d shifter) {
    return _mm512_add_round_pd(x, shifter, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
}
NAX_VEC __m512 add_down(__m512 x, __m512 shifter) {
    return _mm512_add_round_ps(x, shifter, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
}

// --- exponent, mantissa, rounding to a multiple of a power of two ---
// x times 2 to the floor of n; overflow and gradual underflow as of one multiplication. Fast: n of a normal result.
template <class Care> NAX_VEC __m512d scale(__m512d x, __m512d n, Care) {
    return _mm512_scalef_round_pd(x, n, kNearest);
}
template <class Care> NAX_VEC __m512 scale(__m512 x, __m512 n, Care) { return _mm512_scalef_round_ps(x, n, kNearest); }
// The same where n = z - shifter and the low bits of z, from bit FractionBits on, are n + Bias modulo
// twice the number of exponents, for a cheaper way.
template <int FractionBits, int Bias, class Vector, class Care>
NAX_VEC Vector scale_split(Vector x, Vector, Vector n, Care care) {
    return scale(x, n, care);
}
template <Direction D>
NAX_VEC __m512d round_to_integer(__m512d x) {
    return _mm512_roundscale_round_pd(x, D | _MM_FROUND_NO_EXC, _MM_FROUND_NO_EXC);
}
template <Direction D>
NAX_VEC __m512 round_to_integer(__m512 x) {
    return _mm512_roundscale_round_ps(x, D | _MM_FROUND_NO_EXC, _MM_FROUND_NO_EXC);
}
// To the nearest multiple of 2^-FractionBits, ties to even; for magnitudes below 2^(mantissa bits - FractionBits).
template <int FractionBits>
NAX_VEC __m512d round_to_fraction(__m512d x) {
    return _mm512_roundscale_round_pd(x, FractionBits << 4 | kNearest, _MM_FROUND_NO_EXC);
}
template <int FractionBits>
NAX_VEC __m512 round_to_fraction(__m512 x) {
    return _mm512_roundscale_round_ps(x, FractionBits << 4 | kNearest, _MM_FROUND_NO_EXC);
}
// Floor of log2|x| as a number. Fast: positive normal x.
template <class Care> NAX_VEC __m512d get_exponent(__m512d x, Care) {
    return _mm512_getexp_round_pd(x, _MM_FROUND_NO_EXC);
}
template <class Care> NAX_VEC __m512 get_exponent(__m512 x, Care) {
    return _mm512_getexp_round_ps(x, _MM_FROUND_NO_EXC);
}
// x over 2 to its exponent, in [1, 2); NaN for negative x. Fast: positive normal x.
template <class Care> NAX_VEC __m512d get_mantissa(__m512d x, Care) {
    return _mm512_getmant_round_pd(x, _MM_MANT_NORM_1_2, _MM_MANT_SIGN_nan, _MM_FROUND_NO_EXC);
}
template <class Care> NAX_VEC __m512 get_mantissa(__m512 x, Care) {
    return _mm512_getmant_round_ps(x, _MM_MANT_NORM_1_2, _MM_MANT_SIGN_nan, _MM_FROUND_NO_EXC);
}
// x, or `bound` with the sign of x where that is smaller in magnitude or x is NaN.
NAX_VEC __m512d min_magnitude(__m512d x, __m512d bound) {
    return _mm512_range_round_pd(x, bound, 0x02, _MM_FROUND_NO_EXC);
}
NAX_VEC __m512 min_magnitude(__m512 x, __m512 bound) {
    return _mm512_range_round_ps(x, bound, 0x02, _MM_FROUND_NO_EXC);
}
// Relative error below 2 to the -14; the low bits differ between makers of processors.
NAX_VEC __m512d reciprocal14(__m512d x) { return _mm512_rcp14_pd(x); }
NAX_VEC __m512 reciprocal14(__m512 x) { return _mm512_rcp14_ps(x); }
NAX_VEC __m512d reciprocal_sqrt14(__m512d x) { return _mm512_rsqrt14_pd(x); }
NAX_VEC __m512 reciprocal_sqrt14(__m512 x) { return _mm512_rsqrt14_ps(x); }

// A row of a data block: y, or +Inf where s is +Inf, beside which y may have become NaN. Fast: finite s.
template <class E>
struct InfinityOf {
    typename E::Bits responses = E::bits_row(5 << 20);  // +Inf for +Inf, the first operand for all other classes
    template <class Care> NAX_VEC __m512d operator()(__m512d y, __m512d s, Care) const {
        return _mm512_fixupimm_round_pd(y, s, (__m512i)responses, 0, _MM_FROUND_NO_EXC);
    }
    template <class Care> NAX_VEC __m512 operator()(__m512 y, __m512 s, Care) const {
        return _mm512_fixupimm_round_ps(y, s, (__m512i)responses, 0, _MM_FROUND_NO_EXC);
    }
};

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

// Products of the lower halves of each lane, unsigned.
NAX_VEC I64 multiply_lower_halves(I64 a, I64 b) { return (I64)_mm512_mul_epu32((__m512i)a, (__m512i)b); }

// --- comparisons and choice by lane ---
// Quiet comparisons; those named not_ are true for NaN.
template <int Predicate>
NAX_VEC Mask8 compare(__m512d a, __m512d b) {
    return {_mm512_cmp_round_pd_mask(a, b, Predicate, _MM_FROUND_NO_EXC)};
}
template <int Predicate>
NAX_VEC Mask16 compare(__m512 a, __m512 b) {
    return {_mm512_cmp_round_ps_mask(a, b, Predicate, _MM_FROUND_NO_EXC)};
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
NAX_VEC Mask8 equal(I64 a, I64 b) { return {_mm512_cmpeq_epi64_mask(a, b)}; }
NAX_VEC Mask16 equal(I32 a, I32 b) { return {_mm512_cmpeq_epi32_mask((__m512i)a, (__m512i)b)}; }
NAX_VEC Mask8 less(I64 a, I64 b) { return {_mm512_cmplt_epi64_mask(a, b)}; }
NAX_VEC Mask16 less(I32 a, I32 b) { return {_mm512_cmplt_epi32_mask((__m512i)a, (__m512i)b)}; }
NAX_VEC Mask8 greater(I64 a, I64 b) { return {_mm512_cmpgt_epi64_mask(a, b)}; }
NAX_VEC Mask16 greater(I32 a, I32 b) { return {_mm512_cmpgt_epi32_mask((__m512i)a, (__m512i)b)}; }
NAX_VEC Mask8 greater_equal(I64 a, I64 b) { return {_mm512_cmpge_epi64_mask(a, b)}; }
NAX_VEC Mask16 greater_equal(I32 a, I32 b) { return {_mm512_cmpge_epi32_mask((__m512i)a, (__m512i)b)}; }
// Unsigned: true where a >= b.
NAX_VEC Mask8 above_equal(I64 a, I64 b) { return {_mm512_cmpge_epu64_mask(a, b)}; }
NAX_VEC Mask16 above_equal(I32 a, I32 b) { return {_mm512_cmpge_epu32_mask((__m512i)a, (__m512i)b)}; }
// Lanes in which a and b share a set bit.
NAX_VEC Mask8 test(I64 a, I64 b) { return {_mm512_test_epi64_mask(a, b)}; }
NAX_VEC Mask16 test(I32 a, I32 b) { return {_mm512_test_epi32_mask((__m512i)a, (__m512i)b)}; }
NAX_VEC Mask8 sign_mask(__m512d x) { return {_mm512_movepi64_mask(bits(x))}; }
NAX_VEC Mask16 sign_mask(__m512 x) { return {_mm512_movepi32_mask((__m512i)x)}; }

template <int Classes> NAX_VEC Mask8 is_class(__m512d x) { return {_mm512_fpclass_pd_mask(x, Classes)}; }
template <int Classes> NAX_VEC Mask16 is_class(__m512 x) { return {_mm512_fpclass_ps_mask(x, Classes)}; }

// Of integers as numbers, any size.
NAX_VEC Mask8 is_odd(__m512d x) {
    return test(_mm512_cvt_roundpd_epi64(x, kNearest), Double::bits_row(1));
}
NAX_VEC Mask16 is_odd(__m512 x) { return test((I32)_mm512_cvt_roundps_epi32(x, kNearest), Single::bits_row(1)); }

// `yes` in the lanes of the mask, `no` elsewhere.
NAX_VEC __m512d choose(Mask8 m, __m512d yes, __m512d no) { return _mm512_mask_mov_pd(no, m.lanes, yes); }
NAX_VEC __m512 choose(Mask16 m, __m512 yes, __m512 no) { return _mm512_mask_mov_ps(no, m.lanes, yes); }
NAX_VEC I64 choose(Mask8 m, I64 yes, I64 no) { return _mm512_mask_mov_epi64(no, m.lanes, yes); }
NAX_VEC I32 choose(Mask16 m, I32 yes, I32 no) {
    return (I32)_mm512_mask_mov_epi32((__m512i)no, m.lanes, (__m512i)yes);
}
NAX_VEC __m512d zero_unless(Mask8 m, __m512d x) { return _mm512_maskz_mov_pd(m.lanes, x); }
NAX_VEC __m512 zero_unless(Mask16 m, __m512 x) { return _mm512_maskz_mov_ps(m.lanes, x); }
// a + b, a - b, a b in the lanes of the mask, a elsewhere.
NAX_VEC __m512d add_where(Mask8 m, __m512d a, __m512d b) {
    return _mm512_mask_add_round_pd(a, m.lanes, a, b, kNearest);
}
NAX_VEC __m512 add_where(Mask16 m, __m512 a, __m512 b) { return _mm512_mask_add_round_ps(a, m.lanes, a, b, kNearest); }
NAX_VEC __m512d sub_where(Mask8 m, __m512d a, __m512d b) {
    return _mm512_mask_sub_round_pd(a, m.lanes, a, b, kNearest);
}
NAX_VEC __m512 sub_where(Mask16 m, __m512 a, __m512 b) { return _mm512_mask_sub_round_ps(a, m.lanes, a, b, kNearest); }
NAX_VEC __m512d mul_where(Mask8 m, __m512d a, __m512d b) {
    return _mm512_mask_mul_round_pd(a, m.lanes, a, b, kNearest);
}
NAX_VEC __m512 mul_where(Mask16 m, __m512 a, __m512 b) { return _mm512_mask_mul_round_ps(a, m.lanes, a, b, kNearest); }

// --- tables ---
// Rows of a data block: N entries, read by permutes. The low bits of each index lane choose an entry.
template <class E, int N>
struct Table {
    using Vector = typename E::Vector;
    using Element = typename E::Element;
    static constexpr int rows = N / E::lanes < 1 ? 1 : N / E::lanes;
    static_assert(rows == 1 || rows == 2 || rows == 4);
    Vector row[rows];

    constexpr Table(const Element (&entries)[N]) : Table(entries, std::make_integer_sequence<int, rows>{}) {}

    NAX_VEC Vector operator[](typename E::Bits index) const {
        if constexpr (rows == 1) {
            return permute(index, row[0]);
        } else if constexpr (rows == 2) {
            return permute(index, row[0], row[1]);
        } else {
            const auto upper = test(index, E::bits_row(2 * E::lanes));
            return choose(upper, permute(index, row[2], row[3]), permute(index, row[0], row[1]));
        }
    }

private:
    template <int... R>
    constexpr Table(const Element (&entries)[N], std::integer_sequence<int, R...>)
        : row{make_row(entries, R * E::lanes, std::make_integer_sequence<int, E::lanes>{})...} {}
    // A table of fewer entries than lanes stands there repeatedly.
    template <int... I>
    static constexpr Vector make_row(const Element* entries, int first, std::integer_sequence<int, I...>) {
        return Vector{entries[(first + I) % N]...};
    }
    NAX_VEC static __m512d permute(I64 index, __m512d table) { return _mm512_permutexvar_pd(index, table); }
    NAX_VEC static __m512 permute(I32 index, __m512 table) { return _mm512_permutexvar_ps((__m512i)index, table); }
    NAX_VEC static __m512d permute(I64 index, __m512d low, __m512d high) {
        return _mm512_permutex2var_pd(low, index, high);
    }
    NAX_VEC static __m512 permute(I32 index, __m512 low, __m512 high) {
        return _mm512_permutex2var_ps(low, (__m512i)index, high);
    }
};

// Two tables with one index.
template <class E, int N>
struct PairTable {
    using Vector = typename E::Vector;
    using Element = typename E::Element;
    Table<E, N> first, second;
    constexpr PairTable(const Element (&a)[N], const Element (&b)[N]) : first(a), second(b) {}
    NAX_VEC void look_up(typename E::Bits index, Vector& a, Vector& b) const {
        a = first[index];
        b = second[index];
    }
};

// Tables in memory, of any size; every lane of the index must lie in the table. Single loads and inserts: gathers cost
// two to three times as much on the processors we know.
NAX_VEC __m512d look_up(const double* table, I64 index) {
    return _mm512_setr_pd(table[index[0]], table[index[1]], table[index[2]], table[index[3]], table[index[4]],
                          table[index[5]], table[index[6]], table[index[7]]);
}
NAX_VEC __m512 look_up(const float* table, I32 index) {
    return (__m512)_mm512_i32gather_epi32((__m512i)index, table, 4);
}
// Entry pairs, each one 128-bit load.
NAX_VEC void look_up_pair(const double (*table)[2], I64 index, __m512d& first, __m512d& second) {
    const auto pairs = [&](int a, int b, int c, int d) __attribute__((always_inline)) {
        const __m256d ab = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(table[index[a]])),
                                                _mm_loadu_pd(table[index[b]]), 1);
        const __m256d cd = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(table[index[c]])),
                                                _mm_loadu_pd(table[index[d]]), 1);
        return _mm512_insertf64x4(_mm512_castpd256_pd512(ab), cd, 1);
    };
    const __m512d even = pairs(0, 2, 4, 6), odd = pairs(1, 3, 5, 7);
    first = _mm512_unpacklo_pd(even, odd);
    second = _mm512_unpackhi_pd(even, odd);
}

// Rows of four, each one 256-bit load; `row(lane)` is where the lane's row begins.
template <class Row>
NAX_VEC void look_up_rows(Row row, __m512d& a, __m512d& b, __m512d& c, __m512d& d) {
    const auto two = [&](int lane) __attribute__((always_inline)) {
        return _mm512_insertf64x4(_mm512_castpd256_pd512(row(lane)), row(lane + 4), 1);
    };
    // Rows of lanes 0 and 4, 2 and 6 ...: first and third elements beside each other, then second and fourth.
    const __m512d r0 = two(0), r1 = two(1), r2 = two(2), r3 = two(3);
    const __m512d ac01 = _mm512_unpacklo_pd(r0, r1), ac23 = _mm512_unpacklo_pd(r2, r3);
    const __m512d bd01 = _mm512_unpackhi_pd(r0, r1), bd23 = _mm512_unpackhi_pd(r2, r3);
    const I64 low = {0, 1, 8, 9, 4, 5, 12, 13}, high = {2, 3, 10, 11, 6, 7, 14, 15};
    a = _mm512_permutex2var_pd(ac01, (__m512i)low, ac23);
    b = _mm512_permutex2var_pd(bd01, (__m512i)low, bd23);
    c = _mm512_permutex2var_pd(ac01, (__m512i)high, ac23);
    d = _mm512_permutex2var_pd(bd01, (__m512i)high, bd23);
}
NAX_VEC void look_up_row(const double (*table)[4], I64 index, __m512d& a, __m512d& b, __m512d& c, __m512d& d) {
    look_up_rows(
        [&](int lane) __attribute__((always_inline)) { return _mm256_loadu_pd(table[index[lane]]); }, a, b, c, d);
}
// Rows of three words. The last row is out of reach: its load would leave the table.
NAX_VEC void look_up_row(const unsigned long (*table)[3], I64 index, I64& a, I64& b, I64& c) {
    const auto row = [&](int lane) __attribute__((always_inline)) {
        return (__m256d)_mm256_loadu_si256(reinterpret_cast<const __m256i*>(table[index[lane]]));
    };
    __m512d x, y, z, next;
    look_up_rows(row, x, y, z, next);
    a = bits(x);
    b = bits(y);
    c = bits(z);
}

// --- conversions ---
// To the nearest integer and back; magnitudes below 2^51 (double), 2^22 (single).
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

// --- moves of whole elements, whatever they hold ---
inline constexpr int kVectorBytes = 64;

// Bit k where element k of the first `count` is not zero.
NAX_VEC uint32_t nonzero_lanes(const int32_t* p, int count) {
    const __m512i x = _mm512_maskz_loadu_epi32(Single::first_lanes(count).lanes, p);
    return _mm512_test_epi32_mask(x, x);
}
NAX_VEC uint32_t nonzero_lanes(const int64_t* p, int count) {
    const __m512i x = _mm512_maskz_loadu_epi64(Double::first_lanes(count).lanes, p);
    return _mm512_test_epi64_mask(x, x);
}

// A vector of elements of 4, 8 or 16 bytes; `mask` makes the mask of the elements that the bits stand for.
template <size_t Bytes>
struct Moves {
    static constexpr bool narrow = Bytes == 4;
    using Vector = __m512i;
    using Mask = std::conditional_t<narrow, __mmask16, __mmask8>;

    NAX_VEC static Mask mask(uint32_t bits) { return static_cast<Mask>(Bytes == 16 ? _pdep_u32(bits, 0x55) * 3 : bits); }
    NAX_VEC static __m512i load(const void* p) { return _mm512_loadu_si512(p); }
    NAX_VEC static void store(void* p, __m512i x) { _mm512_storeu_si512(p, x); }
    NAX_VEC static __m512i load(Mask m, const void* p) {
        if constexpr (narrow)
            return _mm512_maskz_loadu_epi32(m, p);
        else
            return _mm512_maskz_loadu_epi64(m, p);
    }
    NAX_VEC static void store(void* p, Mask m, __m512i x) {
        if constexpr (narrow)
            _mm512_mask_storeu_epi32(p, m, x);
        else
            _mm512_mask_storeu_epi64(p, m, x);
    }
    // The masked elements side by side from the first lane on, and back.
    NAX_VEC static __m512i compress(Mask m, __m512i x) {
        if constexpr (narrow)
            return _mm512_maskz_compress_epi32(m, x);
        else
            return _mm512_maskz_compress_epi64(m, x);
    }
    NAX_VEC static __m512i expand(Mask m, __m512i x) {
        if constexpr (narrow)
            return _mm512_maskz_expand_epi32(m, x);
        else
            return _mm512_maskz_expand_epi64(m, x);
    }
};

// --- memory ---
NAX_VEC __m512d load(const double* p) { return _mm512_loadu_pd(p); }
NAX_VEC __m512 load(const float* p) { return _mm512_loadu_ps(p); }
NAX_VEC void store(double* p, __m512d x) { _mm512_storeu_pd(p, x); }
NAX_VEC void store(float* p, __m512 x) { _mm512_storeu_ps(p, x); }
// The first `count` lanes; others read the filler, and aren't written.
NAX_VEC __m512d load(const double* p, int count) {
    return _mm512_mask_loadu_pd(Double::row(kFiller), Double::first_lanes(count).lanes, p);
}
NAX_VEC __m512 load(const float* p, int count) {
    return _mm512_mask_loadu_ps(Single::row(float(kFiller)), Single::first_lanes(count).lanes, p);
}
NAX_VEC void store(double* p, int count, __m512d x) { _mm512_mask_storeu_pd(p, Double::first_lanes(count).lanes, x); }
NAX_VEC void store(float* p, int count, __m512 x) { _mm512_mask_storeu_ps(p, Single::first_lanes(count).lanes, x); }

// By 128-bit insert loads and lane stores: gathers and scatters cost two to three times as much on the processors we
// know.
NAX_VEC __m256d four_strided(const double* p, ptrdiff_t s) {
    return _mm256_set_m128d(_mm_loadh_pd(_mm_load_sd(p + 2 * s), p + 3 * s), _mm_loadh_pd(_mm_load_sd(p), p + s));
}
NAX_VEC __m512d load_strided(const double* p, ptrdiff_t s) {
    return _mm512_insertf64x4(_mm512_castpd256_pd512(four_strided(p, s)), four_strided(p + 4 * s, s), 1);
}
NAX_VEC __m256 eight_strided(const float* p, ptrdiff_t s) {
    const float* const q = p + 4 * s;
    return _mm256_set_m128(_mm_setr_ps(q[0], q[s], q[2 * s], q[3 * s]), _mm_setr_ps(p[0], p[s], p[2 * s], p[3 * s]));
}
NAX_VEC __m512 load_strided(const float* p, ptrdiff_t s) {
    return _mm512_insertf32x8(_mm512_castps256_ps512(eight_strided(p, s)), eight_strided(p + 8 * s, s), 1);
}

// The first `count` lanes, others the filler. By gathers here: assembled in memory, the vector would have to wait until
// its parts have left the store buffer.
NAX_VEC __m512d load_strided(const double* p, ptrdiff_t s, int count) {
    const I64 index = I64{0, 1, 2, 3, 4, 5, 6, 7} * s;
    return _mm512_mask_i64gather_pd(Double::row(kFiller), Double::first_lanes(count).lanes, (__m512i)index, p, 8);
}
NAX_VEC __m512 load_strided(const float* p, ptrdiff_t s, int count) {
    const I64 index = I64{0, 1, 2, 3, 4, 5, 6, 7} * s;
    const __mmask16 lanes = Single::first_lanes(count).lanes;
    const __m256 filler = _mm256_set1_ps(float(kFiller));
    const __m256 low = _mm512_mask_i64gather_ps(filler, __mmask8(lanes), (__m512i)index, p, 4);
    if (count <= 8) return _mm512_insertf32x8(_mm512_castps256_ps512(low), filler, 1);
    return _mm512_insertf32x8(_mm512_castps256_ps512(low),
                              _mm512_mask_i64gather_ps(filler, __mmask8(lanes >> 8), (__m512i)index, p + 8 * s, 4), 1);
}

NAX_VEC void store_two(double* p, ptrdiff_t s, __m128d x) {
    _mm_storel_pd(p, x);
    _mm_storeh_pd(p + s, x);
}
NAX_VEC void store_strided(double* p, ptrdiff_t s, __m512d x) {
    store_two(p, s, _mm512_castpd512_pd128(x));
    store_two(p + 2 * s, s, _mm512_extractf64x2_pd(x, 1));
    store_two(p + 4 * s, s, _mm512_extractf64x2_pd(x, 2));
    store_two(p + 6 * s, s, _mm512_extractf64x2_pd(x, 3));
}
NAX_VEC void store_four(float* p, ptrdiff_t s, __m128 x) {
    p[0] = x[0];
    p[s] = x[1];
    p[2 * s] = x[2];
    p[3 * s] = x[3];
}
NAX_VEC void store_strided(float* p, ptrdiff_t s, __m512 x) {
    store_four(p, s, _mm512_castps512_ps128(x));
    store_four(p + 4 * s, s, _mm512_extractf32x4_ps(x, 1));
    store_four(p + 8 * s, s, _mm512_extractf32x4_ps(x, 2));
    store_four(p + 12 * s, s, _mm512_extractf32x4_ps(x, 3));
}

}  // namespace avx512
}  // namespace nax::simd
