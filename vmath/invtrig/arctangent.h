// The kernels of Atan and Atan2 in both units.
//
//     atan(s/l) = atan(b) + atan(t),   t = (s - b l)/(l + b s)
//
// with base points b from a table: for Atan, l = 1, every 1/4 up to 3.75, beyond which t never exceeds 1/3.75; for
// Atan2 0, 1/2 and 1 after division of the smaller magnitude by the larger, the octant being part of the table's index.
// s - b l is exact. HA carries the error of the quotient, of the table, of 1/pi and of the last sum. Where the series
// is short enough without, Atan2 at LA and EP does without base points.
#pragma once

#include "vmath/invtrig/arctangent_coefficients.inc"
#include "vmath/invtrig/unit.h"

namespace nax::vmath::NAX_ISA {

// base + base_low + atan(t + t_low) in the unit; base is 0 or larger than t.
template <class E, Unit U, Level L, int Terms>
struct ArctangentSeries {
    using Vector = typename E::Vector;
    Coefficients<E, Terms> polynomial;
    [[no_unique_address]] Factor<E, U> factor = {};

    NAX_VEC Vector operator()(Vector base, Vector base_low, Vector t, Vector t_low) const {
        const Vector w = mul(t, t), p = polynomial.chain(w);
        Vector low = base_low, z = t;
        const Vector twp = mul(mul(t, w), p);
        factor(z, t_low);
        const Vector sum = fast_two_sum(base, z, low);
        return add(sum, add(low, add(t_low, twp)));
    }
    NAX_VEC Vector operator()(Vector base, Vector t) const {
        const Vector w = mul(t, t), p = polynomial.chain(w);
        return factor.single(base, t, w, p);
    }
};

template <class E, int Size, Level L>
using BaseTable = std::conditional_t<L == Level::High, PairTable<E, Size>, Table<E, Size>>;

template <class E, Unit U, Level L, int Terms>
struct Atan {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 2;

    BaseTable<E, 16, L> table;
    ArctangentSeries<E, U, L, Terms> series;
    Vector magnitude = E::row_of_bits(~E::sign_bit);
    Vector largest = E::row(0x1p60f);                               // from here on the result rounds to pi/2
    Vector last = E::row(3.75f);                                    // base point
    Vector shifter = E::row(by_precision<E>(0x1.8p21f, 0x1.8p50));  // leaves fourths
    Vector one = E::row(1);

    NAX_VEC void eval(Vector x, Vector& y) const {
        // NaN passes through both
        const Vector a = min(largest, bit_and(x, magnitude));
        const Vector z = add(min(last, a), shifter);
        const Vector b = sub(z, shifter);
        const Vector numerator = sub(a, b), denominator = fma(a, b, one);
        Vector angle;
        if constexpr (L == Level::High) {
            Vector base, base_low, t_low;
            table.look_up(bits(z), base, base_low);
            const Vector t = divide(numerator, denominator, fma(a, b, sub(one, denominator)), one, t_low);
            angle = series(base, base_low, t, t_low);
        } else {
            angle = series(table[bits(z)], div(numerator, denominator));
        }
        y = bit_choose(magnitude, angle, x);
    }
};

// The same at HA in half-turns, with care for tiny arguments.
template <class E, int Terms>
struct AtanpiHigh {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 2;
    static constexpr auto rare = by_precision<E>(vsatanpi_cout_rare, vdatanpi_cout_rare);
    static constexpr bool always_settled = true;

    Atan<E, Unit::HalfTurns, Level::High, Terms> atan;
    TinyRange<E> range = {};

    NAX_VEC auto eval(Vector x, Vector& y) const {
        atan.eval(x, y);
        return range.shortage(bit_and(x, atan.magnitude));
    }
    NAX_VEC auto is_rare(Vector x) const { return range.tiny(bit_and(x, atan.magnitude)); }
};

// Lanes for the scalar path, in every error mode: the vector code has no result for them. These are NaN, infinities,
// two zeros or denormals, and for HA all whose products or quotient would lose bits to the range: magnitudes outside
// [smallest, largest] and such as are `span` binades apart, unless the smaller one is 0.
template <class E, Level L>
struct PlaneRange {
    using Vector = typename E::Vector;
    using Bits = typename E::Bits;
    using Integer = typename E::Integer;
    static constexpr bool high = L == Level::High;
    Vector smallest =
        high ? E::row(by_precision<E>(0x1p-100f, 0x1p-900)) : E::row(by_precision<E>(0x1p-126f, 0x1p-1022));
    Vector largest = E::row(by_precision<E>(0x1p+120f, 0x1p+1000));
    [[no_unique_address]] RowIf<high, Bits> span = E::bits_row(Integer{by_precision<E>(90, 900)} << E::mantissa_bits);

