// The kernels of ErfInv, ErfcInv and CdfNormInv, once for function, precision and level.
//
// An argument is folded to h, its distance from the middle of the domain or, in the outer halves, from the near end of
// the domain; both are exact. c is h rounded to 8 significant bits, y0 the function at c and y0' the slope there:
//
//     y = y0 + v + v^2 (t_2 + v t_3 + ...),   v = y0' (h - c),   t_k polynomials in y0 (series.h)
//
// |h - c| <= 2^-8 c makes each order 2^-8 of the one before. HA takes six orders and adds the rest of y0, which the
// table keeps in the last five bits of the slope; LA leaves the rest out; EP takes three orders. Single precision works
// in double lanes with three, two and one order. Rare: h below the grid, and what lies outside the domain.
// HA: 0.5 + (rest of y0 2^-4 + slope 2^-4 + roundings of v 2^-7) ulp.
#pragma once

#include <bit>
#include <limits>

#include "vmath/frame/kernel_exports.h"
#include "vmath/special/inverse_points.inc"
#include "vmath/special/series.h"
#include "vmath/special/special_rare.h"

namespace nax::vmath::NAX_ISA {

// A fold is a struct with fold(x) -> Folded and the constants middle_end (half the width of the middle), curvature
// (series.h), points (the table), single_smallest, single_end and signed_domain: single arguments, or their magnitudes,
// from the first to below the second are ordinary.
struct Folded {
    Double::Vector h;
    Double::Mask tail;
    Double::Vector sign;  // the sign bit alone
};

// The point at which the Taylor series stands.
template <class Fold>
struct Grid {
    using Bits = Double::Bits;
    static constexpr int shift = Double::mantissa_bits - 7;
    static constexpr int64_t middle_start = (1023ll - 35) << 7, tail_start = (1023ll - 53) << 7;
    static constexpr int64_t middle_top = std::bit_cast<int64_t>(Fold::middle_end) >> shift;

    Double::Vector middle_low = Double::row(0x1p-35), tail_low = Double::row(0x1p-53);
    Bits half_step = Double::bits_row(1ll << (shift - 1));
    Bits whole_steps = Double::bits_row(-(1ll << shift));
    Bits middle_index = Double::bits_row(1 - middle_start);
    Bits tail_index = Double::bits_row(2 + middle_top - middle_start - tail_start);

    // Index of c; h below the grid has c = 0 and index 0, in both halves. Returns those lanes, and NaN.
    NAX_VEC Double::Mask find(const Folded& a, Double::Vector& c, Bits& index) const {
        const auto inside = greater_equal(a.h, choose(a.tail, tail_low, middle_low));
        const Bits rounded = (bits(a.h) + half_step) & whole_steps;
        c = zero_unless(inside, from_bits(rounded));
        const Bits steps = shift_right<shift>(rounded) + choose(a.tail, tail_index, middle_index);
        index = bits(zero_unless(inside, from_bits(steps)));
        return ~inside;
    }
};

// t_2 + v t_3 + ... up to t_Orders: Horner's rule in v over polynomials in y^2.
template <class Fold, int Orders>
struct InverseSeries {
    using Vector = Double::Vector;
    template <int Order, int N = 0>
    NAX_VEC static Vector even(Vector y2) {
        constexpr int last = (Order - 1) / 2;
        const Vector c = Double::row(inverse_coefficient(Fold::curvature, Order, N));
        if constexpr (N == last)
            return c;
        else
            return fma(even<Order, N + 1>(y2), y2, c);
    }
    template <int Order>
    NAX_VEC static Vector term(Vector y, Vector y2) {
        if constexpr (Order % 2 == 1)
            return even<Order>(y2);
        else
            return mul(even<Order>(y2), y);
    }
    template <int Order = 2>
    NAX_VEC static Vector sum(Vector v, Vector y, Vector y2) {
        if constexpr (Order == Orders)
            return term<Order>(y, y2);
        else
            return fma(sum<Order + 1>(v, y, y2), v, term<Order>(y, y2));
    }
};

template <class Fold, int Orders, bool Rest>
struct InverseCore {
    using Vector = Double::Vector;
    using Mask = Double::Mask;
    static constexpr int tail_first = 2 + static_cast<int>(Grid<Fold>::middle_top - Grid<Fold>::middle_start);
    Grid<Fold> grid = {};
    Double::Bits rest_field = Double::bits_row(31);
    // 1.5 2^-5 has units of 2^-57; 16 of them are the entry's bias.
    Double::Bits rest_unit = Double::bits_row(std::bit_cast<int64_t>(0x1.8p-5));
    Vector rest_zero = Double::row_of_bits(std::bit_cast<int64_t>(0x1.8p-5) + 16);

