// The vocabulary of vectors in AVX2 with FMA: 256-bit registers, masks as vectors of all-ones and zero lanes. Bit for
// bit the results of avx512.h. Instructions raise exception flags here; who calls keeps them from the caller's.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "simd/classes.h"
#include "simd/intrinsics.h"

namespace nax::simd {
inline namespace avx2 {

using I64 = long long __attribute__((vector_size(32), may_alias));  // four 64-bit integers
using I32 = int __attribute__((vector_size(32), may_alias));        // eight 32-bit integers

// A lane is all ones or all zeros.
template <class B>
struct LaneMask {
    B lanes;
};
using Mask4 = LaneMask<I64>;
using Mask8 = LaneMask<I32>;
template <class B> NAX_VEC LaneMask<B> operator&(LaneMask<B> a, LaneMask<B> b) { return {a.lanes & b.lanes}; }
template <class B> NAX_VEC LaneMask<B> operator|(LaneMask<B> a, LaneMask<B> b) { return {a.lanes | b.lanes}; }
template <class B> NAX_VEC LaneMask<B> operator^(LaneMask<B> a, LaneMask<B> b) { return {a.lanes ^ b.lanes}; }
template <class B> NAX_VEC LaneMask<B> operator~(LaneMask<B> a) { return {~a.lanes}; }
// Bit k for lane k.
NAX_VEC uint32_t lane_bits(Mask4 m) { return static_cast<uint32_t>(_mm256_movemask_pd((__m256d)m.lanes)); }
NAX_VEC uint32_t lane_bits(Mask8 m) { return static_cast<uint32_t>(_mm256_movemask_ps((__m256)m.lanes)); }
template <class B> NAX_VEC bool any(LaneMask<B> m) { return lane_bits(m) != 0; }

alignas(64) inline constexpr int64_t kWindow64[8] = {-1, -1, -1, -1, 0, 0, 0, 0};
alignas(64) inline constexpr int32_t kWindow32[16] = {-1, -1, -1, -1, -1, -1, -1, -1, 0, 0, 0, 0, 0, 0, 0, 0};

// The two precisions. Vector, Bits and Mask are one register each; a row is a vector with one value in all lanes.
struct Double {
    using Element = double;
    using Vector = __m256d;
    using Bits = I64;
    using Mask = Mask4;
    using Integer = int64_t;
    static constexpr int lanes = 4;
    static constexpr int mantissa_bits = 52;
    static constexpr int exponent_bias = 1023;
    static constexpr Integer sign_bit = INT64_MIN;
    static constexpr Integer exponent_field = 0x7FF0000000000000;
    static constexpr Integer quiet_bit = 0x0008000000000000;
    static constexpr Vector row(double x) { return Vector{x, x, x, x}; }
    static constexpr Bits bits_row(Integer x) { return Bits{x, x, x, x}; }
    static constexpr Vector row_of_bits(Integer x) { return row(std::bit_cast<double>(x)); }
    NAX_VEC static Mask first_lanes(int count) {
        return {(I64)_mm256_loadu_si256(reinterpret_cast<const __m256i*>(kWindow64 + lanes - count))};
    }
};

struct Single {
    using Element = float;
    using Vector = __m256;
    using Bits = I32;
    using Mask = Mask8;
    using Integer = int32_t;
    static constexpr int lanes = 8;
    static constexpr int mantissa_bits = 23;
    static constexpr int exponent_bias = 127;
    static constexpr Integer sign_bit = INT32_MIN;
    static constexpr Integer exponent_field = 0x7F800000;
    static constexpr Integer quiet_bit = 0x00400000;
    static constexpr Vector row(float x) { return Vector{x, x, x, x, x, x, x, x}; }
    static constexpr Bits bits_row(Integer x) { return Bits{x, x, x, x, x, x, x, x}; }
    static constexpr Vector row_of_bits(Integer x) { return row(std::bit_cast<float>(x)); }
    NAX_VEC static Mask first_lanes(int count) {
        return {(I32)_mm256_loadu_si256(reinterpret_cast<const __m256i*>(kWindow32 + lanes - count))};
    }
};

// The precision of a vector.
NAX_VEC Double precision_of(__m256d) { return {}; }
NAX_VEC Single precision_of(__m256) { return {}; }
template <class Vector>
using PrecisionOf = decltype(precision_of(std::declval<Vector>()));

inline constexpr bool kFastIsCareful = false, kSuppressesExceptions = false;

// --- arithmetic ---
NAX_VEC __m256d add(__m256d a, __m256d b) { return _mm256_add_pd(a, b); }
NAX_VEC __m256 add(__m256 a, __m256 b) { return _mm256_add_ps(a, b); }
NAX_VEC __m256d sub(__m256d a, __m256d b) { return _mm256_sub_pd(a, b); }
NAX_VEC __m256 sub(__m256 a, __m256 b) { return _mm256_sub_ps(a, b); }
NAX_VEC __m256d mul(__m256d a, __m256d b) { return _mm256_mul_pd(a, b); }
NAX_VEC __m256 mul(__m256 a, __m256 b) { return _mm256_mul_ps(a, b); }
NAX_VEC __m256d div(__m256d a, __m256d b) { return _mm256_div_pd(a, b); }
NAX_VEC __m256 div(__m256 a, __m256 b) { return _mm256_div_ps(a, b); }
NAX_VEC __m256d sqrt(__m256d a) { return _mm256_sqrt_pd(a); }
NAX_VEC __m256 sqrt(__m256 a) { return _mm256_sqrt_ps(a); }

// fma a b + c, fms a b - c, fnma c - a b, fnms -a b - c, in one rounding.
NAX_VEC __m256d fma(__m256d a, __m256d b, __m256d c) { return _mm256_fmadd_pd(a, b, c); }
NAX_VEC __m256 fma(__m256 a, __m256 b, __m256 c) { return _mm256_fmadd_ps(a, b, c); }
NAX_VEC __m256d fms(__m256d a, __m256d b, __m256d c) { return _mm256_fmsub_pd(a, b, c); }
NAX_VEC __m256 fms(__m256 a, __m256 b, __m256 c) { return _mm256_fmsub_ps(a, b, c); }
NAX_VEC __m256d fnma(__m256d a, __m256d b, __m256d c) { return _mm256_fnmadd_pd(a, b, c); }
NAX_VEC __m256 fnma(__m256 a, __m256 b, __m256 c) { return _mm256_fnmadd_ps(a, b, c); }
NAX_VEC __m256d fnms(__m256d a, __m256d b, __m256d c) { return _mm256_fnmsub_pd(a, b, c); }
NAX_VEC __m256 fnms(__m256 a, __m256 b, __m256 c) { return _mm256_fnmsub_ps(a, b, c); }

// The processor's maximum and minimum: the second operand where either is NaN or both are zeros.
NAX_VEC __m256d max(__m256d a, __m256d b) { return _mm256_max_pd(a, b); }
NAX_VEC __m256 max(__m256 a, __m256 b) { return _mm256_max_ps(a, b); }
NAX_VEC __m256d min(__m256d a, __m256d b) { return _mm256_min_pd(a, b); }
NAX_VEC __m256 min(__m256 a, __m256 b) { return _mm256_min_ps(a, b); }

// --- bit patterns ---
NAX_VEC I64 bits(__m256d x) { return (I64)x; }
NAX_VEC I32 bits(__m256 x) { return (I32)x; }
NAX_VEC __m256d from_bits(I64 x) { return (__m256d)x; }
NAX_VEC __m256 from_bits(I32 x) { return (__m256)x; }
NAX_VEC __m256d bit_and(__m256d a, __m256d b) { return _mm256_and_pd(a, b); }
NAX_VEC __m256 bit_and(__m256 a, __m256 b) { return _mm256_and_ps(a, b); }
NAX_VEC __m256d bit_or(__m256d a, __m256d b) { return _mm256_or_pd(a, b); }
NAX_VEC __m256 bit_or(__m256 a, __m256 b) { return _mm256_or_ps(a, b); }
NAX_VEC __m256d bit_xor(__m256d a, __m256d b) { return _mm256_xor_pd(a, b); }
NAX_VEC __m256 bit_xor(__m256 a, __m256 b) { return _mm256_xor_ps(a, b); }
// b with the bits that are set in a cleared.
NAX_VEC __m256d and_not(__m256d a, __m256d b) { return _mm256_andnot_pd(a, b); }
NAX_VEC __m256 and_not(__m256 a, __m256 b) { return _mm256_andnot_ps(a, b); }
// Bits of `yes` where `chooser` has ones, else of `no`.
template <class Vector>
NAX_VEC Vector bit_choose(Vector chooser, Vector yes, Vector no) {
    return bit_or(bit_and(chooser, yes), and_not(chooser, no));
}
// Logical shifts right and left by a constant (vector operators >> and << shift arithmetically).
template <int Count> NAX_VEC I64 shift_right(I64 x) { return (I64)_mm256_srli_epi64((__m256i)x, Count); }
template <int Count> NAX_VEC I32 shift_right(I32 x) { return (I32)_mm256_srli_epi32((__m256i)x, Count); }
template <int Count> NAX_VEC I64 shift_left(I64 x) { return (I64)_mm256_slli_epi64((__m256i)x, Count); }
template <int Count> NAX_VEC I32 shift_left(I32 x) { return (I32)_mm256_slli_epi32((__m256i)x, Count); }

// --- comparisons and choice by lane ---
// Quiet comparisons; those named not_ are true for NaN.
template <int Predicate> NAX_VEC Mask4 compare(__m256d a, __m256d b) { return {(I64)_mm256_cmp_pd(a, b, Predicate)}; }
template <int Predicate> NAX_VEC Mask8 compare(__m256 a, __m256 b) { return {(I32)_mm256_cmp_ps(a, b, Predicate)}; }
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
NAX_VEC Mask4 equal(I64 a, I64 b) { return {a == b}; }
NAX_VEC Mask8 equal(I32 a, I32 b) { return {a == b}; }
NAX_VEC Mask4 less(I64 a, I64 b) { return {a < b}; }
NAX_VEC Mask8 less(I32 a, I32 b) { return {a < b}; }
NAX_VEC Mask4 greater(I64 a, I64 b) { return {a > b}; }
NAX_VEC Mask8 greater(I32 a, I32 b) { return {a > b}; }
NAX_VEC Mask4 greater_equal(I64 a, I64 b) { return ~less(a, b); }
NAX_VEC Mask8 greater_equal(I32 a, I32 b) { return ~less(a, b); }
// Unsigned: true where a >= b.
NAX_VEC Mask4 above_equal(I64 a, I64 b) { return ~less(a ^ INT64_MIN, b ^ INT64_MIN); }
NAX_VEC Mask8 above_equal(I32 a, I32 b) { return ~less(a ^ INT32_MIN, b ^ INT32_MIN); }
// Lanes in which a and b share a set bit.
NAX_VEC Mask4 test(I64 a, I64 b) { return {(a & b) != 0}; }
NAX_VEC Mask8 test(I32 a, I32 b) { return {(a & b) != 0}; }
NAX_VEC Mask4 sign_mask(__m256d x) { return {bits(x) < 0}; }
NAX_VEC Mask8 sign_mask(__m256 x) { return {bits(x) < 0}; }

// `yes` in the lanes of the mask, `no` elsewhere.
NAX_VEC __m256d choose(Mask4 m, __m256d yes, __m256d no) { return _mm256_blendv_pd(no, yes, (__m256d)m.lanes); }
NAX_VEC __m256 choose(Mask8 m, __m256 yes, __m256 no) { return _mm256_blendv_ps(no, yes, (__m256)m.lanes); }
NAX_VEC I64 choose(Mask4 m, I64 yes, I64 no) { return (I64)choose(m, (__m256d)yes, (__m256d)no); }
NAX_VEC I32 choose(Mask8 m, I32 yes, I32 no) { return (I32)choose(m, (__m256)yes, (__m256)no); }
NAX_VEC __m256d zero_unless(Mask4 m, __m256d x) { return _mm256_and_pd((__m256d)m.lanes, x); }
NAX_VEC __m256 zero_unless(Mask8 m, __m256 x) { return _mm256_and_ps((__m256)m.lanes, x); }
// a + b, a - b, a b in the lanes of the mask, a elsewhere.
template <class B, class V> NAX_VEC V add_where(LaneMask<B> m, V a, V b) { return choose(m, add(a, b), a); }
template <class B, class V> NAX_VEC V sub_where(LaneMask<B> m, V a, V b) { return choose(m, sub(a, b), a); }
template <class B, class V> NAX_VEC V mul_where(LaneMask<B> m, V a, V b) { return choose(m, mul(a, b), a); }

// By integer comparisons; numbers are compared as such only where denormals may count as zeros.
template <int Classes, class Vector>
NAX_VEC auto is_class(Vector x) {
    using E = PrecisionOf<Vector>;
    const auto magnitude = bits(x) & E::bits_row(~E::sign_bit), inf = E::bits_row(E::exponent_field);
    typename E::Mask m = {E::bits_row(0)};
    if constexpr ((Classes & (kNan | kInf)) == (kNan | kInf)) {
        m = ~less(magnitude, inf);
    } else {
        static_assert((Classes & kNan) == 0 || (Classes & kNan) == kNan, "kinds of NaN aren't told apart");
        if constexpr ((Classes & kNan) != 0) m = m | greater(magnitude, inf);
        if constexpr ((Classes & kInf) == kInf) m = m | equal(magnitude, inf);
        if constexpr ((Classes & kInf) == kPlusInf) m = m | equal(bits(x), inf);
        if constexpr ((Classes & kInf) == kMinusInf) m = m | equal(bits(x), inf | E::bits_row(E::sign_bit));
    }
    const Vector zero = E::row(0);
    if constexpr ((Classes & kZero) == kZero) m = m | equal(x, zero);
    if constexpr ((Classes & kZero) == kPlusZero) m = m | (equal(x, zero) & ~sign_mask(x));
    if constexpr ((Classes & kZero) == kMinusZero) m = m | (equal(x, zero) & sign_mask(x));
    if constexpr ((Classes & kDenormal) != 0) {
        const auto tiny = E::bits_row(typename E::Integer{1} << E::mantissa_bits);
        m = m | (less(magnitude, tiny) & not_equal(x, zero));
    }
    if constexpr ((Classes & kNegativeFinite) != 0)
        m = m | (less(x, zero) & less(magnitude, inf));
    return m;
}

// --- sums with a shifter ---
// The shifter is 1.5 times a power of two so large that the sum is a multiple of the step wanted; x is far smaller.
// fma_down and add_down round towards minus infinity, so that the sum less the shifter is x c or x rounded down. Here the
// sum is to nearest, its error exact, and one unit less where that is negative.
NAX_VEC __m256d one_less_where_negative(__m256d z, __m256d error) {
    return from_bits(bits(z) + bits(_mm256_cmp_pd(error, _mm256_setzero_pd(), _CMP_LT_OQ)));
}
NAX_VEC __m256 one_less_where_negative(__m256 z, __m256 error) {
    return from_bits(bits(z) + bits(_mm256_cmp_ps(error, _mm256_setzero_ps(), _CMP_LT_OQ)));
}
template <class Vector>
NAX_VEC Vector fma_down(Vector x, Vector c, Vector shifter) {
    const Vector z = fma(x, c, shifter);
    return one_less_where_negative(z, fma(x, c, sub(shifter, z)));
}
template <class Vector>
NAX_VEC Vector add_down(Vector x, Vector shifter) {
    const Vector z = add(x, shifter);
    return one_less_where_negative(z, sub(x, sub(z, shifter)));
}

// --- exponent, mantissa, rounding to a multiple of a power of two ---
template <Direction D>
NAX_VEC __m256d round_to_integer(__m256d x) {
    return _mm256_round_pd(x, D | _MM_FROUND_NO_EXC);
}
template <Direction D>
NAX_VEC __m256 round_to_integer(__m256 x) {
    return _mm256_round_ps(x, D | _MM_FROUND_NO_EXC);
}
// Of integers as numbers, any size.
template <class Vector>
NAX_VEC auto is_odd(Vector x) {
    const Vector half = mul(x, PrecisionOf<Vector>::row(typename PrecisionOf<Vector>::Element(0.5)));
    return not_equal(half, round_to_integer<kTowardZero>(half));
}
// To the nearest multiple of 2^-FractionBits, ties to even; for magnitudes below 2^(mantissa bits - FractionBits).
template <int FractionBits, class Vector>
NAX_VEC Vector round_to_fraction(Vector x) {
    using E = PrecisionOf<Vector>;
    const Vector up = E::row(typename E::Element(1 << FractionBits));
    const Vector down = E::row(typename E::Element(1) / typename E::Element(1 << FractionBits));
    return mul(round_to_integer<kToNearest>(mul(x, up)), down);
}

// 2^n for integers n of the normal exponents, given as numbers.
NAX_VEC __m256d power_of_two(__m256d n) {
    return from_bits(shift_left<52>(bits(add(n, Double::row(0x1.8p52 + 1023)))));
}
NAX_VEC __m256 power_of_two(__m256 n) {
    return from_bits((I32)_mm256_slli_epi32(_mm256_add_epi32(_mm256_cvtps_epi32(n), _mm256_set1_epi32(127)), 23));
}

// x times 2 to the floor of n; overflow and gradual underflow as of one multiplication. Fast: n of a normal result.
template <class Vector>
NAX_VEC Vector scale(Vector x, Vector n, Fast) {
    return mul(x, power_of_two(round_to_integer<kDownward>(n)));
}
template <class Vector>
NAX_VEC Vector scale(Vector x, Vector n, Careful) {
    using E = PrecisionOf<Vector>;
    // In two steps, of which only the second rounds. At this bound nothing but 0 and Inf comes out any more.
    const Vector bound = E::row(typename E::Element(3 * (E::exponent_bias + 1) / 2));
    const Vector whole = min(max(round_to_integer<kDownward>(n), sub(E::row(0), bound)), bound);
    const Vector half = round_to_integer<kDownward>(mul(whole, E::row(typename E::Element(0.5))));
    const Vector scaled = mul(mul(x, power_of_two(half)), power_of_two(sub(whole, half)));
    return choose(unordered(n, n), add(n, n), scaled);
}
// The same where n = z - shifter and the low bits of z, from bit FractionBits on, are n + Bias modulo
// twice the number of exponents, for a cheaper way.
template <int FractionBits, int Bias, class Vector>
NAX_VEC Vector scale_split(Vector x, Vector z, Vector, Fast) {
    using E = PrecisionOf<Vector>;
    const auto exponent = shift_left<E::mantissa_bits>(shift_right<FractionBits>(bits(z)));
    if constexpr (Bias == E::exponent_bias)
        return mul(x, from_bits(exponent));
    else if constexpr (Bias == 0)
        return from_bits(bits(x) + exponent);
    else
        return from_bits(bits(x) + (exponent - E::bits_row(typename E::Integer(typename std::make_unsigned_t<typename E::Integer>(Bias) << E::mantissa_bits))));
}
template <int FractionBits, int Bias, class Vector>
NAX_VEC Vector scale_split(Vector x, Vector, Vector n, Careful care) {
    return scale(x, n, care);
}

// Floor of log2|x| as a number. Fast: positive normal x.
NAX_VEC __m256d get_exponent(__m256d x, Fast) {
    const I64 field = shift_right<52>(bits(x)) | Double::bits_row(0x4330000000000000);  // added to 2^52
    return sub(from_bits(field), Double::row(0x1p52 + 1023));
}
NAX_VEC __m256 get_exponent(__m256 x, Fast) {
    return _mm256_cvtepi32_ps((__m256i)(shift_right<23>(bits(x)) - Single::bits_row(127)));
}
// x over 2 to its exponent, in [1, 2); NaN for negative x. Fast: positive normal x.
template <class Vector>
NAX_VEC Vector get_mantissa(Vector x, Fast) {
    using E = PrecisionOf<Vector>;
    const auto fraction = E::bits_row((typename E::Integer{1} << E::mantissa_bits) - 1);
    return from_bits((bits(x) & fraction) | bits(E::row(1)));
}
// |x| made normal by 2^k, k = mantissa bits + 1, where it is denormal, and -k there.
template <class Vector>
NAX_VEC Vector normalised_magnitude(Vector x, Vector& exponent) {
    using E = PrecisionOf<Vector>;
    using T = typename E::Element;
    constexpr int k = E::mantissa_bits + 1;
    const Vector magnitude = and_not(E::row_of_bits(E::sign_bit), x);
    const auto small = less(bits(magnitude), E::bits_row(typename E::Integer{1} << E::mantissa_bits));
    exponent = zero_unless(small, E::row(T(-k)));
    return mul_where(small, magnitude, E::row(T(typename E::Integer{1} << k)));
}
template <class Vector>
NAX_VEC Vector get_exponent(Vector x, Careful) {
    using E = PrecisionOf<Vector>;
    Vector shift;
    const Vector normal = normalised_magnitude(x, shift);
    const Vector zero = E::row(0), inf = E::row_of_bits(E::exponent_field);
    Vector result = add(get_exponent(normal, Fast{}), shift);
    result = choose(equal(normal, zero), sub(zero, inf), result);
    return choose(not_less(normal, inf), add(normal, normal), result);
}
template <class Vector>
NAX_VEC Vector get_mantissa(Vector x, Careful) {
    using E = PrecisionOf<Vector>;
    Vector shift;
    const Vector normal = normalised_magnitude(x, shift);
    const Vector zero = E::row(0), inf = E::row_of_bits(E::exponent_field);
    Vector result = get_mantissa(normal, Fast{});
    result = choose(equal(normal, zero) | equal(normal, inf), E::row(1), result);
    result = choose(less(x, zero), E::row_of_bits(E::sign_bit | E::exponent_field | E::quiet_bit), result);
    return choose(unordered(x, x), add(x, x), result);
}
// x, or `bound` with the sign of x where that is smaller in magnitude or x is NaN.
template <class Vector>
NAX_VEC Vector min_magnitude(Vector x, Vector bound) {
    const Vector sign = PrecisionOf<Vector>::row_of_bits(PrecisionOf<Vector>::sign_bit);
    return bit_or(min(and_not(sign, x), bound), bit_and(sign, x));
}
// Relative error below 2 to the -14; the low bits differ between makers of processors. Here the quotients proper, unless
// a tool asks what the kernels make of another error.
#ifndef NAX_RECIPROCAL_ERROR
#define NAX_RECIPROCAL_ERROR 0
#endif
template <class Vector>
NAX_VEC Vector reciprocal14(Vector x) {
    using T = typename PrecisionOf<Vector>::Element;
    return div(PrecisionOf<Vector>::row(static_cast<T>(1 + NAX_RECIPROCAL_ERROR)), x);
}
template <class Vector>
NAX_VEC Vector reciprocal_sqrt14(Vector x) {
    return div(PrecisionOf<Vector>::row(1), sqrt(x));
}

// A row of a data block: y, or +Inf where s is +Inf, beside which y may have become NaN. Fast: finite s.
template <class E>
struct InfinityOf {
    using Vector = typename E::Vector;
    NAX_VEC Vector operator()(Vector y, Vector, Fast) const { return y; }
    NAX_VEC Vector operator()(Vector y, Vector s, Careful) const {
        return choose(equal(s, E::row_of_bits(E::exponent_field)), s, y);
    }
};

// --- tables ---
// Tables in memory, of any size; every lane of the index must lie in the table. Gathers cost more than single loads and
// inserts on the processors we know.
NAX_VEC __m256d look_up(const double* table, I64 index) {
    const __m128d low = _mm_loadh_pd(_mm_load_sd(table + index[0]), table + index[1]);
    const __m128d high = _mm_loadh_pd(_mm_load_sd(table + index[2]), table + index[3]);
    return _mm256_set_m128d(high, low);
}
NAX_VEC __m256 look_up(const float* table, I32 index) {
    return _mm256_setr_ps(table[index[0]], table[index[1]], table[index[2]], table[index[3]], table[index[4]],
                          table[index[5]], table[index[6]], table[index[7]]);
}
// Entry pairs, each one 128-bit load.
NAX_VEC void look_up_pair(const double (*table)[2], I64 index, __m256d& first, __m256d& second) {
    const __m256d even = _mm256_set_m128d(_mm_loadu_pd(table[index[2]]), _mm_loadu_pd(table[index[0]]));
    const __m256d odd = _mm256_set_m128d(_mm_loadu_pd(table[index[3]]), _mm_loadu_pd(table[index[1]]));
    first = _mm256_unpacklo_pd(even, odd);
    second = _mm256_unpackhi_pd(even, odd);
}

// N entries in a data block; the low bits of each index lane choose one. Doubles by single loads, floats by permutes.
template <class E, int N>
struct Table;
template <int N>
struct Table<Double, N> {
    alignas(32) double entry[N];

    constexpr Table(const double (&entries)[N]) {
        for (int i = 0; i < N; ++i) entry[i] = entries[i];
    }
    NAX_VEC __m256d operator[](I64 index) const { return look_up(entry, index & (N - 1)); }
};
template <int N>
struct Table<Single, N> {
    static constexpr int rows = N / 8 < 1 ? 1 : N / 8;
    static_assert(rows == 1 || rows == 2 || rows == 4);
    __m256 row[rows];

    constexpr Table(const float (&entries)[N]) : Table(entries, std::make_integer_sequence<int, rows>{}) {}
    NAX_VEC __m256 operator[](I32 index) const {
        if constexpr (rows == 1) {
            return permute(index, 0);
        } else {
            const __m256 bit3 = (__m256)shift_left<28>(index);
            const __m256 first = _mm256_blendv_ps(permute(index, 0), permute(index, 1), bit3);
            if constexpr (rows == 2) {
                return first;
            } else {
                const __m256 second = _mm256_blendv_ps(permute(index, 2), permute(index, 3), bit3);
                return _mm256_blendv_ps(first, second, (__m256)shift_left<27>(index));
            }
        }
    }

private:
    template <int... R>
    constexpr Table(const float (&entries)[N], std::integer_sequence<int, R...>)
        : row{make_row(entries, R * 8, std::make_integer_sequence<int, 8>{})...} {}
    // A table of fewer entries than lanes stands there repeatedly.
    template <int... I>
    static constexpr __m256 make_row(const float* entries, int first, std::integer_sequence<int, I...>) {
        return __m256{entries[(first + I) % N]...};
    }
    NAX_VEC __m256 permute(I32 index, int r) const { return _mm256_permutevar8x32_ps(row[r], (__m256i)index); }
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
template <int N>
struct PairTable<Double, N> {
    alignas(32) double pair[N][2];

    constexpr PairTable(const double (&a)[N], const double (&b)[N]) {
        for (int i = 0; i < N; ++i) {
            pair[i][0] = a[i];
            pair[i][1] = b[i];
        }
    }
    NAX_VEC void look_up(I64 index, __m256d& a, __m256d& b) const { look_up_pair(pair, index & (N - 1), a, b); }
};

// --- conversions ---
// To the nearest integer and back; magnitudes below 2^51 (double), 2^22 (single).
NAX_VEC I64 to_integer(__m256d x) {
    const __m256d shifter = Double::row(0x1.8p52);
    return bits(add(x, shifter)) - bits(shifter);
}
NAX_VEC I32 to_integer(__m256 x) { return (I32)_mm256_cvtps_epi32(x); }
NAX_VEC __m256d to_real(I64 x) {
    const __m256d shifter = Double::row(0x1.8p52);
    return sub(from_bits(x + bits(shifter)), shifter);
}
NAX_VEC __m256 to_real(I32 x) { return _mm256_cvtepi32_ps((__m256i)x); }
// The lower and upper lanes of a float vector as doubles, and back.
NAX_VEC __m256d widen_low(__m256 x) { return _mm256_cvtps_pd(_mm256_castps256_ps128(x)); }
NAX_VEC __m256d widen_high(__m256 x) { return _mm256_cvtps_pd(_mm256_extractf128_ps(x, 1)); }
NAX_VEC __m256 narrow(__m256d low, __m256d high) { return _mm256_set_m128(_mm256_cvtpd_ps(high), _mm256_cvtpd_ps(low)); }

// --- moves of whole elements, whatever they hold ---
inline constexpr int kVectorBytes = 32;

// Bit k where element k of the first `count` is not zero.
NAX_VEC uint32_t nonzero_lanes(const int32_t* p, int count) {
    const I32 x = (I32)_mm256_maskload_epi32(p, (__m256i)Single::first_lanes(count).lanes);
    return lane_bits(Mask8{x != 0});
}
NAX_VEC uint32_t nonzero_lanes(const int64_t* p, int count) {
    const auto* const q = reinterpret_cast<const long long*>(p);
    const I64 x = (I64)_mm256_maskload_epi64(q, (__m256i)Double::first_lanes(count).lanes);
    return lane_bits(Mask4{x != 0});
}

// A vector of elements of 4, 8 or 16 bytes; `mask` makes the mask of the elements that the bits stand for: a byte of
// ones for each 32-bit lane.
template <size_t Bytes>
struct Moves {
    using Vector = __m256i;
    using Mask = uint64_t;

    NAX_VEC static Mask mask(uint32_t bits) {
        if constexpr (Bytes == 4) return _pdep_u64(bits, 0x0101010101010101) * 0xFF;
        if constexpr (Bytes == 8) return _pdep_u64(bits, 0x0001000100010001) * 0xFFFF;
        if constexpr (Bytes == 16) return _pdep_u64(bits, 0x0000000100000001) * 0xFFFFFFFF;
    }
    NAX_VEC static __m256i lanes_of(Mask m) {
        return _mm256_cvtepi8_epi32(_mm_cvtsi64_si128(static_cast<long long>(m)));
    }
    NAX_VEC static __m256i load(const void* p) { return _mm256_loadu_si256(static_cast<const __m256i*>(p)); }
    NAX_VEC static void store(void* p, __m256i x) { _mm256_storeu_si256(static_cast<__m256i*>(p), x); }
    NAX_VEC static __m256i load(Mask m, const void* p) {
        return _mm256_maskload_epi32(static_cast<const int*>(p), lanes_of(m));
    }
    NAX_VEC static void store(void* p, Mask m, __m256i x) {
        _mm256_maskstore_epi32(static_cast<int*>(p), lanes_of(m), x);
    }
    // The masked elements side by side from the first lane on, and back. What stands in the other lanes is not told.
    NAX_VEC static __m256i compress(Mask m, __m256i x) {
        return _mm256_permutevar8x32_epi32(x, lanes_of(_pext_u64(0x0706050403020100, m)));
    }
    NAX_VEC static __m256i expand(Mask m, __m256i x) {
        return _mm256_permutevar8x32_epi32(x, lanes_of(_pdep_u64(0x0706050403020100, m)));
    }
};

// --- memory ---
NAX_VEC __m256d load(const double* p) { return _mm256_loadu_pd(p); }
NAX_VEC __m256 load(const float* p) { return _mm256_loadu_ps(p); }
NAX_VEC void store(double* p, __m256d x) { _mm256_storeu_pd(p, x); }
NAX_VEC void store(float* p, __m256 x) { _mm256_storeu_ps(p, x); }
// The first `count` lanes; others read the filler, and aren't written.
NAX_VEC __m256d load(const double* p, int count) {
    const Mask4 m = Double::first_lanes(count);
    return choose(m, _mm256_maskload_pd(p, (__m256i)m.lanes), Double::row(kFiller));
}
NAX_VEC __m256 load(const float* p, int count) {
    const Mask8 m = Single::first_lanes(count);
    return choose(m, _mm256_maskload_ps(p, (__m256i)m.lanes), Single::row(float(kFiller)));
}
// In pieces: masked stores are microcode on some processors.
NAX_VEC void store(double* p, int count, __m256d x) {
    if (count >= 4) return store(p, x);
    __m128d part = _mm256_castpd256_pd128(x);
    if (count & 2) {
        _mm_storeu_pd(p, part);
        part = _mm256_extractf128_pd(x, 1);
        p += 2;
    }
    if (count & 1) _mm_store_sd(p, part);
}
NAX_VEC void store(float* p, int count, __m256 x) {
    if (count >= 8) return store(p, x);
    __m128 part = _mm256_castps256_ps128(x);
    if (count & 4) {
        _mm_storeu_ps(p, part);
        part = _mm256_extractf128_ps(x, 1);
        p += 4;
    }
    if (count & 2) {
        _mm_storel_pd(reinterpret_cast<double*>(p), _mm_castps_pd(part));
        part = _mm_movehl_ps(part, part);
        p += 2;
    }
    if (count & 1) _mm_store_ss(p, part);
}

NAX_VEC __m256d load_strided(const double* p, ptrdiff_t s) {
    return _mm256_set_m128d(_mm_loadh_pd(_mm_load_sd(p + 2 * s), p + 3 * s), _mm_loadh_pd(_mm_load_sd(p), p + s));
}
NAX_VEC __m256 load_strided(const float* p, ptrdiff_t s) {
    const float* const q = p + 4 * s;
    return _mm256_set_m128(_mm_setr_ps(q[0], q[s], q[2 * s], q[3 * s]), _mm_setr_ps(p[0], p[s], p[2 * s], p[3 * s]));
}
// The first `count` lanes, others the filler. By gathers here: assembled in memory, the vector would have to wait until
// its parts have left the store buffer.
NAX_VEC __m256d load_strided(const double* p, ptrdiff_t s, int count) {
    const I64 index = I64{0, 1, 2, 3} * s;
    return _mm256_mask_i64gather_pd(Double::row(kFiller), p, (__m256i)index, (__m256d)Double::first_lanes(count).lanes, 8);
}
NAX_VEC __m256 load_strided(const float* p, ptrdiff_t s, int count) {
    const I64 index = I64{0, 1, 2, 3} * s;
    const __m256 lanes = (__m256)Single::first_lanes(count).lanes;
    const __m128 filler = _mm_set1_ps(float(kFiller));
    const __m128 low = _mm256_mask_i64gather_ps(filler, p, (__m256i)index, _mm256_castps256_ps128(lanes), 4);
    if (count <= 4) return _mm256_set_m128(filler, low);
    return _mm256_set_m128(
        _mm256_mask_i64gather_ps(filler, p + 4 * s, (__m256i)index, _mm256_extractf128_ps(lanes, 1), 4), low);
}

NAX_VEC void store_two(double* p, ptrdiff_t s, __m128d x) {
    _mm_storel_pd(p, x);
    _mm_storeh_pd(p + s, x);
}
NAX_VEC void store_strided(double* p, ptrdiff_t s, __m256d x) {
    store_two(p, s, _mm256_castpd256_pd128(x));
    store_two(p + 2 * s, s, _mm256_extractf128_pd(x, 1));
}
NAX_VEC void store_four(float* p, ptrdiff_t s, __m128 x) {
    p[0] = x[0];
    p[s] = x[1];
    p[2 * s] = x[2];
    p[3 * s] = x[3];
}
NAX_VEC void store_strided(float* p, ptrdiff_t s, __m256 x) {
    store_four(p, s, _mm256_castps256_ps128(x));
    store_four(p + 4 * s, s, _mm256_extractf128_ps(x, 1));
}

}  // namespace avx2
}  // namespace nax::simd
