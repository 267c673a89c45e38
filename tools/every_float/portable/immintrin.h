// Stands before the compiler's header of this name: AVX2 as the compiler has it, AVX-512 by lanes.h. So the sources of
// the kernels, vmath/frame/vec.h included, compile as they are for a processor without AVX-512.
//
// Immediate operands become template arguments. What is declared without a body is in the wrappers, but in no float
// kernel of the exponentials and logarithms; the linker names it if that changes.
#pragma once

// The parts of the compiler's header, which must not be included without it.
#ifdef __clang__
#define __IMMINTRIN_H
#else
#define _IMMINTRIN_H_INCLUDED
#endif
// clang-format off
#include <smmintrin.h>
#include <avxintrin.h>
#include <avx2intrin.h>
#include <fmaintrin.h>
// clang-format on

#include <functional>

#include "tools/every_float/portable/lanes.h"

enum _MM_MANTISSA_NORM_ENUM { _MM_MANT_NORM_1_2, _MM_MANT_NORM_p5_2, _MM_MANT_NORM_p5_1, _MM_MANT_NORM_p75_1p5 };
enum _MM_MANTISSA_SIGN_ENUM { _MM_MANT_SIGN_src, _MM_MANT_SIGN_zero, _MM_MANT_SIGN_nan };

#define _mm512_add_round_ps(a, b, mode) nax::portable::rounded<(mode)>(std::plus<>{}, a, b)
#define _mm512_sub_round_ps(a, b, mode) nax::portable::rounded<(mode)>(std::minus<>{}, a, b)
#define _mm512_mul_round_ps(a, b, mode) nax::portable::rounded<(mode)>(std::multiplies<>{}, a, b)
#define _mm512_fmadd_round_ps(a, b, c, mode) nax::portable::rounded<(mode)>(nax::portable::Fused{}, a, b, c)
#define _mm512_fmsub_round_ps(a, b, c, mode) nax::portable::rounded<(mode)>(nax::portable::Fused{}, a, b, -(c))
#define _mm512_fnmadd_round_ps(a, b, c, mode) nax::portable::rounded<(mode)>(nax::portable::Fused{}, -(a), b, c)
#define _mm512_fnmsub_round_ps(a, b, c, mode) nax::portable::rounded<(mode)>(nax::portable::Fused{}, -(a), b, -(c))
#define _mm512_max_round_ps(a, b, sae) nax::portable::map(nax::portable::Max{}, a, b)
#define _mm512_min_round_ps(a, b, sae) nax::portable::map(nax::portable::Min{}, a, b)
#define _mm512_add_round_pd _mm512_add_round_ps
#define _mm512_sub_round_pd _mm512_sub_round_ps
#define _mm512_mul_round_pd _mm512_mul_round_ps
#define _mm512_fmadd_round_pd _mm512_fmadd_round_ps
#define _mm512_fmsub_round_pd _mm512_fmsub_round_ps
#define _mm512_fnmadd_round_pd _mm512_fnmadd_round_ps
#define _mm512_fnmsub_round_pd _mm512_fnmsub_round_ps
#define _mm512_max_round_pd _mm512_max_round_ps
#define _mm512_min_round_pd _mm512_min_round_ps
#define _mm512_mask_add_round_ps(src, m, a, b, mode) nax::portable::choose(m, _mm512_add_round_ps(a, b, mode), src)
#define _mm512_mask_sub_round_ps(src, m, a, b, mode) nax::portable::choose(m, _mm512_sub_round_ps(a, b, mode), src)
#define _mm512_mask_mul_round_ps(src, m, a, b, mode) nax::portable::choose(m, _mm512_mul_round_ps(a, b, mode), src)
#define _mm512_mask_add_round_pd _mm512_mask_add_round_ps
#define _mm512_mask_sub_round_pd _mm512_mask_sub_round_ps
#define _mm512_mask_mul_round_pd _mm512_mask_mul_round_ps

#define _mm512_getexp_round_ps(x, sae) nax::portable::map(nax::portable::Exponent{}, x)
#define _mm512_getmant_round_ps(x, interval, sign, sae) nax::portable::mantissa<(interval), (sign)>(x)
#define _mm512_scalef_round_ps(x, n, mode) nax::portable::rounded<(mode)>(nax::portable::Scale{}, x, n)
#define _mm512_roundscale_round_ps(x, control, sae) nax::portable::map(nax::portable::RoundScale<(control)>{}, x)
#define _mm512_range_round_ps(a, b, control, sae) nax::portable::range<(control)>(a, b)
#define _mm512_fixupimm_round_ps(x, special, table, control, sae) nax::portable::fix_up<(control)>(x, special, table)
#define _mm512_rcp14_ps(x) nax::portable::map(nax::portable::reciprocal14, x)

