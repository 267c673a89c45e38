// Integer arithmetic and logic on lanes, and the comparisons that write a mask or a vector.
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

struct And { template <class T> T operator()(T a, T b) const { return static_cast<T>(a & b); } };
struct AndNot { template <class T> T operator()(T a, T b) const { return static_cast<T>(~a & b); } };
struct Or { template <class T> T operator()(T a, T b) const { return static_cast<T>(a | b); } };
struct Xor { template <class T> T operator()(T a, T b) const { return static_cast<T>(a ^ b); } };

struct Sum { template <class T> T operator()(T a, T b) const { return static_cast<T>(a + b); } };
struct Difference { template <class T> T operator()(T a, T b) const { return static_cast<T>(a - b); } };
struct Product { template <class T> T operator()(T a, T b) const { return static_cast<T>(U64{a} * U64{b}); } };
struct HighProduct {
    template <class T>
    T operator()(T a, T b) const { return static_cast<T>((I64{a} * I64{b}) >> 16); }
};
struct RoundedHighProduct {
    template <class T>
    T operator()(T a, T b) const { return static_cast<T>((((int{a} * int{b}) >> 14) + 1) >> 1); }
};
struct LowHalfProduct {  // vpmuludq, vpmuldq by the signedness of T
    template <class T>
    T operator()(T a, T b) const {
        using Half = std::conditional_t<std::is_signed_v<T>, I32, U32>;
        return static_cast<T>(static_cast<Half>(a)) * static_cast<T>(static_cast<Half>(b));
    }
};
struct Average { template <class T> T operator()(T a, T b) const { return static_cast<T>((a + b + 1) >> 1); } };
struct Minimum { template <class T> T operator()(T a, T b) const { return a < b ? a : b; } };
struct Maximum { template <class T> T operator()(T a, T b) const { return a > b ? a : b; } };
struct Absolute { template <class T> T operator()(T a) const { return static_cast<T>(a < 0 ? T(0) - static_cast<U64>(a) : static_cast<U64>(a)); } };

template <class T>
T saturate(int value) {
    constexpr int low = std::is_signed_v<T> ? -(1 << (8 * sizeof(T) - 1)) : 0;
    constexpr int high = low + (1 << (8 * sizeof(T))) - 1;
    return static_cast<T>(value < low ? low : value > high ? high : value);
}
struct SaturatedSum { template <class T> T operator()(T a, T b) const { return saturate<T>(a + b); } };
struct SaturatedDifference { template <class T> T operator()(T a, T b) const { return saturate<T>(a - b); } };

struct LeadingZeros {
    template <class T>
    T operator()(T a) const {
        constexpr int unused = 64 - 8 * int{sizeof(T)};
        return static_cast<T>(a ? __builtin_clzll(a) - unused : 8 * int{sizeof(T)});
    }
};
struct PopulationCount { template <class T> T operator()(T a) const { return static_cast<T>(__builtin_popcountll(a)); } };

// Bit i of the result: does an earlier element i equal this one?
template <class T>
void conflict(State& s, const Op& o) {
    Zmm buffer, r{};
    const Zmm& a = whole_source<T>(s, o, buffer);
    for (unsigned i = 0; i < o.vl / sizeof(T); ++i) {
        for (unsigned j = 0; j < i; ++j) if (lanes<T>(a)[i] == lanes<T>(a)[j]) lanes<T>(r)[i] |= T{1} << j;
    }
    write<T>(s, o, r);
}

template <class T>
void ternary(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& c = source<T>(s, o, buffer);
    const Zmm &a = s.z[o.reg], &b = s.z[o.v];
    for (unsigned h = 0; h < 2; ++h) {
        __m256i sum = _mm256_setzero_si256();
        const __m256i ones = _mm256_set1_epi64x(-1);
        for (unsigned term = 0; term < 8; ++term) {
            if (!(o.imm >> term & 1)) continue;
            const __m256i p = term & 4 ? a.y[h] : _mm256_xor_si256(a.y[h], ones);
            const __m256i q = term & 2 ? b.y[h] : _mm256_xor_si256(b.y[h], ones);
            const __m256i t = term & 1 ? c.y[h] : _mm256_xor_si256(c.y[h], ones);
            sum = _mm256_or_si256(sum, _mm256_and_si256(p, _mm256_and_si256(q, t)));
        }
        r.y[h] = sum;
    }
    write<T>(s, o, r);
}

