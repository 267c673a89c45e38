// What the scalar paths of the gamma functions share: Taylor rows as sums of two doubles, and sin(pi r)/pi.
#pragma once

#include "vmath/special/double_word.h"

namespace nax::vmath::NAX_ISA {

// The multiple of 1/16 nearest to x, counted in sixteenths, and the exact distance from it; |x| below 2^40.
struct Sixteenths {
    int64_t count;
    double d;
};
[[gnu::always_inline]] inline Sixteenths sixteenths(double x) {
    constexpr double shifter = 0x1.8p48;  // its ulp is 1/16
    const double z = x + shifter;
    return {std::bit_cast<int64_t>(z) - std::bit_cast<int64_t>(shifter), x - (z - shifter)};
}

// c_2 d^2 + ... + c_11 d^11.
[[gnu::always_inline]] inline double taylor_rest(const double* c, double d) {
    const double d2 = d * d, d4 = d2 * d2;
    const double low = (c[0] + c[1] * d) + d2 * (c[2] + c[3] * d), middle = (c[4] + c[5] * d) + d2 * (c[6] + c[7] * d);
    return d2 * (low + d4 * (middle + d4 * (c[8] + c[9] * d)));
}

// A row (value, rest, c_1, rest, c_2 ... c_11) at distance d: value + c_1 d + ..., and value (1 + c_1 d + ...). The
// leading products and sums are exact; what remains is 2^-10 of them and smaller.
[[gnu::always_inline]] inline Word additive_row(const double (&row)[14], double d) {
    const Word lead = product(row[2], d), s = sum(row[0], lead.high);
    return fast_sum(s.high, s.low + (row[1] + (lead.low + row[3] * d + taylor_rest(row + 4, d))));
}
[[gnu::always_inline]] inline Word relative_row(const double (&row)[14], double d) {
    const Word lead = product(row[2], d), step = product(row[0], lead.high), s = fast_sum(row[0], step.high);
    const double small = lead.low + row[3] * d + taylor_rest(row + 4, d);
    return fast_sum(s.high, s.low + (step.low + (row[1] + row[1] * lead.high + row[0] * small)));
}

// sin(pi r)/pi for |r| <= 1/2: r (1 - c_1 z + c_2 z^2 - ...), z = r^2, c_k = pi^(2 k)/(2 k + 1)!. Three coefficients in
// two parts: the rest is below 2^-13, and the error below 2^-64.
inline Word sin_pi_over_pi(double r) {
    constexpr Word c1 = {0x1.a51a6625307d3p+0, 0x1.1873d8912200cp-55};  // pi^2/6
    constexpr Word c2 = {0x1.9f9cb402bc46cp-1, 0x1.487acd8cd312cp-55};  // pi^4/120
    constexpr double pi2 = 0x1.3bd3cc9be45dep+3;
    constexpr Word c3 = {0x1.86a8e4720db67p-3, -0x1.461b9cb783f4cp-58};  // pi^6/5040
    constexpr double c4 = c3.high * pi2 / 72, c5 = c4 * pi2 / 110, c6 = c5 * pi2 / 156, c7 = c6 * pi2 / 210,
                     c8 = c7 * pi2 / 272, c9 = c8 * pi2 / 342, c10 = c9 * pi2 / 420, c11 = c10 * pi2 / 506;
    constexpr double series[] = {c4, -c5, c6, -c7, c8, -c9, c10, -c11};
    const Word z = product(r, r);
    const Word third = sum(c2, product(z, Word{-c3.high, -c3.low}));
    const Word second = sum(Word{-c1.high, -c1.low}, product(z, third));
    const Word s = sum(Word{1.0, 0.0}, product(z, second));
    const double z2 = z.high * z.high;
    return product(fast_sum(s.high, s.low + z2 * z2 * polynomial(series, z.high)), r);
}

}  // namespace nax::vmath::NAX_ISA
