// Shifts and rotates: by an immediate, by the low quadword of a vector, or lane by lane.
#include "tools/interpreter/lanes.h"

namespace nax::emulator {
namespace {

using I16 = std::int16_t;
using I32 = std::int32_t;
using I64 = std::int64_t;
using U8 = std::uint8_t;
using U16 = std::uint16_t;
using U32 = std::uint32_t;
using U64 = std::uint64_t;

// Counts past the width shift everything out; arithmetic ones leave the sign.
struct Left {
    template <class T>
    T operator()(T a, U64 count) const { return count < 8 * sizeof(T) ? static_cast<T>(U64{a} << count) : T{0}; }
};
struct Right {
    template <class T>
    T operator()(T a, U64 count) const { return count < 8 * sizeof(T) ? static_cast<T>(a >> count) : T{0}; }
};
struct RightArithmetic {
    template <class T>
    T operator()(T a, U64 count) const {
        constexpr U64 last = 8 * sizeof(T) - 1;
        return static_cast<T>(a >> (count < last ? count : last));
    }
};
struct RotateLeft {
    template <class T>
    T operator()(T a, U64 count) const {
        constexpr U64 bits = 8 * sizeof(T);
        return static_cast<T>(a << (count % bits) | a >> ((bits - count % bits) % bits));
    }
};
struct RotateRight {
    template <class T>
    T operator()(T a, U64 count) const { return RotateLeft{}(a, 8 * sizeof(T) - count % (8 * sizeof(T))); }
};

template <class T, class F>
void shift_all(State& s, const Op& o, const Zmm& a, U64 count, unsigned destination) {
    Zmm r;
    for (unsigned i = 0; i < kLanes<T>; ++i) lanes<T>(r)[i] = F{}(lanes<T>(a)[i], count);
    Op named = o;
    named.reg = static_cast<U8>(destination);
    write<T>(s, named, r);
}

// Destination in vvvv (legacy: the source itself).
template <class T, class F>
void by_immediate(State& s, const Op& o) {
    Zmm buffer;
    const Zmm& a = source<T>(s, o, buffer);
    shift_all<T, F>(s, o, a, static_cast<U8>(o.imm), o.encoding == kLegacy ? o.rm : o.v);
}
template <class T, class F>
void by_vector_count(State& s, const Op& o) {
    const U64 count = o.mem ? load<U64>(s, o) : s.z[o.rm].u64[0];
    shift_all<T, F>(s, o, s.z[o.v], count, o.reg);
}
template <class T, class F>
void by_lane(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& count = source<T>(s, o, buffer);
    using Unsigned = UnsignedOf<sizeof(T)>;
    for (unsigned i = 0; i < kLanes<T>; ++i) {
        lanes<T>(r)[i] = F{}(lanes<T>(s.z[o.v])[i], U64{lanes<Unsigned>(count)[i]});
    }
    write<T>(s, o, r);
}

// Whole 128-bit lanes by bytes.
template <bool ToLeft>
void by_bytes(State& s, const Op& o) {
    Zmm buffer, r{};
    const Zmm& a = whole_source<U8>(s, o, buffer);
    const unsigned count = static_cast<U8>(o.imm);
    for (unsigned i = 0; i < 64; ++i) {
        const unsigned in_lane = i % 16, from = ToLeft ? in_lane - count : in_lane + count;
        if (from < 16) r.u8[i] = a.u8[i - in_lane + from];
    }
    write_plain(s.z[o.encoding == kLegacy ? o.rm : o.v], o, r, o.vl);
}

constexpr auto A = kAnyEncoding, E = kEvex, VE = kVexOrEvex;

constexpr Row rows[] = {
    {A, M0F, P66, 0x71, WX, FullMem, by_immediate<U16, Right>, 2}, {A, M0F, P66, 0x71, WX, FullMem, by_immediate<I16, RightArithmetic>, 4},
    {A, M0F, P66, 0x71, WX, FullMem, by_immediate<U16, Left>, 6},
    {A, M0F, P66, 0x72, W0, Full4, by_immediate<U32, Right>, 2}, {A, M0F, P66, 0x72, W0, Full4, by_immediate<I32, RightArithmetic>, 4},
    {E, M0F, P66, 0x72, W1, Full8, by_immediate<I64, RightArithmetic>, 4}, {A, M0F, P66, 0x72, W0, Full4, by_immediate<U32, Left>, 6},
    {E, M0F, P66, 0x72, W0, Full4, by_immediate<U32, RotateRight>, 0}, {E, M0F, P66, 0x72, W1, Full8, by_immediate<U64, RotateRight>, 0},
    {E, M0F, P66, 0x72, W0, Full4, by_immediate<U32, RotateLeft>, 1}, {E, M0F, P66, 0x72, W1, Full8, by_immediate<U64, RotateLeft>, 1},
    {A, M0F, P66, 0x73, W1, Full8, by_immediate<U64, Right>, 2}, {A, M0F, P66, 0x73, W1, Full8, by_immediate<U64, Left>, 6},
    {A, M0F, P66, 0x73, WX, FullMem, by_bytes<false>, 3}, {A, M0F, P66, 0x73, WX, FullMem, by_bytes<true>, 7},
    {A, M0F, P66, 0xD1, WX, Mem16, by_vector_count<U16, Right>}, {A, M0F, P66, 0xD2, W0, Mem16, by_vector_count<U32, Right>},
    {A, M0F, P66, 0xD3, W1, Mem16, by_vector_count<U64, Right>}, {A, M0F, P66, 0xE1, WX, Mem16, by_vector_count<I16, RightArithmetic>},
    {A, M0F, P66, 0xE2, W0, Mem16, by_vector_count<I32, RightArithmetic>}, {E, M0F, P66, 0xE2, W1, Mem16, by_vector_count<I64, RightArithmetic>},
    {A, M0F, P66, 0xF1, WX, Mem16, by_vector_count<U16, Left>}, {A, M0F, P66, 0xF2, W0, Mem16, by_vector_count<U32, Left>},
    {A, M0F, P66, 0xF3, W1, Mem16, by_vector_count<U64, Left>},
    {E, M0F38, P66, 0x10, W1, FullMem, by_lane<U16, Right>}, {E, M0F38, P66, 0x11, W1, FullMem, by_lane<I16, RightArithmetic>},
    {E, M0F38, P66, 0x12, W1, FullMem, by_lane<U16, Left>},
    {VE, M0F38, P66, 0x45, W0, Full4, by_lane<U32, Right>}, {VE, M0F38, P66, 0x45, W1, Full8, by_lane<U64, Right>},
    {VE, M0F38, P66, 0x46, W0, Full4, by_lane<I32, RightArithmetic>}, {E, M0F38, P66, 0x46, W1, Full8, by_lane<I64, RightArithmetic>},
    {VE, M0F38, P66, 0x47, W0, Full4, by_lane<U32, Left>}, {VE, M0F38, P66, 0x47, W1, Full8, by_lane<U64, Left>},
    {E, M0F38, P66, 0x14, W0, Full4, by_lane<U32, RotateRight>}, {E, M0F38, P66, 0x14, W1, Full8, by_lane<U64, RotateRight>},
    {E, M0F38, P66, 0x15, W0, Full4, by_lane<U32, RotateLeft>}, {E, M0F38, P66, 0x15, W1, Full8, by_lane<U64, RotateLeft>},
};

}  // namespace

RowTable shift_rows() { return table_of(rows); }

}  // namespace nax::emulator