void multiply_add_words(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& b = whole_source<I16>(s, o, buffer);
    const Zmm& a = s.z[o.v];
    for (unsigned h = 0; h < 2; ++h) r.y[h] = _mm256_madd_epi16(a.y[h], b.y[h]);
    write<I32>(s, o, r);
}
void multiply_add_bytes(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& b = whole_source<I16>(s, o, buffer);
    const Zmm& a = s.z[o.v];
    for (unsigned h = 0; h < 2; ++h) r.y[h] = _mm256_maddubs_epi16(a.y[h], b.y[h]);
    write<I16>(s, o, r);
}
void sum_of_differences(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& b = whole_source<U64>(s, o, buffer);
    const Zmm& a = s.z[o.v];
    for (unsigned h = 0; h < 2; ++h) r.y[h] = _mm256_sad_epu8(a.y[h], b.y[h]);
    write_plain(s.z[o.reg], o, r, o.vl);
}
// vdbpsadbw: sums of differences between quadruplets of bytes, those of the second source chosen by the immediate.
void shuffled_sums_of_differences(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& b = whole_source<U16>(s, o, buffer);
    for (unsigned i = 0; i < 32; ++i) {
        const unsigned lane = i / 8 * 16, in_lane = i % 8;
        const unsigned word = in_lane / 2, first = lane + in_lane / 4 * 8 + (in_lane % 4 >= 2 ? 4u : 0u);
        unsigned sum = 0;
        for (unsigned j = 0; j < 4; ++j) {
            const unsigned at = word / 2 * 8 + word % 2 * 2 + (i & 1) + j;
            const unsigned dword = static_cast<unsigned>(o.imm) >> (2 * (at / 4)) & 3;
            const int difference = s.z[o.v].u8[first + j] - b.u8[lane + 4 * dword + at % 4];
            sum += static_cast<unsigned>(difference < 0 ? -difference : difference);
        }
        r.u16[i] = static_cast<U16>(sum);
    }
    write<U16>(s, o, r);
}

template <bool High>
void multiply_add_52(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& c = source<U64>(s, o, buffer);
    constexpr U64 low52 = (1ull << 52) - 1;
    for (unsigned i = 0; i < 8; ++i) {
        const unsigned __int128 product = static_cast<unsigned __int128>(s.z[o.v].u64[i] & low52) * (c.u64[i] & low52);
        r.u64[i] = s.z[o.reg].u64[i] + (High ? static_cast<U64>(product >> 52) : static_cast<U64>(product) & low52);
    }
    write<U64>(s, o, r);
}

constexpr auto A = kAnyEncoding, E = kEvex;

constexpr Row logic[] = {
    {A, M0F, P66, 0xDB, W0, Full4, map2<U32, And>}, {E, M0F, P66, 0xDB, W1, Full8, map2<U64, And>},
    {A, M0F, P66, 0xDF, W0, Full4, map2<U32, AndNot>}, {E, M0F, P66, 0xDF, W1, Full8, map2<U64, AndNot>},
    {A, M0F, P66, 0xEB, W0, Full4, map2<U32, Or>}, {E, M0F, P66, 0xEB, W1, Full8, map2<U64, Or>},
    {A, M0F, P66, 0xEF, W0, Full4, map2<U32, Xor>}, {E, M0F, P66, 0xEF, W1, Full8, map2<U64, Xor>},
    {A, M0F, PNO, 0x54, W0, Full4, map2<U32, And>}, {A, M0F, P66, 0x54, W1, Full8, map2<U64, And>},
    {A, M0F, PNO, 0x55, W0, Full4, map2<U32, AndNot>}, {A, M0F, P66, 0x55, W1, Full8, map2<U64, AndNot>},
    {A, M0F, PNO, 0x56, W0, Full4, map2<U32, Or>}, {A, M0F, P66, 0x56, W1, Full8, map2<U64, Or>},
    {A, M0F, PNO, 0x57, W0, Full4, map2<U32, Xor>}, {A, M0F, P66, 0x57, W1, Full8, map2<U64, Xor>},
    {E, M0F3A, P66, 0x25, W0, Full4, ternary<U32>}, {E, M0F3A, P66, 0x25, W1, Full8, ternary<U64>},
};

