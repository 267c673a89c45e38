// Floating-point operations on half registers. Lanes that the instruction doesn't compute get 1.0 as every operand, so
// that they raise no flag; the caller has put the wanted rounding mode and denormal handling into MXCSR.
#pragma once

#include "tools/interpreter/lanes.h"

namespace nax::emulator {

inline __m256d benign(__m256d x, __m256i needed) {
    return _mm256_blendv_pd(_mm256_set1_pd(1.0), x, _mm256_castsi256_pd(needed));
}
inline __m256 benign(__m256 x, __m256i needed) {
    return _mm256_blendv_ps(_mm256_set1_ps(1.0f), x, _mm256_castsi256_ps(needed));
}

template <class T>
using HalfOf = std::conditional_t<sizeof(T) == 8, __m256d, __m256>;

template <class T>
HalfOf<T> half(const Zmm& z, unsigned h) {
    if constexpr (sizeof(T) == 8) return _mm256_castsi256_pd(z.y[h]);
    else return _mm256_castsi256_ps(z.y[h]);
}
inline void set_half(Zmm& z, unsigned h, __m256d x) { z.y[h] = _mm256_castpd_si256(x); }
inline void set_half(Zmm& z, unsigned h, __m256 x) { z.y[h] = _mm256_castps_si256(x); }

// r = F(operands...) on the lanes of `mask`.
template <class T, class F, class... Zmms>
void compute(Zmm& r, std::uint64_t mask, const Zmms&... operands) {
    constexpr unsigned per_half = 32 / sizeof(T);
    for (unsigned h = 0; h < 2; ++h) {
        const std::uint64_t part = (mask >> (h * per_half)) & low_bits(per_half);
        if (part == low_bits(per_half)) {
            set_half(r, h, F{}(half<T>(operands, h)...));
        } else if (part) {
            const __m256i needed = lane_mask<T>(part, 0);
            set_half(r, h, F{}(benign(half<T>(operands, h), needed)...));
        } else {
            r.y[h] = _mm256_setzero_si256();
        }
    }
}

// Lane 0 of a scalar instruction's last source, in a register image.
template <class T>
Zmm scalar_operand(const State& s, const Op& o) {
    Zmm r{};
    *lanes<T>(r) = o.mem ? (scalar_active(s, o) ? load<T>(s, o) : T{}) : *lanes<T>(s.z[o.rm]);
    return r;
}

// Flags, raised by an operation that has the wanted effect and no other.
inline void raise_invalid() {
    __m128 x = _mm_set_ss(-1.0f);
    asm volatile("sqrtss %0,%0" : "+x"(x));
}
inline void raise_zero_divide() {
    __m128 x = _mm_set_ss(1.0f);
    asm volatile("divss %1,%0" : "+x"(x) : "x"(_mm_setzero_ps()));
}
inline void raise_inexact() {
    __m128 x = _mm_set_ss(1.0f);
    asm volatile("addss %1,%0" : "+x"(x) : "x"(_mm_set_ss(0x1p-60f)));
}
// Unless denormals count as zero, in which case the comparison doesn't see one.
inline void raise_denormal() {
    asm volatile("comisd %1,%0" : : "x"(_mm_setzero_pd()), "x"(_mm_castsi128_pd(_mm_cvtsi32_si128(1))) : "cc");
}
inline bool denormals_are_zero() { return _mm_getcsr() & 0x40; }

// The fields of the two formats.
template <class T>
struct Format;
template <>
struct Format<double> {
    using Bits = std::uint64_t;
    using Signed = std::int64_t;
    static constexpr int fraction_bits = 52, bias = 1023;
    static constexpr Bits sign = 1ull << 63, exponent = 0x7FFull << 52, fraction = (1ull << 52) - 1, quiet = 1ull << 51;
    static constexpr Bits one = 0x3FFull << 52, indefinite = sign | exponent | quiet;
};
template <>
struct Format<float> {
    using Bits = std::uint32_t;
    using Signed = std::int32_t;
    static constexpr int fraction_bits = 23, bias = 127;
    static constexpr Bits sign = 1u << 31, exponent = 0xFFu << 23, fraction = (1u << 23) - 1, quiet = 1u << 22;
    static constexpr Bits one = 0x7Fu << 23, indefinite = sign | exponent | quiet;
};
template <class T> bool is_nan(typename Format<T>::Bits x) { return (x & ~Format<T>::sign) > Format<T>::exponent; }
template <class T> bool is_signaling(typename Format<T>::Bits x) { return is_nan<T>(x) && !(x & Format<T>::quiet); }
template <class T> bool is_denormal(typename Format<T>::Bits x) { return !(x & Format<T>::exponent) && (x & Format<T>::fraction); }

template <class T>
typename Format<T>::Bits bits_of(T x) {
    typename Format<T>::Bits b;
    std::memcpy(&b, &x, sizeof b);
    return b;
}
template <class T>
T from_bits(typename Format<T>::Bits b) {
    T x;
    std::memcpy(&x, &b, sizeof x);
    return x;
}

// Functions on bit patterns, for the instructions without a counterpart on the host. F::apply<T>(Bits..., const Op&).
template <class T, class F>
void packed_bits1(State& s, const Op& o) {
    using Bits = typename Format<T>::Bits;
    Zmm buffer, r{};
    const Zmm& a = source<Bits>(s, o, buffer);
    for (std::uint64_t m = active<T>(s, o); m; m &= m - 1) {
        const auto i = static_cast<unsigned>(__builtin_ctzll(m));
        lanes<Bits>(r)[i] = F::template apply<T>(lanes<Bits>(a)[i], o);
    }
    write<Bits>(s, o, r);
}
template <class T, class F>
void packed_bits2(State& s, const Op& o) {
    using Bits = typename Format<T>::Bits;
    Zmm buffer, r{};
    const Zmm& b = source<Bits>(s, o, buffer);
    for (std::uint64_t m = active<T>(s, o); m; m &= m - 1) {
        const auto i = static_cast<unsigned>(__builtin_ctzll(m));
        lanes<Bits>(r)[i] = F::template apply<T>(lanes<Bits>(s.z[o.v])[i], lanes<Bits>(b)[i], o);
    }
    write<Bits>(s, o, r);
}
template <class T, class F>
void scalar_bits1(State& s, const Op& o) {
    using Bits = typename Format<T>::Bits;
    const Zmm b = scalar_operand<Bits>(s, o);
    write_scalar<Bits>(s, o, scalar_active(s, o) ? F::template apply<T>(*lanes<Bits>(b), o) : Bits{0});
}
template <class T, class F>
void scalar_bits2(State& s, const Op& o) {
    using Bits = typename Format<T>::Bits;
    const Zmm b = scalar_operand<Bits>(s, o);
    const Bits a = *lanes<Bits>(s.z[o.v]);
    write_scalar<Bits>(s, o, scalar_active(s, o) ? F::template apply<T>(a, *lanes<Bits>(b), o) : Bits{0});
}

}  // namespace nax::emulator
