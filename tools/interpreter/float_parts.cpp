// Exponent and mantissa extraction, scaling, approximations, classification, fix-up and range selection.
#include <bit>

#include "tools/interpreter/float_lanes.h"

namespace nax::emulator {
namespace {

template <class T>
using BitsOf = typename Format<T>::Bits;

template <class T>
BitsOf<T> quieted(BitsOf<T> x) {
    if (is_signaling<T>(x)) raise_invalid();
    return x | Format<T>::quiet;
}
// A denormal as the instruction sees it.
template <class T>
BitsOf<T> flushed(BitsOf<T> x) { return is_denormal<T>(x) && denormals_are_zero() ? x & Format<T>::sign : x; }

// |x| = fraction * 2^exponent with the fraction in [1,2), its bits without the leading one.
template <class T>
struct Parts {
    int exponent;
    BitsOf<T> fraction;
};
template <class T>
Parts<T> parts_of(BitsOf<T> x) {
    using F = Format<T>;
    const BitsOf<T> magnitude = x & ~F::sign;
    if (magnitude & F::exponent) return {static_cast<int>(magnitude >> F::fraction_bits) - F::bias, magnitude & F::fraction};
    const int shift = std::countl_zero(magnitude) - (int{8 * sizeof(T)} - 1 - F::fraction_bits);
    return {1 - F::bias - shift, (magnitude << shift) & F::fraction};
}

struct GetExponent {
    template <class T>
    static BitsOf<T> apply(BitsOf<T> x, const Op&) {
        using F = Format<T>;
        if (is_nan<T>(x)) return quieted<T>(x);
        x = flushed<T>(x) & ~F::sign;
        if (x == F::exponent) return x;
        if (x == 0) return F::sign | F::exponent;
        if (is_denormal<T>(x)) raise_denormal();
        return bits_of<T>(static_cast<T>(parts_of<T>(x).exponent));
    }
};

struct GetMantissa {
    template <class T>
    static BitsOf<T> apply(BitsOf<T> x, const Op& o) {
        using F = Format<T>;
        if (is_nan<T>(x)) return quieted<T>(x);
        x = flushed<T>(x);
        const bool clear_sign = o.imm & 4, refuse_negative = o.imm & 8;
        const BitsOf<T> magnitude = x & ~F::sign, sign = clear_sign ? 0 : x & F::sign;
        if (magnitude == 0) return sign | F::one;
        if ((x & F::sign) && refuse_negative) {
            raise_invalid();
            return F::indefinite;
        }
        if (magnitude == F::exponent) return sign | F::one;
        if (is_denormal<T>(x)) raise_denormal();
        const Parts<T> p = parts_of<T>(x);
        const bool upper_half = p.fraction >> (F::fraction_bits - 1);
        const unsigned interval = o.imm & 3;
        const bool halve = interval == 2 || (interval == 1 && (p.exponent & 1)) || (interval == 3 && upper_half);
        return sign | (F::one - (halve ? BitsOf<T>{1} << F::fraction_bits : 0)) | p.fraction;
    }
};

// A power of two within the normal range.
template <class T>
T power_of_two(int n) { return from_bits<T>(static_cast<BitsOf<T>>(n + Format<T>::bias) << Format<T>::fraction_bits); }

// a * 2^floor(b), rounded once.
struct Scale {
    template <class T>
    static BitsOf<T> apply(BitsOf<T> a, BitsOf<T> b, const Op&) {
        using F = Format<T>;
        b = flushed<T>(b);
        const bool b_infinite = (b & ~F::sign) == F::exponent, b_negative = (b & F::sign) != 0;
        if (is_nan<T>(a)) {
            if (is_signaling<T>(a) || is_signaling<T>(b)) raise_invalid();
            if (!is_signaling<T>(a) && b_infinite) return b_negative ? 0 : F::exponent;
            return a | F::quiet;
        }
        if (is_nan<T>(b)) return quieted<T>(b);
        a = flushed<T>(a);
        const BitsOf<T> magnitude = a & ~F::sign, sign = a & F::sign;
        if (b_infinite) {
            if (b_negative ? magnitude == F::exponent : magnitude == 0) {
                raise_invalid();
                return F::indefinite;
            }
        }
        if (is_denormal<T>(a)) raise_denormal();
        if (b_infinite) return b_negative ? sign : sign | F::exponent;
        if (magnitude == 0 || magnitude == F::exponent) return a;
        return bits_of<T>(scaled<T>(a, floor_of<T>(b)));
    }
    template <class T>
    static int floor_of(BitsOf<T> b) {
        constexpr int far = 8 * Format<T>::bias;
        const T value = from_bits<T>(b);
        if (b & ~Format<T>::sign ? (b & ~Format<T>::sign) < Format<T>::one : true) {
            return (b & Format<T>::sign) && (b & ~Format<T>::sign) ? -1 : 0;
        }
        if (parts_of<T>(b).exponent > 20) return b & Format<T>::sign ? -far : far;
        const int whole = static_cast<int>(truncated<T>(b));
        const int floor = whole - (static_cast<T>(whole) > value ? 1 : 0);
        return floor < -far ? -far : floor > far ? far : floor;
    }
    // Toward zero, from the bits: a conversion would raise the inexact flag.
    template <class T>
    static std::int64_t truncated(BitsOf<T> b) {
        const Parts<T> p = parts_of<T>(b);
        const BitsOf<T> mantissa = p.fraction | (BitsOf<T>{1} << Format<T>::fraction_bits);
        const int shift = Format<T>::fraction_bits - p.exponent;
        const auto whole = static_cast<std::int64_t>(shift >= 0 ? mantissa >> shift : mantissa << -shift);
        return b & Format<T>::sign ? -whole : whole;
    }
    template <class T>
    static T scaled(BitsOf<T> a, int n) {
        using F = Format<T>;
        const Parts<T> p = parts_of<T>(a);
        T mantissa = from_bits<T>((a & F::sign) | F::one | p.fraction);
        int exponent = p.exponent + n;
        // Two factors within the normal range; only the last product rounds.
        const int limit = F::bias - 1;
        if (exponent > 2 * limit) exponent = 2 * limit;
        if (exponent < -2 * limit) exponent = -2 * limit;
        const int first = exponent / 2;
        volatile T product = mantissa * power_of_two<T>(first);
        return product * power_of_two<T>(exponent - first);
    }
};

// Nearest value with 14 significant bits to 1/x and 1/sqrt(x): well inside the 2^-14 that the instructions promise.
template <class T>
T rounded_to_14_bits(T x) {
    using F = Format<T>;
    constexpr int dropped = F::fraction_bits - 14;
    BitsOf<T> b = bits_of<T>(x);
    b += BitsOf<T>{1} << (dropped - 1);
    return from_bits<T>(b & ~((BitsOf<T>{1} << dropped) - 1));
}
struct Reciprocal {
    template <class T>
    static BitsOf<T> apply(BitsOf<T> x, const Op&) {
        using F = Format<T>;
        if (is_nan<T>(x)) return x | F::quiet;
        x = flushed<T>(x);
        const BitsOf<T> magnitude = x & ~F::sign, sign = x & F::sign;
        if (magnitude == 0) return sign | F::exponent;
        if (magnitude == F::exponent) return sign;
        const Parts<T> p = parts_of<T>(x);
        const T mantissa = rounded_to_14_bits<T>(T{1} / from_bits<T>(F::one | p.fraction));
        const int exponent = -p.exponent;
        if (exponent > F::bias + 1 || (exponent == F::bias + 1 && mantissa == T{1})) return sign | F::exponent;
        if (exponent == F::bias + 1) return sign | bits_of<T>(mantissa * power_of_two<T>(F::bias) * T{2});
        // Results below the normal range come out unrounded, or as zero in flush mode.
        const BitsOf<T> m = bits_of<T>(mantissa);
        const int biased = static_cast<int>(m >> F::fraction_bits) + exponent;
        if (biased > 0) return sign | (static_cast<BitsOf<T>>(biased) << F::fraction_bits) | (m & F::fraction);
        if (_mm_getcsr() & 0x8000) return sign;
        const BitsOf<T> full = (m & F::fraction) | (BitsOf<T>{1} << F::fraction_bits);
        return sign | (full >> (1 - biased));
    }
};
struct ReciprocalRoot {
    template <class T>
    static BitsOf<T> apply(BitsOf<T> x, const Op&) {
        using F = Format<T>;
        if (is_nan<T>(x)) return x | F::quiet;
        x = flushed<T>(x);
        if ((x & ~F::sign) == 0) return x | F::exponent;
        if (x & F::sign) return F::indefinite;
        if (x == F::exponent) return 0;
        const Parts<T> p = parts_of<T>(x);
        const T mantissa = from_bits<T>(F::one | p.fraction) * (p.exponent & 1 ? T{2} : T{1});
        const T root = rounded_to_14_bits<T>(static_cast<T>(1.0 / __builtin_sqrt(double{mantissa})));
        return bits_of<T>(root * power_of_two<T>(-((p.exponent - (p.exponent & 1)) / 2)));
    }
};
// These two raise no flag.
template <Handler Run>
void without_flags(State& s, const Op& o) {
    const std::uint32_t saved = _mm_getcsr();
    _mm_setcsr((saved | 0x1F80) & ~0x6000u);
    Run(s, o);
    _mm_setcsr(saved);
}

enum Token { kQuietNan, kSignalingNan, kZeroToken, kOne, kMinusInfinity, kInfinity, kNegative, kPositive };

template <class T>
Token token_of(BitsOf<T> x) {
    using F = Format<T>;
    if (is_nan<T>(x)) return is_signaling<T>(x) ? kSignalingNan : kQuietNan;
    if ((x & ~F::sign) == 0) return kZeroToken;
    if (x == F::one) return kOne;
    if ((x & ~F::sign) == F::exponent) return x & F::sign ? kMinusInfinity : kInfinity;
    return x & F::sign ? kNegative : kPositive;
}
template <class T>
BitsOf<T> fixed_up(BitsOf<T> destination, BitsOf<T> x, BitsOf<T> table, const Op& o) {
    using F = Format<T>;
    x = flushed<T>(x);
    const Token token = token_of<T>(x);
    const auto imm = static_cast<unsigned>(o.imm);
    if ((token == kZeroToken && (imm & 1)) || (token == kOne && (imm & 4))) raise_zero_divide();
    if ((token == kZeroToken && (imm & 2)) || (token == kOne && (imm & 8)) || (token == kSignalingNan && (imm & 16)) ||
        (token == kMinusInfinity && (imm & 32)) || (token == kNegative && (imm & 64)) || (token == kInfinity && (imm & 128))) {
        raise_invalid();
    }
    switch (table >> (4 * token) & 15) {
        case 0: return destination;
        case 1: return x;
        case 2: return x | F::exponent | F::quiet;
        case 3: return F::indefinite;
        case 4: return F::sign | F::exponent;
        case 5: return F::exponent;
        case 6: return (x & F::sign) | F::exponent;
        case 7: return F::sign;
        case 8: return 0;
        case 9: return F::sign | F::one;
        case 10: return F::one;
        case 11: return bits_of<T>(T(0.5));
        case 12: return bits_of<T>(T(90));
        case 13: return bits_of<T>(T(0x1.921fb54442d18p0));
        case 14: return F::exponent - 1;
        default: return F::sign | (F::exponent - 1);
    }
}
template <class T>
void fix_up(State& s, const Op& o) {
    using Bits = BitsOf<T>;
    Zmm buffer, r{};
    const Zmm& table = source<Bits>(s, o, buffer);
    for (std::uint64_t m = active<T>(s, o); m; m &= m - 1) {
        const auto i = static_cast<unsigned>(__builtin_ctzll(m));
        lanes<Bits>(r)[i] = fixed_up<T>(lanes<Bits>(s.z[o.reg])[i], lanes<Bits>(s.z[o.v])[i], lanes<Bits>(table)[i], o);
    }
    write<Bits>(s, o, r);
}
template <class T>
void fix_up_scalar(State& s, const Op& o) {
    using Bits = BitsOf<T>;
    const Zmm table = scalar_operand<Bits>(s, o);
    Bits r = 0;
    if (scalar_active(s, o)) r = fixed_up<T>(*lanes<Bits>(s.z[o.reg]), *lanes<Bits>(s.z[o.v]), *lanes<Bits>(table), o);
    write_scalar<Bits>(s, o, r);
}

template <class T>
bool in_class(BitsOf<T> x, const Op& o) {
    using F = Format<T>;
    x = flushed<T>(x);
    const bool negative = x & F::sign;
    const BitsOf<T> magnitude = x & ~F::sign;
    unsigned classes = 0;
    if (is_nan<T>(x)) classes |= is_signaling<T>(x) ? 0x80 : 0x01;
    else if (magnitude == 0) classes |= negative ? 0x04 : 0x02;
    else if (magnitude == F::exponent) classes |= negative ? 0x10 : 0x08;
    else classes |= (is_denormal<T>(x) ? 0x20u : 0u) | (negative ? 0x40u : 0u);
    return classes & static_cast<unsigned>(o.imm) & 0xFF;
}
template <class T>
void classify(State& s, const Op& o) {
    Zmm buffer;
    const Zmm& a = source<BitsOf<T>>(s, o, buffer);
    std::uint64_t r = 0;
    for (unsigned i = 0; i < o.vl / sizeof(T); ++i) r |= std::uint64_t{in_class<T>(lanes<BitsOf<T>>(a)[i], o)} << i;
    write_mask<T>(s, o, r);
}
template <class T>
void classify_scalar(State& s, const Op& o) {
    const Zmm a = scalar_operand<BitsOf<T>>(s, o);
    s.k[o.reg & 7] = scalar_active(s, o) && in_class<T>(*lanes<BitsOf<T>>(a), o);
}

struct Range {
    template <class T>
    static BitsOf<T> apply(BitsOf<T> a, BitsOf<T> b, const Op& o) {
        using F = Format<T>;
        if (is_signaling<T>(a)) return quieted<T>(a);
        if (is_signaling<T>(b)) return quieted<T>(b);
        BitsOf<T> r;
        if (is_nan<T>(a)) r = is_nan<T>(b) ? a : b;
        else if (is_nan<T>(b)) r = a;
        else {
            a = flushed<T>(a);
            b = flushed<T>(b);
            if (is_denormal<T>(a) || is_denormal<T>(b)) raise_denormal();
            r = (o.imm & 2) ? by_magnitude<T>(a, b, o.imm & 1) : by_value<T>(a, b, o.imm & 1);
        }
        switch (o.imm >> 2 & 3) {
            case 0: return (r & ~F::sign) | (a & F::sign);
            case 1: return r;
            case 2: return r & ~F::sign;
            default: return r | F::sign;
        }
    }
    template <class T>
    static BitsOf<T> by_value(BitsOf<T> a, BitsOf<T> b, bool maximum) {
        const auto key = [](BitsOf<T> x) {
            using S = typename Format<T>::Signed;
            const S v = static_cast<S>(x);
            return v < 0 ? static_cast<S>(~(x & ~Format<T>::sign)) : v;
        };
        return (key(a) < key(b)) == maximum ? b : a;
    }
    template <class T>
    static BitsOf<T> by_magnitude(BitsOf<T> a, BitsOf<T> b, bool maximum) {
        const BitsOf<T> p = a & ~Format<T>::sign, q = b & ~Format<T>::sign;
        if (p == q) return by_value<T>(a, b, maximum);
        return (p < q) == maximum ? b : a;
    }
};

constexpr auto E = kEvex;

constexpr Row rows[] = {
    {E, M0F38, P66, 0x42, W0, Full4, packed_bits1<float, GetExponent>}, {E, M0F38, P66, 0x42, W1, Full8, packed_bits1<double, GetExponent>},
    {E, M0F38, P66, 0x43, W0, Mem4, scalar_bits1<float, GetExponent>}, {E, M0F38, P66, 0x43, W1, Mem8, scalar_bits1<double, GetExponent>},
    {E, M0F3A, P66, 0x26, W0, Full4, packed_bits1<float, GetMantissa>}, {E, M0F3A, P66, 0x26, W1, Full8, packed_bits1<double, GetMantissa>},
    {E, M0F3A, P66, 0x27, W0, Mem4, scalar_bits1<float, GetMantissa>}, {E, M0F3A, P66, 0x27, W1, Mem8, scalar_bits1<double, GetMantissa>},
    {E, M0F38, P66, 0x2C, W0, Full4, packed_bits2<float, Scale>}, {E, M0F38, P66, 0x2C, W1, Full8, packed_bits2<double, Scale>},
    {E, M0F38, P66, 0x2D, W0, Mem4, scalar_bits2<float, Scale>}, {E, M0F38, P66, 0x2D, W1, Mem8, scalar_bits2<double, Scale>},
    {E, M0F38, P66, 0x4C, W0, Full4, without_flags<packed_bits1<float, Reciprocal>>}, {E, M0F38, P66, 0x4C, W1, Full8, without_flags<packed_bits1<double, Reciprocal>>},
    {E, M0F38, P66, 0x4D, W0, Mem4, without_flags<scalar_bits1<float, Reciprocal>>}, {E, M0F38, P66, 0x4D, W1, Mem8, without_flags<scalar_bits1<double, Reciprocal>>},
    {E, M0F38, P66, 0x4E, W0, Full4, without_flags<packed_bits1<float, ReciprocalRoot>>}, {E, M0F38, P66, 0x4E, W1, Full8, without_flags<packed_bits1<double, ReciprocalRoot>>},
    {E, M0F38, P66, 0x4F, W0, Mem4, without_flags<scalar_bits1<float, ReciprocalRoot>>}, {E, M0F38, P66, 0x4F, W1, Mem8, without_flags<scalar_bits1<double, ReciprocalRoot>>},
    {E, M0F3A, P66, 0x50, W0, Full4, packed_bits2<float, Range>}, {E, M0F3A, P66, 0x50, W1, Full8, packed_bits2<double, Range>},
    {E, M0F3A, P66, 0x51, W0, Mem4, scalar_bits2<float, Range>}, {E, M0F3A, P66, 0x51, W1, Mem8, scalar_bits2<double, Range>},
    {E, M0F3A, P66, 0x54, W0, Full4, fix_up<float>}, {E, M0F3A, P66, 0x54, W1, Full8, fix_up<double>},
    {E, M0F3A, P66, 0x55, W0, Mem4, fix_up_scalar<float>}, {E, M0F3A, P66, 0x55, W1, Mem8, fix_up_scalar<double>},
    {E, M0F3A, P66, 0x66, W0, Full4, classify<float>}, {E, M0F3A, P66, 0x66, W1, Full8, classify<double>},
    {E, M0F3A, P66, 0x67, W0, Mem4, classify_scalar<float>}, {E, M0F3A, P66, 0x67, W1, Mem8, classify_scalar<double>},
};

}  // namespace

RowTable float_parts_rows() { return table_of(rows); }

}  // namespace nax::emulator
