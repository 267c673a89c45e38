// Vectors of keys: as wide as the file's instruction set has them. Everything stands in a namespace of that set, so
// that the linker never merges bodies made for different processors.
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <type_traits>
#include <utility>

#ifdef __AVX512F__
#define NAX_PRIMITIVES_ISA isa_avx512
#else
#define NAX_PRIMITIVES_ISA isa_avx2
#endif

namespace nax::primitives {
inline namespace NAX_PRIMITIVES_ISA {

#ifdef __AVX512F__
inline constexpr int kVectorBytes = 64;
#else
inline constexpr int kVectorBytes = 32;
#endif

// Few keys are sorted faster in short vectors, whose lanes are exchanged sooner: every helper takes a size in bytes.
template <class K, int kBytes = kVectorBytes>
inline constexpr int kLanes = kBytes / static_cast<int>(sizeof(K));

template <class K, int kBytes>
struct LanesOf {
    using type [[gnu::vector_size(kBytes)]] = K;
};
template <class K, int kBytes = kVectorBytes>
using Lanes = typename LanesOf<K, kBytes>::type;

template <class K, int kBytes = kVectorBytes>
[[gnu::always_inline]] inline Lanes<K, kBytes> load(const void* from) {
#ifdef __AVX512F__
    if constexpr (kBytes == 64) return reinterpret_cast<Lanes<K, kBytes>>(_mm512_loadu_si512(from));
#endif
    if constexpr (kBytes == 32)
        return reinterpret_cast<Lanes<K, kBytes>>(_mm256_loadu_si256(static_cast<const __m256i*>(from)));
}
template <class K, int kBytes = kVectorBytes>
[[gnu::always_inline]] inline void store(void* to, Lanes<K, kBytes> v) {
#ifdef __AVX512F__
    if constexpr (kBytes == 64) _mm512_storeu_si512(to, reinterpret_cast<__m512i>(v));
#endif
    if constexpr (kBytes == 32) _mm256_storeu_si256(static_cast<__m256i*>(to), reinterpret_cast<__m256i>(v));
}

template <class K, int... I>
[[gnu::always_inline]] inline Lanes<K, 32> lane_numbers(std::integer_sequence<int, I...>) {
    return Lanes<K, 32>{I...};
}
// All ones in the first `count` lanes, which may be none or more than there are.
template <class K>
[[gnu::always_inline]] inline __m256i first_lanes(int64_t count) {
    constexpr int kCount = kLanes<K, 32>;
    const auto bounded = static_cast<K>(count <= 0 ? 0 : count >= kCount ? kCount : count);
    return reinterpret_cast<__m256i>(lane_numbers<K>(std::make_integer_sequence<int, kCount>{}) <
                                     (Lanes<K, 32>{} + bounded));
}
#ifdef __AVX512F__
template <class K>
[[gnu::always_inline]] inline auto first_lane_bits(int64_t count) {
    constexpr int kCount = kLanes<K, 64>;
    using Mask = std::conditional_t<sizeof(K) == 8, __mmask8, __mmask16>;
    return static_cast<Mask>(_bzhi_u32(0xFFFFFFFF, static_cast<uint32_t>(count <= 0        ? 0
                                                                         : count >= kCount ? kCount
                                                                                           : count)));
}
#endif

// The first `count` lanes; the others are `filler` when loaded and left alone when stored. No byte beyond the lanes is
// touched.
template <class K, int kBytes = kVectorBytes>
[[gnu::always_inline]] inline Lanes<K, kBytes> load_first(const void* from, int64_t count, K filler) {
#ifdef __AVX512F__
    if constexpr (kBytes == 64) {
        const auto rest = reinterpret_cast<__m512i>(Lanes<K, kBytes>{} + filler);
        if constexpr (sizeof(K) == 8)
            return reinterpret_cast<Lanes<K, kBytes>>(_mm512_mask_loadu_epi64(rest, first_lane_bits<K>(count), from));
        else
            return reinterpret_cast<Lanes<K, kBytes>>(_mm512_mask_loadu_epi32(rest, first_lane_bits<K>(count), from));
    }
#endif
    if constexpr (kBytes == 32) {
        const __m256i mask = first_lanes<K>(count);
        __m256i v;
        if constexpr (sizeof(K) == 8)
            v = _mm256_maskload_epi64(static_cast<const long long*>(from), mask);
        else
            v = _mm256_maskload_epi32(static_cast<const int*>(from), mask);
        return reinterpret_cast<Lanes<K, 32>>(v) | (~reinterpret_cast<Lanes<K, 32>>(mask) & filler);
    }
}
template <class K, int kBytes = kVectorBytes>
[[gnu::always_inline]] inline void store_first(void* to, int64_t count, Lanes<K, kBytes> v) {
#ifdef __AVX512F__
    if constexpr (kBytes == 64 && sizeof(K) == 8)
        _mm512_mask_storeu_epi64(to, first_lane_bits<K>(count), reinterpret_cast<__m512i>(v));
    if constexpr (kBytes == 64 && sizeof(K) == 4)
        _mm512_mask_storeu_epi32(to, first_lane_bits<K>(count), reinterpret_cast<__m512i>(v));
#endif
    if constexpr (kBytes == 32 && sizeof(K) == 8)
        _mm256_maskstore_epi64(static_cast<long long*>(to), first_lanes<K>(count), reinterpret_cast<__m256i>(v));
    if constexpr (kBytes == 32 && sizeof(K) == 4)
        _mm256_maskstore_epi32(static_cast<int*>(to), first_lanes<K>(count), reinterpret_cast<__m256i>(v));
}

template <class V>
[[gnu::always_inline]] inline V smaller(V a, V b) {
    return a < b ? a : b;
}
template <class V>
[[gnu::always_inline]] inline V larger(V a, V b) {
    return a < b ? b : a;
}

// Lane i of the result is lane Choice::lane(i) of the pair (a, b), whose lanes are numbered one after the other.
template <class Choice, class V, int... I>
[[gnu::always_inline]] inline V pick(V a, V b, std::integer_sequence<int, I...>) {
    return __builtin_shufflevector(a, b, Choice::lane(I)...);
}
template <class Choice, class V>
[[gnu::always_inline]] inline V pick(V a, V b) {
    return pick<Choice>(a, b, std::make_integer_sequence<int, static_cast<int>(sizeof(V) / sizeof(a[0]))>{});
}

// Bit i tells whether lane i of a is below that of b.
template <class K>
[[gnu::always_inline]] inline uint32_t lanes_below(Lanes<K> a, Lanes<K> b) {
#ifdef __AVX512F__
    if constexpr (sizeof(K) == 8)
        return _mm512_cmplt_epi64_mask(reinterpret_cast<__m512i>(a), reinterpret_cast<__m512i>(b));
    else
        return _mm512_cmplt_epi32_mask(reinterpret_cast<__m512i>(a), reinterpret_cast<__m512i>(b));
#else
    if constexpr (sizeof(K) == 8)
        return static_cast<uint32_t>(_mm256_movemask_pd(reinterpret_cast<__m256d>(a < b)));
    else
        return static_cast<uint32_t>(_mm256_movemask_ps(reinterpret_cast<__m256>(a < b)));
#endif
}

template <class V>
[[gnu::always_inline]] inline bool any_set(V v) {
#ifdef __AVX512F__
    return _mm512_test_epi32_mask(reinterpret_cast<__m512i>(v), reinterpret_cast<__m512i>(v)) != 0;
#else
    return _mm256_testz_si256(reinterpret_cast<__m256i>(v), reinterpret_cast<__m256i>(v)) == 0;
#endif
}

}  // namespace NAX_PRIMITIVES_ISA
}  // namespace nax::primitives
