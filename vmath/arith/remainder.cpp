// r = a - n b with n the integer nearest to a/b, ties to even; |r| <= |b|/2, and a zero has the sign of a. Always
// exact.
//
// With q = a/b rounded to nearest and below 2^p (p bits of mantissa), t = q rounded to nearest even is n or a
// neighbour, and a - t b in one fused step is exact. Then one |b| more or less brings it to |r| <= |b|/2; in a tie the
// odd quotient gives way, which turns the sign. Larger quotients are brought down first (quotient.h), by even multiples
// of b. Rare: b zero or NaN, a Inf or NaN, and quotients that overflow.
#include "vmath/arith/arith_rare.h"
#include "vmath/arith/quotient.h"
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct Remainder {
    using Precision = E;
    using Vector = typename E::Vector;
    using Mask = typename E::Mask;
    static constexpr int unroll = 2;
    static constexpr auto rare = by_precision<E>(vsremainder_cout_rare, vdremainder_cout_rare);

    Vector sign = E::row_of_bits(E::sign_bit);
    QuotientStep<E> step;

    NAX_VEC Mask eval(Vector a, Vector b, Vector& r) const {
        const Vector divisor = and_not(sign, b);
        Vector rest = and_not(sign, a);
        const auto [quotient, rare_lanes] = step.reduce(rest, divisor);
        const Vector nearest = round_to_integer<kToNearest>(quotient);
        rest = fnma(nearest, divisor, rest);
        // Doubling is exact, or overflows, which still compares right.
        const Vector twice = add(rest, rest), twice_magnitude = and_not(sign, twice);
        const Vector towards_zero = bit_choose(sign, rest, divisor);
        const Mask tie = equal(twice_magnitude, divisor) & is_odd(nearest);
        const Mask beyond = greater(twice_magnitude, divisor);
        rest = sub_where(beyond | tie, rest, towards_zero);
        r = step.dividend_if_infinite(divisor, a, bit_xor(rest, bit_and(sign, a)));
        return rare_lanes;
    }
};

constexpr Remainder<Single> vsremainder_data{};
constexpr Remainder<Double> vdremainder_data{};

}  // namespace

NAX_BINARY_KERNEL(s, Remainder, Z0HA, vsremainder_data)
NAX_BINARY_KERNEL(d, Remainder, Z0HA, vdremainder_data)

}  // namespace nax::vmath::NAX_ISA
