// Loads, stores, register moves, broadcasts, and transfers between vector and general registers.
#include <signal.h>
#include <unistd.h>

#include "tools/interpreter/lanes.h"

namespace nax::emulator {
namespace {

// A misaligned operand of an aligned move is a general-protection fault, which Linux delivers as SIGSEGV.
void require_alignment(const State& s, const Op& o) {
    if (effective_address(s, o) % o.vl == 0) return;
    static const char text[] = "emulator: aligned move of a misaligned address\n";
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, text, sizeof text - 1);
    raise(SIGSEGV);
}

template <class T, bool Aligned = false>
void load_vector(State& s, const Op& o) {
    if (Aligned && o.mem) require_alignment(s, o);
    Zmm buffer;
    write<T>(s, o, source<T>(s, o, buffer));
}

template <class T, bool Aligned = false>
void store_vector(State& s, const Op& o) {
    const Zmm& r = s.z[o.reg];
    if (!o.mem) {
        if (o.mask) write_masked<T>(s.z[o.rm], o, r, s.k[o.mask], o.vl);
        else write_plain(s.z[o.rm], o, r, o.vl);
        return;
    }
    if (Aligned) require_alignment(s, o);
    char* p = pointer(s, o);
    const std::uint64_t mask = active<T>(s, o);
    if (o.mask && mask != low_bits(o.vl / unsigned{sizeof(T)})) store_masked<T>(p, r, mask);
    else if (o.vl == 64) std::memcpy(p, &r, 64);
    else if (o.vl == 32) std::memcpy(p, &r, 32);
    else std::memcpy(p, &r, 16);
}

// movss and movsd: a load clears the rest of the register, a register move keeps the first source's.
template <class T>
void load_scalar(State& s, const Op& o) {
    if (!o.mem) return write_scalar<T>(s, o, *lanes<T>(s.z[o.rm]));
    Zmm r{};
    T& low = *lanes<T>(r);
    if (scalar_active(s, o)) low = load<T>(s, o);
    else if (!o.zeroing) low = *lanes<T>(s.z[o.reg]);
    write_plain(s.z[o.reg], o, r, 16);
}
template <class T>
void store_scalar(State& s, const Op& o) {
    const T value = *lanes<T>(s.z[o.reg]);
    if (o.mem) {
        if (scalar_active(s, o)) store<T>(s, o, value);
        return;
    }
    Op swapped = o;
    swapped.reg = o.rm;
    if (o.encoding == kLegacy) swapped.v = o.rm;
    write_scalar<T>(s, swapped, value);
}

template <bool High>
void load_half(State& s, const Op& o) {  // movlps, movhps, movhlps, movlhps
    Zmm r = s.z[o.v];
    r.u64[High] = o.mem ? load<std::uint64_t>(s, o) : s.z[o.rm].u64[!High];
    write_plain(s.z[o.reg], o, r, 16);
}
template <bool High>
void store_half(State& s, const Op& o) { store<std::uint64_t>(s, o, s.z[o.reg].u64[High]); }

template <class T>
void from_general(State& s, const Op& o) {
    Zmm r{};
    *lanes<T>(r) = o.mem ? load<T>(s, o) : static_cast<T>(s.gpr[o.rm]);
    write_plain(s.z[o.reg], o, r, 16);
}
template <class T>
void to_general(State& s, const Op& o) {
    const T value = *lanes<T>(s.z[o.reg]);
    if (o.mem) store<T>(s, o, value);
    else s.gpr[o.rm] = value;
}
void load_quad(State& s, const Op& o) {
    Zmm r{};
    r.u64[0] = o.mem ? load<std::uint64_t>(s, o) : s.z[o.rm].u64[0];
    write_plain(s.z[o.reg], o, r, 16);
}
void store_quad(State& s, const Op& o) {
    if (o.mem) return store<std::uint64_t>(s, o, s.z[o.reg].u64[0]);
    Zmm r{};
    r.u64[0] = s.z[o.reg].u64[0];
    write_plain(s.z[o.rm], o, r, 16);
}

// Every other element twice: movsldup (Odd = 0), movshdup, movddup.
template <class T, unsigned Odd>
void duplicate(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm* from = &buffer;
    if (sizeof(T) == 8 && o.vl == 16 && o.mem) load_bytes(buffer, pointer(s, o), 8);
    else from = &whole_source<T>(s, o, buffer);
    const Zmm& a = *from;
    for (unsigned i = 0; i < kLanes<T>; ++i) lanes<T>(r)[i] = lanes<T>(a)[(i & ~1u) + Odd];
    write<T>(s, o, r);
}

// Repeats a block of `Bytes`; the mask counts elements of type T.
template <class T, unsigned Bytes>
void broadcast(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm* a = &s.z[o.rm];
    if (o.mem) {
        constexpr unsigned per_block = Bytes / sizeof(T);
        std::uint64_t needed = 0;
        for (std::uint64_t m = active<T>(s, o); m; m = per_block < 64 ? m >> per_block : 0) needed |= m;
        load_masked<T>(buffer, pointer(s, o), needed & low_bits(per_block));
        a = &buffer;
    }
    for (unsigned at = 0; at < 64; at += Bytes) std::memcpy(reinterpret_cast<char*>(&r) + at, a, Bytes);
    write<T>(s, o, r);
}
template <class T>
void broadcast_general(State& s, const Op& o) {
    Zmm r;
    splat(r, static_cast<T>(s.gpr[o.rm]));
    write<T>(s, o, r);
}
void broadcast_general_wide(State& s, const Op& o) {
    if (o.w) broadcast_general<std::uint64_t>(s, o);
    else broadcast_general<std::uint32_t>(s, o);
}

template <class T>
void insert_element(State& s, const Op& o) {
    Zmm r = s.z[o.v];
    lanes<T>(r)[static_cast<unsigned>(o.imm) & (16 / sizeof(T) - 1)] = o.mem ? load<T>(s, o) : static_cast<T>(s.gpr[o.rm]);
    write_plain(s.z[o.reg], o, r, 16);
}
template <class T>
void extract_element(State& s, const Op& o) {
    const T value = lanes<T>(s.z[o.reg])[static_cast<unsigned>(o.imm) & (16 / sizeof(T) - 1)];
    if (o.mem) store<T>(s, o, value);
    else s.gpr[o.rm] = value;
}
void extract_word(State& s, const Op& o) {  // the older form: destination in ModRM.reg
    s.gpr[o.reg] = s.z[o.rm].u16[static_cast<unsigned>(o.imm) & 7];
}
void insert_single(State& s, const Op& o) {
    const auto imm = static_cast<unsigned>(o.imm);
    const std::uint32_t value = o.mem ? load<std::uint32_t>(s, o) : s.z[o.rm].u32[(imm >> 6) & 3];
    Zmm r = s.z[o.v];
    r.u32[(imm >> 4) & 3] = value;
    for (unsigned i = 0; i < 4; ++i) if (imm >> i & 1) r.u32[i] = 0;
    write_plain(s.z[o.reg], o, r, 16);
}

// 128- and 256-bit parts; the mask counts elements of type T of the result.
template <class T, unsigned Bytes>
void insert_part(State& s, const Op& o) {
    Zmm buffer, r = s.z[o.v];
    const Zmm* part = &s.z[o.rm];
    if (o.mem) {
        load_bytes(buffer, pointer(s, o), Bytes);
        part = &buffer;
    }
    const unsigned at = static_cast<unsigned>(o.imm) & (o.vl / Bytes - 1u);
    std::memcpy(reinterpret_cast<char*>(&r) + at * Bytes, part, Bytes);
    write<T>(s, o, r);
}
template <class T, unsigned Bytes>
void extract_part(State& s, const Op& o) {
    const unsigned at = static_cast<unsigned>(o.imm) & (o.vl / Bytes - 1u);
    Zmm r{};
    std::memcpy(&r, reinterpret_cast<const char*>(&s.z[o.reg]) + at * Bytes, Bytes);
    const std::uint64_t mask = o.mask ? s.k[o.mask] & low_bits(Bytes / sizeof(T)) : low_bits(Bytes / sizeof(T));
    if (o.mem) store_masked<T>(pointer(s, o), r, mask);
    else if (o.mask) write_masked<T>(s.z[o.rm], o, r, mask, Bytes);
    else write_plain(s.z[o.rm], o, r, Bytes);
}

// vmaskmov and vpmaskmov: the sign bits of a vector are the mask.
template <class T>
std::uint64_t sign_mask(const Zmm& z, unsigned vl) {
    std::uint64_t m = 0;
    for (unsigned i = 0; i < vl / sizeof(T); ++i) m |= static_cast<std::uint64_t>(lanes<T>(z)[i] >> (8 * sizeof(T) - 1)) << i;
    return m;
}
template <class T>
void load_by_sign(State& s, const Op& o) {
    Zmm r;
    load_masked<T>(r, pointer(s, o), sign_mask<T>(s.z[o.v], o.vl));
    write_plain(s.z[o.reg], o, r, o.vl);
}
template <class T>
void store_by_sign(State& s, const Op& o) {
    store_masked<T>(pointer(s, o), s.z[o.reg], sign_mask<T>(s.z[o.v], o.vl));
}
template <class T>
void signs_to_general(State& s, const Op& o) { s.gpr[o.reg] = sign_mask<T>(s.z[o.rm], o.vl); }

using U8 = std::uint8_t;
using U16 = std::uint16_t;
using U32 = std::uint32_t;
using U64 = std::uint64_t;
constexpr auto A = kAnyEncoding, E = kEvex, V = kVex, VE = kVexOrEvex;
constexpr auto LV = static_cast<std::uint8_t>(kLegacy | kVex);

constexpr Row rows[] = {
    {A, M0F, PNO, 0x10, W0, FullMem, load_vector<U32>}, {A, M0F, P66, 0x10, W1, FullMem, load_vector<U64>},
    {A, M0F, PNO, 0x11, W0, FullMem, store_vector<U32>}, {A, M0F, P66, 0x11, W1, FullMem, store_vector<U64>},
    {A, M0F, PF3, 0x10, W0, Mem4, load_scalar<U32>}, {A, M0F, PF2, 0x10, W1, Mem8, load_scalar<U64>},
    {A, M0F, PF3, 0x11, W0, Mem4, store_scalar<U32>}, {A, M0F, PF2, 0x11, W1, Mem8, store_scalar<U64>},
    {A, M0F, PNO, 0x28, W0, FullMem, load_vector<U32, true>}, {A, M0F, P66, 0x28, W1, FullMem, load_vector<U64, true>},
    {A, M0F, PNO, 0x29, W0, FullMem, store_vector<U32, true>}, {A, M0F, P66, 0x29, W1, FullMem, store_vector<U64, true>},
    {A, M0F, PNO, 0x2B, W0, FullMem, store_vector<U32, true>}, {A, M0F, P66, 0x2B, W1, FullMem, store_vector<U64, true>},
    {A, M0F, P66, 0xE7, W0, FullMem, store_vector<U64, true>}, {A, M0F38, P66, 0x2A, W0, FullMem, load_vector<U64, true>},
    {A, M0F, P66, 0x6F, W0, FullMem, load_vector<U32, true>}, {E, M0F, P66, 0x6F, W1, FullMem, load_vector<U64, true>},
    {A, M0F, PF3, 0x6F, W0, FullMem, load_vector<U32>}, {E, M0F, PF3, 0x6F, W1, FullMem, load_vector<U64>},
    {E, M0F, PF2, 0x6F, W0, FullMem, load_vector<U8>}, {E, M0F, PF2, 0x6F, W1, FullMem, load_vector<U16>},
    {A, M0F, P66, 0x7F, W0, FullMem, store_vector<U32, true>}, {E, M0F, P66, 0x7F, W1, FullMem, store_vector<U64, true>},
    {A, M0F, PF3, 0x7F, W0, FullMem, store_vector<U32>}, {E, M0F, PF3, 0x7F, W1, FullMem, store_vector<U64>},
    {E, M0F, PF2, 0x7F, W0, FullMem, store_vector<U8>}, {E, M0F, PF2, 0x7F, W1, FullMem, store_vector<U16>},
    {LV, M0F, PF2, 0xF0, WX, FullMem, load_vector<U8>},
    {A, M0F, PNO, 0x12, W0, Mem8, load_half<false>}, {A, M0F, P66, 0x12, W1, Mem8, load_half<false>},
    {A, M0F, PNO, 0x13, W0, Mem8, store_half<false>}, {A, M0F, P66, 0x13, W1, Mem8, store_half<false>},
    {A, M0F, PNO, 0x16, W0, Mem8, load_half<true>}, {A, M0F, P66, 0x16, W1, Mem8, load_half<true>},
    {A, M0F, PNO, 0x17, W0, Mem8, store_half<true>}, {A, M0F, P66, 0x17, W1, Mem8, store_half<true>},
    {A, M0F, PF3, 0x12, W0, FullMem, duplicate<U32, 0>}, {A, M0F, PF3, 0x16, W0, FullMem, duplicate<U32, 1>},
    {A, M0F, PF2, 0x12, W1, Dup, duplicate<U64, 0>},
    {A, M0F, P66, 0x6E, W0, Mem4, from_general<U32>}, {A, M0F, P66, 0x6E, W1, Mem8, from_general<U64>},
    {A, M0F, P66, 0x7E, W0, Mem4, to_general<U32>}, {A, M0F, P66, 0x7E, W1, Mem8, to_general<U64>},
    {A, M0F, PF3, 0x7E, W1, Mem8, load_quad}, {A, M0F, P66, 0xD6, W1, Mem8, store_quad},
    {VE, M0F38, P66, 0x18, W0, Mem4, broadcast<U32, 4>}, {VE, M0F38, P66, 0x19, W1, Mem8, broadcast<U64, 8>},
    {E, M0F38, P66, 0x19, W0, Mem8, broadcast<U32, 8>}, {VE, M0F38, P66, 0x1A, W0, Mem16, broadcast<U32, 16>},
    {E, M0F38, P66, 0x1A, W1, Mem16, broadcast<U64, 16>}, {E, M0F38, P66, 0x1B, W0, Mem32, broadcast<U32, 32>},
    {E, M0F38, P66, 0x1B, W1, Mem32, broadcast<U64, 32>}, {VE, M0F38, P66, 0x58, W0, Mem4, broadcast<U32, 4>},
    {VE, M0F38, P66, 0x59, W1, Mem8, broadcast<U64, 8>}, {E, M0F38, P66, 0x59, W0, Mem8, broadcast<U32, 8>},
    {VE, M0F38, P66, 0x5A, W0, Mem16, broadcast<U32, 16>}, {E, M0F38, P66, 0x5A, W1, Mem16, broadcast<U64, 16>},
    {E, M0F38, P66, 0x5B, W0, Mem32, broadcast<U32, 32>}, {E, M0F38, P66, 0x5B, W1, Mem32, broadcast<U64, 32>},
    {VE, M0F38, P66, 0x78, W0, Mem1, broadcast<U8, 1>}, {VE, M0F38, P66, 0x79, W0, Mem2, broadcast<U16, 2>},
    {E, M0F38, P66, 0x7A, W0, Mem1, broadcast_general<U8>}, {E, M0F38, P66, 0x7B, W0, Mem2, broadcast_general<U16>},
    {E, M0F38, P66, 0x7C, WX, Mem8, broadcast_general_wide},
    {A, M0F3A, P66, 0x20, WX, Mem1, insert_element<U8>}, {A, M0F, P66, 0xC4, WX, Mem2, insert_element<U16>},
    {A, M0F3A, P66, 0x22, W0, Mem4, insert_element<U32>}, {A, M0F3A, P66, 0x22, W1, Mem8, insert_element<U64>},
    {A, M0F3A, P66, 0x14, WX, Mem1, extract_element<U8>}, {A, M0F3A, P66, 0x15, WX, Mem2, extract_element<U16>},
    {A, M0F3A, P66, 0x16, W0, Mem4, extract_element<U32>}, {A, M0F3A, P66, 0x16, W1, Mem8, extract_element<U64>},
    {A, M0F3A, P66, 0x17, WX, Mem4, extract_element<U32>}, {A, M0F, P66, 0xC5, WX, Mem2, extract_word},
    {A, M0F3A, P66, 0x21, W0, Mem4, insert_single},
    {VE, M0F3A, P66, 0x18, W0, Mem16, insert_part<U32, 16>}, {E, M0F3A, P66, 0x18, W1, Mem16, insert_part<U64, 16>},
    {E, M0F3A, P66, 0x1A, W0, Mem32, insert_part<U32, 32>}, {E, M0F3A, P66, 0x1A, W1, Mem32, insert_part<U64, 32>},
    {VE, M0F3A, P66, 0x38, W0, Mem16, insert_part<U32, 16>}, {E, M0F3A, P66, 0x38, W1, Mem16, insert_part<U64, 16>},
    {E, M0F3A, P66, 0x3A, W0, Mem32, insert_part<U32, 32>}, {E, M0F3A, P66, 0x3A, W1, Mem32, insert_part<U64, 32>},
    {VE, M0F3A, P66, 0x19, W0, Mem16, extract_part<U32, 16>}, {E, M0F3A, P66, 0x19, W1, Mem16, extract_part<U64, 16>},
    {E, M0F3A, P66, 0x1B, W0, Mem32, extract_part<U32, 32>}, {E, M0F3A, P66, 0x1B, W1, Mem32, extract_part<U64, 32>},
    {VE, M0F3A, P66, 0x39, W0, Mem16, extract_part<U32, 16>}, {E, M0F3A, P66, 0x39, W1, Mem16, extract_part<U64, 16>},
    {E, M0F3A, P66, 0x3B, W0, Mem32, extract_part<U32, 32>}, {E, M0F3A, P66, 0x3B, W1, Mem32, extract_part<U64, 32>},
    {V, M0F38, P66, 0x2C, W0, FullMem, load_by_sign<U32>}, {V, M0F38, P66, 0x2D, W0, FullMem, load_by_sign<U64>},
    {V, M0F38, P66, 0x2E, W0, FullMem, store_by_sign<U32>}, {V, M0F38, P66, 0x2F, W0, FullMem, store_by_sign<U64>},
    {V, M0F38, P66, 0x8C, W0, FullMem, load_by_sign<U32>}, {V, M0F38, P66, 0x8C, W1, FullMem, load_by_sign<U64>},
    {V, M0F38, P66, 0x8E, W0, FullMem, store_by_sign<U32>}, {V, M0F38, P66, 0x8E, W1, FullMem, store_by_sign<U64>},
    {LV, M0F, PNO, 0x50, WX, FullMem, signs_to_general<U32>}, {LV, M0F, P66, 0x50, WX, FullMem, signs_to_general<U64>},
    {LV, M0F, P66, 0xD7, WX, FullMem, signs_to_general<U8>},
};

}  // namespace

RowTable move_rows() { return table_of(rows); }

}  // namespace nax::emulator
