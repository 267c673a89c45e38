// What the exponentials share: the shifter that splits x log2(b) into N and a table index, bounds that keep a remainder
// finite, and the range of ordinary arguments.
#pragma once

#include "vmath/frame/memory.h"

namespace nax::vmath::NAX_ISA {

// 1.5 2^48 with 1023*16 in its low bits: a sum with it has 2^-4 as unit, so its low four bits are N's fraction.
inline constexpr double kSixteenthsShifter = 0x1.8000000003ff0p+48;

// Without its second-highest bit a value below 2 stays as it is, a larger one becomes one below 1, and Inf and NaN
// become finite: the polynomial of such a lane raises nothing.
inline constexpr int64_t kBelowTwoDouble = ~(int64_t{1} << 62);
inline constexpr int32_t kBelowTwoSingle = ~(int32_t{1} << 30);

// Arguments for the vector code: magnitudes below a limit, and NaN. The rest is rare.
template <class E>
struct OrdinaryRange {
    using Vector = typename E::Vector;
    using Integer = typename E::Integer;
    Vector magnitude;
    Vector largest;

    constexpr OrdinaryRange(typename E::Element limit)
        : magnitude(E::row_of_bits(~E::sign_bit)), largest(E::row_of_bits(std::bit_cast<Integer>(limit) - 1)) {}

    // Negative in the lanes of rare arguments and of NaN.
    NAX_VEC auto excess(Vector x) const { return bits(largest) - bits(bit_and(x, magnitude)); }
    NAX_VEC auto exceeded(Vector x) const { return greater(bit_and(x, magnitude), largest); }
};

}  // namespace nax::vmath::NAX_ISA