    // The result, and the lanes that may be rare.
    NAX_VEC Mask operator()(const Folded& a, Vector& result) const {
        Vector c;
        Double::Bits index;
        const auto below = grid.find(a, c, index);
        Vector y0, slope;
        look_up_pair(Fold::points, index, y0, slope);

        const Vector v = mul(sub(a.h, c), slope);
        Vector increment = v;
        if constexpr (Orders > 1) {
            const Vector q = InverseSeries<Fold, Orders>::sum(v, y0, mul(y0, y0));
            increment = fma(mul(v, v), q, v);
        }
        if constexpr (Rest) {
            const Vector rest = sub(from_bits((bits(slope) & rest_field) | rest_unit), rest_zero);
            increment = fma(y0, rest, increment);
        }
        result = bit_xor(add(y0, increment), a.sign);
        return below;
    }

    // What the vector code makes of lanes beyond the grid's end: infinity at the end of the domain, NaN outside it, and
    // the function's value at the end of the grid between them.
    NAX_VEC Vector beyond_end(const Folded& a, Mask below, Vector result) const {
        constexpr double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
        const Vector zero = Double::row(0);
        const Vector outside = choose(less(a.h, zero), Double::row(nan), Double::row(inf));
        const Vector end = choose(greater(a.h, zero), Double::row(Fold::points[tail_first][0]), outside);
        return choose(below & a.tail, bit_xor(end, a.sign), result);
    }
};

template <class Fold, int Orders, bool Rest, auto Rare>
struct InverseDouble {
    using Precision = Double;
    using Vector = Double::Vector;
    static constexpr int unroll = 2;
    static constexpr auto rare = Rare;
    InverseCore<Fold, Orders, Rest> core = {};

    NAX_VEC Double::Mask eval(Vector x, Vector& y) const { return core(Fold::fold(x), y); }
    NAX_VEC Double::Mask eval_wide(Vector x, Vector& y) const {
        const Folded a = Fold::fold(x);
        const auto below = core(a, y);
        y = core.beyond_end(a, below, y);
        return below & (a.tail | not_equal(a.h, Double::row(0)));
    }
};

template <class Fold, int Orders, auto Rare>
struct InverseSingle {
    using Precision = Single;
    using Vector = Single::Vector;
    static constexpr int unroll = 1;
    static constexpr auto rare = Rare;
    InverseCore<Fold, Orders, false> core = {};
    Vector smallest = Single::row(Fold::single_smallest), end = Single::row(Fold::single_end);

    NAX_VEC Single::Mask eval(Vector x, Vector& y) const {
        Double::Vector low, high;
        core(Fold::fold(widen_low(x)), low);
        core(Fold::fold(widen_high(x)), high);
        y = narrow(low, high);
        const Vector a = Fold::signed_domain ? and_not(Single::row_of_bits(Single::sign_bit), x) : x;
        return not_greater_equal(a, smallest) | greater_equal(a, end);
    }
    NAX_VEC Single::Mask eval_wide(Vector x, Vector& y) const {
        y = narrow(settled(widen_low(x)), settled(widen_high(x)));
        Vector ignored;
        const auto suspect = eval(x, ignored);
        return Fold::signed_domain ? suspect & not_equal(x, Single::row(0)) : suspect;
    }
    NAX_VEC Double::Vector settled(Double::Vector x) const {
        Double::Vector y;
        const Folded a = Fold::fold(x);
        const auto below = core(a, y);
        return core.beyond_end(a, below, y);
    }
};

}  // namespace nax::vmath::NAX_ISA
