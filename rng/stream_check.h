// Whether a payload that came from outside can be used.
#pragma once

#include "rng/stream.h"

namespace nax::rng {

// False when a position, a count or a dimension lies outside the array it is for: drawing would leave the stream's memory.
// Any value of the other words makes a working stream, if not the one that was saved.
bool positions_in_range(const Stream* stream);

}  // namespace nax::rng
