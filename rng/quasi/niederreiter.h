// NIEDERREITER: output of the three types.
#pragma once

#include "rng/quasi/quasi_state.h"

namespace nax::rng {

int niederreiter_draw(QuasiPlace& place, const PointSet& points, int n, uint32_t* r);
int niederreiter_draw(QuasiPlace& place, const PointSet& points, int n, double* r, double a, double b);
int niederreiter_draw(QuasiPlace& place, const PointSet& points, int n, float* r, float a, float b);

}  // namespace nax::rng
