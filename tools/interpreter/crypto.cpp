// AES rounds and carry-less products, one 128-bit lane at a time; general-register instructions in VEX encodings.
#include "tools/interpreter/integer.h"

namespace nax::emulator {
namespace {

template <class F>
[[gnu::target("aes,pclmul")]] void lane_by_lane(State& s, const Op& o) {
    Zmm buffer, r{};
    const Zmm& b = whole_source<std::uint64_t>(s, o, buffer);
    for (unsigned i = 0; i < o.vl / 16u; ++i) r.x[i] = F::apply(s.z[o.v].x[i], b.x[i], o);
    write_plain(s.z[o.reg], o, r, o.vl);
}

struct Encrypt {
    [[gnu::target("aes")]] static __m128i apply(__m128i a, __m128i key, const Op&) { return _mm_aesenc_si128(a, key); }
};
struct EncryptLast {
    [[gnu::target("aes")]] static __m128i apply(__m128i a, __m128i key, const Op&) { return _mm_aesenclast_si128(a, key); }
};
struct Decrypt {
    [[gnu::target("aes")]] static __m128i apply(__m128i a, __m128i key, const Op&) { return _mm_aesdec_si128(a, key); }
};
struct DecryptLast {
    [[gnu::target("aes")]] static __m128i apply(__m128i a, __m128i key, const Op&) { return _mm_aesdeclast_si128(a, key); }
};
struct CarrylessProduct {
    [[gnu::target("pclmul")]] static __m128i apply(__m128i a, __m128i b, const Op& o) {
        switch (o.imm & 0x11) {
            case 0x00: return _mm_clmulepi64_si128(a, b, 0x00);
            case 0x01: return _mm_clmulepi64_si128(a, b, 0x01);
            case 0x10: return _mm_clmulepi64_si128(a, b, 0x10);
            default: return _mm_clmulepi64_si128(a, b, 0x11);
        }
    }
};

// W tells 64 from 32 bits.
template <class F>
void by_width(State& s, const Op& o) {
    if (o.w) F::template run<std::uint64_t>(s, o);
    else F::template run<std::uint32_t>(s, o);
}
void set_result_flags(State& s, bool negative, bool zero, bool carry) {
    s.flags = (s.flags & ~kStatusFlags) | (negative ? kSign : 0) | (zero ? kZero : 0) | (carry ? kCarry : 0);
}
template <class T>
bool negative(T value) { return value >> (8 * sizeof(T) - 1); }

struct AndNot {
    template <class T>
    static void run(State& s, const Op& o) {
        const T r = static_cast<T>(~get_register<T>(s, o.v) & get_rm<T>(s, o));
        set_result_flags(s, negative(r), r == 0, false);
        set_register<T>(s, o.reg, r);
    }
};
enum LowestBit { kReset, kMask, kIsolate };
template <LowestBit Kind>
struct LowestSetBit {
    template <class T>
    static void run(State& s, const Op& o) {
        const T a = get_rm<T>(s, o), minus = static_cast<T>(T{0} - a), down = static_cast<T>(a - 1);
        const T r = Kind == kReset ? a & down : Kind == kMask ? a ^ down : a & minus;
        set_result_flags(s, negative(r), r == 0, Kind == kIsolate ? a != 0 : a == 0);
        set_register<T>(s, o.v, r);
    }
};
struct ZeroHighBits {
    template <class T>
    static void run(State& s, const Op& o) {
        const unsigned n = static_cast<std::uint8_t>(s.gpr[o.v]);
        const T a = get_rm<T>(s, o), r = n < 8 * sizeof(T) ? static_cast<T>(a & ((T{1} << n) - 1)) : a;
        set_result_flags(s, negative(r), r == 0, n >= 8 * sizeof(T));
        set_register<T>(s, o.reg, r);
    }
};
struct ExtractField {
    template <class T>
    static void run(State& s, const Op& o) {
        const unsigned start = static_cast<std::uint8_t>(s.gpr[o.v]), length = static_cast<std::uint8_t>(s.gpr[o.v] >> 8);
        const T a = get_rm<T>(s, o), shifted = start < 8 * sizeof(T) ? static_cast<T>(a >> start) : T{0};
        const T r = length < 8 * sizeof(T) ? static_cast<T>(shifted & ((T{1} << length) - 1)) : shifted;
        set_result_flags(s, false, r == 0, false);
        set_register<T>(s, o.reg, r);
    }
};
template <bool Deposit>
struct BitScatter {
    template <class T>
    static void run(State& s, const Op& o) {
        const std::uint64_t a = get_register<T>(s, o.v), mask = get_rm<T>(s, o);
        set_register<T>(s, o.reg, static_cast<T>(Deposit ? _pdep_u64(a, mask) : _pext_u64(a, mask)));
    }
};
struct Multiply {
    template <class T>
    static void run(State& s, const Op& o) {
        const unsigned __int128 r = static_cast<unsigned __int128>(get_register<T>(s, kRdx)) * get_rm<T>(s, o);
        set_register<T>(s, o.v, static_cast<T>(r));
        set_register<T>(s, o.reg, static_cast<T>(r >> (8 * sizeof(T))));
    }
};
enum ShiftKind { kLeft, kRight, kArithmetic };
template <ShiftKind Kind>
struct ShiftWithoutFlags {
    template <class T>
    static void run(State& s, const Op& o) {
        const unsigned n = static_cast<unsigned>(s.gpr[o.v]) & (8 * sizeof(T) - 1);
        const T a = get_rm<T>(s, o);
        const T r = Kind == kLeft ? static_cast<T>(a << n) : Kind == kRight ? static_cast<T>(a >> n)
                                  : static_cast<T>(static_cast<std::make_signed_t<T>>(a) >> n);
        set_register<T>(s, o.reg, r);
    }
};
struct RotateByImmediate {
    template <class T>
    static void run(State& s, const Op& o) {
        constexpr unsigned bits = 8 * sizeof(T);
        const unsigned n = static_cast<unsigned>(o.imm) & (bits - 1);
        const T a = get_rm<T>(s, o);
        set_register<T>(s, o.reg, static_cast<T>(a >> n | a << ((bits - n) & (bits - 1))));
    }
};

void load_mxcsr(State& s, const Op& o) { _mm_setcsr(load<std::uint32_t>(s, o)); }
void store_mxcsr(State& s, const Op& o) { store<std::uint32_t>(s, o, _mm_getcsr()); }

constexpr auto A = kAnyEncoding, V = kVex;

constexpr Row crypto[] = {
    {A, M0F38, P66, 0xDC, WX, FullMem, lane_by_lane<Encrypt>}, {A, M0F38, P66, 0xDD, WX, FullMem, lane_by_lane<EncryptLast>},
    {A, M0F38, P66, 0xDE, WX, FullMem, lane_by_lane<Decrypt>}, {A, M0F38, P66, 0xDF, WX, FullMem, lane_by_lane<DecryptLast>},
    {A, M0F3A, P66, 0x44, WX, FullMem, lane_by_lane<CarrylessProduct>},
};

constexpr Row bits[] = {
    {V, M0F38, PNO, 0xF2, WX, Mem8, by_width<AndNot>}, {V, M0F38, PNO, 0xF3, WX, Mem8, by_width<LowestSetBit<kReset>>, 1},
    {V, M0F38, PNO, 0xF3, WX, Mem8, by_width<LowestSetBit<kMask>>, 2}, {V, M0F38, PNO, 0xF3, WX, Mem8, by_width<LowestSetBit<kIsolate>>, 3},
    {V, M0F38, PNO, 0xF5, WX, Mem8, by_width<ZeroHighBits>}, {V, M0F38, PF3, 0xF5, WX, Mem8, by_width<BitScatter<false>>},
    {V, M0F38, PF2, 0xF5, WX, Mem8, by_width<BitScatter<true>>}, {V, M0F38, PF2, 0xF6, WX, Mem8, by_width<Multiply>},
    {V, M0F38, PNO, 0xF7, WX, Mem8, by_width<ExtractField>}, {V, M0F38, P66, 0xF7, WX, Mem8, by_width<ShiftWithoutFlags<kLeft>>},
    {V, M0F38, PF3, 0xF7, WX, Mem8, by_width<ShiftWithoutFlags<kArithmetic>>}, {V, M0F38, PF2, 0xF7, WX, Mem8, by_width<ShiftWithoutFlags<kRight>>},
    {V, M0F3A, PF2, 0xF0, WX, Mem8, by_width<RotateByImmediate>},
    {V, M0F, PNO, 0xAE, WX, Mem4, load_mxcsr, 2}, {V, M0F, PNO, 0xAE, WX, Mem4, store_mxcsr, 3},
};

}  // namespace

RowTable crypto_rows() { return table_of(crypto); }
RowTable bit_rows() { return table_of(bits); }

}  // namespace nax::emulator