constexpr Row integers[] = {
    {A, M0F, P66, 0xFC, WX, FullMem, map2<U8, Sum>}, {A, M0F, P66, 0xFD, WX, FullMem, map2<U16, Sum>},
    {A, M0F, P66, 0xFE, W0, Full4, map2<U32, Sum>}, {A, M0F, P66, 0xD4, W1, Full8, map2<U64, Sum>},
    {A, M0F, P66, 0xF8, WX, FullMem, map2<U8, Difference>}, {A, M0F, P66, 0xF9, WX, FullMem, map2<U16, Difference>},
    {A, M0F, P66, 0xFA, W0, Full4, map2<U32, Difference>}, {A, M0F, P66, 0xFB, W1, Full8, map2<U64, Difference>},
    {A, M0F, P66, 0xEC, WX, FullMem, map2<I8, SaturatedSum>}, {A, M0F, P66, 0xED, WX, FullMem, map2<I16, SaturatedSum>},
    {A, M0F, P66, 0xDC, WX, FullMem, map2<U8, SaturatedSum>}, {A, M0F, P66, 0xDD, WX, FullMem, map2<U16, SaturatedSum>},
    {A, M0F, P66, 0xE8, WX, FullMem, map2<I8, SaturatedDifference>}, {A, M0F, P66, 0xE9, WX, FullMem, map2<I16, SaturatedDifference>},
    {A, M0F, P66, 0xD8, WX, FullMem, map2<U8, SaturatedDifference>}, {A, M0F, P66, 0xD9, WX, FullMem, map2<U16, SaturatedDifference>},
    {A, M0F, P66, 0xD5, WX, FullMem, map2<U16, Product>}, {A, M0F38, P66, 0x40, W0, Full4, map2<U32, Product>},
    {E, M0F38, P66, 0x40, W1, Full8, map2<U64, Product>}, {A, M0F, P66, 0xE4, WX, FullMem, map2<U16, HighProduct>},
    {A, M0F, P66, 0xE5, WX, FullMem, map2<I16, HighProduct>}, {A, M0F38, P66, 0x0B, WX, FullMem, map2<I16, RoundedHighProduct>},
    {A, M0F, P66, 0xF4, W1, Full8, map2<U64, LowHalfProduct>}, {A, M0F38, P66, 0x28, W1, Full8, map2<I64, LowHalfProduct>},
    {A, M0F, P66, 0xE0, WX, FullMem, map2<U8, Average>}, {A, M0F, P66, 0xE3, WX, FullMem, map2<U16, Average>},
    {A, M0F, P66, 0xF5, WX, FullMem, multiply_add_words}, {A, M0F38, P66, 0x04, WX, FullMem, multiply_add_bytes},
    {A, M0F, P66, 0xF6, WX, FullMem, sum_of_differences},
    {E, M0F3A, P66, 0x42, W0, FullMem, shuffled_sums_of_differences},
    {E, M0F38, P66, 0xB4, W1, Full8, multiply_add_52<false>}, {E, M0F38, P66, 0xB5, W1, Full8, multiply_add_52<true>},
    {A, M0F38, P66, 0x38, WX, FullMem, map2<I8, Minimum>}, {A, M0F, P66, 0xEA, WX, FullMem, map2<I16, Minimum>},
    {A, M0F38, P66, 0x39, W0, Full4, map2<I32, Minimum>}, {E, M0F38, P66, 0x39, W1, Full8, map2<I64, Minimum>},
    {A, M0F, P66, 0xDA, WX, FullMem, map2<U8, Minimum>}, {A, M0F38, P66, 0x3A, WX, FullMem, map2<U16, Minimum>},
    {A, M0F38, P66, 0x3B, W0, Full4, map2<U32, Minimum>}, {E, M0F38, P66, 0x3B, W1, Full8, map2<U64, Minimum>},
    {A, M0F38, P66, 0x3C, WX, FullMem, map2<I8, Maximum>}, {A, M0F, P66, 0xEE, WX, FullMem, map2<I16, Maximum>},
    {A, M0F38, P66, 0x3D, W0, Full4, map2<I32, Maximum>}, {E, M0F38, P66, 0x3D, W1, Full8, map2<I64, Maximum>},
    {A, M0F, P66, 0xDE, WX, FullMem, map2<U8, Maximum>}, {A, M0F38, P66, 0x3E, WX, FullMem, map2<U16, Maximum>},
    {A, M0F38, P66, 0x3F, W0, Full4, map2<U32, Maximum>}, {E, M0F38, P66, 0x3F, W1, Full8, map2<U64, Maximum>},
    {A, M0F38, P66, 0x1C, WX, FullMem, map1<I8, Absolute>}, {A, M0F38, P66, 0x1D, WX, FullMem, map1<I16, Absolute>},
    {A, M0F38, P66, 0x1E, W0, Full4, map1<I32, Absolute>}, {E, M0F38, P66, 0x1F, W1, Full8, map1<I64, Absolute>},
    {E, M0F38, P66, 0x44, W0, Full4, map1<U32, LeadingZeros>}, {E, M0F38, P66, 0x44, W1, Full8, map1<U64, LeadingZeros>},
    {E, M0F38, P66, 0x54, W0, FullMem, map1<U8, PopulationCount>}, {E, M0F38, P66, 0x54, W1, FullMem, map1<U16, PopulationCount>},
    {E, M0F38, P66, 0x55, W0, Full4, map1<U32, PopulationCount>}, {E, M0F38, P66, 0x55, W1, Full8, map1<U64, PopulationCount>},
    {E, M0F38, P66, 0xC4, W0, Full4, conflict<U32>}, {E, M0F38, P66, 0xC4, W1, Full8, conflict<U64>},
};

