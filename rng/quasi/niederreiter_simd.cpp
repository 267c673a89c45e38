// NIEDERREITER: delivery of points.
#include "rng/quasi/niederreiter.h"

#include "rng/quasi/quasi_draw.h"

namespace nax::rng {

int niederreiter_draw(QuasiPlace& place, const PointSet& points, int n, uint32_t* r) {
    return draw_points(place, points, n, r, QuasiScale<uint32_t>(0, 0));
}
int niederreiter_draw(QuasiPlace& place, const PointSet& points, int n, double* r, double a, double b) {
    return draw_points(place, points, n, r, QuasiScale<double>(a, b));
}
int niederreiter_draw(QuasiPlace& place, const PointSet& points, int n, float* r, float a, float b) {
    return draw_points(place, points, n, r, QuasiScale<float>(a, b));
}

}  // namespace nax::rng
