// Sums, products, quotients, roots, minima, fused forms and comparisons, done by the host's own instructions.
#include <array>
#include <utility>

#include "tools/interpreter/float_lanes.h"
#include "tools/interpreter/fused_forms.h"

namespace nax::emulator {
namespace {

// The operand order decides which of two NaNs comes out, so the commutative ones are spelled.
struct Sum {
    __m256d operator()(__m256d a, __m256d b) const { asm("vaddpd %1,%0,%0" : "+x"(a) : "x"(b)); return a; }
    __m256 operator()(__m256 a, __m256 b) const { asm("vaddps %1,%0,%0" : "+x"(a) : "x"(b)); return a; }
};
struct Product {
    __m256d operator()(__m256d a, __m256d b) const { asm("vmulpd %1,%0,%0" : "+x"(a) : "x"(b)); return a; }
    __m256 operator()(__m256 a, __m256 b) const { asm("vmulps %1,%0,%0" : "+x"(a) : "x"(b)); return a; }
};
struct Difference {
    __m256d operator()(__m256d a, __m256d b) const { return _mm256_sub_pd(a, b); }
    __m256 operator()(__m256 a, __m256 b) const { return _mm256_sub_ps(a, b); }
};
struct Quotient {
    __m256d operator()(__m256d a, __m256d b) const { return _mm256_div_pd(a, b); }
    __m256 operator()(__m256 a, __m256 b) const { return _mm256_div_ps(a, b); }
};
struct Minimum {
    __m256d operator()(__m256d a, __m256d b) const { return _mm256_min_pd(a, b); }
    __m256 operator()(__m256 a, __m256 b) const { return _mm256_min_ps(a, b); }
};
struct Maximum {
    __m256d operator()(__m256d a, __m256d b) const { return _mm256_max_pd(a, b); }
    __m256 operator()(__m256 a, __m256 b) const { return _mm256_max_ps(a, b); }
};
struct Root {
    __m256d operator()(__m256d a) const { return _mm256_sqrt_pd(a); }
    __m256 operator()(__m256 a) const { return _mm256_sqrt_ps(a); }
};
struct HorizontalSum {
    __m256d operator()(__m256d a, __m256d b) const { return _mm256_hadd_pd(a, b); }
    __m256 operator()(__m256 a, __m256 b) const { return _mm256_hadd_ps(a, b); }
};

template <class T, class F>
void packed2(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& b = source<T>(s, o, buffer);
    compute<T, F>(r, active<T>(s, o), s.z[o.v], b);
    write<T>(s, o, r);
}
template <class T, class F>
void packed1(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& a = source<T>(s, o, buffer);
    compute<T, F>(r, active<T>(s, o), a);
    write<T>(s, o, r);
}
template <class T, class F>
void scalar2(State& s, const Op& o) {
    const Zmm b = scalar_operand<T>(s, o);
    Zmm r{};
    if (scalar_active(s, o)) compute<T, F>(r, 1, s.z[o.v], b);
    write_scalar<UnsignedOf<sizeof(T)>>(s, o, *lanes<UnsignedOf<sizeof(T)>>(r));
}
template <class T, class F>
void scalar1(State& s, const Op& o) {
    const Zmm b = scalar_operand<T>(s, o);
    Zmm r{};
    if (scalar_active(s, o)) compute<T, F>(r, 1, b);
    write_scalar<UnsignedOf<sizeof(T)>>(s, o, *lanes<UnsignedOf<sizeof(T)>>(r));
}

// destination, first source, second source, in the order of the encoding.
template <class T, class F>
void fused(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& c = source<T>(s, o, buffer);
    compute<T, F>(r, active<T>(s, o), s.z[o.reg], s.z[o.v], c);
    write<T>(s, o, r);
}
template <class T, class F>
void fused_scalar(State& s, const Op& o) {
    const Zmm c = scalar_operand<T>(s, o);
    Zmm r = s.z[o.reg];
    if (scalar_active(s, o)) {
        Zmm computed;
        compute<T, F>(computed, 1, s.z[o.reg], s.z[o.v], c);
        *lanes<UnsignedOf<sizeof(T)>>(r) = *lanes<UnsignedOf<sizeof(T)>>(computed);
    } else if (o.zeroing) {
        *lanes<UnsignedOf<sizeof(T)>>(r) = 0;
    }
    write_plain(s.z[o.reg], o, r, 16);
}

constexpr auto A = kAnyEncoding, VE = kVexOrEvex;
constexpr auto LV = static_cast<std::uint8_t>(kLegacy | kVex);

template <class F>
constexpr std::array<Row, 4> four_forms(std::uint8_t opcode) {
    return {{{A, M0F, PNO, opcode, W0, Full4, packed2<float, F>}, {A, M0F, P66, opcode, W1, Full8, packed2<double, F>},
             {A, M0F, PF3, opcode, W0, Mem4, scalar2<float, F>}, {A, M0F, PF2, opcode, W1, Mem8, scalar2<double, F>}}};
}
// One multiply-add form: the packed opcode and the scalar one after it.
template <class F, bool HasScalar = true>
constexpr std::array<Row, 4> fused_forms(std::uint8_t opcode) {
    const auto next = static_cast<std::uint8_t>(opcode + (HasScalar ? 1 : 0));
    return {{{VE, M0F38, P66, opcode, W0, Full4, fused<float, F>}, {VE, M0F38, P66, opcode, W1, Full8, fused<double, F>},
             {VE, M0F38, P66, next, W0, HasScalar ? Mem4 : Full4, HasScalar ? fused_scalar<float, F> : fused<float, F>},
             {VE, M0F38, P66, next, W1, HasScalar ? Mem8 : Full8, HasScalar ? fused_scalar<double, F> : fused<double, F>}}};
}

template <std::size_t... N>
constexpr auto concatenate(const std::array<Row, N>&... parts) {
    std::array<Row, (N + ...)> all{};
    std::size_t at = 0;
    const auto append = [&](const auto& part) { for (const Row& row : part) all[at++] = row; };
    (append(parts), ...);
    return all;
}

constexpr std::array<Row, 6> roots = {{
    {A, M0F, PNO, 0x51, W0, Full4, packed1<float, Root>}, {A, M0F, P66, 0x51, W1, Full8, packed1<double, Root>},
    {A, M0F, PF3, 0x51, W0, Mem4, scalar1<float, Root>}, {A, M0F, PF2, 0x51, W1, Mem8, scalar1<double, Root>},
    {LV, M0F, P66, 0x7C, WX, FullMem, packed2<double, HorizontalSum>}, {LV, M0F, PF2, 0x7C, WX, FullMem, packed2<float, HorizontalSum>},
}};
constexpr auto arithmetic = concatenate(
    roots, four_forms<Sum>(0x58), four_forms<Product>(0x59), four_forms<Difference>(0x5C), four_forms<Minimum>(0x5D),
    four_forms<Quotient>(0x5E), four_forms<Maximum>(0x5F));

constexpr auto fused_rows = concatenate(
    fused_forms<AddSub132, false>(0x96), fused_forms<SubAdd132, false>(0x97), fused_forms<Add132>(0x98), fused_forms<Sub132>(0x9A),
    fused_forms<NegativeAdd132>(0x9C), fused_forms<NegativeSub132>(0x9E),
    fused_forms<AddSub213, false>(0xA6), fused_forms<SubAdd213, false>(0xA7), fused_forms<Add213>(0xA8), fused_forms<Sub213>(0xAA),
    fused_forms<NegativeAdd213>(0xAC), fused_forms<NegativeSub213>(0xAE),
    fused_forms<AddSub231, false>(0xB6), fused_forms<SubAdd231, false>(0xB7), fused_forms<Add231>(0xB8), fused_forms<Sub231>(0xBA),
    fused_forms<NegativeAdd231>(0xBC), fused_forms<NegativeSub231>(0xBE));

// One comparison predicate on half registers; they differ in the answer to NaNs and in which of them raise a flag.
template <int Predicate>
struct Compare {
    __m256d operator()(__m256d a, __m256d b) const { return _mm256_cmp_pd(a, b, Predicate); }
    __m256 operator()(__m256 a, __m256 b) const { return _mm256_cmp_ps(a, b, Predicate); }
};
template <class T, int Predicate>
void compare(Zmm& r, std::uint64_t mask, const Zmm& a, const Zmm& b) { compute<T, Compare<Predicate>>(r, mask, a, b); }

template <class T, int... Predicates>
constexpr auto predicate_table(std::integer_sequence<int, Predicates...>) {
    return std::array{compare<T, Predicates>...};
}
template <class T>
void compare_by_immediate(const Op& o, Zmm& r, std::uint64_t mask, const Zmm& a, const Zmm& b) {
    static constexpr auto table = predicate_table<T>(std::make_integer_sequence<int, 32>{});
    table[static_cast<unsigned>(o.imm) & 31](r, mask, a, b);
}

template <class T>
void compare_to_mask(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& b = source<T>(s, o, buffer);
    compare_by_immediate<T>(o, r, active<T>(s, o), s.z[o.v], b);
    std::uint64_t m = 0;
    for (unsigned h = 0; h < 2; ++h) {
        if constexpr (sizeof(T) == 8) m |= std::uint64_t(_mm256_movemask_pd(half<T>(r, h))) << (4 * h);
        else m |= std::uint64_t(_mm256_movemask_ps(half<T>(r, h))) << (8 * h);
    }
    write_mask<T>(s, o, m);
}
template <class T>
void compare_scalar_to_mask(State& s, const Op& o) {
    const Zmm b = scalar_operand<T>(s, o);
    Zmm r{};
    if (scalar_active(s, o)) compare_by_immediate<T>(o, r, 1, s.z[o.v], b);
    s.k[o.reg & 7] = r.u8[0] & 1;
}
template <class T>
void compare_to_vector(State& s, const Op& o) {
    Zmm buffer, r;
    const Zmm& b = source<T>(s, o, buffer);
    compare_by_immediate<T>(o, r, active<T>(s, o), s.z[o.v], b);
    write<T>(s, o, r);
}
template <class T>
void compare_scalar_to_vector(State& s, const Op& o) {
    const Zmm b = scalar_operand<T>(s, o);
    Zmm r;
    compare_by_immediate<T>(o, r, 1, s.z[o.v], b);
    write_scalar<UnsignedOf<sizeof(T)>>(s, o, *lanes<UnsignedOf<sizeof(T)>>(r));
}

// ucomis* and comis*: ZF, PF, CF tell equal, unordered, less.
template <class T, bool Signals>
void compare_to_flags(State& s, const Op& o) {
    const Zmm b = scalar_operand<T>(s, o);
    const __m128i a = s.z[o.reg].x[0];
    std::uint64_t flags;
    if constexpr (sizeof(T) == 8 && Signals) asm("comisd %2,%1\n\tlahf" : "=a"(flags) : "x"(a), "x"(b.x[0]) : "cc");
    else if constexpr (sizeof(T) == 8) asm("ucomisd %2,%1\n\tlahf" : "=a"(flags) : "x"(a), "x"(b.x[0]) : "cc");
    else if constexpr (Signals) asm("comiss %2,%1\n\tlahf" : "=a"(flags) : "x"(a), "x"(b.x[0]) : "cc");
    else asm("ucomiss %2,%1\n\tlahf" : "=a"(flags) : "x"(a), "x"(b.x[0]) : "cc");
    s.flags = (s.flags & ~std::uint64_t{0x8D5}) | ((flags >> 8) & 0x45);
}

constexpr Row compares[] = {
    {kEvex, M0F, PNO, 0xC2, W0, Full4, compare_to_mask<float>}, {kEvex, M0F, P66, 0xC2, W1, Full8, compare_to_mask<double>},
    {kEvex, M0F, PF3, 0xC2, W0, Mem4, compare_scalar_to_mask<float>}, {kEvex, M0F, PF2, 0xC2, W1, Mem8, compare_scalar_to_mask<double>},
    {LV, M0F, PNO, 0xC2, WX, FullMem, compare_to_vector<float>}, {LV, M0F, P66, 0xC2, WX, FullMem, compare_to_vector<double>},
    {LV, M0F, PF3, 0xC2, WX, Mem4, compare_scalar_to_vector<float>}, {LV, M0F, PF2, 0xC2, WX, Mem8, compare_scalar_to_vector<double>},
    {A, M0F, PNO, 0x2E, W0, Mem4, compare_to_flags<float, false>}, {A, M0F, P66, 0x2E, W1, Mem8, compare_to_flags<double, false>},
    {A, M0F, PNO, 0x2F, W0, Mem4, compare_to_flags<float, true>}, {A, M0F, P66, 0x2F, W1, Mem8, compare_to_flags<double, true>},
};

}  // namespace

RowTable arithmetic_rows() { return {arithmetic.data(), arithmetic.size()}; }
RowTable fma_rows() { return {fused_rows.data(), fused_rows.size()}; }
RowTable float_compare_rows() { return table_of(compares); }

}  // namespace nax::emulator
