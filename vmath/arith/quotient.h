// Exact reduction of large quotients, shared by Fmod and Remainder.
#pragma once

#include "vmath/frame/memory.h"

namespace nax::vmath::NAX_ISA {

// With q = rest/divisor rounded to nearest and at least 2^p (p bits of mantissa), q is an even integer and its error at
// most half its last place. So rest - q divisor in one fused step is at most half of (last place of q) divisor in size
// and a multiple of (last place of q)(last place of divisor): it has no more than p bits, hence is exact. It leaves a
// quotient smaller by 2^p; the new rest may be negative.
template <class E>
struct QuotientStep {
    using Vector = typename E::Vector;
    using Mask = typename E::Mask;

    Vector sign = E::row_of_bits(E::sign_bit);
    Vector largest = E::row_of_bits(E::exponent_field - 1);
    Vector limit = E::row(typename E::Element(uint64_t{2} << E::mantissa_bits));

    NAX_VEC Vector dividend_if_infinite(Vector divisor, Vector dividend, Vector result) const {
        return choose(greater(divisor, largest), dividend, result);
    }

    struct Result {
        Vector quotient;
        Mask rare;
    };

    // Brings rest >= 0 to where |rest/divisor| is below 2^p. Lanes whose quotient is Inf or NaN are rare. An infinite
    // divisor leaves a quotient of zero, and the caller to put the dividend in place of 0 times Inf.
    NAX_VEC Result reduce(Vector& rest, Vector divisor) const {
        Vector quotient = div(rest, divisor);
        const Mask rare = not_less_equal(quotient, largest);
        Mask large = greater_equal(quotient, limit) & ~rare;
        while (any(large)) [[unlikely]] {
            rest = choose(large, fnma(quotient, divisor, rest), rest);
            quotient = choose(large, div(rest, divisor), quotient);
            large = large & greater_equal(and_not(sign, quotient), limit);
        }
        return {quotient, rare};
    }
};

}  // namespace nax::vmath::NAX_ISA
