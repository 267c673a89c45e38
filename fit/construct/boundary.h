// End slopes of the cubic families with local estimates, by boundary type. Every family has its own copy of the two
// tables, because the periodic and the unset end are the family's.
#pragma once

#include <cstdint>

#include "simd/isa.h"

namespace nax::fit {

inline namespace NAX_ISA {

// One end of a function; index 0 is the interval or point at the end, 1 and 2 the next ones inwards.
template <class T>
struct End {
    T y[3];           // function values
    T h[2], m[2];     // interval lengths, chord slopes
    T inner;          // slope of the spline at the next point
    T value;          // the caller's boundary value of this end
    T wrapped_h;      // the end interval of the other side: its length
    T wrapped_m[2];   // the two chords at the other side
    T inverse_step;   // of a uniform partition
    bool uniform;
};

// y'' = 0 makes 2 d0 + d1 = 3 m0.
template <class T>
T _vCubicSpline1DBCFreeEndLeft(const End<T>& e) {
    return T(1.5) * e.m[0] - T(0.5) * e.inner;
}
template <class T>
T _vCubicSpline1DBCFreeEndRight(const End<T>& e) {
    return T(1.5) * e.m[0] - T(0.5) * e.inner;
}
template <class T>
T _vCubicSpline1DBC1stDerLeft(const End<T>& e) {
    return e.value;
}
template <class T>
T _vCubicSpline1DBC1stDerRight(const End<T>& e) {
    return e.value;
}
template <class T>
T _vCubicSpline1DBC2ndDerLeft(const End<T>& e) {
    return T(1.5) * e.m[0] - T(0.25) * e.value * e.h[0] - T(0.5) * e.inner;
}
template <class T>
T _vCubicSpline1DBC2ndDerRight(const End<T>& e) {
    return T(1.5) * e.m[0] + T(0.25) * e.value * e.h[0] - T(0.5) * e.inner;
}

// Slope at the end of the cubic through the three points with the inner slope at the second.
template <class T>
T not_a_knot(const End<T>& e) {
    const T span = e.h[0] + e.h[1];
    const T rise = e.h[1] * e.m[0], chords = e.h[0] / span * (e.m[1] * e.h[0] + rise) + 2 * rise;
    return (chords - span * e.inner) / e.h[1];
}
template <class T>
T _vCubicSpline1DBCNotAKnotLeft(const End<T>& e) {
    if (!e.uniform) return not_a_knot(e);
    return T(0.5) * e.inverse_step * (4 * e.y[1] - 5 * e.y[0] + e.y[2]) - 2 * e.inner;
}
template <class T>
T _vCubicSpline1DBCNotAKnotRight(const End<T>& e) {
    if (!e.uniform) return not_a_knot(e);
    return T(0.5) * e.inverse_step * (5 * e.y[0] - 4 * e.y[1] - e.y[2]) - 2 * e.inner;
}

// The parabola through three points, with its slope at the end taken for equal intervals.
template <class T>
T _vCubicSpline1DBCNotSetLeft(const End<T>& e) {
    return (3 * e.m[0] - e.m[1]) / 2;
}
template <class T>
T _vCubicSpline1DBCNotSetRight(const End<T>& e) {
    return (3 * e.m[0] - e.m[1]) / 2;
}

// Three-point slope across the seam of a periodic function, for the families that estimate by parabolas.
template <class T>
T parabola_across_seam(const End<T>& e) {
    if (e.uniform) return (e.m[0] + e.wrapped_m[0]) / 2;
    return (e.wrapped_h * e.m[0] + e.h[0] * e.wrapped_m[0]) / (e.h[0] + e.wrapped_h);
}

template <class Family, class T>
struct BoundaryTables {
    using EndSlope = T (*)(const End<T>&);
    static T _vCubicSpline1DBCPeriodicLeft(const End<T>& e) { return Family::periodic_left(e); }
    static T _vCubicSpline1DBCPeriodicRight(const End<T>& e) { return Family::periodic_right(e); }

    static constexpr EndSlope left[] = {
        _vCubicSpline1DBCNotAKnotLeft, _vCubicSpline1DBCFreeEndLeft,  _vCubicSpline1DBC1stDerLeft, _vCubicSpline1DBC1stDerLeft,
        _vCubicSpline1DBC2ndDerLeft,   _vCubicSpline1DBC2ndDerLeft, _vCubicSpline1DBCPeriodicLeft, _vCubicSpline1DBCNotSetLeft};
    static constexpr EndSlope right[] = {
        _vCubicSpline1DBCNotAKnotRight, _vCubicSpline1DBCFreeEndRight,   _vCubicSpline1DBC1stDerRight,
        _vCubicSpline1DBC2ndDerRight,   _vCubicSpline1DBC1stDerRight,    _vCubicSpline1DBC2ndDerRight,
        _vCubicSpline1DBCPeriodicRight, _vCubicSpline1DBCNotSetRight};
};

}  // namespace NAX_ISA
}  // namespace nax::fit