#define _mm512_cmp_round_ps_mask(a, b, predicate, sae) nax::portable::compare<(predicate)>(a, b)
#define _mm512_cmp_round_pd_mask _mm512_cmp_round_ps_mask
#define _mm512_fpclass_ps_mask(x, classes) \
    nax::portable::sign_mask(nax::portable::map(nax::portable::InClass<(classes)>{}, x))
#define _mm512_mask_mov_ps(no, m, yes) nax::portable::choose(m, yes, no)
#define _mm512_mask_mov_pd(no, m, yes) nax::portable::choose(m, yes, no)
#define _mm512_mask_mov_epi32(no, m, yes) (__m512i) nax::portable::choose(m, (__m512)(yes), (__m512)(no))
#define _mm512_mask_mov_epi64(no, m, yes) (__m512i) nax::portable::choose(m, (__m512d)(yes), (__m512d)(no))
#define _mm512_maskz_mov_ps(m, x) nax::portable::choose(m, x, __m512{})
#define _mm512_maskz_mov_pd(m, x) nax::portable::choose(m, x, __m512d{})
#define _mm512_permutexvar_ps(index, table) nax::portable::look_up(index, table)
#define _mm512_permutex2var_ps(low, index, high) nax::portable::look_up(index, low, high)

namespace nax::portable {

template <_MM_MANTISSA_NORM_ENUM Interval, _MM_MANTISSA_SIGN_ENUM Sign>
NAX_LANES __m512 mantissa(__m512 x) {
    static_assert(Interval == _MM_MANT_NORM_1_2 && Sign != _MM_MANT_SIGN_zero);
    return map(Mantissa<Sign == _MM_MANT_SIGN_nan>{}, x);
}
template <int Control>
NAX_LANES __m512 fix_up(__m512 x, __m512 special, __m512i table) {
    static_assert(Control == 0);
    return map(FixUp{}, x, special, table);
}
template <int Table>
NAX_LANES __m512i bit_choose(__m512i chooser, __m512i yes, __m512i no) {
    static_assert(Table == 0xCA);
    return (chooser & yes) | (~chooser & no);
}
template <int Control>
NAX_LANES __m512 range(__m512 a, __m512 b) {
    static_assert(Control == 2);
    return map(SmallerMagnitude{}, a, b);
}

}  // namespace nax::portable

// Integers: comparisons, shifts, bits.
#define _mm512_cmpeq_epi32_mask(a, b) \
    nax::portable::compare_integers<__mmask16, nax::portable::Ints>(std::equal_to<>{}, a, b)
#define _mm512_cmplt_epi32_mask(a, b) \
    nax::portable::compare_integers<__mmask16, nax::portable::Ints>(std::less<>{}, a, b)
#define _mm512_cmpgt_epi32_mask(a, b) \
    nax::portable::compare_integers<__mmask16, nax::portable::Ints>(std::greater<>{}, a, b)
#define _mm512_cmpge_epi32_mask(a, b) \
    nax::portable::compare_integers<__mmask16, nax::portable::Ints>(std::greater_equal<>{}, a, b)
#define _mm512_cmpge_epu32_mask(a, b) \
    nax::portable::compare_integers<__mmask16, nax::portable::Unsigned>(std::greater_equal<>{}, a, b)
#define _mm512_test_epi32_mask(a, b) \
    nax::portable::compare_integers<__mmask16, nax::portable::Ints>(nax::portable::SharesBit{}, a, b)
#define _mm512_cmpeq_epi64_mask(a, b) nax::portable::compare_integers<__mmask8, __m256i>(std::equal_to<>{}, a, b)
#define _mm512_cmplt_epi64_mask(a, b) nax::portable::compare_integers<__mmask8, __m256i>(std::less<>{}, a, b)
#define _mm512_cmpgt_epi64_mask(a, b) nax::portable::compare_integers<__mmask8, __m256i>(std::greater<>{}, a, b)
#define _mm512_cmpge_epi64_mask(a, b) nax::portable::compare_integers<__mmask8, __m256i>(std::greater_equal<>{}, a, b)
#define _mm512_cmpge_epu64_mask(a, b) \
    nax::portable::compare_integers<__mmask8, nax::portable::Unsigned64>(std::greater_equal<>{}, a, b)
