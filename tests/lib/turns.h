// Sine, cosine and tangent of degrees and half turns, to about an ulp: the argument less a multiple of a
// quarter turn is exact. Zeros as C23 has them: of the sine with the sign of x, of the cosine positive, of the tangent with
// the sign that alternates from half turn to half turn.
#pragma once

#include <mpfr.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace nax::testing {

enum class TurnFunction { Sine, Cosine, Tangent };

template <TurnFunction F, class T>
T of_turns(T x, T quarter_turn) {
    if (!std::isfinite(x)) return x - x;
    int quarters;
    const T angle = std::remquo(x, quarter_turn, &quarters) * (std::numbers::pi_v<T> / 2 / quarter_turn);
    if constexpr (F == TurnFunction::Tangent) {
        if (angle == 0 && (quarters & 1) == 0) return quarters & 2 ? -std::copysign(T(0), x) : std::copysign(T(0), x);
        if ((quarters & 1) == 0) return std::tan(angle);
        return angle == 0 ? std::copysign(std::numeric_limits<T>::infinity(), T(2 - (quarters & 3)))
                          : -1 / std::tan(angle);
    }
    if constexpr (F == TurnFunction::Cosine) ++quarters;
    if (angle == 0 && (quarters & 1) == 0) return F == TurnFunction::Cosine ? T(0) : std::copysign(T(0), x);
    const T size = quarters & 1 ? std::cos(angle) : std::sin(angle);
    return quarters & 2 ? -size : size;
}
template <TurnFunction F, class T>
T of_degrees(T x) {
    return of_turns<F, T>(x, 90);
}
template <TurnFunction F, class T>
T of_half_turns(T x) {
    return of_turns<F, T>(x, T(0.5));
}
template <int (*function)(mpfr_ptr, mpfr_srcptr, unsigned long, mpfr_rnd_t)>
int exact_of_degrees(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t rounding) {
    return function(y, x, 360, rounding);
}

}  // namespace nax::testing
