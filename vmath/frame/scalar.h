// Helpers of the scalar paths: bit patterns, statuses, and operations done for their exception flags.
#pragma once

#include <bit>
#include <cstdint>

#include "nax/error.h"

namespace nax::vmath {

enum Status : int32_t {
    kSuccess = ARQ_STATUS_SUCCESS,
    kDomain = ARQ_STATUS_DOMAIN,
    kPole = ARQ_STATUS_SINGULARITY,
    kOverflow = ARQ_STATUS_OVERFLOW,
    kUnderflow = ARQ_STATUS_UNDERFLOW,
};

template <class T>
struct Format;
template <>
struct Format<double> {
    using Unsigned = uint64_t;
    static constexpr int mantissa_bits = 52, bias = 1023;
};
template <>
struct Format<float> {
    using Unsigned = uint32_t;
    static constexpr int mantissa_bits = 23, bias = 127;
};

template <class T>
constexpr typename Format<T>::Unsigned bits_of(T x) {
    return std::bit_cast<typename Format<T>::Unsigned>(x);
}
template <class T>
constexpr T from_bits(typename Format<T>::Unsigned bits) {
    return std::bit_cast<T>(bits);
}

// x, unknown to the optimiser: an operation on it happens at run time and raises its flags.
template <class T>
[[gnu::always_inline]] inline T hide(T x) {
    asm volatile("" : "+x"(x));
    return x;
}
// Keeps a value that is computed for its flags alone.
template <class T>
[[gnu::always_inline]] inline void force(T x) {
    asm volatile("" : : "x"(x));
}

}  // namespace nax::vmath