struct Equal { template <class T> bool operator()(T a, T b) const { return a == b; } };
struct Greater { template <class T> bool operator()(T a, T b) const { return a > b; } };
struct Test { template <class T> bool operator()(T a, T b) const { return (a & b) != 0; } };
struct TestNot { template <class T> bool operator()(T a, T b) const { return (a & b) == 0; } };

template <class T, class F>
void compare_to_mask(State& s, const Op& o) {
    Zmm buffer;
    const Zmm& b = source<T>(s, o, buffer);
    const Zmm& a = s.z[o.v];
    U64 m = 0;
    for (unsigned i = 0; i < o.vl / sizeof(T); ++i) m |= U64{F{}(lanes<T>(a)[i], lanes<T>(b)[i])} << i;
    write_mask<T>(s, o, m);
}
template <class T, class F>
void compare_to_vector(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& b = source<T>(s, o, buffer);
    const Zmm& a = s.z[o.v];
    for (unsigned i = 0; i < kLanes<T>; ++i) lanes<T>(r)[i] = static_cast<T>(F{}(lanes<T>(a)[i], lanes<T>(b)[i]) ? -1 : 0);
    write_plain(s.z[o.reg], o, r, o.vl);
}

struct Less { template <class T> bool operator()(T a, T b) const { return a < b; } };
struct LessEqual { template <class T> bool operator()(T a, T b) const { return a <= b; } };
struct Never { template <class T> bool operator()(T, T) const { return false; } };
struct NotEqual { template <class T> bool operator()(T a, T b) const { return a != b; } };
struct NotLess { template <class T> bool operator()(T a, T b) const { return a >= b; } };
struct Always { template <class T> bool operator()(T, T) const { return true; } };

template <class T>
void compare_by_immediate(State& s, const Op& o) {
    switch (o.imm & 7) {
        case 0: return compare_to_mask<T, Equal>(s, o);
        case 1: return compare_to_mask<T, Less>(s, o);
        case 2: return compare_to_mask<T, LessEqual>(s, o);
        case 3: return compare_to_mask<T, Never>(s, o);
        case 4: return compare_to_mask<T, NotEqual>(s, o);
        case 5: return compare_to_mask<T, NotLess>(s, o);
        case 6: return compare_to_mask<T, Greater>(s, o);
        default: return compare_to_mask<T, Always>(s, o);
    }
}

// vptest, vtestps, vtestpd: ZF = no common bit among those of `Bits`, CF = the second within the first.
template <U64 Bits>
void test_bits(State& s, const Op& o) {
    Zmm buffer;
    const Zmm& b = source<U64>(s, o, buffer);
    const Zmm& a = s.z[o.reg];
    U64 common = 0, outside = 0;
    for (unsigned i = 0; i < o.vl / 8u; ++i) {
        common |= a.u64[i] & b.u64[i] & Bits;
        outside |= ~a.u64[i] & b.u64[i] & Bits;
    }
    s.flags = (s.flags & ~std::uint64_t{0x8D5}) | (common ? 0u : 0x40u) | (outside ? 0u : 1u);
}