#define _mm512_test_epi64_mask(a, b) \
    nax::portable::compare_integers<__mmask8, __m256i>(nax::portable::SharesBit{}, a, b)
#define _mm512_movepi32_mask(x) nax::portable::sign_mask((__m512)(x))
#define _mm512_movepi64_mask(x) nax::portable::sign_mask((__m512d)(x))
#define _mm512_srli_epi32(x, count) (__m512i)((nax::portable::AllUnsigned)(x) >> (count))
#define _mm512_srli_epi64(x, count) (__m512i)((nax::portable::AllUnsigned64)(x) >> (count))
#define _mm512_slli_epi32(x, count) (__m512i)((nax::portable::AllUnsigned)(x) << (count))
#define _mm512_slli_epi64(x, count) (__m512i)((nax::portable::AllUnsigned64)(x) << (count))
#define _mm512_ternarylogic_epi32(a, b, c, table) nax::portable::bit_choose<(table)>(a, b, c)
#define _mm512_ternarylogic_epi64(a, b, c, table) nax::portable::bit_choose<(table)>(a, b, c)

// Conversions and moves.
#define _mm512_cvt_roundps_epi32(x, mode) nax::portable::to_int<(mode)>(x)
#define _mm512_cvt_roundepi32_ps(x, mode) nax::portable::to_float<(mode)>(x)
#define _mm512_loadu_ps(p) nax::portable::load<__m512>(p)
#define _mm512_loadu_pd(p) nax::portable::load<__m512d>(p)
#define _mm512_mask_loadu_ps(x, m, p) nax::portable::load_masked(x, m, p)
#define _mm512_mask_storeu_ps(p, m, x) nax::portable::store_masked(p, m, x)
#define _mm512_storeu_ps(p, x) nax::portable::store(p, x)
#define _mm512_storeu_pd(p, x) nax::portable::store(p, x)

// Not in use.
__m512 _mm512_div_round_ps(__m512, __m512, int);
__m512d _mm512_div_round_pd(__m512d, __m512d, int);
__m512 _mm512_sqrt_round_ps(__m512, int);
__m512d _mm512_sqrt_round_pd(__m512d, int);
__m512 _mm512_rsqrt14_ps(__m512);
__m512d _mm512_rsqrt14_pd(__m512d);
__m512d _mm512_rcp14_pd(__m512d);
__m512d _mm512_getexp_round_pd(__m512d, int);
__m512d _mm512_getmant_round_pd(__m512d, int, int, int);
__m512d _mm512_scalef_round_pd(__m512d, __m512d, int);
__m512d _mm512_roundscale_round_pd(__m512d, int, int);
__m512 _mm512_reduce_round_ps(__m512, int, int);
__m512d _mm512_reduce_round_pd(__m512d, int, int);
__m512d _mm512_fixupimm_round_pd(__m512d, __m512d, __m512i, int, int);
__m512d _mm512_range_round_pd(__m512d, __m512d, int, int);
__mmask8 _mm512_fpclass_pd_mask(__m512d, int);
__m512d _mm512_permutexvar_pd(__m512i, __m512d);
__m512d _mm512_permutex2var_pd(__m512d, __m512i, __m512d);
__m512i _mm512_cvt_roundpd_epi64(__m512d, int);
__m512d _mm512_cvt_roundepi64_pd(__m512i, int);
__m512d _mm512_cvt_roundps_pd(__m256, int);
__m256 _mm512_cvt_roundpd_ps(__m512d, int);
__m256 _mm512_castps512_ps256(__m512);
__m512 _mm512_castps256_ps512(__m256);
__m512d _mm512_castpd256_pd512(__m256d);
__m128 _mm512_castps512_ps128(__m512);
__m128d _mm512_castpd512_pd128(__m512d);
__m256 _mm512_extractf32x8_ps(__m512, int);
__m128 _mm512_extractf32x4_ps(__m512, int);
__m128d _mm512_extractf64x2_pd(__m512d, int);
__m512 _mm512_insertf32x8(__m512, __m256, int);
__m512d _mm512_insertf64x4(__m512d, __m256d, int);
__m512d _mm512_mask_loadu_pd(__m512d, __mmask8, const void*);
void _mm512_mask_storeu_pd(void*, __mmask8, __m512d);
