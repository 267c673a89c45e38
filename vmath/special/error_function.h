// The kernels of Erf, Erfc and CdfNorm, once for function, precision and level.
//
// x0 is the multiple of 1/128 nearest to the argument, limited to the table, d the distance from it (exact). Within a
// step the slope F' is a bell curve:
//
//     F(x0 + d) = F(x0) + F'(x0) d M(w, q),   M = mean of exp(-w s - q s^2) over s in [0, 1]
//
// with w = 2 x0 d, q = d^2 for the error functions and w = x0 d, q = d^2/2 for the normal distribution. M is a power
// series in both (series.h); M - 1 is small, and F' d at most 0.22 F. HA keeps F' d in two parts and adds the rests of
// F(x0) and F' from the table's other columns. Rows of Erfc and CdfNorm are 2^128 times as large as the function; the
// last product brings the result down, also into the denormals, where it is rounded again. Single precision works in
// double lanes. HA: 0.5 + 0.22 (sum 0.5 + series 0.1) ulp, in the denormals up to 0.5 more of the last normal ulp.
#pragma once

#include "vmath/frame/kernel_exports.h"
#include "vmath/special/error_rows.inc"
#include "vmath/special/series.h"
#include "vmath/special/special_rare.h"

namespace nax::vmath::NAX_ISA {

// How many powers of w go with each power of q.
template <int... Counts>
struct Lengths {};

// M(w, q) - 1.
template <class L>
struct MeanSeries;
template <int... Counts>
struct MeanSeries<Lengths<Counts...>> {
    using Vector = Double::Vector;
    static constexpr int count[] = {Counts...};
    static constexpr int last = sizeof...(Counts) - 1;

    // The terms with q^J, without that: from w^First on, over w^First. Horner's rule: work on other vectors overlaps.
    template <int J, int I>
    NAX_VEC static Vector powers(Vector w) {
        const Vector c = Double::row(mean_coefficient(I, J));
        if constexpr (I + 1 >= count[J])
            return c;
        else
            return fma(powers<J, I + 1>(w), w, c);
    }
    template <int J>
    NAX_VEC static Vector from(Vector w, Vector q) {
        if constexpr (J == last)
            return powers<J, 0>(w);
        else
            return fma(from<J + 1>(w, q), q, powers<J, 0>(w));
    }
    NAX_VEC static Vector less_one(Vector w, Vector q) {
        if constexpr (last == 0)
            return mul(powers<0, 1>(w), w);
        else if constexpr (count[0] == 1)
            return mul(from<1>(w, q), q);
        else
            return fma(from<1>(w, q), q, mul(powers<0, 1>(w), w));
    }
};
// M = 1.
template <>
struct MeanSeries<Lengths<1>> {};

// Row of an argument: x0, and d with NaN for NaN.
template <class F>
struct Rows {
    using Vector = Double::Vector;
    static constexpr double shifter_value = 0x1.8p45;  // its ulp is 1/128
    Vector low = Double::row(F::first / 128.0), high = Double::row(F::last / 128.0);
    Vector shifter = Double::row(shifter_value);
    Double::Bits first_row = Double::bits_row(std::bit_cast<int64_t>(shifter_value) + F::first);

    NAX_VEC Double::Bits find(Vector x, Vector& x0, Vector& d) const {
        // min returns its second operand where one is NaN: first x, then the limit.
        const Vector limited = min(high, max(low, x));
        const Vector z = add(min(limited, high), shifter);
        x0 = sub(z, shifter);
        d = sub(limited, x0);
        return bits(z) - first_row;
    }
};

template <class F, class Length, bool Rest>
struct ErrorCore {
    using Vector = Double::Vector;
    Rows<F> rows = {};
    Vector half = Double::row(0.5), descale = Double::row(0x1p-128);

    NAX_VEC Vector operator()(Vector x) const {
        Vector x0, d, value, slope;
        const auto row = rows.find(x, x0, d);
        const auto* const pairs = reinterpret_cast<const double(*)[2]>(F::rows);
        look_up_pair(pairs, row + row, value, slope);
        // F' d M
        Vector step = mul(slope, d);
        if constexpr (!std::is_same_v<Length, Lengths<1>>) {
            const Vector d2 = mul(d, d), x0_d = mul(x0, d);
            const Vector w = F::normal ? x0_d : add(x0_d, x0_d), q = F::normal ? mul(d2, half) : d2;
            const Vector m = MeanSeries<Length>::less_one(w, q);
            if constexpr (Rest) {
                Vector value_rest, slope_rest;
                look_up_pair(pairs + 1, row + row, value_rest, slope_rest);
                const Vector step_rest = fma(slope_rest, d, fms(slope, d, step));
                step = add(step, fma(step, m, add(step_rest, value_rest)));
            } else {
                step = fma(step, m, step);
            }
        }
        const Vector y = add(value, step);
        return F::scaled ? mul(y, descale) : y;
    }
};

template <class Core, auto Rare, class Beyond>
struct ErrorDouble {
    using Precision = Double;
    using Vector = Double::Vector;
    static constexpr int unroll = 2;
    static constexpr auto rare = Rare;
    Core core = {};
    Beyond beyond = {};
    NAX_VEC Double::Mask eval(Vector x, Vector& y) const {
        y = core(x);
        return beyond(x);
    }
};

template <class Core, auto Rare, class Beyond>
struct ErrorSingle {
    using Precision = Single;
    using Vector = Single::Vector;
    static constexpr int unroll = 1;
    static constexpr auto rare = Rare;
    Core core = {};
    Beyond beyond = {};
    NAX_VEC Single::Mask eval(Vector x, Vector& y) const {
        y = narrow(core(widen_low(x)), core(widen_high(x)));
        return beyond(x);
    }
};

}  // namespace nax::vmath::NAX_ISA
