// The kernels of Ln, Log2 and Log10, once for base, precision and level.
//
//     log(x) = e log(2) + log(1/c) + log(1 + r)
//
// HA adds e log(2) and the table's entry in high parts that make the sum exact, then the leading term of log(1 + r)
// with its rounding error; the low parts, that error and the rest of the series make up the low sum. LA and EP know
// single constants only and differ in the length of the series.
#pragma once

#include "vmath/frame/kernel_exports.h"
#include "vmath/frame/polynomial.h"
#include "vmath/log/log_coefficients.inc"
#include "vmath/log/log_rare.h"
#include "vmath/log/log_tables.inc"
#include "vmath/log/reduction.h"

namespace nax::vmath::NAX_ISA {

enum class Base { E, Two, Ten };

template <class E, Base B>
struct LogNames;  // scalar path
template <>
struct LogNames<Double, Base::E> {
    static constexpr auto rare = vdln_cout_rare;
};
template <>
struct LogNames<Single, Base::E> {
    static constexpr auto rare = vsln_cout_rare;
};
template <>
struct LogNames<Double, Base::Two> {
    static constexpr auto rare = vdlog2_cout_rare;
};
template <>
struct LogNames<Single, Base::Two> {
    static constexpr auto rare = vslog2_cout_rare;
};
template <>
struct LogNames<Double, Base::Ten> {
    static constexpr auto rare = vdlog10_cout_rare;
};
template <>
struct LogNames<Single, Base::Ten> {
    static constexpr auto rare = vslog10_cout_rare;
};

// Stands for a row that a base has no need of.
struct None {
    template <class V>
    constexpr None(const V&) {}
    constexpr None() = default;
};
template <bool Present, class Vector>
using RowIf = std::conditional_t<Present, Vector, None>;

// In place of a mask: no lane.
struct Nowhere {};

// log(1 + r) = factor r + r^2 P(r); factor is 1 for base e, else 1/ln(base) in two parts. e needs no factor in base 2.
template <class E, Base B, int IndexBits, int Terms>
struct LogHigh {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 4;
    static constexpr bool has_log_2 = B != Base::Two, has_factor = B != Base::E;
    static constexpr auto rare = LogNames<E, B>::rare;

    PairTable<E, 1 << IndexBits> table;
    Coefficients<E, Terms> polynomial;
    [[no_unique_address]] RowIf<has_factor, Vector> factor_high, factor_low;
    [[no_unique_address]] RowIf<has_log_2, Vector> log_2_high, log_2_low;
    Reduction<E, IndexBits> reduction = {};

    NAX_VEC auto eval(Vector x, Vector& y, auto care) const {
        if constexpr (kOrdinaryOnly<decltype(care)>) {
            y = sum_up(reduction(x, care), Nowhere{});
            return not_ordinary<E>(x);
        } else {
            const auto outside = outside_domain(x);
            y = sum_up(reduction(x, care), outside);
            return outside;
        }
    }
    NAX_VEC auto is_rare(Vector x) const { return outside_domain(x); }

    // `r_low`, if given, is added to r.
    template <class Outside, class... Low>
    NAX_VEC Vector sum_up(const Reduced<E>& a, Outside outside, Low... r_low) const {
        const Vector r = a.r, r2 = mul(r, r);
        // e log(2) + log(1/c) in high parts, exact; the low parts
        Vector sum, rest;
        table.look_up(a.index, sum, rest);
        if constexpr (has_log_2) {
            sum = fma(a.exponent, log_2_high, sum);
            rest = fma(a.exponent, log_2_low, rest);
        } else {
            sum = add(a.exponent, sum);
        }
        // the leading term, a product with its error unless the factor is 1
        Vector lead = r;
        if constexpr (has_factor) {
            lead = mul(r, factor_high);
            rest = add(rest, fma(r, factor_low, fms(r, factor_high, lead)));
        }
        const Vector total = add(sum, lead);
        const Vector error = sub(lead, sub(total, sum));
        rest = add(rest, error);
        ((rest = add(rest, r_low)), ...);
        rest = fma(r2, polynomial(r, r2), rest);
        // beside an infinite total the rest is NaN
        if constexpr (std::is_same_v<Outside, Nowhere>)
            return add(total, rest);
        else
            return add_where(~outside, total, rest);
    }
};

// sum + log(1 + r): log(1 + r) = r + r^2 P(r) in base e, else r P(r). The latter as a chain: the square of r that pairs
// need would be an operation more, and the work on other vectors overlaps with the wait.
template <class E, Base B, int Terms>
NAX_VEC typename E::Vector add_series(const Coefficients<E, Terms>& polynomial, typename E::Vector r,
                                      typename E::Vector sum) {
    if constexpr (B == Base::E) {
        const auto r2 = mul(r, r);
        return add(sum, fma(r2, polynomial(r, r2), r));
    } else {
        auto p = polynomial.c[Terms - 1];
#pragma GCC unroll 8
        for (int k = Terms - 2; k >= 0; --k) p = fma(p, r, polynomial.c[k]);
        return fma(p, r, sum);
    }
}

// LA and EP. The logarithm is finite where there is one: the result tells the rare lanes.
template <class E, Base B, int Terms>
struct LogLow {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 4;
    static constexpr bool has_log_2 = B != Base::Two;
    static constexpr auto rare = LogNames<E, B>::rare;

    Table<E, 16> table;
    Coefficients<E, Terms> polynomial;
    [[no_unique_address]] RowIf<has_log_2, Vector> log_2;
    Reduction<E, 4> reduction = {};

    NAX_VEC auto eval(Vector x, Vector& y, auto care) const {
        y = sum_up(reduction(x, care));
        if constexpr (kOrdinaryOnly<decltype(care)>)
            return not_ordinary<E>(x);
        else
            return y;
    }
    NAX_VEC auto is_rare(Vector x) const { return outside_domain(x); }

    NAX_VEC Vector sum_up(const Reduced<E>& a) const {
        // e log(2) + log(1/c)
        Vector sum = table[a.index];
        if constexpr (has_log_2)
            sum = fma(a.exponent, log_2, sum);
        else
            sum = add(a.exponent, sum);
        return add_series<E, B>(polynomial, a.r, sum);
    }
};

}  // namespace nax::vmath::NAX_ISA
