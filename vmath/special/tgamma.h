// The vector code of TGamma, for both precisions.
//
// x0 is the multiple of 1/16 nearest to x, d the exact distance from it; below 1 the row of 1 + x0 serves, and
// Gamma(x) = Gamma(1 + x)/x:
//
//     Gamma(x) = Gamma(x0) (1 + g_1 d + ... + g_n d^n),  |d| <= 1/32
//
// g_1 is at most 5.1. Double precision keeps Gamma(x0), g_1 and the products with both in two parts. All other
// arguments go to the scalar path.
// Double: 0.5 + (terms from d^2 on 2^-6 + quotient 2^-5) ulp.
#pragma once

#include "vmath/frame/kernel_exports.h"
#include "vmath/special/gamma_rows.inc"
#include "vmath/special/scalar_lanes.h"
#include "vmath/special/special_rare.h"

namespace nax::vmath::NAX_ISA {

// Orders: powers of d; two parts for the leading ones or one.
template <int Orders, bool TwoParts>
struct GammaCore {
    using Vector = Double::Vector;
    using Bits = Double::Bits;
    static constexpr double shifter_value = 0x1.8p48;  // its ulp is 1/16
    static constexpr double smallest = 0x1p-20, end = 171.5;
    static constexpr int row_pairs = 7;
    Vector low = Double::row(smallest), high = Double::row(end), one = Double::row(1);
    Vector shifter = Double::row(shifter_value);
    Bits first = Double::bits_row(std::bit_cast<int64_t>(shifter_value));
    Bits sixteen = Double::bits_row(16);

    NAX_VEC Vector operator()(Vector x) const {
        // max and min return their second operand where one is NaN.
        const Vector limited = min(max(x, low), high);
        const Vector z = add(limited, shifter), d = sub(limited, sub(z, shifter));
        const auto below_one = less(limited, one);
        const Bits sixteenths = bits(z) - first;
        const Bits row = choose(below_one, sixteenths, sixteenths - sixteen);
        const Bits pair = shift_left<3>(row) - row;

        const auto* const rows = reinterpret_cast<const double(*)[2]>(gamma_rows);
        Vector value, value_rest, c1, c1_rest;
        look_up_pair(rows, pair, value, value_rest);
        look_up_pair(rows + 1, pair, c1, c1_rest);
        const Vector rest = mul(mul(d, d), series<1>(rows, pair, d, mul(d, d)));
        const Vector divisor = choose(below_one, limited, one);
        if constexpr (!TwoParts) {
            const Vector y = fma(value, fma(c1, d, rest), value);
            return div(y, divisor);
        } else {
            const Vector lead = mul(c1, d), small = fma(c1_rest, d, add(fms(c1, d, lead), rest));
            const Vector step = mul(value, lead), step_rest = fms(value, lead, step);
            const Vector y = add(value, step),
                         y_rest = add(sub(step, sub(y, value)),
                                      fma(value, small, fma(value_rest, lead, add(step_rest, value_rest))));
            const Vector inverse = div(one, divisor), sum = add(y, y_rest), sum_rest = sub(y_rest, sub(sum, y));
            const Vector q = mul(sum, inverse);
            return fma(add(fnma(q, divisor, sum), sum_rest), inverse, q);
        }
    }
    // c_2 + c_3 d + ..., of pair Pair + 1 and those behind it.
    template <int Pair>
    NAX_VEC static Vector series(const double (*rows)[2], Bits pair, Vector d, Vector d2) {
        Vector even, odd;
        look_up_pair(rows + Pair + 1, pair, even, odd);
        const Vector two = fma(odd, d, even);
        if constexpr (2 * Pair + 1 >= Orders)
            return two;
        else
            return fma(series<Pair + 1>(rows, pair, d, d2), d2, two);
    }
};

}  // namespace nax::vmath::NAX_ISA
