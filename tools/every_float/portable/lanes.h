// What AVX-512 instructions do, lane by lane, on pairs of AVX2 registers: results as of the instructions, exception
// flags left aside. Only operations that the float kernels of the exponentials and logarithms use have a body.
#pragma once

#include <bit>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "tools/every_float/reciprocal.h"

using __m512 = float __attribute__((vector_size(64), may_alias));
using __m512d = double __attribute__((vector_size(64), may_alias));
using __m512i = long long __attribute__((vector_size(64), may_alias));
using __mmask8 = unsigned char;
using __mmask16 = unsigned short;

#define NAX_LANES [[gnu::always_inline]] inline

namespace nax::portable {

using Ints = int __attribute__((vector_size(32), may_alias));  // of half a register
using Unsigned = unsigned __attribute__((vector_size(32), may_alias));
using Unsigned64 = unsigned long long __attribute__((vector_size(32), may_alias));
using AllUnsigned = unsigned __attribute__((vector_size(64), may_alias));  // of a whole one
using AllUnsigned64 = unsigned long long __attribute__((vector_size(64), may_alias));

template <class Whole>
struct HalfOf;
template <>
struct HalfOf<__m512> {
    using Type = __m256;
};
template <>
struct HalfOf<__m512d> {
    using Type = __m256d;
};
template <>
struct HalfOf<__m512i> {
    using Type = __m256i;
};
template <class Whole>
using Half = typename HalfOf<Whole>::Type;

template <class H, class Whole>
NAX_LANES H half(const Whole& x, int which) {
    return reinterpret_cast<const H*>(&x)[which];
}
template <class Whole, class H>
NAX_LANES Whole join(H low, H high) {
    Whole whole;
    reinterpret_cast<H*>(&whole)[0] = low;
    reinterpret_cast<H*>(&whole)[1] = high;
    return whole;
}

// f on both halves.
template <class Whole, class F, class... More>
NAX_LANES Whole map(F f, Whole x, More... more) {
    return join<Whole>(f(half<Half<Whole>>(x, 0), half<Half<More>>(more, 0)...),
                       f(half<Half<Whole>>(x, 1), half<Half<More>>(more, 1)...));
}

// --- rounding: static rounding modes stand in the low two bits, numbered as in MXCSR ---
NAX_LANES void set_rounding(unsigned mode) {
    const unsigned word = 0x1F80 | mode << 13;
    asm volatile("ldmxcsr %0" : : "m"(word) : "memory");
}
// x, after this and before what uses the result.
template <class V>
NAX_LANES V pinned(V x) {
    asm volatile("" : "+m"(x) : : "memory");
    return x;
}
// A call of its own: the compiler knows nothing of rounding modes and might bring other arithmetic in between.
template <int Mode, class F, class... V>
[[gnu::noinline]] auto directed(F f, V... x) {
    set_rounding(Mode & 3);
    const auto result = pinned(map(f, pinned(x)...));
    set_rounding(0);
    return result;
}
template <int Mode, class F, class... V>
NAX_LANES auto rounded(F f, V... x) {
    if constexpr ((Mode & 3) == 0)
        return map(f, x...);
    else
        return directed<Mode>(f, x...);
}

struct Max {
    NAX_LANES __m256 operator()(__m256 a, __m256 b) const { return _mm256_max_ps(a, b); }
    NAX_LANES __m256d operator()(__m256d a, __m256d b) const { return _mm256_max_pd(a, b); }
};
struct Min {
    NAX_LANES __m256 operator()(__m256 a, __m256 b) const { return _mm256_min_ps(a, b); }
    NAX_LANES __m256d operator()(__m256d a, __m256d b) const { return _mm256_min_pd(a, b); }
};
struct Fused {  // a b + c; the other forms negate operands, which is exact
    NAX_LANES __m256 operator()(__m256 a, __m256 b, __m256 c) const { return _mm256_fmadd_ps(a, b, c); }
    NAX_LANES __m256d operator()(__m256d a, __m256d b, __m256d c) const { return _mm256_fmadd_pd(a, b, c); }
};

// --- masks: bit i belongs to lane i ---
NAX_LANES unsigned sign_bits(__m256 x) { return static_cast<unsigned>(_mm256_movemask_ps(x)); }
NAX_LANES unsigned sign_bits(__m256d x) { return static_cast<unsigned>(_mm256_movemask_pd(x)); }
NAX_LANES __mmask16 sign_mask(__m512 x) {
    return static_cast<__mmask16>(sign_bits(half<__m256>(x, 0)) | sign_bits(half<__m256>(x, 1)) << 8);
}
NAX_LANES __mmask8 sign_mask(__m512d x) {
    return static_cast<__mmask8>(sign_bits(half<__m256d>(x, 0)) | sign_bits(half<__m256d>(x, 1)) << 4);
}
NAX_LANES __m512 lanes_of(__mmask16 mask) {
    const Ints bit = {1, 2, 4, 8, 16, 32, 64, 128};
    const Ints low = ((Ints{} + mask) & bit) == bit, high = ((Ints{} + (mask >> 8)) & bit) == bit;
    return join<__m512>((__m256)low, (__m256)high);
}
NAX_LANES __m512d lanes_of(__mmask8 mask) {
    const __m256i bit = {1, 2, 4, 8};
    const auto low = ((__m256i{} + mask) & bit) == bit, high = ((__m256i{} + (mask >> 4)) & bit) == bit;
    return join<__m512d>((__m256d)low, (__m256d)high);
}

struct Blend {
    NAX_LANES __m256 operator()(__m256 chooser, __m256 yes, __m256 no) const {
        return _mm256_blendv_ps(no, yes, chooser);
    }
    NAX_LANES __m256d operator()(__m256d chooser, __m256d yes, __m256d no) const {
        return _mm256_blendv_pd(no, yes, chooser);
    }
};
template <class Mask, class V>
NAX_LANES V choose(Mask mask, V yes, V no) {
    return map(Blend{}, lanes_of(mask), yes, no);
}

template <int Predicate>
struct Compare {
    NAX_LANES __m256 operator()(__m256 a, __m256 b) const { return _mm256_cmp_ps(a, b, Predicate); }
    NAX_LANES __m256d operator()(__m256d a, __m256d b) const { return _mm256_cmp_pd(a, b, Predicate); }
};
template <int Predicate, class V>
NAX_LANES auto compare(V a, V b) {
    return sign_mask(map(Compare<Predicate>{}, a, b));
}

// f, a comparison of integers, on 32-bit lanes or others.
template <class Mask, class Lanes, class F>
NAX_LANES Mask compare_integers(F f, __m512i a, __m512i b) {
    using Floats = std::conditional_t<sizeof(Mask) == 2, __m512, __m512d>;
    const auto low = f(half<Lanes>(a, 0), half<Lanes>(b, 0)), high = f(half<Lanes>(a, 1), half<Lanes>(b, 1));
    return sign_mask(join<Floats>((Half<Floats>)low, (Half<Floats>)high));
}
struct SharesBit {
    template <class V>
    NAX_LANES auto operator()(V a, V b) const {
        return (a & b) != 0;
    }
};

template <int Mode>
NAX_LANES __m512i to_int(__m512 x) {
    static_assert((Mode & 3) == 0);
    return join<__m512i>(_mm256_cvtps_epi32(half<__m256>(x, 0)), _mm256_cvtps_epi32(half<__m256>(x, 1)));
}
template <int Mode>
NAX_LANES __m512 to_float(__m512i x) {
    static_assert((Mode & 3) == 0);
    return join<__m512>(_mm256_cvtepi32_ps(half<__m256i>(x, 0)), _mm256_cvtepi32_ps(half<__m256i>(x, 1)));
}

// --- memory ---
template <class V>
NAX_LANES V load(const void* p) {
    V x;
    __builtin_memcpy(&x, p, sizeof x);
    return x;
}
template <class V>
NAX_LANES void store(void* p, V x) {
    __builtin_memcpy(p, &x, sizeof x);
}
// Lanes outside the mask are not touched.
inline __m512 load_masked(__m512 x, __mmask16 mask, const float* p) {
    for (int i = 0; i < 16; ++i)
        if (mask >> i & 1) x[i] = p[i];
    return x;
}
inline void store_masked(float* p, __mmask16 mask, __m512 x) {
    for (int i = 0; i < 16; ++i)
        if (mask >> i & 1) p[i] = x[i];
}

// --- parts of a number ---
NAX_LANES __m256 magnitude(__m256 x) { return _mm256_andnot_ps(_mm256_set1_ps(-0.0f), x); }
NAX_LANES __m256 is_nan(__m256 x) { return _mm256_cmp_ps(x, x, _CMP_UNORD_Q); }
NAX_LANES __m256 quieted(__m256 nan) { return _mm256_add_ps(nan, nan); }
NAX_LANES __m256 row(float x) { return _mm256_set1_ps(x); }
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kSmallestNormal = std::numeric_limits<float>::min();

// |x| with denormals brought up by 2^23, and which lanes these are.
struct Normalised {
    __m256 value, denormal;
    NAX_LANES explicit Normalised(__m256 x) {
        const __m256 a = magnitude(x);
        denormal = _mm256_cmp_ps(a, row(kSmallestNormal), _CMP_LT_OQ);
        value = _mm256_blendv_ps(a, _mm256_mul_ps(a, row(0x1p23f)), denormal);
    }
};

struct Exponent {
    NAX_LANES __m256 operator()(__m256 x) const {
        const Normalised a(x);
        const Ints shift = (Ints)a.denormal & 23;
        __m256 r = _mm256_cvtepi32_ps((__m256i)(((Ints)a.value >> 23) - 127 - shift));
        r = _mm256_blendv_ps(r, row(-kInfinity), _mm256_cmp_ps(x, row(0.0f), _CMP_EQ_OQ));
        r = _mm256_blendv_ps(r, row(kInfinity), _mm256_cmp_ps(a.value, row(kInfinity), _CMP_EQ_OQ));
        return _mm256_blendv_ps(r, quieted(x), is_nan(x));
    }
};

// In [1, 2); with RefuseNegative the indefinite NaN below zero.
template <bool RefuseNegative>
struct Mantissa {
    NAX_LANES __m256 operator()(__m256 x) const {
        const Ints fraction = (Ints)Normalised(x).value & 0x7FFFFF;
        __m256 r = (__m256)(fraction | 0x3F800000 | ((Ints)x & INT32_MIN));
        if constexpr (RefuseNegative)
            r = _mm256_blendv_ps(r, (__m256)(Ints{} | int32_t(0xFFC00000)), _mm256_cmp_ps(x, row(0.0f), _CMP_LT_OQ));
        return _mm256_blendv_ps(r, quieted(x), is_nan(x));
    }
};

// x times 2 to the floor of n. The product is exact in double, so that the conversion rounds once, on the denormal grid
// too. Beyond 2^+-400 nothing is left of a number. A NaN stays one; the instruction makes 0 or Inf of it where n is
// infinite, but no kernel brings the two together.
struct Scale {
    NAX_LANES static __m128 quarter(__m128 x, __m128 n) {
        const __m256d wide_n = _mm256_cvtps_pd(n);
        const __m128 bounded = _mm_max_ps(_mm_min_ps(_mm_floor_ps(n), _mm_set1_ps(400)), _mm_set1_ps(-400));
        const __m256i whole = _mm256_cvtepi32_epi64(_mm_cvtps_epi32(bounded));
        __m256d power = (__m256d)_mm256_slli_epi64(_mm256_add_epi64(whole, _mm256_set1_epi64x(1023)), 52);
        // 0, Inf or NaN
        const __m256d special = _mm256_cmp_pd(_mm256_sub_pd(wide_n, wide_n), wide_n, _CMP_UNORD_Q);
        power = _mm256_blendv_pd(power, _mm256_max_pd(_mm256_setzero_pd(), wide_n), special);
        return _mm256_cvtpd_ps(_mm256_mul_pd(_mm256_cvtps_pd(x), power));
    }
    NAX_LANES __m256 operator()(__m256 x, __m256 n) const {
        return _mm256_set_m128(quarter(_mm256_extractf128_ps(x, 1), _mm256_extractf128_ps(n, 1)),
                               quarter(_mm256_castps256_ps128(x), _mm256_castps256_ps128(n)));
    }
};

// To a multiple of 2^-(Control >> 4). From 2^23 on every float is one.
template <int Control>
struct RoundScale {
    static_assert((Control & 4) == 0, "direction from the control word, not from MXCSR");
    NAX_LANES __m256 operator()(__m256 x) const {
        constexpr float unit = 1.0f / float(1 << (Control >> 4));
        const __m256 whole = _mm256_round_ps(_mm256_mul_ps(x, row(1 / unit)), (Control & 3) | _MM_FROUND_NO_EXC);
        const __m256 large = _mm256_cmp_ps(magnitude(x), row(0x1p23f), _CMP_GE_OQ);
        return _mm256_blendv_ps(_mm256_mul_ps(whole, row(unit)), x, large);
    }
};
// The smaller in magnitude, the number beside a quiet NaN, with the sign of a.
struct SmallerMagnitude {
    NAX_LANES __m256 operator()(__m256 a, __m256 b) const {
        const __m256 p = magnitude(a), q = magnitude(b);
        const __m256 r = _mm256_blendv_ps(_mm256_min_ps(p, q), p, is_nan(b));
        return _mm256_or_ps(r, _mm256_and_ps(a, row(-0.0f)));
    }
};

template <int Classes>
struct InClass {
    NAX_LANES __m256 operator()(__m256 x) const {
        const Ints b = (Ints)x, a = b & INT32_MAX, infinity = Ints{} + 0x7F800000, quiet = b & 0x00400000;
        Ints in = {};
        if constexpr (Classes & 0x01) in |= (a > infinity) & (quiet != 0);
        if constexpr (Classes & 0x02) in |= b == 0;
        if constexpr (Classes & 0x04) in |= b == INT32_MIN;
        if constexpr (Classes & 0x08) in |= b == infinity;
        if constexpr (Classes & 0x10) in |= (b < 0) & (a == infinity);
        if constexpr (Classes & 0x20) in |= (a > 0) & (a < 0x00800000);
        if constexpr (Classes & 0x40) in |= (b < 0) & (a > 0) & (a < infinity);
        if constexpr (Classes & 0x80) in |= (a > infinity) & (quiet == 0);
        return (__m256)in;
    }
};

// --- tables ---
struct Lookup {  // 16 entries
    NAX_LANES __m256 operator()(__m256i index, const __m512& table) const {
        const __m256 low = _mm256_permutevar8x32_ps(half<__m256>(table, 0), index);
        const __m256 high = _mm256_permutevar8x32_ps(half<__m256>(table, 1), index);
        return _mm256_blendv_ps(low, high, (__m256)_mm256_slli_epi32(index, 28));
    }
};
// What a table of responses says of the class of `special`; x where it says 0.
struct FixUp {
    NAX_LANES __m256 operator()(__m256 x, __m256 special, __m256i table) const {
        const __m512 constant = {0,
                                 0,
                                 0,
                                 std::bit_cast<float>(0xFFC00000),
                                 -kInfinity,
                                 kInfinity,
                                 0,
                                 -0.0f,
                                 0,
                                 -1,
                                 1,
                                 0.5f,
                                 90,
                                 0x1.921fb6p0f,
                                 std::numeric_limits<float>::max(),
                                 std::numeric_limits<float>::lowest()};
        const Ints b = (Ints)special, a = b & INT32_MAX, infinity = Ints{} + 0x7F800000, negative = b < 0;
        Ints kind = 7 + negative;
        kind = a == 0 ? Ints{} + 2 : b == 0x3F800000 ? Ints{} + 3 : a == infinity ? 5 + negative : kind;
        kind = a > infinity ? 1 + ((b & 0x00400000) != 0) : kind;
        const Ints response = (Ints)((Unsigned)table >> (Unsigned)(4 * kind)) & 15;
        Ints r = (Ints)Lookup{}((__m256i)response, constant);
        r = response == 0 ? (Ints)x : response == 1 ? b : response == 2 ? b | 0x7FC00000 : r;
        return (__m256)(response == 6 ? (b & INT32_MIN) | infinity : r);
    }
};
NAX_LANES __m512 look_up(__m512i index, __m512 table) {
    return join<__m512>(Lookup{}(half<__m256i>(index, 0), table), Lookup{}(half<__m256i>(index, 1), table));
}
NAX_LANES __m512 look_up(__m512i index, __m512 low, __m512 high) {
    const __m512 first = look_up(index, low), second = look_up(index, high);
    const auto fifth_bit = [](__m256i i) __attribute__((always_inline)) { return _mm256_slli_epi32(i, 27); };
    return map(Blend{}, (__m512)map(fifth_bit, index), second, first);
}

}  // namespace nax::portable
