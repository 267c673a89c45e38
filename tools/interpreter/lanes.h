// Operand access for the semantic functions: sources with broadcast and suppressed faults, masked results.
#pragma once

#include <cstring>
#include <type_traits>

#include "tools/interpreter/op.h"

namespace nax::emulator {

template <class T>
T* lanes(Zmm& z) {
    if constexpr (std::is_same_v<T, double>) return z.f64;
    else if constexpr (std::is_same_v<T, float>) return z.f32;
    else if constexpr (std::is_same_v<T, std::uint64_t>) return z.u64;
    else if constexpr (std::is_same_v<T, std::uint32_t>) return z.u32;
    else if constexpr (std::is_same_v<T, std::uint16_t>) return z.u16;
    else if constexpr (std::is_same_v<T, std::uint8_t>) return z.u8;
    else if constexpr (std::is_same_v<T, std::int64_t>) return z.i64;
    else if constexpr (std::is_same_v<T, std::int32_t>) return z.i32;
    else if constexpr (std::is_same_v<T, std::int16_t>) return z.i16;
    else return z.i8;
}
template <class T>
const T* lanes(const Zmm& z) { return lanes<T>(const_cast<Zmm&>(z)); }

template <std::size_t Size>
using UnsignedOf = std::conditional_t<Size == 8, std::uint64_t,
    std::conditional_t<Size == 4, std::uint32_t, std::conditional_t<Size == 2, std::uint16_t, std::uint8_t>>>;

template <class T>
constexpr unsigned kLanes = 64 / sizeof(T);  // of a full register

inline std::uint64_t low_bits(unsigned count) { return count >= 64 ? ~0ull : (1ull << count) - 1; }

inline std::uint64_t effective_address(const State& s, const Op& o) {
    return s.gpr[o.segment] + s.gpr[o.base] + (s.gpr[o.index] << o.scale) + static_cast<std::uint64_t>(o.disp);
}
inline char* pointer(const State& s, const Op& o) { return reinterpret_cast<char*>(effective_address(s, o)); }

// Lanes of type T that the instruction writes.
template <class T>
std::uint64_t active(const State& s, const Op& o) {
    const std::uint64_t all = low_bits(o.vl / unsigned{sizeof(T)});
    return o.mask ? s.k[o.mask] & all : all;
}
inline bool scalar_active(const State& s, const Op& o) { return !o.mask || (s.k[o.mask] & 1); }

// All-ones lanes where the bits of `mask` are set: the half-register `half` of lanes of type T.
template <class T>
__m256i lane_mask(std::uint64_t mask, unsigned half) {
    mask >>= half * 32 / sizeof(T);
    if constexpr (sizeof(T) == 8) {
        const __m256i bit = _mm256_setr_epi64x(1, 2, 4, 8);
        return _mm256_cmpeq_epi64(_mm256_and_si256(_mm256_set1_epi64x(static_cast<long long>(mask)), bit), bit);
    } else if constexpr (sizeof(T) == 4) {
        const __m256i bit = _mm256_setr_epi32(1, 2, 4, 8, 16, 32, 64, 128);
        return _mm256_cmpeq_epi32(_mm256_and_si256(_mm256_set1_epi32(static_cast<int>(mask)), bit), bit);
    } else if constexpr (sizeof(T) == 2) {
        const __m256i bit = _mm256_setr_epi16(1, 2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096, 8192, 16384,
                                              -32768);
        return _mm256_cmpeq_epi16(_mm256_and_si256(_mm256_set1_epi16(static_cast<short>(mask)), bit), bit);
    } else {
        const __m256i bit = _mm256_set1_epi64x(static_cast<long long>(0x8040201008040201ull));
        const __m256i byte = _mm256_setr_epi64x(0, 0x0101010101010101, 0x0202020202020202, 0x0303030303030303);
        const __m256i spread = _mm256_shuffle_epi8(_mm256_set1_epi32(static_cast<int>(mask)), byte);
        return _mm256_cmpeq_epi8(_mm256_and_si256(spread, bit), bit);
    }
}

// Writes `bytes` of `r` to a register: above them legacy encodings keep what is there, all others clear.
inline void write_plain(Zmm& d, const Op& o, const Zmm& r, unsigned bytes) {
    if (bytes == 64) {
        d.y[0] = r.y[0];
        d.y[1] = r.y[1];
        return;
    }
    if (bytes == 32) {
        d.y[0] = r.y[0];
    } else {
        d.x[0] = r.x[0];
        if (o.encoding == kLegacy) return;
        d.x[1] = _mm_setzero_si128();
    }
    d.y[1] = _mm256_setzero_si256();
}

// Writes the active lanes of `r`; the others are kept or cleared as the instruction says. `mask` counts from lane 0.
template <class T>
void write_masked(Zmm& d, const Op& o, const Zmm& r, std::uint64_t mask, unsigned bytes) {
    Zmm merged;
    for (unsigned h = 0; h < 2; ++h) {
        const __m256i select = lane_mask<T>(mask, h);
        merged.y[h] = o.zeroing ? _mm256_and_si256(r.y[h], select) : _mm256_blendv_epi8(d.y[h], r.y[h], select);
    }
    write_plain(d, o, merged, bytes);
}

template <class T>
void write(State& s, const Op& o, const Zmm& r) {
    if (o.mask) write_masked<T>(s.z[o.reg], o, r, s.k[o.mask], o.vl);
    else write_plain(s.z[o.reg], o, r, o.vl);
}

// Lane 0 is the result, the rest of the low 128 bits comes from the first source.
template <class T>
void write_scalar(State& s, const Op& o, T r) {
    Zmm& d = s.z[o.reg];
    Zmm merged = s.z[o.v];
    T* low = lanes<T>(merged);
    if (scalar_active(s, o)) *low = r;
    else if (o.zeroing) *low = T{};
    else *low = *lanes<T>(d);
    write_plain(d, o, merged, 16);
}

// Comparison results: lanes outside the mask or the vector length are clear.
template <class T>
void write_mask(State& s, const Op& o, std::uint64_t bits) { s.k[o.reg & 7] = bits & active<T>(s, o); }

inline void load_bytes(Zmm& d, const char* p, unsigned bytes) {
    d.y[0] = d.y[1] = _mm256_setzero_si256();
    switch (bytes) {
        case 64:
            d.y[0] = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
            d.y[1] = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 32));
            break;
        case 32: d.y[0] = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); break;
        case 16: d.x[0] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); break;
        case 8: std::memcpy(&d, p, 8); break;
        case 4: std::memcpy(&d, p, 4); break;
        default: std::memcpy(&d, p, 2);
    }
}

