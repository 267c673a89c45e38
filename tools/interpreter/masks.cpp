// Instructions on opmask registers, and moves between masks and vectors.
#include "tools/interpreter/integer.h"

namespace nax::emulator {
namespace {

template <class T>
void load_mask(State& s, const Op& o) { s.k[o.reg & 7] = o.mem ? load<T>(s, o) : static_cast<T>(s.k[o.rm & 7]); }
template <class T>
void store_mask(State& s, const Op& o) { store<T>(s, o, static_cast<T>(s.k[o.reg & 7])); }
template <class T>
void mask_from_general(State& s, const Op& o) { s.k[o.reg & 7] = static_cast<T>(s.gpr[o.rm]); }
template <class T>
void mask_to_general(State& s, const Op& o) { s.gpr[o.reg] = static_cast<T>(s.k[o.rm & 7]); }

struct And { template <class T> T operator()(T a, T b) const { return a & b; } };
struct AndNot { template <class T> T operator()(T a, T b) const { return ~a & b; } };
struct Or { template <class T> T operator()(T a, T b) const { return a | b; } };
struct Xor { template <class T> T operator()(T a, T b) const { return a ^ b; } };
struct Xnor { template <class T> T operator()(T a, T b) const { return ~(a ^ b); } };
struct Add { template <class T> T operator()(T a, T b) const { return a + b; } };

template <class T, class F>
void combine(State& s, const Op& o) {
    s.k[o.reg & 7] = static_cast<T>(F{}(s.k[o.v & 7], s.k[o.rm & 7]));
}
template <class T>
void invert(State& s, const Op& o) { s.k[o.reg & 7] = static_cast<T>(~s.k[o.rm & 7]); }
template <class Half, class T>
void unpack(State& s, const Op& o) {
    s.k[o.reg & 7] = static_cast<T>((s.k[o.v & 7] << (8 * sizeof(Half))) | static_cast<Half>(s.k[o.rm & 7]));
}
template <class T, bool Left>
void shift(State& s, const Op& o) {
    const unsigned count = static_cast<std::uint8_t>(o.imm);
    const T a = static_cast<T>(s.k[o.rm & 7]);
    s.k[o.reg & 7] = count >= 8 * sizeof(T) ? T{0} : static_cast<T>(Left ? std::uint64_t{a} << count : std::uint64_t{a} >> count);
}

void set_zero_and_carry(State& s, bool zero, bool carry) {
    s.flags = (s.flags & ~kStatusFlags) | (zero ? kZero : 0) | (carry ? kCarry : 0);
}
template <class T>
void or_test(State& s, const Op& o) {
    const T r = static_cast<T>(s.k[o.reg & 7] | s.k[o.rm & 7]);
    set_zero_and_carry(s, r == 0, static_cast<T>(~r) == 0);
}
template <class T>
void test(State& s, const Op& o) {
    const std::uint64_t a = s.k[o.reg & 7], b = s.k[o.rm & 7];
    set_zero_and_carry(s, static_cast<T>(a & b) == 0, static_cast<T>(~a & b) == 0);
}

template <class T>
void mask_to_vector(State& s, const Op& o) {
    Zmm r;
    r.y[0] = lane_mask<T>(s.k[o.rm & 7], 0);
    r.y[1] = lane_mask<T>(s.k[o.rm & 7], 1);
    write_plain(s.z[o.reg], o, r, o.vl);
}
template <class T>
void vector_to_mask(State& s, const Op& o) {
    std::uint64_t m = 0;
    for (unsigned i = 0; i < o.vl / sizeof(T); ++i) {
        m |= static_cast<std::uint64_t>(lanes<T>(s.z[o.rm])[i] >> (8 * sizeof(T) - 1)) << i;
    }
    s.k[o.reg & 7] = m;
}
template <class Mask, class T>
void broadcast_mask(State& s, const Op& o) {
    Zmm r;
    splat(r, static_cast<T>(static_cast<Mask>(s.k[o.rm & 7])));
    write_plain(s.z[o.reg], o, r, o.vl);
}

using U8 = std::uint8_t;
using U16 = std::uint16_t;
using U32 = std::uint32_t;
using U64 = std::uint64_t;
constexpr auto E = kEvex, V = kVex;

constexpr Row rows[] = {
    {V, M0F, PNO, 0x90, W0, Mem2, load_mask<U16>}, {V, M0F, PNO, 0x90, W1, Mem8, load_mask<U64>},
    {V, M0F, P66, 0x90, W0, Mem1, load_mask<U8>}, {V, M0F, P66, 0x90, W1, Mem4, load_mask<U32>},
    {V, M0F, PNO, 0x91, W0, Mem2, store_mask<U16>}, {V, M0F, PNO, 0x91, W1, Mem8, store_mask<U64>},
    {V, M0F, P66, 0x91, W0, Mem1, store_mask<U8>}, {V, M0F, P66, 0x91, W1, Mem4, store_mask<U32>},
    {V, M0F, PNO, 0x92, W0, Mem2, mask_from_general<U16>}, {V, M0F, P66, 0x92, W0, Mem1, mask_from_general<U8>},
    {V, M0F, PF2, 0x92, W0, Mem4, mask_from_general<U32>}, {V, M0F, PF2, 0x92, W1, Mem8, mask_from_general<U64>},
    {V, M0F, PNO, 0x93, W0, Mem2, mask_to_general<U16>}, {V, M0F, P66, 0x93, W0, Mem1, mask_to_general<U8>},
    {V, M0F, PF2, 0x93, W0, Mem4, mask_to_general<U32>}, {V, M0F, PF2, 0x93, W1, Mem8, mask_to_general<U64>},
    {V, M0F, PNO, 0x41, W0, Mem8, combine<U16, And>}, {V, M0F, PNO, 0x41, W1, Mem8, combine<U64, And>},
    {V, M0F, P66, 0x41, W0, Mem8, combine<U8, And>}, {V, M0F, P66, 0x41, W1, Mem8, combine<U32, And>},
    {V, M0F, PNO, 0x42, W0, Mem8, combine<U16, AndNot>}, {V, M0F, PNO, 0x42, W1, Mem8, combine<U64, AndNot>},
    {V, M0F, P66, 0x42, W0, Mem8, combine<U8, AndNot>}, {V, M0F, P66, 0x42, W1, Mem8, combine<U32, AndNot>},
    {V, M0F, PNO, 0x44, W0, Mem8, invert<U16>}, {V, M0F, PNO, 0x44, W1, Mem8, invert<U64>},
    {V, M0F, P66, 0x44, W0, Mem8, invert<U8>}, {V, M0F, P66, 0x44, W1, Mem8, invert<U32>},
    {V, M0F, PNO, 0x45, W0, Mem8, combine<U16, Or>}, {V, M0F, PNO, 0x45, W1, Mem8, combine<U64, Or>},
    {V, M0F, P66, 0x45, W0, Mem8, combine<U8, Or>}, {V, M0F, P66, 0x45, W1, Mem8, combine<U32, Or>},
    {V, M0F, PNO, 0x46, W0, Mem8, combine<U16, Xnor>}, {V, M0F, PNO, 0x46, W1, Mem8, combine<U64, Xnor>},
    {V, M0F, P66, 0x46, W0, Mem8, combine<U8, Xnor>}, {V, M0F, P66, 0x46, W1, Mem8, combine<U32, Xnor>},
    {V, M0F, PNO, 0x47, W0, Mem8, combine<U16, Xor>}, {V, M0F, PNO, 0x47, W1, Mem8, combine<U64, Xor>},
    {V, M0F, P66, 0x47, W0, Mem8, combine<U8, Xor>}, {V, M0F, P66, 0x47, W1, Mem8, combine<U32, Xor>},
    {V, M0F, PNO, 0x4A, W0, Mem8, combine<U16, Add>}, {V, M0F, PNO, 0x4A, W1, Mem8, combine<U64, Add>},
    {V, M0F, P66, 0x4A, W0, Mem8, combine<U8, Add>}, {V, M0F, P66, 0x4A, W1, Mem8, combine<U32, Add>},
    {V, M0F, P66, 0x4B, W0, Mem8, unpack<U8, U16>}, {V, M0F, PNO, 0x4B, W0, Mem8, unpack<U16, U32>},
    {V, M0F, PNO, 0x4B, W1, Mem8, unpack<U32, U64>},
    {V, M0F, PNO, 0x98, W0, Mem8, or_test<U16>}, {V, M0F, PNO, 0x98, W1, Mem8, or_test<U64>},
    {V, M0F, P66, 0x98, W0, Mem8, or_test<U8>}, {V, M0F, P66, 0x98, W1, Mem8, or_test<U32>},
    {V, M0F, PNO, 0x99, W0, Mem8, test<U16>}, {V, M0F, PNO, 0x99, W1, Mem8, test<U64>},
    {V, M0F, P66, 0x99, W0, Mem8, test<U8>}, {V, M0F, P66, 0x99, W1, Mem8, test<U32>},
    {V, M0F3A, P66, 0x30, W1, Mem8, shift<U16, false>}, {V, M0F3A, P66, 0x30, W0, Mem8, shift<U8, false>},
    {V, M0F3A, P66, 0x31, W1, Mem8, shift<U64, false>}, {V, M0F3A, P66, 0x31, W0, Mem8, shift<U32, false>},
    {V, M0F3A, P66, 0x32, W1, Mem8, shift<U16, true>}, {V, M0F3A, P66, 0x32, W0, Mem8, shift<U8, true>},
    {V, M0F3A, P66, 0x33, W1, Mem8, shift<U64, true>}, {V, M0F3A, P66, 0x33, W0, Mem8, shift<U32, true>},
    {E, M0F38, PF3, 0x28, W0, FullMem, mask_to_vector<U8>}, {E, M0F38, PF3, 0x28, W1, FullMem, mask_to_vector<U16>},
    {E, M0F38, PF3, 0x38, W0, FullMem, mask_to_vector<U32>}, {E, M0F38, PF3, 0x38, W1, FullMem, mask_to_vector<U64>},
    {E, M0F38, PF3, 0x29, W0, FullMem, vector_to_mask<U8>}, {E, M0F38, PF3, 0x29, W1, FullMem, vector_to_mask<U16>},
    {E, M0F38, PF3, 0x39, W0, FullMem, vector_to_mask<U32>}, {E, M0F38, PF3, 0x39, W1, FullMem, vector_to_mask<U64>},
    {E, M0F38, PF3, 0x2A, W1, FullMem, broadcast_mask<U8, U64>}, {E, M0F38, PF3, 0x3A, W0, FullMem, broadcast_mask<U16, U32>},
};

}  // namespace

RowTable mask_rows() { return table_of(rows); }

}  // namespace nax::emulator
