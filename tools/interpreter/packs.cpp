// Conversions between integer widths, compression and expansion, gathers and scatters.
#include <limits>

#include "tools/interpreter/lanes.h"

namespace nax::emulator {
namespace {

using I8 = std::int8_t;
using I16 = std::int16_t;
using I32 = std::int32_t;
using I64 = std::int64_t;
using U8 = std::uint8_t;
using U16 = std::uint16_t;
using U32 = std::uint32_t;
using U64 = std::uint64_t;

template <class To, class From>
To saturate(From value) {
    constexpr From low = std::is_signed_v<From> && std::is_signed_v<To> ? static_cast<From>(std::numeric_limits<To>::min()) : From{0};
    constexpr From high = static_cast<From>(std::numeric_limits<To>::max());
    return static_cast<To>(value < low ? low : value > high ? high : value);
}

// vpackss*, vpackus*: per 128-bit lane, first source below second.
template <class To, class From>
void pack(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& b = whole_source<From>(s, o, buffer);
    constexpr unsigned half = 16 / sizeof(From);
    for (unsigned lane = 0; lane < 4; ++lane) {
        for (unsigned i = 0; i < half; ++i) {
            lanes<To>(r)[2 * half * lane + i] = saturate<To>(lanes<From>(s.z[o.v])[half * lane + i]);
            lanes<To>(r)[2 * half * lane + half + i] = saturate<To>(lanes<From>(b)[half * lane + i]);
        }
    }
    write<To>(s, o, r);
}

// vpmov*: narrower elements at the bottom of the destination, or in memory.
template <class To, class From, bool Saturates>
void narrow(State& s, const Op& o) {
    Zmm r{};
    const unsigned count = o.vl / unsigned{sizeof(From)}, bytes = count * unsigned{sizeof(To)};
    for (unsigned i = 0; i < count; ++i) {
        const From value = lanes<From>(s.z[o.reg])[i];
        lanes<To>(r)[i] = Saturates ? saturate<To>(value) : static_cast<To>(value);
    }
    const U64 mask = o.mask ? s.k[o.mask] & low_bits(count) : low_bits(count);
    if (o.mem) return store_masked<To>(pointer(s, o), r, mask);
    Zmm merged{};
    for (unsigned i = 0; i < count; ++i) {
        if (mask >> i & 1) lanes<To>(merged)[i] = lanes<To>(r)[i];
        else if (!o.zeroing) lanes<To>(merged)[i] = lanes<To>(s.z[o.rm])[i];
    }
    write_plain(s.z[o.rm], o, merged, bytes > 16 ? bytes : 16);
}

// vpmovsx*, vpmovzx* by the signedness of From.
template <class To, class From>
void widen(State& s, const Op& o) {
    Zmm buffer, r{};
    const unsigned count = o.vl / unsigned{sizeof(To)};
    const Zmm& a = source<From>(s, o, buffer, count * unsigned{sizeof(From)}, active<To>(s, o));
    for (unsigned i = 0; i < count; ++i) lanes<To>(r)[i] = static_cast<To>(lanes<From>(a)[i]);
    write<To>(s, o, r);
}

template <class T>
void compress(State& s, const Op& o) {
    Zmm r = o.mem || o.zeroing ? Zmm{} : s.z[o.rm];
    unsigned count = 0;
    for (U64 m = active<T>(s, o); m; m &= m - 1) lanes<T>(r)[count++] = lanes<T>(s.z[o.reg])[__builtin_ctzll(m)];
    if (o.mem) std::memcpy(pointer(s, o), &r, count * sizeof(T));
    else write_plain(s.z[o.rm], o, r, o.vl);
}
template <class T>
void expand(State& s, const Op& o) {
    const U64 mask = active<T>(s, o);
    Zmm buffer, r{};
    const Zmm* a = &s.z[o.rm];
    if (o.mem) {
        load_masked<T>(buffer, pointer(s, o), low_bits(static_cast<unsigned>(__builtin_popcountll(mask))));
        a = &buffer;
    }
    unsigned next = 0;
    for (U64 m = mask; m; m &= m - 1) lanes<T>(r)[__builtin_ctzll(m)] = lanes<T>(*a)[next++];
    write<T>(s, o, r);
}

// The vector index register; its displacement and scale apply to every element.
template <class Index>
char* element_address(const State& s, const Op& o, unsigned i) {
    const Zmm& index = s.z[o.rm | (o.encoding == kEvex ? o.v & 16 : 0)];
    const U64 offset = static_cast<U64>(I64{lanes<Index>(index)[i]}) << o.scale;
    return reinterpret_cast<char*>(s.gpr[o.segment] + s.gpr[o.base] + offset + static_cast<U64>(o.disp));
}
template <class T, class Index>
unsigned element_count(const Op& o) {
    constexpr auto widest = unsigned{sizeof(T) > sizeof(Index) ? sizeof(T) : sizeof(Index)};
    return o.vl / widest;
}

// Elements whose mask bit is set are loaded and their bits cleared one by one.
template <class T, class Index>
void gather(State& s, const Op& o) {
    const unsigned count = element_count<T, Index>(o);
    Zmm r = s.z[o.reg];
    if (o.encoding == kEvex) {
        for (U64 m = s.k[o.mask] & low_bits(count); m; m &= m - 1) {
            const auto i = static_cast<unsigned>(__builtin_ctzll(m));
            std::memcpy(&lanes<T>(r)[i], element_address<Index>(s, o, i), sizeof(T));
        }
        s.k[o.mask] = 0;
    } else {
        for (unsigned i = 0; i < count; ++i) {
            if (lanes<T>(s.z[o.v])[i] >> (8 * sizeof(T) - 1)) std::memcpy(&lanes<T>(r)[i], element_address<Index>(s, o, i), sizeof(T));
        }
        s.z[o.v] = Zmm{};
    }
    const unsigned bytes = count * unsigned{sizeof(T)};
    if (bytes < 16) r.u64[1] = 0;
    write_plain(s.z[o.reg], o, r, bytes < 16 ? 16 : bytes);
}
template <class T, class Index>
void scatter(State& s, const Op& o) {
    for (U64 m = s.k[o.mask] & low_bits(element_count<T, Index>(o)); m; m &= m - 1) {
        const auto i = static_cast<unsigned>(__builtin_ctzll(m));
        std::memcpy(element_address<Index>(s, o, i), &lanes<T>(s.z[o.reg])[i], sizeof(T));
    }
    s.k[o.mask] = 0;
}

constexpr auto A = kAnyEncoding, E = kEvex, VE = kVexOrEvex;

constexpr Row packs[] = {
    {A, M0F, P66, 0x63, WX, FullMem, pack<I8, I16>}, {A, M0F, P66, 0x67, WX, FullMem, pack<U8, I16>},
    {A, M0F, P66, 0x6B, W0, Full4, pack<I16, I32>}, {A, M0F38, P66, 0x2B, W0, Full4, pack<U16, I32>},
    {E, M0F38, PF3, 0x10, W0, HalfMem, narrow<U8, U16, true>}, {E, M0F38, PF3, 0x11, W0, QuarterMem, narrow<U8, U32, true>},
    {E, M0F38, PF3, 0x12, W0, EighthMem, narrow<U8, U64, true>}, {E, M0F38, PF3, 0x13, W0, HalfMem, narrow<U16, U32, true>},
    {E, M0F38, PF3, 0x14, W0, QuarterMem, narrow<U16, U64, true>}, {E, M0F38, PF3, 0x15, W0, HalfMem, narrow<U32, U64, true>},
    {E, M0F38, PF3, 0x20, W0, HalfMem, narrow<I8, I16, true>}, {E, M0F38, PF3, 0x21, W0, QuarterMem, narrow<I8, I32, true>},
    {E, M0F38, PF3, 0x22, W0, EighthMem, narrow<I8, I64, true>}, {E, M0F38, PF3, 0x23, W0, HalfMem, narrow<I16, I32, true>},
    {E, M0F38, PF3, 0x24, W0, QuarterMem, narrow<I16, I64, true>}, {E, M0F38, PF3, 0x25, W0, HalfMem, narrow<I32, I64, true>},
    {E, M0F38, PF3, 0x30, W0, HalfMem, narrow<U8, U16, false>}, {E, M0F38, PF3, 0x31, W0, QuarterMem, narrow<U8, U32, false>},
    {E, M0F38, PF3, 0x32, W0, EighthMem, narrow<U8, U64, false>}, {E, M0F38, PF3, 0x33, W0, HalfMem, narrow<U16, U32, false>},
    {E, M0F38, PF3, 0x34, W0, QuarterMem, narrow<U16, U64, false>}, {E, M0F38, PF3, 0x35, W0, HalfMem, narrow<U32, U64, false>},
    {A, M0F38, P66, 0x20, WX, HalfMem, widen<I16, I8>}, {A, M0F38, P66, 0x21, WX, QuarterMem, widen<I32, I8>},
    {A, M0F38, P66, 0x22, WX, EighthMem, widen<I64, I8>}, {A, M0F38, P66, 0x23, WX, HalfMem, widen<I32, I16>},
    {A, M0F38, P66, 0x24, WX, QuarterMem, widen<I64, I16>}, {A, M0F38, P66, 0x25, W0, HalfMem, widen<I64, I32>},
    {A, M0F38, P66, 0x30, WX, HalfMem, widen<U16, U8>}, {A, M0F38, P66, 0x31, WX, QuarterMem, widen<U32, U8>},
    {A, M0F38, P66, 0x32, WX, EighthMem, widen<U64, U8>}, {A, M0F38, P66, 0x33, WX, HalfMem, widen<U32, U16>},
    {A, M0F38, P66, 0x34, WX, QuarterMem, widen<U64, U16>}, {A, M0F38, P66, 0x35, W0, HalfMem, widen<U64, U32>},
};

constexpr Row compressions[] = {
    {E, M0F38, P66, 0x8A, W0, Mem4, compress<U32>}, {E, M0F38, P66, 0x8A, W1, Mem8, compress<U64>},
    {E, M0F38, P66, 0x8B, W0, Mem4, compress<U32>}, {E, M0F38, P66, 0x8B, W1, Mem8, compress<U64>},
    {E, M0F38, P66, 0x63, W0, Mem1, compress<U8>}, {E, M0F38, P66, 0x63, W1, Mem2, compress<U16>},
    {E, M0F38, P66, 0x88, W0, Mem4, expand<U32>}, {E, M0F38, P66, 0x88, W1, Mem8, expand<U64>},
    {E, M0F38, P66, 0x89, W0, Mem4, expand<U32>}, {E, M0F38, P66, 0x89, W1, Mem8, expand<U64>},
    {E, M0F38, P66, 0x62, W0, Mem1, expand<U8>}, {E, M0F38, P66, 0x62, W1, Mem2, expand<U16>},
};

constexpr Row gathers[] = {
    {VE, M0F38, P66, 0x90, W0, Mem4, gather<U32, I32>}, {VE, M0F38, P66, 0x90, W1, Mem8, gather<U64, I32>},
    {VE, M0F38, P66, 0x91, W0, Mem4, gather<U32, I64>}, {VE, M0F38, P66, 0x91, W1, Mem8, gather<U64, I64>},
    {VE, M0F38, P66, 0x92, W0, Mem4, gather<U32, I32>}, {VE, M0F38, P66, 0x92, W1, Mem8, gather<U64, I32>},
    {VE, M0F38, P66, 0x93, W0, Mem4, gather<U32, I64>}, {VE, M0F38, P66, 0x93, W1, Mem8, gather<U64, I64>},
    {E, M0F38, P66, 0xA0, W0, Mem4, scatter<U32, I32>}, {E, M0F38, P66, 0xA0, W1, Mem8, scatter<U64, I32>},
    {E, M0F38, P66, 0xA1, W0, Mem4, scatter<U32, I64>}, {E, M0F38, P66, 0xA1, W1, Mem8, scatter<U64, I64>},
    {E, M0F38, P66, 0xA2, W0, Mem4, scatter<U32, I32>}, {E, M0F38, P66, 0xA2, W1, Mem8, scatter<U64, I32>},
    {E, M0F38, P66, 0xA3, W0, Mem4, scatter<U32, I64>}, {E, M0F38, P66, 0xA3, W1, Mem8, scatter<U64, I64>},
};

}  // namespace

RowTable pack_rows() { return table_of(packs); }
RowTable compress_rows() { return table_of(compressions); }
RowTable gather_rows() { return table_of(gathers); }

}  // namespace nax::emulator