// Touches the elements of set bits only: the others may lie on a page that isn't there.
template <class T>
void load_masked(Zmm& d, const char* p, std::uint64_t mask) {
    d.y[0] = d.y[1] = _mm256_setzero_si256();
    for (; mask; mask &= mask - 1) {
        const auto i = static_cast<unsigned>(__builtin_ctzll(mask));
        std::memcpy(reinterpret_cast<char*>(&d) + i * sizeof(T), p + i * sizeof(T), sizeof(T));
    }
}
template <class T>
void store_masked(char* p, const Zmm& r, std::uint64_t mask) {
    for (; mask; mask &= mask - 1) {
        const auto i = static_cast<unsigned>(__builtin_ctzll(mask));
        std::memcpy(p + i * sizeof(T), reinterpret_cast<const char*>(&r) + i * sizeof(T), sizeof(T));
    }
}

template <class T>
void splat(Zmm& d, T value) {
    for (unsigned i = 0; i < kLanes<T>; ++i) lanes<T>(d)[i] = value;
}

// The last source: a register, a vector in memory, or one element broadcast. `lanes_mask` tells the elements needed.
template <class T>
const Zmm& source(const State& s, const Op& o, Zmm& buffer, unsigned bytes, std::uint64_t needed) {
    if (!o.mem) return s.z[o.rm];
    const char* p = pointer(s, o);
    if (o.broadcast) {
        UnsignedOf<sizeof(T)> value{};
        if (needed) std::memcpy(&value, p, sizeof value);
        splat(buffer, value);
    } else if (o.mask && needed != low_bits(bytes / unsigned{sizeof(T)})) {
        load_masked<T>(buffer, p, needed);
    } else {
        load_bytes(buffer, p, bytes);
    }
    return buffer;
}
template <class T>
const Zmm& source(const State& s, const Op& o, Zmm& buffer) {
    return source<T>(s, o, buffer, o.vl, active<T>(s, o));
}

// A source that is read whatever the mask says, as permutations do.
template <class T>
const Zmm& whole_source(const State& s, const Op& o, Zmm& buffer) {
    if (!o.mem) return s.z[o.rm];
    if (o.broadcast) {
        UnsignedOf<sizeof(T)> value;
        std::memcpy(&value, pointer(s, o), sizeof value);
        splat(buffer, value);
    } else {
        load_bytes(buffer, pointer(s, o), o.vl);
    }
    return buffer;
}

template <class T>
T load(const State& s, const Op& o) {
    T value;
    std::memcpy(&value, pointer(s, o), sizeof value);
    return value;
}
template <class T>
void store(const State& s, const Op& o, T value) { std::memcpy(pointer(s, o), &value, sizeof value); }

// Lane 0 of the last source; not read from memory when the mask suppresses it.
template <class T>
T scalar_source(const State& s, const Op& o) {
    if (!o.mem) return *lanes<T>(s.z[o.rm]);
    return scalar_active(s, o) ? load<T>(s, o) : T{};
}

// r[i] = F(a[i]), F(a[i], b[i]) for every lane. Lanes beyond the vector length are computed and dropped.
template <class T, class F>
void map1(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& a = source<T>(s, o, buffer);
    for (unsigned i = 0; i < kLanes<T>; ++i) lanes<T>(r)[i] = static_cast<T>(F{}(lanes<T>(a)[i]));
    write<T>(s, o, r);
}
template <class T, class F>
void map2(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& b = source<T>(s, o, buffer);
    const Zmm& a = s.z[o.v];
    for (unsigned i = 0; i < kLanes<T>; ++i) lanes<T>(r)[i] = static_cast<T>(F{}(lanes<T>(a)[i], lanes<T>(b)[i]));
    write<T>(s, o, r);
}

}  // namespace nax::emulator