    // Negative there.
    NAX_VEC Bits excess(Vector height, Vector width, Vector small, Vector large) const {
        const Bits outside =
            (bits(largest) - bits(height)) | (bits(largest) - bits(width)) | (bits(large) - bits(smallest));
        if constexpr (high)
            return outside | (((bits(small) - bits(smallest)) | (bits(small) + span - bits(large))) & -bits(small));
        else
            return outside;
    }
    NAX_VEC auto exceeded(Vector height, Vector width) const {
        const Vector small = min(height, width), large = max(height, width);
        return sign_mask(from_bits(excess(height, width, small, large)));
    }
};

// Bits 2 and 3 of an index into the table of octants: whether the angle is steep, and the sign of x. The angle falls
// with t in every other octant.
template <class E>
struct Octant {
    using Vector = typename E::Vector;
    using Bits = typename E::Bits;
    Bits index;
    Vector flip;
    NAX_VEC Octant(typename E::Mask steep, Vector x) {
        const Vector sign = E::row_of_bits(E::sign_bit);
        const Bits negative = bits(bit_and(x, sign));
        const Bits steep_bit = bits(zero_unless(steep, sign));
        constexpr int top = sizeof(typename E::Element) * 8;
        index = shift_right<top - 4>(negative) | shift_right<top - 3>(steep_bit);
        flip = from_bits(negative ^ steep_bit);
    }
};

template <class E, Unit U>
constexpr auto atan2_rare = U == Unit::Radians ? by_precision<E>(vsatan2_cout_rare, vdatan2_cout_rare)
                                               : by_precision<E>(vsatan2pi_cout_rare, vdatan2pi_cout_rare);

template <class E, Unit U, Level L, int Terms>
struct Atan2 {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 2;
    static constexpr auto rare = atan2_rare<E, U>;
    static constexpr bool always_settled = true;

    BaseTable<E, 16, L> table;
    ArctangentSeries<E, U, L, Terms> series;
    Vector magnitude = E::row_of_bits(~E::sign_bit);
    Vector half = E::row(typename E::Element(0.5));
    Vector one = E::row(1);
    Vector quarter = E::row(typename E::Element(0.25)), three_quarters = E::row(typename E::Element(0.75));
    PlaneRange<E, L> range = {};

    NAX_VEC auto eval(Vector y, Vector x, Vector& result) const {
        const Vector height = bit_and(y, magnitude), width = bit_and(x, magnitude);
        const Vector small = min(height, width), large = max(height, width);
        // base point: 0, from 1/4 of `large` on 1/2, from 3/4 on 1; the low bits of its exponent are 0, 2 or 3
        const Vector b = choose(greater(small, mul(large, three_quarters)), one,
                                zero_unless(greater(small, mul(large, quarter)), half));
        const Octant<E> octant(greater(height, width), x);
        const auto index = (shift_right<E::mantissa_bits>(bits(b)) & 3) | octant.index;
        const Vector numerator = fnma(b, large, small), denominator = fma(b, small, large);
        Vector angle;
        if constexpr (L == Level::High) {
            Vector base, base_low, t_low;
            table.look_up(index, base, base_low);
            const Vector error = fma(b, small, sub(large, denominator));
            const Vector t = divide(numerator, denominator, error, one, t_low);
            angle = series(base, base_low, bit_xor(t, octant.flip), bit_xor(t_low, octant.flip));
        } else {
            angle = series(table[index], bit_xor(div(numerator, denominator), octant.flip));
        }
        result = bit_choose(magnitude, angle, y);
        return range.excess(height, width, small, large);
    }
    NAX_VEC auto is_rare(Vector y, Vector x) const {
        return range.exceeded(bit_and(y, magnitude), bit_and(x, magnitude));
    }
};

// Without base points.
template <class E, Unit U, int Terms>
struct Atan2Direct {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 2;
    static constexpr auto rare = atan2_rare<E, U>;
    static constexpr bool always_settled = true;

    Table<E, 16> table;
    ArctangentSeries<E, U, Level::Low, Terms> series;
    Vector magnitude = E::row_of_bits(~E::sign_bit);
    PlaneRange<E, Level::Low> range = {};

    NAX_VEC auto eval(Vector y, Vector x, Vector& result) const {
        const Vector height = bit_and(y, magnitude), width = bit_and(x, magnitude);
        const Vector small = min(height, width), large = max(height, width);
        const Octant<E> octant(greater(height, width), x);
        const Vector angle = series(table[octant.index], bit_xor(div(small, large), octant.flip));
        result = bit_choose(magnitude, angle, y);
        return range.excess(height, width, small, large);
    }
    NAX_VEC auto is_rare(Vector y, Vector x) const {
        return range.exceeded(bit_and(y, magnitude), bit_and(x, magnitude));
    }
};

}  // namespace nax::vmath::NAX_ISA
