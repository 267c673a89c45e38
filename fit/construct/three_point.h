// Slopes of the parabola through a point and its two neighbours, which Bessel's and Hyman's splines start from.
// Included by *_simd.cpp files only.
#pragma once

#include "fit/construct/local_cubic.h"

namespace nax::fit {

inline namespace NAX_ISA {

struct ThreePoint {
    static constexpr int64_t kMargin = 1;

    template <class E, class T>
    static E parabola(const Window<T>& w, int64_t k) {
        const E left = load<E>(w.slope + k - 1), right = load<E>(w.slope + k);
        const E left_h = load<E>(w.length + k - 1), right_h = load<E>(w.length + k);
        return (right * left_h + left * right_h) / (left_h + right_h);
    }
    template <class T>
    static T periodic_left(const End<T>& e) {
        return parabola_across_seam(e);
    }
    template <class T>
    static T periodic_right(const End<T>& e) {
        return parabola_across_seam(e);
    }
};

}  // namespace NAX_ISA
}  // namespace nax::fit
