// The core of each function, unit, precision and level: which algorithm with which coefficients.
#pragma once

#include "vmath/trig/series.h"
#include "vmath/trig/sixteenths.h"
#include "vmath/trig/trig_series.inc"

namespace nax::vmath::NAX_ISA {

enum class Level { HA, LA, EP };

// sin(r) = r P(r^2), |r| <= pi/2, for the sine. The cosine of 0 is 1, so its sets are others.
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

// By unit: one argument for each.
template <Unit U, class R, class D, class H>
constexpr auto& by_unit(const R& radian, const D& degree, const H& turn) {
    if constexpr (U == Unit::Radian)
        return radian;
    else if constexpr (U == Unit::Degree)
        return degree;
    else
        return turn;
}

template <Function F, class S, class C>
constexpr auto& choose_function(const S& sine, const C& cosine) {
    if constexpr (F == Function::Cosine)
        return cosine;
    else
        return sine;
}

// The cores in double lanes that float has at HA; EP of double has the same, but for the sine of radians.
template <Function F, Unit U, int Parts = 2>
constexpr auto make_lanes() {
    if constexpr (F == Function::SineCosine)
        return sine_cosine_core<Parts, Double>(quarter_sine_double_ep, quarter_cosine_double_ep);
    else if constexpr (F == Function::Tangent)
        return tangent_core<U, Parts, Double>(by_unit<U>(tangent_radian_short_numerator, tangent_degree_short_numerator,
                                                     tangent_half_turn_short_numerator),
                                          by_unit<U>(tangent_radian_short_denominator, tangent_degree_short_denominator,
                                                     tangent_half_turn_short_denominator));
    else
        return half_turn_core<F, U, Parts, Double>(
            by_unit<U>(radian_sine_single_ha, degree_sine_double_ep, half_turn_sine_double_ep));
}

template <Function F, Unit U>
constexpr auto make_double_la() {
    if constexpr (F == Function::SineCosine)
        return sine_cosine_core<3, Double>(quarter_sine_double_la, quarter_cosine_double_la);
    else if constexpr (F == Function::Tangent)
        return tangent_core<U, 3, Double>(
            by_unit<U>(tangent_radian_long_numerator, tangent_degree_long_numerator, tangent_half_turn_long_numerator),
            by_unit<U>(tangent_radian_long_denominator, tangent_degree_long_denominator,
                       tangent_half_turn_long_denominator));
    else
        return half_turn_core<F, U, 3, Double>(
            by_unit<U>(choose_function<F>(radian_sine_double_la, radian_cosine_double_la), degree_sine_double_la,
                       half_turn_sine_double_la));
}

template <Function F, Unit U>
constexpr auto make_single_la() {
    if constexpr (F == Function::SineCosine)
        return sine_cosine_core<3, Single>(quarter_sine_single_la, quarter_cosine_single_la);
    else if constexpr (F == Function::Tangent)
        return tangent_core<U, 3, Single>(
            by_unit<U>(tangent_radian_single_la_numerator, tangent_degree_single_la_numerator,
                       tangent_half_turn_single_la_numerator),
            by_unit<U>(tangent_radian_single_la_denominator, tangent_degree_single_la_denominator,
                       tangent_half_turn_single_la_denominator));
    else
        return half_turn_core<F, U, 3, Single>(
            by_unit<U>(choose_function<F>(radian_sine_single_la, radian_cosine_single_la), degree_sine_single_la,
                       half_turn_sine_single_la));
}

template <Function F, Unit U>
constexpr auto make_single_ep() {
    if constexpr (F == Function::SineCosine)
        return sine_cosine_core<2, Single>(quarter_sine_single_ep, quarter_cosine_single_ep);
    else if constexpr (F == Function::Tangent)
        // Three parts: a float next to a pole leaves so little that the rest of two would show.
        return tangent_core<U, 3, Single>(
            by_unit<U>(tangent_radian_single_ep_numerator, tangent_degree_single_ep_numerator,
                       tangent_half_turn_single_ep_numerator),
            by_unit<U>(tangent_radian_single_ep_denominator, tangent_degree_single_ep_denominator,
                       tangent_half_turn_single_ep_denominator));
    else
        return half_turn_core<F, U, 2, Single>(
            by_unit<U>(choose_function<F>(radian_sine_single_ep, radian_cosine_single_ep), degree_sine_single_ep,
                       half_turn_sine_single_ep));
}

template <Level L, class E, Function F, Unit U>
constexpr auto make_core() {
    constexpr bool doubles = std::is_same_v<E, Double>;
    if constexpr (L == Level::HA && doubles)
        return SixteenthCore<F, U>{};
    else if constexpr (L == Level::HA)
        return Widened<decltype(make_lanes<F, U>())>{make_lanes<F, U>()};
    else if constexpr (L == Level::LA && doubles)
        return make_double_la<F, U>();
    else if constexpr (L == Level::LA)
        return make_single_la<F, U>();
    else if constexpr (!doubles)
        return make_single_ep<F, U>();
    else if constexpr (U == Unit::Radian && (F == Function::Sine || F == Function::Cosine))
        return half_turn_core<F, U, 2, E>(radian_sine_double_ep);
    else
        return make_lanes<F, U, 3>();
}

}  // namespace nax::vmath::NAX_ISA