constexpr auto LV = static_cast<std::uint8_t>(kLegacy | kVex);

constexpr Row compares[] = {
    {E, M0F, P66, 0x64, WX, FullMem, compare_to_mask<I8, Greater>}, {E, M0F, P66, 0x65, WX, FullMem, compare_to_mask<I16, Greater>},
    {E, M0F, P66, 0x66, W0, Full4, compare_to_mask<I32, Greater>}, {E, M0F38, P66, 0x37, W1, Full8, compare_to_mask<I64, Greater>},
    {E, M0F, P66, 0x74, WX, FullMem, compare_to_mask<U8, Equal>}, {E, M0F, P66, 0x75, WX, FullMem, compare_to_mask<U16, Equal>},
    {E, M0F, P66, 0x76, W0, Full4, compare_to_mask<U32, Equal>}, {E, M0F38, P66, 0x29, W1, Full8, compare_to_mask<U64, Equal>},
    {LV, M0F, P66, 0x64, WX, FullMem, compare_to_vector<I8, Greater>}, {LV, M0F, P66, 0x65, WX, FullMem, compare_to_vector<I16, Greater>},
    {LV, M0F, P66, 0x66, WX, FullMem, compare_to_vector<I32, Greater>}, {LV, M0F38, P66, 0x37, WX, FullMem, compare_to_vector<I64, Greater>},
    {LV, M0F, P66, 0x74, WX, FullMem, compare_to_vector<U8, Equal>}, {LV, M0F, P66, 0x75, WX, FullMem, compare_to_vector<U16, Equal>},
    {LV, M0F, P66, 0x76, WX, FullMem, compare_to_vector<U32, Equal>}, {LV, M0F38, P66, 0x29, WX, FullMem, compare_to_vector<U64, Equal>},
    {E, M0F38, P66, 0x26, W0, FullMem, compare_to_mask<U8, Test>}, {E, M0F38, P66, 0x26, W1, FullMem, compare_to_mask<U16, Test>},
    {E, M0F38, P66, 0x27, W0, Full4, compare_to_mask<U32, Test>}, {E, M0F38, P66, 0x27, W1, Full8, compare_to_mask<U64, Test>},
    {E, M0F38, PF3, 0x26, W0, FullMem, compare_to_mask<U8, TestNot>}, {E, M0F38, PF3, 0x26, W1, FullMem, compare_to_mask<U16, TestNot>},
    {E, M0F38, PF3, 0x27, W0, Full4, compare_to_mask<U32, TestNot>}, {E, M0F38, PF3, 0x27, W1, Full8, compare_to_mask<U64, TestNot>},
    {E, M0F3A, P66, 0x1E, W0, Full4, compare_by_immediate<U32>}, {E, M0F3A, P66, 0x1E, W1, Full8, compare_by_immediate<U64>},
    {E, M0F3A, P66, 0x1F, W0, Full4, compare_by_immediate<I32>}, {E, M0F3A, P66, 0x1F, W1, Full8, compare_by_immediate<I64>},
    {E, M0F3A, P66, 0x3E, W0, FullMem, compare_by_immediate<U8>}, {E, M0F3A, P66, 0x3E, W1, FullMem, compare_by_immediate<U16>},
    {E, M0F3A, P66, 0x3F, W0, FullMem, compare_by_immediate<I8>}, {E, M0F3A, P66, 0x3F, W1, FullMem, compare_by_immediate<I16>},
    {LV, M0F38, P66, 0x17, WX, FullMem, test_bits<~0ull>}, {kVex, M0F38, P66, 0x0E, WX, FullMem, test_bits<0x8000000080000000>},
    {kVex, M0F38, P66, 0x0F, WX, FullMem, test_bits<0x8000000000000000>},
};

}  // namespace

RowTable logic_rows() { return table_of(logic); }
RowTable integer_rows() { return table_of(integers); }
RowTable integer_compare_rows() { return table_of(compares); }

}  // namespace nax::emulator
