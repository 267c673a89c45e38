// Permutations across the whole register, shuffles within 128-bit lanes, blends.
#include "tools/interpreter/lanes.h"

namespace nax::emulator {
namespace {

using U8 = std::uint8_t;
using U16 = std::uint16_t;
using U32 = std::uint32_t;
using U64 = std::uint64_t;

// r[i] = a[index[i]], the index taken modulo the number of lanes.
template <class T>
void permute(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& a = whole_source<T>(s, o, buffer);
    const Zmm& index = s.z[o.v];
    const unsigned last = o.vl / unsigned{sizeof(T)} - 1;
    for (unsigned i = 0; i < kLanes<T>; ++i) lanes<T>(r)[i] = lanes<T>(a)[lanes<T>(index)[i] & last];
    write<T>(s, o, r);
}
// Two tables: the bit above the index picks the second. The destination holds the indices, or the first table.
template <class T, bool OverwritesIndex>
void permute2(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& second = whole_source<T>(s, o, buffer);
    const Zmm& index = OverwritesIndex ? s.z[o.reg] : s.z[o.v];
    const Zmm& first = OverwritesIndex ? s.z[o.v] : s.z[o.reg];
    const unsigned count = o.vl / unsigned{sizeof(T)};
    for (unsigned i = 0; i < kLanes<T>; ++i) {
        const unsigned at = static_cast<unsigned>(lanes<T>(index)[i]) & (2 * count - 1);
        lanes<T>(r)[i] = at < count ? lanes<T>(first)[at] : lanes<T>(second)[at - count];
    }
    write<T>(s, o, r);
}
void permute_quads_by_immediate(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& a = whole_source<U64>(s, o, buffer);
    for (unsigned i = 0; i < 8; ++i) r.u64[i] = a.u64[(i & 4) | (static_cast<unsigned>(o.imm) >> (2 * (i & 3)) & 3)];
    write<U64>(s, o, r);
}

// vpermilps and vpermilpd: within 128-bit lanes, by a vector or an immediate.
void permute_lanes_ps(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& index = whole_source<U32>(s, o, buffer);
    for (unsigned i = 0; i < 16; ++i) r.u32[i] = s.z[o.v].u32[(i & ~3u) | (index.u32[i] & 3)];
    write<U32>(s, o, r);
}
void permute_lanes_pd(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& index = whole_source<U64>(s, o, buffer);
    for (unsigned i = 0; i < 8; ++i) r.u64[i] = s.z[o.v].u64[(i & ~1u) | (index.u64[i] >> 1 & 1)];
    write<U64>(s, o, r);
}
void shuffle_dwords(State& s, const Op& o) {  // vpshufd, vpermilps by immediate
    Zmm buffer, r;
    const Zmm& a = whole_source<U32>(s, o, buffer);
    for (unsigned i = 0; i < 16; ++i) r.u32[i] = a.u32[(i & ~3u) | (static_cast<unsigned>(o.imm) >> (2 * (i & 3)) & 3)];
    write<U32>(s, o, r);
}
void permute_pd_by_immediate(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& a = whole_source<U64>(s, o, buffer);
    for (unsigned i = 0; i < 8; ++i) r.u64[i] = a.u64[(i & ~1u) | (static_cast<unsigned>(o.imm) >> i & 1)];
    write<U64>(s, o, r);
}
template <unsigned First>  // 0: the low four words of a lane move, 4: the high ones
void shuffle_words(State& s, const Op& o) {
    Zmm buffer;
    const Zmm& a = whole_source<U16>(s, o, buffer);
    Zmm r = a;
    for (unsigned i = 0; i < 32; ++i) {
        if ((i & 4) == First) r.u16[i] = a.u16[(i & ~3u) | (static_cast<unsigned>(o.imm) >> (2 * (i & 3)) & 3)];
    }
    write<U16>(s, o, r);
}
void shuffle_bytes(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& index = whole_source<U8>(s, o, buffer);
    for (unsigned h = 0; h < 2; ++h) r.y[h] = _mm256_shuffle_epi8(s.z[o.v].y[h], index.y[h]);
    write<U8>(s, o, r);
}
void shuffle_ps(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& b = whole_source<U32>(s, o, buffer);
    for (unsigned i = 0; i < 16; ++i) {
        const Zmm& from = (i & 2) ? b : s.z[o.v];
        r.u32[i] = from.u32[(i & ~3u) | (static_cast<unsigned>(o.imm) >> (2 * (i & 3)) & 3)];
    }
    write<U32>(s, o, r);
}
void shuffle_pd(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& b = whole_source<U64>(s, o, buffer);
    for (unsigned i = 0; i < 8; ++i) {
        const Zmm& from = (i & 1) ? b : s.z[o.v];
        r.u64[i] = from.u64[(i & ~1u) | (static_cast<unsigned>(o.imm) >> i & 1)];
    }
    write<U64>(s, o, r);
}
// vshuff32x4 and its kin: 128-bit blocks, the lower half of them from the first source.
template <class T>
void shuffle_blocks(State& s, const Op& o) {
    Zmm buffer, r{};
    const Zmm& b = whole_source<T>(s, o, buffer);
    const unsigned blocks = o.vl / 16u, bits = blocks / 2;
    for (unsigned i = 0; i < blocks; ++i) {
        const Zmm& from = i < blocks / 2 ? s.z[o.v] : b;
        r.x[i] = from.x[static_cast<unsigned>(o.imm) >> (i * bits) & (blocks - 1)];
    }
    write<T>(s, o, r);
}

template <class T, bool High>
void unpack(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& b = whole_source<T>(s, o, buffer);
    constexpr unsigned per_lane = 16 / sizeof(T);
    for (unsigned i = 0; i < kLanes<T>; ++i) {
        const unsigned in_lane = i % per_lane, at = i - in_lane + in_lane / 2 + (High ? per_lane / 2 : 0);
        lanes<T>(r)[i] = lanes<T>(in_lane & 1 ? b : s.z[o.v])[at];
    }
    write<T>(s, o, r);
}
template <class T>
void align(State& s, const Op& o) {  // valignd, valignq
    Zmm buffer, r;
    const Zmm& low = whole_source<T>(s, o, buffer);
    const Zmm& high = s.z[o.v];
    const unsigned count = o.vl / unsigned{sizeof(T)}, by = static_cast<unsigned>(o.imm) & (count - 1);
    for (unsigned i = 0; i < count; ++i) {
        const unsigned at = i + by;
        lanes<T>(r)[i] = at < count ? lanes<T>(low)[at] : lanes<T>(high)[at - count];
    }
    for (unsigned i = count; i < kLanes<T>; ++i) lanes<T>(r)[i] = 0;
    write<T>(s, o, r);
}
void align_bytes(State& s, const Op& o) {
    Zmm buffer, r{};
    const Zmm& low = whole_source<U8>(s, o, buffer);
    const Zmm& high = s.z[o.v];
    const unsigned by = static_cast<U8>(o.imm);
    for (unsigned i = 0; i < 64; ++i) {
        const unsigned base = i & ~15u, at = (i & 15) + by;
        if (at < 16) r.u8[i] = low.u8[base + at];
        else if (at < 32) r.u8[i] = high.u8[base + at - 16];
    }
    write<U8>(s, o, r);
}

// The opmask chooses between the sources; zeroing clears what it doesn't choose.
template <class T>
void blend_by_mask(State& s, const Op& o) {
    Zmm buffer;
    const Zmm& b = source<T>(s, o, buffer);
    const std::uint64_t mask = active<T>(s, o);
    Zmm r;
    for (unsigned h = 0; h < 2; ++h) {
        const __m256i select = lane_mask<T>(mask, h);
        const __m256i other = o.zeroing ? _mm256_setzero_si256() : s.z[o.v].y[h];
        r.y[h] = _mm256_blendv_epi8(other, b.y[h], select);
    }
    write_plain(s.z[o.reg], o, r, o.vl);
}
template <class T>
void blend_by_immediate(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& b = whole_source<T>(s, o, buffer);
    const unsigned period = sizeof(T) == 2 ? 7 : kLanes<T> - 1;
    for (unsigned i = 0; i < kLanes<T>; ++i) {
        lanes<T>(r)[i] = (o.imm >> (i & period) & 1) ? lanes<T>(b)[i] : lanes<T>(s.z[o.v])[i];
    }
    write_plain(s.z[o.reg], o, r, o.vl);
}
template <class T>
void blend_by_sign(State& s, const Op& o) {  // the selecting register is named by the immediate
    Zmm buffer, r;
    const Zmm& b = whole_source<T>(s, o, buffer);
    const Zmm& select = s.z[static_cast<unsigned>(o.imm) >> 4 & 15];
    for (unsigned i = 0; i < kLanes<T>; ++i) {
        lanes<T>(r)[i] = (lanes<T>(select)[i] >> (8 * sizeof(T) - 1)) ? lanes<T>(b)[i] : lanes<T>(s.z[o.v])[i];
    }
    write_plain(s.z[o.reg], o, r, o.vl);
}
void permute_halves(State& s, const Op& o) {  // vperm2f128, vperm2i128
    Zmm buffer, r{};
    const Zmm& b = whole_source<U8>(s, o, buffer);
    for (unsigned i = 0; i < 2; ++i) {
        const unsigned control = static_cast<unsigned>(o.imm) >> (4 * i);
        if (!(control & 8)) r.x[i] = (control & 2 ? b : s.z[o.v]).x[control & 1];
    }
    write_plain(s.z[o.reg], o, r, o.vl);
}
void multishift(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& b = whole_source<U64>(s, o, buffer);
    for (unsigned i = 0; i < 64; ++i) {
        const U64 a = b.u64[i / 8];
        const unsigned by = s.z[o.v].u8[i] & 63;
        r.u8[i] = static_cast<U8>(a >> by | a << ((64 - by) & 63));
    }
    write<U8>(s, o, r);
}

constexpr auto A = kAnyEncoding, E = kEvex, V = kVex, VE = kVexOrEvex;
constexpr auto LV = static_cast<std::uint8_t>(kLegacy | kVex);

constexpr Row permutes[] = {
    {E, M0F38, P66, 0x8D, W0, FullMem, permute<U8>}, {E, M0F38, P66, 0x8D, W1, FullMem, permute<U16>},
    {VE, M0F38, P66, 0x36, W0, Full4, permute<U32>}, {E, M0F38, P66, 0x36, W1, Full8, permute<U64>},
    {VE, M0F38, P66, 0x16, W0, Full4, permute<U32>}, {E, M0F38, P66, 0x16, W1, Full8, permute<U64>},
    {E, M0F38, P66, 0x75, W0, FullMem, permute2<U8, true>}, {E, M0F38, P66, 0x75, W1, FullMem, permute2<U16, true>},
    {E, M0F38, P66, 0x76, W0, Full4, permute2<U32, true>}, {E, M0F38, P66, 0x76, W1, Full8, permute2<U64, true>},
    {E, M0F38, P66, 0x77, W0, Full4, permute2<U32, true>}, {E, M0F38, P66, 0x77, W1, Full8, permute2<U64, true>},
    {E, M0F38, P66, 0x7D, W0, FullMem, permute2<U8, false>}, {E, M0F38, P66, 0x7D, W1, FullMem, permute2<U16, false>},
    {E, M0F38, P66, 0x7E, W0, Full4, permute2<U32, false>}, {E, M0F38, P66, 0x7E, W1, Full8, permute2<U64, false>},
    {E, M0F38, P66, 0x7F, W0, Full4, permute2<U32, false>}, {E, M0F38, P66, 0x7F, W1, Full8, permute2<U64, false>},
    {VE, M0F3A, P66, 0x00, W1, Full8, permute_quads_by_immediate}, {VE, M0F3A, P66, 0x01, W1, Full8, permute_quads_by_immediate},
    {V, M0F3A, P66, 0x06, WX, FullMem, permute_halves}, {V, M0F3A, P66, 0x46, WX, FullMem, permute_halves},
    {E, M0F3A, P66, 0x03, W0, Full4, align<U32>}, {E, M0F3A, P66, 0x03, W1, Full8, align<U64>},
    {E, M0F38, P66, 0x83, W1, Full8, multishift},
};

constexpr Row shuffles[] = {
    {VE, M0F38, P66, 0x0C, W0, Full4, permute_lanes_ps}, {VE, M0F38, P66, 0x0D, W1, Full8, permute_lanes_pd},
    {VE, M0F3A, P66, 0x04, W0, Full4, shuffle_dwords}, {VE, M0F3A, P66, 0x05, W1, Full8, permute_pd_by_immediate},
    {A, M0F, P66, 0x70, W0, Full4, shuffle_dwords}, {A, M0F, PF2, 0x70, WX, FullMem, shuffle_words<0>},
    {A, M0F, PF3, 0x70, WX, FullMem, shuffle_words<4>}, {A, M0F38, P66, 0x00, WX, FullMem, shuffle_bytes},
    {A, M0F, PNO, 0xC6, W0, Full4, shuffle_ps}, {A, M0F, P66, 0xC6, W1, Full8, shuffle_pd},
    {E, M0F3A, P66, 0x23, W0, Full4, shuffle_blocks<U32>}, {E, M0F3A, P66, 0x23, W1, Full8, shuffle_blocks<U64>},
    {E, M0F3A, P66, 0x43, W0, Full4, shuffle_blocks<U32>}, {E, M0F3A, P66, 0x43, W1, Full8, shuffle_blocks<U64>},
    {A, M0F, P66, 0x60, WX, FullMem, unpack<U8, false>}, {A, M0F, P66, 0x61, WX, FullMem, unpack<U16, false>},
    {A, M0F, P66, 0x62, W0, Full4, unpack<U32, false>}, {A, M0F, P66, 0x6C, W1, Full8, unpack<U64, false>},
    {A, M0F, P66, 0x68, WX, FullMem, unpack<U8, true>}, {A, M0F, P66, 0x69, WX, FullMem, unpack<U16, true>},
    {A, M0F, P66, 0x6A, W0, Full4, unpack<U32, true>}, {A, M0F, P66, 0x6D, W1, Full8, unpack<U64, true>},
    {A, M0F, PNO, 0x14, W0, Full4, unpack<U32, false>}, {A, M0F, P66, 0x14, W1, Full8, unpack<U64, false>},
    {A, M0F, PNO, 0x15, W0, Full4, unpack<U32, true>}, {A, M0F, P66, 0x15, W1, Full8, unpack<U64, true>},
    {A, M0F3A, P66, 0x0F, WX, FullMem, align_bytes},
    {E, M0F38, P66, 0x64, W0, Full4, blend_by_mask<U32>}, {E, M0F38, P66, 0x64, W1, Full8, blend_by_mask<U64>},
    {E, M0F38, P66, 0x65, W0, Full4, blend_by_mask<U32>}, {E, M0F38, P66, 0x65, W1, Full8, blend_by_mask<U64>},
    {E, M0F38, P66, 0x66, W0, FullMem, blend_by_mask<U8>}, {E, M0F38, P66, 0x66, W1, FullMem, blend_by_mask<U16>},
    {V, M0F3A, P66, 0x02, WX, FullMem, blend_by_immediate<U32>}, {LV, M0F3A, P66, 0x0C, WX, FullMem, blend_by_immediate<U32>},
    {LV, M0F3A, P66, 0x0D, WX, FullMem, blend_by_immediate<U64>}, {LV, M0F3A, P66, 0x0E, WX, FullMem, blend_by_immediate<U16>},
    {V, M0F3A, P66, 0x4A, WX, FullMem, blend_by_sign<U32>}, {V, M0F3A, P66, 0x4B, WX, FullMem, blend_by_sign<U64>},
    {V, M0F3A, P66, 0x4C, WX, FullMem, blend_by_sign<U8>},
};

}  // namespace

RowTable permute_rows() { return table_of(permutes); }
RowTable shuffle_rows() { return table_of(shuffles); }

}  // namespace nax::emulator
