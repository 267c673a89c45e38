// SOBOL: output of the three types.
#pragma once

#include "rng/quasi/quasi_state.h"

namespace nax::rng {

int sobol_draw(QuasiPlace& place, const PointSet& points, int n, uint32_t* r);
int sobol_draw(QuasiPlace& place, const PointSet& points, int n, double* r, double a, double b);
int sobol_draw(QuasiPlace& place, const PointSet& points, int n, float* r, float a, float b, bool user);

}  // namespace nax::rng
