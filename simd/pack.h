// Vectors of numbers with the cells that belong to them: double goes with 64-bit cells, float with 32-bit cells.
// Lane<T> is the same interface on one element, for what is left of a block and for cells that don't fit 32 bits.
// Results don't depend on which of them computes an element.
#pragma once

// The compiler takes the ignored operand of its own unmasked AVX-512 forms for an uninitialised variable.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif

#include <cstdint>
#include <type_traits>

#include "simd/simd.h"

#if defined(__AVX512F__)
#include "simd/cells_avx512.h"
#else
#include "simd/cells_avx2.h"
#endif

namespace nax::simd {
inline namespace NAX_ISA {

template <class T>
struct Lane {
    using Element = T;
    using F = T;
    using I = int64_t;
    using M = bool;
    static constexpr int kLanes = 1;

    static F set(T a) { return a; }
    static F load(const T* p) { return *p; }
    static void store(T* p, F a) { *p = a; }
    static F add(F a, F b) { return a + b; }
    static F sub(F a, F b) { return a - b; }
    static F mul(F a, F b) { return a * b; }
    static F fma(F a, F b, F c) {
        if constexpr (sizeof(T) == sizeof(double))
            return __builtin_fma(a, b, c);
        else
            return __builtin_fmaf(a, b, c);
    }
    // a limited to [0, top]; NaN becomes 0.
    static F clamp(F a, F top) { return a > 0 ? (a < top ? a : top) : T(0); }
    static M le(F a, F b) { return a <= b; }
    static M lt(F a, F b) { return a < b; }
    static M eq(F a, F b) { return a == b; }
    static bool any(M m) { return m; }
    static bool all(M m) { return m; }
    static M both(M a, M b) { return a && b; }
    static M either(M a, M b) { return a || b; }
    static M first_only(M a, M b) { return a && !b; }

    static I iset(int64_t a) { return a; }
    static I iota() { return 0; }
    static I iadd(I a, I b) { return a + b; }
    static I isub(I a, I b) { return a - b; }
    static I half(I a) { return a >> 1; }
    static M ilt(I a, I b) { return a < b; }
    static I imin(I a, I b) { return a < b ? a : b; }
    static I imax(I a, I b) { return a > b ? a : b; }
    static I select(M m, I a, I b) { return m ? a : b; }
    static F choose(M m, F a, F b) { return m ? a : b; }
    static I count(I a, M m) { return a + (m ? 1 : 0); }
    static I times(I a, int64_t k) { return a * k; }
    static I truncate(F a) { return static_cast<I>(a); }
    static F from_int(I a) { return static_cast<T>(a); }

    static F gather(const T* base, I i) { return base[i]; }
    // Entries i and i + 1 of a table of counts.
    static void gather_counts(const int32_t* table, I i, I& first, I& second) {
        first = table[i], second = table[i + 1];
    }
    static I gather_wide(const int64_t* table, I i) { return table[i]; }
    template <class Cell>
    static I load_cells(const Cell* p) {
        return static_cast<I>(*p);
    }
    template <class Cell>
    static void store_cells(Cell* p, I a) {
        *p = static_cast<Cell>(a);
    }
};

template <class T>
struct Pack {
    using E = std::conditional_t<sizeof(T) == sizeof(double), Double, Single>;
    using Element = T;
    using F = typename E::Vector;
    using I = typename E::Bits;
    using M = typename E::Mask;
    static constexpr int kLanes = E::lanes;

    NAX_VEC static F set(T a) { return E::row(a); }
    NAX_VEC static F load(const T* p) { return simd::load(p); }
    NAX_VEC static void store(T* p, F a) { simd::store(p, a); }
    NAX_VEC static F add(F a, F b) { return simd::add(a, b); }
    NAX_VEC static F sub(F a, F b) { return simd::sub(a, b); }
    NAX_VEC static F mul(F a, F b) { return simd::mul(a, b); }
    NAX_VEC static F fma(F a, F b, F c) { return simd::fma(a, b, c); }
    // a limited to [0, top]; NaN becomes 0.
    NAX_VEC static F clamp(F a, F top) { return min(max(a, E::row(0)), top); }
    NAX_VEC static M le(F a, F b) { return less_equal(a, b); }
    NAX_VEC static M lt(F a, F b) { return less(a, b); }
    NAX_VEC static M eq(F a, F b) { return equal(a, b); }
    NAX_VEC static bool any(M m) { return simd::any(m); }
    NAX_VEC static bool all(M m) { return lane_bits(m) == (1u << kLanes) - 1; }
    NAX_VEC static M both(M a, M b) { return a & b; }
    NAX_VEC static M either(M a, M b) { return a | b; }
    NAX_VEC static M first_only(M a, M b) { return a & ~b; }

    NAX_VEC static I iset(int64_t a) { return E::bits_row(static_cast<typename E::Integer>(a)); }
    NAX_VEC static I iota() { return lane_numbers(I{}); }
    NAX_VEC static I iadd(I a, I b) { return a + b; }
    NAX_VEC static I isub(I a, I b) { return a - b; }
    NAX_VEC static I half(I a) { return shift_right<1>(a); }
    NAX_VEC static M ilt(I a, I b) { return less(a, b); }
    NAX_VEC static I imin(I a, I b) { return a < b ? a : b; }
    NAX_VEC static I imax(I a, I b) { return a > b ? a : b; }
    NAX_VEC static I select(M m, I a, I b) { return simd::choose(m, a, b); }
    NAX_VEC static F choose(M m, F a, F b) { return simd::choose(m, a, b); }
    NAX_VEC static I count(I a, M m) { return count_where(a, m); }
    NAX_VEC static I times(I a, int64_t k) { return product_of_cells(a, iset(k)); }
    NAX_VEC static I truncate(F a) { return truncated(a); }
    NAX_VEC static F from_int(I a) { return number_of(a); }

    NAX_VEC static F gather(const T* base, I i) { return look_up(base, i); }
    NAX_VEC static void gather_counts(const int32_t* table, I i, I& first, I& second) {
        look_up_counts(table, i, first, second);
    }
    NAX_VEC static I gather_wide(const int64_t* table, I i) { return look_up_wide(table, i); }
    template <class Cell>
    NAX_VEC static I load_cells(const Cell* p) {
        return cells_from(p, I{});
    }
    template <class Cell>
    NAX_VEC static void store_cells(Cell* p, I a) {
        simd::store_cells(p, a);
    }
};

// The vectors that serve a cell width: 64-bit cells of single precision go one by one.
template <class T, bool kWide>
using PackFor = std::conditional_t<kWide && sizeof(T) == sizeof(float), Lane<T>, Pack<T>>;

// Coefficients of several cells at once: the rows of kOrder elements that belong to the cells, transposed to one vector
// per power. row(p) = base + p * kOrder. Reads nothing outside the rows.
template <class P, int kOrder>
struct Rows {
    [[gnu::always_inline]] static void load(const typename P::Element* base, const int64_t* p, typename P::F* c) {
        if constexpr (P::kLanes == 1)
            for (int m = 0; m < kOrder; ++m) c[m] = base[*p * kOrder + m];
        else if constexpr (kOrder == 3 || kOrder == 4 || (kOrder == 2 && sizeof(*base) == sizeof(double)))
            load_rows<kOrder>(base, p, c);
        else {
            const auto first = P::times(P::load_cells(p), kOrder);
            for (int m = 0; m < kOrder; ++m) c[m] = P::gather(base + m, first);
        }
    }
};

}  // namespace NAX_ISA
}  // namespace nax::simd
