// The scalar long argument reduction: any finite double less a multiple of pi/2.
#pragma once

#include <cmath>
#include <cstdint>

#include "vmath/scalar.h"

namespace nax::vmath {

// x - n scale pi as a sum of two doubles; scale is a power of two, x - n scale pi no larger than scale pi or so, and n
// below 2^30. The first step is exact: x and the product are multiples of pi's lowest bit.
DoubleWord less_multiple_of_pi(double x, double n, double scale);

}  // namespace nax::vmath

// Writes x less q pi/2, within pi/4 of 0 and good to 90 bits, and returns q modulo 4. x is finite.
extern "C" int32_t __internal_reduce_pio2d(nax::vmath::DoubleWord* r, double x);
