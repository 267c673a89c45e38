// The 14-bit reciprocal of the portable kernels. Processors promise a relative error below 2^-14 and differ in the bits
// beyond, so the kernels' lanes take it from here.
#pragma once

#include <immintrin.h>

namespace nax::portable {

using Reciprocal = __m256 (*)(__m256);

// The nearest value of 14 fraction bits, as the tests' interpreter has it. For x in [1, 2) and NaN.
inline __m256 nearest_reciprocal(__m256 x) {
    const __m256 r = _mm256_div_ps(_mm256_set1_ps(1.0f), x);
    const __m256i rounded = _mm256_add_epi32((__m256i)r, _mm256_set1_epi32(0x100));
    const __m256 is_nan = _mm256_cmp_ps(x, x, _CMP_UNORD_Q);
    return _mm256_blendv_ps((__m256)_mm256_andnot_si256(_mm256_set1_epi32(0x1FF), rounded), r, is_nan);
}

// One a hair further off than any processor's may be: below the exact one for Sign -1, above for 1.
template <int Sign>
inline __m256 extreme_reciprocal(__m256 x) {
    const __m256d factor = _mm256_set1_pd(1 + Sign * (0x1p-14 + 0x1p-23));
    const __m256d low = _mm256_div_pd(factor, _mm256_cvtps_pd(_mm256_castps256_ps128(x)));
    const __m256d high = _mm256_div_pd(factor, _mm256_cvtps_pd(_mm256_extractf128_ps(x, 1)));
    return _mm256_set_m128(_mm256_cvtpd_ps(high), _mm256_cvtpd_ps(low));
}

inline thread_local Reciprocal reciprocal14 = nearest_reciprocal;

}  // namespace nax::portable
