// Rounding to integers or multiples of powers of two, and conversions between formats.
#include <limits>

#include "tools/interpreter/float_lanes.h"

namespace nax::emulator {
namespace {

using U16 = std::uint16_t;
using U32 = std::uint32_t;
using U64 = std::uint64_t;
using I32 = std::int32_t;
using I64 = std::int64_t;

enum Rounding : unsigned { kNearest, kDown, kUp, kToZero, kCurrent };

// To an integer in the given direction; no flag but that of a signaling NaN.
template <class T>
T round_to_integer(T x, unsigned rounding) {
    const auto rounded = [&]<int Mode>(std::integral_constant<int, Mode>) {
        if constexpr (sizeof(T) == 8) {
            const __m128d v = _mm_set_sd(x);
            return _mm_cvtsd_f64(_mm_round_sd(v, v, Mode | _MM_FROUND_NO_EXC));
        } else {
            const __m128 v = _mm_set_ss(x);
            return _mm_cvtss_f32(_mm_round_ss(v, v, Mode | _MM_FROUND_NO_EXC));
        }
    };
    switch (rounding) {
        case kNearest: return rounded(std::integral_constant<int, 0>{});
        case kDown: return rounded(std::integral_constant<int, 1>{});
        case kUp: return rounded(std::integral_constant<int, 2>{});
        case kToZero: return rounded(std::integral_constant<int, 3>{});
        default: return rounded(std::integral_constant<int, 4>{});
    }
}
unsigned rounding_of(const Op& o) { return o.imm & 4 ? kCurrent : static_cast<unsigned>(o.imm) & 3; }

// To a multiple of 2^-M, M in the upper half of the immediate (which other encodings leave zero).
template <class T>
T rounded_multiple(T x, const Op& o) {
    using F = Format<T>;
    const int m = o.encoding == kEvex ? static_cast<int>(o.imm >> 4 & 15) : 0;
    const int exponent = static_cast<int>((bits_of<T>(x) & F::exponent) >> F::fraction_bits) - F::bias;
    if (exponent + m >= F::fraction_bits) return x;
    const T scale = from_bits<T>(static_cast<typename F::Bits>(m + F::bias) << F::fraction_bits);
    return round_to_integer<T>(x * scale, rounding_of(o)) / scale;
}
template <class T, class Body>
T quietly(const Body& body) {  // all exceptions masked, flags as before
    const U32 saved = _mm_getcsr();
    _mm_setcsr(saved | 0x1F80);
    volatile T r = body();
    _mm_setcsr(saved);
    return r;
}

struct RoundScale {
    template <class T>
    static typename Format<T>::Bits apply(typename Format<T>::Bits b, const Op& o) {
        if (is_nan<T>(b)) {
            if (is_signaling<T>(b)) raise_invalid();
            return b | Format<T>::quiet;
        }
        if ((b & ~Format<T>::sign) == Format<T>::exponent) return b;
        if (is_denormal<T>(b) && denormals_are_zero()) b &= Format<T>::sign;
        const volatile T x = from_bits<T>(b);
        const T r = quietly<T>([&] { return rounded_multiple<T>(x, o); });
        if (!(o.imm & 8) && bits_of<T>(r) != b && !((b | bits_of<T>(r)) == Format<T>::sign)) raise_inexact();
        return bits_of<T>(r);
    }
};
// What RoundScale takes away.
struct Reduce {
    template <class T>
    static typename Format<T>::Bits apply(typename Format<T>::Bits b, const Op& o) {
        if (is_nan<T>(b)) {
            if (is_signaling<T>(b)) raise_invalid();
            return b | Format<T>::quiet;
        }
        if ((b & ~Format<T>::sign) == Format<T>::exponent) return 0;
        if (is_denormal<T>(b) && denormals_are_zero()) b &= Format<T>::sign;
        const volatile T x = from_bits<T>(b);
        bool inexact = false;
        const T r = quietly<T>([&] {
            const U32 mode = rounding_of(o) == kCurrent ? _mm_getcsr() & 0x6000u : rounding_of(o) << 13;
            const volatile T multiple = rounded_multiple<T>(x, o);
            _mm_setcsr((_mm_getcsr() & ~0x603Fu) | mode);
            const volatile T difference = x - multiple;
            inexact = _mm_getcsr() & 0x20;
            return difference;
        });
        if (inexact && !(o.imm & 8)) raise_inexact();
        return bits_of<T>(r);
    }
};

// An integer from a floating-point value: inexact when it isn't one, invalid and the indefinite value when it
// doesn't fit; never both.
template <class To, class From>
To to_integer(From x, unsigned rounding) {
    constexpr To indefinite = std::is_signed_v<To> ? std::numeric_limits<To>::min() : std::numeric_limits<To>::max();
    constexpr From above = std::is_signed_v<To> ? From(U64{1} << (8 * sizeof(To) - 1)) : From(2) * From(U64{1} << (8 * sizeof(To) - 1));
    constexpr From below = std::is_signed_v<To> ? -above : From(0);
    if (is_nan<From>(bits_of<From>(x))) {
        raise_invalid();
        return indefinite;
    }
    const From whole = round_to_integer<From>(x, rounding);
    if (!(whole < above && whole >= below)) {
        raise_invalid();
        return indefinite;
    }
    // Compared by bits: the integer value is exact, and denormals that count as zero are.
    const bool denormal_zero = is_denormal<From>(bits_of<From>(x)) && denormals_are_zero();
    if (bits_of<From>(whole) != bits_of<From>(x) && !denormal_zero) raise_inexact();
    if constexpr (std::is_same_v<To, U64>) {
        constexpr From half = From(U64{1} << 63);
        return whole >= half ? static_cast<U64>(static_cast<I64>(whole - half)) + (U64{1} << 63) : static_cast<U64>(static_cast<I64>(whole));
    } else {
        return static_cast<To>(static_cast<I64>(whole));
    }
}

// Conversions of one element under the current rounding mode.
template <class To, class From>
To from_integer(From x) {
    if constexpr (std::is_same_v<From, U64>) {
        // Halved with a sticky last bit, the value fits a signed integer and rounds alike.
        if (x >> 63) {
            const To h = static_cast<To>(static_cast<I64>((x >> 1) | (x & 1)));
            return h + h;
        }
    }
    return static_cast<To>(static_cast<I64>(x));
}

template <unsigned R>
struct ToInteger {
    template <class To, class From>
    static To convert(From x) { return to_integer<To, From>(x, R); }
};
struct FromInteger {
    template <class To, class From>
    static To convert(From x) { return from_integer<To, From>(x); }
};
struct BetweenFloats {
    template <class To, class From>
    static To convert(From x) {
        if constexpr (sizeof(To) == 8) return _mm_cvtsd_f64(_mm_cvtss_sd(_mm_setzero_pd(), _mm_set_ss(x)));
        else return _mm_cvtss_f32(_mm_cvtsd_ss(_mm_setzero_ps(), _mm_set_sd(x)));
    }
};

// Lanes of From become lanes of To; the count is that of the wider type in the vector length.
template <class To, class From, class C>
void convert(State& s, const Op& o) {
    Zmm buffer, r{};
    constexpr auto widest = unsigned{sizeof(To) > sizeof(From) ? sizeof(To) : sizeof(From)};
    const unsigned count = o.vl / widest, bytes = count * unsigned{sizeof(To)};
    const U64 mask = o.mask ? s.k[o.mask] & low_bits(count) : low_bits(count);
    const Zmm& a = source<From>(s, o, buffer, count * unsigned{sizeof(From)}, mask);
    for (U64 m = mask; m; m &= m - 1) {
        const auto i = static_cast<unsigned>(__builtin_ctzll(m));
        lanes<To>(r)[i] = C::template convert<To, From>(lanes<From>(a)[i]);
    }
    if (bytes < 16) {
        Zmm merged{};
        for (unsigned i = 0; i < count; ++i) {
            if (mask >> i & 1) lanes<To>(merged)[i] = lanes<To>(r)[i];
            else if (!o.zeroing) lanes<To>(merged)[i] = lanes<To>(s.z[o.reg])[i];
        }
        return write_plain(s.z[o.reg], o, merged, 16);
    }
    if (o.mask) write_masked<To>(s.z[o.reg], o, r, mask, bytes);
    else write_plain(s.z[o.reg], o, r, bytes);
}

void half_to_single(State& s, const Op& o) {
    Zmm buffer, r{};
    const unsigned count = o.vl / 4u;
    const Zmm& a = source<U16>(s, o, buffer, count * 2, active<float>(s, o));
    for (U64 m = active<float>(s, o); m; m &= m - 1) {
        const auto i = static_cast<unsigned>(__builtin_ctzll(m));
        r.f32[i] = _mm_cvtss_f32(_mm_cvtph_ps(_mm_cvtsi32_si128(a.u16[i])));
    }
    write<float>(s, o, r);
}
U16 to_half(float x, unsigned rounding) {
    const __m128 v = _mm_set_ss(x);
    const auto low = [](__m128i h) { return static_cast<U16>(_mm_cvtsi128_si32(h)); };
    switch (rounding) {
        case kNearest: return low(_mm_cvtps_ph(v, 0));
        case kDown: return low(_mm_cvtps_ph(v, 1));
        case kUp: return low(_mm_cvtps_ph(v, 2));
        case kToZero: return low(_mm_cvtps_ph(v, 3));
        default: return low(_mm_cvtps_ph(v, 4));
    }
}
void single_to_half(State& s, const Op& o) {
    Zmm r{};
    const unsigned count = o.vl / 4u, bytes = count * 2;
    const U64 mask = o.mask ? s.k[o.mask] & low_bits(count) : low_bits(count);
    for (U64 m = mask; m; m &= m - 1) {
        const auto i = static_cast<unsigned>(__builtin_ctzll(m));
        r.u16[i] = to_half(s.z[o.reg].f32[i], rounding_of(o));
    }
    if (o.mem) return store_masked<U16>(pointer(s, o), r, mask);
    if (!o.zeroing && o.mask) {
        for (unsigned i = 0; i < count; ++i) if (!(mask >> i & 1)) r.u16[i] = s.z[o.rm].u16[i];
    }
    write_plain(s.z[o.rm], o, r, bytes < 16 ? 16 : bytes);
}

template <class To, class From>
void convert_scalar(State& s, const Op& o) {
    const Zmm a = scalar_operand<From>(s, o);
    To r{};
    if (scalar_active(s, o)) r = BetweenFloats::convert<To, From>(*lanes<From>(a));
    write_scalar<To>(s, o, r);
}
template <class From, unsigned R, bool Signed>
void scalar_to_general(State& s, const Op& o) {
    const Zmm a = scalar_operand<From>(s, o);
    const From x = *lanes<From>(a);
    using Wide = std::conditional_t<Signed, I64, U64>;
    using Narrow = std::conditional_t<Signed, I32, U32>;
    s.gpr[o.reg] = o.w ? static_cast<U64>(to_integer<Wide, From>(x, R)) : static_cast<U32>(to_integer<Narrow, From>(x, R));
}
template <class To, bool Signed>
void general_to_scalar(State& s, const Op& o) {
    const U64 x = o.w ? (o.mem ? load<U64>(s, o) : s.gpr[o.rm]) : (o.mem ? load<U32>(s, o) : static_cast<U32>(s.gpr[o.rm]));
    To r;
    if (Signed) r = from_integer<To, I64>(o.w ? static_cast<I64>(x) : static_cast<I32>(x));
    else r = from_integer<To, U64>(x);
    write_scalar<To>(s, o, r);
}

constexpr auto A = kAnyEncoding, E = kEvex, VE = kVexOrEvex;

constexpr Row rounds[] = {
    {A, M0F3A, P66, 0x08, W0, Full4, packed_bits1<float, RoundScale>, -1, kSaeOnly}, {A, M0F3A, P66, 0x09, W1, Full8, packed_bits1<double, RoundScale>, -1, kSaeOnly},
    {A, M0F3A, P66, 0x0A, W0, Mem4, scalar_bits1<float, RoundScale>, -1, kSaeOnly}, {A, M0F3A, P66, 0x0B, W1, Mem8, scalar_bits1<double, RoundScale>, -1, kSaeOnly},
    {E, M0F3A, P66, 0x56, W0, Full4, packed_bits1<float, Reduce>, -1, kSaeOnly}, {E, M0F3A, P66, 0x56, W1, Full8, packed_bits1<double, Reduce>, -1, kSaeOnly},
    {E, M0F3A, P66, 0x57, W0, Mem4, scalar_bits1<float, Reduce>, -1, kSaeOnly}, {E, M0F3A, P66, 0x57, W1, Mem8, scalar_bits1<double, Reduce>, -1, kSaeOnly},
};

constexpr Row converts[] = {
    {A, M0F, PNO, 0x5A, W0, Half4, convert<double, float, BetweenFloats>}, {A, M0F, P66, 0x5A, W1, Full8, convert<float, double, BetweenFloats>},
    {A, M0F, PNO, 0x5B, W0, Full4, convert<float, I32, FromInteger>}, {E, M0F, PNO, 0x5B, W1, Full8, convert<float, I64, FromInteger>},
    {A, M0F, P66, 0x5B, W0, Full4, convert<I32, float, ToInteger<kCurrent>>}, {A, M0F, PF3, 0x5B, W0, Full4, convert<I32, float, ToInteger<kToZero>>},
    {A, M0F, PF3, 0xE6, W0, Half4, convert<double, I32, FromInteger>}, {E, M0F, PF3, 0xE6, W1, Full8, convert<double, I64, FromInteger>},
    {A, M0F, PF2, 0xE6, W1, Full8, convert<I32, double, ToInteger<kCurrent>>}, {A, M0F, P66, 0xE6, W1, Full8, convert<I32, double, ToInteger<kToZero>>},
    {E, M0F, PNO, 0x78, W0, Full4, convert<U32, float, ToInteger<kToZero>>}, {E, M0F, PNO, 0x78, W1, Full8, convert<U32, double, ToInteger<kToZero>>},
    {E, M0F, P66, 0x78, W0, Half4, convert<U64, float, ToInteger<kToZero>>}, {E, M0F, P66, 0x78, W1, Full8, convert<U64, double, ToInteger<kToZero>>},
    {E, M0F, PNO, 0x79, W0, Full4, convert<U32, float, ToInteger<kCurrent>>}, {E, M0F, PNO, 0x79, W1, Full8, convert<U32, double, ToInteger<kCurrent>>},
    {E, M0F, P66, 0x79, W0, Half4, convert<U64, float, ToInteger<kCurrent>>}, {E, M0F, P66, 0x79, W1, Full8, convert<U64, double, ToInteger<kCurrent>>},
    {E, M0F, P66, 0x7A, W0, Half4, convert<I64, float, ToInteger<kToZero>>}, {E, M0F, P66, 0x7A, W1, Full8, convert<I64, double, ToInteger<kToZero>>},
    {E, M0F, P66, 0x7B, W0, Half4, convert<I64, float, ToInteger<kCurrent>>}, {E, M0F, P66, 0x7B, W1, Full8, convert<I64, double, ToInteger<kCurrent>>},
    {E, M0F, PF3, 0x7A, W0, Half4, convert<double, U32, FromInteger>}, {E, M0F, PF3, 0x7A, W1, Full8, convert<double, U64, FromInteger>},
    {E, M0F, PF2, 0x7A, W0, Full4, convert<float, U32, FromInteger>}, {E, M0F, PF2, 0x7A, W1, Full8, convert<float, U64, FromInteger>},
    {VE, M0F38, P66, 0x13, W0, HalfMem, half_to_single}, {VE, M0F3A, P66, 0x1D, W0, HalfMem, single_to_half, -1, kSaeOnly},
};

constexpr Row scalars[] = {
    {A, M0F, PF3, 0x5A, W0, Mem4, convert_scalar<double, float>}, {A, M0F, PF2, 0x5A, W1, Mem8, convert_scalar<float, double>},
    {A, M0F, PF3, 0x2A, W0, Mem4, general_to_scalar<float, true>}, {A, M0F, PF3, 0x2A, W1, Mem8, general_to_scalar<float, true>},
    {A, M0F, PF2, 0x2A, W0, Mem4, general_to_scalar<double, true>}, {A, M0F, PF2, 0x2A, W1, Mem8, general_to_scalar<double, true>},
    {E, M0F, PF3, 0x7B, W0, Mem4, general_to_scalar<float, false>}, {E, M0F, PF3, 0x7B, W1, Mem8, general_to_scalar<float, false>},
    {E, M0F, PF2, 0x7B, W0, Mem4, general_to_scalar<double, false>}, {E, M0F, PF2, 0x7B, W1, Mem8, general_to_scalar<double, false>},
    {A, M0F, PF3, 0x2C, WX, Mem4, scalar_to_general<float, kToZero, true>}, {A, M0F, PF2, 0x2C, WX, Mem8, scalar_to_general<double, kToZero, true>},
    {A, M0F, PF3, 0x2D, WX, Mem4, scalar_to_general<float, kCurrent, true>}, {A, M0F, PF2, 0x2D, WX, Mem8, scalar_to_general<double, kCurrent, true>},
    {E, M0F, PF3, 0x78, WX, Mem4, scalar_to_general<float, kToZero, false>}, {E, M0F, PF2, 0x78, WX, Mem8, scalar_to_general<double, kToZero, false>},
    {E, M0F, PF3, 0x79, WX, Mem4, scalar_to_general<float, kCurrent, false>}, {E, M0F, PF2, 0x79, WX, Mem8, scalar_to_general<double, kCurrent, false>},
};

}  // namespace

RowTable float_round_rows() { return table_of(rounds); }
RowTable convert_rows() { return table_of(converts); }
RowTable convert_scalar_rows() { return table_of(scalars); }

}  // namespace nax::emulator
