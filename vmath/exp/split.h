// What the exponentials share: the shifters that split x log2(b) into N and a table index, and the tamed remainder.
#pragma once

#include "vmath/frame/vec.h"

namespace nax::vmath::avx512 {

// 1.5 2^48 with 1023*16 in its low bits: a sum with it has 2^-4 as unit, so its low four bits are N's fraction.
inline constexpr double kSixteenthsShifter = 0x1.8000000003ff0p+48;

// Without its second-highest bit a value below 2 stays as it is, a larger one becomes one below 1, and Inf and NaN
// become finite: the polynomial of such a lane raises nothing.
inline constexpr int64_t kBelowTwoDouble = ~(int64_t{1} << 62);
inline constexpr int32_t kBelowTwoSingle = ~(int32_t{1} << 30);

// x, or `bound` with the sign of x where that is smaller in magnitude or x is NaN.
NAX_VEC __m512d min_magnitude(__m512d x, __m512d bound) {
    return _mm512_range_round_pd(x, bound, 0x02, _MM_FROUND_NO_EXC);
}
NAX_VEC __m512 min_magnitude(__m512 x, __m512 bound) {
    return _mm512_range_round_ps(x, bound, 0x02, _MM_FROUND_NO_EXC);
}

}  // namespace nax::vmath::avx512
