// NIEDERREITER: delivery of points.
#include "rng/quasi/niederreiter.h"

#include "rng/quasi/quasi_draw.h"

using namespace nax::rng;

NAX_QUASI_OUTPUT(Niederr, Niederreiter)
