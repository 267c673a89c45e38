// The core of each function, unit, precision and level: which algorithm with which coefficients.
#pragma once

#include "vmath/trig/series.h"
#include "vmath/trig/sixteenths.h"
#include "vmath/trig/tangent_quotients.inc"

namespace nax::vmath::NAX_ISA {

enum class Level { HA, LA, EP };

// sin(r) = r P(r^2), |r| <= pi/2; of the first EP set the leading coefficient is fitted too.
inline constexpr double radian_sine_double_la[] = {1,
                                                   -0.16666666666666186,
                                                   0.008333333333285542,
                                                   -0.00019841269825056256,
                                                   2.7557316600552628e-06,
                                                   -2.505188027386288e-08,
                                                   1.6048095404959637e-10,
                                                   -7.373344533110665e-13};
inline constexpr double radian_sine_double_ep[] = {1, -0.16666658839437162, 0.008333046645248707,
                                                   -0.0001980808536178708, 2.602272538419318e-06};
inline constexpr double radian_sine_single_ha[] = {1, -0.1666665955042783, 0.00833306624608569, -0.00019809602902257352,
                                                   2.605780638722852e-06};
inline constexpr float radian_sine_single_la[] = {1, -0.16666659712791443f, 0.008333062753081322f,
                                                  -0.00019809602235909551f, 2.605780537123792e-06f};
inline constexpr float radian_sine_single_ep[] = {0.9998853206634521f, -0.16592095792293549f, 0.007576601579785347f};

// Parts of pi that the short reduction takes off: as many as leave the level's accuracy beside the nearest multiples.
template <Function F, Unit U, int Parts, class E, class T, size_t N>
constexpr auto half_turn_core(const T (&series)[N]) {
    return HalfTurnCore<E, F, U, Parts, int(N)>{series};
}
template <Unit U, int Parts, class E, class T, size_t Top, size_t Bottom>
constexpr auto tangent_core(const T (&top)[Top], const T (&bottom)[Bottom]) {
    return TangentCore<E, U, Parts, int(Top), int(Bottom)>{top, bottom};
}
template <int Parts, class E, class T, size_t S, size_t C>
constexpr auto sine_cosine_core(const T (&sine)[S], const T (&cosine)[C]) {
    return SineCosineCore<E, Parts, int(S), int(C)>{sine, cosine};
}

// Cores of float at HA are those in double lanes.
template <Level L, class E, Function F, Unit U>
constexpr auto make_core() {
    constexpr bool doubles = std::is_same_v<E, Double>;
    constexpr int which = L == Level::HA ? 2 : 2 * !doubles + (L == Level::EP);  // 0, 1: double LA, EP; 3 is unused
    if constexpr (doubles && L == Level::HA) {
        return SixteenthCore<F, U>{};
    } else if constexpr (F == Function::SineCosine) {
        if constexpr (doubles && L == Level::LA)
            return sine_cosine_core<3, E>(quarter_sine_double_la, quarter_cosine_double_la);
        else if constexpr (doubles || L == Level::HA)
            return sine_cosine_core<2, Double>(quarter_sine_double_ep, quarter_cosine_double_ep);
        else if constexpr (L == Level::LA)
            return sine_cosine_core<3, E>(quarter_sine_single_la, quarter_cosine_single_la);
        else
            return sine_cosine_core<2, E>(quarter_sine_single_ep, quarter_cosine_single_ep);
    } else if constexpr (F == Function::Tangent) {
        static_assert(which >= 0);
        if constexpr (U == Unit::Radian) {
            if constexpr (doubles && L == Level::LA)
                return tangent_core<U, 3, E>(tangent_radian_long_numerator, tangent_radian_long_denominator);
            else if constexpr (doubles || L == Level::HA)
                return tangent_core<U, 2, Double>(tangent_radian_short_numerator, tangent_radian_short_denominator);
            else if constexpr (L == Level::LA)
                return tangent_core<U, 3, E>(tangent_radian_single_la_numerator, tangent_radian_single_la_denominator);
            else
                return tangent_core<U, 2, E>(tangent_radian_single_ep_numerator, tangent_radian_single_ep_denominator);
        } else if constexpr (U == Unit::Degree) {
            if constexpr (doubles && L == Level::LA)
                return tangent_core<U, 1, E>(tangent_degree_long_numerator, tangent_degree_long_denominator);
            else if constexpr (doubles || L == Level::HA)
                return tangent_core<U, 1, Double>(tangent_degree_short_numerator, tangent_degree_short_denominator);
            else if constexpr (L == Level::LA)
                return tangent_core<U, 1, E>(tangent_degree_single_la_numerator, tangent_degree_single_la_denominator);
            else
                return tangent_core<U, 1, E>(tangent_degree_single_ep_numerator, tangent_degree_single_ep_denominator);
        } else {
            if constexpr (doubles && L == Level::LA)
                return tangent_core<U, 1, E>(tangent_half_turn_long_numerator, tangent_half_turn_long_denominator);
            else if constexpr (doubles || L == Level::HA)
                return tangent_core<U, 1, Double>(tangent_half_turn_short_numerator,
                                                  tangent_half_turn_short_denominator);
            else if constexpr (L == Level::LA)
                return tangent_core<U, 1, E>(tangent_half_turn_single_la_numerator,
                                             tangent_half_turn_single_la_denominator);
            else
                return tangent_core<U, 1, E>(tangent_half_turn_single_ep_numerator,
                                             tangent_half_turn_single_ep_denominator);
        }
    } else if constexpr (U == Unit::Radian) {
        if constexpr (doubles && L == Level::LA)
            return half_turn_core<F, U, 3, E>(radian_sine_double_la);
        else if constexpr (doubles)
            return half_turn_core<F, U, 2, E>(radian_sine_double_ep);
        else if constexpr (L == Level::HA)
            return half_turn_core<F, U, 2, Double>(radian_sine_single_ha);
        else if constexpr (L == Level::LA)
            return half_turn_core<F, U, 3, E>(radian_sine_single_la);
        else
            return half_turn_core<F, U, 2, E>(radian_sine_single_ep);
    } else if constexpr (U == Unit::Degree) {
        if constexpr (doubles && L == Level::LA)
            return half_turn_core<F, U, 1, E>(degree_sine_double_la);
        else if constexpr (doubles || L == Level::HA)
            return half_turn_core<F, U, 1, Double>(degree_sine_double_ep);
        else if constexpr (L == Level::LA)
            return half_turn_core<F, U, 1, E>(degree_sine_single_la);
        else
            return half_turn_core<F, U, 1, E>(degree_sine_single_ep);
    } else {
        if constexpr (doubles && L == Level::LA)
            return half_turn_core<F, U, 1, E>(half_turn_sine_double_la);
        else if constexpr (doubles || L == Level::HA)
            return half_turn_core<F, U, 1, Double>(half_turn_sine_double_ep);
        else if constexpr (L == Level::LA)
            return half_turn_core<F, U, 1, E>(half_turn_sine_single_la);
        else
            return half_turn_core<F, U, 1, E>(half_turn_sine_single_ep);
    }
}

template <Level L, class E, Function F, Unit U>
using Core = decltype(make_core<L, E, F, U>());

}  // namespace nax::vmath::NAX_ISA
