// r = a - n b with n the quotient a/b without its fraction; r has the sign of a. Always exact.
//
// With q = a/b rounded to nearest and below 2^p (p bits of mantissa), t = q without its fraction is n or n + 1, so
// a - t b in one fused step is exact: a multiple of the last place of the smaller number and not above |b|. Where it
// comes out negative, |b| is added back. Larger quotients are brought down first (quotient.h).
// Rare: b zero or NaN, a Inf or NaN, and quotients that overflow.
#include "vmath/arith/arith_rare.h"
#include "vmath/arith/quotient.h"
#include "vmath/frame/kernel_exports.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class E>
struct Fmod {
    using Precision = E;
    using Vector = typename E::Vector;
    using Mask = typename E::Mask;
    static constexpr int unroll = 2;
    static constexpr auto rare = by_precision<E>(vsfmod_cout_rare, vdfmod_cout_rare);

    Vector sign = E::row_of_bits(E::sign_bit);
    Vector zero = E::row(0.0);
    QuotientStep<E> step;

    NAX_VEC Mask eval(Vector a, Vector b, Vector& r) const {
        const Vector divisor = and_not(sign, b);
        Vector rest = and_not(sign, a);
        const auto [quotient, rare_lanes] = step.reduce(rest, divisor);
        rest = fnma(round_to_integer<kTowardZero>(quotient), divisor, rest);
        rest = add_where(less(rest, zero), rest, divisor);
        r = step.dividend_if_infinite(divisor, a, bit_choose(sign, a, rest));
        return rare_lanes;
    }
};

constexpr Fmod<Single> vsfmod_data{};
constexpr Fmod<Double> vdfmod_data{};

}  // namespace

NAX_BINARY_KERNEL(s, Fmod, Z0HA, vsfmod_data)
NAX_BINARY_KERNEL(d, Fmod, Z0HA, vdfmod_data)

}  // namespace nax::vmath::NAX_ISA
