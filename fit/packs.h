// The vectors of sites and cells, under the names that the files of data fitting use.
#pragma once

#include "simd/pack.h"

namespace nax::fit {

using simd::Lane;
using simd::Pack;
using simd::PackFor;
using simd::Rows;

}  // namespace nax::fit
