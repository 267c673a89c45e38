#include "tests/lib/near_multiples.h"

#include <mpfr.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace nax::testing {
namespace {

using Fraction = unsigned __int128;  // in 2^-128, modulo 1

// 2^(exponent - 52) 2/pi modulo 1.
Fraction quarter_turns_of_unit(int exponent) {
    mpfr_t x, whole;
    mpfr_init2(x, 1400);
    mpfr_init2(whole, 1400);
    mpfr_const_pi(x, MPFR_RNDN);
    mpfr_ui_div(x, 2, x, MPFR_RNDN);
    mpfr_mul_2si(x, x, exponent - 52, MPFR_RNDN);
    Fraction bits = 0;
    mpfr_frac(x, x, MPFR_RNDN);
    for (int word = 0; word < 2; ++word) {
        mpfr_mul_2ui(x, x, 64, MPFR_RNDN);
        mpfr_floor(whole, x);
        mpfr_sub(x, x, whole, MPFR_RNDN);
        bits = bits << 64 | mpfr_get_ui(whole, MPFR_RNDD);
    }
    mpfr_clears(x, whole, nullptr);
    return bits;
}

Fraction distance(Fraction x) { return std::min(x, Fraction(0) - x); }

}  // namespace

// M 2^(exponent - 52) is near a multiple where M a is near a whole number. By the continued fraction of a there are p
// and q, q the first above 2^47, whose multiples come near from opposite sides and make up every M = i p + j q. In the
// binade are but some j, and for each the nearest M has i about j times the quotient of the distances.
std::vector<double> nearest_to_quarter_turns(int exponent, int count) {
    constexpr int64_t first = int64_t{1} << 52, enough = int64_t{1} << 47, reach = 70;
    const Fraction a = quarter_turns_of_unit(exponent);
    int64_t p = 0, q = 1;
    Fraction p_distance = 0, q_distance = distance(a);  // that of 0 is a whole turn, 2^128
    while (q < enough) {
        const Fraction quotient = (p_distance == 0 ? ~Fraction(0) : p_distance) / q_distance;
        p_distance -= quotient * q_distance;
        std::swap(p_distance, q_distance);
        p += static_cast<int64_t>(quotient) * q;
        std::swap(p, q);
    }
    std::vector<std::pair<Fraction, int64_t>> found;
    const double quotient = static_cast<double>(q_distance) / static_cast<double>(p_distance);
    for (int64_t j = -8; j <= 80; ++j) {
        const int64_t low = (first - j * q) / p, high = (2 * first - j * q) / p;  // the binade's
        const auto centre = std::clamp(static_cast<int64_t>(static_cast<double>(j) * quotient), low, high);
        for (int64_t i = centre - reach; i <= centre + reach; ++i) {
            const int64_t m = i * p + j * q;
            if (m >= first && m < 2 * first) found.emplace_back(distance(a * static_cast<Fraction>(m)), m);
        }
    }
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    std::vector<double> nearest;
    for (const auto& [size, m] : found)
        if (static_cast<int>(nearest.size()) < count)
            nearest.push_back(std::ldexp(static_cast<double>(m), exponent - 52));
    return nearest;
}

}  // namespace nax::testing
